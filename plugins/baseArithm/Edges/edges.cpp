#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class Edges
{
public:
    enum Aperture { THREE, FIVE, SEVEN };
    enum Gradient { SUM, LENGTH };

    static constexpr Plugin::About ABOUT{
        "OCX_Edges",
        "图像处理",
        "边缘检测",
        {"用 Canny 方法找出边缘：边缘处写 255，其余写 0。",
         "Finds edges by Canny's method: writes 255 on thin lines along them and 0 elsewhere."}};

    static constexpr Plugin::Option APERTURES[] = {{"3", {"3", "3"}}, {"5", {"5", "5"}}, {"7", {"7", "7"}}};
    static constexpr Plugin::Option GRADIENTS[] = {{"Sum", {"绝对值之和", "Sum"}},
                                                   {"Length", {"长度", "Length"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr Plugin::PictureOutput OUTPUT{"OutputID",
                                                  {"输出图像", "Output picture"},
                                                  Plugin::Kind::Gray8,
                                                  "边缘图",
                                                  "Edges: 255 on them, else 0"};
    static constexpr auto LOW =
        Plugin::Integer("Low", {"低阈值", "Low"}, 15)
            .range(0, 255)
            .unit({"灰度级", "levels"})
            .help({"与强边缘相连的边缘至少要有的灰度差。",
                   "Edges that continue a strong one differ from side to side by more than this."});
    static constexpr auto HIGH =
        Plugin::Integer("High", {"高阈值", "High"}, 40)
            .range(0, 255)
            .unit({"灰度级", "levels"})
            .help({"强边缘至少要有的灰度差。", "Strong edges differ from side to side by more than this."});
    static constexpr auto APERTURE =
        Plugin::Choice<Aperture>("Aperture", {"窗口大小", "Aperture"}, APERTURES)
            .help({"计算梯度的窗口；越大越不受噪声影响，但越不精细。",
                   "Side of the square that the gradient is computed in, in pixels: a larger one minds noise "
                   "less and loses detail."});
    static constexpr auto GRADIENT =
        Plugin::Choice<Gradient>("Gradient", {"梯度", "Gradient"}, GRADIENTS)
            .help({"长度对各个方向的边缘一视同仁；绝对值之和更快，但对斜边更敏感。",
                   "Length treats all directions alike; Sum is faster and finds slanting edges sooner."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, LOW, HIGH, APERTURE, GRADIENT};

    std::string execute(const Plugin::Step &cStep)
    {
        const int nLow = cStep[LOW];
        const int nHigh = cStep[HIGH];
        if (nLow > nHigh)
            throw Plugin::Error("Setting Low is \"" + std::to_string(nLow) + "\", wanted is at most High, " +
                                std::to_string(nHigh) + ".");
        const Aperture eAperture = cStep[APERTURE];
        const bool bLength = cStep[GRADIENT] == LENGTH;
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());

        // What the gradient is where two areas meet along a row or column that differ by one grey level.
        // In the largest square it would leave the range of 16 bits.
        struct Scale {
            int m_nAperture;
            double m_dScale;
            double m_dStep;
        };
        constexpr Scale SCALES[] = {{3, 1, 4}, {5, 1, 48}, {7, 1 / 16.0, 40}};
        const auto [nAperture, dScale, dStep] = SCALES[eAperture];
        // Canny() with a picture allocates both gradients each time.
        cv::Sobel(cInput, m_cAcross, CV_16S, 1, 0, nAperture, dScale, 0, cv::BORDER_REPLICATE);
        cv::Sobel(cInput, m_cDown, CV_16S, 0, 1, nAperture, dScale, 0, cv::BORDER_REPLICATE);
        cv::Canny(m_cAcross, m_cDown, cOutput, nLow * dStep, nHigh * dStep, bLength);
        return {};
    }

private:
    cv::Mat m_cAcross; ///< the gradient's parts
    cv::Mat m_cDown;
};
} // namespace

OCULINEX_ALGORITHM(Edges)
