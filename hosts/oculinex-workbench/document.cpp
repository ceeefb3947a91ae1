#include "document.h"

#include <algorithm>
#include <memory>
#include <numeric>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>

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

/// The config string of a data source that can't be made, which the library leaves out of the task's block.
QString lostSource(const TaskInfo &cTask)
{
    return cTask.m_pcDS ? QString() : cTask.m_strDataSourceConfigString.trimmed();
}

/// The task's block, with all that makes the task anew.
QString blockOf(TaskInfo &cTask)
{
    const QString strLost = lostSource(cTask);
    return (strLost.isEmpty() ? strLost : "<-DataSource->" + strLost + "</-DataSource->") + cTask.toString();
}

/// Why a text could not be saved, which the library doesn't tell; strError when it could be now.
QString withReason(const QString &strError, const QString &strPath, const QByteArray &achText)
{
    QSaveFile cFile(strPath); // leaves no trace
    bool bWritten = cFile.open(QFile::WriteOnly | QFile::Unbuffered);
    for (QByteArray achRest = achText; bWritten && !achRest.isEmpty();) {
        // A disk that fills up takes a part, and tells the reason at the rest.
        const qint64 nWritten = cFile.write(achRest);
        bWritten = nWritten > 0;
        achRest.remove(0, static_cast<int>(nWritten));
    }
    if (bWritten)
        return strError;
    return Document::tr("it could not be saved: %1").arg(cFile.errorString());
}

QByteArray sum(const QByteArray &achText)
{
    return QCryptographicHash::hash(achText, QCryptographicHash::Sha1);
}
} // namespace

/// One edit: all before and after it. The texts are shared, so that only what differs costs.
class EditCommand : public QUndoCommand
{
public:
    EditCommand(Document &cDocument, DocumentState cBefore, DocumentState cAfter, const QString &strWhat)
        : QUndoCommand(strWhat),
          m_cDocument(cDocument),
          m_cBefore(std::move(cBefore)),
          m_cAfter(std::move(cAfter))
    {
    }
    void undo() override { m_cDocument.apply(m_cBefore); }
    void redo() override { m_cDocument.apply(m_cAfter); }

    Document &m_cDocument;
    const DocumentState m_cBefore;
    const DocumentState m_cAfter;
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
    m_cState.m_lstTask.clear();
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum(); ++nTask) {
        const QString strText = blockOf(*task(nTask));
        m_cState.m_lstTask.append({strText, QVector<QJsonObject>(stepCount(strText))});
    }
}

void Document::makeNew()
{
    TaskMgr::getInstance()->clear();
    m_strPath.clear();
    m_cState = m_cSaved = {};
    m_cPanes = {};
    m_cUndo.clear();
    emit tasksChanged();
    emit stateChanged();
}

bool Document::wasChangedByOthers() const
{
    QFile cFile(m_strPath);
    return cFile.open(QFile::ReadOnly) && sum(cFile.readAll()) != m_achSum;
}

QString Document::read(const QString &strPath, QByteArray &achText)
{
    if (QFileInfo::exists(strPath) && !QFileInfo(strPath).isFile())
        return tr("this is no file");
    QFile cFile(strPath);
    if (!cFile.open(QFile::ReadOnly)) // the library doesn't tell the reason
        return cFile.errorString();
    achText = cFile.readAll();
    // Saving it would destroy what it is.
    if (!achText.trimmed().isEmpty() && !achText.toLower().contains("<=taskinfo=>"))
        return tr("it holds no task");
    if (QString::fromLocal8Bit(strPath.toLocal8Bit()) != strPath)
        return tr("the path has characters that the locale lacks");
    return {};
}

