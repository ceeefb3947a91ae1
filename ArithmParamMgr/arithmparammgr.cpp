#include "arithmparammgr.h"

#include "owncopy.h"
#include "paramlocks.h"
#include "qguard.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <memory>
#include <mutex>
#include <type_traits>
#include <unordered_map>
#include <utility>

// Weak, since the task library exports the same text under the same name: a process has one of them.
__attribute__((weak)) char gszErrVerMsg[33] = "ArithmParamMgr version mismatch.";

// Initialised before any code runs, and never destroyed under a thread that outlives main().
LockStripes g_cStoreLocks;
ArithmParamMgr::Resource ArithmParamMgr::s_acResource[RESOURCE_NUM];
QMutex ArithmParamMgr::s_cMutexForVar;
long long ArithmParamMgr::s_anShare[SHARE_NUM];
static_assert(std::is_trivially_destructible_v<ArithmParamMgr::Resource>, "must outlive exit handlers");

// The kinds, in the order of the maps and of ArithmParamMgr::Kind.
// clang-format off
#define FOR_EACH_PICTURE(X) X(DIB) X(Gray8) X(Gray16)
#define FOR_EACH_LIST(X) X(Points) X(Lines) X(Polys) X(Areas) X(Strings) X(Longs) X(Doubles) X(Bools)
// clang-format on

namespace
{
using StoreGuard = std::lock_guard<std::mutex>;
using Kind = ArithmParamMgr::Kind;

// --- fresh IDs ---

// The last fresh ID handed out in each kind. A store has no member for them, so they stand beside
// it from its first fresh ID until it is destroyed.
using FreshIDs = std::array<int, static_cast<std::size_t>(Kind::Bools) + 1>;

struct FreshIDTable {
    std::mutex m_cLock; // taken after the store's, and held with no other
    std::unordered_map<const ArithmParamMgr *, FreshIDs> m_mapStore;
};

FreshIDTable &freshIDTable()
{
    static auto *s_pcTable = new FreshIDTable; // never freed: stores may outlive main()
    return *s_pcTable;
}

// One past the highest ID that was ever handed out or is in use now. An ID so high that hardly any
// would be left above it does not count, and after the last of all it starts again at 1.
template <class Param>
int freshID(const ArithmParamMgr *pcAPM, const QMap<int, Param *> &mapParam, Kind eKind)
{
    constexpr int HIGHEST_COUNTED = INT_MAX - (1 << 20);
    FreshIDTable &cTable = freshIDTable();
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    int &nLast = cTable.m_mapStore[pcAPM][static_cast<std::size_t>(eKind)];
    if (!mapParam.isEmpty() && mapParam.lastKey() <= HIGHEST_COUNTED)
        nLast = std::max(nLast, mapParam.lastKey());
    do
        nLast = nLast < INT_MAX ? nLast + 1 : 1;
    while (mapParam.contains(nLast));
    return nLast;
}

// --- one map ---

template <class Param>
Param *getOrCreate(const ArithmParamMgr *pcAPM, QMap<int, Param *> &mapParam, Kind eKind, int nID)
{
    const StoreGuard cGuard(lockOf(pcAPM));
    if (nID == -1)
        nID = freshID(pcAPM, mapParam, eKind);
    else if (Param *pcParam = mapParam.value(nID))
        return pcParam;
    auto pcNew = std::make_unique<Param>(nID);
    Param *&pcKept = mapParam[nID]; // may lack memory
    pcKept = pcNew.release();
    return pcKept;
}

// The store's lock is held, so that no snapshot is reading the parameter. Its own lock is awaited
// once, for an accessor that another thread is just leaving.
template <class Param>
void destroy(Param *pcParam)
{
    {
        const std::lock_guard<std::mutex> cGuard(lockOf(static_cast<ArithmParam *>(pcParam)));
    }
    delete pcParam;
}

template <class Param>
void removeOne(const ArithmParamMgr *pcAPM, QMap<int, Param *> &mapParam, int nID)
{
    const StoreGuard cGuard(lockOf(pcAPM));
    if (Param *pcParam = mapParam.take(nID))
        destroy(pcParam);
}

template <class Param>
void removeAll(QMap<int, Param *> &mapParam)
{
    for (Param *pcParam : std::as_const(mapParam))
        destroy(pcParam);
    mapParam.clear();
}

template <class Param, class T>
QList<T> snapshotList(const ArithmParamMgr *pcAPM, const QMap<int, Param *> &mapParam, QList<T> Param::*lst,
                      int nID, QString *pstrName)
{
    QString strName;
    QList<T> lstItems;
    {
        const StoreGuard cStoreGuard(lockOf(pcAPM));
        if (const Param *pcParam = mapParam.value(nID)) {
            const std::lock_guard<std::mutex> cParamGuard(lockOf(pcParam));
            strName = pcParam->m_strName;
            lstItems = ownCopy(pcParam->*lst);
        }
    }
    if (pstrName != nullptr)
        *pstrName = strName;
    return lstItems;
}

// What a store holds of one kind; fnMeasure adds the sizes that only this kind has.
template <class Param, class Measure>
void appendEntries(QList<ArithmParamMgr::Entry> &lstEntries, const QMap<int, Param *> &mapParam, Kind eKind,
                   Measure fnMeasure)
{
    for (auto it = mapParam.cbegin(); it != mapParam.cend(); ++it) {
        const Param &cParam = *it.value();
        const std::lock_guard<std::mutex> cGuard(lockOf(&cParam));
        ArithmParamMgr::Entry cEntry{eKind, it.key(), cParam.m_strName, cParam.m_strDescribe, 0, 0, 0};
        fnMeasure(cEntry, cParam);
        lstEntries.append(cEntry);
    }
}

// Holds a resource's own mutex, also while a cancelled thread unwinds.
class ResourceGuard
{
public:
    explicit ResourceGuard(pthread_mutex_t &cMutex) : m_cMutex(cMutex) { pthread_mutex_lock(&m_cMutex); }
    ~ResourceGuard() { pthread_mutex_unlock(&m_cMutex); }
    ResourceGuard(const ResourceGuard &) = delete;
    ResourceGuard &operator=(const ResourceGuard &) = delete;

private:
    pthread_mutex_t &m_cMutex;
};

bool isResource(int nIndex)
{
    return nIndex >= 0 && nIndex < ArithmParamMgr::RESOURCE_NUM;
}

bool isShare(int nIndex)
{
    return nIndex >= 0 && nIndex < ArithmParamMgr::SHARE_NUM;
}
} // namespace

