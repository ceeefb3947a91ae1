#ifndef OWNCOPY_H
#define OWNCOPY_H

/// @file
/// Copies for another thread (private to the library). Qt's containers share their data until one
/// side changes it, and the side that changes looks at the count of sharers without waiting for what
/// the others have read; so what leaves a store's lock shares nothing with it.

#include "arithmparammgr.h"

template <class T>
void unshare(T &)
{
}
inline void unshare(QString &strText)
{
    strText.detach();
}
inline void unshare(ParamPolys::Poly &cPoly)
{
    cPoly.verts.detach();
}
template <class T>
void unshare(QList<T> &lst)
{
    for (T &cItem : lst)
        unshare(cItem);
}

template <class T>
T ownCopy(const T &cValue)
{
    T cCopy = cValue;
    unshare(cCopy);
    return cCopy;
}

#endif
