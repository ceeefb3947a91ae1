#ifndef SINGLETON_H
#define SINGLETON_H

#include <new>
#include <utility>

#include <QMutex>

#include "qguard.h"
#include "sharedfield.h"

/// The one object behind pcThis (private header): made under cMutex by the first caller, who learns
/// it through pbMade, and read without the lock from then on. It is never destroyed, so that a
/// thread that still runs when the process exits never meets a dead one. Who asks for it from inside
/// its constructor (a plug-in that is being registered) gets it as far as it has come.
template <typename T>
T *singleton(T *&pcThis, QMutex &cMutex, bool *pbMade = nullptr)
{
    if (T *pcMade = SharedField::load(pcThis))
        return pcMade;
    thread_local T *s_pcMaking = nullptr;
    if (s_pcMaking)
        return s_pcMaking;
    QGuard cGuard(cMutex);
    if (!pcThis) {
        s_pcMaking = static_cast<T *>(::operator new(sizeof(T)));
        try {
            new (s_pcMaking) T;
        } catch (...) {
            ::operator delete(std::exchange(s_pcMaking, nullptr));
            throw;
        }
        SharedField::store(pcThis, std::exchange(s_pcMaking, nullptr));
        if (pbMade)
            *pbMade = true;
    }
    return pcThis;
}

/// The one T for the process, never destroyed: a task's thread may still run while the process ends.
/// It is not on the heap, since the first to come may be a destructor, which must not fail.
template <typename T>
T &immortal()
{
    alignas(T) static unsigned char s_auchObject[sizeof(T)];
    static T &s_cObject = *new (s_auchObject) T;
    return s_cObject;
}

#endif
