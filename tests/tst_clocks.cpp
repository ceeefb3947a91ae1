// Waits and durations go by a clock that nobody sets. The one that people and networks set is an hour later,
// or earlier, each time that anybody here looks at it.

#include <ctime>
#include <future>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <QtTest>

#include "MemoryDisk/memorydisk.h"
#include "taskfixture.h"

namespace
{
int s_nJump = 0;   ///< seconds from one look to the next
qint64 s_nSet = 0; ///< seconds that it is wrong by now
} // namespace

// Both stand before the C library's and the sanitizers', which call them before they are ready to watch them.
#define UNWATCHED __attribute__((visibility("default"), no_sanitize("address", "thread", "undefined")))

extern "C" UNWATCHED int clock_gettime(clockid_t nClock, timespec *pcTime) noexcept
{
    const long nError = syscall(SYS_clock_gettime, nClock, pcTime);
    if (nError == 0 && (nClock == CLOCK_REALTIME || nClock == CLOCK_REALTIME_COARSE))
        pcTime->tv_sec +=
            __atomic_add_fetch(&s_nSet, __atomic_load_n(&s_nJump, __ATOMIC_RELAXED), __ATOMIC_RELAXED);
    return static_cast<int>(nError);
}

extern "C" UNWATCHED int gettimeofday(timeval *pcTime, void *) noexcept
{
    timespec cTime{};
    const int nError = clock_gettime(CLOCK_REALTIME, &cTime);
    *pcTime = {cTime.tv_sec, cTime.tv_nsec / 1000};
    return nError;
}

class TestClocks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<int>("jump");
        QTest::newRow("set forward") << 3600;
        QTest::newRow("set back") << -3600;
    }
    void init()
    {
        QFETCH_GLOBAL(int, jump);
        Fake::reset();
        __atomic_store_n(&s_nJump, jump, __ATOMIC_RELAXED);
    }
    void cleanup() { __atomic_store_n(&s_nJump, 0, __ATOMIC_RELAXED); }

    /// Else nothing here would test anything.
    void everybodySeesTheJumps()
    {
        QFETCH_GLOBAL(int, jump);
        const QDateTime cQt = QDateTime::currentDateTimeUtc();
        QVERIFY(qAbs(cQt.secsTo(QDateTime::currentDateTimeUtc()) - jump) < 60);
        const auto cStandard = std::chrono::system_clock::now();
        QVERIFY(std::chrono::abs(std::chrono::system_clock::now() - cStandard - std::chrono::seconds(jump)) <
                std::chrono::minutes(1));
    }

    void budgetOfARun()
    {
        QString strMsg;
        QVERIFY(Fake::Task("a, b").runOnce(strMsg, true, -1, 20000));
        Fake::Task cEndless("again!|{skip:0}");
        QElapsedTimer cTimer;
        cTimer.start();
        Fake::s_mapHandlers["again!"] = [&] {
            QTest::qSleep(1);
            cEndless.m_bExit = cTimer.elapsed() > 5000; // ends it without a failure
        };
        QVERIFY(!cEndless.runOnce(strMsg, true, -1, 20));
        QVERIFY(cTimer.elapsed() >= 20);
    }

    void waitForAPicture()
    {
        QElapsedTimer cTimer;
        cTimer.start();
        MemoryDisk &cDisk = *MemoryDisk::getInstance(0);
        auto cWaiting = std::async(std::launch::async, [&] { return cDisk.requestGray8(); });
        unsigned char uchPixel = 0;
        if (cWaiting.wait_for(std::chrono::seconds(20)) != std::future_status::ready)
            cDisk.addGray8(&uchPixel, 1, 1); // ends the wait
        QVERIFY(!cWaiting.get());
        QVERIFY(cTimer.elapsed() >= 999);
    }

    void statusFigures()
    {
        TaskInfo::setStatusEnabled(true);
        Fake::Gate cGate;
        Fake::s_mapHandlers["slow!"] = [] { QTest::qSleep(5); };
        std::atomic<int> nTimes{0};
        Fake::s_mapHandlers["hang"] = [&] {
            if (++nTimes == 2)
                cGate.enter();
        };
        Fake::Task cTask("slow!, hang");
        cTask.startTask();
        QVERIFY(cGate.waitEntered());
        QTRY_VERIFY(cTask.getStatus().m_nCurrentStepNs >= 5000000);
        const TaskStatus cStatus = cTask.getStatus();
        cGate.open();
        cTask.stopTask();
        TaskInfo::setStatusEnabled(false);
        const StepStatus &cSlow = cStatus.m_lstStep.at(0);
        for (const qint64 nNs :
             {cStatus.m_nLastRunNs, cStatus.m_nTotalRunNs, cStatus.m_nWorstRunNs, cStatus.m_nCurrentStepNs,
              cStatus.m_nSincePictureNs, cSlow.m_nLastNs, cSlow.m_nTotalNs, cSlow.m_nWorstNs})
            QVERIFY2(nNs >= 5000000 && nNs < 60000000000, qPrintable(QString::number(nNs)));
    }
};

QTEST_GUILESS_MAIN(TestClocks)
#include "tst_clocks.moc"
