#ifndef RUNNER_H
#define RUNNER_H

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>

#include "options.h"
#include "picturewriter.h"
#include "report.h"
#include "viewreader.h"

/// Runs the tasks that the task manager holds, watches them and stops them.
///
/// Threads: made and used on the main thread, whose event loop it runs. Until::Once has one worker
/// thread, which then is the one that controls the tasks.
class Runner : public QObject
{
    Q_OBJECT

public:
    Runner(const Options &cOptions, Report &cReport);

    /// Runs until the end that the options name and returns the exit code.
    int run();

private:
    struct Watch {
        bool m_bEnded = false;
        QElapsedTimer m_cStarted;
        TaskSummary m_cSummary;     ///< as of the last look, final once the task has ended
        QString m_strSourceError;   ///< told already
        int m_nHangingStep = -1;    ///< told already
        QList<qint64> m_lstRuns{0}; ///< at the last status lines, the oldest first
    };

    void startAll();
    void runEachOnce();
    void requestStop();
    void taskEnded(int nTask, const TaskSummary &cSummary);
    bool isOver(const QElapsedTimer &cClock) const; ///< whether it shows the seconds of the options
    void look();
    void lookAt(int nTask);
    void showLive();
    int finish();

    const Options m_cOptions;
    Report &m_cReport;
    std::vector<Watch> m_vecWatch; ///< by task
    int m_nRunning = 0;            ///< tasks that have not ended
    std::atomic<bool> m_bStop{false};
    std::optional<PictureWriter> m_cWriter; ///< these two where views are read
    std::optional<ViewReader> m_cReader;
    QEventLoop m_cLoop;
    QElapsedTimer m_cStarted;
    QElapsedTimer m_cLastActive;  ///< since a source gave a picture or a step ran
    QList<qint64> m_lstLiveMs{0}; ///< when the last status lines were shown
};

#endif
