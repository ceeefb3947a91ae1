#include "taskMgr/taskMgr.h"

#include <QTableWidget>

#include "taskMgr/flowtable.h"

void insertFlowRow(QObject *pcTable, int nRow, const TaskItem &cItem)
{
    auto *pcFlow = qobject_cast<QTableWidget *>(pcTable);
    if (!pcFlow)
        return;
    if (nRow < 0)
        nRow = pcFlow->rowCount();
    pcFlow->insertRow(nRow);
    auto *pcName =
        new QTableWidgetItem(cItem.m_strDescribe.isEmpty() ? cItem.m_strArithmName : cItem.m_strDescribe);
    pcName->setToolTip(cItem.m_strArithmName);
    pcFlow->setItem(nRow, 0, pcName);
    pcFlow->setItem(nRow, 1, new QTableWidgetItem(QString::number(cItem.m_nMaxExeTimes)));
    auto *pcTime = new QTableWidgetItem;
    pcTime->setFlags(pcTime->flags() & ~Qt::ItemIsEditable);
    pcFlow->setItem(nRow, 2, pcTime);
}

void TaskInfo::disconnectEvents() {}
