#include "taskMgr/taskMgr.h"

#include <algorithm>
#include <functional>
#include <utility>

#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTableWidget>

#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithmregister.h"
#include "arithmMgr/arithms.h"
#include "arithmparammgr.h"
#include "guithread.h"
#include "logging.h"
#include "sharedfield.h"
#include "taskMgr/flowtable.h"
#include "taskMgr/taskhold.h"
#include "taskMgr/taskrecord.h"
#include "taskMgr/taskwidgets.h"

namespace
{
constexpr int EDITOR_TIMEOUT_MS = 10000; ///< for a run that prepares or tries the flow
constexpr int MENU_OFFSET = 20;          ///< pixels below the point that was asked for
constexpr int WHOLE_FLOW = -1;

QTableWidget *tableOf(const TaskInfo &cTask)
{
    return qobject_cast<QTableWidget *>(cTask.m_pcTaskFlow);
}

/// Row of the first selected item; -1 when there is none.
int selectedRow(const TaskInfo &cTask)
{
    const QTableWidget *pcTable = tableOf(cTask);
    const QList<QTableWidgetItem *> lstSelected =
        pcTable ? pcTable->selectedItems() : QList<QTableWidgetItem *>();
    return lstSelected.isEmpty() ? -1 : lstSelected.constFirst()->row();
}

int showBox(const TaskInfo &cTask, QMessageBox::Icon eIcon, const QString &strText,
            QMessageBox::StandardButtons eButtons, QMessageBox::StandardButton eDefault)
{
    if (!isGuiThread()) {
        qCWarning(lcTask, "%s", qUtf8Printable(strText));
        return QMessageBox::NoButton;
    }
    // Not of the table itself: a host that starts the task meanwhile disables that with all that is its
    // own, and nobody could answer. On the heap: the box goes with its parent.
    const QTableWidget *pcTable = tableOf(cTask);
    QPointer<QMessageBox> pcBox = new QMessageBox(eIcon, QStringLiteral("Warning"), strText, eButtons,
                                                  pcTable ? pcTable->parentWidget() : nullptr);
    pcBox->setDefaultButton(eDefault);
    const int nPressed = pcBox->exec();
    delete pcBox;
    return nPressed;
}

void warn(const TaskInfo &cTask, const QString &strText)
{
    showBox(cTask, QMessageBox::Information, strText, QMessageBox::Ok, QMessageBox::Ok);
}

/// Whether the task may be edited with the algorithms at hand. Making their registry may open a box
/// about a plug-in, and the host's timers may do anything to the task meanwhile.
bool mayEditWithArithms(const TaskHold &cHold)
{
    ArithmFactory::getInstance();
    return cHold.mayEdit();
}

/// Fills the store with what the steps before the given one leave there, so that the dialog of that
/// step finds it. A run that fails is told before the source stops, as the run has left it.
void prepareStore(TaskInfo &cTask, const TaskHold &cHold, int nStep,
                  const std::function<void(const QString &)> &fnTell)
{
    QString strMsg;
    bool bDone = true;
    const int nStarted = cTask.m_pcDS ? cTask.m_pcDS->m_nInstanceID : 0;
    {
        const CallersRun cCallersRun(cTask);
        if (cTask.m_pcDS)
            cTask.m_pcDS->start();
        if (nStep != 0)
            bDone = cTask.runOnce(strMsg, true, nStep == WHOLE_FLOW ? -1 : nStep - 1, EDITOR_TIMEOUT_MS);
        else if (cTask.m_pcDS)
            cTask.m_pcDS->execute();
    }
    if (!bDone && !strMsg.isEmpty())
        fnTell(strMsg);
    // A host may have started the task meanwhile, whose source it is then, or deleted either.
    if (!cHold.isIdle() || !cTask.m_pcDS || cTask.m_pcDS->m_nInstanceID != nStarted)
        return;
    const CallersRun cCallersRun(cTask);
    cTask.m_pcDS->stop();
}

/// The config string that the user gives a step, after the store was filled for it; empty when
/// cancelled.
QString configFromWindow(TaskInfo &cTask, const TaskHold &cHold, const TaskItem &cItem, int nStep)
{
    Arithm *pcArithm = ArithmMgr::getInstance()->getArithm(cItem.m_strArithmID);
    if (!pcArithm) {
        warn(cTask, QStringLiteral("Arithm is not finded."));
        return QString();
    }
    cTask.m_pcAPM->clean();
    prepareStore(cTask, cHold, nStep, [&cTask](const QString &strMsg) { warn(cTask, strMsg); });
    return cHold.mayEdit() ? pcArithm->showConfigWindow(cItem.m_strOptionStr, cTask.m_pcAPM) : QString();
}

/// Gives a step its new config string, unless it is not there any more: a plug-in's window need not keep
/// the host from editing the flow.
void configure(TaskInfo &cTask, int nStep, const TaskItem &cOld, const QString &strConfig)
{
    if (nStep >= cTask.m_lstArithm.size())
        return;
    TaskItem &cItem = cTask.m_lstArithm[nStep];
    if (cItem.m_strArithmID == cOld.m_strArithmID && cItem.m_strOptionStr == cOld.m_strOptionStr)
        cItem.m_strOptionStr = strConfig;
}

void callBack(void (*fnCallBack)(QString), const QString &strText)
{
    if (fnCallBack)
        fnCallBack(strText);
}

void setIndexFrom1(QObject *pcCombo, int nIndex)
{
    if (nIndex >= 1)
        inWidgetThread<QComboBox>(pcCombo, [nIndex](QComboBox *pcBox) { pcBox->setCurrentIndex(nIndex); });
}

/// Keeps the task's menu while one of its actions is at work: Qt's code for the menu stands further up the
/// stack, and the host may delete the table, whose child the menu is, or the task meanwhile.
class MenuHold
{
public:
    explicit MenuHold(TaskInfo &cTask)
        : m_pcTask(&cTask),
          m_pcRecord(TaskRecord::of(&cTask)),
          m_pcMenu(cTask.m_pcMenu),
          m_pcTable(m_pcMenu ? m_pcMenu->parentWidget() : nullptr),
          m_bTaken(m_pcTable)
    {
        if (!m_bTaken)
            return;
        m_pcRecord->m_bMenuHeld = true;
        m_pcMenu->setParent(nullptr, m_pcMenu->windowFlags());
    }
    ~MenuHold()
    {
        if (!m_bTaken)
            return;
        m_pcRecord->m_bMenuHeld = false;
        if (m_pcMenu && !m_pcTask)
            m_pcMenu->deleteLater();
        else if (m_pcMenu && m_pcTable)
            m_pcMenu->setParent(m_pcTable, m_pcMenu->windowFlags());
    }
    MenuHold(const MenuHold &) = delete;
    MenuHold &operator=(const MenuHold &) = delete;

private:
    const QPointer<TaskInfo> m_pcTask;
    const std::shared_ptr<TaskRecord> m_pcRecord;
    const QPointer<QMenu> m_pcMenu;
    const QPointer<QWidget> m_pcTable;
    const bool m_bTaken; ///< not where another action is at work further up the stack
};

/// Stores the host's widget in the task, which forgets it when the widget is deleted first.
void attach(TaskInfo &cTask, QObject *TaskInfo::*pcMember, QObject *pcWidget)
{
    cTask.*pcMember = pcWidget;
    if (!pcWidget)
        return;
    const auto fnForget = [&cTask, pcMember](QObject *pcGone) {
        if (cTask.*pcMember == pcGone)
            cTask.*pcMember = nullptr;
    };
    // At once, also when the task lives on a thread without an event loop.
    QObject::connect(pcWidget, &QObject::destroyed, &cTask, fnForget, Qt::DirectConnection);
}
} // namespace

