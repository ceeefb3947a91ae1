#include "MemoryDisk/memorydisk.h"

#include <cstdlib>

#include "MemoryDisk/memorypool.h"

namespace
{
MemoryPool<MemoryDisk::DIB> dibPool(MemoryDisk &cDisk)
{
    return {cDisk.m_nDIBDestBuffNum,
            cDisk.m_nDIBProcessingNum,
            cDisk.m_pcDIBIdleSemaphore,
            cDisk.m_pcDIBPreparedSemaphore,
            cDisk.m_cMutexForDIBIdle,
            cDisk.m_cMutexForDIBPrepared,
            cDisk.m_cMutexForDIBProcessing,
            cDisk.m_lstDIBIdle,
            cDisk.m_lstDIBPrepared,
            "m_lstDIBIdle.length() > 0",
            "m_lstDIBPrepared.length() > 0",
            &MemoryDisk::DIB::m_puchDIB,
            [](qint64 nWidth) { return ((nWidth + 1) * 3) & ~Q_INT64_C(3); }};
}

MemoryPool<MemoryDisk::Gray8> gray8Pool(MemoryDisk &cDisk)
{
    return {cDisk.m_nGray8DestBuffNum,
            cDisk.m_nGray8ProcessingNum,
            cDisk.m_pcGray8IdleSemaphore,
            cDisk.m_pcGray8PreparedSemaphore,
            cDisk.m_cMutexForGray8Idle,
            cDisk.m_cMutexForGray8Prepared,
            cDisk.m_cMutexForGray8Processing,
            cDisk.m_lstGray8Idle,
            cDisk.m_lstGray8Prepared,
            "m_lstGray8Idle.length() > 0",
            "m_lstGray8Prepared.length() > 0",
            &MemoryDisk::Gray8::m_puchGray8,
            [](qint64 nWidth) { return nWidth; }};
}

MemoryDisk (&makeDisks())[MemoryDisk::DISK_NUM]
{
    using Disks = MemoryDisk[MemoryDisk::DISK_NUM];
    struct Holder {
        Disks m_acDisk;
    };
    return (new Holder)->m_acDisk;
}
} // namespace

MemoryDisk (&MemoryDisk::s_acMemDisk)[MemoryDisk::DISK_NUM] = makeDisks();

MemoryDisk::DIB::~DIB()
{
    std::free(m_puchDIB);
}

MemoryDisk::Gray8::~Gray8()
{
    std::free(m_puchGray8);
}

MemoryDisk *MemoryDisk::getInstance(int nPos)
{
    return &s_acMemDisk[qBound(0, nPos, DISK_NUM - 1)];
}

MemoryDisk::MemoryDisk()
{
    dibPool(*this).create();
    gray8Pool(*this).create();
}

MemoryDisk::~MemoryDisk()
{
    dibPool(*this).destroy();
    gray8Pool(*this).destroy();
}

int MemoryDisk::getDIBBuffNum()
{
    return m_nDIBDestBuffNum;
}

int MemoryDisk::getGray8BuffNum()
{
    return m_nGray8DestBuffNum;
}

int MemoryDisk::getDIBIdleNum()
{
    return dibPool(*this).idleNum();
}

int MemoryDisk::getGray8IdleNum()
{
    return gray8Pool(*this).idleNum();
}

int MemoryDisk::getDIBPreparedNum()
{
    return dibPool(*this).preparedNum();
}

int MemoryDisk::getGray8PreparedNum()
{
    return gray8Pool(*this).preparedNum();
}

int MemoryDisk::getDIBProcessingNum()
{
    return dibPool(*this).processingNum();
}

int MemoryDisk::getGray8ProcessingNum()
{
    return gray8Pool(*this).processingNum();
}

bool MemoryDisk::addDIB(unsigned char *puchData, int nWidth, int nHeight)
{
    return dibPool(*this).add(puchData, nWidth, nHeight);
}

bool MemoryDisk::addGray8(unsigned char *puchData, int nWidth, int nHeight)
{
    return gray8Pool(*this).add(puchData, nWidth, nHeight);
}

MemoryDisk::DIB *MemoryDisk::requestDIB()
{
    return dibPool(*this).request();
}

MemoryDisk::Gray8 *MemoryDisk::requestGray8()
{
    return gray8Pool(*this).request();
}

void MemoryDisk::releaseDIB(DIB *pcDIB)
{
    dibPool(*this).release(pcDIB);
}

void MemoryDisk::releaseGray8(Gray8 *pcGray8)
{
    gray8Pool(*this).release(pcGray8);
}

void MemoryDisk::emptyDIBPrepared()
{
    dibPool(*this).emptyPrepared();
}

void MemoryDisk::emptyGray8Prepared()
{
    gray8Pool(*this).emptyPrepared();
}
