#include "arithmparammgr.h"

#include "owncopy.h"
#include "paramlocks.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <utility>

LockStripes g_cParamLocks;

namespace
{
using ParamGuard = std::lock_guard<std::mutex>;

// One value or list, read or replaced at one moment. What is replaced goes after the lock does.
template <class T>
T read(const ArithmParam *pcParam, const T &cValue)
{
    const ParamGuard cGuard(lockOf(pcParam));
    return ownCopy(cValue);
}

template <class T>
void replace(const ArithmParam *pcParam, T &cValue, T cNew)
{
    const ParamGuard cGuard(lockOf(pcParam));
    std::swap(cValue, cNew);
}

// --- pictures ---

constexpr std::size_t PIXEL_ALIGNMENT = 64; // a cache line, and the widest vector

// The bytes of a picture; 0 where there is none or an int could not count them.
std::size_t pictureBytes(long long nRowBytes, int nWidth, int nHeight)
{
    if (nWidth <= 0 || nHeight <= 0 || nRowBytes > INT_MAX / nHeight)
        return 0;
    return static_cast<std::size_t>(nRowBytes * nHeight);
}

void *allocatePixels(std::size_t nBytes)
{
    void *pPixels = nullptr;
    if (nBytes == 0 || posix_memalign(&pPixels, PIXEL_ALIGNMENT, nBytes) != 0)
        return nullptr;
    // All that a later size may find large enough.
    return std::memset(pPixels, 0, malloc_usable_size(pPixels));
}

// The allocator knows how much a buffer holds; the picture has no member for it.
template <class Pixel>
void resizePicture(const ArithmParam *pcParam, Pixel *&pPixels, int &nOldWidth, int &nOldHeight,
                   long long nRowBytes, int nWidth, int nHeight)
{
    const std::size_t nBytes = pictureBytes(nRowBytes, nWidth, nHeight);
    void *pReleased;
    {
        const ParamGuard cGuard(lockOf(pcParam));
        const bool bKept = nBytes > 0 && nBytes <= malloc_usable_size(pPixels);
        nOldWidth = bKept ? nWidth : 0;
        nOldHeight = bKept ? nHeight : 0;
        if (bKept)
            return;
        pReleased = std::exchange(pPixels, nullptr);
    }
    // Allocating and zeroing take long: the lock may be another picture's too. The old buffer goes
    // first, so that both never need room at once.
    std::free(pReleased);
    pReleased = allocatePixels(nBytes);
    if (pReleased != nullptr) {
        const ParamGuard cGuard(lockOf(pcParam));
        pReleased = std::exchange(pPixels, static_cast<Pixel *>(pReleased));
        nOldWidth = nWidth;
        nOldHeight = nHeight;
    }
    std::free(pReleased); // what another thread has put there meanwhile
}

// --- lists ---

template <class T>
bool inRange(const QList<T> &lst, int nIndex)
{
    return nIndex >= 0 && nIndex < lst.size();
}

template <class T>
int listSize(const ArithmParam *pcParam, const QList<T> &lst)
{
    const ParamGuard cGuard(lockOf(pcParam));
    return lst.size();
}

template <class T>
int getItem(const ArithmParam *pcParam, const QList<T> &lst, T &cItem, int nIndex)
{
    const ParamGuard cGuard(lockOf(pcParam));
    if (!inRange(lst, nIndex))
        return 0;
    cItem = ownCopy(lst.at(nIndex));
    return 1;
}

template <class T>
int setItem(const ArithmParam *pcParam, QList<T> &lst, const T &cItem, int nIndex)
{
    const ParamGuard cGuard(lockOf(pcParam));
    if (!inRange(lst, nIndex))
        return 0;
    lst[nIndex] = cItem;
    return 1;
}

template <class T>
void addItem(const ArithmParam *pcParam, QList<T> &lst, const T &cItem)
{
    const ParamGuard cGuard(lockOf(pcParam));
    lst.append(cItem);
}

// Keeps the list's memory for the next run, unless the caller of set…s() shares it.
template <class T>
void clearList(const ArithmParam *pcParam, QList<T> &lst)
{
    const ParamGuard cGuard(lockOf(pcParam));
    if (lst.isDetached())
        lst.erase(lst.begin(), lst.end());
    else
        lst = QList<T>();
}

QByteArray utf8Of(const ParamStrings &cParam, int nIndex)
{
    QString strText;
    getItem(&cParam, cParam.m_lstStrings, strText, nIndex);
    return strText.toUtf8();
}
} // namespace

ArithmParam::ArithmParam() : ArithmParam(0) {}

ArithmParam::ArithmParam(int nID) : m_nID(nID) {}

ArithmParam::~ArithmParam() = default;

int ArithmParam::getID() const
{
    return read(this, m_nID);
}

QString ArithmParam::getName() const
{
    return read(this, m_strName);
}

void ArithmParam::setName(QString strName)
{
    replace(this, m_strName, std::move(strName));
}

QString ArithmParam::getDescribe() const
{
    return read(this, m_strDescribe);
}

void ArithmParam::setDescribe(QString strDescribe)
{
    replace(this, m_strDescribe, std::move(strDescribe));
}

