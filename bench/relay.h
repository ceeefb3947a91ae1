#ifndef BENCH_RELAY_H
#define BENCH_RELAY_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "table.h"

namespace Bench
{
/// Lets pictures into a pipe of threads and takes the time until they have left it. What makes the
/// pictures waits here while none is wanted, so that a pipe costs nothing while its peer is measured.
class Relay
{
public:
    /// On the producing thread, before each picture. False: the pipe is being closed.
    bool enter()
    {
        if (m_nEntered == m_nAllowed.load(std::memory_order_acquire)) {
            std::unique_lock<std::mutex> cLock(m_cMutex);
            m_cWanted.wait(cLock, [this] { return m_bClosed || m_nEntered < m_nAllowed; });
            if (m_bClosed)
                return false;
        }
        if (m_nEntered == m_nFirst)
            m_dBegan = secondsNow();
        ++m_nEntered;
        return true;
    }
    /// On the consuming thread, after each picture.
    void leave()
    {
        if (++m_nLeft < m_nAllowed.load(std::memory_order_acquire))
            return;
        const double dEnded = secondsNow();
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_dEnded = dEnded;
        m_nDone = m_nLeft;
        m_cDone.notify_all();
    }
    void letIn(int64_t nPictures)
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_nFirst = m_nAllowed.load();
        m_nAllowed.store(m_nFirst + nPictures, std::memory_order_release);
        m_cWanted.notify_all();
    }
    /// Until all that were let in have left; seconds since the first of the last lot entered.
    double wait()
    {
        std::unique_lock<std::mutex> cLock(m_cMutex);
        m_cDone.wait(cLock, [this] { return m_nDone == m_nAllowed; });
        return m_dEnded - m_dBegan;
    }
    double stream(int64_t nPictures)
    {
        letIn(nPictures);
        return wait();
    }
    /// Seconds that each picture was on its way through the empty pipe.
    std::vector<double> oneByOne(int64_t nPictures)
    {
        std::vector<double> vSeconds;
        for (int64_t n = 0; n < nPictures; ++n)
            vSeconds.push_back(stream(1));
        return vSeconds;
    }
    void close()
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bClosed = true;
        m_cWanted.notify_all();
    }

private:
    std::mutex m_cMutex;
    std::condition_variable m_cWanted;
    std::condition_variable m_cDone;
    std::atomic<int64_t> m_nAllowed{0};
    std::atomic<int64_t> m_nFirst{0}; ///< of those let in last
    int64_t m_nEntered = 0;           ///< the producing thread's
    std::atomic<int64_t> m_nLeft{0};
    int64_t m_nDone = 0;
    bool m_bClosed = false;
    double m_dBegan = 0;
    double m_dEnded = 0;
};
} // namespace Bench

#endif
