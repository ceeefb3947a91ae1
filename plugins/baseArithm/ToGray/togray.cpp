#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/picture.h"

namespace
{
using Plugin::PictureType;

std::string toGray(const Plugin::Settings &cSettings, ArithmParamMgr &cStore)
{
    // The colour channels in the order in which a pixel holds them.
    const int nChannel = cSettings.choice("Channel", {"All", "Blue", "Green", "Red"}) - 1;
    const cv::Mat cInput = Plugin::inputPicture(cSettings, cStore, PictureType::RGB);
    cv::Mat cOutput = Plugin::outputPicture(cSettings, cStore, PictureType::Gray8, cInput.size(),
                                            {"灰度图", "Grey picture"});
    if (nChannel < 0)
        cv::cvtColor(cInput, cOutput, cv::COLOR_BGR2GRAY);
    else
        cv::extractChannel(cInput, cOutput, nChannel);
    return {};
}
} // namespace

OCULINEX_ALGORITHM("OCX_ToGray", "图像处理", "灰度化", toGray)
