#include "MemoryDisk/dlgmemorydiskconfig.h"

#include "MemoryDisk/ui_dlgmemorydiskconfig.h"
#include "configtext.h"
#include "dialogs.h"
#include "parametertable.h"

DlgMemoryDiskConfig::DlgMemoryDiskConfig(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent)
    : QDialog(pcParent), ui(new Ui::DlgMemoryDiskConfig), m_strConfigStr(strConfig), m_pcAPM(pcAPM)
{
    ui->setupUi(this);
    m_mapDIBParamID = fillParameterTable(ui->tblRGB, m_pcAPM, ArithmParamMgr::Kind::DIB);
    m_mapGray8ParamID = fillParameterTable(ui->tblGray8, m_pcAPM, ArithmParamMgr::Kind::Gray8);

    const ConfigText cSettings(strConfig);
    const QString strType = cSettings.text("InputType");
    ui->edtType->setText(strType);
    bool bNumber = false;
    const int nID = cSettings.number("InputID", &bNumber);
    if (bNumber) {
        m_nInputDataID = nID;
        if (strType == QLatin1String("RGB"))
            ui->edtName->setText(parameterName(ui->tblRGB, m_mapDIBParamID.key(nID, -1)));
        else if (strType == QLatin1String("Gray8"))
            ui->edtName->setText(parameterName(ui->tblGray8, m_mapGray8ParamID.key(nID, -1)));
    }
}

DlgMemoryDiskConfig::~DlgMemoryDiskConfig()
{
    delete ui;
}

QString DlgMemoryDiskConfig::getConfigString()
{
    return m_strConfigStr;
}

void DlgMemoryDiskConfig::on_tblRGB_doubleClicked(const QModelIndex &cIndex)
{
    choose(ui->tblRGB, m_mapDIBParamID, cIndex.row(), QStringLiteral("RGB"));
}

void DlgMemoryDiskConfig::on_tblGray8_doubleClicked(const QModelIndex &cIndex)
{
    choose(ui->tblGray8, m_mapGray8ParamID, cIndex.row(), QStringLiteral("Gray8"));
}

void DlgMemoryDiskConfig::choose(const QTableWidget *pcTable, const QMap<int, int> &mapID, int nRow,
                                 const QString &strType)
{
    m_nInputDataID = mapID.value(nRow);
    m_strDataType = strType;
    ui->edtName->setText(parameterName(pcTable, nRow));
    ui->edtType->setText(strType);
}

void DlgMemoryDiskConfig::on_btnOK_clicked()
{
    if (m_nInputDataID < 1) {
        warnUser(this, QStringLiteral("未选择输入变量."));
        return;
    }
    m_strConfigStr = tagged("MemDisk", QString::number(ui->cmbMemDisk->currentIndex())) +
                     tagged("InputID", QString::number(m_nInputDataID)) + tagged("InputType", m_strDataType);
    accept();
}

void DlgMemoryDiskConfig::on_btnCancel_clicked()
{
    reject();
}
