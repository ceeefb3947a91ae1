#include <algorithm>
#include <cmath>

#include "circlefinder.h"
#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
class CircleMeasure
{
public:
    static constexpr Plugin::About ABOUT{
        "OCX_CircleMeasure",
        "测量",
        "圆测量",
        {"找出最清楚的圆，亚像素精度测量圆心和半径。",
         "Finds the clearest circle and measures its centre and radius to fractions of a pixel."}};

    static constexpr Plugin::Option POLARITIES[] = {
        {"Any", {"任意", "Any"}}, {"Bright", {"内亮", "Bright inside"}}, {"Dark", {"内暗", "Dark inside"}}};
    static constexpr Plugin::PictureInput INPUT{
        "InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8};
    static constexpr auto VALUES =
        Plugin::ListOutput<Plugin::Kind::Doubles>("ValuesID", {"测量值", "Values"}, "圆测量值",
                                                  "x, y, radius, deviation, coverage of a circle")
            .prefix("Values");
    static constexpr auto STRINGS =
        Plugin::ListOutput<Plugin::Kind::Strings>("StringsID", {"文字", "Text"}, "圆文字",
                                                  "Radius and centre of a circle, as text")
            .prefix("Strings");
    static constexpr auto CENTRE =
        Plugin::ListOutput<Plugin::Kind::Points>("CentreID", {"圆心", "Centre"}, "圆心", "Centre of a circle")
            .prefix("Centre");
    static constexpr auto OUTLINE = Plugin::ListOutput<Plugin::Kind::Polys>("OutlineID", {"圆周", "Outline"},
                                                                            "圆周", "Outline of a circle")
                                        .prefix("Outline");
    static constexpr auto REGION =
        Plugin::Region("Region", {"区域", "Region"})
            .help({"圆心在其中；越小越快，越可靠。",
                   "Holds the centre. The smaller it is, the faster and surer the circle is found."});
    static constexpr auto POLARITY =
        Plugin::Choice<CircleFinder::Polarity>("Polarity", {"极性", "Polarity"}, POLARITIES);
    static constexpr auto MIN_RADIUS = Plugin::Integer("MinRadius", {"最小半径", "Smallest radius"}, 10)
                                           .range(3, 10000)
                                           .unit({"像素", "pixels"});
    static constexpr auto MAX_RADIUS = Plugin::Integer("MaxRadius", {"最大半径", "Largest radius"}, 10000)
                                           .range(3, 10000)
                                           .unit({"像素", "pixels"});
    static constexpr auto CONTRAST =
        Plugin::Integer("Contrast", {"对比度", "Contrast"}, 20)
            .range(1, 255)
            .help({"圆内外灰度至少相差多少。", "Grey levels by which inside and outside differ at least."});
    static constexpr auto RAYS =
        Plugin::Integer("Rays", {"射线数", "Rays"}, 120)
            .range(12, 1440)
            .help({"从圆心出发寻找边缘的射线。", "From the centre, along which the edge is looked for."});
    static constexpr auto TOLERANCE =
        Plugin::Real("Tolerance", {"容差", "Tolerance"}, 1.5, 0.1, 50)
            .unit({"像素", "pixels"})
            .help({"离圆更远的边缘点不用。", "Edge points that are farther off the circle are left out."});
    static constexpr auto COVERAGE =
        Plugin::Integer("Coverage", {"覆盖率", "Coverage"}, 60)
            .range(10, 100)
            .unit({"%", "%"})
            .help({"至少这么多射线看到边缘，才算是圆。", "Share of the rays that must see the edge."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT,  VALUES,    STRINGS,    CENTRE,     OUTLINE,
                                                   REGION, POLARITY,  MIN_RADIUS, MAX_RADIUS, CONTRAST,
                                                   RAYS,   TOLERANCE, COVERAGE};

    std::string execute(const Plugin::Step &cStep)
    {
        const CircleFinder::Wanted cWanted{cStep[POLARITY],        cStep[MIN_RADIUS], cStep[MAX_RADIUS],
                                           cStep[CONTRAST],        cStep[RAYS],       cStep[TOLERANCE],
                                           cStep[COVERAGE] / 100.0};
        if (cWanted.m_nMinRadius > cWanted.m_nMaxRadius)
            throw Plugin::Error("Setting MinRadius is " + std::to_string(cWanted.m_nMinRadius) +
                                ", above MaxRadius, which is " + std::to_string(cWanted.m_nMaxRadius) + ".");
        const Plugin::Rect cRect = cStep[REGION];
        for (const Plugin::Setting &cOutput : {Plugin::Setting(VALUES), Plugin::Setting(STRINGS),
                                               Plugin::Setting(CENTRE), Plugin::Setting(OUTLINE)})
            cStep.check(cOutput);
        const cv::Mat cPicture = Plugin::input(cStep, INPUT);
        const cv::Rect cRegion = Plugin::inside(cRect, cPicture.size());

        QList<double> lstValue;
        QList<QString> lstText;
        QList<ParamPoints::Point> lstCentre;
        QList<ParamPolys::Poly> lstOutline;
        if (auto cCircle = m_cFinder.find(cPicture(cRegion), cWanted)) {
            cCircle->m_cCentre += cv::Point2d(cRegion.tl());
            const auto [cCentre, dRadius, dDeviation, dCoverage] = *cCircle;
            lstValue = {cCentre.x, cCentre.y, dRadius, dDeviation, dCoverage};
            lstText = {QStringLiteral("r %1, x %2, y %3")
                           .arg(dRadius, 0, 'f', 2)
                           .arg(cCentre.x, 0, 'f', 2)
                           .arg(cCentre.y, 0, 'f', 2)};
            lstCentre = {{cvRound(cCentre.x), cvRound(cCentre.y)}};
            lstOutline = {outline(*cCircle)};
        }
        cStep.write(VALUES, lstValue);
        cStep.write(STRINGS, lstText);
        cStep.write(CENTRE, lstCentre);
        cStep.write(OUTLINE, lstOutline);
        return {};
    }

private:
    static ParamPolys::Poly outline(const CircleFinder::Circle &cCircle)
    {
        // Sides of some 6 pixels.
        const int nCorners = std::clamp(static_cast<int>(cCircle.m_dRadius), 16, 360);
        ParamPolys::Poly cPoly;
        for (int n = 0; n < nCorners; ++n) {
            const double dAngle = 2 * CV_PI * n / nCorners;
            cPoly.verts.append({cvRound(cCircle.m_cCentre.x + cCircle.m_dRadius * std::cos(dAngle)),
                                cvRound(cCircle.m_cCentre.y + cCircle.m_dRadius * std::sin(dAngle))});
        }
        return cPoly;
    }

    CircleFinder m_cFinder;
};
} // namespace

OCULINEX_ALGORITHM(CircleMeasure)
