#ifndef TASKCHECK_H
#define TASKCHECK_H

#include <QList>
#include <QString>

/// Something about a tasks file that loading keeps silent.
struct Finding {
    int m_nTask = -1;    ///< position, -1 for the file itself
    QString m_strTask;   ///< name
    int m_nStep = -1;    ///< position in the flow, -1 for the task itself
    QString m_strArithm; ///< name of the step's algorithm
    QString m_strText;
};

/// Reads the text of a tasks file as loading does, without making a task of it, and looks for what
/// loading keeps silent. The number of tasks that would be loaded comes back in nTasks. Any
/// thread, one at a time.
QList<Finding> checkTasks(const QString &strTasks, int &nTasks);
/// The finding in one line, with its place.
QString findingText(const Finding &cFinding);

#endif
