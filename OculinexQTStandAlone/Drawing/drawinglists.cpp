#include "Drawing/drawing.h"

#include <atomic>
#include <cmath>
#include <optional>

#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QVarLengthArray>

#include "Drawing/drawingregistry.h"
#include "Drawing/plaintarget.h"
#include "arithmparammgr.h"
#include "logging.h"

namespace
{
/// One list of the store at one moment, and the parameter's name; empty when the store has died.
template <typename Item>
QList<Item> readList(const Drawing::DrawingOpt *pcOpt, const ArithmParamMgr *pcAPM,
                     QList<Item> (ArithmParamMgr::*fnSnapshot)(int, QString *) const,
                     QString *pstrName = nullptr)
{
    const DrawingRegistry::Permit cPermit(pcOpt, pcAPM);
    return cPermit ? (pcAPM->*fnSnapshot)(pcOpt->getDataID(), pstrName) : QList<Item>();
}

std::optional<int> toInt(float fValue)
{
    if (fValue >= -0x1p31F && fValue < 0x1p31F) // not so for NaN
        return static_cast<int>(fValue);
    return std::nullopt;
}

/// A position in the view; none where it cannot be computed.
using Position = std::optional<QPoint>;

/// Maps picture coordinates to pixels of one view.
class Mapping
{
public:
    explicit Mapping(int nViewID) : m_cScale(Drawing::getViewScaleOpt(nViewID)) {}

    float quotient(int nAxis, int nCoordinate) const
    {
        return static_cast<float>(qint64{nCoordinate} - m_cScale.m_anOffset[nAxis]) /
               m_cScale.m_afScale[nAxis];
    }
    Position operator()(int nX, int nY) const
    {
        const std::optional<int> nViewX = toInt(quotient(0, nX));
        const std::optional<int> nViewY = toInt(quotient(1, nY));
        return nViewX && nViewY ? Position(QPoint(*nViewX, *nViewY)) : std::nullopt;
    }

private:
    Drawing::ViewScaleOpt m_cScale;
};

QColor opaque(int nColour)
{
    return {qRed(static_cast<QRgb>(nColour)), qGreen(static_cast<QRgb>(nColour)),
            qBlue(static_cast<QRgb>(nColour))};
}

QColor complement(const QColor &cColour)
{
    return {255 - cColour.red(), 255 - cColour.green(), 255 - cColour.blue()};
}

bool canDrawText()
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return true;
    static std::atomic<bool> s_bLogged{false};
    if (!s_bLogged.exchange(true))
        qCWarning(lcTask, "Texts are not drawn into views: the process has no QGuiApplication.");
    return false;
}

/// A painter that takes positions and sizes as they come.
class Brush
{
public:
    explicit Brush(QImage *pcTarget)
        : m_cView(pcTarget->rect()),
          m_puchPixels(isPlainTarget(*pcTarget) ? pcTarget->bits() : nullptr),
          m_nRowBytes(pcTarget->bytesPerLine()),
          m_cPainter(pcTarget)
    {
    }

