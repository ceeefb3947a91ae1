#ifndef DLGLOADFILE_H
#define DLGLOADFILE_H

#include <QDialog>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

namespace Ui
{
class DlgLoadFile;
}

/// Lets the user choose the file of a loading step and what to call its picture, which is made in the
/// store, still empty, when the dialog is confirmed. Another kind is another picture: the old one is
/// removed.
class OCULINEXQTSTANDALONE_EXPORT DlgLoadFile : public QDialog
{
    Q_OBJECT

public:
    DlgLoadFile(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent = nullptr);
    ~DlgLoadFile() override;

    QString getConfigString();        ///< as given, until one was created
    bool createConfigString();        ///< false when something is missing: the user was told why
    void parseConfigString();         ///< shows the config string in the widgets
    void setCurFile(QString strPath); ///< takes the file if the step can load it, else tells the user

public Q_SLOTS:
    void on_btnOK_clicked();
    void on_btnCancel_clicked();
    void on_btnBrowser_clicked();

public:
    Ui::DlgLoadFile *ui;
    int m_nOutputPicType; ///< kind of the picture in the store: 0 colour, 1 grey
    int m_nOutputPicID;   ///< its ID, -1 while there is none
    QString m_strConfigStr;
    QString m_strFilePath; ///< empty while no file was taken
    ArithmParamMgr *m_pcAPM;
};

#endif
