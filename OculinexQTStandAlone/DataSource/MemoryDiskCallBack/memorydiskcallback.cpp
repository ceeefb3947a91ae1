#include "DataSource/MemoryDiskCallBack/memorydiskcallback.h"

#include <cstring>
#include <utility>

namespace
{
/// What differs between the kinds of pictures.
template <class Record>
struct Access {
    Record *(MemoryDisk::*m_fnRequest)();
    void (MemoryDisk::*m_fnRelease)(Record *);
    unsigned char *(Record::*m_fnPixels)() const;
    const char *m_szInvariant;
};

constexpr Access<MemoryDisk::DIB> COLOUR = {&MemoryDisk::requestDIB, &MemoryDisk::releaseDIB,
                                            &MemoryDisk::DIB::getDIB, "s_mapDIB[nInstanceID] == NULL"};
constexpr Access<MemoryDisk::Gray8> GREY = {&MemoryDisk::requestGray8, &MemoryDisk::releaseGray8,
                                            &MemoryDisk::Gray8::getGray8, "s_mapGray8[nInstanceID] == NULL"};

/// The records of one kind that the instances hold, with their memory disk.
template <class Record>
struct Holdings {
    const Access<Record> &m_cAccess;
    MemoryDisk *m_pcDisk;
    std::mutex &m_cMutex;
    QMap<int, Record *> &m_mapHeld;

    unsigned char *request(int nInstanceID, int *pnWidth, int *pnHeight) const
    {
        Q_ASSERT_X(!holds(nInstanceID), "MemoryDiskRequestPicture", m_cAccess.m_szInvariant);
        {
            // Made before there is a record that a lack of memory could lose.
            const std::lock_guard<std::mutex> cGuard(m_cMutex);
            m_mapHeld[nInstanceID];
        }
        Record *pcRecord = (m_pcDisk->*m_cAccess.m_fnRequest)();
        if (!pcRecord)
            return nullptr;
        Record *pcOld = nullptr;
        {
            const std::lock_guard<std::mutex> cGuard(m_cMutex);
            pcOld = std::exchange(m_mapHeld[nInstanceID], pcRecord);
        }
        // Requested twice without a release between: the pool must not lose the first record.
        (m_pcDisk->*m_cAccess.m_fnRelease)(pcOld);
        *pnWidth = pcRecord->getWidth();
        *pnHeight = pcRecord->getHeight();
        return (pcRecord->*m_cAccess.m_fnPixels)();
    }

    void release(int nInstanceID) const
    {
        Record *pcHeld = nullptr;
        {
            const std::lock_guard<std::mutex> cGuard(m_cMutex);
            // The entry stays, so that a steady flow allocates no new one per picture.
            const auto itHeld = m_mapHeld.find(nInstanceID);
            if (itHeld != m_mapHeld.end())
                pcHeld = std::exchange(*itHeld, nullptr);
        }
        (m_pcDisk->*m_cAccess.m_fnRelease)(pcHeld);
    }

    void remove(int nInstanceID) const
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_mapHeld.remove(nInstanceID);
    }

private:
    [[maybe_unused]] bool holds(int nInstanceID) const
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        return m_mapHeld.value(nInstanceID) != nullptr;
    }
};

template <class Kind>
Holdings<MemoryDisk::DIB> colour()
{
    return {COLOUR, MemoryDisk::getInstance(Kind::s_nPos), Kind::s_cMutexForMaps, Kind::s_mapDIB};
}

template <class Kind>
Holdings<MemoryDisk::Gray8> grey()
{
    return {GREY, MemoryDisk::getInstance(Kind::s_nPos), Kind::s_cMutexForMaps, Kind::s_mapGray8};
}
} // namespace

template <int nDisk>
int MemoryDiskCallBack<nDisk>::s_nPos = nDisk;
template <int nDisk>
QMap<int, MemoryDisk::DIB *> &MemoryDiskCallBack<nDisk>::s_mapDIB = *new QMap<int, MemoryDisk::DIB *>;
template <int nDisk>
QMap<int, MemoryDisk::Gray8 *> &MemoryDiskCallBack<nDisk>::s_mapGray8 = *new QMap<int, MemoryDisk::Gray8 *>;
template <int nDisk>
char MemoryDiskCallBack<nDisk>::s_achBlank[1] = {'\0'};
template <int nDisk>
std::mutex MemoryDiskCallBack<nDisk>::s_cMutexForMaps;

template <int nDisk>
unsigned char *MemoryDiskCallBack<nDisk>::MemoryDiskRequestPicture(int nInstanceID, const char *szType,
                                                                   int *pnWidth, int *pnHeight)
{
    if (strncmp(szType, "RGB", 3) == 0)
        return colour<MemoryDiskCallBack>().request(nInstanceID, pnWidth, pnHeight);
    if (strncmp(szType, "Gray8", 5) == 0)
        return grey<MemoryDiskCallBack>().request(nInstanceID, pnWidth, pnHeight);
    return nullptr;
}

template <int nDisk>
void MemoryDiskCallBack<nDisk>::MemoryDiskReleasePicture(int nInstanceID)
{
    colour<MemoryDiskCallBack>().release(nInstanceID);
    grey<MemoryDiskCallBack>().release(nInstanceID);
}

template <int nDisk>
char *MemoryDiskCallBack<nDisk>::MemoryDiskShowConfigDlg(char *, bool)
{
    return s_achBlank;
}

template <int nDisk>
void MemoryDiskCallBack<nDisk>::MemoryDiskSetConfig(int, char *)
{
}

template <int nDisk>
void MemoryDiskCallBack<nDisk>::MemoryDiskStart(int)
{
}

template <int nDisk>
void MemoryDiskCallBack<nDisk>::MemoryDiskStop(int)
{
}

template <int nDisk>
void MemoryDiskCallBack<nDisk>::MemoryDiskRemoveInstance(int nInstanceID)
{
    colour<MemoryDiskCallBack>().remove(nInstanceID);
    grey<MemoryDiskCallBack>().remove(nInstanceID);
}

template <int nDisk>
char *MemoryDiskCallBack<nDisk>::MemoryDiskGetLastError(int)
{
    return s_achBlank;
}

template class MemoryDiskCallBack<0>;
template class MemoryDiskCallBack<1>;
template class MemoryDiskCallBack<2>;
template class MemoryDiskCallBack<3>;
template class MemoryDiskCallBack<4>;
template class MemoryDiskCallBack<5>;