    void setPen(const QColor &cColour) { setPen(QPen(cColour)); }
    /// Width 0 is one pixel; with a negative width nothing is painted.
    void setPen(const QColor &cColour, int nWidth)
    {
        setPen(QPen(cColour, nWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    }
    void setFontSize(int nPixels)
    {
        QFont cFont;
        cFont.setPixelSize(nPixels);
        m_cPainter.setFont(cFont);
    }
    void line(const Position &cFrom, const Position &cTo)
    {
        if (cFrom && cTo)
            line(*cFrom, *cTo);
    }
    void cross(const QPoint &cCentre, int nArm)
    {
        // The arms' ends may overflow: they are moved to the view's edges first.
        const auto end = [](qint64 nEnd, int nMax) {
            return static_cast<int>(qBound<qint64>(-1, nEnd, nMax));
        };
        const int nX = cCentre.x();
        const int nY = cCentre.y();
        const int nWidth = m_cView.width();
        const int nHeight = m_cView.height();
        if (nY >= 0 && nY < nHeight)
            line({end(qint64{nX} - nArm, nWidth), nY}, {end(qint64{nX} + nArm, nWidth), nY});
        if (nX >= 0 && nX < nWidth)
            line({nX, end(qint64{nY} - nArm, nHeight)}, {nX, end(qint64{nY} + nArm, nHeight)});
    }
    /// One line of text whose baseline starts there.
    void text(qint64 nX, qint64 nY, const QString &strText)
    {
        const auto fits = [](qint64 nValue) { return nValue == static_cast<int>(nValue); };
        if (fits(nX) && fits(nY) && canDrawText())
            m_cPainter.drawText(static_cast<int>(nX), static_cast<int>(nY), strText);
    }

private:
    void setPen(const QPen &cPen)
    {
        m_cPainter.setPen(cPen);
        m_bThin = cPen.width() == 0 || cPen.width() == 1;
        m_nColour = cPen.color().rgb();
    }
    void line(const QPoint &cFrom, const QPoint &cTo)
    {
        if (!m_puchPixels || !m_bThin || (cFrom.x() != cTo.x() && cFrom.y() != cTo.y())) {
            m_cPainter.drawLine(cFrom, cTo);
            return;
        }
        const int nFirst = qMax(qMin(cFrom.x(), cTo.x()), 0);
        const int nLast = qMin(qMax(cFrom.x(), cTo.x()), m_cView.right());
        const int nBottom = qMin(qMax(cFrom.y(), cTo.y()), m_cView.bottom());
        for (int y = qMax(qMin(cFrom.y(), cTo.y()), 0); y <= nBottom; ++y) {
            unsigned char *puchPixel = m_puchPixels + qint64{m_nRowBytes} * y + qint64{3} * nFirst;
            for (int x = nFirst; x <= nLast; ++x, puchPixel += 3) {
                puchPixel[0] = static_cast<unsigned char>(qRed(m_nColour));
                puchPixel[1] = static_cast<unsigned char>(qGreen(m_nColour));
                puchPixel[2] = static_cast<unsigned char>(qBlue(m_nColour));
            }
        }
    }

    QRect m_cView;
    unsigned char *m_puchPixels; ///< of the target; null where only the painter can draw
    int m_nRowBytes;
    bool m_bThin = false; ///< whether the pen is one pixel wide
    QRgb m_nColour = 0;
    QPainter m_cPainter;
};

bool canDraw(const QImage *pcTarget, const ArithmParamMgr *pcAPM)
{
    return pcTarget && pcAPM && !pcTarget->isNull();
}

QString twoDecimals(double dValue)
{
    return QString::asprintf("%.2f", dValue);
}
} // namespace

Drawing::PointsDrawingOpt::PointsDrawingOpt(int nDataID) : DrawingOpt(nDataID)
{
    m_nDataType = 3;
}

Drawing::PointsDrawingOpt::~PointsDrawingOpt() = default;

void Drawing::PointsDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    if (!canDraw(pcTarget, pcAPM))
        return;
    const auto lstPoints = readList(this, pcAPM, &ArithmParamMgr::snapshotPoints);
    if (lstPoints.isEmpty())
        return;
    const Mapping cMap(m_nViewID);
    Brush cBrush(pcTarget);
    cBrush.setPen(opaque(m_nColor));
    for (const ParamPoints::Point &cPoint : lstPoints) {
        if (const Position cAt = cMap(cPoint.x, cPoint.y))
            cBrush.cross(*cAt, qMax(m_nSize, 0)); // without arms it is one pixel
    }
}

Drawing::LinesDrawingOpt::LinesDrawingOpt(int nDataID) : DrawingOpt(nDataID)
{
    m_nDataType = 4;
}

Drawing::LinesDrawingOpt::~LinesDrawingOpt() = default;

