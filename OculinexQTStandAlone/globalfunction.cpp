#include "globalfunction.h"

namespace
{
/// A body and the framed stretch that holds it, as positions in the source text.
struct FramedBody {
    int nBegin; ///< first character of the begin marker; -1 when there is no body
    int nEnd;   ///< one past the last character of the end marker
    QString strBody;
};

FramedBody findBody(const QString &strSource, const QString &strBegin, const QString &strEnd)
{
    const int nBegin = strSource.indexOf(strBegin, 0, Qt::CaseInsensitive);
    if (nBegin < 0)
        return {-1, -1, QString()};
    // From the start and not from behind the begin marker: there is no pairing of markers.
    const int nEnd = strSource.indexOf(strEnd, 0, Qt::CaseInsensitive);
    if (nBegin >= nEnd || nEnd >= strSource.length())
        return {-1, -1, QString()};
    const int nBody = nBegin + strBegin.length();
    return {nBegin, nEnd + strEnd.length(), strSource.mid(nBody, qMax(0, nEnd - nBody))};
}

bool isBlank(QChar ch)
{
    return ch == QLatin1Char(' ') || ch == QLatin1Char('\r') || ch == QLatin1Char('\n');
}
} // namespace

QString GlobalFunction::getBody(QString strSource, QString strBegin, QString strEnd)
{
    return findBody(strSource, strBegin, strEnd).strBody;
}

QString GlobalFunction::getAndRemoveBody(QString &strSource, QString strBegin, QString strEnd)
{
    const FramedBody cFramed = findBody(strSource, strBegin, strEnd);
    if (cFramed.nBegin >= 0)
        strSource.remove(cFramed.nBegin, cFramed.nEnd - cFramed.nBegin);
    return cFramed.strBody;
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
