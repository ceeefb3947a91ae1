#include "globalfunction.h"

#include "framedbody.h"

qsizetype FramedBody::findMarker(QStringView strText, QStringView strMarker, qsizetype nFrom)
{
    // No other character folds to '<', so the quick search for it misses nothing.
    const QChar chBracket = QLatin1Char('<');
    if (!strMarker.startsWith(chBracket))
        return strText.indexOf(strMarker, nFrom, Qt::CaseInsensitive);
    qsizetype nAt = strText.indexOf(chBracket, nFrom);
    while (nAt >= 0 && !strText.mid(nAt).startsWith(strMarker, Qt::CaseInsensitive))
        nAt = strText.indexOf(chBracket, nAt + 1);
    return nAt;
}

FramedBody FramedBody::find(QStringView strSource, QStringView strBegin, QStringView strEnd)
{
    const qsizetype nBegin = findMarker(strSource, strBegin);
    if (nBegin < 0)
        return {};
    // From the start and not from behind the begin marker: there is no pairing of markers.
    const qsizetype nEnd = findMarker(strSource, strEnd);
    if (nBegin >= nEnd || nEnd >= strSource.size())
        return {};
    const qsizetype nBody = nBegin + strBegin.size();
    return {strSource.mid(nBody, qMax(qsizetype(0), nEnd - nBody)), nBegin, nEnd + strEnd.size()};
}

QString FramedBody::take(QString &strSource, QStringView strBegin, QStringView strEnd)
{
    const FramedBody cFramed = find(strSource, strBegin, strEnd);
    QString strBody = cFramed.m_strBody.toString();
    strSource.remove(static_cast<int>(cFramed.m_nBegin), static_cast<int>(cFramed.m_nEnd - cFramed.m_nBegin));
    return strBody;
}

namespace
{
bool isBlank(QChar ch)
{
    return ch == QLatin1Char(' ') || ch == QLatin1Char('\r') || ch == QLatin1Char('\n');
}
} // namespace

QString GlobalFunction::getBody(QString strSource, QString strBegin, QString strEnd)
{
    return FramedBody::find(strSource, strBegin, strEnd).m_strBody.toString();
}

QString GlobalFunction::getAndRemoveBody(QString &strSource, QString strBegin, QString strEnd)
{
    return FramedBody::take(strSource, strBegin, strEnd);
}

void GlobalFunction::trimString(QString &strText)
{
    int nFirst = 0;
    int nEnd = strText.length();
    while (nFirst < nEnd && isBlank(strText.at(nFirst)))
        ++nFirst;
    while (nEnd > nFirst && isBlank(strText.at(nEnd - 1)))
        --nEnd;
    strText = strText.mid(nFirst, nEnd - nFirst);
}
