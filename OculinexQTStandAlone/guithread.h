#ifndef GUITHREAD_H
#define GUITHREAD_H

#include <QApplication>
#include <QThread>

/// Whether a window may be opened here: there is a QApplication, and the caller is on its thread
/// (private header).
inline bool isGuiThread()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance()) &&
           QThread::currentThread() == qApp->thread();
}

#endif
