#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class ToGray
{
public:
    enum Channel { ALL, BLUE, GREEN, RED };

    static constexpr Plugin::About ABOUT{
        "OCX_ToGray",
        "图像处理",
        "灰度化",
        {"把彩色图像转换为灰度图像，或取其一个通道。",
         "Makes a grey picture of a colour picture, or of one of its channels."}};

    static constexpr Plugin::Option CHANNELS[] = {{"All", {"全部", "All"}},
                                                  {"Blue", {"蓝", "Blue"}},
                                                  {"Green", {"绿", "Green"}},
                                                  {"Red", {"红", "Red"}}};
    static constexpr Plugin::PictureInput INPUT{"InputID", {"输入图像", "Input picture"}, Plugin::Kind::DIB};
    static constexpr Plugin::PictureOutput OUTPUT{
        "OutputID", {"输出图像", "Output picture"}, Plugin::Kind::Gray8, "灰度图", "Grey picture"};
    static constexpr auto CHANNEL =
        Plugin::Choice<Channel>("Channel", {"通道", "Channel"}, CHANNELS)
            .help({"“全部”按人眼的感受加权三个通道。", "All weighs the three as the eye does."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, CHANNEL};

    std::string execute(const Plugin::Step &cStep)
    {
        const Channel eChannel = cStep[CHANNEL];
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());
        if (eChannel == ALL)
            cv::cvtColor(cInput, cOutput, cv::COLOR_BGR2GRAY);
        else
            cv::extractChannel(cInput, cOutput, eChannel - BLUE);
        return {};
    }
};
} // namespace

OCULINEX_ALGORITHM(ToGray)
