#include "taskMgr/blockreader.h"

#include "framedbody.h"

BlockReader::BlockReader(QStringView strText, QStringView strBegin, QStringView strEnd)
    : m_strText(strText), m_strBegin(strBegin), m_strEnd(strEnd)
{
}

QStringView BlockReader::next()
{
    // The kept part holds no whole marker. One that spans the join therefore comes first of all.
    if (lengthBeforeJoin(m_strEnd) > 0)
        return {};
    const int nSpan = lengthBeforeJoin(m_strBegin);
    const qsizetype nBegin =
        nSpan > 0 ? m_nRest - nSpan : FramedBody::findMarker(m_strText, m_strBegin, m_nRest);
    const qsizetype nEnd = FramedBody::findMarker(m_strText, m_strEnd, m_nRest);
    if ((nSpan == 0 && nBegin < 0) || nEnd < nBegin || nEnd < 0)
        return {};

    if (nSpan > 0)
        m_strKept.chop(nSpan);
    else
        m_strKept.append(m_strText.mid(m_nRest, nBegin - m_nRest));
    m_nRest = nEnd + m_strEnd.size();
    const qsizetype nBody = nBegin + m_strBegin.size();
    return m_strText.mid(nBody, nEnd - nBody);
}

/// How many characters of a marker that spans the join stand in the kept part; 0 if none spans it.
int BlockReader::lengthBeforeJoin(QStringView strMarker) const
{
    const QStringView strKept(m_strKept);
    const QStringView strTail = strKept.right(qMin(strKept.size(), strMarker.size() - 1));
    // Markers hold one '<' only: just the last one kept can begin such a marker.
    const qsizetype nAt = strTail.lastIndexOf(QLatin1Char('<'));
    const qsizetype nBefore = strTail.size() - nAt;
    const qsizetype nAfter = strMarker.size() - nBefore;
    if (nAt < 0 || nAfter > m_strText.size() - m_nRest)
        return 0;
    const bool bSpans =
        strTail.right(nBefore).compare(strMarker.left(nBefore), Qt::CaseInsensitive) == 0 &&
        m_strText.mid(m_nRest, nAfter).compare(strMarker.mid(nBefore), Qt::CaseInsensitive) == 0;
    return bSpans ? static_cast<int>(nBefore) : 0;
}
