#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class Threshold
{
public:
    enum Method { OTSU, FIXED, ADAPTIVE };
    enum Polarity { BRIGHT, DARK };

    static constexpr Plugin::About ABOUT{
        "OCX_Threshold",
        "图像处理",
        "二值化",
        {"物体处写 255，其余写 0。", "Writes 255 where objects are and 0 elsewhere."}};

    static constexpr Plugin::Option METHODS[] = {
        {"Otsu", {"大津法", "Otsu"}}, {"Fixed", {"固定阈值", "Fixed"}}, {"Adaptive", {"自适应", "Adaptive"}}};
    static constexpr Plugin::Option POLARITIES[] = {{"Bright", {"亮", "Bright"}}, {"Dark", {"暗", "Dark"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr Plugin::PictureOutput OUTPUT{"OutputID",
                                                  {"输出图像", "Output picture"},
                                                  Plugin::Kind::Gray8,
                                                  "二值图",
                                                  "Binary picture: 255 where objects are, else 0"};
    static constexpr auto METHOD =
        Plugin::Choice<Method>("Method", {"方法", "Method"}, METHODS)
            .help({"大津法由图像求出一个阈值；自适应按每个像素周围的平均值。",
                   "Otsu finds one level from the picture; Adaptive takes the mean around each pixel."});
    static constexpr auto POLARITY =
        Plugin::Choice<Polarity>("Polarity", {"物体", "Polarity"}, POLARITIES)
            .help({"物体比阈值亮，或不比阈值亮。", "Objects are brighter than the level, or not brighter."});
    static constexpr auto LEVEL =
        Plugin::Integer("Level", {"阈值", "Level"}, 127).range(0, 255).when(METHOD, FIXED);
    // 999 * 999 pixels of 255 fit the sums of the box filter with room to spare.
    static constexpr auto BLOCK =
        Plugin::Integer("Block", {"邻域大小", "Block"}, 51)
            .range(3, 999)
            .odd()
            .unit({"像素", "pixels"})
            .when(METHOD, ADAPTIVE)
            .help({"约为物体的两倍，奇数。", "About twice the size of an object, odd."});
    static constexpr auto OFFSET =
        Plugin::Integer("Offset", {"偏移", "Offset"}, 10)
            .range(-255, 255)
            .when(METHOD, ADAPTIVE)
            .help({"物体与平均值至少相差多少。", "By how much an object stands out from the mean."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, METHOD, POLARITY, LEVEL, BLOCK, OFFSET};

    std::string execute(const Plugin::Step &cStep)
    {
        const Method eMethod = cStep[METHOD];
        const bool bDark = cStep[POLARITY] == DARK;
        const int nLevel = cStep[LEVEL];
        const int nBlock = cStep[BLOCK];
        const int nOffset = cStep[OFFSET];
        const int nType = bDark ? cv::THRESH_BINARY_INV : cv::THRESH_BINARY;

        cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());
        if (eMethod != ADAPTIVE) {
            cv::threshold(cInput, cOutput, nLevel, 255, eMethod == OTSU ? nType | cv::THRESH_OTSU : nType);
            return {};
        }
        // In place OpenCV would allocate a picture of means each time; beside the input, the output
        // holds them.
        Plugin::separate(cInput, cOutput, m_cCopy);
        // OpenCV subtracts its constant from the mean of the block.
        cv::adaptiveThreshold(cInput, cOutput, 255, cv::ADAPTIVE_THRESH_MEAN_C, nType, nBlock,
                              bDark ? nOffset : -nOffset);
        return {};
    }

private:
    cv::Mat m_cCopy;
};
} // namespace

OCULINEX_ALGORITHM(Threshold)