void insertFlowRow(QObject *pcTable, int nRow, const TaskItem &cItem)
{
    inWidgetThread<QTableWidget>(pcTable, [nRow, cItem](QTableWidget *pcFlow) {
        const int nAt = nRow < 0 ? pcFlow->rowCount() : std::min(nRow, pcFlow->rowCount());
        pcFlow->insertRow(nAt);
        const QString strTexts[] = {cItem.m_strDescribe.isEmpty() ? cItem.m_strArithmName
                                                                  : cItem.m_strDescribe,
                                    QString::number(cItem.m_nMaxExeTimes), QString()};
        // The host's table may have fewer columns.
        for (int nColumn = 0; nColumn < std::min(3, pcFlow->columnCount()); ++nColumn) {
            auto *pcCell = new QTableWidgetItem(strTexts[nColumn]);
            if (nColumn == 0)
                pcCell->setToolTip(cItem.m_strArithmName);
            if (nColumn == 2)
                pcCell->setFlags(pcCell->flags() & ~Qt::ItemIsEditable);
            pcFlow->setItem(nAt, nColumn, pcCell);
        }
    });
}

void TaskInfo::addRunTaskButton(QObject *pcButton)
{
    attach(*this, &TaskInfo::m_pcRunTask, pcButton);
}

void TaskInfo::addViewSelectCombo(QObject *pcCombo)
{
    attach(*this, &TaskInfo::m_pcViewSelect, pcCombo);
    setIndexFrom1(pcCombo, m_nWhichView);
}

