#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
using Contour = std::vector<cv::Point>;

constexpr int MAX = std::numeric_limits<int>::max();

/// What decides whether an outline is kept, and where it stands in the list.
struct Outline {
    explicit Outline(const Contour &lstPoint) : m_cFirst(lstPoint.front()), m_cLast(lstPoint.front())
    {
        double dTwice = 0;
        double dSteps = 0;
        cv::Point cFrom = lstPoint.back();
        for (const cv::Point &cTo : lstPoint) {
            dTwice += cFrom.cross(cTo);
            dSteps += std::max(std::abs(cTo.x - cFrom.x), std::abs(cTo.y - cFrom.y));
            cFrom = cTo;
            if (std::tie(cTo.y, cTo.x) < std::tie(m_cFirst.y, m_cFirst.x))
                m_cFirst = cTo;
            m_nLeft = std::min(m_nLeft, cTo.x);
            m_cLast = {std::max(m_cLast.x, cTo.x), std::max(m_cLast.y, cTo.y)};
        }
        // OpenCV goes round a hole the other way.
        m_bHole = dTwice > 0;
        // The corners are pixels, and the steps between them go along rows, columns or diagonals: Pick's
        // theorem gives the pixels.
        m_dPixels = (std::abs(dTwice) + (m_bHole ? -dSteps : dSteps)) / 2 + 1;
    }

    bool touchesBorder(cv::Size cPicture) const
    {
        return m_nLeft == 0 || m_cFirst.y == 0 || m_cLast.x == cPicture.width - 1 ||
               m_cLast.y == cPicture.height - 1;
    }
    /// From top left to bottom right, the outline of an object before that of its hole.
    bool operator<(const Outline &cOther) const
    {
        return std::tie(m_cFirst.y, m_cFirst.x, m_bHole, m_nContour) <
               std::tie(cOther.m_cFirst.y, cOther.m_cFirst.x, cOther.m_bHole, cOther.m_nContour);
    }

    size_t m_nContour = 0;
    double m_dPixels;   ///< enclosed: of an object with its outline and its holes, of a hole without
    cv::Point m_cFirst; ///< the first pixel, row by row from the top left
    cv::Point m_cLast;  ///< the right and the lower end
    int m_nLeft = MAX;
    bool m_bHole;
};

ParamPolys::Poly polygon(const Contour &lstPoint)
{
    ParamPolys::Poly cPoly;
    cPoly.verts.reserve(static_cast<int>(lstPoint.size()));
    for (const cv::Point &cPoint : lstPoint)
        cPoly.verts.append({cPoint.x, cPoint.y});
    return cPoly;
}

class Contours
{
public:
    enum Which { EXTERNAL, LIST, TREE };
    enum Polarity { BRIGHT, DARK };
    enum Approximation { CORNERS, ALL, POLYGON, HULL };
    enum Border { KEEP, DROP };

    static constexpr Plugin::About ABOUT{
        "OCX_Contours",
        "检测",
        "轮廓提取",
        {"把二值图中物体和孔的轮廓写成多边形。",
         "Writes the outlines of the objects of a binary picture, and of their holes, as polygons."}};