void Drawing::LinesDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    if (!canDraw(pcTarget, pcAPM))
        return;
    const auto lstLines = readList(this, pcAPM, &ArithmParamMgr::snapshotLines);
    if (lstLines.isEmpty())
        return;
    const Mapping cMap(m_nViewID);
    const QColor cColour = opaque(m_nColor);
    Brush cBrush(pcTarget);
    cBrush.setPen(cColour, m_nSize);
    for (const ParamLines::Line &cLine : lstLines) {
        const Position cFrom = cMap(cLine.sx, cLine.sy);
        const Position cTo = cMap(cLine.ex, cLine.ey);
        cBrush.line(cFrom, cTo);
        if (!m_bDspLength)
            continue;
        cBrush.setPen(complement(cColour)); // and it stays
        if (!cFrom || !cTo)
            continue;
        const double dX = double{1} * cTo->x() - cFrom->x();
        const double dY = double{1} * cTo->y() - cFrom->y();
        cBrush.text((qint64{cFrom->x()} + cTo->x()) / 2, (qint64{cFrom->y()} + cTo->y()) / 2,
                    twoDecimals(std::sqrt(dX * dX + dY * dY)));
    }
}

Drawing::PolysDrawingOpt::PolysDrawingOpt(int nDataID) : DrawingOpt(nDataID)
{
    m_nDataType = 5;
}

Drawing::PolysDrawingOpt::~PolysDrawingOpt() = default;

void Drawing::PolysDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    if (!canDraw(pcTarget, pcAPM))
        return;
    const auto lstPolys = readList(this, pcAPM, &ArithmParamMgr::snapshotPolys);
    if (lstPolys.isEmpty())
        return;
    const Mapping cMap(m_nViewID);
    const QColor cColour = opaque(m_nBorderColor);
    Brush cBrush(pcTarget);
    cBrush.setPen(QColor(cColour.blue(), cColour.green(), cColour.red()), m_nBorderSize);
    QVarLengthArray<Position, 64> acVert;
    QVarLengthArray<float, 128> afVert;
    for (const ParamPolys::Poly &cPoly : lstPolys) {
        const int nVertNum = cPoly.verts.size();
        if (nVertNum < 3)
            continue;
        acVert.clear();
        for (const ParamPolys::Point &cPoint : cPoly.verts)
            acVert.append(cMap(cPoint.x, cPoint.y));
        for (int j = 0; j < nVertNum; ++j)
            cBrush.line(acVert[j], acVert[(j + 1) % nVertNum]);
        if (!m_bDspArea)
            continue;
        cBrush.setPen(complement(cColour)); // and it stays
        afVert.clear();
        qint64 nSumX = 0;
        qint64 nSumY = 0;
        for (const Position &cVert : acVert) {
            if (!cVert)
                break;
            afVert.append(static_cast<float>(cVert->x()));
            afVert.append(static_cast<float>(cVert->y()));
            nSumX += cVert->x();
            nSumY += cVert->y();
        }
        if (afVert.size() == 2 * nVertNum)
            cBrush.text(nSumX / nVertNum, nSumY / nVertNum,
                        twoDecimals(double{getPolyArea2D(afVert.data(), nVertNum)}));
    }
}

float Drawing::PolysDrawingOpt::getTriangleArea2D(float *pfA, float *pfB, float *pfC)
{
    const auto distance = [](const float *pfFrom, const float *pfTo) {
        const float fX = pfFrom[0] - pfTo[0];
        const float fY = pfFrom[1] - pfTo[1];
        return static_cast<float>(std::sqrt(static_cast<double>(fX * fX + fY * fY)));
    };
    const float fAB = distance(pfA, pfB);
    const float fAC = distance(pfA, pfC);
    const float fBC = distance(pfB, pfC);
    const float fHalf = (fAB + fAC + fBC) / 2;
    float fArea = (fHalf - fAB) * fHalf * (fHalf - fAC) * (fHalf - fBC);
    // A nearly flat triangle keeps its tiny product, without the root.
    if (static_cast<double>(fArea) > 0.0001)
        fArea = std::sqrt(fArea);
    const bool bNegative = (pfB[0] - pfA[0]) * (pfC[1] - pfA[1]) - (pfC[0] - pfA[0]) * (pfB[1] - pfA[1]) < 0;
    return bNegative ? -fArea : fArea;
}

