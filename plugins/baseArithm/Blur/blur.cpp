#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class Blur
{
public:
    enum Method { GAUSSIAN, BOX, MEDIAN };

    static constexpr Plugin::About ABOUT{
        "OCX_Blur", "图像处理", "平滑", {"去除噪声和细小纹理。", "Takes noise and fine grain away."}};

    static constexpr Plugin::Option METHODS[] = {
        {"Gaussian", {"高斯", "Gaussian"}}, {"Box", {"均值", "Box"}}, {"Median", {"中值", "Median"}}};
    static constexpr auto INPUT =
        Plugin::PictureInput("InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8)
            .orKind(Plugin::Kind::DIB, "InputType");
    static constexpr Plugin::PictureOutput OUTPUT{
        "OutputID", {"输出图像", "Output picture"}, INPUT, "平滑图", "Smoothed picture"};
    static constexpr Plugin::Choice<Method> METHOD{"Method", {"方法", "Method"}, METHODS};
    static constexpr auto SIZE =
        Plugin::Integer("Size", {"窗口大小", "Size"}, 5)
            .range(1, 255)
            .odd()
            .unit({"像素", "pixels"})
            .help({"滤波窗口的边长，奇数。", "Length of each side of the filter's square, odd."});
    static constexpr auto SIGMA =
        Plugin::Real("Sigma", {"标准差", "Sigma"}, 0, 0, 100)
            .unit({"像素", "pixels"})
            .when(METHOD, GAUSSIAN)
            .help({"高斯的标准差；0 表示由窗口大小决定。", "Of the Gaussian; 0 follows the size."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, METHOD, SIZE, SIGMA};

    std::string execute(const Plugin::Step &cStep)
    {
        const Method eMethod = cStep[METHOD];
        const int nSize = cStep[SIZE];
        const double dSigma = cStep[SIGMA];
        cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());
        // In place the filters would make a copy of their own each time.
        Plugin::separate(cInput, cOutput, m_cCopy);

        const cv::Size cSize(nSize, nSize);
        if (eMethod == MEDIAN)
            cv::medianBlur(cInput, cOutput, nSize);
        else if (eMethod == BOX)
            cv::blur(cInput, cOutput, cSize);
        else
            cv::GaussianBlur(cInput, cOutput, cSize, dSigma);
        return {};
    }

private:
    cv::Mat m_cCopy;
};
} // namespace

OCULINEX_ALGORITHM(Blur)
