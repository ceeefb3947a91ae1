#ifndef TASKCHECK_H
#define TASKCHECK_H

#include <QList>
#include <QString>

#include "report.h"

/// Reads the text of a tasks file as loading does, without making a task of it, and looks for what
/// loading keeps silent. The number of tasks that would be loaded comes back in nTasks.
QList<Finding> checkTasks(const QString &strTasks, int &nTasks);

#endif
