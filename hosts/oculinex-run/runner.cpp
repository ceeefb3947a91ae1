#include "runner.h"

#include <QTimer>

#include "OculinexQTStandAloneInQt.h"
#include "picturelimit.h"
#include "stopsignals.h"
#include "taskMgr/taskMgr.h"
#include "taskcallbacks.h"

namespace
{
constexpr int TICK_MS = 50;
constexpr int LIVE_MS = 500;
constexpr int LIVE_WINDOW = 5; ///< runs a second are those of as many status lines
constexpr double MS_PER_S = 1e3;
constexpr double NS_PER_S = 1e9;
constexpr double HANGING_S = 2; ///< a step that runs for so long is shown

TaskInfo *taskAt(int nTask)
{
    return TaskMgr::getInstance()->getTask(nTask);
}

TaskSummary summaryOf(int nTask, const QElapsedTimer &cStarted)
{
    TaskSummary cSummary;
    getTaskStatus(nTask, cSummary.m_cStatus);
    const TaskStatus &cStatus = cSummary.m_cStatus;
    qint64 nNs = cStarted.nsecsElapsed();
    // A task that waits for pictures which don't come is not slow.
    if (cStatus.m_nSincePictureNs >= 0)
        nNs -= qMax<qint64>(0, cStatus.m_nSincePictureNs - cStatus.m_nLastRunNs);
    cSummary.m_fSeconds = static_cast<double>(qMax<qint64>(0, nNs)) / NS_PER_S;
    return cSummary;
}

QString stepLabel(const TaskItem &cItem)
{
    for (const QString &strName : {cItem.m_strDescribe, cItem.m_strArithmName})
        if (!strName.trimmed().isEmpty())
            return strName.simplified();
    return cItem.m_strArithmID;
}

QList<TaskLabel> taskLabels()
{
    QList<TaskLabel> lstLabel;
    QStringList lstName;
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum(); ++nTask) {
        TaskLabel cLabel;
        cLabel.m_strName = taskAt(nTask)->getName().trimmed();
        if (cLabel.m_strName.isEmpty())
            cLabel.m_strName = QString("task %1").arg(nTask + 1);
        else if (lstName.contains(cLabel.m_strName))
            cLabel.m_strName += QString(" (task %1)").arg(nTask + 1);
        lstName += cLabel.m_strName;
        for (const TaskItem &cItem : qAsConst(taskAt(nTask)->getTaskItem()))
            cLabel.m_lstStep += stepLabel(cItem);
        lstLabel += cLabel;
    }
    return lstLabel;
}
} // namespace

Runner::Runner(const Options &cOptions, Report &cReport)
    : m_cOptions(cOptions),
      m_cReport(cReport),
      m_vecWatch(static_cast<size_t>(TaskMgr::getInstance()->getTaskNum())),
      m_nRunning(TaskMgr::getInstance()->getTaskNum())
{
}

int Runner::run()
{
    m_cReport.setTasks(taskLabels());
    connectTasks();
    enableTaskStatus(true);
    if (!m_cOptions.m_lstView.isEmpty()) {
        m_cWriter.emplace(m_cOptions.m_strOut, m_cOptions.m_bLast, m_cReport);
        m_cReader.emplace(m_cOptions.m_lstView, *m_cWriter);
        m_cReader->start();
    }

    StopSignals cSignals;
    connect(&cSignals, &StopSignals::stopRequested, this, &Runner::requestStop);
    QTimer cTick;
    connect(&cTick, &QTimer::timeout, this, &Runner::look);
    cTick.start(TICK_MS);
    m_cStarted.start();
    m_cLastActive.start();

    std::thread cOnce;
    if (m_cOptions.m_eUntil == Options::Until::Once)
        cOnce = std::thread(&Runner::runEachOnce, this);
    else
        startAll();
    if (m_nRunning > 0)
        m_cLoop.exec();
    if (cOnce.joinable())
        cOnce.join();
    return finish();
}

void Runner::startAll()
{
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch) {
        const int nTask = static_cast<int>(nWatch);
        TaskInfo *pcTask = taskAt(nTask);
        if (m_cOptions.m_eUntil == Options::Until::Runs)
            limitPictures(*pcTask, m_cOptions.m_nRuns);
        // Queued behind the task's own slot, which tells of a failure: when this arrives, all that
        // the task has to say has been said.
        connect(
            pcTask, &TaskInfo::threadFinished, this,
            [this, nTask] {
                taskEnded(nTask, summaryOf(nTask, m_vecWatch[static_cast<size_t>(nTask)].m_cStarted));
            },
            Qt::QueuedConnection);
    }
    for (Watch &cWatch : m_vecWatch)
        cWatch.m_cStarted.start();
    startAllTasks();
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch) {
        const int nTask = static_cast<int>(nWatch);
        // Taken back by the event loop at the earliest, if there ever was a thread.
        if (taskAt(nTask)->m_hThread == 0) {
            m_cReport.failed(nTask, "No thread could be started.");
            m_vecWatch[nWatch].m_cSummary.m_cStatus.m_nFailures = 1;
            taskEnded(nTask, m_vecWatch[nWatch].m_cSummary);
        }
    }
}

void Runner::runEachOnce()
{
    for (int nTask = 0; nTask < static_cast<int>(m_vecWatch.size()); ++nTask) {
        TaskSummary cSummary;
        if (!m_bStop) {
            QElapsedTimer cStarted;
            cStarted.start();
            runTaskOnce(nTask);
            cSummary = summaryOf(nTask, cStarted);
        }
        QMetaObject::invokeMethod(
            this, [this, nTask, cSummary] { taskEnded(nTask, cSummary); }, Qt::QueuedConnection);
    }
}

