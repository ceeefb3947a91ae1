#ifndef TASKWIDGETS_H
#define TASKWIDGETS_H

#include <QObject>
#include <QThread>

/// Applies fnChange to a host's widget (private header): at once when the caller is on the widget's
/// thread, else when that thread's event loop comes to it. An object that is null or no Widget is
/// left alone.
template <typename Widget, typename Change>
void inWidgetThread(QObject *pcObject, const Change &fnChange)
{
    auto *pcWidget = qobject_cast<Widget *>(pcObject);
    if (!pcWidget)
        return;
    if (pcWidget->thread() == QThread::currentThread())
        fnChange(pcWidget);
    else
        QMetaObject::invokeMethod(
            pcWidget, [pcWidget, fnChange] { fnChange(pcWidget); }, Qt::QueuedConnection);
}

#endif
