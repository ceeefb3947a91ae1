#include "flowpane.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableWidget>
#include <QToolBar>

#include "actions.h"
#include "control.h"
#include "document.h"
#include "flowpage.h"
#include "icons.h"
#include "steptable.h"

namespace
{
constexpr int MENU_OFFSET = 20; ///< pixels by which the task opens its menu below the given point
}

FlowPane::FlowPane(Document &cDocument, Control &cControl, QWidget *pcParent)
    : QWidget(pcParent),
      m_cDocument(cDocument),
      m_cControl(cControl),
      m_pcName(new QLabel),
      m_pcRun(new QPushButton),
      m_pcPages(new QStackedWidget),
      m_pcNote(new QLabel),
      m_cRunIcon(icon(Icon::Start)),
      m_cStopIcon(icon(Icon::Stop))
{
    m_pcAdd = addAction(tr("&Add step…"),
                        tr("Add a step: before the selected one, or at the end when none is selected"),
                        QStringLiteral("Ins"), &FlowPane::addStep);
    m_pcConfigure = addAction(tr("&Configure step…"), tr("Open the window of the selected step"),
                              QStringLiteral("Ctrl+E"), &FlowPane::configureStep);
    m_pcDelete = addAction(tr("&Delete step…"), tr("Delete the selected step; undo brings it back"),
                           QStringLiteral("Del"), &FlowPane::deleteStep);
    m_pcUp = addAction(tr("Move step &up"), tr("Move the selected step up"), QStringLiteral("Alt+Up"),
                       &FlowPane::moveUp);
    m_pcDown = addAction(tr("Move step d&own"), tr("Move the selected step down"), QStringLiteral("Alt+Down"),
                         &FlowPane::moveDown);
    m_pcSwitch = addAction(tr("&Switch step on or off"), tr("A step that is off keeps its limit for later"),
                           QStringLiteral("Ctrl+/"), &FlowPane::switchStep);
    m_pcHere = addAction(tr("Run to &here"), tr("Run the flow once, up to the selected step"),
                         QStringLiteral("F6"), &FlowPane::runHere);
    const Icon aeIcon[] = {Icon::Add, Icon::Configure, Icon::Remove, Icon::Up, Icon::Down};
    for (int nAction = 0; nAction < 5; ++nAction)
        m_lstAction[nAction]->setIcon(icon(aeIcon[nAction]));
    m_pcHere->setIcon(icon(Icon::Here));
    m_pcDelete->setShortcutContext(Qt::WidgetWithChildrenShortcut); // a task has the same keys
    QWidget::addAction(m_pcDelete);
    auto *pcBar = new QToolBar;
    pcBar->setIconSize(QSize(16, 16));
    for (QAction *pcAction : qAsConst(m_lstAction))
        if (pcAction != m_pcSwitch)
            pcBar->addAction(pcAction);

    QFont cBold = font();
    cBold.setBold(true);
    cBold.setPointSizeF(cBold.pointSizeF() * 1.2);
    m_pcName->setFont(cBold);
    m_pcName->setTextFormat(Qt::PlainText);
    m_pcRun->setObjectName(QStringLiteral("run"));
    m_pcNote->setAlignment(Qt::AlignCenter);
    m_pcNote->setWordWrap(true);
    m_pcNote->setTextFormat(Qt::PlainText);
    m_pcPages->addWidget(m_pcNote);

    auto *pcHead = new QHBoxLayout;
    pcHead->addWidget(m_pcName, 1);
    pcHead->addWidget(pcBar);
    pcHead->addWidget(m_pcRun);
    auto *pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(8, 6, 8, 6);
    pcLayout->setSpacing(6);
    pcLayout->addLayout(pcHead);
    pcLayout->addWidget(m_pcPages);

    connect(m_pcRun, &QPushButton::clicked, this, &FlowPane::runOrStop);
    connect(&m_cDocument, &Document::flowChanged, this, &FlowPane::flowChanged);
    connect(&m_cControl, &Control::changed, this, &FlowPane::refresh);
    setTask(-1);
}

QAction *FlowPane::addAction(const QString &strText, const QString &strTip, const QKeySequence &cKeys,
                             void (FlowPane::*fnDo)())
{
    m_lstAction.append(makeAction(this, strText, strTip, cKeys, [this, fnDo] { (this->*fnDo)(); }));
    return m_lstAction.last();
}

FlowPage *FlowPane::page() const
{
    return qobject_cast<FlowPage *>(m_pcPages->currentWidget());
}

void FlowPane::setTask(int nTask)
{
    m_cDocument.noticeEdit(m_nTask);
    m_nTask = nTask;
    refresh();
}

