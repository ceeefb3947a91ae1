#include "picturelimit.h"

#include <unordered_map>

#include "taskMgr/taskMgr.h"

namespace
{
struct Limit {
    TaskInfo *m_pcTask;
    fnRequestPicture m_fnRequest; ///< the source's own function
    int m_nLeft;                  ///< touched by the task's thread alone
};

/// By instance ID, which a source's functions are called with. Filled before the tasks start, then
/// only searched.
std::unordered_map<int, Limit> s_mapLimit;

unsigned char *requestLimited(int nInstanceID, const char *szType, int *pnWidth, int *pnHeight)
{
    Limit &cLimit = s_mapLimit.find(nInstanceID)->second;
    if (cLimit.m_nLeft == 0) {
        cLimit.m_pcTask->m_bExit = true;
        return nullptr;
    }
    unsigned char *puchPicture = cLimit.m_fnRequest(nInstanceID, szType, pnWidth, pnHeight);
    if (puchPicture && *pnWidth >= 1 && *pnHeight >= 1)
        --cLimit.m_nLeft;
    return puchPicture;
}
} // namespace

void limitPictures(TaskInfo &cTask, int nRuns)
{
    DataSource::DataSourceInstance *pcSource = cTask.m_pcDS;
    if (!pcSource || !pcSource->m_fnRequestPicture)
        return;
    s_mapLimit[pcSource->m_nInstanceID] = {&cTask, pcSource->m_fnRequestPicture, nRuns};
    pcSource->m_fnRequestPicture = requestLimited;
}
