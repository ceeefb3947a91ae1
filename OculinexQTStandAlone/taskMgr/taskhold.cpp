#include "taskMgr/taskhold.h"

#include "taskMgr/taskrecord.h"

TaskHold::TaskHold(TaskInfo &cTask) : m_pcTask(&cTask), m_pcRecord(TaskRecord::of(&cTask))
{
    m_pcRecord->hold();
}

TaskHold::~TaskHold()
{
    if (m_pcRecord->release())
        delete m_pcTask.data();
}

bool TaskHold::isIdle() const
{
    return m_pcTask && !m_pcRecord->isBusy();
}

bool TaskHold::mayEdit() const
{
    return isIdle() && !m_pcRecord->isToGo();
}

void TaskHold::destroy(TaskInfo *pcTask)
{
    if (pcTask && !TaskRecord::of(pcTask)->letGo())
        delete pcTask;
}

CallersRun::CallersRun(TaskInfo &cTask) : m_cHold(cTask), m_pcRecord(TaskRecord::of(&cTask))
{
    ++m_pcRecord->m_nCallersRuns;
}

CallersRun::~CallersRun()
{
    --m_pcRecord->m_nCallersRuns;
}
