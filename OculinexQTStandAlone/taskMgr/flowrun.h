#ifndef FLOWRUN_H
#define FLOWRUN_H

#include <memory>
#include <vector>

#include <QByteArray>
#include <QString>

class Arithm;
class RunFigures;
class TaskInfo;
class TaskItem;
class TaskRecord;

/// The runs of one task, from a start to its end, on one thread (private header). It keeps what the
/// runs have in common: each step's algorithm and its config string as the algorithm takes it.
///
/// The task must be idle to all others, its flow unshared (QList::detach) and unchanged.
class FlowRun
{
public:
    explicit FlowRun(TaskInfo &cTask);

    void resetCounts();
    /// As TaskInfo::runOnce.
    bool run(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs);
    /// The clean-up steps up to the first that fails, whose error replaces strMsg. fnErrorText
    /// words the error from the step's name and what its algorithm said.
    void cleanUp(QString &strMsg, QString (*fnErrorText)(const QString &, const QString &));
    /// Counts a failure in the task's figures.
    void noteFailure(const QString &strError);

    static QString runErrorText(const QString &strName, const QString &strError);

private:
    /// A step as it is given to its algorithm; built anew when the step has other texts.
    struct PreparedStep {
        static constexpr int NO_VIEW = -1;
        static constexpr int NO_CONFIG = -2;

        // Shared copies: while they are held, no other text can stand at the same address.
        QString m_strArithmID;
        QString m_strOptionStr;
        Arithm *m_pcArithm = nullptr;
        bool m_bDrawing = false;
        int m_nView = NO_CONFIG; ///< the view that the config string names
        QByteArray m_achConfig;
    };

    TaskItem &item(int nStep);
    bool runSteps(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs, qint64 nBeganNs);
    PreparedStep *prepare(int nStep, bool bNameView);
    QString execute(const PreparedStep &cStep, int nStep);
    /// Obeys and removes the commands in a result, up to the first that it does not know. False on
    /// "stop:". Without pnStep only "print:" is known. Texts of 4 characters hold no command.
    bool obeyCommands(QString &strResult, qint64 *pnStep);
    void showStepTime(qint64 nRow, qint64 nMs);

    TaskInfo &m_cTask;
    std::shared_ptr<TaskRecord> m_pcRecord;
    std::shared_ptr<RunFigures> m_pcOwnFigures;
    RunFigures *m_pcFigures = nullptr; ///< null while the status functions are off
    std::vector<PreparedStep> m_lstPrepared;
    qint64 m_nStepNs = 0; ///< how long the last step took, where it is asked for
    bool m_bTimeSteps = false;
};

#endif
