#include "taskMgr/taskwidgets.h"

#include <QThread>

#include "qguard.h"

namespace
{
/// A change on its way between two threads, one of which destroys it. The thread sanitizer, which doesn't see
/// the order that Qt's queue of events makes, is told.
class HandedOver
{
public:
    explicit HandedOver(const std::function<void()> &fnChange) : m_fnChange(fnChange) { release(); }
    HandedOver(const HandedOver &cOther) : m_fnChange(cOther.m_fnChange) { release(); }
    HandedOver &operator=(const HandedOver &) = delete;
    ~HandedOver() { acquire(); }

    void operator()()
    {
        acquire();
        m_fnChange();
        release();
    }

private:
#ifdef OCULINEX_TSAN
    void acquire()
    {
        __tsan_acquire(this);
    }
    void release()
    {
        __tsan_release(this);
    }
#else
    void acquire() {}
    void release() {}
#endif
    std::function<void()> m_fnChange;
};
} // namespace

void callInThreadOf(QObject *pcWidget, const std::function<void()> &fnChange)
{
    if (pcWidget->thread() == QThread::currentThread()) {
        fnChange();
        return;
    }
    // Its end is an event for the widget: it goes with the widget if that goes first.
    QObject cSender;
    QObject::connect(&cSender, &QObject::destroyed, pcWidget, HandedOver(fnChange), Qt::QueuedConnection);
}
