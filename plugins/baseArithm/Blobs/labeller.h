#ifndef LABELLER_H
#define LABELLER_H

#include <vector>

#include <opencv2/core.hpp>

/// Finds the connected areas of a binary picture.
///
/// Works on runs (stretches of object pixels in a row) and remembers only those of the row above,
/// so that no picture of labels is written and read again. The buffers are kept for the next
/// picture. One object serves one thread.
class Labeller
{
public:
    struct Area {
        int m_nSize; ///< pixels
        int m_nTop;  ///< the bounds, all inside
        int m_nBottom;
        int m_nLeft;
        int m_nRight;
        int m_nSeedX; ///< the area's first pixel, row by row from the top left
        int m_nSeedY;
    };

    /// The areas in the order of their first pixels. Objects are the pixels that are 0 if
    /// bDark, else those that are not 0; pixels that touch at a corner belong together if bCorners.
    /// The result is valid until the next call.
    const std::vector<Area> &find(const cv::Mat &cPicture, bool bDark, bool bCorners);

private:
    /// A run [m_nBegin, m_nEnd) of one row and the area that it was first counted to.
    struct Run {
        int m_nBegin;
        int m_nEnd;
        int m_nArea;
    };

    void cutRow(const unsigned char *puchRow, int nWidth, bool bDark);
    void joinRow(int nRow, bool bCorners);
    int root(int nArea);
    int merge(int nAreaA, int nAreaB);

    std::vector<Run> m_lstRun;   ///< of the row at hand
    std::vector<Run> m_lstAbove; ///< of the row above
    std::vector<Area> m_lstArea;
    std::vector<int> m_lstParent; ///< for each area the one that it has become part of, or itself
};

#endif