void TaskInfo::addThreadSelectCombo(QObject *pcCombo)
{
    attach(*this, &TaskInfo::m_pcThreadSelect, pcCombo);
    setIndexFrom1(pcCombo, m_nWhichKernel);
}

void TaskInfo::addSelectDataSourceButton(QObject *pcButton)
{
    attach(*this, &TaskInfo::m_pcDataSource, pcButton);
}

void TaskInfo::addTaskFlowListWidget(QObject *pcTable)
{
    attach(*this, &TaskInfo::m_pcTaskFlow, pcTable);
}

void TaskInfo::connectEvents()
{
    // By name: a host may attach any object that has these signals.
    if (m_pcRunTask)
        connect(m_pcRunTask, SIGNAL(clicked()), this, SLOT(RunClicked()));
    if (m_pcViewSelect)
        connect(m_pcViewSelect, SIGNAL(currentIndexChanged(int)), this, SLOT(ViewSelected(int)));
    if (m_pcThreadSelect)
        connect(m_pcThreadSelect, SIGNAL(currentIndexChanged(int)), this, SLOT(ThreadSelected(int)));
    if (m_pcDataSource)
        connect(m_pcDataSource, SIGNAL(clicked()), this, SLOT(DataSourceClicked()));
    if (!m_pcTaskFlow)
        return;
    if (auto *pcWidget = qobject_cast<QWidget *>(m_pcTaskFlow))
        pcWidget->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_pcTaskFlow, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showContextmenu(QPoint)));
    connect(m_pcTaskFlow, SIGNAL(cellChanged(int, int)), this, SLOT(TaskFlowTblCellChanged(int, int)));
    connect(m_pcTaskFlow, SIGNAL(itemPressed(QTableWidgetItem *)), this,
            SLOT(TableItemClicked(QTableWidgetItem *)));
}

void TaskInfo::disconnectEvents()
{
    // From all receivers. The core combo box and the table's cells and presses stay connected on
    // purpose: a host that has taken the events off may still edit the steps and the core. (A combo
    // box of the host's own may have the signal without a number; Qt warns where there is none.)
    if (m_pcRunTask)
        disconnect(m_pcRunTask, SIGNAL(clicked()), nullptr, nullptr);
    if (m_pcViewSelect)
        disconnect(m_pcViewSelect, SIGNAL(currentIndexChanged(int)), nullptr, nullptr);
    if (m_pcThreadSelect && m_pcThreadSelect->metaObject()->indexOfSignal("currentIndexChanged()") >= 0)
        disconnect(m_pcThreadSelect, SIGNAL(currentIndexChanged()), nullptr, nullptr);
    if (m_pcDataSource)
        disconnect(m_pcDataSource, SIGNAL(clicked()), nullptr, nullptr);
    if (m_pcTaskFlow)
        disconnect(m_pcTaskFlow, SIGNAL(customContextMenuRequested(QPoint)), nullptr, nullptr);
}

