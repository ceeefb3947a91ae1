#ifndef COUNTINGSEMAPHORE_H
#define COUNTINGSEMAPHORE_H

#include <QSemaphore>

#include "qguard.h"

/// A counting semaphore whose waits are bounded (by a monotonic clock). What a thread wrote before
/// release() is seen by the thread that acquires the unit, which the thread sanitizer is told.
class CountingSemaphore
{
public:
    explicit CountingSemaphore(int nCount) : m_cSemaphore(nCount) {}

    /// Takes one unit; false when there was none for nTimeoutMs milliseconds.
    bool tryAcquire(int nTimeoutMs)
    {
        const bool bAcquired = m_cSemaphore.tryAcquire(1, nTimeoutMs);
#ifdef OCULINEX_TSAN
        if (bAcquired)
            __tsan_acquire(this);
#endif
        return bAcquired;
    }
    void release()
    {
#ifdef OCULINEX_TSAN
        __tsan_release(this);
#endif
        m_cSemaphore.release();
    }

private:
    QSemaphore m_cSemaphore;
};

#endif
