#ifndef DIALOGS_H
#define DIALOGS_H

#include <QDialog>
#include <QMessageBox>
#include <QPointer>

#include "guithread.h"
#include "logging.h"

class ArithmParamMgr;

/// What the library's own dialogs share (private header).

/// Whether a dialog can be opened here; the log tells of the one that can't.
inline bool mayOpenDialog(const char *szDialog)
{
    const bool bMay = isGuiThread();
    if (!bMay)
        qCWarning(lcTask) << szDialog << "opens only on the thread of a QApplication: taken as cancelled";
    return bMay;
}

/// Runs a built-in step's dialog. The config string that it makes, empty when cancelled.
template <typename Dialog>
QString configFromDialog(const char *pchConfig, ArithmParamMgr *pcAPM)
{
    if (!mayOpenDialog(Dialog::staticMetaObject.className()))
        return QString();
    Dialog cDialog(QString::fromUtf8(pchConfig), pcAPM, nullptr);
    return cDialog.exec() == QDialog::Accepted ? cDialog.getConfigString() : QString();
}

/// Tells the user why the dialog stays open. A slot returns right after it: the dialog may be gone
/// with its parent.
inline void warnUser(QWidget *pcDialog, const QString &strText)
{
    const QPointer<QMessageBox> pcBox =
        new QMessageBox(QMessageBox::Information, QStringLiteral("警告"), strText, QMessageBox::Ok, pcDialog);
    pcBox->exec();
    delete pcBox;
}

#endif