void TaskInfo::showContextmenu(QPoint cPos)
{
    if (!isGuiThread())
        return;
    const QPointer<TaskInfo> pcThis(this);
    ArithmFactory::getInstance(); // may open a box
    QTableWidget *pcTable = pcThis ? tableOf(*this) : nullptr;
    if (!pcTable || m_hThread != 0)
        return;
    if (!m_pcMenu) {
        m_pcMenu = new QMenu(pcTable);
        connect(m_pcMenu, &QObject::destroyed, this, [this] {
            m_pcMenu = nullptr;
            m_mapArithm.clear();
        });
        QMenu *const apcKind[] = {m_pcMenu->addMenu(QStringLiteral("添加算法")),
                                  m_pcMenu->addMenu(QStringLiteral("添加扩展算法"))};
        ArithmMgr *pcArithms = ArithmMgr::getInstance();
        for (const QString &strClass : pcArithms->getArithmClassNames()) {
            QMenu *apcClass[] = {nullptr, nullptr};
            for (const QString &strName : pcArithms->getArithmNames(strClass)) {
                TaskItem cItem;
                cItem.m_strArithmID = pcArithms->getArithm(strClass, strName);
                cItem.m_strClassName = strClass;
                cItem.m_strArithmName = strName;
                Arithm *pcArithm = pcArithms->getArithm(cItem.m_strArithmID);
                if (!pcArithm)
                    continue;
                const int nKind = pcArithm->IsExtLib() ? 1 : 0;
                if (!apcClass[nKind]) {
                    apcClass[nKind] = apcKind[nKind]->addMenu(strClass);
                    connect(apcClass[nKind], &QMenu::triggered, this, &TaskInfo::addArithm);
                }
                m_mapArithm.insert(apcClass[nKind]->addAction(strName), cItem);
            }
        }
        m_pcMenu->addSeparator();
        m_pcMenu->addAction(QStringLiteral("修改配置"), this, &TaskInfo::modifyOption);
        m_pcMenu->addAction(QStringLiteral("删除"), this, &TaskInfo::delArithm);
        m_pcMenu->addSeparator();
        m_pcMenu->addAction(QStringLiteral("执行到选中算法"), this, &TaskInfo::runHere);
    }
    if (!m_pcMenu->parent() && !TaskRecord::of(this)->m_bMenuHeld) // the table of before has gone
        m_pcMenu->setParent(pcTable, m_pcMenu->windowFlags());
    m_pcMenu->popup(pcTable->mapToGlobal(cPos + QPoint(0, MENU_OFFSET)));
}

void TaskInfo::addArithm(QAction *pcAction)
{
    const MenuHold cMenuHold(*this);
    const int nRow = selectedRow(*this);
    if (nRow >= 0) {
        insertArithm(nRow, pcAction);
        return;
    }
    const TaskHold cHold(*this);
    if (!mayEditWithArithms(cHold))
        return;
    TaskItem cItem = m_mapArithm.value(pcAction);
    cItem.m_strOptionStr = configFromWindow(*this, cHold, cItem, WHOLE_FLOW);
    if (cItem.m_strOptionStr.isEmpty() || !cHold.mayEdit())
        return;
    m_lstArithm.append(cItem);
    insertFlowRow(m_pcTaskFlow, -1, cItem);
}

void TaskInfo::insertArithm(int nRow, QAction *pcAction)
{
    const TaskHold cHold(*this);
    if (!mayEditWithArithms(cHold) || nRow < 0 || nRow >= m_lstArithm.size())
        return;
    TaskItem cItem = m_mapArithm.value(pcAction);
    cItem.m_strOptionStr = configFromWindow(*this, cHold, cItem, nRow);
    if (cItem.m_strOptionStr.isEmpty() || !cHold.mayEdit() || nRow > m_lstArithm.size())
        return;
    m_lstArithm.insert(nRow, cItem);
    insertFlowRow(m_pcTaskFlow, nRow, cItem);
}

