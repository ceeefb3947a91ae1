#ifndef TASKWIDGETS_H
#define TASKWIDGETS_H

#include <functional>

#include <QObject>

/// Calls fnChange on the thread of a host's widget (private header): at once when that is the
/// calling one, else when the widget's event loop comes to it and the widget still lives.
void callInThreadOf(QObject *pcWidget, const std::function<void()> &fnChange);

/// Applies fnChange to a host's widget on the widget's thread. An object that is null or no Widget
/// is left alone.
template <typename Widget, typename Change>
void inWidgetThread(QObject *pcObject, const Change &fnChange)
{
    if (auto *pcWidget = qobject_cast<Widget *>(pcObject))
        callInThreadOf(pcWidget, [pcWidget, fnChange] { fnChange(pcWidget); });
}

#endif
