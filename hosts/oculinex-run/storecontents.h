#ifndef STORECONTENTS_H
#define STORECONTENTS_H

#include <QImage>
#include <QStringList>

#include "common/storeaccess.h"

/// Parameters of a store as pictures and as texts, for people to look at. The store is the caller's
/// alone.

/// A copy of the picture, converted to that kind, as parameter nID. False when there is no memory.
bool putPicture(ArithmParamMgr &cStore, ParamKind eKind, int nID, const QImage &cPicture);
/// The picture that a parameter holds, on the parameter's own pixels; a null one when it is empty.
QImage pictureOf(ArithmParamMgr &cStore, ParamKind eKind, int nID);

/// The number of a list's elements; the first ones come back as texts.
int describeList(ArithmParamMgr &cStore, ParamKind eKind, int nID, QStringList &lstFirst);
/// False for lists that are never drawn, as those of numbers.
bool isDrawn(ParamKind eKind);
/// Lists as the library draws them, over a picture that is made nWidth pixels wide.
QImage drawLists(ArithmParamMgr &cStore, const QList<QPair<ParamKind, int>> &lstKey, const QImage &cPicture,
                 int nWidth);

#endif
