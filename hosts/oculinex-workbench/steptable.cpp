#include "steptable.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTableWidget>
#include <QWheelEvent>

#include "figures.h"
#include "taskMgr/taskMgr.h"

namespace
{
enum Column { Name, Limit, TestRun, On, Last, Mean, Worst, Result, Columns };
constexpr qint64 HANGS_NS = 1000000000; ///< a step that takes longer is shown while it runs
constexpr int SHOWN_LENGTH = 200;       ///< characters of a result
} // namespace

StepTable::StepTable(QWidget *pcParent)
    : QWidget(pcParent),
      m_pcTable(new QTableWidget(0, Columns)),
      m_pcHolder(new QWidget),
      m_pcVertical(new QScrollBar(Qt::Vertical)),
      m_pcHorizontal(new QScrollBar(Qt::Horizontal))
{
    m_pcTable->setObjectName(QStringLiteral("flow"));
    m_pcTable->setHorizontalHeaderLabels({tr("Step"), tr("Limit"), tr("Test run"), tr("On"), tr("Last"),
                                          tr("Mean"), tr("Worst"), tr("Result")});
    const QString astrTip[Columns] = {
        tr("What the step does; edit it to describe it in your own words"),
        tr("How many runs execute the step: -1 all, 0 none, 999999999 only the end of the task"),
        tr("Milliseconds in the last run to a step"),
        tr("Whether the step is executed; its limit comes back when it is switched on"),
        tr("Milliseconds of the last execution"),
        tr("Mean of all executions since the start, in milliseconds"),
        tr("Longest execution since the start, in milliseconds"),
        tr("What the step returned last")};
    for (int nColumn = 0; nColumn < Columns; ++nColumn)
        m_pcTable->horizontalHeaderItem(nColumn)->setToolTip(astrTip[nColumn]);
    m_pcTable->setSelectionBehavior(QTableWidget::SelectRows);
    m_pcTable->setSelectionMode(QTableWidget::SingleSelection);
    m_pcTable->setEditTriggers(QTableWidget::DoubleClicked | QTableWidget::EditKeyPressed);
    m_pcTable->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_pcTable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_pcTable->setWordWrap(false);
    QPalette cPalette = m_pcTable->palette(); // what runs is to be read, too
    cPalette.setBrush(QPalette::Disabled, QPalette::Text, cPalette.brush(QPalette::Active, QPalette::Text));
    cPalette.setBrush(QPalette::Disabled, QPalette::Highlight,
                      cPalette.brush(QPalette::Active, QPalette::Highlight));
    m_pcTable->setPalette(cPalette);
    m_pcTable->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    m_pcTable->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView *pcHeader = m_pcTable->horizontalHeader();
    pcHeader->moveSection(On, 0);
    pcHeader->setStretchLastSection(true);
    pcHeader->setHighlightSections(false);
    const int nDigits = fontMetrics().horizontalAdvance(QStringLiteral("0000.0")) + 10;
    const int anWidth[] = {200, nDigits, nDigits, 34, nDigits, nDigits, nDigits};
    for (int nColumn = 0; nColumn < Result; ++nColumn)
        m_pcTable->setColumnWidth(nColumn, std::max(anWidth[nColumn], pcHeader->sectionSizeHint(nColumn)));
    m_pcTable->installEventFilter(this);

    auto *pcInner = new QHBoxLayout(m_pcHolder);
    pcInner->setContentsMargins(0, 0, 0, 0);
    pcInner->addWidget(m_pcTable);
    auto *pcLayout = new QGridLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    pcLayout->setSpacing(0);
    pcLayout->addWidget(m_pcHolder, 0, 0);
    pcLayout->addWidget(m_pcVertical, 0, 1);
    pcLayout->addWidget(m_pcHorizontal, 1, 0);

    const auto fnReplace = [this](const QScrollBar *pcOwn, QScrollBar *pcShown) {
        pcShown->hide();
        connect(pcOwn, &QScrollBar::rangeChanged, this, [=](int nFrom, int nTo) {
            pcShown->setPageStep(pcOwn->pageStep());
            pcShown->setSingleStep(pcOwn->singleStep());
            pcShown->setRange(nFrom, nTo);
            pcShown->setVisible(nTo > nFrom);
        });
        connect(pcOwn, &QScrollBar::valueChanged, pcShown, &QScrollBar::setValue);
        connect(pcShown, &QScrollBar::valueChanged, pcOwn, &QScrollBar::setValue);
    };
    fnReplace(m_pcTable->verticalScrollBar(), m_pcVertical);
    fnReplace(m_pcTable->horizontalScrollBar(), m_pcHorizontal);
    connect(m_pcTable, &QTableWidget::cellChanged, this, [this](int nRow, int nColumn) {
        if (nColumn == On)
            emit stepSwitched(nRow, m_pcTable->item(nRow, On)->checkState() == Qt::Checked);
    });
    connect(m_pcTable, &QTableWidget::cellDoubleClicked, this, [this](int, int nColumn) {
        if (nColumn >= Last)
            emit configurationWanted();
    });
}

