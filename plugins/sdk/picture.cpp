#include "sdk/picture.h"

#include <cstdlib>

#include "arithmparammgr.h"

namespace
{
// Each task has a thread of its own, which the user may pin to a core. OpenCV's pool of threads, one
// for the process, would let tasks wait for each other and work on cores that belong to others. The
// number counts for the whole process, so a user's own choice stands.
[[maybe_unused]] const bool s_bOneThread = [] {
    const bool bChosen = std::getenv("OPENCV_FOR_THREADS_NUM") != nullptr;
    if (!bChosen)
        cv::setNumThreads(1);
    return !bChosen;
}();

unsigned char *pixels(const ParamDIB &cPicture)
{
    return cPicture.getDIB();
}

unsigned char *pixels(const ParamGray8 &cPicture)
{
    return cPicture.getGray8();
}

template <Plugin::PictureType eType, typename Picture>
cv::Mat header(const Picture &cPicture)
{
    return {cPicture.getHeight(), cPicture.getWidth(), eType == Plugin::PictureType::RGB ? CV_8UC3 : CV_8UC1,
            pixels(cPicture), Plugin::rowLength(eType, cPicture.getWidth())};
}

template <Plugin::PictureType eType, typename Picture>
cv::Mat input(const Picture &cPicture)
{
    if (!pixels(cPicture))
        throw Plugin::Error("Input picture " + std::to_string(cPicture.getID()) + " is empty.");
    return header<eType>(cPicture);
}

template <Plugin::PictureType eType, typename Picture>
cv::Mat output(Picture &cPicture, cv::Size cSize, const Plugin::Settings &cSettings,
               const Plugin::Title &cTitle)
{
    Plugin::setTitle(cPicture, cSettings, "", cTitle);
    // A picture of that size is left alone, since it may be the input.
    if (cPicture.getWidth() != cSize.width || cPicture.getHeight() != cSize.height)
        cPicture.resize(cSize.width, cSize.height);
    if (!pixels(cPicture))
        throw Plugin::Error("There is no memory for output picture " + std::to_string(cPicture.getID()) +
                            ".");
    return header<eType>(cPicture);
}
} // namespace

size_t Plugin::rowLength(PictureType eType, int nWidth)
{
    const size_t nPixels = static_cast<size_t>(nWidth);
    return eType == PictureType::RGB ? (nPixels + 1) * 3 & ~size_t(3) : nPixels;
}

cv::Mat Plugin::inputPicture(const Settings &cSettings, ArithmParamMgr &cStore, PictureType eType)
{
    const int nID = cSettings.id("InputID");
    return eType == PictureType::RGB ? input<PictureType::RGB>(*cStore.getParamDIB(nID))
                                     : input<PictureType::Gray8>(*cStore.getParamGray8(nID));
}

cv::Mat Plugin::outputPicture(const Settings &cSettings, ArithmParamMgr &cStore, PictureType eType,
                              cv::Size cSize, const Title &cTitle)
{
    const int nID = cSettings.id("OutputID");
    return eType == PictureType::RGB
               ? output<PictureType::RGB>(*cStore.getParamDIB(nID), cSize, cSettings, cTitle)
               : output<PictureType::Gray8>(*cStore.getParamGray8(nID), cSize, cSettings, cTitle);
}
