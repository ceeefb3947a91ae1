#ifndef TASKSTATE_H
#define TASKSTATE_H

#include <QJsonObject>
#include <QString>
#include <QVector>

/// All that the workbench keeps of a task: its block of the tasks file, and what it knows of each step
/// beyond that.
struct TaskState {
    static constexpr auto KEY_LIMIT = "limit"; ///< of a step that is switched off: its limit before

    QString m_strText;
    QVector<QJsonObject> m_lstStepSide; ///< one a step, in flow order

    bool operator==(const TaskState &cOther) const
    {
        return m_strText == cOther.m_strText && m_lstStepSide == cOther.m_lstStepSide;
    }
};

/// What is known of the steps of a flow whose text was edited: each step that stayed keeps its own.
QVector<QJsonObject> carryStepSide(const TaskState &cBefore, const QString &strTextAfter);

int stepCount(const QString &strTaskText);

#endif
