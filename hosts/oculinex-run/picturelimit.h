#ifndef PICTURELIMIT_H
#define PICTURELIMIT_H

class TaskInfo;

/// Makes a task stop by itself after nRuns runs with a picture, exactly: when its source is asked
/// for one more, none comes and the task's exit flag is set. Called while the task is idle, before
/// any limited task starts; a task without a source fails by itself and is left alone. The limit
/// goes when the process ends.
void limitPictures(TaskInfo &cTask, int nRuns);

#endif
