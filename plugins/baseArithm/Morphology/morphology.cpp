#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class Morphology
{
public:
    enum Operation { ERODE, DILATE, OPEN, CLOSE, GRADIENT, TOP_HAT, BLACK_HAT };
    enum Shape { RECT, ELLIPSE, CROSS };

    static constexpr Plugin::About ABOUT{
        "OCX_Morphology",
        "图像处理",
        "形态学",
        {"把亮的部分缩小或扩大，去除比结构元小的部分，或只保留这些部分。",
         "Shrinks or grows what is bright, takes away what is smaller than a shape or keeps only that."}};

    static constexpr Plugin::Option OPERATIONS[] = {
        {"Erode", {"腐蚀", "Erode"}},       {"Dilate", {"膨胀", "Dilate"}},
        {"Open", {"开运算", "Open"}},       {"Close", {"闭运算", "Close"}},
        {"Gradient", {"梯度", "Gradient"}}, {"TopHat", {"顶帽", "Top hat"}},
        {"BlackHat", {"黑帽", "Black hat"}}};
    static constexpr Plugin::Option SHAPES[] = {
        {"Rectangle", {"矩形", "Rectangle"}}, {"Ellipse", {"椭圆", "Ellipse"}}, {"Cross", {"十字", "Cross"}}};
    static constexpr auto INPUT =
        Plugin::PictureInput("InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8)
            .orKind(Plugin::Kind::DIB, "InputType");
    static constexpr Plugin::PictureOutput OUTPUT{
        "OutputID", {"输出图像", "Output picture"}, INPUT, "形态学图", "Picture after morphology"};
    static constexpr auto OPERATION =
        Plugin::Choice<Operation>("Operation", {"运算", "Operation"}, OPERATIONS)
            .help({"腐蚀缩小亮处，膨胀扩大亮处；开运算去除小亮点，闭运算填补小暗孔；梯度是轮廓；顶帽和"
                   "黑帽是开、闭运算去除的部分。",
                   "Erode shrinks what is bright, Dilate grows it; Open removes small bright spots, Close "
                   "fills small dark holes; Gradient is the outline; the hats are what Open and Close take "
                   "away."});
    static constexpr Plugin::Choice<Shape> SHAPE{"Shape", {"形状", "Shape"}, SHAPES};
    static constexpr auto SIZE =
        Plugin::Integer("Size", {"大小", "Size"}, 3)
            .range(1, 99)
            .odd()
            .unit({"像素", "pixels"})
            .help({"结构元的边长，奇数。", "Length of each side of the shape, odd."});
    static constexpr auto ITERATIONS =
        Plugin::Integer("Iterations", {"次数", "Iterations"}, 1)
            .range(1, 20)
            .help({"每次腐蚀或膨胀重复几遍。", "How often each shrinking or growing is repeated."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, OPERATION, SHAPE, SIZE, ITERATIONS};

    std::string execute(const Plugin::Step &cStep)
    {
        const Operation eOperation = cStep[OPERATION];
        prepare(cStep[SHAPE], cStep[SIZE], cStep[ITERATIONS]);
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());

        switch (eOperation) {
        case ERODE:
            erode(cInput, cOutput);
            break;
        case DILATE:
            dilate(cInput, cOutput);
            break;
        case OPEN:
            erode(cInput, cOutput);
            dilate(cOutput, cOutput);
            break;
        case CLOSE:
            dilate(cInput, cOutput);
            erode(cOutput, cOutput);
            break;
        case GRADIENT:
            erode(cInput, m_cOther);
            dilate(cInput, cOutput);
            cv::subtract(cOutput, m_cOther, cOutput);
            break;
        case TOP_HAT:
        case BLACK_HAT: {
            // Compared with the input: what is compared lies beside it, in place too.
            cv::Mat &cOther = cInput.data == cOutput.data ? m_cOther : cOutput;
            if (eOperation == TOP_HAT) {
                erode(cInput, cOther);
                dilate(cOther, cOther);
                cv::subtract(cInput, cOther, cOutput);
            } else {
                dilate(cInput, cOther);
                erode(cOther, cOther);
                cv::subtract(cOther, cInput, cOutput);
            }
        }
        }
        return {};
    }

private:
    void prepare(Shape eShape, int nSize, int nIterations)
    {
        // Rectangles one after the other are one larger rectangle.
        if (eShape == RECT) {
            nSize = 1 + (nSize - 1) * nIterations;
            nIterations = 1;
        }
        m_nIterations = nIterations;
        if (eShape == m_eShape && nSize == m_cKernel.cols)
            return;
        constexpr int TYPES[] = {cv::MORPH_RECT, cv::MORPH_ELLIPSE, cv::MORPH_CROSS};
        m_cKernel = cv::getStructuringElement(TYPES[eShape], {nSize, nSize});
        m_eShape = eShape;
    }
    void erode(const cv::Mat &cFrom, cv::Mat &cTo) const
    {
        cv::erode(cFrom, cTo, m_cKernel, {-1, -1}, m_nIterations);
    }
    void dilate(const cv::Mat &cFrom, cv::Mat &cTo) const
    {
        cv::dilate(cFrom, cTo, m_cKernel, {-1, -1}, m_nIterations);
    }

    Shape m_eShape = RECT; ///< of the kernel
    int m_nIterations = 1;
    cv::Mat m_cKernel;
    cv::Mat m_cOther; ///< a second picture, where an operation needs one
};
} // namespace

OCULINEX_ALGORITHM(Morphology)
