#include "taskMgr/dialoghold.h"

#include <mutex>

#include <QHash>

namespace
{
struct Held {
    int m_nHolds = 0;
    bool m_bToGo = false;
};

std::mutex s_cLock;

QHash<TaskInfo *, Held> &heldTasks()
{
    static QHash<TaskInfo *, Held> s_mapHeld;
    return s_mapHeld;
}
} // namespace

DialogHold::DialogHold(TaskInfo &cTask) : m_pcTask(&cTask), m_pcKey(&cTask)
{
    const std::lock_guard<std::mutex> cGuard(s_cLock);
    ++heldTasks()[m_pcKey].m_nHolds;
}

DialogHold::~DialogHold()
{
    {
        const std::lock_guard<std::mutex> cGuard(s_cLock);
        Held &cHeld = heldTasks()[m_pcKey];
        if (--cHeld.m_nHolds > 0)
            return;
        const bool bToGo = cHeld.m_bToGo;
        heldTasks().remove(m_pcKey);
        if (!bToGo)
            return;
    }
    delete m_pcTask.data();
}

bool DialogHold::mayEdit() const
{
    const std::lock_guard<std::mutex> cGuard(s_cLock);
    return m_pcTask && !heldTasks().value(m_pcKey).m_bToGo && !m_pcTask->IsRunning();
}

void DialogHold::destroy(TaskInfo *pcTask)
{
    {
        const std::lock_guard<std::mutex> cGuard(s_cLock);
        const auto itHeld = heldTasks().find(pcTask);
        if (itHeld != heldTasks().end()) {
            itHeld->m_bToGo = true;
            return;
        }
    }
    delete pcTask;
}
