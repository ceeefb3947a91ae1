#include "sdk/window/storecopy.h"

#include <algorithm>
#include <cstring>

#include <QPainter>

#include "sdk/image.h"

namespace
{
using Kind = ArithmParamMgr::Kind;

/// How a store is asked for the parameters of one kind.
template <typename Parameter>
struct Access {
    Parameter *(ArithmParamMgr::*m_fnGet)(int);
    void (ArithmParamMgr::*m_fnRemove)(int);
    QMap<int, Parameter *> ArithmParamMgr::*m_mapParameter;
};

template <typename Body>
void visit(Kind eKind, Body fnBody)
{
#define VISIT(Name)                                                                                          \
    case Kind::Name:                                                                                         \
        return fnBody(Access<Param##Name>{&ArithmParamMgr::getParam##Name,                                   \
                                          &ArithmParamMgr::removeParam##Name,                                \
                                          &ArithmParamMgr::m_mapParam##Name})
    switch (eKind) {
        VISIT(DIB);
        VISIT(Gray8);
        VISIT(Gray16);
        VISIT(Points);
        VISIT(Lines);
        VISIT(Polys);
        VISIT(Areas);
        VISIT(Strings);
        VISIT(Longs);
        VISIT(Doubles);
        VISIT(Bools);
    }
#undef VISIT
}

template <typename Parameter>
void copyPixels(const Parameter &cFrom, Parameter &cTo)
{
    const Plugin::Picture cPicture = Plugin::picture(cFrom);
    cTo.resize(cPicture.m_nWidth, cPicture.m_nHeight);
    // Without the memory the copy is empty, and the step says so.
    if (unsigned char *puchCopy = Plugin::picture(cTo).m_puchPixels)
        memcpy(puchCopy, cPicture.m_puchPixels,
               cPicture.m_nRowLength * static_cast<size_t>(cPicture.m_nHeight));
}

void copyContents(const ParamDIB &cFrom, ParamDIB &cTo)
{
    copyPixels(cFrom, cTo);
}
void copyContents(const ParamGray8 &cFrom, ParamGray8 &cTo)
{
    copyPixels(cFrom, cTo);
}
void copyContents(const ParamGray16 &cFrom, ParamGray16 &cTo)
{
    copyPixels(cFrom, cTo);
}
void copyContents(const ParamPoints &cFrom, ParamPoints &cTo)
{
    cTo.setPoints(cFrom.getPoints());
}
void copyContents(const ParamLines &cFrom, ParamLines &cTo)
{
    cTo.setLines(cFrom.getLines());
}
void copyContents(const ParamPolys &cFrom, ParamPolys &cTo)
{
    cTo.setPolys(cFrom.getPolys());
}
void copyContents(const ParamAreas &cFrom, ParamAreas &cTo)
{
    cTo.setAreas(cFrom.getAreas());
}
void copyContents(const ParamStrings &cFrom, ParamStrings &cTo)
{
    cTo.setStrings(cFrom.getStrings());
}
void copyContents(const ParamLongs &cFrom, ParamLongs &cTo)
{
    cTo.setLongs(cFrom.getLongs());
}
void copyContents(const ParamDoubles &cFrom, ParamDoubles &cTo)
{
    cTo.setDoubles(cFrom.getDoubles());
}
void copyContents(const ParamBools &cFrom, ParamBools &cTo)
{
    cTo.setBools(cFrom.getBools());
}

template <typename Parameter>
QImage imageOf(const Parameter *pcParameter)
{
    return pcParameter ? Plugin::image(Plugin::picture(*pcParameter)).copy() : QImage();
}
} // namespace

void Plugin::copyParameter(const ArithmParamMgr &cFrom, ArithmParamMgr &cTo, Kind eKind, int nID)
{
    visit(eKind, [&](const auto &cAccess) {
        const auto *pcFrom = (cFrom.*cAccess.m_mapParameter).value(nID);
        if (!pcFrom)
            return;
        auto &cCopy = *(cTo.*cAccess.m_fnGet)(nID);
        cCopy.setName(pcFrom->getName());
        cCopy.setDescribe(pcFrom->getDescribe());
        copyContents(*pcFrom, cCopy);
    });
}

void Plugin::copyAll(const ArithmParamMgr &cFrom, ArithmParamMgr &cTo)
{
    for (const ArithmParamMgr::Entry &cEntry : cFrom.snapshot())
        copyParameter(cFrom, cTo, cEntry.m_eKind, cEntry.m_nID);
}

int Plugin::nameParameter(ArithmParamMgr &cStore, Kind eKind, int nID, const QString &strName,
                          const QString &strDescribe)
{
    int nNamed = nID;
    visit(eKind, [&](const auto &cAccess) {
        auto &cParameter = *(cStore.*cAccess.m_fnGet)(nID);
        cParameter.setName(strName);
        cParameter.setDescribe(strDescribe);
        nNamed = cParameter.getID();
    });
    return nNamed;
}

void Plugin::removeParameter(ArithmParamMgr &cStore, Kind eKind, int nID)
{
    visit(eKind, [&](const auto &cAccess) { (cStore.*cAccess.m_fnRemove)(nID); });
}

QImage Plugin::pictureOf(const ArithmParamMgr &cStore, Kind eKind, int nID)
{
    switch (eKind) {
    case Kind::DIB:
        return imageOf(cStore.m_mapParamDIB.value(nID));
    case Kind::Gray8:
        return imageOf(cStore.m_mapParamGray8.value(nID));
    case Kind::Gray16:
        return imageOf(cStore.m_mapParamGray16.value(nID));
    default:
        return {};
    }
}

void Plugin::drawList(QImage &cPicture, const ArithmParamMgr &cStore, Kind eKind, int nID)
{
    if (cPicture.isNull())
        return;
    if (cPicture.format() != QImage::Format_RGB32)
        cPicture = cPicture.convertToFormat(QImage::Format_RGB32);
    QPainter cPainter(&cPicture);
    const int nPen = std::max(1, cPicture.width() / 400);
    cPainter.setPen(QPen(QColor(0, 230, 0), nPen));
    if (eKind == Kind::Points) {
        const int nArm = 3 * nPen;
        for (const ParamPoints::Point &cPoint : cStore.snapshotPoints(nID)) {
            cPainter.drawLine(cPoint.x - nArm, cPoint.y, cPoint.x + nArm, cPoint.y);
            cPainter.drawLine(cPoint.x, cPoint.y - nArm, cPoint.x, cPoint.y + nArm);
        }
    } else if (eKind == Kind::Lines) {
        for (const ParamLines::Line &cLine : cStore.snapshotLines(nID))
            cPainter.drawLine(cLine.sx, cLine.sy, cLine.ex, cLine.ey);
    } else if (eKind == Kind::Polys) {
        for (const ParamPolys::Poly &cPoly : cStore.snapshotPolys(nID)) {
            QPolygon cPolygon;
            for (const ParamPolys::Point &cPoint : cPoly.verts)
                cPolygon << QPoint(cPoint.x, cPoint.y);
            cPainter.drawPolygon(cPolygon);
        }
    } else if (eKind == Kind::Areas) {
        for (const ParamAreas::Area &cArea : cStore.snapshotAreas(nID))
            cPainter.drawRect(
                QRect(QPoint(cArea.bounds[2], cArea.bounds[0]), QPoint(cArea.bounds[3], cArea.bounds[1])));
    }
}
