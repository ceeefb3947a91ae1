#ifndef DATATABLE_H
#define DATATABLE_H

#include <QRegularExpression>
#include <QTest>

/// Makes the rows of a data-driven test from a table: one row a line, two blanks or more between the
/// columns, '-' for an empty cell. The first line names the columns, the first column the rows; all
/// cells are strings.
inline void addRows(const char *szTable)
{
    const auto fnCells = [](const QString &strLine) {
        return strLine.split(QRegularExpression(QStringLiteral(" {2,}")), Qt::SkipEmptyParts);
    };
    const QStringList lstLines = QString::fromUtf8(szTable).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QStringList lstColumns = fnCells(lstLines.first());
    static QByteArrayList s_lstNames; // Qt Test keeps only pointers to them
    for (const QString &strColumn : lstColumns.mid(1)) {
        s_lstNames.append(strColumn.toUtf8());
        QTest::addColumn<QString>(s_lstNames.last().constData());
    }
    for (const QString &strLine : lstLines.mid(1)) {
        const QStringList lstCells = fnCells(strLine);
        if (lstCells.size() != lstColumns.size())
            qFatal("a row has another number of columns: %s", qUtf8Printable(strLine));
        QTestData &cRow = QTest::newRow(lstCells.first().toUtf8().constData());
        for (const QString &strCell : lstCells.mid(1))
            cRow << (strCell == QLatin1String("-") ? QString() : strCell);
    }
}

#endif
