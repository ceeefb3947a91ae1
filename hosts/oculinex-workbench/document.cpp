#include "document.h"

#include <algorithm>
#include <memory>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include "OculinexQTStandAloneInQt.h"
#include "common/taskcheck.h"
#include "control.h"
#include "globalfunction.h"
#include "sidefile.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr int UNDO_LIMIT = 500;
const QString KEY_OPERATOR = QStringLiteral("operator"); ///< of a step, and of the panes
const QString NAME_BEGIN = QStringLiteral("<-TaskName->");
const QString NAME_END = QStringLiteral("</-TaskName->");

QString withName(const QString &strTaskText, const QString &strName)
{
    QString strText = strTaskText;
    GlobalFunction::getAndRemoveBody(strText, NAME_BEGIN, NAME_END);
    return NAME_BEGIN + strName + NAME_END + strText;
}
} // namespace

/// One edit: all tasks before and after it. The texts are shared, so that only what differs costs.
class EditCommand : public QUndoCommand
{
public:
    EditCommand(Document &cDocument, QList<TaskState> lstBefore, QList<TaskState> lstAfter,
                const QString &strWhat)
        : QUndoCommand(strWhat),
          m_cDocument(cDocument),
          m_lstBefore(std::move(lstBefore)),
          m_lstAfter(std::move(lstAfter))
    {
    }
    void undo() override { m_cDocument.apply(m_lstBefore); }
    void redo() override { m_cDocument.apply(m_lstAfter); }

    Document &m_cDocument;
    const QList<TaskState> m_lstBefore;
    const QList<TaskState> m_lstAfter;
};

Document::Document(const Control &cControl) : m_cControl(cControl)
{
    init();
    m_cUndo.setUndoLimit(UNDO_LIMIT);
    connect(&m_cUndo, &QUndoStack::indexChanged, this, &Document::stateChanged);
}

Document::~Document()
{
    if (!m_cControl.isAbandoned()) // else the end of the process sees to them
        TaskMgr::getInstance()->clear();
}

QString Document::name() const
{
    return m_strPath.isEmpty() ? tr("Untitled") : QFileInfo(m_strPath).fileName();
}

TaskInfo *Document::task(int nTask)
{
    return TaskMgr::getInstance()->getTask(nTask);
}

QStringList Document::taskNames() const
{
    QStringList lstName;
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        lstName.append(task(nTask)->getName());
    return lstName;
}

bool Document::isIdle(int nTask) const
{
    const TaskInfo *pcTask = task(nTask);
    return pcTask && !pcTask->IsRunning() && !m_cControl.jobOf(nTask);
}

bool Document::mayRearrange(int nTask) const
{
    for (int nLater = nTask; nLater < taskCount(); ++nLater)
        if (!isIdle(nLater))
            return false;
    return true;
}

void Document::readStates()
{
    m_lstState.clear();
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum(); ++nTask) {
        const QString strText = task(nTask)->toString();
        m_lstState.append({strText, QVector<QJsonObject>(stepCount(strText))});
    }
}

void Document::makeNew()
{
    TaskMgr::getInstance()->clear();
    m_strPath.clear();
    m_lstState.clear();
    m_lstSaved.clear();
    m_cPanes = {};
    m_cOperator = m_cSavedOperator = {};
    m_cUndo.clear();
    emit tasksChanged();
    emit stateChanged();
}

QString Document::open(const QString &strPath, QString &strWarning)
{
    QFile cFile(strPath);
    if (!cFile.open(QFile::ReadOnly)) // the library doesn't tell the reason
        return cFile.errorString();
    cFile.close();
    QByteArray achPath = strPath.toLocal8Bit();
    if (QString::fromLocal8Bit(achPath) != strPath)
        return tr("the path has characters that the locale lacks");
    const QString strError = QString::fromLocal8Bit(openTasksFile(achPath.data()));
    if (!strError.isEmpty())
        return strError;

    m_strPath = QFileInfo(strPath).absoluteFilePath();
    readStates();
    SideFile cSide;
    strWarning = cSide.read(m_strPath);
    for (int nTask = 0; nTask < std::min(taskCount(), cSide.m_lstTask.size()); ++nTask)
        if (cSide.m_lstTask[nTask].size() == m_lstState[nTask].m_lstStepSide.size())
            m_lstState[nTask].m_lstStepSide = cSide.m_lstTask[nTask];
    m_cPanes = cSide.m_cPanes;
    m_cOperator = m_cSavedOperator = m_cPanes.take(KEY_OPERATOR).toObject();
    m_lstSaved = m_lstState;
    m_cUndo.clear();
    emit tasksChanged();
    emit stateChanged();
    return {};
}

QStringList Document::findings() const
{
    QFile cFile(m_strPath);
    if (!cFile.open(QFile::ReadOnly))
        return {};
    int nTasks = 0;
    QStringList lstText;
    for (const Finding &cFinding : checkTasks(QString::fromUtf8(cFile.readAll().constData()), nTasks))
        lstText.append(findingText(cFinding));
    return lstText;
}

