#ifndef DLGMEMORYDISKCONFIG_H
#define DLGMEMORYDISKCONFIG_H

#include <QDialog>
#include <QMap>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;
class QModelIndex;
class QTableWidget;

namespace Ui
{
class DlgMemoryDiskConfig;
}

/// Lets the user choose which picture of the store a step writes into which memory disk.
///
/// The store is read while the dialog is made, and not after that.
class OCULINEXQTSTANDALONE_EXPORT DlgMemoryDiskConfig : public QDialog
{
    Q_OBJECT

public:
    DlgMemoryDiskConfig(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent = nullptr);
    ~DlgMemoryDiskConfig() override;

    /// The config string: as given, until the dialog was accepted.
    QString getConfigString();

public Q_SLOTS:
    void on_tblRGB_doubleClicked(const QModelIndex &cIndex);
    void on_tblGray8_doubleClicked(const QModelIndex &cIndex);
    void on_btnOK_clicked();
    void on_btnCancel_clicked();

private:
    void choose(const QTableWidget *pcTable, const QMap<int, int> &mapID, int nRow, const QString &strType);

public:
    Ui::DlgMemoryDiskConfig *ui;
    QString m_strConfigStr;
    QMap<int, int> m_mapDIBParamID; ///< row -> ID, as the next
    QMap<int, int> m_mapGray8ParamID;
    ArithmParamMgr *m_pcAPM;
    int m_nInputDataID = 0; ///< 0: none chosen
    QString m_strDataType;  ///< of the row that was chosen here: never that of the given config string
};

#endif
