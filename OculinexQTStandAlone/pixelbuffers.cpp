#include "pixelbuffers.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <mutex>

#include <malloc.h>

namespace
{
constexpr size_t MAX_KEPT = 8;
constexpr size_t MAX_KEPT_BYTES = size_t{64} << 20;

struct Kept {
    unsigned char *m_puchBuffer;
    size_t m_nBytes;
};

// Plain data that needs no destructor: a task thread may still draw while the process ends.
std::mutex s_cMutex;
std::array<Kept, MAX_KEPT> s_acKept; // oldest first
size_t s_nKept = 0;
size_t s_nKeptBytes = 0;

Kept removeKept(Kept *pcKept)
{
    const Kept cRemoved = *pcKept;
    std::copy(pcKept + 1, s_acKept.data() + s_nKept, pcKept);
    --s_nKept;
    s_nKeptBytes -= cRemoved.m_nBytes;
    return cRemoved;
}
} // namespace

unsigned char *PixelBuffers::allocate(size_t nBytes)
{
    constexpr size_t CACHE_LINE = 64;
    void *pvBytes = nullptr;
    return posix_memalign(&pvBytes, CACHE_LINE, nBytes) == 0 ? static_cast<unsigned char *>(pvBytes)
                                                             : nullptr;
}

unsigned char *PixelBuffers::take(size_t nBytes)
{
    if (nBytes == 0)
        return nullptr;
    {
        const std::lock_guard cLock(s_cMutex);
        // Newest first: its bytes are the likeliest to be in the cache. One of twice the size would
        // keep more memory than is needed.
        for (size_t i = s_nKept; i-- > 0;) {
            if (s_acKept[i].m_nBytes >= nBytes && s_acKept[i].m_nBytes / 2 <= nBytes)
                return removeKept(&s_acKept[i]).m_puchBuffer;
        }
    }
    return allocate(nBytes);
}

void PixelBuffers::giveBack(unsigned char *puchBuffer)
{
    if (!puchBuffer)
        return;
    const Kept cBack{puchBuffer, malloc_usable_size(puchBuffer)};
    std::array<unsigned char *, MAX_KEPT + 1> apuchFreed;
    size_t nFreed = 0;
    {
        const std::lock_guard cLock(s_cMutex);
        if (cBack.m_nBytes > MAX_KEPT_BYTES) {
            apuchFreed[nFreed++] = puchBuffer;
        } else {
            while (s_nKept == MAX_KEPT || s_nKeptBytes + cBack.m_nBytes > MAX_KEPT_BYTES)
                apuchFreed[nFreed++] = removeKept(s_acKept.data()).m_puchBuffer;
            s_acKept[s_nKept++] = cBack;
            s_nKeptBytes += cBack.m_nBytes;
        }
    }
    std::for_each_n(apuchFreed.begin(), nFreed, free);
}

QImage PixelBuffers::image(QSize cSize, QImage::Format eFormat)
{
    const qint64 nRowBytes =
        (qint64{cSize.width()} * QImage::toPixelFormat(eFormat).bitsPerPixel() + 31) / 32 * 4;
    if (cSize.isEmpty() || nRowBytes > std::numeric_limits<int>::max())
        return {};
    unsigned char *puchPixels = take(static_cast<size_t>(nRowBytes) * static_cast<size_t>(cSize.height()));
    if (!puchPixels)
        return {};
    QImage cImage(
        puchPixels, cSize.width(), cSize.height(), static_cast<int>(nRowBytes), eFormat,
        [](void *pvPixels) { giveBack(static_cast<unsigned char *>(pvPixels)); }, puchPixels);
    if (cImage.isNull())
        giveBack(puchPixels);
    return cImage;
}
