#include "circlefinder.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

namespace
{
/// Circles are looked for in a picture reduced to that many pixels at its longer side, and measured
/// in the picture itself.
constexpr int REDUCED_SIDE = 512;

/// Between the four pixels around the place; beyond the border as at the border.
double greyAt(const cv::Mat &cPicture, cv::Point2d cPlace)
{
    const double dX = std::clamp(cPlace.x, 0.0, cPicture.cols - 1.0);
    const double dY = std::clamp(cPlace.y, 0.0, cPicture.rows - 1.0);
    const int nLeft = static_cast<int>(dX);
    const int nTop = static_cast<int>(dY);
    const int nRight = std::min(nLeft + 1, cPicture.cols - 1);
    const unsigned char *const puchTop = cPicture.ptr(nTop);
    const unsigned char *const puchBottom = cPicture.ptr(std::min(nTop + 1, cPicture.rows - 1));
    const double dRight = dX - nLeft;
    const double dBottom = dY - nTop;
    return (puchTop[nLeft] * (1 - dRight) + puchTop[nRight] * dRight) * (1 - dBottom) +
           (puchBottom[nLeft] * (1 - dRight) + puchBottom[nRight] * dRight) * dBottom;
}

/// How strongly the profile rises at nPos, smoothed; grey levels over two samples.
double slope(const std::vector<double> &lstProfile, size_t nPos)
{
    return (lstProfile[nPos + 2] - lstProfile[nPos - 2] + 2 * (lstProfile[nPos + 1] - lstProfile[nPos - 1])) /
           4;
}
} // namespace

std::optional<CircleFinder::Circle> CircleFinder::find(const cv::Mat &cPicture, const Wanted &cWanted)
{
    constexpr int CANDIDATES = 5;
    constexpr double CLEARLY_BETTER = 0.1; // of the coverage
    reduce(cPicture);
    collectEdges(cWanted);
    vote(cWanted);

    std::optional<Circle> cBest;
    for (int n = 0; n < CANDIDATES; ++n) {
        double dVotes = 0;
        cv::Point cPlace;
        cv::minMaxLoc(m_cSmoothVotes, nullptr, &dVotes, nullptr, &cPlace);
        if (dVotes < 1)
            break;
        Circle cCircle;
        // The centre of a pixel of the reduced picture lies between those that it was made of.
        cCircle.m_cCentre = cv::Point2d(cPlace) * m_nFactor + cv::Point2d(0.5, 0.5) * (m_nFactor - 1);
        cCircle.m_dRadius = bestRadius(cPlace, cWanted) * m_nFactor;
        cCircle = measure(cPicture, cCircle, cWanted);
        if (cCircle.m_dCoverage >= cWanted.m_dCoverage && cCircle.m_dRadius >= cWanted.m_nMinRadius &&
            cCircle.m_dRadius <= cWanted.m_nMaxRadius &&
            (!cBest || cCircle.m_dCoverage > cBest->m_dCoverage + CLEARLY_BETTER))
            cBest = cCircle;
        constexpr int REACH = 4;
        cv::circle(m_cSmoothVotes, cPlace, REACH, 0, cv::FILLED);
    }
    return cBest;
}

