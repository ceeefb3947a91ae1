#include "Drawing/pixelrows.h"

#include <utility>

// Compilers make vectors of bytes in groups of three only from SSSE3 on, which plain x86-64 lacks;
// other processors (NEON) have instructions for it that the plain loops below compile to.
#if defined(__x86_64__)
#include <tmmintrin.h>
#define OCULINEX_SSSE3 __attribute__((target("ssse3")))

namespace
{
const bool s_bSSSE3 = __builtin_cpu_supports("ssse3");

OCULINEX_SSSE3 __m128i loadBytes(const unsigned char *puch)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(puch));
}

OCULINEX_SSSE3 void storeBytes(unsigned char *puch, __m128i aBytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(puch), aBytes);
}

/// Both return how many pixels they did; the rest is the plain loop's.
OCULINEX_SSSE3 int exchangeVectors(unsigned char *puchPixels, int nPixels)
{
    // Five pixels a vector; the sixteenth byte stays as it is.
    const __m128i aOrder = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
    int nDone = 0;
    if (nPixels < 11)
        return nDone;
    // Each vector is loaded before its predecessor, which it overlaps by one unchanged byte, is
    // stored: a load that follows the store would wait for it.
    __m128i aNext = loadBytes(puchPixels);
    for (; nPixels - nDone >= 11; nDone += 5, puchPixels += 15) {
        const __m128i aThis = aNext;
        aNext = loadBytes(puchPixels + 15);
        storeBytes(puchPixels, _mm_shuffle_epi8(aThis, aOrder));
    }
    return nDone;
}

OCULINEX_SSSE3 int expandVectors(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels)
{
    const __m128i aFirst = _mm_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
    const __m128i aSecond = _mm_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
    const __m128i aThird = _mm_setr_epi8(10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15);
    int nDone = 0;
    for (; nPixels - nDone >= 16; nDone += 16, puchDst += 48) {
        const __m128i aGrey = loadBytes(puchGrey + nDone);
        storeBytes(puchDst, _mm_shuffle_epi8(aGrey, aFirst));
        storeBytes(puchDst + 16, _mm_shuffle_epi8(aGrey, aSecond));
        storeBytes(puchDst + 32, _mm_shuffle_epi8(aGrey, aThird));
    }
    return nDone;
}

OCULINEX_SSSE3 int packVectors(unsigned char *puchDst, const unsigned int *punPixels, int nPixels)
{
    // Four pixels a vector; the next one overwrites its last four bytes.
    const __m128i aOrder = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    int nDone = 0;
    for (; nPixels - nDone >= 6; nDone += 4, puchDst += 12)
        storeBytes(
            puchDst,
            _mm_shuffle_epi8(loadBytes(reinterpret_cast<const unsigned char *>(punPixels + nDone)), aOrder));
    return nDone;
}
} // namespace
#else
namespace
{
constexpr bool s_bSSSE3 = false;
int exchangeVectors(unsigned char *, int)
{
    return 0;
}
int expandVectors(unsigned char *, const unsigned char *, int)
{
    return 0;
}
int packVectors(unsigned char *, const unsigned int *, int)
{
    return 0;
}
} // namespace
#endif

void PixelRows::exchangeRedBlue(unsigned char *puchPixels, int nPixels)
{
    int nDone = s_bSSSE3 ? exchangeVectors(puchPixels, nPixels) : 0;
    for (puchPixels += 3L * nDone; nDone < nPixels; ++nDone, puchPixels += 3)
        std::swap(puchPixels[0], puchPixels[2]);
}

void PixelRows::expandGrey(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels)
{
    int nDone = s_bSSSE3 ? expandVectors(puchDst, puchGrey, nPixels) : 0;
    for (puchDst += 3L * nDone; nDone < nPixels; ++nDone, puchDst += 3)
        puchDst[0] = puchDst[1] = puchDst[2] = puchGrey[nDone];
}

void PixelRows::select(unsigned char *__restrict puchDst, const unsigned char *__restrict puchMask,
                       const unsigned char *__restrict puchSrc, int nBytes)
{
    // Arithmetic instead of a condition: no branch that the processor would guess wrong.
    for (int i = 0; i < nBytes; ++i) {
        const auto nTaken = static_cast<unsigned char>(puchMask[i] != 0 ? 0xFF : 0);
        puchDst[i] = static_cast<unsigned char>((puchDst[i] & ~nTaken) | (puchSrc[i] & nTaken));
    }
}

void PixelRows::packColours(unsigned char *puchDst, const unsigned int *punPixels, int nPixels)
{
    int nDone = s_bSSSE3 ? packVectors(puchDst, punPixels, nPixels) : 0;
    for (puchDst += 3L * nDone; nDone < nPixels; ++nDone, puchDst += 3) {
        puchDst[0] = static_cast<unsigned char>(punPixels[nDone] >> 16);
        puchDst[1] = static_cast<unsigned char>(punPixels[nDone] >> 8);
        puchDst[2] = static_cast<unsigned char>(punPixels[nDone]);
    }
}
