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
        TaskInfo::setStatusEnabled(true);
        __atomic_store_n(&s_nJump, jump, __ATOMIC_RELAXED);
    }
    void cleanup()
    {
        __atomic_store_n(&s_nJump, 0, __ATOMIC_RELAXED);
        TaskInfo::setStatusEnabled(false);
    }

    /// Else nothing here would test anything.
    void everybodySeesTheJumps()
    {
        QFETCH_GLOBAL(int, jump);
        const QDateTime cQt = QDateTime::currentDateTimeUtc();
        QVERIFY(qAbs(cQt.secsTo(QDateTime::currentDateTimeUtc()) - jump) < 60);
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

    /// What a host learns of its tasks once it has switched the status functions on.
    void statusFigures()
    {
        Fake::s_mapHandlers["slow!"] = [] { QTest::qSleep(5); };
        Fake::Task cTask("slow!|{print:1}, 2;b, c|||bad, 999999999;end|worse");
        for (int nStart = 0; nStart < 2; ++nStart) { // the figures start anew
            Fake::s_mapExecutions.clear();
            QElapsedTimer cTimer;
            cTimer.start();
            cTask.startTask();
            QTRY_VERIFY(!cTask.IsRunning());
            const TaskStatus cStatus = cTask.getStatus();
            const qint64 nPassedNs = cTimer.nsecsElapsed();
            QCOMPARE(cStatus.m_nRuns, qint64(3));
            QCOMPARE(cStatus.m_nPictures, qint64(3));
            QCOMPARE(cStatus.m_nFailures, qint64(2));
            QCOMPARE(cStatus.m_strLastError, "算法\"end\"出错, 错误信息:worse");
            QVERIFY(cStatus.m_nLastRunNs >= 5000000 && cStatus.m_nLastRunNs <= cStatus.m_nWorstRunNs);
            QVERIFY(cStatus.m_nTotalRunNs >= 15000000 && cStatus.m_nTotalRunNs < nPassedNs);
            QString strExecutions;
            for (const StepStatus &cStep : cStatus.m_lstStep)
                strExecutions += QString::number(cStep.m_nExecutions);
            QCOMPARE(strExecutions, "3231");
            const StepStatus cSlow = cStatus.m_lstStep.at(0);
            QVERIFY(cSlow.m_nLastNs >= 5000000 && cSlow.m_nLastNs <= cSlow.m_nWorstNs);
            QVERIFY(cSlow.m_nTotalNs >= 15000000 && cSlow.m_nTotalNs < nPassedNs);
            QCOMPARE(cSlow.m_strLastResult, "<CMD>print:1</CMD>");
        }
    }

    /// Another thread sees which step hangs, and since when; a task switched on late counts from then.
    void runningTask()
    {
        TaskInfo::setStatusEnabled(false);
        Fake::Gate cFirst("first");
        Fake::Gate cSecond("hang", 3);
        Fake::Task cTask("1;first, hang");
        cTask.startTask();
        QVERIFY(cFirst.waitEntered());
        TaskInfo::setStatusEnabled(true);
        cFirst.open();
        QVERIFY(cSecond.waitEntered());

        const TaskStatus cStatus = cTask.getStatus();
        QCOMPARE(cStatus.m_nRuns, qint64(1));
        QCOMPARE(cStatus.m_nPictures, qint64(2));
        QCOMPARE(cStatus.m_nCurrentStep, 1);
        QTRY_VERIFY(cTask.getStatus().m_nCurrentStepNs >= 20000000);
        const TaskStatus cLater = cTask.getStatus();
        QVERIFY(cLater.m_nSincePictureNs >= cLater.m_nCurrentStepNs &&
                cLater.m_nSincePictureNs < 60000000000);
        cSecond.open();
        cTask.stopTask();
        QCOMPARE(cTask.getStatus().m_eState, TaskStatus::State::Idle);
    }
};

QTEST_GUILESS_MAIN(TestClocks)
#include "tst_clocks.moc"
