#include "flowpage.h"

#include <utility>

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QThread>
#include <QTimer>

#include "OculinexQTStandAloneInQt.h"
#include "globalfunction.h"
#include "icons.h"
#include "steptable.h"

namespace
{
constexpr int VIEWS = 4;           ///< that a task may draw into
constexpr int CORE_LIMIT = 1024;   ///< beyond it, threads aren't pinned
constexpr int LAST_OF_LIBRARY = 2; ///< column of the flow that the library fills

QString sourceName(const TaskInfo &cTask)
{
    const QString strName = GlobalFunction::getBody(cTask.m_strDataSourceConfigString,
                                                    QStringLiteral("<DSName>"), QStringLiteral("</DSName>"));
    if (strName.isEmpty())
        return FlowPage::tr("none");
    return cTask.m_pcDS ? strName : FlowPage::tr("%1 (can't be made)").arg(strName);
}
} // namespace

void showBusyCursor()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QTimer::singleShot(0, [] { QApplication::restoreOverrideCursor(); });
}

FlowPage::FlowPage(TaskInfo &cTask, QWidget *pcParent)
    : QWidget(pcParent),
      m_pcTask(&cTask),
      m_pcView(new QComboBox),
      m_pcCore(new QComboBox),
      m_pcSource(new QPushButton(icon(Icon::Source), tr("Data source…"))),
      m_pcSourceName(new QLabel),
      m_pcHead(new QWidget),
      m_pcSteps(new StepTable)
{
    m_pcView->setObjectName(QStringLiteral("view"));
    m_pcView->setToolTip(tr("The view that the task draws into"));
    for (int nView = 0; nView < VIEWS; ++nView)
        m_pcView->addItem(tr("View %1").arg(nView));
    m_pcCore->setObjectName(QStringLiteral("core"));
    m_pcCore->setToolTip(tr("The core of the processor that the task's thread stays on"));
    m_pcCore->addItem(tr("Any core"));
    const int nOwn = cTask.m_nWhichKernel < CORE_LIMIT ? cTask.m_nWhichKernel : 0;
    for (int nCore = 1; nCore <= std::max(QThread::idealThreadCount() - 1, nOwn); ++nCore)
        m_pcCore->addItem(tr("Core %1").arg(nCore));
    m_pcSource->setObjectName(QStringLiteral("source"));
    m_pcSource->setToolTip(tr("Choose where the task's pictures come from"));
    m_pcSourceName->setTextFormat(Qt::PlainText);

    auto *pcHead = new QHBoxLayout(m_pcHead);
    pcHead->setContentsMargins(0, 0, 0, 0);
    pcHead->addWidget(m_pcSource);
    pcHead->addWidget(m_pcSourceName, 1);
    pcHead->addWidget(m_pcView);
    pcHead->addWidget(m_pcCore);
    auto *pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    pcLayout->setSpacing(6);
    pcLayout->addWidget(m_pcHead);
    pcLayout->addWidget(m_pcSteps);
    fill();
    bind();
}

void FlowPage::bind()
{
    QTableWidget *pcTable = m_pcSteps->table();
    m_pcTask->addViewSelectCombo(m_pcView);
    m_pcTask->addThreadSelectCombo(m_pcCore);
    m_pcTask->addSelectDataSourceButton(m_pcSource);
    m_pcTask->addTaskFlowListWidget(pcTable);
    m_pcTask->connectEvents();
    if (m_pcTask->IsRunning())
        for (QWidget *pcWidget : {static_cast<QWidget *>(m_pcView), static_cast<QWidget *>(m_pcCore),
                                  static_cast<QWidget *>(m_pcSource), static_cast<QWidget *>(pcTable)})
            pcWidget->setEnabled(false);

    // Behind the task's own slots, which are connected by now.
    const auto fnIndexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
    const auto fnEdited = [this] { emit edited(); };
    connect(m_pcView, fnIndexChanged, this, fnEdited);
    connect(m_pcCore, fnIndexChanged, this, fnEdited);
    connect(m_pcSource, &QPushButton::clicked, this, fnEdited);
    // The library changes the flow before the table when it adds and removes steps. A step that it adds is
    // whole with the last cell, since the first ones describe it.
    connect(pcTable->model(), &QAbstractItemModel::rowsInserted, this,
            [this, pcTable] { m_bAdding = !pcTable->signalsBlocked(); });
    connect(pcTable, &QTableWidget::cellChanged, this, [this](int, int nColumn) {
        if (!m_bAdding || nColumn == LAST_OF_LIBRARY)
            emit edited(std::exchange(m_bAdding, false) ? tr("add step") : QString());
    });
    connect(pcTable->model(), &QAbstractItemModel::rowsRemoved, this,
            [this] { emit edited(tr("delete step")); });
    connect(pcTable, &QWidget::customContextMenuRequested, this, &FlowPage::menuOpened);
    connect(this, &FlowPage::menuOpened, this, [this] {
        if (!m_pcTask || m_pcMenu == m_pcTask->m_pcMenu)
            return;
        m_pcMenu = m_pcTask->m_pcMenu;
        // An entry that was chosen is at work right after the menu has gone.
        connect(m_pcMenu, &QMenu::aboutToHide, this, [] { showBusyCursor(); });
        // The last entry runs to the selected step; the task's slot comes first.
        connect(m_pcMenu->actions().constLast(), &QAction::triggered, this, &FlowPage::ranHere);
    });
}

void FlowPage::setTabOrderBehind(QWidget *pcBefore)
{
    for (QWidget *pcNext : {static_cast<QWidget *>(m_pcSource), static_cast<QWidget *>(m_pcView),
                            static_cast<QWidget *>(m_pcCore), static_cast<QWidget *>(m_pcSteps->table())})
        setTabOrder(std::exchange(pcBefore, pcNext), pcNext);
}

void FlowPage::fill()
{
    m_pcTask->m_pcLastSelectedItem = nullptr;
    m_pcSteps->fill(qAsConst(*m_pcTask).m_lstArithm);
}

void FlowPage::refresh(int nTask, bool bBusy)
{
    TaskStatus cStatus;
    if (!m_pcTask || !getTaskStatus(nTask, cStatus))
        return;
    m_pcHead->setEnabled(!bBusy);
    m_pcSteps->setBusy(bBusy);
    m_pcSourceName->setText(sourceName(*m_pcTask));
    m_pcSteps->showFigures(qAsConst(*m_pcTask).m_lstArithm, cStatus);
}
