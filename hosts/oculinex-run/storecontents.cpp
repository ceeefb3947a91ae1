#include "storecontents.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <QColorSpace>

#include "Drawing/drawing.h"
#include "sdk/image.h"

namespace
{
constexpr int TEXTS_NUM = 4; ///< elements of a list that are told
constexpr int GREEN = 0x00FF00;
constexpr int PEN = 2;

template <typename Point>
QString pointText(const Point &cPoint)
{
    return QString("%1,%2").arg(cPoint.x).arg(cPoint.y);
}

template <typename List, typename Text>
int describe(const List &lstElement, QStringList &lstFirst, Text fnText)
{
    for (int n = 0; n < std::min(static_cast<int>(lstElement.size()), TEXTS_NUM); ++n)
        lstFirst += fnText(lstElement[n]);
    return lstElement.size();
}

/// The object that draws the list; null for lists that are never drawn.
std::unique_ptr<Drawing::DrawingOpt> drawingOf(ParamKind eKind, int nID, int nHeight)
{
    const auto fnColoured = [](auto pcList) {
        pcList->setColor(GREEN);
        return pcList;
    };
    switch (eKind) {
    case ParamKind::Points: {
        auto pcPoints = fnColoured(std::make_unique<Drawing::PointsDrawingOpt>(nID));
        pcPoints->setSize(5);
        return pcPoints;
    }
    case ParamKind::Lines: {
        auto pcLines = fnColoured(std::make_unique<Drawing::LinesDrawingOpt>(nID));
        pcLines->setSize(PEN);
        return pcLines;
    }
    case ParamKind::Polys: {
        auto pcPolys = std::make_unique<Drawing::PolysDrawingOpt>(nID);
        pcPolys->setBorderColor(GREEN);
        pcPolys->setBorderSize(PEN);
        return pcPolys;
    }
    case ParamKind::Areas:
        return fnColoured(std::make_unique<Drawing::AreasDrawingOpt>(nID));
    case ParamKind::Strings: {
        auto pcStrings = fnColoured(std::make_unique<Drawing::StringsDrawingOpt>(nID));
        pcStrings->setFontSize(std::max(12, nHeight / 16));
        return pcStrings;
    }
    default:
        return nullptr;
    }
}
} // namespace

bool putPicture(ArithmParamMgr &cStore, ParamKind eKind, int nID, const QImage &cPicture)
{
    const QImage cSource = cPicture.convertToFormat(Plugin::imageFormat(eKind));
    const Plugin::Picture cTarget = Plugin::withPicture(cStore, eKind, nID, [&](auto &cParameter) {
        cParameter.resize(cSource.width(), cSource.height());
        return Plugin::picture(cParameter);
    });
    for (size_t nRow = 0; nRow < static_cast<size_t>(cTarget.m_nHeight); ++nRow)
        memcpy(cTarget.m_puchPixels + nRow * cTarget.m_nRowLength,
               cSource.constScanLine(static_cast<int>(nRow)),
               std::min(cTarget.m_nRowLength, static_cast<size_t>(cSource.bytesPerLine())));
    return cTarget.m_puchPixels != nullptr;
}

QImage pictureOf(ArithmParamMgr &cStore, ParamKind eKind, int nID)
{
    return Plugin::image(Plugin::withPicture(
        cStore, eKind, nID, [](const auto &cParameter) { return Plugin::picture(cParameter); }));
}

int describeList(ArithmParamMgr &cStore, ParamKind eKind, int nID, QStringList &lstFirst)
{
    switch (eKind) {
    case ParamKind::Points:
        return describe(cStore.getParamPoints(nID)->getPoints(), lstFirst, pointText<ParamPoints::Point>);
    case ParamKind::Lines:
        return describe(cStore.getParamLines(nID)->getLines(), lstFirst, [](const ParamLines::Line &cLine) {
            return QString("%1,%2 to %3,%4").arg(cLine.sx).arg(cLine.sy).arg(cLine.ex).arg(cLine.ey);
        });
    case ParamKind::Polys:
        return describe(cStore.getParamPolys(nID)->getPolys(), lstFirst, [](const ParamPolys::Poly &cPoly) {
            return QString("%1 corners from %2")
                .arg(cPoly.verts.size())
                .arg(pointText(cPoly.verts.value(0, {0, 0})));
        });
    case ParamKind::Areas:
        return describe(cStore.getParamAreas(nID)->getAreas(), lstFirst, [](const ParamAreas::Area &cArea) {
            return QString("%1 pixels in %2,%3 to %4,%5")
                .arg(cArea.size)
                .arg(cArea.bounds[2])
                .arg(cArea.bounds[0])
                .arg(cArea.bounds[3])
                .arg(cArea.bounds[1]);
        });
    case ParamKind::Strings:
        return describe(cStore.getParamStrings(nID)->getStrings(), lstFirst,
                        [](const QString &strText) { return '"' + strText + '"'; });
    case ParamKind::Longs:
        return describe(cStore.getParamLongs(nID)->getLongs(), lstFirst,
                        [](long nValue) { return QString::number(nValue); });
    case ParamKind::Doubles:
        return describe(cStore.getParamDoubles(nID)->getDoubles(), lstFirst,
                        [](double dValue) { return QString::number(dValue); });
    case ParamKind::Bools:
        return describe(cStore.getParamBools(nID)->getBools(), lstFirst,
                        [](bool bValue) { return QString(bValue ? "true" : "false"); });
    default:
        return 0;
    }
}

bool isDrawn(ParamKind eKind)
{
    return drawingOf(eKind, 0, 0) != nullptr;
}

QImage drawLists(ArithmParamMgr &cStore, const QList<QPair<ParamKind, int>> &lstKey, const QImage &cPicture,
                 int nWidth)
{
    QImage cTarget =
        cPicture.scaledToWidth(nWidth, Qt::SmoothTransformation).convertToFormat(QImage::Format_RGB888);
    cTarget.setColorSpace({}); // what is drawn does not belong to the photograph's
    const Drawing::ViewScaleOpt cScale{
        {static_cast<float>(cPicture.width()) / static_cast<float>(cTarget.width()),
         static_cast<float>(cPicture.height()) / static_cast<float>(cTarget.height())},
        {0, 0}};
    for (const auto &[eKind, nID] : lstKey) {
        const auto pcDrawing = drawingOf(eKind, nID, cTarget.height());
        Drawing::setViewScaleOpt(pcDrawing->getViewID(), cScale);
        pcDrawing->draw(&cTarget, &cStore);
    }
    return cTarget;
}
