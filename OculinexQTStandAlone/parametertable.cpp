#include "parametertable.h"

#include <QHeaderView>
#include <QTableWidget>

QMap<int, int> fillParameterTable(QTableWidget *pcTable, const ArithmParamMgr *pcAPM,
                                  ArithmParamMgr::Kind eKind)
{
    pcTable->setRowCount(0);
    pcTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    pcTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    pcTable->setSelectionMode(QAbstractItemView::SingleSelection);
    pcTable->setAlternatingRowColors(true);
    pcTable->verticalHeader()->hide();
    pcTable->horizontalHeader()->setHighlightSections(false);
    pcTable->setTabKeyNavigation(false); // Tab goes on to the next widget

    QMap<int, int> mapID;
    const QList<ArithmParamMgr::Entry> lstEntry = pcAPM ? pcAPM->snapshot() : QList<ArithmParamMgr::Entry>();
    for (const ArithmParamMgr::Entry &cEntry : lstEntry) {
        if (cEntry.m_eKind != eKind)
            continue;
        const int nRow = pcTable->rowCount();
        pcTable->insertRow(nRow);
        pcTable->setItem(nRow, 0, new QTableWidgetItem(cEntry.m_strName));
        pcTable->setItem(nRow, 1, new QTableWidgetItem(cEntry.m_strDescribe));
        mapID.insert(nRow, cEntry.m_nID);
    }
    pcTable->resizeColumnsToContents();
    return mapID;
}

QMap<int, int> inverted(const QMap<int, int> &mapID)
{
    QMap<int, int> mapRow;
    for (auto it = mapID.cbegin(); it != mapID.cend(); ++it)
        mapRow.insert(it.value(), it.key());
    return mapRow;
}

int selectedRow(const QTableWidget *pcTable)
{
    const QList<QTableWidgetItem *> lstSelected = pcTable->selectedItems();
    return lstSelected.isEmpty() ? -1 : lstSelected.constFirst()->row();
}

QString parameterName(const QTableWidget *pcTable, int nRow)
{
    const QTableWidgetItem *pcName = pcTable->item(nRow, 0);
    return pcName ? pcName->text() : QString();
}
