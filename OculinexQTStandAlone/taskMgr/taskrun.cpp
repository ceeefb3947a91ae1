#include <optional>

#include <sched.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QPointer>
#include <QThread>

#include "arithmMgr/arithmregister.h"
#include "guardedcall.h"
#include "logging.h"
#include "taskMgr/flowrun.h"
#include "taskMgr/taskMgr.h"
#include "taskMgr/taskhold.h"
#include "taskMgr/taskrecord.h"
#include "taskMgr/taskwidgets.h"

namespace
{
/// Stops all tasks when the process exits.
struct ExitStop {
    ExitStop() = default;
    ~ExitStop() { stopTasksForExit(); }
    ExitStop(const ExitStop &) = delete;
    ExitStop &operator=(const ExitStop &) = delete;
};

/// The last lines of a task's thread, gone through however it ends: also when a plug-in ends it.
class ThreadEnd
{
public:
    ThreadEnd(TaskInfo &cTask, std::shared_ptr<TaskRecord> pcRecord)
        : m_cTask(cTask), m_pcRecord(std::move(pcRecord))
    {
        callIfMemoryAllows([&] {
            m_strMsg = QStringLiteral("Task \"%1\": its thread was ended by a step.").arg(cTask.m_strName);
        });
    }
    ~ThreadEnd()
    {
        stopSource();
        m_cTask.m_bExited = true;
        m_cTask.m_bRunning = false;
        report();
        m_pcRecord->leaveThread();
    }
    ThreadEnd(const ThreadEnd &) = delete;
    ThreadEnd &operator=(const ThreadEnd &) = delete;

    void startSource()
    {
        m_bSourceStopped = false;
        if (m_cTask.m_pcDS)
            m_cTask.m_pcDS->start();
    }
    /// Once. Not left to the destructor, which a source that ends the thread could not leave.
    void stopSource()
    {
        if (!std::exchange(m_bSourceStopped, true) && m_cTask.m_pcDS)
            m_cTask.m_pcDS->stop();
    }

    TaskInfo &m_cTask;
    std::shared_ptr<TaskRecord> m_pcRecord;
    QString m_strMsg = QStringLiteral("A step ended its task's thread.");
    bool m_bSuccess = false;

private:
    /// Where memory is short, a moment later, when others may have given some back.
    void report()
    {
        constexpr int TRIES = 50;
        for (int nTry = 0; nTry < TRIES; ++nTry) {
            try {
                emit m_cTask.threadFinished(m_strMsg, m_bSuccess);
                return;
            } catch (const std::bad_alloc &) {
                usleep(20000);
            }
        }
    }

    bool m_bSourceStopped = true;
};

/// The result of a part of a task's run. An algorithm's exception is its error text; what ends the
/// part itself is the host's or the library's own, above all a lack of memory.
template <typename Call>
bool runPart(const TaskInfo &cTask, QString &strMsg, const Call &fnCall)
{
    return guardedCall(fnCall, [&](const QString &strWhat) {
        strMsg = strWhat;
        callIfMemoryAllows([&] {
            strMsg =
                QStringLiteral("Task \"%1\" was ended by an exception: %2").arg(cTask.m_strName, strWhat);
            qCWarning(lcTask).noquote() << strMsg;
        });
        if (const auto pcFigures = TaskRecord::of(&cTask)->figures())
            pcFigures->setError(strMsg);
        return false;
    });
}

void pinToCore(int nCore)
{
    cpu_set_t cCores; // 1024 cores; one beyond leaves the set empty
    CPU_ZERO(&cCores);
    CPU_SET(static_cast<size_t>(nCore), &cCores);
    if (pthread_setaffinity_np(pthread_self(), sizeof cCores, &cCores) != 0)
        qCInfo(lcTask) << "a task's thread can't be pinned to core" << nCore;
}

/// Tells the task's thread to stop and waits until it has left its loop and the task itself, or somebody
/// has started the task again.
void waitForThread(const TaskInfo &cTask, TaskRecord &cRecord)
{
    const int nRun = cRecord.askToStop();
    while (!cTask.m_bExited && cRecord.isNewest(nRun) && !isProcessEnding())
        usleep(100000);
    cRecord.waitForRun(nRun);
}

QString singleRunErrorText(const QString &strName, const QString &strError)
{
    return QStringLiteral("Arithm \"") + strName + QStringLiteral("\" error, message:") + strError;
}

/// Brings the host's widgets up to date: those that change the task can't be used while it runs. Each
/// asks on its own thread, where what another thread tells may come late.
void showState(const TaskInfo &cTask, const std::shared_ptr<TaskRecord> &pcRecord)
{
    inWidgetThread<QAbstractButton>(cTask.m_pcRunTask, [pcRecord](QAbstractButton *pcButton) {
        pcButton->setText(pcRecord->isBegun() ? QStringLiteral("停止任务") : QStringLiteral("执行任务"));
    });
    for (QObject *pcControl :
         {cTask.m_pcDataSource, cTask.m_pcViewSelect, cTask.m_pcThreadSelect, cTask.m_pcTaskFlow})
        inWidgetThread<QWidget>(
            pcControl, [pcRecord](QWidget *pcWidget) { pcWidget->setEnabled(!pcRecord->isBegun()); });
}
} // namespace

void TaskInfo::initTaskItemExeTimes()
{
    for (TaskItem &cItem : m_lstArithm)
        cItem.m_nExeTimes = 0;
}

bool TaskInfo::runOnce(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs)
{
    const CallersRun cCallersRun(*this);
    if (TaskRecord::of(this)->isToGo())
        return false;
    m_lstArithm.detach();
    return FlowRun(*this).run(strMsg, bSingle, nLastStep, nTimeoutMs);
}

