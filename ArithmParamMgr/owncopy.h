#ifndef OWNCOPY_H
#define OWNCOPY_H

/// @file
/// Copies for another thread (private to the library). Qt's containers share their data until one
/// side changes it, and the side that changes looks at the count of sharers without waiting for what
/// the others have read; so what leaves a store's lock shares nothing with it.

#include "arithmparammgr.h"

template <class T>
void detachData(T &)
{
}
inline void detachData(QString &strText)
{
    strText.detach();
}
inline void detachData(ParamPolys::Poly &cPoly)
{
    cPoly.verts.detach();
}
template <class T>
void detachData(QList<T> &lst)
{
    for (T &cItem : lst)
        detachData(cItem);
}

template <class T>
T ownCopy(const T &cValue)
{
    T cCopy = cValue;
    detachData(cCopy);
    return cCopy;
}

#endif
