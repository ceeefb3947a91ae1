#include "pixelrows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace
{
/// Exchanges all but the pixels at both ends, and returns how many it did. The bytes of a pixel come
/// from two places further on, from their own and from two places before; which of them is taken, by
/// masks, repeats with a block of three vectors, so that compilers need not move bytes inside of one.
template <int BLOCK>
[[gnu::always_inline]] inline int exchangeBlocks(unsigned char *__restrict puchDst,
                                                 const unsigned char *__restrict puchSrc, int nPixels)
{
    using Masks = std::array<std::array<unsigned char, BLOCK>, 3>;
    static constexpr Masks s_aauchTaken = [] {
        Masks aauchTaken{};
        for (size_t i = 0; i < BLOCK; ++i)
            aauchTaken[i % 3][i] = 0xFF;
        return aauchTaken;
    }();
    int nDone = 0;
    for (; nPixels - nDone >= BLOCK / 3 + 2; nDone += BLOCK / 3, puchDst += BLOCK, puchSrc += BLOCK) {
        // The pixel before the block and the one behind it are read too.
        for (size_t i = 0; i < BLOCK; ++i)
            puchDst[i + 3] = static_cast<unsigned char>((puchSrc[i + 5] & s_aauchTaken[0][i]) |
                                                        (puchSrc[i + 3] & s_aauchTaken[1][i]) |
                                                        (puchSrc[i + 1] & s_aauchTaken[2][i]));
    }
    return nDone;
}
} // namespace

// Compilers make vectors of bytes in groups of three only from SSSE3 on, which plain x86-64 lacks;
// other processors (NEON) have instructions for it that the plain loops below compile to.
#if defined(__x86_64__)
#include <immintrin.h>
#define OCULINEX_SSSE3 __attribute__((target("ssse3")))
#define OCULINEX_AVX2 __attribute__((target("avx2")))

namespace
{
const bool s_bSSSE3 = __builtin_cpu_supports("ssse3");
const bool s_bAVX2 = __builtin_cpu_supports("avx2");

OCULINEX_SSSE3 __m128i loadBytes(const unsigned char *puch)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(puch));
}

OCULINEX_SSSE3 void storeBytes(unsigned char *puch, __m128i aBytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(puch), aBytes);
}

OCULINEX_AVX2 void storeWide(unsigned char *puch, __m256i aBytes)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(puch), aBytes);
}

OCULINEX_AVX2 int exchangeWide(unsigned char *puchDst, const unsigned char *puchSrc, int nPixels)
{
    return exchangeBlocks<96>(puchDst, puchSrc, nPixels);
}

/// These return how many pixels they did; the rest is the plain loop's.
OCULINEX_AVX2 int expandWide(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels)
{
    const __m256i aFirst = _mm256_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, //
                                            5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
    const __m256i aSecond = _mm256_setr_epi8(10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15,
                                             0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
    const __m256i aThird = _mm256_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11,
                                            12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15);
    int nDone = 0;
    for (; nPixels - nDone >= 32; nDone += 32, puchDst += 96) {
        const __m128i aLow = loadBytes(puchGrey + nDone);
        const __m128i aHigh = loadBytes(puchGrey + nDone + 16);
        storeWide(puchDst, _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(aLow), aFirst));
        storeWide(puchDst + 32, _mm256_shuffle_epi8(_mm256_set_m128i(aHigh, aLow), aSecond));
        storeWide(puchDst + 64, _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(aHigh), aThird));
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

