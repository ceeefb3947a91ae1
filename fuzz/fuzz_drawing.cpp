// Drawing objects: any kind with any settings, of a store with any lists, is drawn into any target
// after any scale.

#include <fuzzer/FuzzedDataProvider.h>

#include <memory>
#include <vector>

#include <QImage>

#include "Drawing/drawing.h"
#include "fuzzing.h"
#include "globalfunction.h"

namespace
{
/// A small number, mostly, or any.
int number(FuzzedDataProvider &cData)
{
    return cData.ConsumeIntegralInRange<int>(0, 3) > 0 ? cData.ConsumeIntegralInRange<int>(-3, 60)
                                                       : cData.ConsumeIntegral<int>();
}

template <typename Opt>
std::unique_ptr<Opt> picture(FuzzedDataProvider &cData, int nBytesOfPixel)
{
    constexpr qint64 MAX_BYTES = 1 << 20;
    const int nWidth = number(cData);
    const int nHeight = number(cData);
    // As the store and hosts pass them: rows of colour pictures are padded.
    const qint64 nRow =
        nBytesOfPixel == 3 ? (qint64{nWidth} + 1) * 3 / 4 * 4 : qint64{nWidth} * nBytesOfPixel;
    std::vector<unsigned char> vPixels;
    // A size that a host cannot have comes without pixels.
    if (nWidth > 0 && nHeight > 0 && nRow <= MAX_BYTES / nHeight) {
        vPixels = cData.ConsumeBytes<unsigned char>(static_cast<size_t>(nRow * nHeight));
        vPixels.resize(static_cast<size_t>(nRow * nHeight), cData.ConsumeIntegral<unsigned char>());
    }
    auto pcOpt = std::make_unique<Opt>(0, vPixels.empty() ? nullptr : vPixels.data(), nWidth, nHeight);
    pcOpt->setScaleType(cData.ConsumeIntegralInRange<int>(-1, 4));
    pcOpt->setAlignType(cData.ConsumeIntegralInRange<int>(0, 1));
    return pcOpt;
}

void setUp(FuzzedDataProvider &cData, Drawing::GrayDrawingOpt &cOpt)
{
    cOpt.setDrawMode(cData.ConsumeIntegralInRange<int>(-1, 3));
    cOpt.setLapped(cData.ConsumeIntegralInRange<int>(0, 1));
    cOpt.setMaskVal(cData.ConsumeIntegralInRange<int>(-1, 2));
    cOpt.setMaskColor(cData.ConsumeIntegralInRange<int>(-1, 3));
}

std::unique_ptr<Drawing::DrawingOpt> object(FuzzedDataProvider &cData)
{
    const int nID = cData.ConsumeIntegralInRange<int>(0, 3);
    switch (cData.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
        return picture<Drawing::DIBDrawingOpt>(cData, 3);
    case 1: {
        auto pcGrey = picture<Drawing::Gray8DrawingOpt>(cData, 1);
        setUp(cData, *pcGrey);
        if (cData.ConsumeBool()) // a host's own colours
            pcGrey->m_anColourTable[cData.ConsumeIntegral<uint8_t>()] = cData.ConsumeIntegral<unsigned>();
        return pcGrey;
    }
    case 2: {
        auto pcGrey = picture<Drawing::Gray16DrawingOpt>(cData, 2);
        setUp(cData, *pcGrey);
        return pcGrey;
    }
    case 3: {
        auto pcPoints = std::make_unique<Drawing::PointsDrawingOpt>(nID);
        pcPoints->setSize(number(cData));
        pcPoints->setColor(cData.ConsumeIntegral<int>());
        return pcPoints;
    }
    case 4: {
        auto pcLines = std::make_unique<Drawing::LinesDrawingOpt>(nID);
        pcLines->setSize(number(cData));
        pcLines->setDisplayLength(cData.ConsumeBool());
        return pcLines;
    }
    case 5: {
        auto pcPolys = std::make_unique<Drawing::PolysDrawingOpt>(nID);
        pcPolys->setBorderSize(number(cData));
        pcPolys->setDisplayArea(cData.ConsumeBool());
        return pcPolys;
    }
    case 6: {
        auto pcAreas = std::make_unique<Drawing::AreasDrawingOpt>(nID);
        pcAreas->setDisplayArea(cData.ConsumeBool());
        return pcAreas;
    }
    default: {
        auto pcStrings = std::make_unique<Drawing::StringsDrawingOpt>(nID);
        const int nX = number(cData);
        pcStrings->setPos(nX, number(cData));
        pcStrings->setFontSize(number(cData));
        return pcStrings;
    }
    }
}

QImage target(FuzzedDataProvider &cData)
{
    // What the library makes itself, and what a host that draws by itself may pass.
    static constexpr QImage::Format s_aeFormats[] = {QImage::Format_RGB888, QImage::Format_RGB32,
                                                     QImage::Format_Indexed8, QImage::Format_Mono};
    const int nWidth = cData.ConsumeIntegralInRange<int>(0, 70);
    const int nHeight = cData.ConsumeIntegralInRange<int>(0, 70);
    const QImage::Format eFormat =
        cData.ConsumeBool() ? QImage::Format_RGB888 : cData.PickValueInArray(s_aeFormats);
    QImage cTarget(cData.ConsumeIntegralInRange<int>(0, 15) == 0 ? 40000 : nWidth, nHeight, eFormat);
    cTarget.fill(0x55);
    return cTarget;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    FuzzedDataProvider cData(puchData, nSize);
    const int nView = cData.ConsumeIntegralInRange<int>(-1, 6);
    if (cData.ConsumeBool()) {
        Drawing::ViewScaleOpt cScale;
        for (float &fScale : cScale.m_afScale)
            fScale = cData.ConsumeFloatingPoint<float>();
        for (int &nOffset : cScale.m_anOffset)
            nOffset = number(cData);
        Drawing::setViewScaleOpt(nView, cScale);
    }
    ArithmParamMgr cStore;
    Fuzzing::fillStore(cData, cStore);
    QImage cTarget = target(cData);
    for (int nObjects = cData.ConsumeIntegralInRange<int>(1, 4); nObjects > 0; --nObjects) {
        const auto pcObject = object(cData);
        pcObject->setViewID(nView);
        pcObject->draw(&cTarget, cData.ConsumeIntegralInRange<int>(0, 7) ? &cStore : nullptr);
    }
    Drawing::resetViewScaleOpt(nView);
    return 0;
}
