#ifndef PARAMETERTABLE_H
#define PARAMETERTABLE_H

#include <QMap>

#include "arithmparammgr.h"

class QTableWidget;

/// Fills a table of two columns with the names and descriptions of a store's parameters of one kind,
/// one row each by ascending ID. The cells are read-only, the columns fitted, rows selected whole and
/// one at a time. The result is the ID of each row; a null store has no parameters.
///
/// The table shares nothing with the store, which may die before it.
QMap<int, int> fillParameterTable(QTableWidget *pcTable, const ArithmParamMgr *pcAPM,
                                  ArithmParamMgr::Kind eKind);

/// The row of each ID, out of the ID of each row.
QMap<int, int> inverted(const QMap<int, int> &mapID);

/// The row of the first selected cell, -1 when there is none.
int selectedRow(const QTableWidget *pcTable);

/// The name in a row of the table; empty for a row that does not exist.
QString parameterName(const QTableWidget *pcTable, int nRow);

#endif
