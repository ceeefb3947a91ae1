#ifndef PIXELROWS_H
#define PIXELROWS_H

#include <array>
#include <cstddef>

/// Loops over the pixels of one row, each as fast as the processor allows. Pixels of three bytes
/// follow each other without gaps.
namespace PixelRows
{
/// What each byte becomes: the same or one less. To be set for every value.
struct Lowering {
    void set(size_t nValue, bool bLess)
    {
        m_auchTo[nValue] = static_cast<unsigned char>(nValue - (bLess ? 1 : 0));
        if (bLess)
            m_auchLess[nValue / 128 * 16 + nValue % 16] |= static_cast<unsigned char>(1U << nValue / 16 % 8);
    }

    std::array<unsigned char, 256> m_auchTo{};
    std::array<unsigned char, 32> m_auchLess{}; ///< a bit a value, as vectors look it up
};

/// Copies pixels with the first and the third byte of each exchanged; the two do not overlap.
void exchangeRedBlue(unsigned char *puchDst, const unsigned char *puchSrc, int nPixels);
/// The same in place.
void exchangeRedBlue(unsigned char *puchPixels, int nPixels);
/// Writes each byte three times.
void expandGrey(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels);
/// Copies the pixels at the given indexes, of which the first nInner are not the row's last pixel.
void pickPixels(unsigned char *puchDst, const unsigned char *puchSrc, const int *pnIndexes, int nPixels,
                int nInner);
/// Copies the bytes at the given indexes.
void pickGrey(unsigned char *puchDst, const unsigned char *puchGrey, const int *pnIndexes, int nPixels);
/// Replaces each byte of the target by that of the source where the mask's byte is not 0.
void select(unsigned char *puchDst, const unsigned char *puchMask, const unsigned char *puchSrc, int nBytes);
/// Writes red, green and blue of each pixel (QRgb: 0xAARRGGBB) as three bytes.
void packColours(unsigned char *puchDst, const unsigned int *punPixels, int nPixels);
/// Copies bytes, some of them lowered.
void lower(unsigned char *puchDst, const unsigned char *puchSrc, const Lowering &cLowering, int nBytes);
} // namespace PixelRows

#endif
