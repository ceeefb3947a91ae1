#ifndef GLOBALFUNCTION_H
#define GLOBALFUNCTION_H

#include <QObject>
#include <QString>

#include "oculinexqtstandalone_export.h"

/// What every part of the library shares: the reader of tagged text.
///
/// Tagged text frames a value by a begin and an end marker, as in "<Tag>value</Tag>". Markers are
/// matched case-insensitively at their first occurrence; there is no nesting and no escaping. An
/// empty value and a missing tag cannot be told apart.
///
/// Threads: the text functions touch only their arguments.
class OCULINEXQTSTANDALONE_EXPORT GlobalFunction : public QObject
{
    Q_OBJECT

public:
    /// The text between the first begin marker and the first end marker of strSource, both searched
    /// from the start; empty when the end marker does not stand after the begin marker.
    static QString getBody(QString strSource, QString strBegin, QString strEnd);
    /// The same, and removes the body together with its markers from strSource.
    static QString getAndRemoveBody(QString &strSource, QString strBegin, QString strEnd);
    /// Strips spaces, carriage returns and line feeds (and nothing else) from both ends.
    static void trimString(QString &strText);
};

#endif
