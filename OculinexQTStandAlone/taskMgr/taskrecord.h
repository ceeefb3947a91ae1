#ifndef TASKRECORD_H
#define TASKRECORD_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include <pthread.h>

#include <QPointer>

#include "taskMgr/taskstatus.h"

class TaskInfo;

/// The figures of one start of a task, or of one single run. One thread writes them, any may read.
class RunFigures
{
public:
    explicit RunFigures(int nSteps) : m_lstStep(static_cast<size_t>(nSteps)) {}

    void beginStep(int nStep, qint64 nNowNs);
    void endStep(int nStep, qint64 nNowNs, const QString &strResult);
    void endRun(qint64 nBeganNs, qint64 nNowNs);
    void setPicture(qint64 nNowNs);
    void setError(const QString &strError); ///< also counts the failure
    void setDataSourceError(const QString &strError);

    void read(TaskStatus &cStatus) const;

private:
    struct StepFigures {
        std::atomic<qint64> m_nExecutions{0};
        std::atomic<qint64> m_nLastNs{0};
        std::atomic<qint64> m_nTotalNs{0};
        std::atomic<qint64> m_nWorstNs{0};
        QString m_strLastResult; ///< under m_cTextLock
    };

    void setText(QString &strOld, const QString &strNew);

    std::atomic<qint64> m_nRuns{0};
    std::atomic<qint64> m_nPictures{0};
    std::atomic<qint64> m_nFailures{0};
    std::atomic<qint64> m_nLastRunNs{0};
    std::atomic<qint64> m_nTotalRunNs{0};
    std::atomic<qint64> m_nWorstRunNs{0};
    std::atomic<qint64> m_nPictureNs{-1}; ///< when the last picture came
    std::atomic<int> m_nCurrentStep{-1};
    std::atomic<qint64> m_nStepBeganNs{0};
    std::vector<StepFigures> m_lstStep;
    mutable std::mutex m_cTextLock;
    QString m_strError;
    QString m_strDataSourceError;
};

/// What the library keeps of a task beside the task itself. It outlives the task for as long as the
/// task's thread needs it.
class TaskRecord
{
public:
    explicit TaskRecord(TaskInfo *pcTask);

    static std::shared_ptr<TaskRecord> of(const TaskInfo *pcTask);

    /// Begins a run of the task on a thread of its own as soon as the thread of the one before has left:
    /// sets the task's flags and enters for the new thread. The number of the run, 0 when the task runs.
    int begin();
    /// Unless that run is over already, which may be before its starter comes to it.
    void setHandle(int nRun, pthread_t hThread);
    /// The number of the run that is told to stop.
    int askToStop();
    bool isNewest(int nRun) const;
    /// Makes the task idle, unless it runs: somebody may have begun a newer run.
    bool settle();
    /// Whether a run has begun and has not been settled: what the host's widgets show.
    bool isBegun() const;

    /// The latch: a thread is entered before it is made and leaves when it will touch neither the task
    /// nor anything of it again. Waiting returns at once on a thread that was entered itself.
    void leaveThread();
    void waitForThreads();
    /// Also until a newer run has begun.
    void waitForRun(int nRun);
    /// Waits no longer than that; whether all have left.
    bool waitForThreads(int nTimeoutMs);
    bool hasThreads() const;
    /// Tells the record that the calling thread is the one that entered.
    void claimThread();

    /// While the task is held it is not destroyed (see TaskHold). Letting it go tells whether it is
    /// held; if so, the last release tells that it is to be destroyed now.
    void hold();
    bool release();
    bool letGo();
    bool isToGo() const;

    /// Fresh figures, or none when the status functions are off.
    std::shared_ptr<RunFigures> renewFigures(int nSteps);
    std::shared_ptr<RunFigures> figures() const;

    /// Whether steps of the task run, on its own thread or on a caller's.
    bool isBusy() const;

    TaskInfo *const m_pcTask;
    const QPointer<TaskInfo> m_pcPointer; ///< the first one: all others need no memory
    std::atomic<int> m_nCallersRuns{0};   ///< runs of the task on the threads that asked for them
    bool m_bMenuHeld = false;             ///< an action of its menu is at work; GUI thread only

private:
    mutable std::mutex m_cLock;
    std::condition_variable m_cChanged; ///< a thread has left, or a run has begun
    int m_nThreads = 0;
    int m_nRun = 0; ///< the newest
    bool m_bBegun = false;
    int m_nHolds = 0;
    bool m_bToGo = false;
    std::shared_ptr<RunFigures> m_pcFigures;
};

/// Nanoseconds of a clock that is never set back.
qint64 steadyNs();

/// Called last by the task's constructor.
void createTaskRecord(TaskInfo *pcTask);
/// Stops the task's thread, if it has one, and leaves the widgets alone.
void stopThread(TaskInfo *pcTask);
/// Called first by the task's destructor: stops the thread, waits until it touches the task no more, and
/// lets nothing be done with the task from then on, though its source may let events through while it
/// goes. When the process ends and the thread is still in, the task loses its source and its store to the
/// thread.
void stopForDestruction(TaskInfo *pcTask);
/// Called last by the task's destructor.
void forgetTaskRecord(const TaskInfo *pcTask);

/// At the end of the process: asks every running task to stop and waits a bounded time.
void stopTasksForExit();
/// Whether that time is over and threads are still in.
bool isProcessEnding();
/// Holds a task's thread that comes back later than that from a step or a source: what it would
/// touch next is going.
void haltLateThread();

#endif
