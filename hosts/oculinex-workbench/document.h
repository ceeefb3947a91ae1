#ifndef DOCUMENT_H
#define DOCUMENT_H

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QUndoStack>

#include "operatorsetup.h"
#include "taskstate.h"

class Control;
class TaskInfo;

/// What edits change, and what the file and the one beside it keep of it.
struct DocumentState {
    QList<TaskState> m_lstTask;
    QJsonObject m_cOperator; ///< what the operator sees, without the picks, which are the steps'

    bool operator==(const DocumentState &cOther) const
    {
        return m_lstTask == cOther.m_lstTask && m_cOperator == cOther.m_cOperator;
    }
};

/// The tasks file that the workbench edits. The tasks themselves are those of the library's manager, at
/// positions from 0 on without gaps; the document keeps what they were when last looked at, which makes
/// each edit, whoever made it, a step that can be undone.
///
/// Threads: the GUI thread. What changes a task needs it idle: it doesn't run, and control has no job.
class Document : public QObject
{
    Q_OBJECT

public:
    explicit Document(const Control &cControl);
    /// Removes the tasks, unless control has abandoned them.
    ~Document() override;
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    const QString &path() const { return m_strPath; } ///< empty for a new document
    QString name() const;                             ///< for people
    bool isModified() const { return !(m_cState == m_cSaved); }
    const QUndoStack &undoStack() const { return m_cUndo; }

    /// Reads a file that may be opened; the reason why not, empty when there is none.
    static QString read(const QString &strPath, QByteArray &achText);
    /// These three need all tasks idle. They return the reason of a failure, empty when there was none.
    void makeNew();
    /// Of a side file that can't be read strWarning tells the reason.
    QString open(const QString &strPath, QString &strWarning);
    /// What a file holds that loading keeps silent, a line each. Any thread, one at a time.
    static QStringList findings(const QString &strPath);
    QString save(const QString &strPath);
    /// Of each task whose data source can't be made: its name and that of the source. Saving drops these.
    QStringList lostSources() const;
    /// Whether the file isn't what was last read from it or written to it.
    bool wasChangedByOthers() const;

    int taskCount() const { return m_cState.m_lstTask.size(); }
    static TaskInfo *task(int nTask); ///< null for a position without a task
    QStringList taskNames() const;
    bool isIdle(int nTask) const;
    /// Whether the positions from this one on may be given to other tasks.
    bool mayRearrange(int nTask) const;

    /// Edits. The position of the task that was made is returned. A move from or to a place that isn't
    /// there does nothing.
    int addTask(const QString &strName);
    int duplicateTask(int nTask);
    void removeTask(int nTask);
    void moveTask(int nFrom, int nTo);
    /// False for a name that the tasks file can't keep, or of a task that isn't idle, which are refused.
    bool renameTask(int nTask, const QString &strName);
    void moveStep(int nTask, int nFrom, int nTo);
    /// A step that is switched off has the limit 0; switched on, it has its old one again.
    void switchStep(int nTask, int nStep, bool bOn);
    /// Looks whether a task was edited since the last look, and keeps that as one edit.
    void noticeEdit(int nTask, const QString &strWhat = QString());

    void undo();
    void redo();

    /// What the operator sees, with the settings that were picked, which stay with their steps.
    OperatorSetup operatorSetup() const;
    void setOperatorSetup(const OperatorSetup &cSetup);
    /// What a pane remembers beside the tasks file; not part of what is modified.
    QJsonObject paneSide(const QString &strPane) const { return m_cPanes[strPane].toObject(); }
    void setPaneSide(const QString &strPane, const QJsonObject &cSide) { m_cPanes[strPane] = cSide; }

signals:
    /// Number, order or names of the tasks changed, or a task was made anew.
    void tasksChanged();
    /// A flow was changed by the document itself, not through the task's own widgets.
    void flowChanged(int nTask);
    /// The file, what is modified, or what can be undone.
    void stateChanged();
    void refused(QString strReason);

private:
    friend class EditCommand;

    void readStates();
    bool mayApply(const DocumentState &cTarget) const;
    void apply(const DocumentState &cTarget);
    void edit(const DocumentState &cTarget, const QString &strWhat);
    /// An edit that fnChange makes in a list with an entry a task.
    template <typename Change>
    void rearrange(const Change &fnChange, const QString &strWhat);
    /// Keeps as done what the tasks themselves already are.
    void note(int nTask, const TaskState &cState, const QString &strWhat);

    const Control &m_cControl;
    QString m_strPath;
    QByteArray m_achSum;    ///< of what was last read from the file or written to it
    DocumentState m_cState; ///< the tasks as last looked at
    DocumentState m_cSaved;
    QJsonObject m_cPanes;
    QUndoStack m_cUndo;
};

#endif
