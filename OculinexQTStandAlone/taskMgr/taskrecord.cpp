#include "taskMgr/taskrecord.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>

#include <unistd.h>

#include <QElapsedTimer>

#include "dialogs.h"
#include "taskMgr/taskMgr.h"

namespace
{
std::atomic<bool> s_bStatusEnabled{false};
std::atomic<bool> s_bProcessEnding{false};
thread_local const TaskRecord *s_pcOwnRecord = nullptr; ///< of the task whose thread this is

/// All tasks' records. Never destroyed: a thread may look in while the process ends.
struct RecordTable {
    std::mutex m_cLock;
    std::unordered_map<const TaskInfo *, std::shared_ptr<TaskRecord>> m_mapRecord;
    std::vector<const void *> m_lstKept; ///< what a thread still uses while the process ends
};

RecordTable &records()
{
    static auto &s_cTable = *new RecordTable;
    return s_cTable;
}

/// The figures have one writer, which needs no atomic addition.
template <class Number>
void add(std::atomic<Number> &nSum, Number nMore)
{
    nSum.store(nSum.load(std::memory_order_relaxed) + nMore, std::memory_order_relaxed);
}

void raise(std::atomic<qint64> &nWorst, qint64 nNs)
{
    if (nNs > nWorst.load(std::memory_order_relaxed))
        nWorst.store(nNs, std::memory_order_relaxed);
}
} // namespace

qint64 steadyNs()
{
    static const QElapsedTimer s_cClock = [] {
        QElapsedTimer cClock;
        cClock.start();
        return cClock;
    }();
    return s_cClock.nsecsElapsed();
}

// ---- figures ----

void RunFigures::beginStep(int nStep, qint64 nNowNs)
{
    m_nStepBeganNs.store(nNowNs, std::memory_order_relaxed);
    m_nCurrentStep.store(nStep, std::memory_order_relaxed);
}

void RunFigures::endStep(int nStep, qint64 nNowNs, const QString &strResult)
{
    m_nCurrentStep.store(-1, std::memory_order_relaxed);
    if (static_cast<size_t>(nStep) >= m_lstStep.size())
        return;
    StepFigures &cStep = m_lstStep[static_cast<size_t>(nStep)];
    const qint64 nNs = nNowNs - m_nStepBeganNs.load(std::memory_order_relaxed);
    add<qint64>(cStep.m_nExecutions, 1);
    add(cStep.m_nTotalNs, nNs);
    raise(cStep.m_nWorstNs, nNs);
    cStep.m_nLastNs.store(nNs, std::memory_order_relaxed);
    setText(cStep.m_strLastResult, strResult);
}

void RunFigures::endRun(qint64 nBeganNs, qint64 nNowNs)
{
    const qint64 nNs = nNowNs - nBeganNs;
    m_nLastRunNs.store(nNs, std::memory_order_relaxed);
    add(m_nTotalRunNs, nNs);
    raise(m_nWorstRunNs, nNs);
    add<qint64>(m_nRuns, 1);
}

void RunFigures::setPicture(qint64 nNowNs)
{
    m_nPictureNs.store(nNowNs, std::memory_order_relaxed);
    add<qint64>(m_nPictures, 1);
}

void RunFigures::setError(const QString &strError)
{
    setText(m_strError, strError);
    add<qint64>(m_nFailures, 1);
}

void RunFigures::setDataSourceError(const QString &strError)
{
    setText(m_strDataSourceError, strError);
}

void RunFigures::setText(QString &strOld, const QString &strNew)
{
    // Only the writer is here, so that it may read without the lock.
    if (strOld == strNew)
        return;
    const std::lock_guard<std::mutex> cGuard(m_cTextLock);
    strOld = strNew;
}

