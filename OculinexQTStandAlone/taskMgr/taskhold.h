#ifndef TASKHOLD_H
#define TASKHOLD_H

#include <memory>

#include <QPointer>

#include "taskMgr/taskMgr.h"

class TaskRecord;

/// Keeps a task alive while code of its own is at work (private header): a dialog's event loop or a
/// callback of the host may lead to calls that remove the task, such as opening another tasks file,
/// while code further up the stack still uses the task and its store. Stands first in each function
/// that opens a dialog or runs steps.
class TaskHold
{
public:
    explicit TaskHold(TaskInfo &cTask);
    /// Deletes the task when it was to be destroyed meanwhile and nothing else holds it.
    ~TaskHold();
    TaskHold(const TaskHold &) = delete;
    TaskHold &operator=(const TaskHold &) = delete;

    /// False when steps of the task run, or it is gone.
    bool isIdle() const;
    /// False when steps of the task run, or it is gone or about to go: then it is left alone, and what
    /// a dialog says is dropped.
    bool mayEdit() const;

    /// Deletes a task that stands in no map any more, once it is held no more. Null is ignored.
    static void destroy(TaskInfo *pcTask);

private:
    const QPointer<TaskInfo> m_pcTask;
    const std::shared_ptr<TaskRecord> m_pcRecord;
};

/// Work with the task on the calling thread that nobody may come between: it is held, and neither
/// edited nor started meanwhile, which a callback of the host, a step's window or a source that lets
/// events through could lead to.
class CallersRun
{
public:
    explicit CallersRun(TaskInfo &cTask);
    ~CallersRun();
    CallersRun(const CallersRun &) = delete;
    CallersRun &operator=(const CallersRun &) = delete;

private:
    const TaskHold m_cHold;
    const std::shared_ptr<TaskRecord> m_pcRecord;
};

#endif
