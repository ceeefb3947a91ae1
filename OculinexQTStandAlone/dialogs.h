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

/// Whether a task that runs uses the store. Its steps have parameters in hand: none may be removed.
/// The task manager, which knows, defines it.
bool isStoreInUse(const ArithmParamMgr *pcAPM);

/// Runs a dialog made for a parent and hands it over once it is closed, unless it went with its parent
/// meanwhile.
template <typename Dialog, typename Take>
void runChild(Dialog *pcNew, const Take &fnTake)
{
    const QPointer<Dialog> pcDialog(pcNew);
    pcDialog->exec();
    if (pcDialog)
        fnTake(*pcDialog);
    delete pcDialog;
}

/// Tells the user what is wrong. The dialog may be gone with its parent afterwards.
inline void warnUser(QWidget *pcDialog, const QString &strText)
{
    runChild(
        new QMessageBox(QMessageBox::Information, QStringLiteral("警告"), strText, QMessageBox::Ok, pcDialog),
        [](const QMessageBox &) {});
}

#endif
