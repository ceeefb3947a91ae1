#ifndef PIXELROWS_H
#define PIXELROWS_H

/// Loops over the pixels of one row, each as fast as the processor allows. Pixels of three bytes
/// follow each other without gaps.
namespace PixelRows
{
/// Exchanges the first and the third byte of each pixel in place.
void exchangeRedBlue(unsigned char *puchPixels, int nPixels);
/// Writes each byte three times.
void expandGrey(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels);
} // namespace PixelRows

#endif
