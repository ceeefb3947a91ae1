#ifndef FLOWTABLE_H
#define FLOWTABLE_H

class QObject;
class TaskItem;

/// Inserts a step's row into the host's flow table: description or else name, limit, and an empty
/// cell for the time. A row below 0 appends. Nothing happens when the object is no QTableWidget.
void insertFlowRow(QObject *pcTable, int nRow, const TaskItem &cItem);

#endif
