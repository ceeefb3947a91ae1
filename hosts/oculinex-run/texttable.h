#ifndef TEXTTABLE_H
#define TEXTTABLE_H

#include <QList>
#include <QString>
#include <QStringList>

/// The number of terminal columns that a text takes; Chinese characters take two.
int displayWidth(const QString &strText);
/// The beginning of a text that fits into so many columns.
QString fitted(const QString &strText, int nColumns);
/// Rows with their cells below each other, the first nLeft columns set to the left, the others to
/// the right. Each line ends with a line feed and has no blanks before it.
QString table(const QList<QStringList> &lstRow, int nLeft);

#endif