float Drawing::PolysDrawingOpt::getPolyArea2D(float *pfVert, int nVertNum)
{
    float fArea = 0;
    for (qint64 i = 1; i + 1 < nVertNum; ++i)
        fArea += getTriangleArea2D(pfVert, pfVert + 2 * i, pfVert + 2 * (i + 1));
    return fArea;
}

Drawing::AreasDrawingOpt::AreasDrawingOpt(int nDataID) : DrawingOpt(nDataID)
{
    m_nDataType = 6;
}

Drawing::AreasDrawingOpt::~AreasDrawingOpt() = default;

void Drawing::AreasDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    constexpr int SEED_ARM = 3;
    if (!canDraw(pcTarget, pcAPM))
        return;
    QString strName;
    const auto lstAreas = readList(this, pcAPM, &ArithmParamMgr::snapshotAreas, &strName);
    if (lstAreas.isEmpty())
        return;
    const Mapping cMap(m_nViewID);
    const QColor cColour = opaque(m_nColor);
    Brush cBrush(pcTarget);
    for (const ParamAreas::Area &cArea : lstAreas) {
        cBrush.setPen(cColour);
        const auto [nTop, nBottom, nLeft, nRight] = cArea.bounds;
        const Position cTopLeft = cMap(nLeft, nTop);
        const Position cBottomRight = cMap(nRight, nBottom);
        if (cTopLeft && cBottomRight) {
            const QPoint cTopRight(cBottomRight->x(), cTopLeft->y());
            const QPoint cBottomLeft(cTopLeft->x(), cBottomRight->y());
            cBrush.line(cTopLeft, cTopRight);
            cBrush.line(cTopRight, cBottomRight);
            cBrush.line(cBottomRight, cBottomLeft);
            cBrush.line(cBottomLeft, cTopLeft);
        }
        if (const Position cSeed = cMap(cArea.seedx, cArea.seedy))
            cBrush.cross(*cSeed, SEED_ARM);
        if (m_bDspArea && cTopLeft) {
            cBrush.setPen(complement(cColour));
            cBrush.text(qint64{cTopLeft->x()} + 3, qint64{cTopLeft->y()} - 3, strName);
        }
    }
}

Drawing::StringsDrawingOpt::StringsDrawingOpt(int nDataID) : DrawingOpt(nDataID)
{
    m_nDataType = 7;
}

Drawing::StringsDrawingOpt::~StringsDrawingOpt() = default;

void Drawing::StringsDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    constexpr int MIN_FONT_SIZE = 5;
    constexpr int MAX_BYTES = 1023;
    if (!canDraw(pcTarget, pcAPM))
        return;
    const auto lstStrings = readList(this, pcAPM, &ArithmParamMgr::snapshotStrings);
    if (lstStrings.isEmpty())
        return;
    m_nFontSize = qMax(m_nFontSize, MIN_FONT_SIZE);
    const Mapping cMap(m_nViewID);
    const std::optional<int> nX = toInt(cMap.quotient(0, m_nX));
    const std::optional<int> nY = toInt(cMap.quotient(1, m_nY) + static_cast<float>(m_nFontSize));
    if (!nX || !nY)
        return;
    Brush cBrush(pcTarget);
    cBrush.setFontSize(m_nFontSize);
    cBrush.setPen(opaque(m_nColor));
    for (int i = 0; i < lstStrings.size(); ++i) {
        const QByteArray achText = lstStrings[i].toUtf8().left(MAX_BYTES);
        if (!achText.isEmpty())
            cBrush.text(*nX, *nY + i * (qint64{m_nFontSize} + 10), QString::fromUtf8(achText.constData()));
    }
}
