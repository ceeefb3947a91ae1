#include "cases.h"

#if defined(__x86_64__)
// All that the row kernels include, so that below only they themselves stand in the namespaces.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include <immintrin.h>

// The kernels as they are chosen on this processor, on one without AVX2 and on one without either: their
// portable twins.
// NOLINTBEGIN(bugprone-suspicious-include,bugprone-reserved-identifier)
namespace Avx2
{
#include "pixelrows.cpp"
}
#undef PIXELROWS_H
#define __builtin_cpu_supports(szFeature) ((szFeature)[0] == 's')
namespace Ssse3
{
#include "pixelrows.cpp"
}
#undef PIXELROWS_H
#undef __builtin_cpu_supports
#define __builtin_cpu_supports(szFeature) false
namespace Portable
{
#include "pixelrows.cpp"
}
#undef __builtin_cpu_supports
// NOLINTEND(bugprone-suspicious-include,bugprone-reserved-identifier)

namespace
{
constexpr int PIXELS = 1920;

/// The memory of a row and what becomes of it, the same for all kernels. How far apart the two are within a
/// page decides whether reads wait for writes.
struct Rows {
    alignas(4096) unsigned char m_auchFrom[PIXELS * 4 + 2560];
    unsigned char m_auchTo[PIXELS * 3];
};
static_assert(offsetof(Rows, m_auchTo) % 4096 == 2048);
Rows gcRows;
using Kernel = void (*)();

template <typename Lowering>
const Lowering &lowering()
{
    static const Lowering s_cLowering = [] {
        Lowering cLowering;
        for (size_t nValue = 0; nValue < 256; ++nValue)
            cLowering.set(nValue, nValue % 4 == 1);
        return cLowering;
    }();
    return s_cLowering;
}

template <void (*FUNCTION)(unsigned char *, const unsigned char *, int)>
void call()
{
    FUNCTION(gcRows.m_auchTo, gcRows.m_auchFrom, PIXELS);
}

template <void (*FUNCTION)(unsigned char *, const unsigned int *, int)>
void callPack()
{
    FUNCTION(gcRows.m_auchTo, reinterpret_cast<const unsigned int *>(gcRows.m_auchFrom), PIXELS);
}

template <typename Lowering, void (*FUNCTION)(unsigned char *, const unsigned char *, const Lowering &, int)>
void callLower()
{
    FUNCTION(gcRows.m_auchTo, gcRows.m_auchFrom, lowering<Lowering>(), PIXELS);
}

struct Row {
    const char *m_szName;
    const char *m_szFeature;
    bool m_bByHand; ///< with intrinsics
    Kernel m_fnKernel;
    Kernel m_fnTwin;
};
const Row ROWS[] = {
    {"exchange red and blue, the same loop for AVX2", "avx2", false, call<Avx2::PixelRows::exchangeRedBlue>,
     call<Portable::PixelRows::exchangeRedBlue>},
    {"grey to three bytes, AVX2", "avx2", true, call<Avx2::PixelRows::expandGrey>,
     call<Portable::PixelRows::expandGrey>},
    {"grey to three bytes, SSSE3", "ssse3", true, call<Ssse3::PixelRows::expandGrey>,
     call<Portable::PixelRows::expandGrey>},
    {"four bytes to three, SSSE3", "ssse3", true, callPack<Ssse3::PixelRows::packColours>,
     callPack<Portable::PixelRows::packColours>},
    {"lower some values, AVX2", "avx2", true, callLower<Avx2::PixelRows::Lowering, Avx2::PixelRows::lower>,
     callLower<Portable::PixelRows::Lowering, Portable::PixelRows::lower>},
};

Bench::Measure rows(Kernel fnKernel)
{
    return Bench::timed(fnKernel);
}
} // namespace

void Bench::addKernels(Table &cTable)
{
    for (const Row &cRow : ROWS) {
        const bool bHere = cRow.m_szFeature[0] == 's' ? __builtin_cpu_supports("ssse3") != 0
                                                      : __builtin_cpu_supports("avx2") != 0;
        if (!bHere)
            continue;
        cTable.add("row kernel, " + std::string(cRow.m_szName), [&] {
            Case cCase{{"kernel", rows(cRow.m_fnKernel)}, {"its portable twin", rows(cRow.m_fnTwin)}};
            cCase.m_dGoal = cRow.m_bByHand ? 1 / 1.5 : 0; // else it is not worth writing by hand
            cCase.m_dSeconds = 0.01;
            return cCase;
        });
    }
}
#else
void Bench::addKernels(Table &) {}
#endif
