#include <algorithm>
#include <limits>

#include "labeller.h"
#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
constexpr int MAX = std::numeric_limits<int>::max();

/// "24 coins, 1120 to 3044 pixels": what they are and how large the smallest and the largest is.
std::string report(const std::string &strCount, const QList<ParamAreas::Area> &lstArea)
{
    if (lstArea.isEmpty())
        return strCount;
    const auto [itMin, itMax] = std::minmax_element(
        lstArea.cbegin(), lstArea.cend(), [](const auto &cA, const auto &cB) { return cA.size < cB.size; });
    const std::string strRange = itMin->size < itMax->size ? std::to_string(itMin->size) + " to " : "";
    return strCount + ", " + strRange + std::to_string(itMax->size) + " pixels";
}

class Blobs
{
public:
    enum Polarity { BRIGHT, DARK };
    enum Neighbours { EIGHT, FOUR };
    enum Border { KEEP, DROP };

    static constexpr Plugin::About ABOUT{"OCX_Blobs",
                                         "检测",
                                         "斑点分析",
                                         {"找出二值图中相连的区域，并按其个数控制流程。",
                                          "Finds the connected areas of a binary picture, keeps those of the "
                                          "right size and steers the flow by their number."}};

    static constexpr Plugin::Option POLARITIES[] = {{"Bright", {"亮", "Bright"}}, {"Dark", {"暗", "Dark"}}};
    static constexpr Plugin::Option NEIGHBOUR_NUMBERS[] = {{"8", {"8", "8"}}, {"4", {"4", "4"}}};
    static constexpr Plugin::Option BORDERS[] = {{"Keep", {"保留", "Keep"}}, {"Drop", {"去除", "Drop"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr auto AREAS =
        Plugin::ListOutput<Plugin::Kind::Areas>("AreasID", {"区域", "Areas"}, "斑点", "Connected areas")
            .prefix("Areas");
    static constexpr auto STRINGS = Plugin::ListOutput<Plugin::Kind::Strings>(
                                        "StringsID", {"个数", "Count"}, "斑点数", "Number of connected areas")
                                        .prefix("Strings");
    static constexpr auto POLARITY = Plugin::Choice<Polarity>("Polarity", {"物体", "Polarity"}, POLARITIES)
                                         .help({"物体是非 0 的像素，或为 0 的像素。",
                                                "Objects are the pixels that are not 0, or those that are."});
    static constexpr auto NEIGHBOURS =
        Plugin::Choice<Neighbours>("Neighbours", {"邻接", "Neighbours"}, NEIGHBOUR_NUMBERS)
            .help({"8：只在角上相接的像素也算相连。", "8: pixels that touch at a corner belong together."});
    static constexpr auto MIN_SIZE =
        Plugin::Integer("MinSize", {"最小面积", "Smallest size"}, 1).unit({"像素", "pixels"});
    static constexpr auto MAX_SIZE =
        Plugin::Integer("MaxSize", {"最大面积", "Largest size"}, MAX).unit({"像素", "pixels"});
    static constexpr auto BORDER =
        Plugin::Choice<Border>("Border", {"边缘区域", "At the border"}, BORDERS)
            .help({"接触图像边缘的区域。", "Areas that touch the picture's border."});
    static constexpr Plugin::Text LABEL{"Label", {"名称", "Label"}, "objects"};
    static constexpr Plugin::Flag PRINT{"Print", {"输出个数", "Print the count"}};
    static constexpr Plugin::Integer MIN_COUNT{"MinCount", {"最少个数", "Lowest count"}, 0};
    static constexpr Plugin::Integer MAX_COUNT{"MaxCount", {"最多个数", "Highest count"}, MAX};
    static constexpr auto INSIDE =
        Plugin::Command("WhenInside", {"个数正确时", "When the count is right"})
            .help({"skip:步数、stop:文字 或 print:文字。", "skip:STEPS, stop:TEXT or print:TEXT."});
    static constexpr auto OUTSIDE =
        Plugin::Command("WhenOutside", {"个数错误时", "When the count is wrong"}).help(INSIDE.m_cHelp);
    static constexpr Plugin::Setting SETTINGS[] = {INPUT,     AREAS,     STRINGS, POLARITY, NEIGHBOURS,
                                                   MIN_SIZE,  MAX_SIZE,  BORDER,  LABEL,    PRINT,
                                                   MIN_COUNT, MAX_COUNT, INSIDE,  OUTSIDE};

    std::string execute(const Plugin::Step &cStep)
    {
        const bool bDropBorder = cStep[BORDER] == DROP;
        const int nMinSize = cStep[MIN_SIZE];
        const int nMaxSize = cStep[MAX_SIZE];
        const int nMinCount = cStep[MIN_COUNT];
        const int nMaxCount = cStep[MAX_COUNT];
        const bool bPrint = cStep[PRINT];
        const std::string strInside = cStep[INSIDE];
        const std::string strOutside = cStep[OUTSIDE];
        // A step that lacks an output fails before it writes the other.
        cStep.check(AREAS);
        cStep.check(STRINGS);
        const cv::Mat cInput = Plugin::input(cStep, INPUT);

        QList<ParamAreas::Area> lstArea;
        for (const Labeller::Area &cArea :
             m_cLabeller.find(cInput, cStep[POLARITY] == DARK, cStep[NEIGHBOURS] == EIGHT)) {
            const bool bAtBorder = cArea.m_nTop == 0 || cArea.m_nLeft == 0 ||
                                   cArea.m_nBottom == cInput.rows - 1 || cArea.m_nRight == cInput.cols - 1;
            if (cArea.m_nSize >= nMinSize && cArea.m_nSize <= nMaxSize && !(bDropBorder && bAtBorder))
                lstArea.append({cArea.m_nSize,
                                {cArea.m_nTop, cArea.m_nBottom, cArea.m_nLeft, cArea.m_nRight},
                                cArea.m_nSeedX,
                                cArea.m_nSeedY});
        }
        const std::string strCount = std::to_string(lstArea.size()) + " " + std::string(cStep[LABEL]);
        cStep.write(AREAS, lstArea);
        cStep.write(STRINGS, {Plugin::toQString(strCount)});

        const bool bInside = lstArea.size() >= nMinCount && lstArea.size() <= nMaxCount;
        return (bPrint ? Plugin::printed(report(strCount, lstArea)) : "") +
               (bInside ? strInside : strOutside);
    }

private:
    Labeller m_cLabeller;
};
} // namespace

OCULINEX_ALGORITHM(Blobs)
