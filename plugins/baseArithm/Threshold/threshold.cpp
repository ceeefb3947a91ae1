#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/picture.h"

namespace
{
using Plugin::PictureType;

enum Method { OTSU, FIXED, ADAPTIVE };

int oddBlock(const Plugin::Settings &cSettings)
{
    // 999 * 999 pixels of 255 fit the sums of the box filter with room to spare.
    const int nBlock = cSettings.number("Block", 3, 999, 51);
    if (nBlock % 2 == 0)
        throw Plugin::Error("Setting Block is " + std::to_string(nBlock) + ", wanted is an odd number.");
    return nBlock;
}

std::string threshold(const Plugin::Settings &cSettings, ArithmParamMgr &cStore)
{
    const int nMethod = cSettings.choice("Method", {"Otsu", "Fixed", "Adaptive"});
    const bool bDark = cSettings.choice("Polarity", {"Bright", "Dark"}) == 1;
    const int nLevel = cSettings.number("Level", 0, 255, 127);
    const int nBlock = oddBlock(cSettings);
    const int nOffset = cSettings.number("Offset", -255, 255, 10);
    const int nType = bDark ? cv::THRESH_BINARY_INV : cv::THRESH_BINARY;

    cv::Mat cInput = Plugin::inputPicture(cSettings, cStore, PictureType::Gray8);
    cv::Mat cOutput = Plugin::outputPicture(cSettings, cStore, PictureType::Gray8, cInput.size(),
                                            {"二值图", "Binary picture: 255 where objects are, else 0"});
    if (nMethod != ADAPTIVE) {
        cv::threshold(cInput, cOutput, nLevel, 255, nMethod == OTSU ? nType | cv::THRESH_OTSU : nType);
        return {};
    }
    if (cInput.data == cOutput.data) {
        // OpenCV would allocate a picture of means each time; beside the input, the output holds them.
        thread_local cv::Mat s_cCopy;
        cInput.copyTo(s_cCopy);
        cInput = s_cCopy;
    }
    // OpenCV subtracts its constant from the mean of the block.
    cv::adaptiveThreshold(cInput, cOutput, 255, cv::ADAPTIVE_THRESH_MEAN_C, nType, nBlock,
                          bDark ? nOffset : -nOffset);
    return {};
}
} // namespace

OCULINEX_ALGORITHM("OCX_Threshold", "图像处理", "二值化", threshold)
