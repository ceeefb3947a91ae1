#include "naturalorder.h"

namespace
{
bool isDigit(QChar ch)
{
    return ch >= QLatin1Char('0') && ch <= QLatin1Char('9');
}

/// The digits at nPos without leading zeros; nPos moves behind them.
QStringRef takeNumber(const QString &strText, int &nPos)
{
    while (nPos < strText.size() && strText.at(nPos) == QLatin1Char('0'))
        ++nPos;
    const int nBegin = nPos;
    while (nPos < strText.size() && isDigit(strText.at(nPos)))
        ++nPos;
    return strText.midRef(nBegin, nPos - nBegin);
}

int compareNatural(const QString &strA, const QString &strB)
{
    int nA = 0;
    int nB = 0;
    while (nA < strA.size() && nB < strB.size()) {
        int nOrder;
        if (isDigit(strA.at(nA)) && isDigit(strB.at(nB))) {
            const QStringRef strNumberA = takeNumber(strA, nA);
            const QStringRef strNumberB = takeNumber(strB, nB);
            nOrder = strNumberA.size() - strNumberB.size();
            if (nOrder == 0)
                nOrder = strNumberA.compare(strNumberB);
        } else {
            nOrder = strA.at(nA++).toCaseFolded().unicode() - strB.at(nB++).toCaseFolded().unicode();
        }
        if (nOrder != 0)
            return nOrder;
    }
    return (strA.size() - nA) - (strB.size() - nB);
}
} // namespace

bool naturallyLess(const QString &strA, const QString &strB)
{
    const int nOrder = compareNatural(strA, strB);
    return nOrder != 0 ? nOrder < 0 : strA < strB;
}