QString Document::save(const QString &strPath)
{
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        noticeEdit(nTask);
    const QByteArray achExpected = TaskMgr::getInstance()->toString().toUtf8();
    QString strError = QString::fromLocal8Bit(saveTasksFile(strPath.toUtf8().data()));
    QFile cFile(strPath);
    if (!cFile.open(QFile::ReadOnly))
        return strError.isEmpty() ? cFile.errorString() : strError;
    if (!strError.isEmpty())
        return strError;
    if (cFile.readAll() != achExpected)
        return tr("what stands in the file is not what was written");
    syncToDisk(strPath);

    SideFile cSide;
    for (const TaskState &cState : qAsConst(m_lstState))
        cSide.m_lstTask.append(cState.m_lstStepSide);
    cSide.m_cPanes = m_cPanes;
    if (!m_cOperator.isEmpty())
        cSide.m_cPanes[KEY_OPERATOR] = m_cOperator;
    strError = cSide.write(strPath);
    m_strPath = QFileInfo(strPath).absoluteFilePath();
    m_lstSaved = m_lstState;
    m_cSavedOperator = m_cOperator;
    emit stateChanged();
    return strError;
}

bool Document::mayApply(const QList<TaskState> &lstTarget) const
{
    for (int nTask = 0; nTask < taskCount(); ++nTask) {
        const bool bStays =
            nTask < lstTarget.size() && lstTarget[nTask].m_strText == m_lstState[nTask].m_strText;
        if (!bStays && !isIdle(nTask))
            return false;
    }
    return true;
}

void Document::apply(const QList<TaskState> &lstTarget)
{
    TaskMgr *pcManager = TaskMgr::getInstance();
    // Each task that a text of the target still fits is kept, at its place if possible.
    QVector<TaskInfo *> lstTask(lstTarget.size());
    QVector<TaskInfo *> lstLeft(taskCount());
    for (int nTask = 0; nTask < taskCount(); ++nTask) {
        const bool bStays =
            nTask < lstTarget.size() && lstTarget[nTask].m_strText == m_lstState[nTask].m_strText;
        (bStays ? lstTask : lstLeft)[nTask] = task(nTask);
    }
    for (int nTask = 0; nTask < lstTarget.size(); ++nTask)
        for (int nOld = 0; nOld < lstLeft.size() && !lstTask[nTask]; ++nOld)
            if (lstLeft[nOld] && m_lstState[nOld].m_strText == lstTarget[nTask].m_strText)
                std::swap(lstTask[nTask], lstLeft[nOld]);

    // What goes goes first: a new task may need the same camera. The manager deletes what stands at a
    // position of its own; one that is replaced there it leaves alone.
    for (int nOld = taskCount() - 1; nOld >= 0; --nOld) {
        if (!lstTask.contains(task(nOld)) && task(nOld))
            pcManager->removeTask(nOld);
    }
    for (int nTask = 0; nTask < lstTarget.size(); ++nTask) {
        if (!lstTask[nTask]) {
            lstTask[nTask] = new TaskInfo(QString(), nullptr);
            lstTask[nTask]->fromString(lstTarget[nTask].m_strText);
        }
        if (task(nTask) != lstTask[nTask])
            pcManager->addTask(lstTask[nTask], nTask);
    }
    for (int nOld = lstTarget.size(); nOld < taskCount(); ++nOld) {
        pcManager->addTask(nullptr, nOld);
        pcManager->removeTask(nOld);
    }
    m_lstState = lstTarget;
    emit tasksChanged();
    emit stateChanged();
}

