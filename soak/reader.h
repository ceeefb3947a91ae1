#ifndef READER_H
#define READER_H

#include <atomic>
#include <thread>

#include <QtGlobal>

/// The host's thread that reads views of changing sizes and messages. Now and then it looks away for a
/// second, as a busy host does, and the queues fill.
class Reader
{
public:
    Reader();
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    void waitForRounds(int nRounds) const;

    std::atomic<bool> m_bAttentive{false}; ///< it does not look away meanwhile
    std::atomic<qint64> m_nDrawings{0};
    std::atomic<qint64> m_nErrors{0};
    std::atomic<qint64> m_nPrinted{0};
    std::atomic<int> m_nMostWaiting{0}; ///< messages in one queue

private:
    void run();
    void read(int nRound);

    std::atomic<int> m_nRounds{0};
    std::atomic<bool> m_bEnd{false};
    std::thread m_cThread;
};

#endif
