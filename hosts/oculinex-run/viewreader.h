#ifndef VIEWREADER_H
#define VIEWREADER_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <QImage>

#include "common/viewprogress.h"
#include "options.h"
#include "picturewriter.h"

/// Reads views while the tasks run and hands every complete update to the writer.
///
/// A view says how many drawings wait, but not which run of a task they come from. An update is
/// complete when the queue is empty and no task that draws into the view stands between its first
/// drawing of a run and the run's end; the task status tells. What is drawn next then belongs to
/// the next update: a picture wipes the view, anything else is painted over what is there.
///
/// Threads: made, stopped and destroyed on one thread; it reads on one of its own.
class ViewReader
{
public:
    /// Uses the views, so that drawing steps have something to draw into. Made when the tasks are
    /// there and before they start; status figures must be on.
    ViewReader(const QList<ViewOption> &lstView, PictureWriter &cWriter);
    ~ViewReader();
    ViewReader(const ViewReader &) = delete;
    ViewReader &operator=(const ViewReader &) = delete;

    /// Begins to read.
    void start();
    /// Reads and hands over what is still queued, and ends.
    void stop();

private:
    struct View {
        int m_nView;
        QImage m_cPicture;
        ViewProgress m_cProgress;
        bool m_bDrawn = false;   ///< something was drawn that was not handed over
        qint64 m_nDrawnRuns = 0; ///< ended runs of its drawers when the first of it was
    };

    void work();
    static bool drawQueued(View &cView);
    bool read(View &cView);
    void handOver(View &cView);

    PictureWriter &m_cWriter;
    std::vector<View> m_lstView;
    std::mutex m_cMutex; ///< guards m_bStop
    std::condition_variable m_cStopped;
    bool m_bStop = false;
    std::thread m_cThread;
};

#endif
