#include "tasklist.h"

#include <QAction>
#include <QHeaderView>
#include <QMessageBox>
#include <QStyle>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include "OculinexQTStandAloneInQt.h"
#include "actions.h"
#include "control.h"
#include "document.h"
#include "icons.h"

namespace
{
enum Column { Name, State, PerSecond, Error, Columns };
constexpr qint64 HANGS_NS = 2000000000; ///< a step that takes longer is shown with its time

QString jobText(Control::Action eAction)
{
    switch (eAction) {
    case Control::Action::Start:
        return TaskList::tr("Starting…");
    case Control::Action::Stop:
        return TaskList::tr("Stopping…");
    case Control::Action::RunOnce:
        return TaskList::tr("One run…");
    }
    return {};
}
} // namespace

TaskList::TaskList(Document &cDocument, const Control &cControl, QWidget *pcParent)
    : QWidget(pcParent),
      m_cDocument(cDocument),
      m_cControl(cControl),
      m_pcTable(new QTableWidget(0, Columns)),
      m_cRunning(dotIcon(QColor(0x3c, 0xa5, 0x4a))),
      m_cBusy(dotIcon(QColor(0xe0, 0xa0, 0x20))),
      m_cStopped(dotIcon(QColor(0xb0, 0xb0, 0xb0))),
      m_cFailed(dotIcon(QColor(0xd0, 0x3c, 0x30)))
{
    m_pcTable->setObjectName(QStringLiteral("tasks"));
    m_pcTable->setHorizontalHeaderLabels({tr("Task"), tr("State"), tr("Runs/s"), tr("Last error")});
    m_pcTable->setSelectionBehavior(QTableWidget::SelectRows);
    m_pcTable->setSelectionMode(QTableWidget::SingleSelection);
    m_pcTable->setEditTriggers(QTableWidget::DoubleClicked | QTableWidget::EditKeyPressed);
    m_pcTable->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_pcTable->setShowGrid(false);
    m_pcTable->setWordWrap(false);
    m_pcTable->setTextElideMode(Qt::ElideMiddle); // a step that hangs has its time at the end
    m_pcTable->verticalHeader()->hide();
    m_pcTable->horizontalHeader()->setStretchLastSection(true);
    m_pcTable->horizontalHeader()->setHighlightSections(false);
    m_pcTable->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    fitColumns();

    addAction(tr("&Add task"), tr("Add a task at the end"), QStringLiteral("Ctrl+Shift+N"), &TaskList::add);
    m_pcDuplicate = addAction(tr("&Duplicate task"), tr("Add a copy of this task at the end"),
                              QStringLiteral("Ctrl+Shift+D"), &TaskList::duplicate);
    m_pcRename = addAction(tr("Re&name task"), tr("Give this task another name"), QStringLiteral("F2"),
                           &TaskList::rename);
    m_pcRemove = addAction(tr("&Remove task"), tr("Remove this task; undo brings it back"),
                           QStringLiteral("Del"), &TaskList::remove);
    m_pcUp = addAction(tr("Move task &up"), tr("Move this task up in the list"),
                       QStringLiteral("Ctrl+Shift+Up"), &TaskList::moveUp);
    m_pcDown = addAction(tr("Move task d&own"), tr("Move this task down in the list"),
                         QStringLiteral("Ctrl+Shift+Down"), &TaskList::moveDown);
    const Icon aeIcon[] = {Icon::Add, Icon::Duplicate, Icon::Rename, Icon::Remove, Icon::Up, Icon::Down};
    auto *pcBar = new QToolBar;
    pcBar->setIconSize(QSize(16, 16));
    for (int nAction = 0; nAction < m_lstAction.size(); ++nAction) {
        m_lstAction[nAction]->setIcon(icon(aeIcon[nAction]));
        pcBar->addAction(m_lstAction[nAction]);
    }
    m_pcRemove->setShortcutContext(Qt::WidgetWithChildrenShortcut); // a step has the same keys
    m_pcTable->addActions(m_lstAction);

    auto *pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(4, 4, 4, 4);
    pcLayout->setSpacing(2);
    pcLayout->addWidget(pcBar);
    pcLayout->addWidget(m_pcTable);

    connect(&m_cDocument, &Document::tasksChanged, this, &TaskList::rebuild);
    connect(&m_cControl, &Control::changed, this, &TaskList::refresh);
    connect(m_pcTable, &QTableWidget::itemChanged, this, &TaskList::itemChanged);
    connect(m_pcTable, &QTableWidget::currentCellChanged, this, [this](int nRow, int, int nBefore) {
        if (nRow == nBefore)
            return;
        enableActions();
        emit currentChanged(nRow);
    });
    rebuild();
}

/// Whatever can stand in a column is to be read in it, but for names and errors.
void TaskList::fitColumns()
{
    const auto fnFit = [this](int nColumn, const QStringList &lstText, int nBeside) {
        int nWidth = m_pcTable->horizontalHeader()->sectionSizeHint(nColumn);
        for (const QString &strText : lstText)
            nWidth = std::max(nWidth, m_pcTable->fontMetrics().horizontalAdvance(strText) + nBeside);
        m_pcTable->setColumnWidth(nColumn, nWidth);
    };
    const int nMargins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    const int nIcon = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) + nMargins;
    fnFit(Name, {QString(9, 'n')}, nMargins);
    fnFit(State,
          {jobText(Control::Action::Start), jobText(Control::Action::Stop), jobText(Control::Action::RunOnce),
           tr("Running"), tr("Failed"), tr("Stopped")},
          nMargins + nIcon);
    fnFit(PerSecond, {QStringLiteral("0000.0")}, nMargins);
    fnFit(Error, {}, 0);
}

