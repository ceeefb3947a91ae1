// Plug-ins built elsewhere reach into these objects: their layout on 64-bit targets never changes.
#include "arithmparammgr.h"

#include <cstddef>
#include <type_traits>

#pragma GCC diagnostic ignored "-Winvalid-offsetof" // members in base and derived class: fixed by the ABI

namespace
{
constexpr bool IS_64_BIT = sizeof(void *) == 8;

#define PINNED(Class, member, nOffset)                                                                       \
    static_assert(!IS_64_BIT || offsetof(Class, member) == (nOffset), "moved: " #Class "::" #member)
#define PINNED_SIZE(Class, nSize)                                                                            \
    static_assert(!IS_64_BIT || (sizeof(Class) == (nSize) && !std::is_polymorphic_v<Class>),                 \
                  "another size, or virtual functions: " #Class)
#define PINNED_PICTURE(Class, pPixels)                                                                       \
    PINNED_SIZE(Class, 40);                                                                                  \
    PINNED(Class, m_strName, 0);                                                                             \
    PINNED(Class, pPixels, 24);                                                                              \
    PINNED(Class, m_nWidth, 32);                                                                             \
    PINNED(Class, m_nHeight, 36)
#define PINNED_LIST(Class, lstItems)                                                                         \
    PINNED_SIZE(Class, 32);                                                                                  \
    PINNED(Class, m_strName, 0);                                                                             \
    PINNED(Class, lstItems, 24)

PINNED_SIZE(ArithmParam, 24);
PINNED(ArithmParam, m_strName, 0);
PINNED(ArithmParam, m_strDescribe, 8);
PINNED(ArithmParam, m_nID, 16);
PINNED_PICTURE(ParamDIB, m_puchDIB);
PINNED_PICTURE(ParamGray8, m_puchGray8);
PINNED_PICTURE(ParamGray16, m_punGray16);
PINNED_LIST(ParamPoints, m_lstPoints);
PINNED_LIST(ParamLines, m_lstLines);
PINNED_LIST(ParamPolys, m_lstPolys);
PINNED_LIST(ParamAreas, m_lstAreas);
PINNED_LIST(ParamStrings, m_lstStrings);
PINNED_LIST(ParamLongs, m_lstLongs);
PINNED_LIST(ParamDoubles, m_lstDoubles);
PINNED_LIST(ParamBools, m_lstBools);
PINNED_SIZE(ParamPoints::Point, 8);
PINNED_SIZE(ParamLines::Line, 16);
PINNED_SIZE(ParamPolys::Point, 8);
PINNED_SIZE(ParamPolys::Poly, 8);
PINNED_SIZE(ParamAreas::Area, 28);
PINNED(ParamAreas::Area, bounds, 4);
PINNED(ParamAreas::Area, seedx, 20);
PINNED(ParamAreas::Area, seedy, 24);

// A QList keeps small records in place only when their type is declared movable or primitive. These
// are not: a plug-in that declares them as the plain records that they are would misread the lists.
static_assert(QTypeInfo<ParamPoints::Point>::isStatic != 0 && QTypeInfo<ParamPolys::Point>::isStatic != 0 &&
                  QTypeInfo<ParamPolys::Poly>::isStatic != 0,
              "the nodes of a list changed");

PINNED_SIZE(ArithmParamMgr, 96);
PINNED(ArithmParamMgr, VERSION, 0);
PINNED(ArithmParamMgr, m_mapParamDIB, 8);
PINNED(ArithmParamMgr, m_mapParamGray8, 16);
PINNED(ArithmParamMgr, m_mapParamGray16, 24);
PINNED(ArithmParamMgr, m_mapParamPoints, 32);
PINNED(ArithmParamMgr, m_mapParamLines, 40);
PINNED(ArithmParamMgr, m_mapParamPolys, 48);
PINNED(ArithmParamMgr, m_mapParamAreas, 56);
PINNED(ArithmParamMgr, m_mapParamStrings, 64);
PINNED(ArithmParamMgr, m_mapParamLongs, 72);
PINNED(ArithmParamMgr, m_mapParamDoubles, 80);
PINNED(ArithmParamMgr, m_mapParamBools, 88);

using Resource = ArithmParamMgr::Resource;
PINNED(Resource, m_cCond, 0);
PINNED(Resource, m_cMutex, sizeof(pthread_cond_t));
PINNED(Resource, m_nMaxCount, sizeof(pthread_cond_t) + sizeof(pthread_mutex_t));
PINNED(Resource, m_nCurCount, sizeof(pthread_cond_t) + sizeof(pthread_mutex_t) + sizeof(int));
} // namespace
