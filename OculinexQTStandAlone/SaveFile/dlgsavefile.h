#ifndef DLGSAVEFILE_H
#define DLGSAVEFILE_H

#include <QDialog>
#include <QMap>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

namespace Ui
{
class DlgSaveFile;
}

/// Lets the user choose what a saving step writes, and under which name.
class OCULINEXQTSTANDALONE_EXPORT DlgSaveFile : public QDialog
{
    Q_OBJECT

public:
    DlgSaveFile(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent = nullptr);
    ~DlgSaveFile() override;

    QString getConfigString(); ///< as given, until one was created
    bool createConfigString(); ///< false, after telling the user why, when something is missing
    void parseConfigString();  ///< shows the config string in the widgets

public Q_SLOTS:
    void on_btnOK_clicked();
    void on_btnCancel_clicked();
    void on_btnBrowser_clicked();
    void on_cmbWnd_currentIndexChanged(int nIndex);
    void on_btnSelectPic_clicked();

private:
    bool isFromStore() const;

public:
    Ui::DlgSaveFile *ui;
    QString m_strConfigStr;
    int m_nCurrentRow;                   ///< not used
    int m_nCurrentTable;                 ///< not used
    QMap<int, int> m_mapStringsParamID;  ///< row -> ID
    QMap<int, int> m_mapStringsParamIDR; ///< ID -> row
    ArithmParamMgr *m_pcAPM;
};

#endif
