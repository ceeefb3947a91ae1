#ifndef FRAMEDBODY_H
#define FRAMEDBODY_H

#include <QString>
#include <QStringView>

/// Where a text holds a value between two markers, found without a copy (private header; what is
/// found is what GlobalFunction::getBody says).
struct FramedBody {
    QStringView m_strBody;  ///< empty when there is none
    qsizetype m_nBegin = 0; ///< first character of the begin marker
    qsizetype m_nEnd = 0;   ///< one past the last character of the end marker

    static FramedBody find(QStringView strSource, QStringView strBegin, QStringView strEnd);
    /// The value, which goes from the text with its markers.
    static QString take(QString &strSource, QStringView strBegin, QStringView strEnd);
    /// Where the marker first stands from nFrom on, in whatever case; -1 where it does not.
    static qsizetype findMarker(QStringView strText, QStringView strMarker, qsizetype nFrom = 0);
};

#endif
