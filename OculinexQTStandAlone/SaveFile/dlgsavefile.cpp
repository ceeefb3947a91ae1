#include "SaveFile/dlgsavefile.h"

#include <QFileDialog>
#include <QMessageBox>

#include "SaveFile/dlgselectpic.h"
#include "SaveFile/ui_dlgsavefile.h"
#include "configtext.h"
#include "dialogs.h"
#include "parametertable.h"

namespace
{
/// The tag with its value, nothing at all for an empty one.
QString taggedIfAny(const char *szTag, const QString &strValue)
{
    return strValue.isEmpty() ? QString() : tagged(szTag, strValue);
}
} // namespace

DlgSaveFile::DlgSaveFile(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent)
    : QDialog(pcParent),
      ui(new Ui::DlgSaveFile),
      m_strConfigStr(strConfig),
      m_nCurrentRow(-1),
      m_nCurrentTable(0),
      m_pcAPM(pcAPM)
{
    ui->setupUi(this);
    QTableWidget *pcTable = ui->tblStrings;
    m_mapStringsParamID = fillParameterTable(pcTable, m_pcAPM, ArithmParamMgr::Kind::Strings);
    m_mapStringsParamIDR = inverted(m_mapStringsParamID);
    // IDs and contents in the place of descriptions.
    for (auto it = m_mapStringsParamID.cbegin(); it != m_mapStringsParamID.cend(); ++it) {
        pcTable->item(it.key(), 1)->setText(QString::number(it.value()));
        pcTable->setItem(it.key(), 2, new QTableWidgetItem(m_pcAPM->snapshotStrings(it.value()).value(0)));
    }
    pcTable->resizeColumnToContents(1);
    on_cmbWnd_currentIndexChanged(ui->cmbWnd->currentIndex());
    parseConfigString();
}

DlgSaveFile::~DlgSaveFile()
{
    delete ui;
}

QString DlgSaveFile::getConfigString()
{
    return m_strConfigStr;
}

/// Whether the picture comes from the store rather than from a view.
bool DlgSaveFile::isFromStore() const
{
    return ui->cmbWnd->currentIndex() == ui->cmbWnd->count() - 1;
}

void DlgSaveFile::parseConfigString()
{
    if (m_strConfigStr.isEmpty())
        return;
    const ConfigText cConfig(m_strConfigStr);
    ui->edtBasePath->setText(cConfig.text("BasePath"));
    ui->edtStringID->setText(cConfig.text("StringID"));
    ui->chkIsStringID->setChecked(cConfig.number("IsStringID") >= 1);
    ui->edtSeparator->setText(cConfig.text("Separator"));
    ui->cmbIdentity->setCurrentIndex(cConfig.number("Identity"));
    ui->cmbFormat->setCurrentIndex(cConfig.number("Format"));
    ui->cbExchange->setChecked(cConfig.number("Exg") == 1);
    ui->cmbWnd->setCurrentIndex(cConfig.number("Wnd"));
    if (isFromStore()) {
        ui->edtPicType->setText(cConfig.text("PicType"));
        ui->edtSelectedPicID->setText(cConfig.text("PicID"));
    }
}

bool DlgSaveFile::createConfigString()
{
    const auto fnRefuse = [this](const QString &strWhy) {
        QMessageBox::about(this, QStringLiteral("警告"), strWhy);
        return false;
    };
    if (ui->edtBasePath->text().isEmpty())
        return fnRefuse(QStringLiteral("未选中基本路径."));
    QString strConfig = tagged("BasePath", ui->edtBasePath->text()) +
                        taggedIfAny("StringID", ui->edtStringID->text()) +
                        tagged("IsStringID", QString::number(ui->chkIsStringID->isChecked())) +
                        taggedIfAny("Separator", ui->edtSeparator->text()) +
                        tagged("Identity", QString::number(ui->cmbIdentity->currentIndex())) +
                        tagged("Format", QString::number(ui->cmbFormat->currentIndex())) +
                        tagged("Exg", QString::number(ui->cbExchange->isChecked())) +
                        tagged("Wnd", QString::number(ui->cmbWnd->currentIndex()));
    if (isFromStore()) {
        // Any type may be typed in: the step skips one that it does not know.
        bool bNumber = false;
        if (ui->edtSelectedPicID->text().toInt(&bNumber) < 0 || !bNumber)
            return fnRefuse(QStringLiteral("错误的图像ID."));
        strConfig +=
            tagged("PicType", ui->edtPicType->text()) + tagged("PicID", ui->edtSelectedPicID->text());
    }
    m_strConfigStr = strConfig;
    return true;
}

void DlgSaveFile::on_btnOK_clicked()
{
    if (createConfigString())
        accept();
}

void DlgSaveFile::on_btnCancel_clicked()
{
    reject();
}

void DlgSaveFile::on_btnBrowser_clicked()
{
    auto *pcDialog = new QFileDialog(this, QStringLiteral("选取目录"));
    pcDialog->setFileMode(QFileDialog::Directory);
    pcDialog->setOption(QFileDialog::ShowDirsOnly);
    runChild(pcDialog, [this](const QFileDialog &cDialog) {
        if (cDialog.result() == Accepted && !cDialog.selectedFiles().isEmpty())
            ui->edtBasePath->setText(cDialog.selectedFiles().constFirst());
    });
}

void DlgSaveFile::on_cmbWnd_currentIndexChanged(int nIndex)
{
    const bool bFromStore = nIndex == ui->cmbWnd->count() - 1;
    ui->btnSelectPic->setVisible(bFromStore);
    ui->edtPicType->setVisible(bFromStore);
    ui->edtSelectedPicID->setVisible(bFromStore);
}

void DlgSaveFile::on_btnSelectPic_clicked()
{
    runChild(new DlgSelectPic(m_pcAPM, this), [this](DlgSelectPic &cDialog) {
        if (cDialog.result() != Accepted)
            return;
        ui->edtPicType->setText(cDialog.getType() == 0 ? QStringLiteral("RGB") : QStringLiteral("Gray"));
        ui->edtSelectedPicID->setText(QString::number(cDialog.getID()));
    });
}