void ArithmParamMgr::Resource::request()
{
    const ResourceGuard cGuard(m_cMutex);
    while (m_nCurCount >= m_nMaxCount)
        pthread_cond_wait(&m_cCond, &m_cMutex);
    ++m_nCurCount;
}

void ArithmParamMgr::Resource::release()
{
    const ResourceGuard cGuard(m_cMutex);
    if (m_nCurCount == 0)
        return;
    --m_nCurCount;
    pthread_cond_signal(&m_cCond);
}

void ArithmParamMgr::Resource::setMaxCount(int nMax)
{
    const ResourceGuard cGuard(m_cMutex);
    m_nMaxCount = std::max(nMax, 1);
    pthread_cond_broadcast(&m_cCond);
}

ArithmParamMgr *ArithmParamMgr::newInstance()
{
    return new ArithmParamMgr;
}

void ArithmParamMgr::deleteInstance(ArithmParamMgr *pcAPM)
{
    delete pcAPM;
}

ArithmParamMgr::ArithmParamMgr() : VERSION(QStringLiteral("1.0")) {}

ArithmParamMgr::~ArithmParamMgr()
{
    clean();
    FreshIDTable &cTable = freshIDTable();
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    cTable.m_mapStore.erase(this);
}

void ArithmParamMgr::clean()
{
    const StoreGuard cGuard(lockOf(this));
#define REMOVE_ALL(KIND) removeAll(m_mapParam##KIND);
    FOR_EACH_PICTURE(REMOVE_ALL)
    FOR_EACH_LIST(REMOVE_ALL)
}

