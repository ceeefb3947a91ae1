#ifndef SHAREDFIELD_H
#define SHAREDFIELD_H

/// A field of a public class that several threads touch (private header). It has its plain type, which
/// hosts know; the library reads and writes it by these.
namespace SharedField
{
template <typename T>
T load(const T &cField)
{
    return __atomic_load_n(&cField, __ATOMIC_ACQUIRE);
}

template <typename T>
void store(T &cField, T cValue)
{
    __atomic_store_n(&cField, cValue, __ATOMIC_RELEASE);
}
} // namespace SharedField

#endif
