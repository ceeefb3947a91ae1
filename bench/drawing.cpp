#include "drawn.h"

#include <cstring>

#include <opencv2/imgproc.hpp>

#include <QImage>

#include "cases.h"

namespace
{
using Bench::Measure;

enum class Mode { Plain, OverlayGrey, OverlayTable, MaskOthers, MaskZeros };

struct Kind {
    const char *m_szName;
    const char *m_szPeer;
    bool m_bColour;
    Mode m_eMode;
    int m_nScaleType; ///< 0 as it is, 1 to the view's width, 2 to its height, 3 to both
};
constexpr Kind COLOUR = {"colour", "cvtColor BGR2RGB", true, Mode::Plain, 0};
constexpr Kind GREY = {"grey", "cvtColor GRAY2RGB", false, Mode::Plain, 0};
constexpr Kind KINDS[] = {
    COLOUR,
    GREY,
    {"grey overlay", "cvtColor GRAY2RGB, copyTo with mask", false, Mode::OverlayGrey, 0},
    {"overlay in colours", "applyColorMap, copyTo with mask", false, Mode::OverlayTable, 0},
    {"mask", "setTo with mask", false, Mode::MaskOthers, 0},
    {"mask of zeros", "compare, setTo with mask", false, Mode::MaskZeros, 0},
    {"colour, half as large", "resize INTER_NEAREST, cvtColor BGR2RGB", true, Mode::Plain, 3},
    {"grey, half as large", "resize INTER_NEAREST, cvtColor GRAY2RGB", false, Mode::Plain, 3},
    {"colour, to the width", "resize, cvtColor BGR2RGB, setTo around", true, Mode::Plain, 1},
    {"grey, to the width", "resize, cvtColor GRAY2RGB, setTo around", false, Mode::Plain, 1},
    {"colour, to the height", "resize, cvtColor BGR2RGB, setTo around", true, Mode::Plain, 2},
    {"grey, to the height", "resize, cvtColor GRAY2RGB, setTo around", false, Mode::Plain, 2},
};

/// Where a picture of three quarters of the view's other side, or of the whole view, is shown.
cv::Rect shownPart(const Kind &cKind, cv::Size cSize)
{
    const int nWidth = cKind.m_nScaleType == 2 ? cSize.width * 3 / 4 : cSize.width;
    const int nHeight = cKind.m_nScaleType == 1 ? cSize.height * 3 / 4 : cSize.height;
    return {(cSize.width - nWidth) / 2, (cSize.height - nHeight) / 2, nWidth, nHeight};
}

/// What both sides draw: a photograph, for the overlays with large parts at 0, twice as large as it is
/// shown where it is scaled.
cv::Mat picture(const Kind &cKind, cv::Size cSize)
{
    const cv::Size cShown = shownPart(cKind, cSize).size() * (cKind.m_nScaleType == 0 ? 1 : 2);
    cv::Mat cPicture = Bench::photograph(cShown.width, cShown.height, cKind.m_bColour);
    if (cKind.m_eMode != Mode::Plain)
        cv::threshold(cPicture, cPicture, 130, 255, cv::THRESH_TOZERO);
    return cPicture;
}

Measure ours(const Kind &cKind, cv::Size cSize)
{
    const cv::Mat cPicture = picture(cKind, cSize);
    if (cKind.m_bColour) {
        const auto pcDIB =
            std::make_shared<Drawing::DIBDrawingOpt>(1, cPicture.data, cPicture.cols, cPicture.rows);
        pcDIB->setScaleType(cKind.m_nScaleType);
        return Bench::drawn(pcDIB, Bench::newStore(), cSize);
    }
    const auto pcGrey =
        std::make_shared<Drawing::Gray8DrawingOpt>(1, cPicture.data, cPicture.cols, cPicture.rows);
    const bool bOverlay = cKind.m_eMode == Mode::OverlayGrey || cKind.m_eMode == Mode::OverlayTable;
    pcGrey->setScaleType(cKind.m_nScaleType);
    pcGrey->setDrawMode(cKind.m_eMode == Mode::Plain ? 0 : bOverlay ? 1 : 2);
    pcGrey->setLapped(cKind.m_eMode == Mode::OverlayTable ? 1 : 0);
    pcGrey->setMaskVal(cKind.m_eMode == Mode::MaskOthers ? 1 : 0);
    pcGrey->setMaskColor(cKind.m_eMode == Mode::MaskOthers ? 2 : 1);
    return Bench::drawn(pcGrey, Bench::newStore(), cSize);
}

Measure peer(const Kind &cKind, cv::Size cSize)
{
    const cv::Mat cPicture = picture(cKind, cSize);
    cv::Mat cHost = Bench::hostMemory(cSize);
    cv::Mat cBetween;
    const auto fnConvert = [bColour = cKind.m_bColour](const cv::Mat &cFrom, cv::Mat &cTo) {
        cv::cvtColor(cFrom, cTo, bColour ? cv::COLOR_BGR2RGB : cv::COLOR_GRAY2RGB);
    };
    switch (cKind.m_eMode) {
    case Mode::OverlayGrey:
        return Bench::timed([=]() mutable {
            fnConvert(cPicture, cBetween);
            cBetween.copyTo(cHost, cPicture);
        });
    case Mode::OverlayTable:
        return Bench::timed([=]() mutable {
            cv::applyColorMap(cPicture, cBetween, cv::COLORMAP_JET);
            cBetween.copyTo(cHost, cPicture);
        });
    case Mode::MaskOthers:
        return Bench::timed([=]() mutable { cHost.setTo(cv::Scalar(255, 0, 0), cPicture); });
    case Mode::MaskZeros:
        return Bench::timed([=]() mutable {
            cv::compare(cPicture, 0, cBetween, cv::CMP_EQ);
            cHost.setTo(cv::Scalar(255, 255, 255), cBetween);
        });
    default:
        break;
    }
    if (cKind.m_nScaleType == 0)
        return Bench::timed([=]() mutable { fnConvert(cPicture, cHost); });
    const cv::Rect cShown = shownPart(cKind, cSize);
    const cv::Mat cBefore =
        cHost(cv::Rect(0, 0, cShown.x > 0 ? cShown.x : cSize.width, cShown.x > 0 ? cSize.height : cShown.y));
    const cv::Mat cBehind =
        cHost(cv::Rect(cSize.width - cBefore.cols, cSize.height - cBefore.rows, cBefore.cols, cBefore.rows));
    return Bench::timed([=, cPart = cHost(cShown)]() mutable {
        cv::resize(cPicture, cBetween, cShown.size(), 0, 0, cv::INTER_NEAREST);
        fnConvert(cBetween, cPart);
        for (cv::Mat cAround : {cBefore, cBehind})
            cAround.setTo(0);
    });
}

Bench::Side copied(size_t nBytes)
{
    const std::vector<unsigned char> vFrom(nBytes, 1);
    return {"memcpy of as many bytes",
            Bench::timed([vFrom, vTo = vFrom]() mutable { memcpy(vTo.data(), vFrom.data(), vTo.size()); })};
}

/// Such an object paints nothing: what it costs is the copy that it is made with.
Measure madeGray16(cv::Size cSize)
{
    const cv::Mat cPicture(cSize, CV_16U, cv::Scalar(1000));
    const cv::Mat cHost = Bench::hostMemory(cSize);
    return Bench::timed([cPicture, cHost, pcStore = Bench::newStore()] {
        QImage cTarget(cHost.data, cHost.cols, cHost.rows, static_cast<int>(cHost.step),
                       QImage::Format_RGB888);
        Drawing::Gray16DrawingOpt(1, cPicture.data, cPicture.cols, cPicture.rows)
            .draw(&cTarget, pcStore.get());
    });
}
} // namespace

