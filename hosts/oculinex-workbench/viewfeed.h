#ifndef VIEWFEED_H
#define VIEWFEED_H

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <QImage>
#include <QObject>
#include <QTimer>

#include "Drawing/drawing.h"
#include "common/viewprogress.h"

/// Reads one view on a thread of its own and tells when there is a new picture to show.
///
/// It draws into a picture that nobody sees and hands out copies, each of which shows whole runs: a
/// copy is taken before the next picture wipes the view, and when nothing waits while the tasks that
/// draw into the view are between runs. Only a run that takes its time is shown as it grows. There are at
/// most 30 pictures a second; what a faster task draws meanwhile is taken but not painted, and what a
/// full view has lost leaves no trace in what is shown.
///
/// Threads: belongs to the GUI thread, on which flows are edited.
class ViewFeed : public QObject
{
    Q_OBJECT

public:
    using Drawings = std::vector<std::unique_ptr<Drawing::DrawingOpt>>;
    struct Frame {
        QImage m_cPicture; ///< RGB888, null while there is none
        QImage m_cShrunk;  ///< the same at the size that was asked for; null when none was
    };

    /// Uses the view: from now on drawing steps have something to draw into.
    ViewFeed(int nView, const QSize &cSize, QObject *pcParent = nullptr);
    ~ViewFeed() override;

    /// The view's size in pixels; what was drawn before is dropped with the next drawing.
    void setSize(const QSize &cSize);
    void setShrunkSize(const QSize &cSize);
    /// The newest picture; one that was never taken is lost.
    Frame take();

signals:
    void ready();

private:
    void work();
    bool readTick();
    bool draw();
    void paint(Drawings::const_iterator itFirst, Drawings::const_iterator itEnd);
    void adoptSize();
    void handOver();

    const int m_nView;
    QTimer m_cDrawersTimer;

    std::mutex m_cMutex; ///< guards what follows, up to the thread
    std::condition_variable m_cStopped;
    bool m_bStop = false;
    bool m_bTold = false; ///< ready() is on its way
    QSize m_cWantedSize;
    QSize m_cShrunkSize;
    ViewProgress m_cProgress;
    Frame m_cReady;

    // Of the thread alone.
    QImage m_cBack;           ///< what is drawn into
    QImage m_acCopy[3];       ///< those that nobody holds are used again
    bool m_bDrawn = false;    ///< something was drawn that was not handed over
    bool m_bTorn = false;     ///< drawings may be lost; what is drawn belongs to no whole run
    qint64 m_nFirstDrawn = 0; ///< when the first of what was not handed over was drawn, in ms
    std::thread m_cThread;
};

#endif
