#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <vector>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
/// Moves the corners to where the gradients around them meet.
void refine(const cv::Mat &cPicture, std::vector<cv::Point2f> &lstCorner)
{
    constexpr int REACH = 5; // pixels to each side
    constexpr int ROUNDS = 30;
    constexpr double ENOUGH = 0.01; // pixels
    // OpenCV wants the window twice as wide, and two pixels at each side, in the picture.
    const int nReach = std::min(REACH, (std::min(cPicture.cols, cPicture.rows) - 5) / 2);
    if (nReach > 0 && !lstCorner.empty())
        cv::cornerSubPix(cPicture, lstCorner, {nReach, nReach}, {-1, -1},
                         {cv::TermCriteria::COUNT + cv::TermCriteria::EPS, ROUNDS, ENOUGH});
}

class Corners
{
public:
    enum Method { MIN_EIGENVALUE, HARRIS };

    static constexpr Plugin::About ABOUT{
        "OCX_Corners",
        "检测",
        "角点检测",
        {"找出灰度向两个方向变化的点。",
         "Finds the points where the picture changes in both directions, the clearest first."}};

    static constexpr Plugin::Option METHODS[] = {{"MinEigenvalue", {"最小特征值", "Smallest eigenvalue"}},
                                                 {"Harris", {"Harris", "Harris"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr Plugin::ListOutput<Plugin::Kind::Points> POINTS{
        "PointsID", {"角点", "Points"}, "角点", "Corners, the clearest first"};
    static constexpr Plugin::Region REGION{"Region", {"区域", "Region"}};
    static constexpr Plugin::Choice<Method> METHOD{"Method", {"方法", "Method"}, METHODS};
    static constexpr auto MAX_COUNT = Plugin::Integer("MaxCount", {"最多个数", "At most"}, 200)
                                          .range(1, 100000)
                                          .help({"只留最清楚的。", "The clearest are kept."});
    static constexpr auto QUALITY =
        Plugin::Real("Quality", {"质量", "Quality"}, 0.05, 0.0001, 1)
            .help({"与最清楚的角点之比，低于它的不算。",
                   "Share of the clearest corner's strength that the others must have."});
    static constexpr auto DISTANCE =
        Plugin::Real("Distance", {"最小距离", "Distance"}, 10, 0, 1000)
            .unit({"像素", "pixels"})
            .help({"两个角点至少相距多少。", "How far the corners are apart at least."});
    static constexpr auto BLOCK =
        Plugin::Integer("Block", {"邻域大小", "Block"}, 3).range(3, 31).odd().unit({"像素", "pixels"});
    static constexpr auto SUB_PIXEL =
        Plugin::Flag("SubPixel", {"亚像素定位", "Refine below a pixel"})
            .help({"先求亚像素位置，再取整。", "The exact place is found, then rounded."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT,   POINTS,   REGION, METHOD,   MAX_COUNT,
                                                   QUALITY, DISTANCE, BLOCK,  SUB_PIXEL};

    std::string execute(const Plugin::Step &cStep)
    {
        constexpr double HARRIS_K = 0.04;
        const Method eMethod = cStep[METHOD];
        const int nMaxCount = cStep[MAX_COUNT];
        const double dQuality = cStep[QUALITY];
        const double dDistance = cStep[DISTANCE];
        const int nBlock = cStep[BLOCK];
        const bool bSubPixel = cStep[SUB_PIXEL];
        const Plugin::Rect cWanted = cStep[REGION];
        cStep.check(POINTS);
        const cv::Mat cWhole = Plugin::input(cStep, INPUT);
        const cv::Rect cRegion = Plugin::inside(cWanted, cWhole.size());
        const cv::Mat cPicture = cWhole(cRegion);

        cv::goodFeaturesToTrack(cPicture, m_lstCorner, nMaxCount, dQuality, dDistance, {}, nBlock,
                                eMethod == HARRIS, HARRIS_K);
        if (bSubPixel)
            refine(cPicture, m_lstCorner);
        QList<ParamPoints::Point> lstPoint;
        for (const cv::Point2f &cCorner : m_lstCorner)
            lstPoint.append({cRegion.x + cvRound(cCorner.x), cRegion.y + cvRound(cCorner.y)});
        cStep.write(POINTS, lstPoint);
        return {};
    }

private:
    std::vector<cv::Point2f> m_lstCorner;
};
} // namespace

OCULINEX_ALGORITHM(Corners)
