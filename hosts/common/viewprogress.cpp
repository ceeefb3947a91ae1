#include "viewprogress.h"

#include <algorithm>

#include "Drawing/drawing.h"
#include "OculinexQTStandAloneInQt.h"
#include "taskMgr/taskMgr.h"

namespace
{
/// The first step of a flow that draws, -1 when none does.
int firstDrawing(const QList<TaskItem> &lstStep)
{
    const auto itStep = std::find_if(lstStep.begin(), lstStep.end(), [](const TaskItem &cStep) {
        return cStep.m_strArithmID == Drawing::getID();
    });
    return itStep == lstStep.end() ? -1 : static_cast<int>(itStep - lstStep.begin());
}
} // namespace

ViewProgress::ViewProgress(int nView)
{
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum(); ++nTask) {
        TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(nTask);
        if (!pcTask || pcTask->m_nWhichView != nView)
            continue;
        const int nFirst = firstDrawing(pcTask->getTaskItem());
        if (nFirst >= 0)
            m_lstDrawer.push_back({nTask, nFirst});
    }
}

ViewProgress::Moment ViewProgress::now() const
{
    Moment cMoment;
    for (const Drawer &cDrawer : m_lstDrawer) {
        TaskStatus cStatus;
        getTaskStatus(cDrawer.m_nTask, cStatus);
        cMoment.m_nEndedRuns += cStatus.m_nRuns;
        const bool bNotYetDrawing =
            cStatus.m_nCurrentStep >= 0 && cStatus.m_nCurrentStep < cDrawer.m_nFirstDrawing;
        cMoment.m_bBetweenRuns &= cStatus.m_nPictures == cStatus.m_nRuns || bNotYetDrawing;
    }
    return cMoment;
}
