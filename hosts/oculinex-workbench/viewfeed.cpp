#include "viewfeed.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <iterator>

#include <QElapsedTimer>

#include "OculinexQTStandAloneInQt.h"
#include "globalfunction.h"

namespace
{
constexpr std::chrono::milliseconds TICK(33);
constexpr std::chrono::milliseconds POLL(4);
/// A run that draws for longer is shown as it grows, in ms.
constexpr qint64 PATIENCE = 500;
/// How often it is looked which tasks draw into the view, in ms.
constexpr int DRAWERS_INTERVAL = 200;

/// What waited in a view, oldest first.
struct Waiting {
    ViewFeed::Drawings m_lstDrawing;
    bool m_bFull = false; ///< older ones may have been lost
};

/// Takes all at one moment: a task that draws meanwhile waits, but only for that.
Waiting takeAll(int nView)
{
    Waiting cWaiting;
    GlobalFunction *const pcViews = GlobalFunction::getInstance();
    GlobalFunction::ViewDrawOption *const pcCanvas = pcViews->requestViewDrawOption(nView);
    if (!pcCanvas)
        return cWaiting;
    cWaiting.m_lstDrawing.reserve(GlobalFunction::ViewDrawOption::QUEUE_LENGTH);
    while (Drawing::DrawingOpt *const pcDrawing = pcCanvas->popDrawingOpt())
        cWaiting.m_lstDrawing.emplace_back(pcDrawing);
    cWaiting.m_bFull = cWaiting.m_lstDrawing.size() >= GlobalFunction::ViewDrawOption::QUEUE_LENGTH;
    pcViews->releaseViewDrawOption(nView, pcCanvas);
    return cWaiting;
}

/// Whether a drawing clears the view first.
bool wipes(const ViewFeed::Drawings::value_type &pcDrawing)
{
    const auto *const pcGrey = dynamic_cast<const Drawing::GrayDrawingOpt *>(pcDrawing.get());
    return pcGrey ? pcGrey->getDrawMode() == 0 : pcDrawing->getDataType() == 0;
}

qint64 now()
{
    static const QElapsedTimer s_cClock = [] {
        QElapsedTimer cClock;
        cClock.start();
        return cClock;
    }();
    return s_cClock.elapsed();
}
} // namespace

ViewFeed::ViewFeed(int nView, const QSize &cSize, QObject *pcParent)
    : QObject(pcParent), m_nView(nView), m_cWantedSize(cSize), m_cProgress(nView)
{
    useDrawingWindow(nView, cSize.width(), cSize.height());
    connect(&m_cDrawersTimer, &QTimer::timeout, this, [this] {
        const ViewProgress cProgress(m_nView);
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_cProgress = cProgress;
    });
    m_cDrawersTimer.start(DRAWERS_INTERVAL);
    m_cThread = std::thread([this] { work(); });
}

ViewFeed::~ViewFeed()
{
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bStop = true;
        m_cStopped.notify_one();
    }
    m_cThread.join();
}

void ViewFeed::setSize(const QSize &cSize)
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    m_cWantedSize = cSize;
}

void ViewFeed::setShrunkSize(const QSize &cSize)
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    m_cShrunkSize = cSize;
}

ViewFeed::Frame ViewFeed::take()
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    m_bTold = false;
    return std::move(m_cReady);
}

void ViewFeed::work()
{
    std::unique_lock<std::mutex> cLock(m_cMutex);
    while (!m_bStop) {
        cLock.unlock();
        const auto cEnd = std::chrono::steady_clock::now() + TICK;
        const bool bShown = readTick();
        cLock.lock();
        if (bShown)
            m_cStopped.wait_until(cLock, cEnd, [this] { return m_bStop; });
    }
}

