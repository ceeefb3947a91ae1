#ifndef REPORT_H
#define REPORT_H

#include <memory>
#include <mutex>

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include "arithmparammgr.h"
#include "common/taskcheck.h"
#include "taskMgr/taskstatus.h"

/// What a task and its steps are called in everything that is printed.
struct TaskLabel {
    QString m_strName;
    QStringList m_lstStep;
};

/// How a task did.
struct TaskSummary {
    TaskStatus m_cStatus;
    double m_fSeconds = 0; ///< from the start to the end of the last run with a picture
};

/// What became of the updates of a view: each was written, dropped or not writable.
struct ViewSummary {
    int m_nView = 0;
    qint64 m_nUpdates = 0;
    qint64 m_nWritten = 0;
    qint64 m_nDropped = 0; ///< newer ones came faster than they could be written
    qint64 m_nFailed = 0;
    QString m_strFirst; ///< the first file that was written, empty when there is none
    QString m_strLast;
};

/// One algorithm or data source that the library knows.
struct KnownPart {
    bool m_bSource = false;
    QString m_strClass; ///< empty for a source
    QString m_strName;
    QString m_strID; ///< empty for a source
    QString m_strFile;
};

/// What an algorithm left in the store, and the file that it was written into.
struct TriedOutput {
    QString m_strTag; ///< that holds the ID, else the kind and the ID
    ArithmParamMgr::Kind m_eKind = ArithmParamMgr::Kind::DIB;
    int m_nID = 0;
    QSize m_cSize;         ///< of a picture
    int m_nCount = 0;      ///< of a list
    QStringList m_lstText; ///< the first elements of a list
    QString m_strFile;     ///< empty for none
};

/// An algorithm that was tried on a picture.
struct TriedStep {
    QString m_strPicture;
    QSize m_cPictureSize;
    int m_nStep = 0;
    QString m_strID;
    QString m_strConfig; ///< with the IDs that were filled in
    int m_nRuns = 0;
    qint64 m_nMedianNs = 0;
    qint64 m_nBestNs = 0;
    QStringList m_lstCommand; ///< "print:…", of the last run
    QList<TriedOutput> m_lstOutput;
    QString m_strAllFile; ///< with all lists drawn into it, if there are several
};

/// The output of the program, as text for people or as JSON lines for programs. Positions of steps
/// count from 0 in the calls and from 1 in the output.
///
/// Threads: printed, failed, sourceFailed, pictureWritten and logged may be called by any thread, each
/// message comes out whole; the rest belongs to the main thread. A position of -1 is a task that is not
/// known.
class Report
{
public:
    static std::unique_ptr<Report> make(bool bJson, bool bQuiet);
    virtual ~Report() = default;

    /// Before the tasks start.
    void setTasks(const QList<TaskLabel> &lstTask) { m_lstTask = lstTask; }
    const QList<TaskLabel> &tasks() const { return m_lstTask; }

    virtual void printed(int nTask, const QString &strText) = 0;
    virtual void failed(int nTask, const QString &strText) = 0;
    virtual void sourceFailed(int nTask, const QString &strText) = 0;
    /// An update of a view stands in a file.
    virtual void pictureWritten(int nView, qint64 nNumber, const QString &strFile) = 0;
    /// A line of the log.
    virtual void logged(const QString &strText) = 0;
    /// A step has been running for long; told once each time.
    virtual void stepHangs(int nTask, int nStep, double fSeconds) = 0;
    /// How things stand: one line of text that the next one overwrites.
    virtual void live(const QString &strLine) = 0;
    virtual void summary(const QList<TaskSummary> &lstTask, const QList<ViewSummary> &lstView,
                         int nExitCode) = 0;
    virtual void findings(const QList<Finding> &lstFinding) = 0;
    virtual void tried(const TriedStep &cStep) = 0;
    virtual void known(const QList<KnownPart> &lstPart) = 0;

protected:
    /// The part that a step has of all the time that the task's steps took, 0 to 1.
    static double stepShare(const TaskStatus &cStatus, int nStep);

    QList<TaskLabel> m_lstTask;
    std::mutex m_cOutput; ///< held while a message is written
};

#endif
