#ifndef PLUGIN_OPENCV_H
#define PLUGIN_OPENCV_H

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <opencv2/core.hpp>

#include "sdk/step.h"

/// The store's pictures as OpenCV sees them.
namespace Plugin
{
// Each task has a thread of its own, which the user may pin to a core. OpenCV's pool of threads, one
// for the process, would let tasks wait for each other and work on cores that belong to others. The
// number counts for the whole process, so a user's own choice stands.
[[maybe_unused]] inline const bool gbOneThread = [] {
    const bool bChosen = std::getenv("OPENCV_FOR_THREADS_NUM") != nullptr;
    if (!bChosen)
        cv::setNumThreads(1);
    return !bChosen;
}();

/// A header on the picture's own pixels.
inline cv::Mat mat(const Picture &cPicture)
{
    const int nType = cPicture.m_eKind == Kind::DIB      ? CV_8UC3
                      : cPicture.m_eKind == Kind::Gray16 ? CV_16UC1
                                                         : CV_8UC1;
    return {cPicture.m_nHeight, cPicture.m_nWidth, nType, cPicture.m_puchPixels, cPicture.m_nRowLength};
}

inline cv::Mat input(const Step &cStep, const PictureInput &cSetting)
{
    return mat(cStep[cSetting]);
}

/// The output, made that large. OpenCV writes into it, and not into memory of its own, when what it
/// computes has this very size and type.
inline cv::Mat output(const Step &cStep, const PictureOutput &cSetting, cv::Size cSize)
{
    return mat(cStep.resized(cSetting, cSize.width, cSize.height));
}

/// For functions that cannot work in place: makes the input a copy where it is the output. The copy's
/// memory is the caller's, to be kept for the next picture.
inline void separate(cv::Mat &cInput, const cv::Mat &cOutput, cv::Mat &cCopy)
{
    if (cInput.data != cOutput.data)
        return;
    cInput.copyTo(cCopy);
    cInput = cCopy;
}

/// The part of the region that lies in the picture, the whole picture for an empty region. Throws
/// when nothing of it does.
inline cv::Rect inside(const Rect &cRegion, cv::Size cPicture)
{
    const cv::Rect cWhole({}, cPicture);
    if (cRegion.m_nWidth < 1)
        return cWhole;
    // Ends beyond the range of int are cut off before they are added up.
    const cv::Rect cWanted(
        cRegion.m_nX, cRegion.m_nY,
        std::min(cRegion.m_nWidth, std::numeric_limits<int>::max() - std::max(cRegion.m_nX, 0)),
        std::min(cRegion.m_nHeight, std::numeric_limits<int>::max() - std::max(cRegion.m_nY, 0)));
    const cv::Rect cPart = cWanted & cWhole;
    if (cPart.empty())
        throw Error("The region lies outside of the picture.");
    return cPart;
}
} // namespace Plugin

#endif