OCULINEX_AVX2 int lowerWide(unsigned char *puchDst, const unsigned char *puchSrc,
                            const PixelRows::Lowering &cLowering, int nBytes)
{
    const __m256i aLessLow = _mm256_broadcastsi128_si256(loadBytes(cLowering.m_auchLess.data()));
    const __m256i aLessHigh = _mm256_broadcastsi128_si256(loadBytes(cLowering.m_auchLess.data() + 16));
    const __m256i aBits = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201));
    const __m256i aTop = _mm256_set1_epi8(-128);
    const __m256i aNibble = _mm256_set1_epi8(15);
    int nDone = 0;
    for (; nBytes - nDone >= 32; nDone += 32) {
        const __m256i aValues = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(puchSrc + nDone));
        // An index with its top bit set picks 0.
        const __m256i aIndexes = _mm256_and_si256(aValues, _mm256_or_si256(aTop, aNibble));
        const __m256i aLess =
            _mm256_or_si256(_mm256_shuffle_epi8(aLessLow, aIndexes),
                            _mm256_shuffle_epi8(aLessHigh, _mm256_xor_si256(aIndexes, aTop)));
        const __m256i aBit =
            _mm256_shuffle_epi8(aBits, _mm256_and_si256(_mm256_srli_epi16(aValues, 4), aNibble));
        // What is equal becomes -1.
        storeWide(puchDst + nDone,
                  _mm256_add_epi8(aValues, _mm256_cmpeq_epi8(_mm256_and_si256(aLess, aBit), aBit)));
    }
    return nDone;
}
} // namespace
#else
namespace
{
constexpr bool s_bSSSE3 = false;
constexpr bool s_bAVX2 = false;
int exchangeWide(unsigned char *, const unsigned char *, int)
{
    return 0;
}
int expandWide(unsigned char *, const unsigned char *, int)
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
int lowerWide(unsigned char *, const unsigned char *, const PixelRows::Lowering &, int)
{
    return 0;
}
} // namespace
#endif

void PixelRows::exchangeRedBlue(unsigned char *__restrict puchDst, const unsigned char *__restrict puchSrc,
                                int nPixels)
{
    const auto fnPixel = [&](std::ptrdiff_t nPixel) {
        puchDst[3 * nPixel] = puchSrc[3 * nPixel + 2];
        puchDst[3 * nPixel + 1] = puchSrc[3 * nPixel + 1];
        puchDst[3 * nPixel + 2] = puchSrc[3 * nPixel];
    };
    if (nPixels <= 0)
        return;
    fnPixel(0);
    const int nDone =
        s_bAVX2 ? exchangeWide(puchDst, puchSrc, nPixels) : exchangeBlocks<48>(puchDst, puchSrc, nPixels);
    for (int nPixel = nDone + 1; nPixel < nPixels; ++nPixel)
        fnPixel(nPixel);
}

void PixelRows::exchangeRedBlue(unsigned char *puchPixels, int nPixels)
{
    constexpr int CHUNK = 512; // pixels; small enough to stay in the nearest cache
    unsigned char auchExchanged[CHUNK * 3];
    for (; nPixels > 0; nPixels -= CHUNK, puchPixels += sizeof auchExchanged) {
        const int nChunk = std::min(nPixels, CHUNK);
        exchangeRedBlue(auchExchanged, puchPixels, nChunk);
        memcpy(puchPixels, auchExchanged, static_cast<size_t>(nChunk) * 3);
    }
}

void PixelRows::expandGrey(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels)
{
    int nDone = s_bAVX2    ? expandWide(puchDst, puchGrey, nPixels)
                : s_bSSSE3 ? expandVectors(puchDst, puchGrey, nPixels)
                           : 0;
    for (puchDst += 3L * nDone; nDone < nPixels; ++nDone, puchDst += 3)
        puchDst[0] = puchDst[1] = puchDst[2] = puchGrey[nDone];
}

void PixelRows::pickPixels(unsigned char *__restrict puchDst, const unsigned char *__restrict puchSrc,
                           const int *__restrict pnIndexes, int nPixels, int nInner)
{
    // Four bytes at once, of which the next pixel overwrites the last, where that reads and writes no
    // byte beyond the two rows.
    const int nWide = std::min(nInner, nPixels - 1);
    int nPixel = 0;
    for (; nPixel < nWide; ++nPixel)
        memcpy(puchDst + 3L * nPixel, puchSrc + 3L * pnIndexes[nPixel], 4);
    for (; nPixel < nPixels; ++nPixel)
        memcpy(puchDst + 3L * nPixel, puchSrc + 3L * pnIndexes[nPixel], 3);
}

void PixelRows::pickGrey(unsigned char *__restrict puchDst, const unsigned char *__restrict puchGrey,
                         const int *__restrict pnIndexes, int nPixels)
{
    for (int nPixel = 0; nPixel < nPixels; ++nPixel)
        puchDst[nPixel] = puchGrey[pnIndexes[nPixel]];
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

void PixelRows::lower(unsigned char *puchDst, const unsigned char *puchSrc, const Lowering &cLowering,
                      int nBytes)
{
    for (int i = s_bAVX2 ? lowerWide(puchDst, puchSrc, cLowering, nBytes) : 0; i < nBytes; ++i)
        puchDst[i] = cLowering.m_auchTo[puchSrc[i]];
}
