#ifndef TASKCALLBACKS_H
#define TASKCALLBACKS_H

class QString;
class Report;

/// The way from the tasks' messages to the report. A callback is a plain function that is told
/// nothing but the text, so each task gets functions of its own, which know its position.

/// After the first exported call and before the tasks file is opened: every task's messages go to
/// the report, which must outlive the tasks, and none to the bounded queues.
void connectTaskMgr(Report &cReport);
/// After the file was opened, while all tasks are idle.
void connectTasks();
/// Whether this task has told of a failure.
bool hasTaskFailed(int nTask);

#endif
