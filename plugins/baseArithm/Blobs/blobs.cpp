#include <algorithm>

#include "arithmparammgr.h"
#include "sdk/algorithm.h"
#include "sdk/picture.h"
#include "labeller.h"

namespace
{
using Plugin::PictureType;

constexpr int MAX = std::numeric_limits<int>::max();

/// The command for the flow in a setting, framed for the result text; empty when there is none.
std::string command(const Plugin::Settings &cSettings, const char *szTag)
{
    const std::string_view strCommand = cSettings.text(szTag);
    if (strCommand.empty())
        return {};
    const size_t nColon = std::min(strCommand.find(':'), strCommand.size());
    const std::string_view strVerb = strCommand.substr(0, nColon);
    int nSteps = 0;
    const bool bText =
        Plugin::equalsIgnoringCase(strVerb, "stop") || Plugin::equalsIgnoringCase(strVerb, "print");
    const bool bSkip = Plugin::equalsIgnoringCase(strVerb, "skip") && nColon < strCommand.size() &&
                       Plugin::toNumber(strCommand.substr(nColon + 1), nSteps);
    if (!bSkip && !(bText && nColon < strCommand.size()))
        throw Plugin::Error(std::string("Setting ") + szTag + " is \"" + std::string(strCommand) +
                            "\", wanted is skip:NUMBER, stop:TEXT or print:TEXT.");
    return "<CMD>" + std::string(strCommand) + "</CMD>";
}

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

std::string blobs(const Plugin::Settings &cSettings, ArithmParamMgr &cStore)
{
    const bool bDark = cSettings.choice("Polarity", {"Bright", "Dark"}) == 1;
    const bool bCorners = cSettings.choice("Neighbours", {"8", "4"}) == 0;
    const bool bDropBorder = cSettings.choice("Border", {"Keep", "Drop"}) == 1;
    const int nMinSize = cSettings.number("MinSize", 0, MAX, 1);
    const int nMaxSize = cSettings.number("MaxSize", 0, MAX, MAX);
    const int nMinCount = cSettings.number("MinCount", 0, MAX, 0);
    const int nMaxCount = cSettings.number("MaxCount", 0, MAX, MAX);
    const int nAreasID = cSettings.id("AreasID");
    const int nStringsID = cSettings.id("StringsID");
    const bool bPrint = cSettings.flag("Print", false);
    const std::string strInside = command(cSettings, "WhenInside");
    const std::string strOutside = command(cSettings, "WhenOutside");
    const cv::Mat cInput = Plugin::inputPicture(cSettings, cStore, PictureType::Gray8);

    thread_local Labeller s_cLabeller;
    QList<ParamAreas::Area> lstArea;
    for (const Labeller::Area &cArea : s_cLabeller.find(cInput, bDark, bCorners)) {
        const bool bAtBorder = cArea.m_nTop == 0 || cArea.m_nLeft == 0 ||
                               cArea.m_nBottom == cInput.rows - 1 || cArea.m_nRight == cInput.cols - 1;
        if (cArea.m_nSize >= nMinSize && cArea.m_nSize <= nMaxSize && !(bDropBorder && bAtBorder))
            lstArea.append({cArea.m_nSize,
                            {cArea.m_nTop, cArea.m_nBottom, cArea.m_nLeft, cArea.m_nRight},
                            cArea.m_nSeedX,
                            cArea.m_nSeedY});
    }
    std::string strCount(cSettings.text("Label"));
    strCount = std::to_string(lstArea.size()) + " " + (strCount.empty() ? "objects" : strCount);

    ParamAreas &cAreas = *cStore.getParamAreas(nAreasID);
    Plugin::setTitle(cAreas, cSettings, "Areas", {"斑点", "Connected areas"});
    cAreas.setAreas(lstArea);
    ParamStrings &cStrings = *cStore.getParamStrings(nStringsID);
    Plugin::setTitle(cStrings, cSettings, "Strings", {"斑点数", "Number of connected areas"});
    cStrings.setStrings({Plugin::toQString(strCount)});

    const bool bInside = lstArea.size() >= nMinCount && lstArea.size() <= nMaxCount;
    return (bPrint ? "<CMD>print:" + report(strCount, lstArea) + "</CMD>" : "") +
           (bInside ? strInside : strOutside);
}
} // namespace

OCULINEX_ALGORITHM("OCX_Blobs", "检测", "斑点分析", blobs)
