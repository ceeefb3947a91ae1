#include "texttable.h"

#include <algorithm>
#include <cwchar>

#include <QVector>

namespace
{
constexpr int GAP = 2;

int columnsOf(uint nCodePoint)
{
    return std::max(0, wcwidth(static_cast<wchar_t>(nCodePoint)));
}
} // namespace

int displayWidth(const QString &strText)
{
    int nColumns = 0;
    for (const uint nCodePoint : strText.toUcs4())
        nColumns += columnsOf(nCodePoint);
    return nColumns;
}

QString fitted(const QString &strText, int nColumns)
{
    const QVector<uint> lstCodePoint = strText.toUcs4();
    int nFit = 0;
    for (int nUsed = 0; nFit < lstCodePoint.size(); ++nFit) {
        nUsed += columnsOf(lstCodePoint[nFit]);
        if (nUsed > nColumns)
            break;
    }
    return QString::fromUcs4(lstCodePoint.constData(), nFit);
}

QString table(const QList<QStringList> &lstRow, int nLeft)
{
    QVector<int> lstWidth;
    for (const QStringList &lstCell : lstRow) {
        lstWidth.resize(std::max(lstWidth.size(), lstCell.size()));
        for (int nCell = 0; nCell < lstCell.size(); ++nCell)
            lstWidth[nCell] = std::max(lstWidth[nCell], displayWidth(lstCell[nCell]));
    }
    QString strTable;
    for (const QStringList &lstCell : lstRow) {
        QString strLine;
        for (int nCell = 0; nCell < lstCell.size(); ++nCell) {
            const QString strBlanks(lstWidth[nCell] - displayWidth(lstCell[nCell]), ' ');
            strLine += nCell == 0 ? QString() : QString(GAP, ' ');
            strLine += nCell < nLeft ? lstCell[nCell] + strBlanks : strBlanks + lstCell[nCell];
        }
        while (strLine.endsWith(' '))
            strLine.chop(1);
        strTable += strLine + '\n';
    }
    return strTable;
}
