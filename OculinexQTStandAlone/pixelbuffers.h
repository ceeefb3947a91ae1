#ifndef PIXELBUFFERS_H
#define PIXELBUFFERS_H

#include <cstddef>
#include <functional>
#include <memory>

#include <QImage>

/// Memory for pixels that lives for one drawing or one file. The last buffers that were given back are kept
/// and serve again, so that a steady flow of pictures touches no fresh memory; what is kept is bounded.
///
/// Threads: any; a leaf lock.
namespace PixelBuffers
{
/// nBytes bytes of undefined contents from the start of a cache line, which copies and conversions are
/// quickest with; null when they cannot be allocated. Freed by free().
unsigned char *allocate(size_t nBytes);

/// At least nBytes bytes of undefined contents; null when nBytes is 0 or cannot be allocated.
unsigned char *take(size_t nBytes);
/// Gives a buffer of take() back; null is ignored.
void giveBack(unsigned char *puchBuffer);

struct GiveBack {
    void operator()(unsigned char *puchBuffer) const { giveBack(puchBuffer); }
};
using Owned = std::unique_ptr<unsigned char, GiveBack>;

/// A picture that gives its memory back; its pixels are undefined. Null where there is no memory.
QImage image(QSize cSize, QImage::Format eFormat);
/// What makes such a picture, or one in memory of its own choice.
using Maker = std::function<QImage(QSize cSize, QImage::Format eFormat)>;
} // namespace PixelBuffers

#endif
