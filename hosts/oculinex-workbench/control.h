#ifndef CONTROL_H
#define CONTROL_H

#include <memory>
#include <optional>

#include <QList>
#include <QObject>
#include <QThread>

/// Starts, stops and runs tasks once, one call after the other, on a thread of its own: such a call may
/// wait for a run, and the window never does.
///
/// Threads: all functions belong to the GUI thread. While a task has a job, nobody else touches it.
class Control : public QObject
{
    Q_OBJECT

public:
    enum class Action { Start, Stop, RunOnce };

    Control();
    /// Waits for the jobs that are under way, unless abandoned.
    ~Control() override;
    Control(const Control &) = delete;
    Control &operator=(const Control &) = delete;

    void post(Action eAction, int nTask);
    bool isIdle() const { return m_lstJob.isEmpty(); }
    /// What is done with a task now or will be done next.
    std::optional<Action> jobOf(int nTask) const;
    /// The task that is worked on; -1 when there is none.
    int currentTask() const { return isIdle() ? -1 : m_lstJob.first().m_nTask; }
    /// From now on a thread that waits for a task is left alone, and so are the tasks: the process is
    /// about to end.
    void abandon() { m_bAbandoned = true; }
    bool isAbandoned() const { return m_bAbandoned; }

signals:
    /// A job came, or one is done.
    void changed();

private:
    struct Job {
        Action m_eAction;
        int m_nTask;
    };

    QList<Job> m_lstJob; ///< the first is under way
    std::unique_ptr<QThread> m_pcThread;
    std::unique_ptr<QObject> m_pcWorker; ///< lives on the thread
    std::unique_ptr<QObject> m_pcReply;  ///< of the GUI thread, which is told through it what is done
    bool m_bAbandoned = false;
};

#endif
