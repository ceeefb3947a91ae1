#include <QtTest>

#include "taskfixture.h"

/// What a host learns of its tasks once it has switched the status functions on.
class TestTaskStatus : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        Fake::reset();
        TaskInfo::setStatusEnabled(true);
    }
    void cleanup() { TaskInfo::setStatusEnabled(false); }

    void figures()
    {
        Fake::s_mapHandlers["slow!"] = [] { QTest::qSleep(5); };
        Fake::Task cTask("slow!|{print:1}, 2;b, c|||{stop:}, 999999999;end");
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
            QCOMPARE(cStatus.m_nFailures, qint64(0)); // an end by "stop:" is none
            QVERIFY(cStatus.m_nLastRunNs >= 5000000 && cStatus.m_nLastRunNs <= cStatus.m_nWorstRunNs);
            QVERIFY(cStatus.m_nTotalRunNs >= 15000000 && cStatus.m_nTotalRunNs < nPassedNs);
            QString strExecutions;
            for (const StepStatus &cStep : cStatus.m_lstStep)
                strExecutions += QString::number(cStep.m_nExecutions);
            QCOMPARE(strExecutions, "3231");
            const StepStatus cSlow = cStatus.m_lstStep.at(0);
            QVERIFY(cSlow.m_nLastNs >= 5000000 && cSlow.m_nLastNs <= cSlow.m_nWorstNs &&
                    cSlow.m_nTotalNs >= 15000000 && cSlow.m_nTotalNs < nPassedNs);
            QCOMPARE(cSlow.m_strLastResult, "<CMD>print:1</CMD>");
        }
    }

    /// Another thread sees which step hangs, and since when; a task switched on late counts from then.
    void runningTask()
    {
        TaskInfo::setStatusEnabled(false);
        Fake::Gate cFirst;
        Fake::Gate cSecond;
        std::atomic<int> nTime{0};
        Fake::s_mapHandlers["first"] = [&] { cFirst.enter(); };
        Fake::s_mapHandlers["hang"] = [&] {
            if (++nTime == 3)
                cSecond.enter();
        };
        Fake::Task cTask("1;first, hang");
        cTask.startTask();
        QVERIFY(cFirst.waitEntered());
        QCOMPARE(cTask.getStatus().m_eState, TaskStatus::State::Running);
        TaskInfo::setStatusEnabled(true);
        cFirst.open();
        QVERIFY(cSecond.waitEntered());

        const TaskStatus cStatus = cTask.getStatus();
        QCOMPARE(cStatus.m_nRuns, qint64(1));
        QCOMPARE(cStatus.m_nPictures, qint64(2));
        QCOMPARE(cStatus.m_nCurrentStep, 1);
        QTRY_VERIFY(cTask.getStatus().m_nCurrentStepNs >= 20000000);
        QVERIFY(cTask.getStatus().m_nSincePictureNs >= 20000000);
        cTask.m_bExit = true;
        QCOMPARE(cTask.getStatus().m_eState, TaskStatus::State::Stopping);
        cSecond.open();
        cTask.stopTask();
        QCOMPARE(cTask.getStatus().m_eState, TaskStatus::State::Idle);
        QCOMPARE(cTask.getStatus().m_nRuns, qint64(2));
    }

    void failures()
    {
        Fake::Task cTask("a||bad, 999999999;end|worse");
        cTask.startTask();
        QTRY_VERIFY(!cTask.IsRunning());
        QCOMPARE(cTask.getStatus().m_nRuns, qint64(2)); // a failed run is one
        QCOMPARE(cTask.getStatus().m_nFailures, qint64(2));
        QCOMPARE(cTask.getStatus().m_strLastError, "算法\"end\"出错, 错误信息:worse");
        QCOMPARE(cTask.getStatus().m_lstStep.at(0).m_strLastResult, "bad");
    }
};

QTEST_GUILESS_MAIN(TestTaskStatus)
#include "tst_taskstatus.moc"
