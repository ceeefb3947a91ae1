#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <vector>

#include <QImageReader>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
namespace fs = std::filesystem;

/// Templates as they stand in their files. A file is read once and again when it changes.
class TemplateFiles
{
public:
    const cv::Mat &read(const std::string &strPath, bool bColour)
    {
        std::error_code cError;
        const fs::file_time_type cTime = fs::last_write_time(strPath, cError);
        if (cError)
            throw Plugin::Error("Template file \"" + strPath + "\" cannot be read: " + cError.message() +
                                ".");
        // A user who tries many files in the window leaves few behind.
        constexpr size_t MOST = 64;
        if (m_mapFile.size() > MOST)
            m_mapFile.clear();
        const auto [it, bNew] = m_mapFile.try_emplace({strPath, bColour});
        File &cFile = it->second;
        if (bNew || cFile.m_cTime != cTime) {
            cFile.m_cPixels = decode(strPath, bColour);
            cFile.m_cTime = cTime;
        }
        return cFile.m_cPixels;
    }

private:
    struct File {
        fs::file_time_type m_cTime = fs::file_time_type::min();
        cv::Mat m_cPixels;
    };

    static cv::Mat decode(const std::string &strPath, bool bColour)
    {
        QImageReader cReader(QString::fromStdString(strPath));
        QImage cImage = cReader.read().convertToFormat(QImage::Format_BGR888);
        if (cImage.isNull())
            throw Plugin::Error("Template file \"" + strPath +
                                "\" cannot be read: " + cReader.errorString().toStdString() + ".");
        const cv::Mat cColour(cImage.height(), cImage.width(), CV_8UC3, cImage.bits(),
                              static_cast<size_t>(cImage.bytesPerLine()));
        cv::Mat cPixels;
        if (bColour)
            cColour.copyTo(cPixels);
        else
            cv::cvtColor(cColour, cPixels, cv::COLOR_BGR2GRAY);
        return cPixels;
    }

    std::map<std::pair<std::string, bool>, File> m_mapFile;
};

std::string sizeText(cv::Size cSize)
{
    return std::to_string(cSize.width) + " x " + std::to_string(cSize.height);
}

class TemplateMatch
{
public:
    enum Origin { FILE, PICTURE };
    enum Matches { BEST, ALL };

    static constexpr Plugin::About ABOUT{
        "OCX_TemplateMatch",
        "检测",
        "模板匹配",
        {"找出图像中与模板相像的地方，不受亮度和对比度影响。",
         "Finds the places that look like a template, whatever the brightness and the contrast."}};