void FlowPane::showPage()
{
    TaskInfo *pcTask = Document::task(m_nTask);
    FlowPage *pcPage = m_mapPage.value(pcTask);
    // Widgets are bound to a task only while control leaves it alone.
    if (pcTask && !pcPage && !m_cControl.jobOf(m_nTask)) {
        pcPage = new FlowPage(*pcTask);
        m_mapPage.insert(pcTask, pcPage);
        m_pcPages->addWidget(pcPage);
        pcPage->setTabOrderBehind(m_pcRun);
        connect(pcTask, &QObject::destroyed, this, [this](QObject *pcGone) {
            FlowPage *pcLeft = m_mapPage.take(pcGone);
            m_pcPages->removeWidget(pcLeft);
            pcLeft->deleteLater(); // not at once: the task still forgets its widgets
        });
        connect(pcPage, &FlowPage::edited, this, [this, pcPage](const QString &strWhat) {
            if (page() == pcPage)
                m_cDocument.noticeEdit(m_nTask, strWhat);
        });
        // The switch is a cell that must outlive its own click.
        connect(
            &pcPage->steps(), &StepTable::stepSwitched, this,
            [this](int nStep, bool bOn) { m_cDocument.switchStep(m_nTask, nStep, bOn); },
            Qt::QueuedConnection);
        connect(pcPage, &FlowPage::ranHere, this, [this, pcPage] { emit ranHere(pcPage->task()); });
        connect(&pcPage->steps(), &StepTable::configurationWanted, this, &FlowPane::configureStep);
        connect(pcPage->steps().table(), &QTableWidget::itemSelectionChanged, this, &FlowPane::enableActions);
    }
    m_pcNote->setText(pcTask ? tr("Just a moment…")
                             : tr("No task yet.\nAdd one in the list of tasks, or open a tasks file."));
    m_pcPages->setCurrentWidget(pcPage ? static_cast<QWidget *>(pcPage) : m_pcNote);
}

void FlowPane::refresh()
{
    showPage();
    TaskInfo *pcTask = Document::task(m_nTask);
    const auto eJob = m_cControl.jobOf(m_nTask);
    const bool bRuns = pcTask && pcTask->IsRunning();
    m_pcName->setText(pcTask ? pcTask->getName() : QString());
    m_pcRun->setVisible(pcTask != nullptr);
    m_pcRun->setText(bRuns ? tr("Stop") : tr("Run"));
    m_pcRun->setIcon(bRuns ? m_cStopIcon : m_cRunIcon);
    m_pcRun->setToolTip(bRuns ? tr("Stop the task; its present run ends first")
                              : tr("Run the flow again and again"));
    m_pcRun->setEnabled(!eJob);
    if (FlowPage *pcPage = page()) {
        pcPage->refresh(m_nTask, eJob.has_value());
        if (!eJob && !bRuns)
            m_cDocument.noticeEdit(m_nTask);
    }
    enableActions();
}

bool FlowPane::mayEdit() const
{
    return page() && m_cDocument.isIdle(m_nTask);
}

int FlowPane::selectedStep() const
{
    return page() ? page()->steps().selectedStep() : -1;
}

void FlowPane::enableActions()
{
    const bool bEdit = mayEdit();
    const int nStep = selectedStep();
    const bool bStep = bEdit && nStep >= 0;
    m_pcAdd->setEnabled(bEdit);
    for (QAction *pcAction : {m_pcConfigure, m_pcDelete, m_pcSwitch, m_pcHere})
        pcAction->setEnabled(bStep);
    m_pcUp->setEnabled(bStep && nStep > 0);
    m_pcDown->setEnabled(bStep && nStep + 1 < page()->steps().table()->rowCount());
}

void FlowPane::flowChanged(int nTask)
{
    if (FlowPage *pcPage = m_mapPage.value(Document::task(nTask)))
        pcPage->fill();
    refresh();
}

void FlowPane::addStep()
{
    QTableWidget *pcTable = page()->steps().table();
    const int nRow = selectedStep();
    const int nY = nRow < 0 ? 0 : pcTable->rowViewportPosition(nRow) + pcTable->rowHeight(nRow);
    page()->task()->showContextmenu(pcTable->viewport()->pos() + QPoint(60, nY - MENU_OFFSET));
    emit page()->menuOpened();
}

void FlowPane::configureStep()
{
    if (!mayEdit())
        return;
    showBusyCursor();
    page()->task()->modifyOption();
    m_cDocument.noticeEdit(m_nTask, tr("configure step"));
}

void FlowPane::deleteStep()
{
    page()->task()->delArithm();
}

void FlowPane::moveStep(int nBy)
{
    const int nStep = selectedStep();
    m_cDocument.moveStep(m_nTask, nStep, nStep + nBy);
    page()->steps().select(nStep + nBy);
}

void FlowPane::switchStep()
{
    const int nStep = selectedStep();
    const QList<TaskItem> &lstStep = qAsConst(*page()->task()).m_lstArithm;
    if (nStep < 0 || nStep >= lstStep.size()) // deleted since the action was enabled
        return;
    const bool bOff = lstStep[nStep].m_nMaxExeTimes == 0;
    m_cDocument.switchStep(m_nTask, nStep, bOff);
}

void FlowPane::runHere()
{
    showBusyCursor();
    TaskInfo *pcTask = page()->task();
    pcTask->runHere();
    if (page()->task() == pcTask)
        emit ranHere(pcTask);
    refresh();
}

void FlowPane::runOrStop()
{
    const TaskInfo *pcTask = Document::task(m_nTask);
    if (!pcTask || m_cControl.jobOf(m_nTask))
        return;
    m_cDocument.noticeEdit(m_nTask);
    m_cControl.post(pcTask->IsRunning() ? Control::Action::Stop : Control::Action::Start, m_nTask);
}
