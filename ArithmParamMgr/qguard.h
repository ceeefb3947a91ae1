#ifndef QGUARD_H
#define QGUARD_H

#include <QMutex>

#if defined(__SANITIZE_THREAD__)
#define OCULINEX_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define OCULINEX_TSAN 1
#endif
#endif

#ifdef OCULINEX_TSAN
// Qt is not built for the thread sanitizer, which therefore misses the order that a contended
// QMutex makes between two threads; these calls tell it.
extern "C" void __tsan_acquire(void *);
extern "C" void __tsan_release(void *);
#endif

/// A scoped lock: locks a QMutex when it is made and unlocks it when it goes. lock() and unlock()
/// are the same two steps for the few places where they stand in different functions.
class QGuard
{
public:
    explicit QGuard(QMutex &cLock) : m_cLock(cLock) { lock(m_cLock); }
    ~QGuard() { unlock(m_cLock); }
    QGuard(const QGuard &) = delete;
    QGuard &operator=(const QGuard &) = delete;

    static void lock(QMutex &cLock)
    {
        cLock.lock();
#ifdef OCULINEX_TSAN
        __tsan_acquire(&cLock);
#endif
    }
    static void unlock(QMutex &cLock)
    {
#ifdef OCULINEX_TSAN
        __tsan_release(&cLock);
#endif
        cLock.unlock();
    }

    QMutex &m_cLock;
};

#endif
