#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/picture.h"

namespace
{
using Plugin::PictureType;

enum Method { GAUSSIAN, BOX, MEDIAN };

std::string blur(const Plugin::Settings &cSettings, ArithmParamMgr &cStore)
{
    const PictureType eType =
        cSettings.choice("InputType", {"Gray8", "RGB"}) == 1 ? PictureType::RGB : PictureType::Gray8;
    const int nMethod = cSettings.choice("Method", {"Gaussian", "Box", "Median"});
    const int nSize = cSettings.number("Size", 1, 255, 5);
    if (nSize % 2 == 0)
        throw Plugin::Error("Setting Size is " + std::to_string(nSize) + ", wanted is an odd number.");
    const double dSigma = cSettings.real("Sigma", 0, 100, 0);

    cv::Mat cInput = Plugin::inputPicture(cSettings, cStore, eType);
    cv::Mat cOutput =
        Plugin::outputPicture(cSettings, cStore, eType, cInput.size(), {"平滑图", "Smoothed picture"});
    if (cInput.data == cOutput.data) {
        // The filters would make a copy of their own each time.
        thread_local cv::Mat s_cCopy;
        cInput.copyTo(s_cCopy);
        cInput = s_cCopy;
    }
    const cv::Size cSize(nSize, nSize);
    if (nMethod == MEDIAN)
        cv::medianBlur(cInput, cOutput, nSize);
    else if (nMethod == BOX)
        cv::blur(cInput, cOutput, cSize);
    else
        cv::GaussianBlur(cInput, cOutput, cSize, dSigma);
    return {};
}
} // namespace

OCULINEX_ALGORITHM("OCX_Blur", "图像处理", "平滑", blur)
