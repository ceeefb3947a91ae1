#include "globalfunction.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Drawing/drawingregistry.h"
#include "qguard.h"
#include "sharedfield.h"
#include "singleton.h"

static_assert(sizeof(std::atomic<int>) == sizeof(int) && sizeof(std::atomic<void *>) == sizeof(void *),
              "the views' members keep the size of the plain types");

GlobalFunction *GlobalFunction::s_pcInstance = nullptr;
QMutex GlobalFunction::s_cMtxForIns;

namespace
{
// A removed canvas waits here to serve again when its view is added again, so that whoever still
// holds it never holds freed memory. Guarded by m_cMutexForCanvasArray.
GlobalFunction::ViewDrawOption *s_apcParked[GlobalFunction::VIEW_NUM];

bool isView(int nView)
{
    return nView >= 0 && nView < GlobalFunction::VIEW_NUM;
}

void drain(GlobalFunction::ViewDrawOption *pcCanvas)
{
    while (Drawing::DrawingOpt *pcOpt = pcCanvas->popDrawingOpt())
        delete pcOpt;
}
} // namespace

GlobalFunction::ViewDrawOption::ViewDrawOption() : m_apcDO{} {}

GlobalFunction::ViewDrawOption::~ViewDrawOption() = default;

void GlobalFunction::ViewDrawOption::pushDrawingOpt(Drawing::DrawingOpt *pcOpt)
{
    if (!pcOpt)
        return;
    std::unique_ptr<Drawing::DrawingOpt> pcOwned(pcOpt);
    DrawingRegistry::add(pcOpt);
    const QGuard cGuard(m_cMutex);
    if (m_nDOPos >= QUEUE_LENGTH) {
        delete m_apcDO[0];
        std::copy(m_apcDO + 1, m_apcDO + QUEUE_LENGTH, m_apcDO);
        SharedField::store(m_nDOPos, QUEUE_LENGTH - 1);
    }
    m_apcDO[m_nDOPos] = pcOwned.release();
    SharedField::store(m_nDOPos, m_nDOPos + 1);
}

Drawing::DrawingOpt *GlobalFunction::ViewDrawOption::popDrawingOpt()
{
    const QGuard cGuard(m_cMutex);
    if (m_nDOPos <= 0)
        return nullptr;
    Drawing::DrawingOpt *pcOldest = m_apcDO[0];
    std::copy(m_apcDO + 1, m_apcDO + m_nDOPos, m_apcDO);
    SharedField::store(m_nDOPos, m_nDOPos - 1);
    return pcOldest;
}

bool GlobalFunction::ViewDrawOption::haveDrawingOpt()
{
    return SharedField::load(m_nDOPos) > 0;
}

GlobalFunction::GlobalFunction() : m_apcViewCanvas{}, m_abViewUpdated{} {}

GlobalFunction *GlobalFunction::getInstance()
{
    return singleton(s_pcInstance, s_cMtxForIns);
}

void GlobalFunction::addView(int nView, int nWidth, int nHeight)
{
    if (!isView(nView))
        return;
    const QGuard cGuard(m_cMutexForCanvasArray);
    ViewDrawOption *pcCanvas = m_apcViewCanvas[nView];
    if (!pcCanvas) {
        pcCanvas = std::exchange(s_apcParked[nView], nullptr);
        if (pcCanvas)
            drain(pcCanvas); // what a holder pushed after the removal
        else
            pcCanvas = new ViewDrawOption;
    }
    SharedField::store(pcCanvas->m_nViewWidth, nWidth);
    SharedField::store(pcCanvas->m_nViewHeight, nHeight);
    SharedField::store(m_apcViewCanvas[nView], pcCanvas);
}

void GlobalFunction::resizeViewCanvas(int nView, int nWidth, int nHeight)
{
    if (!isView(nView))
        return;
    const QGuard cGuard(m_cMutexForCanvas[nView]);
    addView(nView, nWidth, nHeight);
}

void GlobalFunction::removeView(int nView)
{
    if (!isView(nView))
        return;
    const QGuard cGuard(m_cMutexForCanvasArray);
    if (ViewDrawOption *pcCanvas = m_apcViewCanvas[nView]) {
        SharedField::store<ViewDrawOption *>(m_apcViewCanvas[nView], nullptr);
        drain(pcCanvas);
        s_apcParked[nView] = pcCanvas;
    }
}

GlobalFunction::ViewDrawOption *GlobalFunction::requestViewDrawOption(int nView)
{
    if (!isView(nView) || !SharedField::load(m_apcViewCanvas[nView]))
        return nullptr;
    QGuard::lock(m_cMutexForCanvas[nView]);
    ViewDrawOption *pcCanvas = SharedField::load(m_apcViewCanvas[nView]);
    if (!pcCanvas) // removed while this thread waited
        QGuard::unlock(m_cMutexForCanvas[nView]);
    return pcCanvas;
}

void GlobalFunction::releaseViewDrawOption(int nView, ViewDrawOption *pcCanvas)
{
    if (pcCanvas && isView(nView))
        QGuard::unlock(m_cMutexForCanvas[nView]);
}
