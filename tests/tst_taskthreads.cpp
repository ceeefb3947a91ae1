#include <thread>

#include <sched.h>
#include <unistd.h>

#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include "datatable.h"
#include "fixtures/madethreads.h"
#include "taskfixture.h"

namespace
{
/// The widgets of a host.
struct Widgets {
    void attach(TaskInfo &cTask)
    {
        cTask.m_pcRunTask = &m_cRun;
        cTask.m_pcDataSource = &m_cSource;
        cTask.m_pcViewSelect = &m_cView;
        cTask.m_pcThreadSelect = &m_cCore;
        cTask.m_pcTaskFlow = &m_cFlow;
    }
    /// The text of the button, and 1 or 0 for each widget that can be used or can't.
    QString shown() const
    {
        QString strShown = m_cRun.text();
        for (const QWidget *pcWidget :
             QList<const QWidget *>{&m_cRun, &m_cSource, &m_cView, &m_cCore, &m_cFlow})
            strShown += QString::number(pcWidget->isEnabled());
        return strShown;
    }

    QPushButton m_cRun;
    QPushButton m_cSource;
    QComboBox m_cView;
    QComboBox m_cCore;
    QTableWidget m_cFlow{0, 3};
};
} // namespace

/// The task's own thread: starting, stopping, failing, restarting, deleting.
class TestTaskThreads : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        Fake::reset();
        MadeThreads::s_fnMade = nullptr;
    }

    /// Set-up steps run in the first run of each start, clean-up steps after the last run; nothing is told
    /// of what these say after a requested stop.
    void life()
    {
        Fake::Gate cGate;
        std::atomic<int> nRuns{0};
        Fake::s_mapHandlers["run!"] = [&] {
            if (++nRuns % 3 == 0)
                cGate.enter();
        };
        Fake::Task cTask("1;once, run!, rest!, 999999999;end|bad|bad");
        // The thread leaves after its source was stopped, and tells that it is over when it is.
        std::atomic<int> nWrong{0};
        Fake::s_mapHandlers["stop"] = [&] { nWrong += cTask.m_bExited || !cTask.IsRunning(); };
        connect(
            &cTask, &TaskInfo::threadFinished, &cTask,
            [&] { nWrong += !cTask.m_bExited || cTask.IsRunning(); }, Qt::DirectConnection);
        cTask.stopTask(); // an idle task: nothing to do
        QVERIFY(!cTask.IsRunning() && cTask.m_bExited && cTask.m_hThread == 0);

        cTask.startTask();
        QVERIFY(cGate.waitEntered());
        QVERIFY(cTask.IsRunning() && !cTask.m_bExited && cTask.m_hThread != 0);
        cTask.startTask(); // a running one stays alone
        std::thread cOpener([&] {
            Fake::spinUntil([&] { return cTask.m_bExit.load(); });
            cGate.open();
        });
        cTask.stopTask();
        cOpener.join();
        QVERIFY(!cTask.IsRunning() && cTask.m_bExited && !cTask.m_bExit && cTask.m_hThread == 0);
        QCOMPARE(Fake::take(Fake::s_lstTrace).join(' '), "start once run! rest! run! rest! run! end stop");

        cTask.RunClicked();
        QTRY_VERIFY(nRuns > 6);
        cTask.RunClicked();
        QVERIFY(!cTask.IsRunning());
        QCOMPARE(Fake::s_lstTrace.mid(0, 5).join(' '), "start once run! rest! run!");
        QCOMPARE(nWrong, 0);
        QCOMPARE(Fake::s_lstTrace.count("once"), 1);
        QVERIFY(Fake::s_lstErrors.isEmpty());
    }

    /// The controls follow the task, also when another thread controls it: they are set on their own.
    void widgets()
    {
        Widgets cWidgets;
        Fake::Task cTask("a");
        cWidgets.attach(cTask);
        cTask.startTask();
        QCOMPARE(cWidgets.shown(), "停止任务10000");
        cTask.stopTask();
        QCOMPARE(cWidgets.shown(), "执行任务11111");
        cTask.m_lstArithm = {Fake::step("b!|{stop:end}")};
        cTask.startTask();
        QCOMPARE(cWidgets.shown(), "停止任务10000"); // the failure has yet to be delivered
        QTRY_COMPARE(cWidgets.shown(), "执行任务11111");

        Fake::Gate cGate;
        cWidgets.m_cView.addItems({"0", "1", "2"});
        std::thread cOwner([&] {
            Fake::Task cOther("a");
            cWidgets.attach(cOther);
            cOther.fromString("<-View->2</-View-><-TaskItem->x</-TaskItem->");
            cOther.startTask();
            cGate.enter();
            cOther.stopTask();
        });
        const bool bUntouched = cGate.waitEntered() && cWidgets.shown() == "执行任务11111" &&
                                cWidgets.m_cView.currentIndex() == 0 && cWidgets.m_cFlow.rowCount() == 0;
        const bool bShown = QTest::qWaitFor([&] { return cWidgets.shown() == "停止任务10000"; });
        cGate.open();
        cOwner.join();
        QVERIFY(bUntouched && bShown);
        QTRY_COMPARE(cWidgets.shown(), "执行任务11111");
        QCOMPARE(cWidgets.m_cView.currentIndex(), 2);
        QCOMPARE(cWidgets.m_cFlow.rowCount(), 1);
    }

    void ends_data()
    {
        addRows(R"(
case                           flow                               trace             error
step fails                     a||bad, 999999999;x                start a a x stop  算法"a"出错, 错误信息:bad
stop says nothing              a|{stop:x}                         start a stop      -
clean-up error replaces        a|bad, 999999999;x|worse           start a x stop    算法"x"出错, 错误信息:worse
callback throws                a|{print:throw}, 999999999;x       start a x stop    Task "任务" was ended by an exception: from the host
step ends the thread           a, exit, 999999999;x               start a exit stop  Task "任务": its thread was ended by a step.
source ends the thread         a|bad, last                        start a stop      算法"a"出错, 错误信息:bad
)");
    }

    void ends()
    {
        QFETCH(QString, flow);
        Fake::s_mapHandlers[flow.contains("last") ? "stop" : "exit"] = [] { pthread_exit(nullptr); };
        Fake::Task cTask(flow);
        cTask.setPrintCallBack([](QString strText) {
            if (strText == "throw")
                throw std::runtime_error("from the host");
        });
        QFETCH(QString, error);
        for (int nTime = 0; nTime < 2; ++nTime) {
            Fake::s_mapExecutions.clear();
            cTask.startTask();
            QTRY_COMPARE(cTask.m_hThread, pthread_t(0)); // the end has been delivered
            QVERIFY(!cTask.IsRunning() && cTask.m_bExited);
            QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
            QCOMPARE(Fake::take(Fake::s_lstErrors).join("; "), error);
        }
    }

    /// A thread that has told that it left is still in its last lines, here in a slot of the host:
    /// deleting, stopping and starting the task wait for it.
    void lastLines()
    {
        std::atomic<int> nStarted{0};
        std::atomic<int> nLeft{0};
        const auto fnMake = [&](const QString &strFlow) {
            auto pcTask = std::make_unique<Fake::Task>(strFlow);
            const auto fnSlot = [&nLeft] {
                usleep(150000); // longer than a step of the wait for m_bExited
                ++nLeft;
            };
            connect(pcTask.get(), &TaskInfo::threadFinished, pcTask.get(), fnSlot, Qt::DirectConnection);
            pcTask->startTask();
            ++nStarted;
            return pcTask;
        };
        auto pcTask = fnMake("a|bad");
        QVERIFY(Fake::spinUntil([&] { return pcTask->m_bExited.load(); }));
        pcTask.reset();
        QCOMPARE(nLeft, nStarted);

        pcTask = fnMake("b");
        pcTask->stopTask();
        QCOMPARE(nLeft, nStarted);
        pcTask.reset();

        pcTask = fnMake("c|bad");
        QVERIFY(Fake::spinUntil([&] { return !pcTask->IsRunning(); }));
        pcTask->startTask();
        QCOMPARE(nLeft, nStarted);
    }

    /// Runs that fail at once, before startTask() has returned from making their thread, leave the task
    /// idle and ready to start, with no event delivered. Their failures are reported late. The callback may
    /// then start the task, whose newer run is left alone, or delete it.
    void lateFailures()
    {
        static Fake::Task *s_pcTask;
        Fake::Gate cGate("hold");
        QPushButton cRun;
        s_pcTask = new Fake::Task("a|bad|bad||bad, hold");
        const auto cFailed = qScopeGuard([] { delete std::exchange(s_pcTask, nullptr); });
        s_pcTask->m_pcRunTask = &cRun;
        s_pcTask->setMssageCallBack([](QString strError) {
            Fake::onError(strError);
            s_pcTask->startTask();
        });
        MadeThreads::s_fnMade = [] {
            Fake::spinUntil([] { return s_pcTask->m_bExited && !s_pcTask->IsRunning(); });
        };
        for (int nTime = 0; nTime < 2; ++nTime) {
            s_pcTask->startTask();
            QVERIFY(!s_pcTask->IsRunning() && Fake::s_lstErrors.isEmpty());
        }
        MadeThreads::s_fnMade = nullptr;
        QCoreApplication::processEvents();
        QVERIFY(cGate.waitEntered());
        QCOMPARE(Fake::s_lstErrors,
                 QStringList({"算法\"a\"出错, 错误信息:bad", "算法\"a\"出错, 错误信息:bad"}));
        QVERIFY(s_pcTask->IsRunning() && s_pcTask->m_hThread != 0);
        QCOMPARE(cRun.text(), "停止任务");
        s_pcTask->setMssageCallBack([](QString) { delete std::exchange(s_pcTask, nullptr); });
        cGate.open();
        QTRY_VERIFY(!s_pcTask);
    }

    /// A run ends, and the GUI thread hears of it, before the starter on another thread is done.
    void startedElsewhere()
    {
        Widgets cWidgets;
        Fake::Task cTask("a|bad");
        cWidgets.attach(cTask);
        std::atomic<bool> bTold{false};
        MadeThreads::s_fnMade = [&, cGui = std::this_thread::get_id()] {
            Fake::spinUntil([&] { return bTold || std::this_thread::get_id() == cGui; });
        };
        std::thread cStarter([&] { cTask.startTask(); });
        bTold = QTest::qWaitFor([&] { return Fake::hasTraced("stop") && !Fake::s_lstErrors.isEmpty(); });
        cStarter.join();
        MadeThreads::s_fnMade = nullptr;
        QCoreApplication::processEvents();
        QCOMPARE(cWidgets.shown(), "执行任务11111");
        QVERIFY(bTold && cTask.m_hThread == 0);
    }

    /// A stop waits for the run that it told to stop, not for one that somebody begins meanwhile.
    void stopMeetsStart()
    {
        Fake::Task cTask("a");
        cTask.startTask();
        std::atomic<bool> bStopped{false};
        std::thread cStopper([&] {
            cTask.stopTask();
            bStopped = true;
        });
        Fake::spinUntil([&] { return !cTask.IsRunning(); });
        cTask.startTask();
        const bool bBack = Fake::spinUntil([&] { return bStopped.load(); });
        cTask.m_bExit = !bBack; // lets go of a stop that waits for the wrong run
        cStopper.join();
        QVERIFY(bBack && cTask.IsRunning());
    }

    void noThread()
    {
        QPushButton cRun("text");
        Fake::Task cTask("a");
        cTask.m_pcRunTask = &cRun;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^task 任务 has no thread: ."));
        MadeThreads::s_bRefused = true;
        cTask.startTask();
        MadeThreads::s_bRefused = false;
        QVERIFY(!cTask.IsRunning() && cTask.m_bExited);
        QCOMPARE(cRun.text(), "text");
        QVERIFY(Fake::s_lstTrace.isEmpty() && Fake::s_lstErrors.isEmpty());
        cTask.startTask();
        QVERIFY(cTask.IsRunning());
    }

    void pinning()
    {
        cpu_set_t cAll;
        QCOMPARE(sched_getaffinity(0, sizeof cAll, &cAll), 0);
        for (const int nCore : {0, 1, 70000}) {
            Fake::Gate cGate;
            cpu_set_t cSeen;
            CPU_ZERO(&cSeen);
            Fake::s_mapHandlers["look"] = [&] {
                sched_getaffinity(0, sizeof cSeen, &cSeen);
                cGate.enter();
            };
            Fake::Task cTask("look");
            cTask.ThreadSelected(nCore);
            cTask.startTask();
            QVERIFY(cGate.waitEntered());
            cGate.open();
            cTask.stopTask();
            if (nCore == 1 && CPU_ISSET(1, &cAll))
                QVERIFY(CPU_COUNT(&cSeen) == 1 && CPU_ISSET(1, &cSeen));
            else
                QVERIFY2(CPU_EQUAL(&cSeen, &cAll), qPrintable(QString::number(nCore)));
        }
    }

    /// A host that holds a copy of the flow, made before or during a run, shares nothing that the task
    /// counts in or moves; nor does a cell that hands its text over while the task runs.
    void flowInUse()
    {
        std::atomic<int> nRuns{0};
        Fake::s_mapHandlers["a!"] = [&] { ++nRuns; };
        const auto fnRunsOn = [&] {
            return QTest::qWaitFor([&, nEnough = nRuns + 3] { return nRuns >= nEnough; });
        };
        QTableWidget cTable(2, 3);
        Fake::Task cTask("a!, b!");
        cTask.addTaskFlowListWidget(&cTable);
        cTask.connectEvents();
        const QList<TaskItem> lstBefore = cTask.getTaskItem();
        cTask.startTask();
        const TaskItem *pcFirst = &qAsConst(cTask.m_lstArithm).at(0);
        QVERIFY(fnRunsOn());
        {
            const QList<TaskItem> lstDuring = cTask.m_lstArithm;
            QVERIFY(fnRunsOn());
            cTable.setItem(1, 1, new QTableWidgetItem("0"));
            QCOMPARE(&qAsConst(cTask.m_lstArithm).at(0), pcFirst);
        }
        QVERIFY(fnRunsOn());
        Fake::take(Fake::s_lstTrace);
        QVERIFY(fnRunsOn());
        QVERIFY(!Fake::hasTraced("b!"));
        cTask.stopTask();
        QCOMPARE(lstBefore.at(0).m_nExeTimes, 0);
        QVERIFY(qAsConst(cTask.m_lstArithm).at(0).m_nExeTimes > 4);
    }
};

QTEST_MAIN(TestTaskThreads)
#include "tst_taskthreads.moc"
