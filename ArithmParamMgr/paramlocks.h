#ifndef PARAMLOCKS_H
#define PARAMLOCKS_H

/// @file
/// The locks of stores and parameters (private to the library). Neither has room for a lock of its
/// own, so each borrows one out of a fixed array by its address; two objects that share one merely
/// wait for each other. A store's lock may be held while a parameter's is taken, never the reverse,
/// and never two of one kind.

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <type_traits>

class ArithmParam;
class ArithmParamMgr;

/// An array of locks, each on a cache line of its own.
class LockStripes
{
public:
    std::mutex &of(const void *pObject)
    {
        // The top bits of the product depend on all bits of the address.
        const std::uint64_t unMixed = reinterpret_cast<std::uintptr_t>(pObject) * 0x9E3779B97F4A7C15ULL;
        return m_acStripe[unMixed >> (64 - STRIPE_BITS)].m_cLock;
    }

private:
    static constexpr int STRIPE_BITS = 6;
    struct alignas(64) Stripe {
        std::mutex m_cLock;
    };
    Stripe m_acStripe[std::size_t(1) << STRIPE_BITS];
};
// Static constructors of other libraries use stores before this library's own would run, and
// threads may still use them while the process exits.
static_assert(std::is_trivially_destructible_v<LockStripes>, "locks outlive the process's exit handlers");

extern LockStripes g_cParamLocks;
extern LockStripes g_cStoreLocks;

inline std::mutex &lockOf(const ArithmParam *pcParam)
{
    return g_cParamLocks.of(pcParam);
}
inline std::mutex &lockOf(const ArithmParamMgr *pcAPM)
{
    return g_cStoreLocks.of(pcAPM);
}

#endif
