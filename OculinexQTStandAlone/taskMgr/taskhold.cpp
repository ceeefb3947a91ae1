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
    if (!pcTask)
        return;
    if (!TaskRecord::of(pcTask)->letGo()) {
        delete pcTask;
        return;
    }
    // It stays for the code that holds it, and for nobody else: its thread ends, and its widgets are free
    // for the tasks that come after it.
    stopThread(pcTask);
    pcTask->disconnectEvents();
    for (QObject *TaskInfo::*pcWidget :
         {&TaskInfo::m_pcRunTask, &TaskInfo::m_pcViewSelect, &TaskInfo::m_pcThreadSelect,
          &TaskInfo::m_pcDataSource, &TaskInfo::m_pcTaskFlow}) {
        if (pcTask->*pcWidget)
            QObject::disconnect(pcTask->*pcWidget, nullptr, pcTask, nullptr);
        pcTask->*pcWidget = nullptr;
    }
}

CallersRun::CallersRun(TaskInfo &cTask) : m_cHold(cTask), m_pcRecord(TaskRecord::of(&cTask))
{
    ++m_pcRecord->m_nCallersRuns;
}

CallersRun::~CallersRun()
{
    --m_pcRecord->m_nCallersRuns;
}