#define ONE_KIND(KIND)                                                                                       \
    Param##KIND *ArithmParamMgr::getParam##KIND(int nID)                                                     \
    {                                                                                                        \
        return getOrCreate(this, m_mapParam##KIND, Kind::KIND, nID);                                         \
    }                                                                                                        \
    QMap<int, Param##KIND *> *ArithmParamMgr::requestParam##KIND##Map()                                      \
    {                                                                                                        \
        return &m_mapParam##KIND;                                                                            \
    }                                                                                                        \
    void ArithmParamMgr::removeParam##KIND(int nID)                                                          \
    {                                                                                                        \
        removeOne(this, m_mapParam##KIND, nID);                                                              \
    }
FOR_EACH_PICTURE(ONE_KIND)
FOR_EACH_LIST(ONE_KIND)

QList<ArithmParamMgr::Entry> ArithmParamMgr::snapshot() const
{
    QList<Entry> lstEntries;
    const StoreGuard cGuard(lockOf(this));
#define APPEND_PICTURES(KIND)                                                                                \
    appendEntries(lstEntries, m_mapParam##KIND, Kind::KIND, [](Entry &cEntry, const Param##KIND &cParam) {   \
        cEntry.m_nWidth = cParam.m_nWidth;                                                                   \
        cEntry.m_nHeight = cParam.m_nHeight;                                                                 \
    });
#define APPEND_LISTS(KIND)                                                                                   \
    appendEntries(lstEntries, m_mapParam##KIND, Kind::KIND, [](Entry &cEntry, const Param##KIND &cParam) {   \
        cEntry.m_nCount = cParam.m_lst##KIND.size();                                                         \
    });
    FOR_EACH_PICTURE(APPEND_PICTURES)
    FOR_EACH_LIST(APPEND_LISTS)
    return lstEntries;
}

QList<ParamPoints::Point> ArithmParamMgr::snapshotPoints(int nID, QString *pstrName) const
{
    return snapshotList(this, m_mapParamPoints, &ParamPoints::m_lstPoints, nID, pstrName);
}

QList<ParamLines::Line> ArithmParamMgr::snapshotLines(int nID, QString *pstrName) const
{
    return snapshotList(this, m_mapParamLines, &ParamLines::m_lstLines, nID, pstrName);
}

QList<ParamPolys::Poly> ArithmParamMgr::snapshotPolys(int nID, QString *pstrName) const
{
    return snapshotList(this, m_mapParamPolys, &ParamPolys::m_lstPolys, nID, pstrName);
}

QList<ParamAreas::Area> ArithmParamMgr::snapshotAreas(int nID, QString *pstrName) const
{
    return snapshotList(this, m_mapParamAreas, &ParamAreas::m_lstAreas, nID, pstrName);
}

QList<QString> ArithmParamMgr::snapshotStrings(int nID, QString *pstrName) const
{
    return snapshotList(this, m_mapParamStrings, &ParamStrings::m_lstStrings, nID, pstrName);
}

int ArithmParamMgr::requestResource(int nIndex)
{
    if (!isResource(nIndex))
        return 0;
    s_acResource[nIndex].request();
    return 1;
}

int ArithmParamMgr::releaseResource(int nIndex)
{
    if (!isResource(nIndex))
        return 0;
    s_acResource[nIndex].release();
    return 1;
}

long long ArithmParamMgr::getInt64(int nIndex)
{
    if (!isShare(nIndex))
        return 0;
    const QGuard cGuard(s_cMutexForVar);
    return s_anShare[nIndex];
}

void ArithmParamMgr::setInt64(int nIndex, long long nValue)
{
    if (!isShare(nIndex))
        return;
    const QGuard cGuard(s_cMutexForVar);
    s_anShare[nIndex] = nValue;
}