void Document::edit(const QList<TaskState> &lstTarget, const QString &strWhat)
{
    if (mayApply(lstTarget))
        m_cUndo.push(new EditCommand(*this, m_lstState, lstTarget, strWhat));
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

void Document::note(int nTask, const TaskState &cState, const QString &strWhat)
{
    const QList<TaskState> lstBefore = m_lstState;
    m_lstState[nTask] = cState;
    // Pushing it applies it, which finds every task as it should be.
    const QSignalBlocker cBlocker(this);
    m_cUndo.push(new EditCommand(*this, lstBefore, m_lstState, strWhat));
}

void Document::noticeEdit(int nTask, const QString &strWhat)
{
    TaskInfo *pcTask = task(nTask);
    if (!pcTask || nTask >= taskCount())
        return;
    const QString strText = pcTask->toString();
    if (strText == m_lstState[nTask].m_strText)
        return;
    note(nTask, {strText, carryStepSide(m_lstState[nTask], strText)},
         strWhat.isEmpty() ? tr("edit of %1").arg(pcTask->getName()) : strWhat);
    emit stateChanged();
}

int Document::addTask(const QString &strName)
{
    QList<TaskState> lstTarget = m_lstState;
    lstTarget.append({TaskInfo(strName, nullptr).toString(), {}});
    edit(lstTarget, tr("add task"));
    return taskCount() - 1;
}

int Document::duplicateTask(int nTask)
{
    QList<TaskState> lstTarget = m_lstState;
    TaskState cCopy = m_lstState[nTask];
    cCopy.m_strText = withName(cCopy.m_strText, tr("%1 (copy)").arg(task(nTask)->getName()));
    lstTarget.append(cCopy);
    edit(lstTarget, tr("duplicate task"));
    return taskCount() - 1;
}

void Document::removeTask(int nTask)
{
    QList<TaskState> lstTarget = m_lstState;
    lstTarget.removeAt(nTask);
    edit(lstTarget, tr("remove task"));
}

void Document::moveTask(int nFrom, int nTo)
{
    if (std::min(nFrom, nTo) < 0 || std::max(nFrom, nTo) >= taskCount())
        return;
    QList<TaskState> lstTarget = m_lstState;
    lstTarget.move(nFrom, nTo);
    edit(lstTarget, tr("move task"));
}

bool Document::renameTask(int nTask, const QString &strName)
{
    if (!isIdle(nTask))
        return false;
    TaskInfo *pcTask = task(nTask);
    const QString strBefore = std::exchange(pcTask->m_strName, strName);
    if (GlobalFunction::getBody(pcTask->toString(), NAME_BEGIN, NAME_END) != strName ||
        strName.contains(QLatin1String("<="))) {
        pcTask->m_strName = strBefore;
        return false;
    }
    noticeEdit(nTask, tr("rename task"));
    emit tasksChanged();
    return true;
}

void Document::moveStep(int nTask, int nFrom, int nTo)
{
    if (!isIdle(nTask))
        return;
    noticeEdit(nTask);
    const int nSteps = m_lstState[nTask].m_lstStepSide.size();
    if (std::min(nFrom, nTo) < 0 || std::max(nFrom, nTo) >= nSteps)
        return;
    task(nTask)->getTaskItem().move(nFrom, nTo);
    TaskState cState{task(nTask)->toString(), m_lstState[nTask].m_lstStepSide};
    cState.m_lstStepSide.move(nFrom, nTo);
    note(nTask, cState, tr("move step"));
    emit flowChanged(nTask);
    emit stateChanged();
}

void Document::switchStep(int nTask, int nStep, bool bOn)
{
    if (!isIdle(nTask))
        return;
    noticeEdit(nTask);
    if (nStep < 0 || nStep >= m_lstState[nTask].m_lstStepSide.size())
        return;
    int &nLimit = task(nTask)->getTaskItem()[nStep].m_nMaxExeTimes;
    TaskState cState = m_lstState[nTask];
    QJsonObject &cSide = cState.m_lstStepSide[nStep];
    if (bOn == (nLimit != 0))
        return;
    if (bOn)
        nLimit = cSide.take(TaskState::KEY_LIMIT).toInt(-1);
    else
        cSide[TaskState::KEY_LIMIT] = std::exchange(nLimit, 0);
    cState.m_strText = task(nTask)->toString();
    note(nTask, cState, bOn ? tr("switch step on") : tr("switch step off"));
    emit flowChanged(nTask);
    emit stateChanged();
}

void Document::undo()
{
    if (!m_cUndo.canUndo())
        return;
    const auto *pcEdit = static_cast<const EditCommand *>(m_cUndo.command(m_cUndo.index() - 1));
    if (mayApply(pcEdit->m_lstBefore))
        m_cUndo.undo();
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

void Document::redo()
{
    if (!m_cUndo.canRedo())
        return;
    const auto *pcEdit = static_cast<const EditCommand *>(m_cUndo.command(m_cUndo.index()));
    if (mayApply(pcEdit->m_lstAfter))
        m_cUndo.redo();
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

OperatorSetup Document::operatorSetup() const
{
    OperatorSetup cSetup = OperatorSetup::fromJson(m_cOperator);
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        for (int nStep = 0; nStep < m_lstState[nTask].m_lstStepSide.size(); ++nStep) {
            QList<OperatorPick> lstPick;
            for (const QJsonValue cPick : m_lstState[nTask].m_lstStepSide[nStep][KEY_OPERATOR].toArray())
                lstPick.append(OperatorPick::fromJson(cPick.toObject()));
            if (!lstPick.isEmpty())
                cSetup.m_lstStep.append({nTask, nStep, lstPick});
        }
    return cSetup;
}

void Document::setOperatorSetup(const OperatorSetup &cSetup)
{
    QList<TaskState> lstState = m_lstState;
    for (TaskState &cState : lstState)
        for (QJsonObject &cSide : cState.m_lstStepSide)
            cSide.remove(KEY_OPERATOR);
    for (const OperatorSetup::Step &cStep : cSetup.m_lstStep) {
        QJsonArray cPicks;
        for (const OperatorPick &cPick : cStep.m_lstPick)
            cPicks.append(cPick.toJson());
        lstState[cStep.m_nTask].m_lstStepSide[cStep.m_nStep][KEY_OPERATOR] = cPicks;
    }
    if (OperatorSetup::fromJson(m_cOperator).toJson() != cSetup.toJson())
        m_cOperator = cSetup.toJson();
    if (lstState != m_lstState)
        edit(lstState, tr("choose what the operator sees"));
    emit stateChanged();
}
