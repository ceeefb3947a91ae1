#include "taskMgr/taskwidgets.h"

#include <QThread>

void callInThreadOf(QObject *pcWidget, const std::function<void()> &fnChange)
{
    if (pcWidget->thread() == QThread::currentThread()) {
        fnChange();
        return;
    }
    // Its end is an event for the widget: it goes with the widget if that goes first.
    QObject cSender;
    QObject::connect(&cSender, &QObject::destroyed, pcWidget, fnChange, Qt::QueuedConnection);
}