QString Document::open(const QString &strPath, QString &strWarning)
{
    QByteArray achText;
    QString strError = read(strPath, achText);
    if (strError.isEmpty())
        strError = QString::fromLocal8Bit(openTasksFile(strPath.toLocal8Bit().data()));
    if (!strError.isEmpty())
        return strError;

    m_strPath = QFileInfo(strPath).absoluteFilePath();
    m_achSum = sum(achText);
    readStates();
    SideFile cSide;
    strWarning = cSide.read(m_strPath);
    for (int nTask = 0; nTask < std::min(taskCount(), cSide.m_lstTask.size()); ++nTask)
        if (cSide.m_lstTask[nTask].size() == m_cState.m_lstTask[nTask].m_lstStepSide.size())
            m_cState.m_lstTask[nTask].m_lstStepSide = cSide.m_lstTask[nTask];
    m_cPanes = cSide.m_cPanes;
    m_cState.m_cOperator = m_cPanes.take(KEY_OPERATOR).toObject();
    m_cSaved = m_cState;
    m_cUndo.clear();
    emit tasksChanged();
    emit stateChanged();
    return {};
}

QStringList Document::findings(const QString &strPath)
{
    QFile cFile(strPath);
    if (!cFile.open(QFile::ReadOnly))
        return {};
    int nTasks = 0;
    QStringList lstText;
    for (const Finding &cFinding : checkTasks(QString::fromUtf8(cFile.readAll().constData()), nTasks))
        lstText.append(findingText(cFinding));
    return lstText;
}

QStringList Document::lostSources() const
{
    QStringList lstLost;
    for (int nTask = 0; nTask < taskCount(); ++nTask) {
        const QString strLost = lostSource(*task(nTask));
        if (!strLost.isEmpty())
            lstLost.append(QStringLiteral("%1: %2").arg(
                task(nTask)->getName(),
                GlobalFunction::getBody(strLost, QStringLiteral("<DSName>"), QStringLiteral("</DSName>"))));
    }
    return lstLost;
}

QString Document::save(const QString &strPath)
{
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        noticeEdit(nTask);
    const QByteArray achExpected = TaskMgr::getInstance()->toString().toUtf8();
    QString strError = QString::fromLocal8Bit(saveTasksFile(strPath.toUtf8().data()));
    QFile cFile(strPath);
    if (!cFile.open(QFile::ReadOnly))
        return strError.isEmpty() ? cFile.errorString() : withReason(strError, strPath, achExpected);
    if (!strError.isEmpty())
        return withReason(strError, strPath, achExpected);
    if (cFile.readAll() != achExpected)
        return withReason(tr("what stands in the file is not what was written"), strPath, achExpected);
    syncToDisk(strPath);
    m_achSum = sum(achExpected);
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        if (!lostSource(*task(nTask)).isEmpty()) { // the file has none of it any more
            task(nTask)->m_strDataSourceConfigString.clear();
            noticeEdit(nTask, tr("lose data source"));
        }

    SideFile cSide;
    for (const TaskState &cState : qAsConst(m_cState.m_lstTask))
        cSide.m_lstTask.append(cState.m_lstStepSide);
    cSide.m_cPanes = m_cPanes;
    if (!m_cState.m_cOperator.isEmpty())
        cSide.m_cPanes[KEY_OPERATOR] = m_cState.m_cOperator;
    strError = cSide.write(strPath);
    m_strPath = QFileInfo(strPath).absoluteFilePath();
    m_cSaved = m_cState;
    emit stateChanged();
    return strError;
}

bool Document::mayApply(const DocumentState &cTarget) const
{
    const QList<TaskState> &lstTarget = cTarget.m_lstTask;
    for (int nTask = 0; nTask < taskCount(); ++nTask) {
        const bool bStays =
            nTask < lstTarget.size() && lstTarget[nTask].m_strText == m_cState.m_lstTask[nTask].m_strText;
        if (!bStays && !isIdle(nTask))
            return false;
    }
    return true;
}

