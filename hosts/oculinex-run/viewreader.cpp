#include "viewreader.h"

#include <chrono>

#include "OculinexQTStandAloneInQt.h"
#include "globalfunction.h"

namespace
{
/// A view keeps ten drawings; a task that fills it faster loses the oldest.
constexpr std::chrono::milliseconds POLL(5);
/// So many runs without a moment between two of them, and an update is handed over as it stands.
constexpr qint64 PATIENCE_RUNS = 10;
} // namespace

ViewReader::ViewReader(const QList<ViewOption> &lstView, PictureWriter &cWriter) : m_cWriter(cWriter)
{
    for (const ViewOption &cOption : lstView) {
        View cView;
        cView.m_nView = cOption.m_nView;
        cView.m_cPicture = QImage(cOption.m_cSize, QImage::Format_RGB888);
        cView.m_cPicture.fill(Qt::black);
        cView.m_cProgress = ViewProgress(cView.m_nView);
        m_lstView.push_back(cView);
        useDrawingWindow(cOption.m_nView, cOption.m_cSize.width(), cOption.m_cSize.height());
    }
}

ViewReader::~ViewReader()
{
    stop();
}

void ViewReader::start()
{
    m_cThread = std::thread([this] { work(); });
}

void ViewReader::stop()
{
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bStop = true;
        m_cStopped.notify_one();
    }
    if (!m_cThread.joinable())
        return;
    m_cThread.join();
    for (View &cView : m_lstView) {
        drawQueued(cView);
        if (cView.m_bDrawn)
            handOver(cView);
    }
}

void ViewReader::work()
{
    std::unique_lock<std::mutex> cLock(m_cMutex);
    while (!m_bStop) {
        cLock.unlock();
        bool bDrawn = false;
        for (View &cView : m_lstView)
            bDrawn |= read(cView);
        cLock.lock();
        if (!bDrawn)
            m_cStopped.wait_for(cLock, POLL, [this] { return m_bStop; });
    }
}

/// Draws what waits, but no more than the queue holds: tasks may draw faster than this. Whether that was
/// anything.
bool ViewReader::drawQueued(View &cView)
{
    bool bDrawn = false;
    int nResult = 1;
    for (int nDrawn = 0; nResult == 1 && nDrawn < GlobalFunction::ViewDrawOption::QUEUE_LENGTH; ++nDrawn) {
        nResult = getDrawingWindow(cView.m_nView, cView.m_cPicture.bits(), cView.m_cPicture.width(),
                                   cView.m_cPicture.height());
        bDrawn |= nResult >= 0;
    }
    cView.m_bDrawn |= bDrawn;
    return bDrawn;
}

/// Whether anything was drawn.
bool ViewReader::read(View &cView)
{
    if (!cView.m_bDrawn) {
        const bool bDrawn = drawQueued(cView);
        if (bDrawn)
            cView.m_nDrawnRuns = cView.m_cProgress.now().m_nEndedRuns;
        return bDrawn;
    }
    // All that was queued between two looks which saw the same moment between runs is drawn.
    const ViewProgress::Moment cBefore = cView.m_cProgress.now();
    const bool bDrawn = drawQueued(cView);
    const ViewProgress::Moment cAfter = cView.m_cProgress.now();
    if (cBefore.isSameGap(cAfter) || cBefore.m_nEndedRuns >= cView.m_nDrawnRuns + PATIENCE_RUNS)
        handOver(cView);
    return bDrawn;
}

void ViewReader::handOver(View &cView)
{
    m_cWriter.add(cView.m_nView, cView.m_cPicture);
    cView.m_bDrawn = false;
}