    static constexpr Plugin::Option WHICHES[] = {
        {"External", {"外轮廓", "External"}}, {"List", {"全部", "List"}}, {"Tree", {"全部及其从属", "Tree"}}};
    static constexpr Plugin::Option POLARITIES[] = {{"Bright", {"亮", "Bright"}}, {"Dark", {"暗", "Dark"}}};
    static constexpr Plugin::Option APPROXIMATIONS[] = {{"Corners", {"转折点", "Corners"}},
                                                        {"All", {"全部像素", "All pixels"}},
                                                        {"Polygon", {"近似多边形", "Polygon"}},
                                                        {"Hull", {"凸包", "Convex hull"}}};
    static constexpr Plugin::Option BORDERS[] = {{"Keep", {"保留", "Keep"}}, {"Drop", {"去除", "Drop"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr auto POLYS =
        Plugin::ListOutput<Plugin::Kind::Polys>("PolysID", {"多边形", "Polygons"}, "轮廓", "Outlines")
            .prefix("Polys");
    static constexpr auto WHICH =
        Plugin::Choice<Which>("Which", {"轮廓", "Outlines"}, WHICHES)
            .help({"外轮廓不含孔和孔中的物体；“从属”另写出每个轮廓在哪个轮廓之中。",
                   "External leaves out holes and what lies in them; Tree also tells which outline each one "
                   "lies in."});
    static constexpr auto PARENTS =
        Plugin::ListOutput<Plugin::Kind::Longs>("ParentsID", {"从属", "Parents"}, "轮廓从属",
                                                "For each outline the number of the one around it, or -1")
            .prefix("Parents")
            .when(WHICH, TREE);
    static constexpr auto POLARITY = Plugin::Choice<Polarity>("Polarity", {"物体", "Polarity"}, POLARITIES)
                                         .help({"物体是非 0 的像素，或为 0 的像素。",
                                                "Objects are the pixels that are not 0, or those that are."});
    static constexpr auto APPROXIMATION =
        Plugin::Choice<Approximation>("Approximation", {"近似", "Approximation"}, APPROXIMATIONS)
            .help({"转折点与全部像素是同一轮廓；近似多边形允许偏离。",
                   "Corners and All pixels are the same outline; Polygon may leave it by the tolerance."});
    static constexpr auto TOLERANCE = Plugin::Real("Tolerance", {"允许偏离", "Tolerance"}, 2, 0, 1000)
                                          .unit({"像素", "pixels"})
                                          .when(APPROXIMATION, POLYGON);
    static constexpr auto MIN_AREA =
        Plugin::Integer("MinArea", {"最小面积", "Smallest area"}, 1)
            .unit({"像素", "pixels"})
            .help({"轮廓围成的像素数，含其中的孔。", "Pixels that the outline encloses, holes included."});
    static constexpr auto MAX_AREA =
        Plugin::Integer("MaxArea", {"最大面积", "Largest area"}, MAX).unit({"像素", "pixels"});
    static constexpr auto BORDER =
        Plugin::Choice<Border>("Border", {"边缘轮廓", "At the border"}, BORDERS)
            .help({"接触图像边缘的轮廓。", "Outlines that touch the picture's border."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT,         POLYS,     WHICH,    PARENTS,  POLARITY,
                                                   APPROXIMATION, TOLERANCE, MIN_AREA, MAX_AREA, BORDER};

    std::string execute(const Plugin::Step &cStep)
    {
        const Which eWhich = cStep[WHICH];
        const bool bDark = cStep[POLARITY] == DARK;
        const Approximation eApproximation = cStep[APPROXIMATION];
        const double dTolerance = cStep[TOLERANCE];
        const int nMinArea = cStep[MIN_AREA];
        const int nMaxArea = cStep[MAX_AREA];
        const bool bDropBorder = cStep[BORDER] == DROP;
        // A step that lacks an output fails before it writes the other.
        cStep.check(POLYS);
        if (eWhich == TREE)
            cStep.check(PARENTS);
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        if (bDark)
            cv::compare(cInput, 0, m_cDark, cv::CMP_EQ);
        // OpenCV's own tree takes a time that grows with the square of the number of outlines.
        cv::findContours(bDark ? m_cDark : cInput, m_lstContour,
                         eWhich == EXTERNAL ? cv::RETR_EXTERNAL : cv::RETR_LIST,
                         eApproximation == ALL ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
        m_lstOutline.clear();
        for (size_t n = 0; n < m_lstContour.size(); ++n) {
            Outline cOutline(m_lstContour[n]);
            cOutline.m_nContour = n;
            if (cOutline.m_dPixels >= nMinArea && cOutline.m_dPixels <= nMaxArea &&
                !(bDropBorder && cOutline.touchesBorder(cInput.size())))
                m_lstOutline.push_back(cOutline);
        }
        std::sort(m_lstOutline.begin(), m_lstOutline.end());

        QList<ParamPolys::Poly> lstPoly;
        lstPoly.reserve(static_cast<int>(m_lstOutline.size()));
        for (const Outline &cOutline : m_lstOutline)
            lstPoly.append(
                polygon(approximated(m_lstContour[cOutline.m_nContour], eApproximation, dTolerance)));
        cStep.write(POLYS, lstPoly);
        if (eWhich == TREE)
            cStep.write(PARENTS, parents(cInput.size()));
        return {};
    }

private:
    const Contour &approximated(const Contour &lstPoint, Approximation eApproximation, double dTolerance)
    {
        if (eApproximation == POLYGON)
            cv::approxPolyDP(lstPoint, m_lstPoint, dTolerance, true);
        else if (eApproximation == HULL)
            cv::convexHull(lstPoint, m_lstPoint);
        else
            return lstPoint;
        return m_lstPoint;
    }
    /// Of each outline that is kept the next one around it that is kept too.
    ///
    /// Paints them with their numbers, the larger ones first: each finds the number of the one around it
    /// where it is going to be painted.
    QList<long> parents(cv::Size cPicture)
    {
        m_lstOrder.resize(m_lstOutline.size());
        std::iota(m_lstOrder.begin(), m_lstOrder.end(), 0);
        std::sort(m_lstOrder.begin(), m_lstOrder.end(), [this](int nA, int nB) {
            return m_lstOutline[static_cast<size_t>(nA)].m_dPixels >
                   m_lstOutline[static_cast<size_t>(nB)].m_dPixels;
        });
        m_cNumbers.create(cPicture, CV_32SC1);
        m_cNumbers.setTo(-1);
        m_lstParent.resize(m_lstOutline.size());
        for (const int nOutline : m_lstOrder) {
            const Outline &cOutline = m_lstOutline[static_cast<size_t>(nOutline)];
            const Contour &lstPoint = m_lstContour[cOutline.m_nContour];
            const int nAround = m_cNumbers.at<int>(cOutline.m_cFirst);
            m_lstParent[static_cast<size_t>(nOutline)] = nAround;
            cv::fillPoly(m_cNumbers, lstPoint, nOutline);
            // The pixels around a hole are the object's.
            if (cOutline.m_bHole)
                cv::polylines(m_cNumbers, lstPoint, true, nAround);
        }
        return {m_lstParent.cbegin(), m_lstParent.cend()};
    }

    cv::Mat m_cDark; ///< the picture the other way round
    std::vector<Contour> m_lstContour;
    std::vector<Outline> m_lstOutline;
    cv::Mat m_cNumbers;          ///< for each pixel the outline that is painted there, or -1
    std::vector<int> m_lstOrder; ///< the outlines, largest first
    std::vector<int> m_lstParent;
    Contour m_lstPoint;
};
} // namespace

OCULINEX_ALGORITHM(Contours)
