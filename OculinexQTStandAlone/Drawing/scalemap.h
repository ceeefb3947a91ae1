#ifndef SCALEMAP_H
#define SCALEMAP_H

#include <memory>
#include <vector>

#include <QImage>

/// Which pixel of a picture the painter shows at each pixel of a target that it scales the picture into.
/// Learnt from the painter itself, so that copying by it yields the very same pixels many times as fast.
struct ScaleMap {
    int m_nDstX = 0, m_nDstY = 0; ///< first pixel that is painted
    std::vector<int> m_anColumns; ///< the picture's column by painted column, ascending
    std::vector<int> m_anRows;    ///< the picture's row by painted row, ascending
    int m_nInner = 0;             ///< how many columns lie before the picture's last one

    int width() const { return static_cast<int>(m_anColumns.size()); }
    int height() const { return static_cast<int>(m_anRows.size()); }
    bool repeatsRow(int nRow) const
    {
        const auto pnRow = m_anRows.begin() + nRow;
        return nRow > 0 && pnRow[0] == pnRow[-1];
    }

    /// The map for the part cSource of a picture that fills the target; null where the painter has to
    /// paint. It is learnt when the same is asked for again, since learning costs more than painting once.
    /// Any thread; a leaf lock.
    static std::shared_ptr<const ScaleMap> find(const QImage &cTarget, QSize cPicture, const QRectF &cSource);
    /// Has the painter scale the part cSource of the picture into the target.
    static void paint(QImage &cTarget, const QImage &cPicture, const QRectF &cSource);
};

#endif
