#include <cstdio>
#include <random>

#include <opencv2/imgproc.hpp>

#include "cases.h"
#include "drawn.h"

namespace
{
using Object = std::shared_ptr<Drawing::DrawingOpt>;

constexpr int ITEMS = 100;
constexpr int TEXTS = 10;
constexpr int CROSS_ARM = 5;
constexpr int SEED_ARM = 3; // of an area's cross
constexpr int GREEN = 0x00FF00;
const char *const TEXT = "Blob 12: 3456 px";
const cv::Scalar LIST_COLOUR(0, 255, 0);
const cv::Scalar TEXT_COLOUR(255, 0, 255); // the complement

/// Something found: four corners near each other.
struct Item {
    std::vector<cv::Point> m_vCorners;
    cv::Rect m_cBounds;
};
using Scene = std::vector<Item>;

Scene scene(cv::Size cSize)
{
    constexpr int REACH = 40;
    std::mt19937 cRandom(1);
    const auto fnNumber = [&](int nFirst, int nLast) {
        return std::uniform_int_distribution<int>(nFirst, nLast)(cRandom);
    };
    Scene vScene(ITEMS);
    for (Item &cItem : vScene) {
        const int nX = fnNumber(REACH, cSize.width - REACH);
        const int nY = fnNumber(REACH, cSize.height - REACH);
        for (int nCorner = 0; nCorner < 4; ++nCorner)
            cItem.m_vCorners.emplace_back(nX + fnNumber(-REACH, REACH), nY + fnNumber(-REACH, REACH));
        cItem.m_cBounds = cv::boundingRect(cItem.m_vCorners);
    }
    return vScene;
}

/// The scene as lists, each under ID 1.
void fill(ArithmParamMgr &cStore, const Scene &vScene)
{
    for (const Item &cItem : vScene) {
        const cv::Point &cFirst = cItem.m_vCorners[0];
        const cv::Rect &cBounds = cItem.m_cBounds;
        cStore.getParamPoints(1)->addPoint({cFirst.x, cFirst.y});
        cStore.getParamLines(1)->addLine({cFirst.x, cFirst.y, cItem.m_vCorners[1].x, cItem.m_vCorners[1].y});
        ParamPolys::Poly cPoly;
        for (const cv::Point &cCorner : cItem.m_vCorners)
            cPoly.verts.append({cCorner.x, cCorner.y});
        cStore.getParamPolys(1)->addPoly(cPoly);
        cStore.getParamAreas(1)->addArea(
            {cBounds.area(),
             {cBounds.y, cBounds.y + cBounds.height - 1, cBounds.x, cBounds.x + cBounds.width - 1},
             cFirst.x,
             cFirst.y});
    }
    cStore.getParamAreas(1)->setName(TEXT);
    for (int n = 0; n < TEXTS; ++n)
        cStore.getParamStrings(1)->addString(TEXT);
}

Object points(int nSize)
{
    const auto pcPoints = std::make_shared<Drawing::PointsDrawingOpt>(1);
    pcPoints->setColor(GREEN);
    pcPoints->setSize(nSize);
    return pcPoints;
}

Object lines(int nSize, bool bLength)
{
    const auto pcLines = std::make_shared<Drawing::LinesDrawingOpt>(1);
    pcLines->setColor(GREEN);
    pcLines->setSize(nSize);
    pcLines->setDisplayLength(bLength);
    return pcLines;
}

Object polygons(int nSize, bool bArea)
{
    const auto pcPolys = std::make_shared<Drawing::PolysDrawingOpt>(1);
    pcPolys->setBorderColor(GREEN);
    pcPolys->setBorderSize(nSize);
    pcPolys->setDisplayArea(bArea);
    return pcPolys;
}

Object areas(bool bName)
{
    const auto pcAreas = std::make_shared<Drawing::AreasDrawingOpt>(1);
    pcAreas->setColor(GREEN);
    pcAreas->setDisplayArea(bName);
    return pcAreas;
}

Object strings()
{
    const auto pcStrings = std::make_shared<Drawing::StringsDrawingOpt>(1);
    pcStrings->setColor(GREEN);
    pcStrings->setPos(20, 20);
    return pcStrings;
}

void putText(cv::Mat &cHost, const char *szText, const cv::Point &cAt, const cv::Scalar &cColour)
{
    cv::putText(cHost, szText, cAt, cv::FONT_HERSHEY_SIMPLEX, 0.4, cColour); // about 12 pixels
}

void putNumber(cv::Mat &cHost, double dValue, const cv::Point &cAt)
{
    char szText[32];
    snprintf(szText, sizeof szText, "%.2f", dValue);
    putText(cHost, szText, cAt, TEXT_COLOUR);
}

void putArea(cv::Mat &cHost, const Item &cItem)
{
    cv::rectangle(cHost, cItem.m_cBounds, LIST_COLOUR);
    cv::drawMarker(cHost, cItem.m_vCorners[0], LIST_COLOUR, cv::MARKER_CROSS, 2 * SEED_ARM);
}

struct Kind {
    const char *m_szName;
    const char *m_szPeer;
    Object (*m_fnOurs)();
    void (*m_fnPeer)(cv::Mat &cHost, const Item &cItem); ///< null: the strings, which are not the scene's
};
constexpr Kind KINDS[] = {
    {"points", "at<Vec3b>", [] { return points(0); },
     [](cv::Mat &cHost, const Item &cItem) {
         cHost.at<cv::Vec3b>(cItem.m_vCorners[0]) = {0, 255, 0};
     }},
    {"points as crosses", "drawMarker", [] { return points(CROSS_ARM); },
     [](cv::Mat &cHost, const Item &cItem) {
         cv::drawMarker(cHost, cItem.m_vCorners[0], LIST_COLOUR, cv::MARKER_CROSS, 2 * CROSS_ARM);
     }},
    {"lines", "line", [] { return lines(1, false); },
     [](cv::Mat &cHost, const Item &cItem) {
         cv::line(cHost, cItem.m_vCorners[0], cItem.m_vCorners[1], LIST_COLOUR);
     }},
    {"lines, 3 wide", "line", [] { return lines(3, false); },
     [](cv::Mat &cHost, const Item &cItem) {
         cv::line(cHost, cItem.m_vCorners[0], cItem.m_vCorners[1], LIST_COLOUR, 3);
     }},
    {"lines with length", "line, putText", [] { return lines(1, true); },
     [](cv::Mat &cHost, const Item &cItem) {
         const cv::Point &cFrom = cItem.m_vCorners[0];
         const cv::Point &cTo = cItem.m_vCorners[1];
         cv::line(cHost, cFrom, cTo, LIST_COLOUR);
         putNumber(cHost, cv::norm(cTo - cFrom), (cFrom + cTo) / 2);
     }},
    {"polygons", "polylines", [] { return polygons(1, false); },
     [](cv::Mat &cHost, const Item &cItem) { cv::polylines(cHost, cItem.m_vCorners, true, LIST_COLOUR); }},
    {"polygons with area", "polylines, contourArea, putText", [] { return polygons(1, true); },
     [](cv::Mat &cHost, const Item &cItem) {
         const auto &v = cItem.m_vCorners;
         cv::polylines(cHost, v, true, LIST_COLOUR);
         putNumber(cHost, cv::contourArea(v, true), (v[0] + v[1] + v[2] + v[3]) / 4);
     }},
    {"areas", "rectangle, drawMarker", [] { return areas(false); }, putArea},
    {"areas with name", "rectangle, drawMarker, putText", [] { return areas(true); },
     [](cv::Mat &cHost, const Item &cItem) {
         putArea(cHost, cItem);
         putText(cHost, TEXT, cItem.m_cBounds.tl() + cv::Point(3, -3), TEXT_COLOUR);
     }},
    {"strings", "putText", strings, nullptr},
};

Bench::Measure ours(const Kind &cKind, cv::Size cSize)
{
    const auto pcStore = Bench::newStore();
    fill(*pcStore, scene(cSize));
    Drawing::resetViewScaleOpt(0); // pictures that were drawn before have set it
    return Bench::drawn(cKind.m_fnOurs(), pcStore, cSize);
}

Bench::Measure peer(const Kind &cKind, cv::Size cSize)
{
    cv::Mat cHost = Bench::hostMemory(cSize);
    if (!cKind.m_fnPeer)
        return Bench::timed([=]() mutable {
            for (int n = 0; n < TEXTS; ++n)
                putText(cHost, TEXT, {20, 32 + n * 22}, LIST_COLOUR);
        });
    return Bench::timed([=, fnPeer = cKind.m_fnPeer, vScene = scene(cSize)]() mutable {
        for (const Item &cItem : vScene)
            fnPeer(cHost, cItem);
    });
}
} // namespace

void Bench::addDrawingLists(Table &cTable)
{
    for (const cv::Size cSize : {cv::Size(1920, 1080), cv::Size(640, 480)}) {
        std::string strPrefix = "draw " + std::to_string(cSize.width);
        strPrefix.append("x").append(std::to_string(cSize.height)).append(" ");
        for (const Kind &cKind : KINDS)
            cTable.add(strPrefix + std::to_string(cKind.m_fnPeer ? ITEMS : TEXTS) + " " + cKind.m_szName,
                       [&] {
                           Case cCase{{"draw", ours(cKind, cSize)}, {cKind.m_szPeer, peer(cKind, cSize)}};
                           cCase.m_dSeconds = 0.01;
                           return cCase;
                       });
    }
}
