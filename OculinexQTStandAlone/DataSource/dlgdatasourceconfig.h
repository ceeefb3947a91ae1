#ifndef DLGDATASOURCECONFIG_H
#define DLGDATASOURCECONFIG_H

#include <QDialog>

#include "DataSource/datasource.h"

namespace Ui
{
class DlgDataSource;
}

/// Lets the user choose the kind of a task's data source, configure it and name the picture that it
/// delivers.
class OCULINEXQTSTANDALONE_EXPORT DlgDataSource : public QDialog
{
    Q_OBJECT

public:
    /// The kinds and the store stay the caller's and outlive the dialog.
    DlgDataSource(QMap<QString, DataSource::DataSourceInfo *> *pmapDataSourceInfo, ArithmParamMgr *pcAPM,
                  QString strConfig, QWidget *pcParent = nullptr);
    ~DlgDataSource() override;

    /// The data-source config string: as given, until the dialog was accepted.
    QString getConfigString();
    /// The instance made here, null when none was. Whoever saw the dialog accepted owns it.
    DataSource::DataSourceInstance *getDataSourceInstance();

    void done(int nResult) override;

public Q_SLOTS:
    void on_btnSetting_clicked();
    void on_btnOK_clicked();
    void on_btnCancel_clicked();

private:
    int pictureID(const QString &strType);

public:
    Ui::DlgDataSource *ui;
    int m_nDataID = -1; ///< the picture of the given config string
    DataSource::DataSourceInstance *m_pcDSI = nullptr;
    QString m_strConfigString;
    QString m_strSubConfigString; ///< the kind's own configuration
    ArithmParamMgr *m_pcAPM;
    QMap<QString, DataSource::DataSourceInfo *> *m_pmapDataSourceInfo;
};

#endif
