#ifndef COUNTEDHEAP_H
#define COUNTEDHEAP_H

#include <atomic>
#include <cerrno>
#include <cstdlib>

/// Counts the large blocks that anything in the process asks of the C library's heap. Included by one
/// source of a test program, which thereby takes the place of malloc; the sanitizers have their own.
namespace CountedHeap
{
constexpr size_t LARGE = 4096;
inline std::atomic<int> s_nLarge{0};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool COUNTS = false;
#else
constexpr bool COUNTS = true;

inline void note(size_t nBytes)
{
    if (nBytes >= LARGE)
        ++s_nLarge;
}
#endif
} // namespace CountedHeap

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#pragma GCC visibility push(default)
extern "C" {
void *__libc_malloc(size_t nBytes);
void *__libc_calloc(size_t nItems, size_t nBytes);
void *__libc_realloc(void *pBlock, size_t nBytes);
void *__libc_memalign(size_t nAlignment, size_t nBytes);

void *malloc(size_t nBytes)
{
    CountedHeap::note(nBytes);
    return __libc_malloc(nBytes);
}
void *calloc(size_t nItems, size_t nBytes)
{
    CountedHeap::note(nItems * nBytes);
    return __libc_calloc(nItems, nBytes);
}
void *realloc(void *pBlock, size_t nBytes)
{
    CountedHeap::note(nBytes);
    return __libc_realloc(pBlock, nBytes);
}
void *aligned_alloc(size_t nAlignment, size_t nBytes)
{
    CountedHeap::note(nBytes);
    return __libc_memalign(nAlignment, nBytes);
}
int posix_memalign(void **ppBlock, size_t nAlignment, size_t nBytes)
{
    CountedHeap::note(nBytes);
    *ppBlock = __libc_memalign(nAlignment, nBytes);
    return *ppBlock ? 0 : ENOMEM;
}
}
#pragma GCC visibility pop
#endif

#endif
