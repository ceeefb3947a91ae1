#ifndef MEMORYPOOL_H
#define MEMORYPOOL_H

#include <cstdlib>
#include <cstring>
#include <limits>

#include <QList>
#include <QMutex>
#include <QSemaphore>

#include "pixelbuffers.h"
#include "qguard.h"

/// The pool of one kind of picture: the members of a MemoryDisk that make it, and what is done with
/// them. The copy of pixels runs without a lock, since a record that is on no list belongs to the
/// thread that took it.
template <class Record>
struct MemoryPool {
    static constexpr int RECORD_NUM = 6;
    static constexpr int WAIT_MS = 1000;

    int &m_nBuffNum;
    int &m_nProcessingNum;
    QSemaphore *&m_pcIdleSemaphore;
    QSemaphore *&m_pcPreparedSemaphore;
    QMutex &m_cMutexForIdle;
    QMutex &m_cMutexForPrepared;
    QMutex &m_cMutexForProcessing;
    QList<Record *> &m_lstIdle;
    QList<Record *> &m_lstPrepared;
    const char *m_szIdleInvariant; ///< what holds once a unit of the semaphore was acquired
    const char *m_szPreparedInvariant;
    unsigned char *Record::*m_pPixels;
    qint64 (*m_fnRowLength)(qint64 nWidth); ///< bytes

    void create() const
    {
        m_nBuffNum = RECORD_NUM;
        m_nProcessingNum = 0;
        // As much as lets a list of that many records move its items rather than grow: later on, a
        // lack of memory could lose a record.
        m_lstIdle.reserve(4 * RECORD_NUM);
        m_lstPrepared.reserve(4 * RECORD_NUM);
        {
            QGuard cGuard(m_cMutexForIdle);
            for (int nRecord = 0; nRecord < RECORD_NUM; ++nRecord)
                m_lstIdle.append(new Record);
        }
        m_pcIdleSemaphore = new QSemaphore(RECORD_NUM);
        m_pcPreparedSemaphore = new QSemaphore(0);
    }

    void destroy() const
    {
        destroy(m_lstPrepared, m_cMutexForPrepared);
        destroy(m_lstIdle, m_cMutexForIdle);
        delete m_pcIdleSemaphore;
        delete m_pcPreparedSemaphore;
    }

    bool add(const unsigned char *puchData, int nWidth, int nHeight) const
    {
        const int nSize = pictureSize(nWidth, nHeight);
        if (nSize < 0 || (nSize > 0 && !puchData))
            return false;
        Record *pcRecord = take(*m_pcIdleSemaphore, WAIT_MS, m_lstIdle, m_cMutexForIdle, m_szIdleInvariant);
        if (!pcRecord)
            return false;
        if (!reserve(*pcRecord, nSize)) {
            give(pcRecord, *m_pcIdleSemaphore, m_lstIdle, m_cMutexForIdle);
            return false;
        }
        pcRecord->m_nWidth = nWidth;
        pcRecord->m_nHeight = nHeight;
        if (nSize > 0)
            memcpy(pcRecord->*m_pPixels, puchData, static_cast<size_t>(nSize));
        give(pcRecord, *m_pcPreparedSemaphore, m_lstPrepared, m_cMutexForPrepared);
        return true;
    }

    Record *request(int nTimeoutMs = WAIT_MS) const
    {
        Record *pcRecord = take(*m_pcPreparedSemaphore, nTimeoutMs, m_lstPrepared, m_cMutexForPrepared,
                                m_szPreparedInvariant);
        if (pcRecord) {
            QGuard cGuard(m_cMutexForProcessing);
            ++m_nProcessingNum;
        }
        return pcRecord;
    }

    void release(Record *pcRecord) const
    {
        if (!pcRecord)
            return;
        {
            QGuard cGuard(m_cMutexForProcessing);
            --m_nProcessingNum;
        }
        give(pcRecord, *m_pcIdleSemaphore, m_lstIdle, m_cMutexForIdle);
    }

    void emptyPrepared() const
    {
        for (int nLeft = preparedNum(); nLeft > 0; --nLeft)
            release(request(0)); // null when a consumer was quicker
    }

    int idleNum() const
    {
        QGuard cGuard(m_cMutexForIdle);
        return m_lstIdle.length();
    }
    int preparedNum() const
    {
        QGuard cGuard(m_cMutexForPrepared);
        return m_lstPrepared.length();
    }
    int processingNum() const
    {
        QGuard cGuard(m_cMutexForProcessing);
        return m_nProcessingNum;
    }

private:
    static void destroy(QList<Record *> &lstRecords, QMutex &cMutex)
    {
        QGuard cGuard(cMutex);
        qDeleteAll(lstRecords);
        lstRecords.clear();
    }

    /// Bytes, -1 for a size that is negative or overflows.
    int pictureSize(int nWidth, int nHeight) const
    {
        constexpr qint64 MAX_SIZE = std::numeric_limits<int>::max();
        if (nWidth < 0 || nHeight < 0)
            return -1;
        const qint64 nRowLength = m_fnRowLength(nWidth);
        if (nRowLength > MAX_SIZE || nRowLength * nHeight > MAX_SIZE)
            return -1;
        return static_cast<int>(nRowLength * nHeight);
    }

    /// Makes room for nSize bytes; false, with the record as it was, when memory is short.
    bool reserve(Record &cRecord, int nSize) const
    {
        if (cRecord.m_nBuffLen >= nSize)
            return true;
        unsigned char *puchGrown = PixelBuffers::allocate(static_cast<size_t>(nSize));
        if (!puchGrown)
            return false;
        std::free(cRecord.*m_pPixels);
        cRecord.*m_pPixels = puchGrown;
        cRecord.m_nBuffLen = nSize;
        return true;
    }

    /// Null when there was no record for that long, by a clock that is never set back. What a thread
    /// wrote before it gave a record is seen by the one that takes it, which the thread sanitizer is told.
    static Record *take(QSemaphore &cSemaphore, int nTimeoutMs, QList<Record *> &lstRecords, QMutex &cMutex,
                        [[maybe_unused]] const char *szInvariant)
    {
        if (!cSemaphore.tryAcquire(1, nTimeoutMs))
            return nullptr;
#ifdef OCULINEX_TSAN
        __tsan_acquire(&cSemaphore);
#endif
        QGuard cGuard(cMutex);
        Q_ASSERT_X(!lstRecords.isEmpty(), "MemoryDisk", szInvariant);
        return lstRecords.isEmpty() ? nullptr : lstRecords.takeFirst();
    }

    static void give(Record *pcRecord, QSemaphore &cSemaphore, QList<Record *> &lstRecords, QMutex &cMutex)
    {
        {
            QGuard cGuard(cMutex);
            lstRecords.append(pcRecord);
        }
#ifdef OCULINEX_TSAN
        __tsan_release(&cSemaphore);
#endif
        cSemaphore.release();
    }
};

#endif