/// Reads until a picture was handed over, for at most one tick; whether one was.
bool ViewFeed::readTick()
{
    adoptSize();
    for (const qint64 nEnd = now() + TICK.count(); now() < nEnd;) {
        if (draw())
            return true;
        if (m_bDrawn && now() - m_nFirstDrawn > PATIENCE) {
            handOver();
            return true;
        }
        std::unique_lock<std::mutex> cLock(m_cMutex);
        if (m_cStopped.wait_for(cLock, POLL, [this] { return m_bStop; }))
            return false;
    }
    return false;
}

/// Draws what waits, but for what the next picture wipes before anybody sees it; whether a picture was
/// handed over.
bool ViewFeed::draw()
{
    ViewProgress cProgress;
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        cProgress = m_cProgress;
    }
    const ViewProgress::Moment cBefore = cProgress.now();
    const Waiting cWaiting = takeAll(m_nView);
    const bool bBetweenRuns = cBefore.isSameGap(cProgress.now());
    m_bTorn |= cWaiting.m_bFull;

    const auto &lstDrawing = cWaiting.m_lstDrawing;
    auto itDrawing = lstDrawing.begin();
    const auto itLast = std::find_if(lstDrawing.rbegin(), lstDrawing.rend(), wipes);
    bool bShown = false;
    if (itLast != lstDrawing.rend()) {
        const auto itWipe = std::prev(itLast.base());
        if (!bBetweenRuns) {
            // What stands before the last picture is a whole run, while that of the picture still grows.
            const auto itBefore = std::find_if(std::next(itLast), lstDrawing.rend(), wipes);
            if (itBefore != lstDrawing.rend()) {
                itDrawing = std::prev(itBefore.base());
                m_bTorn = false;
            }
            bShown = !m_bTorn && (m_bDrawn || itDrawing != itWipe);
            if (bShown) {
                paint(itDrawing, itWipe);
                handOver();
            }
        }
        itDrawing = itWipe;
        m_bDrawn = m_bTorn = false;
    }
    paint(itDrawing, lstDrawing.end());
    if (bBetweenRuns && m_bDrawn) {
        handOver();
        bShown = true;
    }
    return bShown;
}

void ViewFeed::paint(Drawings::const_iterator itFirst, Drawings::const_iterator itEnd)
{
    if (itFirst == itEnd)
        return;
    if (!m_bDrawn)
        m_nFirstDrawn = now();
    m_bDrawn = true;
    for (; itFirst != itEnd; ++itFirst)
        (*itFirst)->draw(&m_cBack, (*itFirst)->m_pcAPM);
}

void ViewFeed::adoptSize()
{
    QSize cSize;
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        cSize = m_cWantedSize;
    }
    if (cSize == m_cBack.size())
        return;
    m_cBack = QImage(cSize, QImage::Format_RGB888);
    m_cBack.fill(Qt::black);
    m_bDrawn = false;
    useDrawingWindow(m_nView, cSize.width(), cSize.height());
}

void ViewFeed::handOver()
{
    // The window holds one picture, another waits: of three there is always one free.
    QImage &cCopy = *std::find_if(std::begin(m_acCopy), std::end(m_acCopy) - 1, [](const QImage &cImage) {
        return cImage.isNull() || cImage.isDetached();
    });
    if (cCopy.size() == m_cBack.size() && cCopy.isDetached()) {
#ifndef __SANITIZE_THREAD__ // which knows no fences
        // Pairs with the release of the last other holder.
        std::atomic_thread_fence(std::memory_order_acquire);
#endif
        memcpy(cCopy.bits(), m_cBack.constBits(), static_cast<size_t>(m_cBack.sizeInBytes()));
    } else {
        cCopy = m_cBack.copy();
    }
    QSize cShrunkSize;
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        cShrunkSize = m_cShrunkSize;
    }
    Frame cFrame{cCopy, {}};
    if (!cShrunkSize.isEmpty())
        cFrame.m_cShrunk = cCopy.scaled(cShrunkSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_bDrawn = false;

    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    std::swap(m_cReady, cFrame);
    if (!m_bTold)
        QMetaObject::invokeMethod(this, &ViewFeed::ready, Qt::QueuedConnection);
    m_bTold = true;
}
