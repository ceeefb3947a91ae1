#include <sdk/algorithm.h>
#include <sdk/opencv.h>

class Invert
{
public:
    static constexpr Plugin::About ABOUT{
        "MY_Invert",
        "图像处理",
        "反色",
        {"把灰度图像反色。", "Turns dark into bright and bright into dark."}};

    static constexpr Plugin::PictureInput INPUT{"InputID", {"输入图像", "Input"}, Plugin::Kind::Gray8};
    static constexpr Plugin::PictureOutput OUTPUT{
        "OutputID", {"输出图像", "Output"}, Plugin::Kind::Gray8, "反色图", "Inverted picture"};
    static constexpr auto WHITE = Plugin::Integer("White", {"白", "White"}, 255).range(0, 255);
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, WHITE};

    std::string execute(const Plugin::Step &cStep)
    {
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());
        cv::subtract(cv::Scalar(cStep[WHITE]), cInput, cOutput);
        return {};
    }
};

OCULINEX_ALGORITHM(Invert)