std::shared_ptr<ArithmParamMgr> Bench::newStore()
{
    return {ArithmParamMgr::newInstance(), ArithmParamMgr::deleteInstance};
}

cv::Mat Bench::hostMemory(cv::Size cSize)
{
    return storeCopy(cv::Mat(cSize, CV_8UC3, cv::Scalar(1, 2, 3)));
}

Bench::Measure Bench::drawn(std::shared_ptr<Drawing::DrawingOpt> pcObject,
                            std::shared_ptr<ArithmParamMgr> pcStore, cv::Size cSize)
{
    const cv::Mat cHost = hostMemory(cSize);
    const auto pcTarget = std::make_shared<QImage>(cHost.data, cHost.cols, cHost.rows,
                                                   static_cast<int>(cHost.step), QImage::Format_RGB888);
    return timed([=] {
        (void)cHost; // keeps the memory
        pcObject->draw(pcTarget.get(), pcStore.get());
    });
}

void Bench::addDrawing(Table &cTable)
{
    for (const cv::Size cSize : {cv::Size(1920, 1080), cv::Size(640, 480)}) {
        const std::string strSize = std::to_string(cSize.width) + "x" + std::to_string(cSize.height);
        const auto nPixels = static_cast<size_t>(cSize.area());
        for (const Kind &cKind : KINDS) {
            cTable.add("draw " + strSize + " " + cKind.m_szName, [&] {
                Case cCase{{"draw", ours(cKind, cSize)}, {cKind.m_szPeer, peer(cKind, cSize)}};
                const bool bGoal = cSize.width == 1920 && cKind.m_nScaleType == 0;
                cCase.m_dGoal = bGoal ? 1.0 : 0;
                cCase.m_dSeconds = bGoal ? 0.03 : 0.02;
                return cCase;
            });
        }
        for (const Kind *pcKind : {&COLOUR, &GREY})
            cTable.add("draw " + strSize + " " + pcKind->m_szName + " / memory", [&] {
                return Case{{"draw", ours(*pcKind, cSize)}, copied(nPixels * 3)};
            });
        cTable.add("make and draw " + strSize + " Gray16 / memory", [&] {
            return Case{{"make and draw", madeGray16(cSize)}, copied(nPixels * 2)};
        });
    }
}
