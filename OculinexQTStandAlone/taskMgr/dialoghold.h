#ifndef DIALOGHOLD_H
#define DIALOGHOLD_H

#include <QPointer>

#include "taskMgr/taskMgr.h"

/// Keeps a task alive while one of its dialogs is open (private header): the dialog's event loop may
/// lead to calls that remove the task, such as opening another tasks file, while code further up the
/// stack still uses the task and its store. Stands first in each function that opens a dialog.
class DialogHold
{
public:
    explicit DialogHold(TaskInfo &cTask);
    /// Deletes the task when it was to be destroyed meanwhile and no other dialog of it is open.
    ~DialogHold();
    DialogHold(const DialogHold &) = delete;
    DialogHold &operator=(const DialogHold &) = delete;

    /// False when the task is gone, about to go, or was started while a dialog was open: then the
    /// dialog's result is dropped.
    bool mayEdit() const;

    /// Deletes a task that stands in no map any more, once it is held no more. Null is ignored.
    static void destroy(TaskInfo *pcTask);

private:
    const QPointer<TaskInfo> m_pcTask;
    TaskInfo *const m_pcKey;
};

#endif