int StepTable::selectedStep() const
{
    const QList<QTableWidgetItem *> lstSelected = m_pcTable->selectedItems();
    return lstSelected.isEmpty() ? -1 : lstSelected.first()->row();
}

void StepTable::select(int nStep)
{
    m_pcTable->setCurrentCell(nStep, Name, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

QTableWidgetItem *StepTable::cell(int nRow, int nColumn)
{
    QTableWidgetItem *pcCell = m_pcTable->item(nRow, nColumn);
    if (pcCell)
        return pcCell;
    pcCell = new QTableWidgetItem;
    if (nColumn == On)
        pcCell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
    else if (nColumn > Limit)
        pcCell->setFlags(pcCell->flags() & ~Qt::ItemIsEditable);
    m_pcTable->setItem(nRow, nColumn, pcCell);
    return pcCell;
}

void StepTable::fill(const QList<TaskItem> &lstStep)
{
    const QSignalBlocker cBlocker(m_pcTable); // the task would take it for edits
    m_pcTable->setRowCount(lstStep.size());
    for (int nRow = 0; nRow < lstStep.size(); ++nRow) {
        const TaskItem &cStep = lstStep[nRow];
        cell(nRow, Name)
            ->setText(cStep.m_strDescribe.isEmpty() ? cStep.m_strArithmName : cStep.m_strDescribe);
        cell(nRow, Limit)->setText(QString::number(cStep.m_nMaxExeTimes));
        cell(nRow, TestRun)->setText(QString());
    }
}

void StepTable::showFigures(const QList<TaskItem> &lstStep, const TaskStatus &cStatus)
{
    const QSignalBlocker cBlocker(m_pcTable);
    for (int nRow = 0; nRow < std::min(lstStep.size(), m_pcTable->rowCount()); ++nRow) {
        const StepStatus cStep = cStatus.m_lstStep.value(nRow);
        const bool bHangs = nRow == cStatus.m_nCurrentStep && cStatus.m_nCurrentStepNs > HANGS_NS;
        const bool bRan = cStep.m_nExecutions > 0;
        cell(nRow, Name)->setToolTip(cell(nRow, Name)->text() + '\n' + lstStep[nRow].m_strArithmName);
        cell(nRow, On)->setCheckState(lstStep[nRow].m_nMaxExeTimes == 0 ? Qt::Unchecked : Qt::Checked);
        cell(nRow, Last)
            ->setText(bHangs ? duration(cStatus.m_nCurrentStepNs)
                      : bRan ? milliseconds(cStep.m_nLastNs)
                             : QString());
        cell(nRow, Mean)->setText(bRan ? milliseconds(cStep.m_nTotalNs / cStep.m_nExecutions) : QString());
        cell(nRow, Worst)->setText(bRan ? milliseconds(cStep.m_nWorstNs) : QString());
        for (const int nColumn : {TestRun, Last, Mean, Worst})
            cell(nRow, nColumn)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        cell(nRow, Last)->setBackground(bHangs ? QBrush(QColor(0xff, 0xd8, 0x80)) : QBrush());
        cell(nRow, Result)->setText(cStep.m_strLastResult.left(SHOWN_LENGTH).simplified());
        cell(nRow, Result)->setToolTip(cStep.m_strLastResult.left(10 * SHOWN_LENGTH));
    }
    m_pcTable->viewport()->update();
}

void StepTable::wheelEvent(QWheelEvent *pcEvent)
{
    QCoreApplication::sendEvent(m_pcVertical, pcEvent);
}

bool StepTable::eventFilter(QObject *pcWatched, QEvent *pcEvent)
{
    // Without a selection, a step is added at the end.
    if (pcEvent->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(pcEvent)->key() == Qt::Key_Escape)
        m_pcTable->clearSelection();
    return QWidget::eventFilter(pcWatched, pcEvent);
}
