#ifndef REGISTRYLIST_H
#define REGISTRYLIST_H

#include "report.h"

/// Every algorithm in the order in which they are searched, then every data source by name, with
/// the file that each comes from (relative to the program's directory where it lies there).
QList<KnownPart> knownParts();

#endif