void TaskInfo::delArithm()
{
    const MenuHold cMenuHold(*this);
    const TaskHold cHold(*this);
    if (!cHold.mayEdit())
        return;
    if (selectedRow(*this) < 0) {
        warn(*this, QStringLiteral("No arithm have been selected."));
        return;
    }
    const int nAnswer =
        showBox(*this, QMessageBox::Question,
                QStringLiteral("Would you like to delete the arithm? It can not be recover after delete."),
                QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    const int nRow = cHold.mayEdit() ? selectedRow(*this) : -1;
    if (nAnswer != QMessageBox::Yes || nRow < 0)
        return;
    if (nRow < m_lstArithm.size()) {
        prepareForRemoveArithm(m_lstArithm.at(nRow));
        m_lstArithm.removeAt(nRow);
    }
    QTableWidget *pcTable = tableOf(*this);
    for (int nColumn = 0; nColumn < pcTable->columnCount(); ++nColumn)
        if (pcTable->item(nRow, nColumn) == m_pcLastSelectedItem)
            m_pcLastSelectedItem = nullptr;
    pcTable->removeRow(nRow);
}

void TaskInfo::prepareForRemoveArithm(TaskItem) {}

void TaskInfo::modifyOption()
{
    const MenuHold cMenuHold(*this);
    const TaskHold cHold(*this);
    if (!mayEditWithArithms(cHold))
        return;
    const int nRow = selectedRow(*this);
    if (nRow < 0) {
        warn(*this, QStringLiteral("No arithm have been selected."));
        return;
    }
    if (nRow >= m_lstArithm.size()) {
        warn(*this, QStringLiteral("Serious error, arithm num is not equal with arithm list，"
                                   "please reconfig this task."));
        return;
    }
    const TaskItem cItem = m_lstArithm.at(nRow);
    if (!ArithmMgr::getInstance()->getArithm(cItem.m_strArithmID)) {
        warn(*this, QStringLiteral("No arithm have been selected, please delete it."));
        return;
    }
    const QString strConfig = configFromWindow(*this, cHold, cItem, nRow);
    if (!strConfig.isEmpty() && cHold.mayEdit())
        configure(*this, nRow, cItem, strConfig);
}

QString TaskInfo::showConfigWindow(int nArithmPos)
{
    const TaskHold cHold(*this);
    if (!mayEditWithArithms(cHold) || nArithmPos < 0 || nArithmPos >= m_lstArithm.size())
        return QString();
    const TaskItem cItem = m_lstArithm.at(nArithmPos);
    Arithm *pcArithm = ArithmMgr::getInstance()->getArithm(cItem.m_strArithmID);
    if (!pcArithm) {
        callBack(m_fnHaveErrorMessage, QStringLiteral("Arithm is not finded, please delete this arithm."));
        return QString();
    }
    const auto fnHaveErrorMessage = m_fnHaveErrorMessage;
    prepareStore(*this, cHold, nArithmPos,
                 [&](const QString &strMsg) { callBack(fnHaveErrorMessage, strMsg); });
    if (!cHold.mayEdit())
        return QString();
    const QString strConfig = pcArithm->showConfigWindow(cItem.m_strOptionStr, m_pcAPM);
    if (strConfig.startsWith(QLatin1String("ERR:")))
        callBack(fnHaveErrorMessage, strConfig);
    else if (!strConfig.isEmpty() && cHold.mayEdit())
        configure(*this, nArithmPos, cItem, strConfig);
    return QString();
}

void TaskInfo::selectDataSource()
{
    const TaskHold cHold(*this);
    if (!cHold.mayEdit())
        return;
    QString strConfig = m_strDataSourceConfigString;
    DataSource::DataSourceInstance *pcDS = DataSource::getInstance()->newDataSource(m_pcAPM, strConfig);
    if (!pcDS)
        return;
    if (!cHold.mayEdit()) {
        delete pcDS;
        return;
    }
    m_strDataSourceConfigString = strConfig;
    delete std::exchange(m_pcDS, pcDS); // it may let events through, and the host start the task
}

void TaskInfo::DataSourceClicked()
{
    selectDataSource();
}

void TaskInfo::runHere()
{
    const MenuHold cMenuHold(*this);
    const TaskHold cHold(*this);
    if (!cHold.mayEdit())
        return;
    const int nRow = selectedRow(*this);
    if (nRow < 0) {
        warn(*this, QStringLiteral("No arithm is selected."));
        return;
    }
    QString strMsg;
    prepareStore(*this, cHold, nRow + 1, [&strMsg](const QString &strFailure) { strMsg = strFailure; });
    if (!strMsg.isEmpty())
        warn(*this, strMsg);
}

void TaskInfo::TaskFlowTblCellChanged(int nRow, int nColumn)
{
    const QTableWidget *pcTable = tableOf(*this);
    const QTableWidgetItem *pcCell = pcTable ? pcTable->item(nRow, nColumn) : nullptr;
    if (!pcCell || nRow < 0 || nRow >= m_lstArithm.size())
        return;
    if (!TaskRecord::of(this)->isBusy())
        m_lstArithm.detach();
    // In place: a cell that is being edited hands its text over when the start of the task disables
    // the table, and the task's thread is in the list by then.
    auto &cItem = const_cast<TaskItem &>(qAsConst(m_lstArithm).at(nRow));
    bool bNumber = false;
    const int nTimes = pcCell->text().toInt(&bNumber);
    if (nColumn == 0)
        cItem.m_strDescribe = pcCell->text();
    else if (nColumn == 1 && bNumber)
        SharedField::store(cItem.m_nMaxExeTimes, nTimes);
}

void TaskInfo::TableItemClicked(QTableWidgetItem *pcItem)
{
    QTableWidget *pcTable = tableOf(*this);
    if (!pcTable)
        return;
    if (pcItem != m_pcLastSelectedItem) {
        m_pcLastSelectedItem = pcTable->selectedItems().value(0);
        return;
    }
    m_pcLastSelectedItem = nullptr;
    pcTable->clearSelection();
}