QAction *TaskList::addAction(const QString &strText, const QString &strTip, const QKeySequence &cKeys,
                             void (TaskList::*fnDo)())
{
    m_lstAction.append(makeAction(this, strText, strTip, cKeys, [this, fnDo] { (this->*fnDo)(); }));
    return m_lstAction.last();
}

int TaskList::current() const
{
    return m_pcTable->currentRow();
}

void TaskList::setCurrent(int nTask)
{
    m_pcTable->setCurrentCell(nTask, Name);
}

void TaskList::rebuild()
{
    const int nCurrent = std::max(0, current());
    {
        const QSignalBlocker cBlocker(m_pcTable);
        m_pcTable->clearContents();
        m_pcTable->setRowCount(m_cDocument.taskCount());
        m_lstRate.fill(Rate(), m_cDocument.taskCount());
        const QStringList lstName = m_cDocument.taskNames();
        for (int nTask = 0; nTask < lstName.size(); ++nTask) {
            for (int nColumn = 0; nColumn < Columns; ++nColumn) {
                auto *pcCell = new QTableWidgetItem;
                if (nColumn != Name)
                    pcCell->setFlags(pcCell->flags() & ~Qt::ItemIsEditable);
                if (nColumn == PerSecond)
                    pcCell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                m_pcTable->setItem(nTask, nColumn, pcCell);
            }
            m_pcTable->item(nTask, Name)->setText(lstName[nTask]);
            m_pcTable->item(nTask, Name)->setToolTip(lstName[nTask]);
            m_pcTable->setRowHeight(nTask, fontMetrics().height() + 8);
        }
        setCurrent(std::min(nCurrent, m_cDocument.taskCount() - 1));
    }
    refresh();
    emit currentChanged(current());
}

void TaskList::refresh()
{
    const QSignalBlocker cBlocker(m_pcTable);
    for (int nTask = 0; nTask < m_pcTable->rowCount(); ++nTask)
        refreshRow(nTask);
    enableActions();
}

void TaskList::refreshRow(int nTask)
{
    TaskStatus cStatus;
    if (!getTaskStatus(nTask, cStatus))
        return;
    m_lstRate[nTask].update(cStatus.m_nRuns);
    const bool bRunning = cStatus.m_eState == TaskStatus::State::Running;
    const auto eJob = m_cControl.jobOf(nTask);
    const bool bHangs = cStatus.m_nCurrentStep >= 0 && cStatus.m_nCurrentStepNs > HANGS_NS;
    const QString strState = eJob                                              ? jobText(*eJob)
                             : bRunning                                        ? tr("Running")
                             : cStatus.m_eState == TaskStatus::State::Stopping ? tr("Stopping…")
                             : cStatus.m_nFailures > 0                         ? tr("Failed")
                                                                               : tr("Stopped");
    QTableWidgetItem *pcState = m_pcTable->item(nTask, State);
    pcState->setText(strState);
    pcState->setIcon(eJob || bHangs            ? m_cBusy
                     : bRunning                ? m_cRunning
                     : cStatus.m_nFailures > 0 ? m_cFailed
                                               : m_cStopped);
    m_pcTable->item(nTask, PerSecond)
        ->setText(bRunning ? QString::number(m_lstRate[nTask].perSecond(), 'f', 1) : QString());
    QString strError = cStatus.m_strLastError.isEmpty() && bRunning ? cStatus.m_strLastDataSourceError
                                                                    : cStatus.m_strLastError;
    if (bHangs)
        strError =
            tr("Step %1 for %2").arg(cStatus.m_nCurrentStep + 1).arg(duration(cStatus.m_nCurrentStepNs)) +
            '\n' + strError;
    m_pcTable->item(nTask, Error)->setText(strError.simplified());
    m_pcTable->item(nTask, Error)->setToolTip(strError);
}

void TaskList::enableActions()
{
    const int nTask = current();
    const bool bIdle = nTask >= 0 && m_cDocument.isIdle(nTask);
    m_pcDuplicate->setEnabled(nTask >= 0);
    m_pcRename->setEnabled(bIdle);
    m_pcRemove->setEnabled(bIdle && m_cDocument.mayRearrange(nTask));
    m_pcUp->setEnabled(bIdle && nTask > 0 && m_cDocument.isIdle(nTask - 1));
    m_pcDown->setEnabled(bIdle && m_cDocument.isIdle(nTask + 1));
}

void TaskList::itemChanged(QTableWidgetItem *pcItem)
{
    const int nTask = pcItem->row();
    if (pcItem->column() != Name || pcItem->text() == m_cDocument.taskNames().value(nTask))
        return;
    if (m_cDocument.renameTask(nTask, pcItem->text().trimmed()))
        return;
    const QSignalBlocker cBlocker(m_pcTable);
    pcItem->setText(m_cDocument.taskNames().value(nTask));
}

void TaskList::add()
{
    const QStringList lstName = m_cDocument.taskNames();
    int nNumber = lstName.size() + 1;
    while (lstName.contains(tr("Task %1").arg(nNumber)))
        ++nNumber;
    setCurrent(m_cDocument.addTask(tr("Task %1").arg(nNumber)));
}

void TaskList::duplicate()
{
    m_cDocument.noticeEdit(current());
    setCurrent(m_cDocument.duplicateTask(current()));
}

void TaskList::rename()
{
    m_pcTable->editItem(m_pcTable->item(current(), Name));
}

void TaskList::remove()
{
    m_cDocument.noticeEdit(current());
    m_cDocument.removeTask(current());
}

void TaskList::move(int nBy)
{
    const int nTo = current() + nBy;
    m_cDocument.noticeEdit(current());
    m_cDocument.moveTask(current(), nTo);
    setCurrent(nTo);
}
