#include <cstring>
#include <memory>

#include <opencv2/imgproc.hpp>

#include <QImage>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"
#include "cases.h"

namespace
{
using Bench::Measure;

enum class Mode { Colour, Grey, OverlayGrey, OverlayTable, Mask, ColourFit, GreyFit };

struct Kind {
    Mode m_eMode;
    const char *m_szName;
    const char *m_szPeer;
};
constexpr Kind KINDS[] = {
    {Mode::Colour, "colour", "cvtColor BGR2RGB"},
    {Mode::Grey, "grey", "cvtColor GRAY2RGB"},
    {Mode::OverlayGrey, "grey overlay", "cvtColor GRAY2RGB, copyTo with mask"},
    {Mode::OverlayTable, "overlay in colours", "applyColorMap, copyTo with mask"},
    {Mode::Mask, "mask", "setTo with mask"},
    {Mode::ColourFit, "colour, half as large", "resize INTER_NEAREST, cvtColor BGR2RGB"},
    {Mode::GreyFit, "grey, half as large", "resize INTER_NEAREST, cvtColor GRAY2RGB"},
};

bool isColour(Mode eMode)
{
    return eMode == Mode::Colour || eMode == Mode::ColourFit;
}

bool isFit(Mode eMode)
{
    return eMode == Mode::ColourFit || eMode == Mode::GreyFit;
}

/// What both sides draw: a photograph, for the overlays with large parts at 0.
cv::Mat picture(Mode eMode, int nWidth, int nHeight)
{
    const int nTimes = isFit(eMode) ? 2 : 1;
    cv::Mat cPicture = Bench::photograph(nWidth * nTimes, nHeight * nTimes, isColour(eMode));
    if (eMode == Mode::OverlayGrey || eMode == Mode::OverlayTable || eMode == Mode::Mask)
        cv::threshold(cPicture, cPicture, 130, 255, cv::THRESH_TOZERO);
    return cPicture;
}

Measure ours(Mode eMode, int nWidth, int nHeight)
{
    const cv::Mat cPicture = picture(eMode, nWidth, nHeight);
    const std::shared_ptr<ArithmParamMgr> pcStore(ArithmParamMgr::newInstance(),
                                                  ArithmParamMgr::deleteInstance);
    std::shared_ptr<Drawing::DrawingOpt> pcObject;
    if (isColour(eMode)) {
        const auto pcDIB =
            std::make_shared<Drawing::DIBDrawingOpt>(1, cPicture.data, cPicture.cols, cPicture.rows);
        pcDIB->setScaleType(isFit(eMode) ? 3 : 0);
        pcObject = pcDIB;
    } else {
        const auto pcGrey =
            std::make_shared<Drawing::Gray8DrawingOpt>(1, cPicture.data, cPicture.cols, cPicture.rows);
        pcGrey->setScaleType(isFit(eMode) ? 3 : 0);
        pcGrey->setDrawMode(eMode == Mode::Mask ? 2 : eMode == Mode::Grey || isFit(eMode) ? 0 : 1);
        pcGrey->setLapped(eMode == Mode::OverlayTable ? 1 : 0);
        pcGrey->setMaskVal(1);
        pcGrey->setMaskColor(2);
        pcObject = pcGrey;
    }
    // The host's own memory, as in getDrawingWindow.
    const cv::Mat cHost = Bench::storeCopy(cv::Mat(nHeight, nWidth, CV_8UC3, cv::Scalar(1, 2, 3)));
    const auto pcTarget = std::make_shared<QImage>(cHost.data, nWidth, nHeight, static_cast<int>(cHost.step),
                                                   QImage::Format_RGB888);
    return Bench::timed([=] {
        (void)cHost; // keeps the memory
        pcObject->draw(pcTarget.get(), pcStore.get());
    });
}

Measure peer(Mode eMode, int nWidth, int nHeight)
{
    const cv::Mat cPicture = picture(eMode, nWidth, nHeight);
    cv::Mat cHost = Bench::storeCopy(cv::Mat(nHeight, nWidth, CV_8UC3, cv::Scalar(1, 2, 3)));
    cv::Mat cColours;
    const auto fnConvert = [=](const cv::Mat &cFrom, cv::Mat &cTo) {
        cv::cvtColor(cFrom, cTo, isColour(eMode) ? cv::COLOR_BGR2RGB : cv::COLOR_GRAY2RGB);
    };
    switch (eMode) {
    case Mode::OverlayGrey:
        return Bench::timed([=]() mutable {
            fnConvert(cPicture, cColours);
            cColours.copyTo(cHost, cPicture);
        });
    case Mode::OverlayTable:
        return Bench::timed([=]() mutable {
            cv::applyColorMap(cPicture, cColours, cv::COLORMAP_JET);
            cColours.copyTo(cHost, cPicture);
        });
    case Mode::Mask:
        return Bench::timed([=]() mutable { cHost.setTo(cv::Scalar(255, 0, 0), cPicture); });
    case Mode::ColourFit:
    case Mode::GreyFit:
        return Bench::timed([=]() mutable {
            cv::resize(cPicture, cColours, cHost.size(), 0, 0, cv::INTER_NEAREST);
            fnConvert(cColours, cHost);
        });
    default:
        return Bench::timed([=]() mutable { fnConvert(cPicture, cHost); });
    }
}
} // namespace

void Bench::addDrawing(Table &cTable)
{
    for (const cv::Size cSize : {cv::Size(1920, 1080), cv::Size(640, 480)}) {
        const std::string strSize = std::to_string(cSize.width) + "x" + std::to_string(cSize.height);
        for (const Kind &cKind : KINDS) {
            cTable.add("draw " + strSize + " " + cKind.m_szName, [&] {
                Case cCase{{"draw", ours(cKind.m_eMode, cSize.width, cSize.height)},
                           {cKind.m_szPeer, peer(cKind.m_eMode, cSize.width, cSize.height)}};
                cCase.m_dGoal = cSize.width == 1920 && !isFit(cKind.m_eMode) ? 1.0 : 0;
                return cCase;
            });
        }
        cTable.add("draw " + strSize + " colour / memory", [&] {
            const size_t nBytes = static_cast<size_t>(cSize.area()) * 3;
            const std::vector<unsigned char> vFrom(nBytes, 1);
            return Case{{"draw", ours(Mode::Colour, cSize.width, cSize.height)},
                        {"memcpy of as many bytes", timed([vFrom, vTo = vFrom]() mutable {
                             memcpy(vTo.data(), vFrom.data(), vTo.size());
                         })}};
        });
    }
}