void Document::apply(const DocumentState &cTarget)
{
    const QList<TaskState> &lstTarget = cTarget.m_lstTask;
    TaskMgr *pcManager = TaskMgr::getInstance();
    // Each task that a text of the target still fits is kept, at its place if possible.
    QVector<TaskInfo *> lstTask(lstTarget.size());
    QVector<TaskInfo *> lstLeft(taskCount());
    for (int nTask = 0; nTask < taskCount(); ++nTask) {
        const bool bStays =
            nTask < lstTarget.size() && lstTarget[nTask].m_strText == m_cState.m_lstTask[nTask].m_strText;
        (bStays ? lstTask : lstLeft)[nTask] = task(nTask);
    }
    for (int nTask = 0; nTask < lstTarget.size(); ++nTask)
        for (int nOld = 0; nOld < lstLeft.size() && !lstTask[nTask]; ++nOld)
            if (lstLeft[nOld] && m_cState.m_lstTask[nOld].m_strText == lstTarget[nTask].m_strText)
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
    m_cState = cTarget;
    emit tasksChanged();
    emit stateChanged();
}

void Document::edit(const DocumentState &cTarget, const QString &strWhat)
{
    if (mayApply(cTarget))
        m_cUndo.push(new EditCommand(*this, m_cState, cTarget, strWhat));
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

void Document::note(int nTask, const TaskState &cState, const QString &strWhat)
{
    const DocumentState cBefore = m_cState;
    m_cState.m_lstTask[nTask] = cState;
    // Pushing it applies it, which finds every task as it should be.
    const QSignalBlocker cBlocker(this);
    m_cUndo.push(new EditCommand(*this, cBefore, m_cState, strWhat));
}

void Document::noticeEdit(int nTask, const QString &strWhat)
{
    TaskInfo *pcTask = task(nTask);
    if (!pcTask || nTask >= taskCount())
        return;
    const QString strText = blockOf(*pcTask);
    if (strText == m_cState.m_lstTask[nTask].m_strText)
        return;
    note(nTask, {strText, carryStepSide(m_cState.m_lstTask[nTask], strText)},
         strWhat.isEmpty() ? tr("edit of %1").arg(pcTask->getName()) : strWhat);
    emit stateChanged();
}

int Document::addTask(const QString &strName)
{
    DocumentState cTarget = m_cState;
    cTarget.m_lstTask.append({TaskInfo(strName, nullptr).toString(), {}});
    edit(cTarget, tr("add task"));
    return taskCount() - 1;
}

int Document::duplicateTask(int nTask)
{
    DocumentState cTarget = m_cState;
    TaskState cCopy = m_cState.m_lstTask[nTask];
    const QString strOriginal = task(nTask)->getName();
    QString strName = tr("%1 (copy)").arg(strOriginal);
    for (int nCopy = 2; taskNames().contains(strName); ++nCopy)
        strName = tr("%1 (copy %2)").arg(strOriginal, QString::number(nCopy));
    cCopy.m_strText = withName(cCopy.m_strText, strName);
    cTarget.m_lstTask.append(cCopy);
    edit(cTarget, tr("duplicate task"));
    return taskCount() - 1;
}

template <typename Change>
void Document::rearrange(const Change &fnChange, const QString &strWhat)
{
    DocumentState cTarget = m_cState;
    fnChange(cTarget.m_lstTask);
    if (!cTarget.m_cOperator.isEmpty()) { // the task that is counted stays so
        QVector<int> lstFormer(taskCount());
        std::iota(lstFormer.begin(), lstFormer.end(), 0);
        fnChange(lstFormer);
        OperatorSetup cSetup = OperatorSetup::fromJson(cTarget.m_cOperator);
        cSetup.m_nTask = std::max(0, lstFormer.indexOf(cSetup.m_nTask));
        cTarget.m_cOperator = cSetup.toJson();
    }
    edit(cTarget, strWhat);
}

void Document::removeTask(int nTask)
{
    rearrange([nTask](auto &lstTask) { lstTask.removeAt(nTask); }, tr("remove task"));
}

void Document::moveTask(int nFrom, int nTo)
{
    if (std::min(nFrom, nTo) < 0 || std::max(nFrom, nTo) >= taskCount())
        return;
    rearrange([nFrom, nTo](auto &lstTask) { lstTask.move(nFrom, nTo); }, tr("move task"));
}

bool Document::renameTask(int nTask, const QString &strName)
{
    if (!isIdle(nTask)) {
        emit refused(tr("Stop the tasks that this changes first."));
        return false;
    }
    if (strName.isEmpty()) {
        emit refused(tr("A task needs a name."));
        return false;
    }
    TaskInfo *pcTask = task(nTask);
    const QString strBefore = std::exchange(pcTask->m_strName, strName);
    if (GlobalFunction::getBody(pcTask->toString(), NAME_BEGIN, NAME_END) != strName ||
        strName.contains(QLatin1String("<="))) {
        pcTask->m_strName = strBefore;
        emit refused(tr("No task can be called %1: the tasks file uses these signs itself.").arg(strName));
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
    const int nSteps = m_cState.m_lstTask[nTask].m_lstStepSide.size();
    if (std::min(nFrom, nTo) < 0 || std::max(nFrom, nTo) >= nSteps)
        return;
    task(nTask)->getTaskItem().move(nFrom, nTo);
    TaskState cState{blockOf(*task(nTask)), m_cState.m_lstTask[nTask].m_lstStepSide};
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
    if (nStep < 0 || nStep >= m_cState.m_lstTask[nTask].m_lstStepSide.size())
        return;
    int &nLimit = task(nTask)->getTaskItem()[nStep].m_nMaxExeTimes;
    TaskState cState = m_cState.m_lstTask[nTask];
    QJsonObject &cSide = cState.m_lstStepSide[nStep];
    if (bOn == (nLimit != 0))
        return;
    if (bOn)
        nLimit = cSide.take(TaskState::KEY_LIMIT).toInt(-1);
    else
        cSide[TaskState::KEY_LIMIT] = std::exchange(nLimit, 0);
    cState.m_strText = blockOf(*task(nTask));
    note(nTask, cState, bOn ? tr("switch step on") : tr("switch step off"));
    emit flowChanged(nTask);
    emit stateChanged();
}

void Document::undo()
{
    if (!m_cUndo.canUndo())
        return;
    const auto *pcEdit = static_cast<const EditCommand *>(m_cUndo.command(m_cUndo.index() - 1));
    if (mayApply(pcEdit->m_cBefore))
        m_cUndo.undo();
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

void Document::redo()
{
    if (!m_cUndo.canRedo())
        return;
    const auto *pcEdit = static_cast<const EditCommand *>(m_cUndo.command(m_cUndo.index()));
    if (mayApply(pcEdit->m_cAfter))
        m_cUndo.redo();
    else
        emit refused(tr("Stop the tasks that this changes first."));
}

OperatorSetup Document::operatorSetup() const
{
    OperatorSetup cSetup = OperatorSetup::fromJson(m_cState.m_cOperator);
    for (int nTask = 0; nTask < taskCount(); ++nTask)
        for (int nStep = 0; nStep < m_cState.m_lstTask[nTask].m_lstStepSide.size(); ++nStep) {
            QList<OperatorPick> lstPick;
            for (const QJsonValue cPick :
                 m_cState.m_lstTask[nTask].m_lstStepSide[nStep][KEY_OPERATOR].toArray())
                lstPick.append(OperatorPick::fromJson(cPick.toObject()));
            if (!lstPick.isEmpty())
                cSetup.m_lstStep.append({nTask, nStep, lstPick});
        }
    return cSetup;
}

void Document::setOperatorSetup(const OperatorSetup &cSetup)
{
    DocumentState cTarget = m_cState;
    for (TaskState &cState : cTarget.m_lstTask)
        for (QJsonObject &cSide : cState.m_lstStepSide)
            cSide.remove(KEY_OPERATOR);
    for (const OperatorSetup::Step &cStep : cSetup.m_lstStep) {
        QJsonArray cPicks;
        for (const OperatorPick &cPick : cStep.m_lstPick)
            cPicks.append(cPick.toJson());
        cTarget.m_lstTask[cStep.m_nTask].m_lstStepSide[cStep.m_nStep][KEY_OPERATOR] = cPicks;
    }
    if (OperatorSetup::fromJson(m_cState.m_cOperator).toJson() != cSetup.toJson())
        cTarget.m_cOperator = cSetup.toJson();
    if (!(cTarget == m_cState))
        edit(cTarget, tr("choose what the operator sees"));
}
