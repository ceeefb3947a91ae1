#ifndef MEMORYDISK_H
#define MEMORYDISK_H

#include <QList>
#include <QMutex>
#include <QSemaphore>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

/// A memory disk hands whole pictures from one task to another: a pool of six colour and six grey
/// records that go round between three places. Idle ones wait to be written, prepared ones to be
/// read, processing ones are with a consumer. Both queues are first in, first out; nothing that
/// waits is ever overwritten.
///
/// The static functions below are the algorithm that writes a picture of a task's parameter store
/// into a memory disk.
///
/// Threads: every function may be called by any number of threads at once. Each mutex is held for
/// one operation on a list or counter, never two at once and never while pixels are copied or a
/// semaphore is waited for.
///
/// The order of the members is part of the binary interface.
class OCULINEXQTSTANDALONE_EXPORT MemoryDisk
{
public:
    /// A colour picture: 24 bits a pixel in the order blue, green, red, each row padded to
    /// ((width + 1) * 3) & ~3 bytes. The memory disk owns the pixels.
    class OCULINEXQTSTANDALONE_EXPORT DIB
    {
    public:
        DIB() = default;
        ~DIB();
        DIB(const DIB &) = delete;
        DIB &operator=(const DIB &) = delete;

        unsigned char *getDIB() const { return m_puchDIB; }
        int getWidth() const { return m_nWidth; }
        int getHeight() const { return m_nHeight; }

        unsigned char *m_puchDIB = nullptr; ///< null until first written
        int m_nBuffLen = 0;                 ///< capacity in bytes; only grows
        int m_nWidth = 0;                   ///< pixels
        int m_nHeight = 0;                  ///< rows
    };

    /// A grey picture: one byte a pixel, rows without padding. Otherwise as DIB.
    class OCULINEXQTSTANDALONE_EXPORT Gray8
    {
    public:
        Gray8() = default;
        ~Gray8();
        Gray8(const Gray8 &) = delete;
        Gray8 &operator=(const Gray8 &) = delete;

        unsigned char *getGray8() const { return m_puchGray8; }
        int getWidth() const { return m_nWidth; }
        int getHeight() const { return m_nHeight; }

        unsigned char *m_puchGray8 = nullptr;
        int m_nBuffLen = 0;
        int m_nWidth = 0;
        int m_nHeight = 0;
    };

    static constexpr int DISK_NUM = 6;

    /// Memory disk nPos; a number below 0 gives disk 0, one above 5 disk 5.
    static MemoryDisk *getInstance(int nPos);

    MemoryDisk();
    /// Frees what is idle or prepared. Records that are still with a consumer are not freed.
    ~MemoryDisk();
    MemoryDisk(const MemoryDisk &) = delete;
    MemoryDisk &operator=(const MemoryDisk &) = delete;

    int getDIBBuffNum();
    int getGray8BuffNum();
    int getDIBIdleNum();
    int getGray8IdleNum();
    int getDIBPreparedNum();
    int getGray8PreparedNum();
    int getDIBProcessingNum();
    int getGray8ProcessingNum();

    /// Copies a picture, which has the record's layout, into the pool. Waits at most 1000 ms for an
    /// idle record; false when there was none and the picture is dropped. A picture whose size is
    /// negative, overflows or cannot be allocated is refused: false, and nothing has changed.
    bool addDIB(unsigned char *puchData, int nWidth, int nHeight);
    bool addGray8(unsigned char *puchData, int nWidth, int nHeight);
    /// The oldest prepared picture, to be read in place and then released exactly once. Null when
    /// there was none for 1000 ms.
    DIB *requestDIB();
    Gray8 *requestGray8();
    /// Gives a requested record back; null is ignored.
    void releaseDIB(DIB *pcDIB);
    void releaseGray8(Gray8 *pcGray8);
    /// Drops as many prepared pictures as there are now, without waiting for any.
    void emptyDIBPrepared();
    void emptyGray8Prepared();

    static const char *getID();
    static QString getName();
    static QString getClass();
    static char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool bFlag);
    /// Writes the store's picture that the configuration names. Returns the error text, empty on
    /// success and also when the picture is empty or was dropped.
    static char *execute(char *pchConfig, ArithmParamMgr *pcAPM);
    /// The text as UTF-8, valid until the calling thread's next call into this algorithm.
    static char *transConfigStr(QString &strText);

    static const char *s_ID;     ///< "KQ_MemoryDisk"
    static char *s_pchConfigStr; ///< the last text that was handed out
    static int s_nBuffLen;       ///< its capacity

    /// Made when the library is loaded. Never destroyed: at process exit a task's thread may still
    /// be inside one.
    static MemoryDisk (&s_acMemDisk)[DISK_NUM];
    int m_nDIBDestBuffNum;            ///< records in the pool
    int m_nGray8DestBuffNum;          ///< records in the pool
    int m_nDIBProcessingNum;          ///< records with consumers
    int m_nGray8ProcessingNum;        ///< records with consumers
    QSemaphore *m_pcDIBIdleSemaphore; // each counts the units of the list of its name
    QSemaphore *m_pcGray8IdleSemaphore;
    QSemaphore *m_pcDIBPreparedSemaphore;
    QSemaphore *m_pcGray8PreparedSemaphore;
    QMutex m_cMutexForDIBIdle; // each guards the list or counter of its name
    QMutex m_cMutexForDIBPrepared;
    QMutex m_cMutexForDIBProcessing;
    QMutex m_cMutexForGray8Idle;
    QMutex m_cMutexForGray8Prepared;
    QMutex m_cMutexForGray8Processing;
    QList<DIB *> m_lstDIBIdle; // both in the order of their use, the next one first
    QList<Gray8 *> m_lstGray8Idle;
    QList<DIB *> m_lstDIBPrepared;
    QList<Gray8 *> m_lstGray8Prepared;
};

#endif
