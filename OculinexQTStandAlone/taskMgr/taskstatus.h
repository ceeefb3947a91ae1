#ifndef TASKSTATUS_H
#define TASKSTATUS_H

#include <QList>
#include <QString>

/// What a host may know of a step, once it has switched the status functions on. Times are in
/// nanoseconds of a clock that is never set back.
struct StepStatus {
    qint64 m_nExecutions = 0; ///< since the task was started
    qint64 m_nLastNs = 0;
    qint64 m_nTotalNs = 0;
    qint64 m_nWorstNs = 0;
    QString m_strLastResult; ///< result text of the last execution, commands included
};

/// What a host may know of a task, once it has switched the status functions on. Counts and times
/// start anew with each start of the task (and with each single run by hand).
struct TaskStatus {
    enum class State { Idle, Running, Stopping };

    State m_eState = State::Idle;
    QString m_strName;
    qint64 m_nRuns = 0;      ///< runs that had a picture and ended
    qint64 m_nPictures = 0;  ///< pictures that the data source has delivered
    qint64 m_nFailures = 0;  ///< runs and clean-ups that failed; an end by "stop:" is none
    qint64 m_nLastRunNs = 0; ///< the steps of the last run that had a picture, without the wait for it
    qint64 m_nTotalRunNs = 0;
    qint64 m_nWorstRunNs = 0;
    int m_nCurrentStep = -1;          ///< the step that runs now, -1 between steps
    qint64 m_nCurrentStepNs = 0;      ///< for how long it has run
    qint64 m_nSincePictureNs = -1;    ///< since the last picture, -1 when there was none
    QString m_strLastError;           ///< text of the last failure
    QString m_strLastDataSourceError; ///< what the source last said of a run without a picture
    QList<StepStatus> m_lstStep;
};

#endif