void RunFigures::read(TaskStatus &cStatus) const
{
    const qint64 nNowNs = steadyNs();
    const qint64 nPictureNs = m_nPictureNs;
    cStatus.m_nRuns = m_nRuns;
    cStatus.m_nPictures = m_nPictures;
    cStatus.m_nFailures = m_nFailures;
    cStatus.m_nLastRunNs = m_nLastRunNs;
    cStatus.m_nTotalRunNs = m_nTotalRunNs;
    cStatus.m_nWorstRunNs = m_nWorstRunNs;
    cStatus.m_nCurrentStep = m_nCurrentStep;
    if (cStatus.m_nCurrentStep >= 0)
        cStatus.m_nCurrentStepNs = std::max<qint64>(0, nNowNs - m_nStepBeganNs);
    if (nPictureNs >= 0)
        cStatus.m_nSincePictureNs = std::max<qint64>(0, nNowNs - nPictureNs);

    const std::lock_guard<std::mutex> cGuard(m_cTextLock);
    cStatus.m_strLastError = m_strError;
    cStatus.m_strLastDataSourceError = m_strDataSourceError;
    cStatus.m_lstStep.reserve(static_cast<int>(m_lstStep.size()));
    for (const StepFigures &cStep : m_lstStep)
        cStatus.m_lstStep.append({cStep.m_nExecutions, cStep.m_nLastNs, cStep.m_nTotalNs, cStep.m_nWorstNs,
                                  cStep.m_strLastResult});
}

// ---- record ----

TaskRecord::TaskRecord(TaskInfo *pcTask) : m_pcTask(pcTask), m_pcPointer(pcTask) {}

std::shared_ptr<TaskRecord> TaskRecord::of(const TaskInfo *pcTask)
{
    RecordTable &cTable = records();
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    const auto itRecord = cTable.m_mapRecord.find(pcTask);
    return itRecord == cTable.m_mapRecord.end() ? nullptr : itRecord->second;
}

bool isStoreInUse(const ArithmParamMgr *pcAPM)
{
    RecordTable &cTable = records();
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    return std::any_of(cTable.m_mapRecord.begin(), cTable.m_mapRecord.end(), [&](const auto &cEntry) {
        return cEntry.first->m_pcAPM == pcAPM && cEntry.second->isBusy();
    });
}

bool TaskRecord::isBusy() const
{
    return m_pcTask->IsRunning() || m_nCallersRuns > 0;
}

int TaskRecord::begin()
{
    std::unique_lock<std::mutex> cGuard(m_cLock);
    if (s_pcOwnRecord != this)
        m_cChanged.wait(cGuard,
                        [this] { return m_nThreads == 0 || m_pcTask->m_bRunning || isProcessEnding(); });
    if (m_pcTask->m_bRunning.exchange(true))
        return 0;
    m_pcTask->m_bExit = false;
    m_pcTask->m_bExited = false;
    m_bBegun = true;
    ++m_nThreads;
    m_cChanged.notify_all();
    return ++m_nRun;
}

void TaskRecord::setHandle(int nRun, pthread_t hThread)
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    if (m_bBegun && nRun == m_nRun)
        m_pcTask->m_hThread = hThread;
}

int TaskRecord::askToStop()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    m_pcTask->m_bExit = true;
    return m_nRun;
}

bool TaskRecord::isNewest(int nRun) const
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return nRun == m_nRun;
}

bool TaskRecord::settle()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    if (m_pcTask->m_bRunning && m_nThreads > 0)
        return false;
    m_bBegun = false;
    m_pcTask->m_hThread = 0;
    m_pcTask->m_bExit = false;
    m_pcTask->m_bRunning = false;
    return true;
}

bool TaskRecord::isBegun() const
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return m_bBegun;
}

void TaskRecord::leaveThread()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    // A host may also run the thread's body itself, without having entered, on a thread that goes on.
    m_nThreads = std::max(0, m_nThreads - 1);
    m_cChanged.notify_all();
    if (s_pcOwnRecord == this)
        s_pcOwnRecord = nullptr;
}

void TaskRecord::claimThread()
{
    s_pcOwnRecord = this;
}

void TaskRecord::waitForThreads()
{
    if (s_pcOwnRecord == this)
        return;
    std::unique_lock<std::mutex> cGuard(m_cLock);
    m_cChanged.wait(cGuard, [this] { return m_nThreads == 0 || isProcessEnding(); });
}

void TaskRecord::waitForRun(int nRun)
{
    if (s_pcOwnRecord == this)
        return;
    std::unique_lock<std::mutex> cGuard(m_cLock);
    m_cChanged.wait(cGuard, [&] { return m_nThreads == 0 || nRun != m_nRun || isProcessEnding(); });
}

