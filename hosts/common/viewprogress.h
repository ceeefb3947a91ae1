#ifndef VIEWPROGRESS_H
#define VIEWPROGRESS_H

#include <vector>

#include <QtGlobal>

/// How far the tasks are that draw into one view.
///
/// A view says how many drawings wait, but not which run of a task they come from. When nothing waits
/// and two looks before and after that saw the same moment between runs, the view shows whole runs.
/// Status figures must be on; without them every moment is one between runs.
///
/// Threads: made on the thread that edits flows; now() may be called by any thread.
class ViewProgress
{
public:
    struct Moment {
        qint64 m_nEndedRuns = 0;
        bool m_bBetweenRuns = true; ///< nothing has been drawn in a run that has not ended

        bool isSameGap(const Moment &cOther) const
        {
            return m_bBetweenRuns && cOther.m_bBetweenRuns && m_nEndedRuns == cOther.m_nEndedRuns;
        }
    };

    ViewProgress() = default; ///< nobody draws
    explicit ViewProgress(int nView);

    Moment now() const;

private:
    /// A task that draws into the view.
    struct Drawer {
        int m_nTask;
        int m_nFirstDrawing; ///< its first step that draws
    };

    std::vector<Drawer> m_lstDrawer;
};

#endif
