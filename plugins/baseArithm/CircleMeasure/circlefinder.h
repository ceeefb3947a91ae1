#ifndef CIRCLEFINDER_H
#define CIRCLEFINDER_H

#include <optional>
#include <vector>

#include <opencv2/core.hpp>

/// Finds the clearest circle of a grey picture and measures it. Its places count from the centre of
/// the top left pixel. Keeps its buffers from picture to picture.
class CircleFinder
{
public:
    enum Polarity { ANY, BRIGHT, DARK };

    struct Wanted {
        Polarity m_ePolarity;
        int m_nMinRadius;
        int m_nMaxRadius;
        int m_nContrast;     ///< grey levels between inside and outside
        int m_nRays;         ///< on which the circle's edge is looked for
        double m_dTolerance; ///< pixels by which the edge may be off the circle
        double m_dCoverage;  ///< share of the rays that must see the edge, up to 1
    };
    struct Circle {
        cv::Point2d m_cCentre;
        double m_dRadius = 0;
        double m_dDeviation = 0; ///< root mean square of the edge's distance from the circle
        double m_dCoverage = 0;  ///< share of the rays that saw the edge
    };

    std::optional<Circle> find(const cv::Mat &cPicture, const Wanted &cWanted);

private:
    /// A pixel of the reduced picture and the direction in which it gets brighter.
    struct Edge {
        cv::Point2f m_cPlace;
        cv::Point2f m_cUphill;
    };

    void reduce(const cv::Mat &cPicture);
    void collectEdges(const Wanted &cWanted);
    void vote(const Wanted &cWanted);
    void voteAlong(const Edge &cEdge, float fSign, int nFrom, int nTo);
    double bestRadius(cv::Point cCentre, const Wanted &cWanted);
    Circle measure(const cv::Mat &cPicture, Circle cCircle, const Wanted &cWanted);
    void collectEdgePoints(const cv::Mat &cPicture, const Circle &cCircle, double dBand,
                           const Wanted &cWanted);
    double medianDistance(const Circle &cCircle);
    void fit(Circle &cCircle, double dTolerance);

    int m_nFactor = 1; ///< pixels of the picture to one of the reduced picture
    cv::Mat m_cReduced;
    cv::Mat m_cSmooth;
    cv::Mat m_cDx;
    cv::Mat m_cDy;
    cv::Mat m_cVotes;
    cv::Mat m_cSmoothVotes;
    std::vector<Edge> m_lstEdge;
    std::vector<float> m_lstHits;        ///< by radius
    std::vector<double> m_lstProfile;    ///< grey along a ray
    std::vector<cv::Point2d> m_lstPoint; ///< where the rays met the edge
    std::vector<double> m_lstDistance;
};

#endif
