#ifndef NATURALORDER_H
#define NATURALORDER_H

#include <QString>

/// Whether strA stands before strB for a person: "img2" before "img10". Letter case and leading
/// zeros decide only between names that are the same otherwise. (QCollator leaves digits to the
/// locale, and the C locale does without.)
bool naturallyLess(const QString &strA, const QString &strB);

#endif