void Runner::requestStop()
{
    m_bStop = true;
    // Asked for all at once, while the event loop goes on to show what is waited for; stopTask()
    // would wait for each.
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch)
        if (!m_vecWatch[nWatch].m_bEnded)
            taskAt(static_cast<int>(nWatch))->m_bExit = true;
}

void Runner::taskEnded(int nTask, const TaskSummary &cSummary)
{
    Watch &cWatch = m_vecWatch[static_cast<size_t>(nTask)];
    lookAt(nTask);
    cWatch.m_bEnded = true;
    cWatch.m_cSummary = cSummary;
    if (--m_nRunning == 0)
        m_cLoop.quit();
}

bool Runner::isOver(const QElapsedTimer &cClock) const
{
    return static_cast<double>(cClock.elapsed()) >= m_cOptions.m_fSeconds * MS_PER_S;
}

void Runner::look()
{
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch)
        if (!m_vecWatch[nWatch].m_bEnded)
            lookAt(static_cast<int>(nWatch));
    if ((m_cOptions.m_eUntil == Options::Until::Seconds && isOver(m_cStarted)) ||
        (m_cOptions.m_eUntil == Options::Until::Idle && isOver(m_cLastActive)))
        requestStop();
    if (m_cStarted.elapsed() - m_lstLiveMs.last() >= LIVE_MS)
        showLive();
}

void Runner::lookAt(int nTask)
{
    Watch &cWatch = m_vecWatch[static_cast<size_t>(nTask)];
    TaskStatus &cStatus = cWatch.m_cSummary.m_cStatus;
    const qint64 nPictures = cStatus.m_nPictures;
    if (!getTaskStatus(nTask, cStatus))
        return;
    if (cStatus.m_nPictures != nPictures || cStatus.m_nCurrentStep >= 0)
        m_cLastActive.restart();

    if (cWatch.m_strSourceError != cStatus.m_strLastDataSourceError) {
        cWatch.m_strSourceError = cStatus.m_strLastDataSourceError;
        if (!cWatch.m_strSourceError.isEmpty())
            m_cReport.sourceFailed(nTask, cWatch.m_strSourceError);
    }

    const double fStepSeconds = static_cast<double>(cStatus.m_nCurrentStepNs) / NS_PER_S;
    const bool bHangs = cStatus.m_nCurrentStep >= 0 && fStepSeconds > HANGING_S;
    if (bHangs && cWatch.m_nHangingStep != cStatus.m_nCurrentStep)
        m_cReport.stepHangs(nTask, cStatus.m_nCurrentStep, fStepSeconds);
    cWatch.m_nHangingStep = bHangs ? cStatus.m_nCurrentStep : -1;
}

void Runner::showLive()
{
    const auto fnAppend = [](QList<qint64> &lstNumber, qint64 nNumber) {
        lstNumber += nNumber;
        if (lstNumber.size() > LIVE_WINDOW)
            lstNumber.removeFirst();
        return static_cast<double>(lstNumber.last() - lstNumber.first());
    };
    const double fSeconds = fnAppend(m_lstLiveMs, m_cStarted.elapsed()) / MS_PER_S;
    QStringList lstHanging;
    QStringList lstOther;
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch) {
        Watch &cWatch = m_vecWatch[nWatch];
        if (cWatch.m_bEnded)
            continue;
        const TaskStatus &cStatus = cWatch.m_cSummary.m_cStatus;
        const TaskLabel &cLabel = m_cReport.tasks()[static_cast<int>(nWatch)];
        const QString strTask = QString("%1 %2/s")
                                    .arg(cLabel.m_strName)
                                    .arg(fnAppend(cWatch.m_lstRuns, cStatus.m_nRuns) / fSeconds, 0, 'f', 1);
        if (cWatch.m_nHangingStep < 0)
            lstOther += strTask;
        else
            lstHanging += QString("%1, in step %2 (%3) for %4 s")
                              .arg(strTask)
                              .arg(cStatus.m_nCurrentStep + 1)
                              .arg(cLabel.m_lstStep.value(cStatus.m_nCurrentStep))
                              .arg(static_cast<double>(cStatus.m_nCurrentStepNs) / NS_PER_S, 0, 'f', 1);
    }
    m_cReport.live((m_bStop ? "stopping: " : "") + (lstHanging + lstOther).join(" | "));
}

int Runner::finish()
{
    bool bFailed = false;
    QList<TaskSummary> lstSummary;
    for (size_t nWatch = 0; nWatch < m_vecWatch.size(); ++nWatch) {
        const int nTask = static_cast<int>(nWatch);
        const TaskSummary &cSummary = m_vecWatch[nWatch].m_cSummary;
        // A clean-up step that fails after a stop was asked for is not told by the task.
        if (cSummary.m_cStatus.m_nFailures > 0 && !hasTaskFailed(nTask))
            m_cReport.failed(nTask, cSummary.m_cStatus.m_strLastError);
        bFailed = bFailed || cSummary.m_cStatus.m_nFailures > 0 || hasTaskFailed(nTask);
        lstSummary += cSummary;
    }
    QList<ViewSummary> lstView;
    if (m_cReader) {
        m_cReader->stop();
        m_cWriter->finish();
    }
    for (const ViewOption &cView : m_cOptions.m_lstView) {
        lstView += m_cWriter->summary(cView.m_nView);
        bFailed = bFailed || lstView.last().m_nFailed > 0;
    }
    m_cReport.summary(lstSummary, lstView, bFailed ? 1 : 0);
    return bFailed ? 1 : 0;
}
