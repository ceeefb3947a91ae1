#ifndef SINGLETON_H
#define SINGLETON_H

#include <QMutex>

#include "qguard.h"

/// The one object behind pcThis (private header): made under cMutex by the first caller, who learns
/// it through pbMade, and read without the lock from then on. It is never destroyed, so that a
/// thread that still runs when the process exits never meets a dead one.
template <typename T>
T *singleton(T *&pcThis, QMutex &cMutex, bool *pbMade = nullptr)
{
    if (T *pcMade = __atomic_load_n(&pcThis, __ATOMIC_ACQUIRE))
        return pcMade;
    QGuard cGuard(cMutex);
    if (!pcThis) {
        __atomic_store_n(&pcThis, new T, __ATOMIC_RELEASE);
        if (pbMade)
            *pbMade = true;
    }
    return pcThis;
}

#endif
