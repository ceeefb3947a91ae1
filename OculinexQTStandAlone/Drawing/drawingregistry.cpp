#include "Drawing/drawingregistry.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <unordered_map>

#include "singleton.h"

namespace
{
struct Entry {
    const ArithmParamMgr *m_pcAPM;
    bool m_bArmed = true;
    int m_nReaders = 0;
};

struct Table {
    std::mutex m_cMutex;
    std::condition_variable m_cRead;
    std::unordered_map<const Drawing::DrawingOpt *, Entry> m_mapEntry;
};

Table &table()
{
    return immortal<Table>();
}
} // namespace

void DrawingRegistry::add(const Drawing::DrawingOpt *pcOpt)
{
    Table &cTable = table();
    const std::lock_guard cLock(cTable.m_cMutex);
    const auto [itEntry, bNew] = cTable.m_mapEntry.try_emplace(pcOpt, Entry{pcOpt->m_pcAPM});
    // Queued once more with the same store: one that has died stays dead.
    if (!bNew && itEntry->second.m_pcAPM != pcOpt->m_pcAPM)
        itEntry->second = Entry{pcOpt->m_pcAPM};
}

void DrawingRegistry::remove(const Drawing::DrawingOpt *pcOpt)
{
    Table &cTable = table();
    const std::lock_guard cLock(cTable.m_cMutex);
    cTable.m_mapEntry.erase(pcOpt);
}

void DrawingRegistry::disarm(const ArithmParamMgr *pcAPM)
{
    Table &cTable = table();
    std::unique_lock cLock(cTable.m_cMutex);
    for (auto &[pcOpt, cEntry] : cTable.m_mapEntry) {
        if (cEntry.m_pcAPM == pcAPM)
            cEntry.m_bArmed = false;
    }
    cTable.m_cRead.wait(cLock, [&] {
        return std::none_of(cTable.m_mapEntry.cbegin(), cTable.m_mapEntry.cend(), [&](const auto &cPair) {
            return cPair.second.m_pcAPM == pcAPM && cPair.second.m_nReaders > 0;
        });
    });
}

DrawingRegistry::Permit::Permit(const Drawing::DrawingOpt *pcOpt, const ArithmParamMgr *pcAPM)
{
    Table &cTable = table();
    const std::lock_guard cLock(cTable.m_cMutex);
    const auto itEntry = cTable.m_mapEntry.find(pcOpt);
    if (itEntry == cTable.m_mapEntry.end() || itEntry->second.m_pcAPM != pcAPM)
        return;
    m_bGranted = itEntry->second.m_bArmed;
    if (m_bGranted) {
        ++itEntry->second.m_nReaders;
        m_pcCounted = pcOpt;
    }
}

DrawingRegistry::Permit::~Permit()
{
    if (!m_pcCounted)
        return;
    Table &cTable = table();
    const std::lock_guard cLock(cTable.m_cMutex);
    const auto itEntry = cTable.m_mapEntry.find(m_pcCounted);
    if (itEntry != cTable.m_mapEntry.end() && --itEntry->second.m_nReaders == 0)
        cTable.m_cRead.notify_all();
}