void CircleFinder::reduce(const cv::Mat &cPicture)
{
    m_nFactor = std::max(1, (std::max(cPicture.cols, cPicture.rows) + REDUCED_SIDE - 1) / REDUCED_SIDE);
    // Whole blocks only, so that places can be told exactly; a narrow picture keeps at least one.
    m_nFactor = std::min({m_nFactor, cPicture.cols, cPicture.rows});
    const cv::Size cSize(cPicture.cols / m_nFactor, cPicture.rows / m_nFactor);
    cv::resize(cPicture(cv::Rect(0, 0, cSize.width * m_nFactor, cSize.height * m_nFactor)), m_cReduced, cSize,
               0, 0, cv::INTER_AREA);
    cv::GaussianBlur(m_cReduced, m_cSmooth, {5, 5}, 0, 0, cv::BORDER_REPLICATE);
    cv::Sobel(m_cSmooth, m_cDx, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::Sobel(m_cSmooth, m_cDy, CV_16S, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
}

/// The pixels at which the picture changes more than at both neighbours uphill and downhill.
void CircleFinder::collectEdges(const Wanted &cWanted)
{
    m_lstEdge.clear();
    // A step gives four times its height, less what the smoothing takes.
    const int nLowest = 2 * cWanted.m_nContrast;
    for (int nY = 1; nY + 1 < m_cDx.rows; ++nY) {
        const short *const pnDx = m_cDx.ptr<short>(nY);
        const short *const pnDy = m_cDy.ptr<short>(nY);
        const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(m_cDx.step1());
        const auto fnSquare = [=](std::ptrdiff_t nPos) {
            return pnDx[nPos] * pnDx[nPos] + pnDy[nPos] * pnDy[nPos];
        };
        for (int nX = 1; nX + 1 < m_cDx.cols; ++nX) {
            const int nSquare = fnSquare(nX);
            if (nSquare < nLowest * nLowest)
                continue;
            const std::ptrdiff_t nNext = std::abs(pnDx[nX]) > std::abs(pnDy[nX]) ? 1 : nRow;
            if (nSquare < fnSquare(nX - nNext) || nSquare <= fnSquare(nX + nNext))
                continue;
            const float fLength = std::sqrt(static_cast<float>(nSquare));
            m_lstEdge.push_back({cv::Point2f(cv::Point(nX, nY)), {pnDx[nX] / fLength, pnDy[nX] / fLength}});
        }
    }
}

/// Each edge votes for all the centres that its circle could have.
void CircleFinder::vote(const Wanted &cWanted)
{
    m_cVotes.create(m_cReduced.size(), CV_32F);
    m_cVotes = 0;
    const int nFrom = std::max(1, cWanted.m_nMinRadius / m_nFactor);
    const int nTo = std::min(cWanted.m_nMaxRadius / m_nFactor + 1, std::max(m_cVotes.cols, m_cVotes.rows));
    for (const Edge &cEdge : m_lstEdge) {
        if (cWanted.m_ePolarity != DARK)
            voteAlong(cEdge, 1, nFrom, nTo);
        if (cWanted.m_ePolarity != BRIGHT)
            voteAlong(cEdge, -1, nFrom, nTo);
    }
    cv::GaussianBlur(m_cVotes, m_cSmoothVotes, {5, 5}, 0, 0, cv::BORDER_CONSTANT);
}

void CircleFinder::voteAlong(const Edge &cEdge, float fSign, int nFrom, int nTo)
{
    const cv::Point2f cStep = cEdge.m_cUphill * fSign;
    cv::Point2f cPlace = cEdge.m_cPlace + cStep * nFrom + cv::Point2f(0.5F, 0.5F);
    for (int nRadius = nFrom; nRadius <= nTo; ++nRadius, cPlace += cStep) {
        if (cPlace.x < 0 || cPlace.y < 0 || cPlace.x >= static_cast<float>(m_cVotes.cols) ||
            cPlace.y >= static_cast<float>(m_cVotes.rows))
            return;
        m_cVotes.ptr<float>(static_cast<int>(cPlace.y))[static_cast<int>(cPlace.x)] += 1;
    }
}

/// The radius, in pixels of the reduced picture, at which most of a circle's edge is there.
double CircleFinder::bestRadius(cv::Point cCentre, const Wanted &cWanted)
{
    constexpr float ALIGNED = 0.9F;
    const int nFrom = std::max(1, cWanted.m_nMinRadius / m_nFactor);
    m_lstHits.assign(static_cast<size_t>(m_cVotes.cols + m_cVotes.rows) + 3, 0);
    for (const Edge &cEdge : m_lstEdge) {
        const cv::Point2f cInward = cv::Point2f(cCentre) - cEdge.m_cPlace;
        const float fRadius = std::hypot(cInward.x, cInward.y);
        const float fAlong = cInward.dot(cEdge.m_cUphill);
        const float fFits = cWanted.m_ePolarity == ANY      ? std::abs(fAlong)
                            : cWanted.m_ePolarity == BRIGHT ? fAlong
                                                            : -fAlong;
        if (fFits >= ALIGNED * fRadius)
            m_lstHits[static_cast<size_t>(std::lround(fRadius))] += 1;
    }
    int nBest = nFrom;
    float fBest = 0;
    const int nTo = std::min(cWanted.m_nMaxRadius / m_nFactor + 1, static_cast<int>(m_lstHits.size()) - 2);
    for (int nRadius = nFrom; nRadius <= nTo; ++nRadius) {
        const float *const pfHits = &m_lstHits[static_cast<size_t>(nRadius)];
        // Small circles reach any share of their few pixels by chance.
        constexpr float CHANCE = 5;
        const float fShare =
            (pfHits[-1] + 2 * pfHits[0] + pfHits[1]) / (static_cast<float>(nRadius) + CHANCE);
        if (fShare > fBest) {
            fBest = fShare;
            nBest = nRadius;
        }
    }
    return nBest;
}

CircleFinder::Circle CircleFinder::measure(const cv::Mat &cPicture, Circle cCircle, const Wanted &cWanted)
{
    constexpr int ROUNDS = 4;
    // At first the circle is known to some pixels of the reduced picture.
    double dBand = 4 + 2 * m_nFactor;
    const double dNarrowest = std::max(4.0, 2 * cWanted.m_dTolerance);
    for (int nRound = 0; nRound < ROUNDS; ++nRound) {
        collectEdgePoints(cPicture, cCircle, dBand, cWanted);
        constexpr size_t FEWEST = 3;
        if (m_lstPoint.size() < FEWEST)
            return {};
        constexpr int STEPS = 5;
        for (int nStep = 0; nStep < STEPS; ++nStep) {
            constexpr double OUTLIERS = 3;
            fit(cCircle, std::max(cWanted.m_dTolerance, OUTLIERS * medianDistance(cCircle)));
        }
        if (!(cCircle.m_dRadius > 0) || cCircle.m_dRadius > 2.0 * (cPicture.cols + cPicture.rows))
            return {};
        dBand = std::max(dNarrowest, dBand / 2);
    }

    int nUsed = 0;
    double dSquares = 0;
    for (const cv::Point2d &cPoint : m_lstPoint) {
        const double dDistance = cv::norm(cPoint - cCircle.m_cCentre) - cCircle.m_dRadius;
        if (std::abs(dDistance) > cWanted.m_dTolerance)
            continue;
        ++nUsed;
        dSquares += dDistance * dDistance;
    }
    cCircle.m_dCoverage = static_cast<double>(nUsed) / cWanted.m_nRays;
    cCircle.m_dDeviation = std::sqrt(dSquares / std::max(1, nUsed));
    return cCircle;
}

/// Looks along rays from the centre, as far from the circle as the band is wide, for the steepest place.
void CircleFinder::collectEdgePoints(const cv::Mat &cPicture, const Circle &cCircle, double dBand,
                                     const Wanted &cWanted)
{
    m_lstPoint.clear();
    const double dFirst = std::max(1.0, cCircle.m_dRadius - dBand);
    const size_t nSamples = static_cast<size_t>(cCircle.m_dRadius + dBand - dFirst) + 1;
    m_lstProfile.resize(nSamples);
    for (int nRay = 0; nRay < cWanted.m_nRays; ++nRay) {
        const double dAngle = 2 * CV_PI * nRay / cWanted.m_nRays;
        const cv::Point2d cRay(std::cos(dAngle), std::sin(dAngle));
        const cv::Point2d cAcross(-cRay.y, cRay.x);
        for (size_t n = 0; n < nSamples; ++n) {
            const cv::Point2d cPlace = cCircle.m_cCentre + cRay * (dFirst + static_cast<double>(n));
            m_lstProfile[n] = (greyAt(cPicture, cPlace - cAcross) + 2 * greyAt(cPicture, cPlace) +
                               greyAt(cPicture, cPlace + cAcross)) /
                              4;
        }
        const auto fnSteepness = [&](size_t n) {
            const double dSlope = slope(m_lstProfile, n);
            return cWanted.m_ePolarity == ANY      ? std::abs(dSlope)
                   : cWanted.m_ePolarity == BRIGHT ? -dSlope
                                                   : dSlope;
        };
        size_t nBest = 0;
        double dBest = cWanted.m_nContrast / 2.0;
        // The neighbours of the steepest place are looked at too.
        for (size_t n = 3; n + 3 < nSamples; ++n)
            if (const double dSteepness = fnSteepness(n); dSteepness > dBest) {
                dBest = dSteepness;
                nBest = n;
            }
        if (nBest == 0)
            continue;
        // The top of the parabola through three of them.
        const double dBefore = fnSteepness(nBest - 1);
        const double dAfter = fnSteepness(nBest + 1);
        const double dBend = dBefore - 2 * dBest + dAfter;
        const double dShift = dBend < 0 ? std::clamp((dBefore - dAfter) / (2 * dBend), -1.0, 1.0) : 0;
        const cv::Point2d cPoint = cCircle.m_cCentre + cRay * (dFirst + static_cast<double>(nBest) + dShift);
        if (cPoint.x >= 0 && cPoint.y >= 0 && cPoint.x <= cPicture.cols - 1 && cPoint.y <= cPicture.rows - 1)
            m_lstPoint.push_back(cPoint);
    }
}

double CircleFinder::medianDistance(const Circle &cCircle)
{
    m_lstDistance.clear();
    for (const cv::Point2d &cPoint : m_lstPoint)
        m_lstDistance.push_back(std::abs(cv::norm(cPoint - cCircle.m_cCentre) - cCircle.m_dRadius));
    const auto itMiddle = m_lstDistance.begin() + static_cast<std::ptrdiff_t>(m_lstDistance.size() / 2);
    std::nth_element(m_lstDistance.begin(), itMiddle, m_lstDistance.end());
    return *itMiddle;
}

/// A step of least squares over the points that are near enough.
void CircleFinder::fit(Circle &cCircle, double dTolerance)
{
    cv::Matx33d cNormal = cv::Matx33d::zeros();
    cv::Vec3d cRight(0, 0, 0);
    for (const cv::Point2d &cPoint : m_lstPoint) {
        const cv::Point2d cOutward = cPoint - cCircle.m_cCentre;
        const double dLength = cv::norm(cOutward);
        const double dDistance = dLength - cCircle.m_dRadius;
        if (std::abs(dDistance) > dTolerance || dLength < 1e-9)
            continue;
        const cv::Vec3d cSlope(cOutward.x / dLength, cOutward.y / dLength, 1);
        cNormal += cSlope * cSlope.t();
        cRight += cSlope * dDistance;
    }
    cv::Vec3d cStep;
    if (!cv::solve(cNormal, cRight, cStep, cv::DECOMP_CHOLESKY))
        return;
    cCircle.m_cCentre += cv::Point2d(cStep[0], cStep[1]);
    cCircle.m_dRadius += cStep[2];
}
