#include "viewfeed.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>

#include <QElapsedTimer>

#include "OculinexQTStandAloneInQt.h"
#include "globalfunction.h"

namespace
{
constexpr std::chrono::milliseconds TICK(33);
constexpr std::chrono::milliseconds POLL(4);
constexpr int DRAWINGS_A_TICK = 10;
/// A run that draws for longer is shown as it grows, in ms.
constexpr qint64 PATIENCE = 500;
/// How often it is looked which tasks draw into the view, in ms.
constexpr int DRAWERS_INTERVAL = 200;

struct Waiting {
    bool m_bFull = false;
    bool m_bWipes = false; ///< the next drawing clears the view first
};

/// What waits in a view, without taking it.
Waiting lookAt(int nView)
{
    Waiting cWaiting;
    GlobalFunction *const pcViews = GlobalFunction::getInstance();
    GlobalFunction::ViewDrawOption *const pcCanvas = pcViews->requestViewDrawOption(nView);
    if (!pcCanvas)
        return cWaiting;
    {
        const QGuard cGuard(pcCanvas->m_cMutex);
        cWaiting.m_bFull = pcCanvas->m_nDOPos >= GlobalFunction::ViewDrawOption::QUEUE_LENGTH;
        if (pcCanvas->m_nDOPos > 0) {
            const Drawing::DrawingOpt *const pcNext = pcCanvas->m_apcDO[0];
            const auto *const pcGrey = dynamic_cast<const Drawing::GrayDrawingOpt *>(pcNext);
            cWaiting.m_bWipes = pcGrey ? pcGrey->getDrawMode() == 0 : pcNext->getDataType() == 0;
        }
    }
    pcViews->releaseViewDrawOption(nView, pcCanvas);
    return cWaiting;
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

/// Reads for at most one tick; whether the tick's drawings are used up or a picture was handed over.
bool ViewFeed::readTick()
{
    adoptSize();
    m_bTorn |= lookAt(m_nView).m_bFull;
    const qint64 nEnd = now() + TICK.count();
    int nBudget = DRAWINGS_A_TICK;
    while (nBudget > 0 && now() < nEnd) {
        if (draw(nBudget) || (m_bDrawn && now() - m_nFirstDrawn > PATIENCE)) {
            handOver();
            return true;
        }
        std::unique_lock<std::mutex> cLock(m_cMutex);
        if (m_cStopped.wait_for(cLock, POLL, [this] { return m_bStop; }))
            return false;
    }
    return nBudget == 0;
}

/// Draws what waits; whether the picture then shows whole runs.
bool ViewFeed::draw(int &nBudget)
{
    ViewProgress cProgress;
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        cProgress = m_cProgress;
    }
    const ViewProgress::Moment cBefore = cProgress.now();
    int nMore = 1;
    while (nMore == 1 && nBudget > 0) {
        const bool bWipes = lookAt(m_nView).m_bWipes;
        if (bWipes && m_bDrawn && !m_bTorn)
            return true;
        nMore = getDrawingWindow(m_nView, m_cBack.bits(), m_cBack.width(), m_cBack.height());
        if (nMore < 0)
            break;
        --nBudget;
        if (!m_bDrawn)
            m_nFirstDrawn = now();
        m_bDrawn = true;
        m_bTorn &= !bWipes;
    }
    return m_bDrawn && nMore != 1 && cBefore.isSameGap(cProgress.now());
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
        // Pairs with the release of the last other holder.
        std::atomic_thread_fence(std::memory_order_acquire);
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