    static constexpr Plugin::Option ORIGINS[] = {{"File", {"文件", "File"}},
                                                 {"Picture", {"图像变量", "Picture"}}};
    static constexpr Plugin::Option MATCHES[] = {{"Best", {"最佳", "Best"}}, {"All", {"全部", "All"}}};
    static constexpr auto INPUT =
        Plugin::PictureInput("InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8)
            .orKind(Plugin::Kind::DIB, "InputType");
    static constexpr auto ORIGIN = Plugin::Choice<Origin>("Template", {"模板来源", "Template from"}, ORIGINS);
    static constexpr auto FILE_PATH = Plugin::File("TemplateFile", {"模板文件", "Template file"})
                                          .filter("*.png *.jpg *.jpeg *.bmp")
                                          .when(ORIGIN, FILE);
    static constexpr auto TEMPLATE =
        Plugin::PictureInput("TemplateID", {"模板图像", "Template picture"}, Plugin::Kind::Gray8)
            .orKind(Plugin::Kind::DIB, "InputType")
            .when(ORIGIN, PICTURE);
    static constexpr auto AREAS = Plugin::ListOutput<Plugin::Kind::Areas>("AreasID", {"匹配区域", "Areas"},
                                                                          "匹配", "Matches, the best first")
                                      .prefix("Areas");
    static constexpr auto SCORES =
        Plugin::ListOutput<Plugin::Kind::Doubles>("ScoresID", {"得分", "Scores"}, "得分",
                                                  "Scores of the matches, 1 is perfect")
            .prefix("Scores");
    static constexpr Plugin::Region REGION{"Region", {"搜索区域", "Region"}};
    static constexpr auto SCORE = Plugin::Real("Score", {"最低得分", "Lowest score"}, 0.8, 0.01, 1)
                                      .help({"1 为完全相同。", "1 is the same but for brightness."});
    static constexpr Plugin::Choice<Matches> KEEP{"Matches", {"匹配", "Matches"}, MATCHES};
    static constexpr auto OVERLAP =
        Plugin::Integer("Overlap", {"最大重叠", "Overlap"}, 30)
            .range(0, 90)
            .unit({"%", "%"})
            .when(KEEP, ALL)
            .help({"重叠更多的匹配中只留最好的。",
                   "Share of its width and height by which a match may overlap a better one."});
    static constexpr auto MAX_COUNT =
        Plugin::Integer("MaxCount", {"最多个数", "At most"}, 100).range(1, 100000).when(KEEP, ALL);
    static constexpr Plugin::Setting SETTINGS[] = {INPUT,  TEMPLATE, AREAS, SCORES,  ORIGIN,   FILE_PATH,
                                                   REGION, SCORE,    KEEP,  OVERLAP, MAX_COUNT};

    std::string execute(const Plugin::Step &cStep)
    {
        const double dScore = cStep[SCORE];
        const bool bAll = cStep[KEEP] == ALL;
        const int nOverlap = cStep[OVERLAP];
        const int nMaxCount = bAll ? cStep[MAX_COUNT] : 1;
        const Plugin::Rect cWanted = cStep[REGION];
        cStep.check(AREAS);
        cStep.check(SCORES);
        const cv::Mat cPicture = Plugin::input(cStep, INPUT);
        const cv::Rect cRegion = Plugin::inside(cWanted, cPicture.size());
        const cv::Mat cTemplate = templateOf(cStep);
        const cv::Size cSize = cTemplate.size();
        if (cSize.width > cRegion.width || cSize.height > cRegion.height)
            throw Plugin::Error("The template (" + sizeText(cSize) + ") is larger than the " +
                                (cRegion.size() == cPicture.size() ? "picture (" : "region (") +
                                sizeText(cRegion.size()) + ").");

        cv::matchTemplate(cPicture(cRegion), cTemplate, m_cScores, cv::TM_CCOEFF_NORMED);
        findPeaks(static_cast<float>(dScore), bAll);
        QList<ParamAreas::Area> lstArea;
        QList<double> lstScore;
        const int nReachX = std::max(1, cSize.width * (100 - nOverlap) / 100);
        const int nReachY = std::max(1, cSize.height * (100 - nOverlap) / 100);
        for (const Peak &cPeak : m_lstPeak) {
            if (lstArea.size() >= nMaxCount)
                break;
            if (m_cScores.at<float>(cPeak.m_cPlace) == TAKEN)
                continue;
            const cv::Rect cAround(cPeak.m_cPlace.x - nReachX + 1, cPeak.m_cPlace.y - nReachY + 1,
                                   2 * nReachX - 1, 2 * nReachY - 1);
            m_cScores(cAround & cv::Rect({}, m_cScores.size())) = TAKEN;
            const int nLeft = cRegion.x + cPeak.m_cPlace.x;
            const int nTop = cRegion.y + cPeak.m_cPlace.y;
            lstArea.append({cSize.area(),
                            {nTop, nTop + cSize.height - 1, nLeft, nLeft + cSize.width - 1},
                            nLeft + cSize.width / 2,
                            nTop + cSize.height / 2});
            lstScore.append(static_cast<double>(cPeak.m_fScore));
        }
        cStep.write(AREAS, lstArea);
        cStep.write(SCORES, lstScore);
        return {};
    }

private:
    static constexpr float TAKEN = -2; ///< below all scores: a better match covers the place

    struct Peak {
        float m_fScore;
        cv::Point m_cPlace;
    };

    cv::Mat templateOf(const Plugin::Step &cStep)
    {
        const bool bFile = cStep[ORIGIN] == FILE;
        const std::string strPath(cStep[FILE_PATH]);
        if (bFile && strPath.empty())
            throw Plugin::Error("No template file is chosen.");
        cv::Mat cTemplate = bFile ? m_cFiles.read(strPath, cStep.kind(INPUT) == Plugin::Kind::DIB)
                                  : Plugin::input(cStep, TEMPLATE);
        cv::Scalar cMean;
        cv::Scalar cDeviation;
        cv::meanStdDev(cTemplate, cMean, cDeviation);
        if (cv::norm(cDeviation) < 1e-3)
            throw Plugin::Error("All pixels of the template are alike: there is nothing to look for.");
        return cTemplate;
    }

    /// The places that score enough and no lower than those around them, the best first.
    void findPeaks(float fLowest, bool bAll)
    {
        m_lstPeak.clear();
        if (!bAll) {
            double dBest = 0;
            cv::Point cPlace;
            cv::minMaxLoc(m_cScores, nullptr, &dBest, nullptr, &cPlace);
            if (static_cast<float>(dBest) >= fLowest)
                m_lstPeak.push_back({static_cast<float>(dBest), cPlace});
            return;
        }
        for (int nY = 0; nY < m_cScores.rows; ++nY) {
            const float *const pfRow = m_cScores.ptr<float>(nY);
            for (int nX = 0; nX < m_cScores.cols; ++nX)
                if (pfRow[nX] >= fLowest && isPeak(nX, nY))
                    m_lstPeak.push_back({pfRow[nX], {nX, nY}});
        }
        std::stable_sort(m_lstPeak.begin(), m_lstPeak.end(),
                         [](const Peak &cA, const Peak &cB) { return cA.m_fScore > cB.m_fScore; });
    }

    bool isPeak(int nX, int nY) const
    {
        const float fScore = m_cScores.at<float>(nY, nX);
        for (int nRow = std::max(0, nY - 1); nRow <= std::min(m_cScores.rows - 1, nY + 1); ++nRow)
            for (int nCol = std::max(0, nX - 1); nCol <= std::min(m_cScores.cols - 1, nX + 1); ++nCol)
                if (m_cScores.at<float>(nRow, nCol) > fScore)
                    return false;
        return true;
    }

    TemplateFiles m_cFiles;
    cv::Mat m_cScores;
    std::vector<Peak> m_lstPeak;
};
} // namespace

OCULINEX_ALGORITHM(TemplateMatch)