bool TaskRecord::waitForThreads(int nTimeoutMs)
{
    if (s_pcOwnRecord == this)
        return true;
    std::unique_lock<std::mutex> cGuard(m_cLock);
    return m_cChanged.wait_for(cGuard, std::chrono::milliseconds(nTimeoutMs),
                               [this] { return m_nThreads == 0; });
}

bool TaskRecord::hasThreads() const
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return m_nThreads > 0;
}

void TaskRecord::hold()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    ++m_nHolds;
}

bool TaskRecord::release()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return --m_nHolds == 0 && m_bToGo;
}

bool TaskRecord::letGo()
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    m_bToGo = m_nHolds > 0;
    return m_bToGo;
}

bool TaskRecord::isToGo() const
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return m_bToGo;
}

std::shared_ptr<RunFigures> TaskRecord::renewFigures(int nSteps)
{
    auto pcFigures = TaskInfo::isStatusEnabled() ? std::make_shared<RunFigures>(nSteps) : nullptr;
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    m_pcFigures = pcFigures;
    return pcFigures;
}

std::shared_ptr<RunFigures> TaskRecord::figures() const
{
    const std::lock_guard<std::mutex> cGuard(m_cLock);
    return m_pcFigures;
}

void createTaskRecord(TaskInfo *pcTask)
{
    RecordTable &cTable = records();
    auto pcRecord = std::make_shared<TaskRecord>(pcTask);
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    cTable.m_mapRecord[pcTask] = std::move(pcRecord);
}

void stopForDestruction(TaskInfo *pcTask)
{
    stopThread(pcTask);
    // The thread has reported that it left, and may yet be in its last lines.
    const auto pcRecord = TaskRecord::of(pcTask);
    pcRecord->waitForThreads();
    // A hold that is never released: nobody deletes the task once more.
    pcRecord->hold();
    pcRecord->letGo();
    if (isProcessEnding() && pcRecord->hasThreads()) {
        RecordTable &cTable = records();
        const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
        cTable.m_lstKept.insert(cTable.m_lstKept.end(), {pcTask->m_pcDS, pcTask->m_pcAPM});
        pcTask->m_pcDS = nullptr;
        pcTask->m_pcAPM = nullptr;
    }
}

void forgetTaskRecord(const TaskInfo *pcTask)
{
    RecordTable &cTable = records();
    const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
    cTable.m_mapRecord.erase(pcTask);
}

// ---- end of the process ----

void stopTasksForExit()
{
    constexpr int LIMIT_MS = 3000;
    std::vector<std::shared_ptr<TaskRecord>> lstRunning;
    {
        RecordTable &cTable = records();
        const std::lock_guard<std::mutex> cGuard(cTable.m_cLock);
        for (const auto &cEntry : cTable.m_mapRecord) {
            if (!cEntry.second->hasThreads())
                continue;
            cEntry.second->m_pcTask->m_bExit = true;
            lstRunning.push_back(cEntry.second);
        }
    }
    const qint64 nBeganNs = steadyNs();
    bool bAllLeft = true;
    for (const auto &pcRecord : lstRunning) {
        const qint64 nLeftMs = LIMIT_MS - (steadyNs() - nBeganNs) / 1000000;
        bAllLeft &= pcRecord->waitForThreads(static_cast<int>(std::max<qint64>(0, nLeftMs)));
    }
    s_bProcessEnding = !bAllLeft;
}

bool isProcessEnding()
{
    return s_bProcessEnding;
}

void haltLateThread()
{
    while (s_bProcessEnding.load(std::memory_order_relaxed) && s_pcOwnRecord)
        pause();
}

// ---- the task's status functions ----

void TaskInfo::setStatusEnabled(bool bEnabled)
{
    s_bStatusEnabled = bEnabled;
}

bool TaskInfo::isStatusEnabled()
{
    return s_bStatusEnabled.load(std::memory_order_relaxed);
}

TaskStatus TaskInfo::getStatus() const
{
    TaskStatus cStatus;
    cStatus.m_strName = m_strName;
    if (m_bRunning)
        cStatus.m_eState = m_bExit ? TaskStatus::State::Stopping : TaskStatus::State::Running;
    if (const auto pcFigures = TaskRecord::of(this)->figures())
        pcFigures->read(cStatus);
    return cStatus;
}
