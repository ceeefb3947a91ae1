#include <opencv2/imgproc.hpp>

#include <algorithm>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
/// Of an edge pixel, at most so many directions are tried: some seconds of work.
constexpr double MAX_VOTES = 1e9;

class Lines
{
public:
    enum Content { GREY, EDGES };

    static constexpr Plugin::About ABOUT{"OCX_Lines",
                                         "检测",
                                         "直线检测",
                                         {"用概率霍夫变换在灰度图或边缘图中找直线段。",
                                          "Finds straight lines in a grey picture or in one of edges, by the "
                                          "probabilistic Hough transform."}};

    static constexpr Plugin::Option CONTENTS[] = {{"Grey", {"灰度图", "Grey picture"}},
                                                  {"Edges", {"边缘图", "Edge picture"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr Plugin::ListOutput<Plugin::Kind::Lines> LINES{
        "LinesID", {"直线", "Lines"}, "直线", "Straight lines, the longest first"};
    static constexpr auto CONTENT =
        Plugin::Choice<Content>("Content", {"图像内容", "Content"}, CONTENTS)
            .help({"灰度图：先用 Canny 求边缘。边缘图：非 0 的像素是边缘。",
                   "Grey picture: edges are found first, by Canny. Edge picture: edges are the pixels that "
                   "are not 0."});
    static constexpr Plugin::Region REGION{"Region", {"区域", "Region"}};
    static constexpr auto LOW = Plugin::Integer("Low", {"低阈值", "Low level"}, 50)
                                    .range(0, 1000)
                                    .when(CONTENT, GREY)
                                    .help({"弱边缘，与强边缘相连才算。",
                                           "Of weak edges, which count where they go on from a strong one."});
    static constexpr auto HIGH =
        Plugin::Integer("High", {"高阈值", "High level"}, 150).range(0, 1000).when(CONTENT, GREY);
    static constexpr auto ANGLE =
        Plugin::Real("AngleStep", {"角度步长", "Angle step"}, 1, 0.25, 10).unit({"度", "degrees"});
    static constexpr auto VOTES =
        Plugin::Integer("Votes", {"最少票数", "Votes"}, 50)
            .range(1, 10000)
            .help({"一条直线上至少要有多少个边缘像素。", "Edge pixels that a line must go through."});
    static constexpr auto MIN_LENGTH = Plugin::Integer("MinLength", {"最小长度", "Smallest length"}, 50)
                                           .range(1, 10000)
                                           .unit({"像素", "pixels"});
    static constexpr auto MAX_GAP =
        Plugin::Integer("MaxGap", {"最大间隙", "Largest gap"}, 5)
            .range(0, 10000)
            .unit({"像素", "pixels"})
            .help({"间隙不超过它的两段合为一条。", "Pieces that are no farther apart become one line."});
    static constexpr auto MAX_COUNT = Plugin::Integer("MaxCount", {"最多条数", "At most"}, 100)
                                          .range(1, 100000)
                                          .help({"只留最长的。", "The longest are kept."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, LINES, CONTENT,    REGION,  LOW,      HIGH,
                                                   ANGLE, VOTES, MIN_LENGTH, MAX_GAP, MAX_COUNT};

    std::string execute(const Plugin::Step &cStep)
    {
        const Content eContent = cStep[CONTENT];
        const double dAngle = cStep[ANGLE];
        const int nMaxCount = cStep[MAX_COUNT];
        const Plugin::Rect cWanted = cStep[REGION];
        const int nLow = cStep[LOW];
        const int nHigh = cStep[HIGH];
        const int nVotes = cStep[VOTES];
        const int nMinLength = cStep[MIN_LENGTH];
        const int nMaxGap = cStep[MAX_GAP];
        cStep.check(LINES);
        const cv::Mat cPicture = Plugin::input(cStep, INPUT);
        const cv::Rect cRegion = Plugin::inside(cWanted, cPicture.size());
        cv::Mat cEdges = cPicture(cRegion);
        if (eContent == GREY) {
            // Given the gradients, OpenCV allocates none of its own.
            cv::Sobel(cEdges, m_cDx, CV_16S, 1, 0);
            cv::Sobel(cEdges, m_cDy, CV_16S, 0, 1);
            cv::Canny(m_cDx, m_cDy, m_cEdges, nLow, nHigh);
            cEdges = m_cEdges;
        }
        const int nEdges = cv::countNonZero(cEdges);
        if (const double dMost = MAX_VOTES * dAngle / 180; nEdges > dMost)
            throw Plugin::Error(
                std::to_string(nEdges) + " of the pixels are edges, at most " +
                std::to_string(static_cast<int>(dMost)) +
                " can be looked through: raise the levels or the angle step, or give a region.");

        cv::HoughLinesP(cEdges, m_lstFound, 1, dAngle * CV_PI / 180, nVotes, nMinLength, nMaxGap);
        const auto fnLength = [](const cv::Vec4i &cLine) {
            return std::hypot(cLine[2] - cLine[0], cLine[3] - cLine[1]);
        };
        std::stable_sort(m_lstFound.begin(), m_lstFound.end(), [&](const cv::Vec4i &cA, const cv::Vec4i &cB) {
            return fnLength(cA) > fnLength(cB);
        });
        m_lstFound.resize(std::min(m_lstFound.size(), static_cast<size_t>(nMaxCount)));
        QList<ParamLines::Line> lstLine;
        for (const cv::Vec4i &cLine : m_lstFound)
            lstLine.append(
                {cRegion.x + cLine[0], cRegion.y + cLine[1], cRegion.x + cLine[2], cRegion.y + cLine[3]});
        cStep.write(LINES, lstLine);
        return {};
    }

private:
    cv::Mat m_cDx;
    cv::Mat m_cDy;
    cv::Mat m_cEdges;
    std::vector<cv::Vec4i> m_lstFound;
};
} // namespace

OCULINEX_ALGORITHM(Lines)
