#include "Drawing/drawing.h"

#include <mutex>

#include "Drawing/drawingregistry.h"
#include "textbuffer.h"

// Hosts make such objects and derive from them.
static_assert(sizeof(void *) != 8 ||
              (sizeof(Drawing::DrawingOpt) == 32 && sizeof(Drawing::DIBDrawingOpt) == 56 &&
               sizeof(Drawing::Gray8DrawingOpt) == 1096 && sizeof(Drawing::Gray16DrawingOpt) == 72 &&
               sizeof(Drawing::PolysDrawingOpt) == 40 && sizeof(Drawing::StringsDrawingOpt) == 48));

namespace
{
std::mutex s_cScaleMutex; // guards all scale records
// Guards the text buffer. Never destroyed, since a task's thread may still run at process exit.
QMutex &s_cMutexForText = *new QMutex;

bool isView(int nView)
{
    return nView >= 0 && nView < Drawing::VIEW_NUM;
}
} // namespace

const char *Drawing::s_ID = "KQ_Drawing";
char *Drawing::s_pchConfigStr = TextBuffer::create();
int Drawing::s_nBuffLen = TextBuffer::INITIAL_LENGTH;
Drawing::ViewScaleOpt Drawing::s_acVSO[VIEW_NUM];

const char *Drawing::getID()
{
    return s_ID;
}

QString Drawing::getName()
{
    return QStringLiteral("绘制对象");
}

QString Drawing::getClass()
{
    return QStringLiteral("系统");
}

char *Drawing::transConfigStr(QString &strText)
{
    return TextBuffer::storeShared(strText, s_pchConfigStr, s_nBuffLen, s_cMutexForText);
}

void Drawing::resetViewScaleOpt(int nView)
{
    setViewScaleOpt(nView, ViewScaleOpt());
}

Drawing::ViewScaleOpt Drawing::getViewScaleOpt(int nView)
{
    if (!isView(nView))
        return {};
    const std::lock_guard cLock(s_cScaleMutex);
    return s_acVSO[nView];
}

void Drawing::setViewScaleOpt(int nView, const ViewScaleOpt &cScale)
{
    if (!isView(nView))
        return;
    const std::lock_guard cLock(s_cScaleMutex);
    s_acVSO[nView] = cScale;
}

void Drawing::disarm(ArithmParamMgr *pcAPM)
{
    DrawingRegistry::disarm(pcAPM);
}

Drawing::DrawingOpt::DrawingOpt(int nDataID) : m_nDataID(nDataID) {}

Drawing::DrawingOpt::~DrawingOpt()
{
    DrawingRegistry::remove(this);
}
