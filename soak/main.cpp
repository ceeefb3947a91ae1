// A device at work for a long time: six tasks with memory disks, drawing and saving, a host that reads
// views and messages, an operator who stops and starts. Watches what the process holds.
//
//   oculinex-soak [SECONDS]
//
// Ends with 0 when what it holds stays constant, no picture is lost and no queue overflows.

#include <malloc.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QThread>

#include <OculinexQTStandAloneInQt.h>

#include "archive.h"
#include "reader.h"
#include "resources.h"
#include "tasks.h"

namespace
{
volatile std::sig_atomic_t s_nSignal = 0;

class Soak
{
public:
    explicit Soak(qint64 nSeconds) : m_nSeconds(nSeconds) { m_cTimer.start(); }

    bool run();

private:
    /// The host's own work until then: events, tasks that failed, files, views. All tasks run at its end.
    void work(qint64 nUntilMs);
    /// The operator stops a task and starts it again.
    void operate();
    /// What is held when all pictures have reached their end; leaves the tasks paused.
    Resources measure();
    void printRow(const Resources &cNow);
    bool judge(const Resources &cFirst, const Resources &cLast);

    const qint64 m_nSeconds;
    QElapsedTimer m_cTimer;
    Tasks m_cTasks;
    Reader m_cReader;
    Archive m_cArchive{QStringLiteral("saved")};
    int m_nStopped = -1; ///< by the operator
    int m_nStops = 0;
    qint64 m_nNextMs = 0; ///< when the operator comes again
};

bool Soak::run()
{
    // The first tenth, or minute, is for buffers to reach their size and libraries to make their threads.
    const qint64 nFirstMs = qMin<qint64>(60000, m_nSeconds * 100);
    const qint64 nIntervalMs = qBound<qint64>(1000, m_nSeconds * 1000 / 20, 60000);
    puts("  time    pss KiB   heap KiB  files threads  pictures inspected   saved  drawings messages starts");
    work(nFirstMs);
    const Resources cFirst = measure();
    Resources cLast = cFirst;
    while (!s_nSignal && m_cTimer.elapsed() < m_nSeconds * 1000) {
        m_cTasks.resume();
        work(qMin(m_cTimer.elapsed() + nIntervalMs, m_nSeconds * 1000));
        cLast = measure();
    }
    stopAllTasks();
    return judge(cFirst, cLast);
}

void Soak::work(qint64 nUntilMs)
{
    constexpr int PERIOD_MS = 5;
    while (!s_nSignal && m_cTimer.elapsed() < nUntilMs) {
        QCoreApplication::processEvents();
        m_cTasks.revive();
        operate();
        m_cArchive.prune();
        const int nSecond = static_cast<int>(m_cTimer.elapsed() / 1000);
        useDrawingWindow(0, 640 + nSecond % 3, 480);
        useDrawingWindow(3, 320 + nSecond % 3, 240);
        QThread::msleep(PERIOD_MS);
    }
    if (m_nStopped >= 0)
        m_cTasks.start(std::exchange(m_nStopped, -1));
}

void Soak::operate()
{
    constexpr int RUNNING_MS = 3000;
    // The disk behind the stopped task runs full, for far less than the second after which a picture is
    // dropped.
    constexpr int STOPPED_MS = 700;
    const int TASKS[] = {Tasks::INSPECT, Tasks::SECOND_LOOK, Tasks::GREY_CAMERA};
    if (m_cTimer.elapsed() < m_nNextMs)
        return;
    if (m_nStopped < 0) {
        m_nStopped = TASKS[static_cast<size_t>(m_nStops++) % std::size(TASKS)];
        m_cTasks.stop(m_nStopped);
        m_nNextMs = m_cTimer.elapsed() + STOPPED_MS;
    } else {
        m_cTasks.start(std::exchange(m_nStopped, -1));
        m_nNextMs = m_cTimer.elapsed() + RUNNING_MS;
    }
}

Resources Soak::measure()
{
    m_cReader.m_bAttentive = true;
    m_cTasks.pause();
    m_cReader.waitForRounds(2); // what waited in the views is gone
    m_cArchive.prune();
    // What the C library keeps of freed memory depends on which threads freed it when; it goes back first.
    malloc_trim(0);
    const Resources cNow = Resources::now();
    printRow(cNow);
    m_cReader.m_bAttentive = false;
    return cNow;
}

void Soak::printRow(const Resources &cNow)
{
    const qint64 nSecond = m_cTimer.elapsed() / 1000;
    printf("%3lld:%02lld %10lld %10lld %6d %7d %9lld %9lld %7lld %9lld %8lld %6lld\n", nSecond / 60,
           nSecond % 60, cNow.m_nPssKb, cNow.m_nHeapKb, cNow.m_nDescriptors, cNow.m_nThreads,
           m_cTasks.figures(Tasks::COLOUR_CAMERA).m_nFirst + m_cTasks.figures(Tasks::GREY_CAMERA).m_nFirst,
           m_cTasks.figures(Tasks::INSPECT).m_nPictures + m_cTasks.figures(Tasks::MEASURE).m_nPictures,
           m_cArchive.count(), m_cReader.m_nDrawings.load(),
           m_cReader.m_nPrinted.load() + m_cReader.m_nErrors.load(), m_cTasks.starts());
    fflush(stdout);
}

bool Soak::judge(const Resources &cFirst, const Resources &cLast)
{
    qint64 nLost = 0;
    bool bGood = true;
    for (const QString &strLine : m_cTasks.account(nLost))
        puts(qPrintable(strLine));
    const auto fnTell = [&bGood](bool bHolds, const char *szWhat, qint64 nSeen, qint64 nAllowed) {
        printf("%-6s %s: %lld, allowed %lld\n", bHolds ? "good" : "BAD", szWhat, nSeen, nAllowed);
        bGood &= bHolds;
    };
    const qint64 nAllowedKb = qMax<qint64>(2048, cFirst.m_nHeapKb / 100);
    const qint64 nGrownKb = cLast.m_nHeapKb - cFirst.m_nHeapKb;
    fnTell(nGrownKb <= nAllowedKb, "growth of memory in KiB", nGrownKb, nAllowedKb);
    fnTell(cLast.m_nDescriptors == cFirst.m_nDescriptors, "open files", cLast.m_nDescriptors,
           cFirst.m_nDescriptors);
    fnTell(cLast.m_nThreads == cFirst.m_nThreads, "threads", cLast.m_nThreads, cFirst.m_nThreads);
    fnTell(nLost == 0, "pictures that a memory disk lost", nLost, 0);
    const qint64 nSaved = m_cTasks.figures(Tasks::ARCHIVE).m_nFirst;
    fnTell(m_cArchive.count() == nSaved && m_cArchive.empty() == 0, "pictures saved whole",
           m_cArchive.count() - m_cArchive.empty(), nSaved);
    fnTell(m_cReader.m_nMostWaiting <= gMaxMsgNum, "most messages in a queue", m_cReader.m_nMostWaiting,
           gMaxMsgNum);
    fnTell(m_cReader.m_nErrors > 0 && m_cReader.m_nErrors <= m_cTasks.revived(), "errors that were told",
           m_cReader.m_nErrors, m_cTasks.revived());
    return bGood;
}
} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // By default threads that come and go leave free pieces in up to eight arenas for each core, so that
    // memory creeps up for long before it stays.
    mallopt(M_ARENA_MAX, 1);
    const QGuiApplication cApp(argc, argv);
    const qint64 nSeconds = argc > 1 ? atoll(argv[1]) : 600;
    QTemporaryDir cDirectory;
    if (nSeconds < 10 || !cDirectory.isValid()) {
        fprintf(stderr, "usage: %s [SECONDS]\nat least 10 seconds, and a directory for temporary files\n",
                argv[0]);
        return 2;
    }
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(nSignal, [](int nWhich) { s_nSignal = nWhich; });

    // The tasks file names its folders from here.
    const QString strSource = QStringLiteral(OCULINEX_SOURCE_DIR);
    QDir::setCurrent(cDirectory.path());
    for (const char *szDirectory : {"pictures", "saved", "views"})
        QDir().mkdir(QLatin1String(szDirectory));
    // All of one size, as a camera gives them: what the library keeps for later is the same at any time.
    for (const char *szName : {"coins.png", "hubble_deep_field.jpg", "rocket.jpg"})
        QImage(strSource + QStringLiteral("/examples/pictures/") + QLatin1String(szName))
            .scaled(320, 240)
            .save(QStringLiteral("pictures/") + QFileInfo(QLatin1String(szName)).baseName() +
                  QStringLiteral(".bmp"));
    useDrawingWindow(0, 640, 480);
    useDrawingWindow(1, 640, 480);
    useDrawingWindow(3, 320, 240);
    if (*openTasksFile((strSource + QStringLiteral("/soak/soak.tasks")).toLocal8Bit().data()) != '\0') {
        fputs("the tasks file can't be opened\n", stderr);
        return 2;
    }
    const bool bGood = Soak(nSeconds).run();
    if (s_nSignal)
        fprintf(stderr, "ended early by signal %d\n", static_cast<int>(s_nSignal));
    puts(bGood ? "The soak holds." : "The soak does NOT hold.");
    return bGood ? 0 : 1;
}
