#ifndef PLAINTARGET_H
#define PLAINTARGET_H

#include <QImage>

constexpr int PAINTER_LIMIT = 32767; ///< pixels a line; the painter paints nothing beyond it

/// Whether pixels can be written into a target instead of painted, at a fraction of the cost (private
/// header). So it is with the views; but a host may draw into any picture of its own.
inline bool isPlainTarget(const QImage &cTarget)
{
    return cTarget.format() == QImage::Format_RGB888 && cTarget.devicePixelRatioF() == 1.0 &&
           cTarget.width() <= PAINTER_LIMIT && cTarget.height() <= PAINTER_LIMIT;
}

#endif
