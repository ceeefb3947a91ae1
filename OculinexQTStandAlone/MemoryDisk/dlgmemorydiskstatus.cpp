#include "MemoryDisk/dlgmemorydiskstatus.h"

#include <QTimer>

#include "MemoryDisk/memorydisk.h"
#include "MemoryDisk/ui_dlgmemorydiskstatus.h"

namespace
{
constexpr int REFRESH_MS = 1000;
constexpr int INTERVAL_STEP_MS = 100;
constexpr int RECORD_NUM = 6; ///< until the first refresh asks for it
constexpr int NO_DISK = MemoryDisk::DISK_NUM;
} // namespace

struct DlgMemoryDiskStatus::Group {
    QComboBox *m_pcDataType;
    QProgressBar *m_pcWaiting;
    QProgressBar *m_pcProcessing;

    void show(int nMaximum, int nWaiting, int nProcessing) const
    {
        m_pcWaiting->setMaximum(nMaximum);
        m_pcWaiting->setValue(nWaiting);
        m_pcProcessing->setMaximum(nMaximum);
        m_pcProcessing->setValue(nProcessing);
    }
};

DlgMemoryDiskStatus::DlgMemoryDiskStatus(QWidget *pcParent)
    : QDialog(pcParent), ui(new Ui::DlgMemoryDiskStatus), m_pcTimer(new QTimer(this))
{
    ui->setupUi(this);
    connectSelectors();
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    for (int nGroup = 0; nGroup < GROUP_NUM; ++nGroup)
        group(nGroup).show(RECORD_NUM, 0, 0);
    connect(m_pcTimer, &QTimer::timeout, this, &DlgMemoryDiskStatus::OnTimer);
    m_pcTimer->start(REFRESH_MS);
}

/// By hand: looking for a widget for each slot, Qt would warn of the selector of the interval.
void DlgMemoryDiskStatus::connectSelectors()
{
    using Self = DlgMemoryDiskStatus;
    const auto fnConnect = [this](QComboBox *pcBox, void (Self::*fnSlot)(int)) {
        connect(pcBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this, fnSlot);
    };
    fnConnect(ui->cmbMemDisk0, &Self::on_cmbMemDisk0_currentIndexChanged);
    fnConnect(ui->cmbMemDisk1, &Self::on_cmbMemDisk1_currentIndexChanged);
    fnConnect(ui->cmbMemDisk2, &Self::on_cmbMemDisk2_currentIndexChanged);
    fnConnect(ui->cmbDataType0, &Self::on_cmbDataType0_currentIndexChanged);
    fnConnect(ui->cmbDataType1, &Self::on_cmbDataType1_currentIndexChanged);
    fnConnect(ui->cmbDataType2, &Self::on_cmbDataType2_currentIndexChanged);
    connect(ui->btnClear0, &QPushButton::clicked, this, &Self::on_btnClear0_clicked);
    connect(ui->btnClear1, &QPushButton::clicked, this, &Self::on_btnClear1_clicked);
    connect(ui->btnClear2, &QPushButton::clicked, this, &Self::on_btnClear2_clicked);
}

DlgMemoryDiskStatus::~DlgMemoryDiskStatus()
{
    m_pcTimer->stop();
    m_pcTimer->disconnect(this);
    delete ui;
}

DlgMemoryDiskStatus::Group DlgMemoryDiskStatus::group(int nGroup) const
{
    const Group acGroup[GROUP_NUM] = {{ui->cmbDataType0, ui->pbWaiting0, ui->pbProcessing0},
                                      {ui->cmbDataType1, ui->pbWaiting1, ui->pbProcessing1},
                                      {ui->cmbDataType2, ui->pbWaiting2, ui->pbProcessing2}};
    return acGroup[nGroup];
}

void DlgMemoryDiskStatus::OnTimer()
{
    for (int nGroup = 0; nGroup < GROUP_NUM; ++nGroup) {
        const Group cGroup = group(nGroup);
        const int nDisk = m_anMemDisk[nGroup];
        if (nDisk < 0 || nDisk >= MemoryDisk::DISK_NUM) {
            cGroup.m_pcWaiting->setValue(0);
            cGroup.m_pcProcessing->setValue(0);
            continue;
        }
        MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
        if (m_anDataType[nGroup] == 0)
            cGroup.show(pcDisk->getDIBBuffNum(), pcDisk->getDIBPreparedNum(), pcDisk->getDIBProcessingNum());
        else if (m_anDataType[nGroup] == 1)
            cGroup.show(pcDisk->getGray8BuffNum(), pcDisk->getGray8PreparedNum(),
                        pcDisk->getGray8ProcessingNum());
    }
}

void DlgMemoryDiskStatus::selectDisk(int nGroup, int nIndex)
{
    m_anMemDisk[nGroup] = nIndex;
    group(nGroup).m_pcDataType->setEnabled(nIndex != NO_DISK);
}

void DlgMemoryDiskStatus::empty(int nGroup)
{
    // A group that shows none acts on the last memory disk, as the number is limited there.
    MemoryDisk *pcDisk = MemoryDisk::getInstance(m_anMemDisk[nGroup]);
    if (m_anDataType[nGroup] == 0)
        pcDisk->emptyDIBPrepared();
    else if (m_anDataType[nGroup] == 1)
        pcDisk->emptyGray8Prepared();
}

void DlgMemoryDiskStatus::on_cmbMemDisk0_currentIndexChanged(int nIndex)
{
    selectDisk(0, nIndex);
}

void DlgMemoryDiskStatus::on_cmbMemDisk1_currentIndexChanged(int nIndex)
{
    selectDisk(1, nIndex);
}

void DlgMemoryDiskStatus::on_cmbMemDisk2_currentIndexChanged(int nIndex)
{
    selectDisk(2, nIndex);
}

void DlgMemoryDiskStatus::on_cmbDataType0_currentIndexChanged(int nIndex)
{
    m_anDataType[0] = nIndex;
}

void DlgMemoryDiskStatus::on_cmbDataType1_currentIndexChanged(int nIndex)
{
    m_anDataType[1] = nIndex;
}

void DlgMemoryDiskStatus::on_cmbDataType2_currentIndexChanged(int nIndex)
{
    m_anDataType[2] = nIndex;
}

void DlgMemoryDiskStatus::on_btnClear0_clicked()
{
    empty(0);
}

void DlgMemoryDiskStatus::on_btnClear1_clicked()
{
    empty(1);
}

void DlgMemoryDiskStatus::on_btnClear2_clicked()
{
    empty(2);
}

void DlgMemoryDiskStatus::on_comboBox_currentIndexChanged(int nIndex)
{
    m_pcTimer->start(INTERVAL_STEP_MS * (nIndex + 1));
}