// A picture of one kind: the member that points to its pixels, and the bytes of a row of nWidth.
#define PICTURE_PARAM(Picture, pPixels, nRowBytes)                                                           \
    Param##Picture::Param##Picture() : Param##Picture(0) {}                                                  \
    Param##Picture::Param##Picture(int nID)                                                                  \
        : ArithmParam(nID), pPixels(nullptr), m_nWidth(0), m_nHeight(0) {}                                   \
    Param##Picture::~Param##Picture()                                                                        \
    {                                                                                                        \
        std::free(pPixels);                                                                                  \
    }                                                                                                        \
    int Param##Picture::getWidth() const                                                                     \
    {                                                                                                        \
        return read(this, m_nWidth);                                                                         \
    }                                                                                                        \
    int Param##Picture::getHeight() const                                                                    \
    {                                                                                                        \
        return read(this, m_nHeight);                                                                        \
    }                                                                                                        \
    auto Param##Picture::get##Picture() const->decltype(pPixels)                                             \
    {                                                                                                        \
        return read(this, pPixels);                                                                          \
    }                                                                                                        \
    void Param##Picture::resize(int nWidth, int nHeight)                                                     \
    {                                                                                                        \
        resizePicture(this, pPixels, m_nWidth, m_nHeight, nRowBytes, nWidth, nHeight);                       \
    }

PICTURE_PARAM(DIB, m_puchDIB, (nWidth * 3LL + 3) & ~3LL)
PICTURE_PARAM(Gray8, m_puchGray8, nWidth)
PICTURE_PARAM(Gray16, m_punGray16, nWidth * 2LL)

// A list of one kind: the name of its element, and how an element is handed in.
#define LIST_PARAM(Item, Argument)                                                                           \
    Param##Item##s::Param##Item##s() = default;                                                              \
    Param##Item##s::Param##Item##s(int nID) : ArithmParam(nID) {}                                            \
    Param##Item##s::~Param##Item##s() = default;                                                             \
    int Param##Item##s::get##Item##Num() const                                                               \
    {                                                                                                        \
        return listSize(this, m_lst##Item##s);                                                               \
    }                                                                                                        \
    int Param##Item##s::set##Item(Argument cItem, int nIndex)                                                \
    {                                                                                                        \
        return setItem(this, m_lst##Item##s, cItem, nIndex);                                                 \
    }                                                                                                        \
    void Param##Item##s::add##Item(Argument cItem)                                                           \
    {                                                                                                        \
        addItem(this, m_lst##Item##s, cItem);                                                                \
    }                                                                                                        \
    void Param##Item##s::clear##Item##s()                                                                    \
    {                                                                                                        \
        clearList(this, m_lst##Item##s);                                                                     \
    }                                                                                                        \
    auto Param##Item##s::get##Item##s() const->decltype(m_lst##Item##s)                                      \
    {                                                                                                        \
        return read(this, m_lst##Item##s);                                                                   \
    }                                                                                                        \
    void Param##Item##s::set##Item##s(const decltype(m_lst##Item##s) &lstItems)                              \
    {                                                                                                        \
        replace(this, m_lst##Item##s, lstItems);                                                             \
    }

// A list whose elements are read as they are.
#define PLAIN_LIST_PARAM(Item, Argument)                                                                     \
    LIST_PARAM(Item, Argument)                                                                               \
    int Param##Item##s::get##Item(decltype(m_lst##Item##s)::value_type &cItem, int nIndex) const             \
    {                                                                                                        \
        return getItem(this, m_lst##Item##s, cItem, nIndex);                                                 \
    }

PLAIN_LIST_PARAM(Point, const Point &)
PLAIN_LIST_PARAM(Line, const Line &)
PLAIN_LIST_PARAM(Poly, const Poly &)
PLAIN_LIST_PARAM(Area, const Area &)
LIST_PARAM(String, const QString &)
PLAIN_LIST_PARAM(Long, long)
PLAIN_LIST_PARAM(Double, double)
PLAIN_LIST_PARAM(Bool, bool)

int ParamPolys::getPolyVertNum(int nPoly) const
{
    const ParamGuard cGuard(lockOf(this));
    return inRange(m_lstPolys, nPoly) ? m_lstPolys.at(nPoly).verts.size() : 0;
}

int ParamPolys::getPolyVert(Point &cPoint, int nPoly, int nVert) const
{
    const ParamGuard cGuard(lockOf(this));
    if (!inRange(m_lstPolys, nPoly) || !inRange(m_lstPolys.at(nPoly).verts, nVert))
        return 0;
    cPoint = m_lstPolys.at(nPoly).verts.at(nVert);
    return 1;
}

int ParamPolys::setPolyVert(const Point &cPoint, int nPoly, int nVert)
{
    const ParamGuard cGuard(lockOf(this));
    if (!inRange(m_lstPolys, nPoly) || !inRange(m_lstPolys.at(nPoly).verts, nVert))
        return 0;
    m_lstPolys[nPoly].verts[nVert] = cPoint;
    return 1;
}

int ParamPolys::addPolyVert(const Point &cPoint, int nPoly)
{
    const ParamGuard cGuard(lockOf(this));
    if (!inRange(m_lstPolys, nPoly))
        return 0;
    m_lstPolys[nPoly].verts.append(cPoint);
    return 1;
}

int ParamStrings::getStringLen(int nIndex) const
{
    return utf8Of(*this, nIndex).size();
}

int ParamStrings::getString(char *szBuff, int nBuffLen, int nIndex) const
{
    if (szBuff == nullptr || nBuffLen < 1)
        return 0;
    const QByteArray baText = utf8Of(*this, nIndex);
    const int nLen = std::min(nBuffLen, baText.size());
    std::memcpy(szBuff, baText.constData(), static_cast<std::size_t>(nLen));
    return nLen;
}
