#ifndef REGISTRYLIST_H
#define REGISTRYLIST_H

#include "report.h"

/// Every algorithm in the order in which they are searched, then every data source by name, with
/// the file that each comes from (relative to the program's directory where it lies there).
QList<KnownPart> knownParts();

/// Which of them a user means by an algorithm's ID, its file (Blur, Blur.so) or "class/name", in any
/// letter case; the first, and null when none is meant.
const KnownPart *findPart(const QList<KnownPart> &lstPart, const QString &strWanted);

#endif