void TaskInfo::startTask()
{
    if (m_bRunning)
        return;
    // After the registries, so that the tasks are stopped before those go. Making them may open a box
    // about a plug-in, and the host's timers may do anything to the task meanwhile.
    const QPointer<TaskInfo> pcThis(this);
    ArithmFactory::getInstance();
    DataSource::getInstance();
    static const ExitStop s_cExitStop;
    if (!pcThis)
        return;

    const auto pcRecord = TaskRecord::of(this);
    if (pcRecord->isToGo())
        return;
    if (pcRecord->m_nCallersRuns > 0) {
        qCWarning(lcTask).noquote() << "task" << m_strName << "is not started in the middle of a single run.";
        return;
    }
    m_lstArithm.detach(); // may lack memory
    const int nRun = pcRecord->begin();
    if (nRun == 0)
        return;
    pthread_t hThread{};
    if (const int nError = pthread_create(&hThread, nullptr, threadTaskFunc, this)) {
        pcRecord->leaveThread();
        m_bExited = true;
        pcRecord->settle();
        qCWarning(lcTask).noquote() << "task" << m_strName << "has no thread:" << qt_error_string(nError);
        return;
    }
    pcRecord->setHandle(nRun, hThread);
    showState(*this, pcRecord);
}

void TaskInfo::stopTask()
{
    if (!m_bRunning)
        return;
    const auto pcRecord = TaskRecord::of(this);
    waitForThread(*this, *pcRecord);
    if (pcRecord->settle())
        showState(*this, pcRecord);
}

void stopThread(TaskInfo *pcTask)
{
    const auto pcRecord = TaskRecord::of(pcTask);
    if (pcTask->m_hThread == 0 && !pcRecord->hasThreads())
        return;
    waitForThread(*pcTask, *pcRecord);
    pcTask->m_hThread = 0;
}

void TaskInfo::runTaskOnce()
{
    const auto fnReport = [this](QString &strMsg) {
        if (!strMsg.isEmpty() && m_fnHaveErrorMessage)
            m_fnHaveErrorMessage(strMsg);
        strMsg.clear();
    };
    const TaskHold cHold(*this);
    std::optional<CallersRun> cCallersRun(std::in_place, *this);
    if (TaskRecord::of(this)->isToGo())
        return;
    QString strMsg;
    std::optional<FlowRun> cFlow;
    const bool bReady = runPart(*this, strMsg, [&] {
        initTaskItemExeTimes();
        cFlow.emplace(*this);
        return true;
    });
    if (!bReady) {
        cCallersRun.reset();
        return fnReport(strMsg);
    }
    if (m_pcDS)
        m_pcDS->start();
    runPart(*this, strMsg, [&] { return cFlow->run(strMsg, false, -1, -1); });
    fnReport(strMsg);
    runPart(*this, strMsg, [&] {
        cFlow->cleanUp(strMsg, singleRunErrorText);
        return true;
    });
    if (m_pcDS)
        m_pcDS->stop();
    cCallersRun.reset(); // the last message may lead to a start
    fnReport(strMsg);
}

void *TaskInfo::threadTaskFunc(void *pvTask)
{
    pthread_detach(pthread_self());
    auto &cTask = *static_cast<TaskInfo *>(pvTask);
    const auto pcRecord = TaskRecord::of(&cTask);
    pcRecord->claimThread();

    ThreadEnd cEnd(cTask, pcRecord);
    try {
        // Qt makes its record of a thread with the thread's first object, even with a line of the log,
        // and does not survive a lack of memory half-way: it is made now, and only where there is room.
        constexpr size_t ROOM = 4096;
        ::operator delete(::operator new(ROOM));
        QThread::currentThread();
    } catch (const std::bad_alloc &) {
        cEnd.m_strMsg = QStringLiteral("std::bad_alloc");
        return nullptr;
    }
    QString strMsg;
    std::optional<FlowRun> cFlow;
    bool bSuccess = runPart(cTask, strMsg, [&] {
        if (cTask.m_nWhichKernel > 0)
            pinToCore(cTask.m_nWhichKernel);
        cFlow.emplace(cTask);
        cFlow->resetCounts();
        return true;
    });
    if (bSuccess) {
        cEnd.startSource();
        while (bSuccess && !cTask.m_bExit)
            bSuccess = runPart(cTask, strMsg, [&] { return cFlow->run(strMsg, false, -1, -1); });
        runPart(cTask, strMsg, [&] {
            cFlow->cleanUp(strMsg, FlowRun::runErrorText);
            return true;
        });
    }
    cEnd.m_strMsg = strMsg;
    cEnd.m_bSuccess = bSuccess;
    cEnd.stopSource();
    return nullptr;
}

void TaskInfo::RunClicked()
{
    if (m_bRunning)
        stopTask();
    else
        startTask();
}

void TaskInfo::ViewSelected(int nIndex)
{
    m_nWhichView = nIndex;
}

void TaskInfo::ThreadSelected(int nIndex)
{
    m_nWhichKernel = nIndex;
}

void TaskInfo::threadFinishedArrived(QString strMsg, bool bSuccess)
{
    if (bSuccess)
        return;
    const QPointer<TaskInfo> pcThis(this);
    if (!strMsg.isEmpty() && m_fnHaveErrorMessage)
        m_fnHaveErrorMessage(strMsg);
    // The host may have deleted the task or started it again since the thread ended: a new run is
    // left alone.
    const auto pcRecord = pcThis ? TaskRecord::of(this) : nullptr;
    if (pcRecord && pcRecord->settle())
        showState(*this, pcRecord);
}
