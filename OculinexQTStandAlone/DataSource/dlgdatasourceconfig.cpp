#include "DataSource/dlgdatasourceconfig.h"

#include <memory>
#include <utility>

#include "DataSource/ui_dlgdatasourceconfig.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"

DlgDataSource::DlgDataSource(QMap<QString, DataSource::DataSourceInfo *> *pmapDataSourceInfo,
                             ArithmParamMgr *pcAPM, QString strConfig, QWidget *pcParent)
    : QDialog(pcParent),
      ui(new Ui::DlgDataSource),
      m_strConfigString(strConfig),
      m_pcAPM(pcAPM),
      m_pmapDataSourceInfo(pmapDataSourceInfo)
{
    ui->setupUi(this);
    if (m_pmapDataSourceInfo)
        ui->lbSourceNames->addItems(m_pmapDataSourceInfo->keys());

    const ConfigText cSettings(strConfig);
    const QString strKind = cSettings.text("DSName");
    if (strKind.isEmpty())
        return;
    const QList<QListWidgetItem *> lstFound =
        ui->lbSourceNames->findItems(strKind, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (!lstFound.isEmpty())
        ui->lbSourceNames->setCurrentItem(lstFound.constFirst());
    m_strSubConfigString = cSettings.text("Config");
    ui->edtName->setText(cSettings.text("OutputName"));
    ui->edtDescribe->setText(cSettings.text("OutputDescribe"));
    bool bNumber = false;
    const int nDataID = cSettings.number("OutputID", &bNumber);
    if (bNumber)
        m_nDataID = nDataID;
    const QString strType = cSettings.text("OutputType");
    if (strType == QLatin1String("RGB"))
        ui->cbDataType->setCurrentIndex(0);
    else if (strType == QLatin1String("Gray8"))
        ui->cbDataType->setCurrentIndex(1);
}

DlgDataSource::~DlgDataSource()
{
    setEnabled(false);
    if (result() != Accepted)
        delete std::exchange(m_pcDSI, nullptr);
    delete ui;
}

QString DlgDataSource::getConfigString()
{
    return m_strConfigString;
}

DataSource::DataSourceInstance *DlgDataSource::getDataSourceInstance()
{
    return m_pcDSI;
}

/// However the dialog is left.
void DlgDataSource::done(int nResult)
{
    const QPointer<DlgDataSource> pcThis(this);
    if (nResult != Accepted)
        delete std::exchange(m_pcDSI, nullptr);
    if (pcThis)
        QDialog::done(nResult);
}

void DlgDataSource::on_btnSetting_clicked()
{
    const QListWidgetItem *pcKind = ui->lbSourceNames->selectedItems().value(0);
    if (!pcKind)
        return;
    const QString strKind = pcKind->text();
    const QString strSubConfig = m_strSubConfigString;
    // The kind may let events through in each of its functions, above all in its window. The new
    // instance stands on its own meanwhile: the dialog may be closed or go.
    const QPointer<DlgDataSource> pcThis(this);
    setEnabled(false);
    // The kind's own text stands there without its tag: the instance gets it afterwards.
    std::unique_ptr<DataSource::DataSourceInstance> pcInstance(
        DataSource::getInstance()->createDataSourceFromConfigString(m_pcAPM, tagged("DSName", strKind) +
                                                                                 strSubConfig));
    if (pcInstance) {
        if (pcThis)
            delete std::exchange(m_pcDSI, nullptr);
        if (pcThis)
            pcInstance->setConfigString(strSubConfig);
        if (pcThis)
            pcInstance->showConfigWindow();
    }
    if (!pcThis)
        return;
    setEnabled(true);
    if (!pcInstance) {
        warnUser(this, QStringLiteral("创建数据源实例失败."));
        return;
    }
    if (!pcInstance->getConfigString().isEmpty())
        m_strSubConfigString = pcInstance->getConfigString();
    ui->edtSelectedSource->setText(strKind);
    delete std::exchange(m_pcDSI, pcInstance.release()); // the window may have led here once more
}

void DlgDataSource::on_btnOK_clicked()
{
    if (ui->edtName->text().isEmpty()) {
        warnUser(this, QStringLiteral("数据名称不能为空"));
        return;
    }
    if (!m_pcDSI) {
        warnUser(this, QStringLiteral("无数据源"));
        return;
    }
    const QString strName = ui->edtName->text();
    const QString strDescribe = ui->edtDescribe->text();
    const QString strType = ui->cbDataType->currentText();
    m_pcDSI->setDataType(strType);
    m_pcDSI->setNameAndDescribe(strName, strDescribe);
    const int nDataID = pictureID(strType);
    m_pcDSI->setDataID(nDataID);
    m_strConfigString = tagged("DSName", ui->edtSelectedSource->text()) + tagged("OutputName", strName) +
                        tagged("OutputDescribe", strDescribe) + tagged("OutputType", strType) +
                        tagged("OutputID", QString::number(nDataID)) + tagged("Config", m_strSubConfigString);
    accept();
}

void DlgDataSource::on_btnCancel_clicked()
{
    reject();
}

/// The ID of the picture that the source fills: the one of the given config string, or a fresh one.
int DlgDataSource::pictureID(const QString &strType)
{
    if (!m_pcAPM)
        return -1;
    if (strType == QLatin1String("RGB"))
        return m_pcAPM->getParamDIB(m_nDataID)->getID();
    if (strType == QLatin1String("Gray8"))
        return m_pcAPM->getParamGray8(m_nDataID)->getID();
    if (strType == QLatin1String("Gray16"))
        return m_pcAPM->getParamGray16(m_nDataID)->getID();
    return -1;
}

DataSource::DataSourceInstance *DataSource::newDataSource(ArithmParamMgr *pcAPM, QString &strConfig)
{
    if (!mayOpenDialog(DlgDataSource::staticMetaObject.className()))
        return nullptr;
    DlgDataSource cDialog(&m_mapDataSourceInfo, pcAPM, strConfig, nullptr);
    if (cDialog.exec() != QDialog::Accepted)
        return nullptr;
    strConfig = cDialog.getConfigString();
    return cDialog.getDataSourceInstance();
}
