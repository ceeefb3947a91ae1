#include <thread>

#include <dlfcn.h>
#include <sched.h>
#include <unistd.h>

#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include "taskfixture.h"

namespace
{
std::function<void()> s_fnThreadMade; ///< called when a thread has been made, before the maker knows
} // namespace

/// Stands before the system's function.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t *pnThread,
                                                                     const pthread_attr_t *pcAttributes,
                                                                     void *(*fnBody)(void *),
                                                                     void *pvArgument)
{
    static const auto s_fnNext =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    const int nError = s_fnNext(pnThread, pcAttributes, fnBody, pvArgument);
    if (nError == 0 && s_fnThreadMade)
        s_fnThreadMade();
    return nError;
}

/// The task's own thread: starting, stopping, failing, restarting, deleting.
class TestTaskThreads : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        Fake::reset();
        s_fnThreadMade = nullptr;
    }
    void life();
    void widgets();
    void ends_data();
    void ends();
    void idleWithoutEventLoop();
    void lastLines();
    void lateFailureSignal();
    void restartInErrorCallback();
    void deleteInErrorCallback();
    void errorWhileStopping();
    void noThread();
    void pinning();
    void deleteAndRestartAtOnce();
    void manyTasks();
    void sharedFlow();
};

namespace
{
const int STRESS_MS = qMax(1000, qEnvironmentVariableIntValue("OCULINEX_STRESS_MS"));

void throwOnRequest(QString strText)
{
    if (strText == "throw")
        throw std::runtime_error("from the host");
}
} // namespace

/// Set-up steps run in the first run of each start, clean-up steps after the last run.
void TestTaskThreads::life()
{
    Fake::Gate cGate;
    std::atomic<int> nRuns{0};
    Fake::s_mapHandlers["run!"] = [&] {
        if (++nRuns % 3 == 0)
            cGate.enter();
    };
    Fake::Task cTask({"1;once", "run!", "999999999;end"});
    cTask.stopTask(); // an idle task: nothing to do
    QVERIFY(!cTask.IsRunning() && cTask.m_bExited && cTask.m_hThread == 0);

    cTask.startTask();
    QVERIFY(cGate.waitEntered());
    QVERIFY(cTask.IsRunning() && !cTask.m_bExited && cTask.m_hThread != 0);
    cTask.startTask(); // a running one stays alone
    std::thread cOpener([&] {
        while (!cTask.m_bExit)
            usleep(1000);
        cGate.open();
    });
    cTask.stopTask();
    cOpener.join();
    QVERIFY(!cTask.IsRunning() && cTask.m_bExited && !cTask.m_bExit && cTask.m_hThread == 0);
    QCOMPARE(Fake::take(Fake::s_lstTrace).join(' '), QString("start once run! run! run! end stop"));

    cTask.RunClicked();
    QTRY_VERIFY(nRuns > 6);
    cTask.RunClicked();
    QVERIFY(!cTask.IsRunning());
    QCOMPARE(Fake::s_lstTrace.mid(0, 4).join(' '), QString("start once run! run!"));
    QCOMPARE(Fake::s_lstTrace.count("once"), 1);
    QVERIFY(Fake::s_lstErrors.isEmpty());
}

namespace
{
/// Sees whether a widget is changed on another thread than its own.
class ThreadWatch : public QObject
{
public:
    bool eventFilter(QObject *pcObject, QEvent *) override
    {
        if (QThread::currentThread() != pcObject->thread())
            m_bElsewhere = true;
        return false;
    }
    std::atomic<bool> m_bElsewhere{false};
};
} // namespace

/// The controls follow the task, also when another thread controls it: they are set on their own.
void TestTaskThreads::widgets()
{
    QPushButton cRun;
    QPushButton cSource;
    QComboBox cView;
    QComboBox cCore;
    QTableWidget cFlow;
    ThreadWatch cWatch;
    cSource.installEventFilter(&cWatch);
    const auto fnAttach = [&](TaskInfo &cTask) {
        cTask.m_pcRunTask = &cRun;
        cTask.m_pcDataSource = &cSource;
        cTask.m_pcViewSelect = &cView;
        cTask.m_pcThreadSelect = &cCore;
        cTask.m_pcTaskFlow = &cFlow;
    };
    const auto fnDetach = [](TaskInfo &cTask) {
        cTask.m_pcRunTask = cTask.m_pcDataSource = cTask.m_pcViewSelect = nullptr;
        cTask.m_pcThreadSelect = cTask.m_pcTaskFlow = nullptr;
    };
    const auto fnShows = [&](const QString &strText, bool bEnabled) {
        for (const QWidget *pcWidget : std::initializer_list<QWidget *>{&cSource, &cView, &cCore, &cFlow})
            if (pcWidget->isEnabled() != bEnabled)
                return false;
        return cRun.isEnabled() && cRun.text() == strText;
    };

    Fake::Task cTask({"a|"});
    fnAttach(cTask);
    cTask.startTask();
    QVERIFY(fnShows("停止任务", false));
    cTask.stopTask();
    QVERIFY(fnShows("执行任务", true));
    cTask.m_lstArithm = {Fake::step("b!|<CMD>stop:end</CMD>")};
    cTask.startTask();
    QVERIFY(fnShows("停止任务", false)); // the failure has yet to be delivered
    QTRY_VERIFY(fnShows("执行任务", true));
    QCOMPARE(cTask.m_hThread, pthread_t(0));
    fnDetach(cTask);

    std::atomic<bool> bLookedAt{false};
    std::thread cOwner([&] {
        Fake::Task cOther({"a"});
        fnAttach(cOther);
        cOther.startTask();
        while (!bLookedAt)
            std::this_thread::yield();
        cOther.stopTask();
        fnDetach(cOther);
    });
    const bool bShown = QTest::qWaitFor([&] { return fnShows("停止任务", false); });
    bLookedAt = true;
    cOwner.join();
    QVERIFY(bShown);
    QTRY_VERIFY(fnShows("执行任务", true));
    QVERIFY(!cWatch.m_bElsewhere);
}

void TestTaskThreads::ends_data()
{
    QTest::addColumn<QStringList>("flow");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("error");

    using List = QStringList;
    QTest::newRow("step fails") << List{"a||bad", "999999999;x"} << "start a a x stop"
                                << "算法\"a\"出错, 错误信息:bad";
    QTest::newRow("stop is silent") << List{"a|<CMD>stop:</CMD>", "999999999;x"} << "start a x stop"
                                    << "";
    QTest::newRow("clean-up error replaces") << List{"a|bad", "999999999;x|worse"} << "start a x stop"
                                             << "算法\"x\"出错, 错误信息:worse";
    QTest::newRow("clean-up error after a silent end")
        << List{"a|<CMD>stop:</CMD>", "999999999;x|worse"} << "start a x stop"
        << "算法\"x\"出错, 错误信息:worse";
    QTest::newRow("callback throws") << List{"a|<CMD>print:throw</CMD>", "999999999;x"} << "start a x stop"
                                     << "Task \"任务\" was ended by an exception: from the host";
    QTest::newRow("callback throws in clean-up")
        << List{"a|bad", "999999999;x|<CMD>print:throw</CMD>"} << "start a x stop"
        << "Task \"任务\" was ended by an exception: from the host";
    QTest::newRow("step ends the thread") << List{"a", "exit", "999999999;x"} << "start a exit stop"
                                          << "Task \"任务\": its thread was ended by a step.";
}

void TestTaskThreads::ends()
{
    QFETCH(QStringList, flow);
    QFETCH(QString, error);

    Fake::s_mapHandlers["exit"] = [] { pthread_exit(nullptr); };
    Fake::Task cTask(flow);
    cTask.setPrintCallBack(throwOnRequest);
    for (int nTime = 0; nTime < 2; ++nTime) {
        Fake::s_mapExecutions.clear();
        cTask.startTask();
        QTRY_COMPARE(cTask.m_hThread, pthread_t(0)); // the end has been delivered
        QVERIFY(!cTask.IsRunning() && cTask.m_bExited);
        QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
        QCOMPARE(Fake::take(Fake::s_lstErrors).join(' '), error);
    }
}

/// A run that fails at once, before startTask() has returned from making its thread, leaves the
/// task idle and ready to start, with no event delivered.
void TestTaskThreads::idleWithoutEventLoop()
{
    Fake::Task cTask({"a!|bad"});
    s_fnThreadMade = [&cTask] {
        while (!cTask.m_bExited)
            std::this_thread::yield();
    };
    for (int nTime = 0; nTime < 20; ++nTime) {
        cTask.startTask();
        QElapsedTimer cTimer;
        cTimer.start();
        while (cTask.IsRunning() && cTimer.elapsed() < 20000)
            std::this_thread::yield();
        QVERIFY(!cTask.IsRunning());
    }
    QCOMPARE(Fake::s_lstTrace.count("a!"), 20);
}

/// A thread that has told that it left is still in its last lines, here in a slot of the host:
/// deleting, stopping and starting the task wait for it.
void TestTaskThreads::lastLines()
{
    std::atomic<int> nStarted{0};
    std::atomic<int> nLeft{0};
    const auto fnMake = [&](const QStringList &lstSteps) {
        auto pcTask = std::make_unique<Fake::Task>(lstSteps);
        connect(
            pcTask.get(), &TaskInfo::threadFinished, pcTask.get(),
            [&nLeft] {
                usleep(150000); // longer than a step of the wait for m_bExited
                ++nLeft;
            },
            Qt::DirectConnection);
        pcTask->startTask();
        ++nStarted;
        return pcTask;
    };
    auto pcTask = fnMake({"a|bad"});
    while (!pcTask->m_bExited)
        std::this_thread::yield();
    pcTask.reset();
    QCOMPARE(nLeft, nStarted);

    pcTask = fnMake({"b"});
    pcTask->stopTask();
    QCOMPARE(nLeft, nStarted);
    pcTask.reset();

    pcTask = fnMake({"c|bad"});
    while (pcTask->IsRunning())
        std::this_thread::yield();
    pcTask->startTask();
    QCOMPARE(nLeft, nStarted);
}

/// The failure of a run that is over is reported, but a newer run is left alone.
void TestTaskThreads::lateFailureSignal()
{
    Fake::Gate cGate;
    Fake::s_mapHandlers["hold"] = [&] { cGate.enter(); };
    Fake::Task cTask({"a|bad", "hold"});
    QPushButton cRun;
    cTask.m_pcRunTask = &cRun;
    cTask.startTask();
    while (cTask.IsRunning())
        std::this_thread::yield();
    cTask.startTask();
    QVERIFY(cGate.waitEntered());
    QVERIFY(Fake::s_lstErrors.isEmpty());
    QCoreApplication::processEvents(); // delivers the first run's end
    QCOMPARE(Fake::s_lstErrors, QStringList{"算法\"a\"出错, 错误信息:bad"});
    QVERIFY(cTask.IsRunning() && cTask.m_hThread != 0);
    QCOMPARE(cRun.text(), QString("停止任务"));
    cGate.open();
    cTask.stopTask();
    cTask.m_pcRunTask = nullptr;
}

namespace
{
Fake::Task *s_pcCallbackTask = nullptr;
}

void TestTaskThreads::restartInErrorCallback()
{
    Fake::Gate cGate;
    Fake::s_mapHandlers["hold"] = [&] { cGate.enter(); };
    Fake::Task cTask({"a|bad", "hold"});
    s_pcCallbackTask = &cTask;
    cTask.setMssageCallBack([](QString) { s_pcCallbackTask->startTask(); });
    cTask.startTask();
    QTRY_VERIFY(Fake::hasTraced("hold"));
    QVERIFY(cGate.waitEntered());
    QCoreApplication::processEvents();
    QVERIFY(cTask.IsRunning() && cTask.m_hThread != 0);
    cGate.open();
    cTask.stopTask();
}

void TestTaskThreads::deleteInErrorCallback()
{
    s_pcCallbackTask = new Fake::Task({"a|bad"});
    s_pcCallbackTask->setMssageCallBack([](QString) { delete std::exchange(s_pcCallbackTask, nullptr); });
    s_pcCallbackTask->startTask();
    QTRY_VERIFY(!s_pcCallbackTask);
}

/// After a requested stop nothing is told of what the clean-up steps say.
void TestTaskThreads::errorWhileStopping()
{
    Fake::Gate cGate;
    Fake::s_mapHandlers["hold"] = [&] { cGate.enter(); };
    Fake::Task cTask({"hold", "999999999;x|bad"});
    cTask.startTask();
    QVERIFY(cGate.waitEntered());
    cTask.m_bExit = true;
    cGate.open();
    cTask.stopTask();
    QCoreApplication::processEvents();
    QCOMPARE(Fake::s_lstTrace.join(' '), QString("start hold x stop"));
    QVERIFY(Fake::s_lstErrors.isEmpty());
}

void TestTaskThreads::noThread()
{
    pthread_attr_t cDefault;
    pthread_attr_t cHuge;
    pthread_getattr_default_np(&cDefault);
    pthread_attr_init(&cHuge);
    pthread_attr_setstacksize(&cHuge, size_t(1) << 47);
    QCOMPARE(pthread_setattr_default_np(&cHuge), 0);
    Fake::Task cTask({"a"});
    QPushButton cRun("text");
    cTask.m_pcRunTask = &cRun;
    cTask.startTask();
    pthread_setattr_default_np(&cDefault);
    QVERIFY(!cTask.IsRunning() && cTask.m_bExited);
    QCOMPARE(cRun.text(), QString("text"));
    QVERIFY(Fake::s_lstTrace.isEmpty() && Fake::s_lstErrors.isEmpty());
    cTask.startTask();
    QVERIFY(cTask.IsRunning());
    cTask.stopTask();
    cTask.m_pcRunTask = nullptr;
}

void TestTaskThreads::pinning()
{
    cpu_set_t cAll;
    QCOMPARE(sched_getaffinity(0, sizeof cAll, &cAll), 0);
    for (const int nCore : {-1, 0, 1, 1024, 70000}) {
        Fake::Gate cGate;
        cpu_set_t cSeen;
        CPU_ZERO(&cSeen);
        Fake::s_mapHandlers["look"] = [&] {
            sched_getaffinity(0, sizeof cSeen, &cSeen);
            cGate.enter();
        };
        Fake::Task cTask({"look"});
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

/// Whoever sees that the task has left may delete or start it again at that very moment.
void TestTaskThreads::deleteAndRestartAtOnce()
{
    QElapsedTimer cTimer;
    cTimer.start();
    for (int nTime = 0; cTimer.elapsed() < STRESS_MS; ++nTime) {
        auto pcTask = std::make_unique<Fake::Task>(QStringList{"a!|<CMD>stop:</CMD>"});
        pcTask->startTask();
        if (nTime % 3 == 1) {
            while (!pcTask->m_bExited) // the first that the thread tells
                std::this_thread::yield();
        } else if (nTime % 3 == 2) {
            while (pcTask->IsRunning())
                std::this_thread::yield();
            pcTask->startTask();
        }
        pcTask.reset();
        if (nTime % 16 == 0)
            QCoreApplication::processEvents();
    }
}

void TestTaskThreads::manyTasks()
{
    std::vector<std::unique_ptr<Fake::Task>> lstTasks;
    lstTasks.reserve(6);
    for (int nTask = 0; nTask < 6; ++nTask)
        lstTasks.push_back(std::make_unique<Fake::Task>(
            nTask % 2 ? QStringList{QString("%1!").arg(nTask), "999999999;end"}
                      : QStringList{QString("%1").arg(nTask), QString("f%1|||||bad").arg(nTask)}));
    std::atomic<bool> bDone{false};
    std::thread cReader([&] {
        while (!bDone)
            for (const auto &pcTask : lstTasks)
                if (pcTask->IsRunning())
                    pcTask->getStatus();
    });
    QElapsedTimer cTimer;
    cTimer.start();
    while (cTimer.elapsed() < STRESS_MS) {
        for (const auto &pcTask : lstTasks)
            pcTask->startTask();
        QCoreApplication::processEvents();
        for (const auto &pcTask : lstTasks)
            pcTask->ViewSelected(static_cast<int>(cTimer.elapsed()));
        for (const auto &pcTask : lstTasks) {
            pcTask->stopTask();
            pcTask->startTask();
        }
        for (size_t nTask = 1; nTask < lstTasks.size(); nTask += 2) {
            usleep(100);
            QVERIFY(lstTasks[nTask]->IsRunning()); // the endless ones
        }
        for (const auto &pcTask : lstTasks)
            pcTask->stopTask();
        Fake::take(Fake::s_lstTrace);
    }
    bDone = true;
    cReader.join();
    lstTasks.clear();
}

/// A host that holds a copy of the flow, made before or during a run, shares nothing that the task
/// counts in or moves.
void TestTaskThreads::sharedFlow()
{
    std::atomic<int> nRuns{0};
    Fake::s_mapHandlers["a!"] = [&] { ++nRuns; };
    Fake::Task cTask({"a!", "b!"});
    const QList<TaskItem> lstBefore = cTask.getTaskItem();
    cTask.startTask();
    const TaskItem *pcFirst = &qAsConst(cTask.m_lstArithm).at(0);
    QTRY_VERIFY(nRuns > 2);
    {
        const QList<TaskItem> lstDuring = cTask.m_lstArithm;
        const int nSeen = nRuns;
        QTRY_VERIFY(nRuns > nSeen + 2);
        QCOMPARE(&qAsConst(cTask.m_lstArithm).at(0), pcFirst);
    }
    cTask.stopTask();
    QCOMPARE(lstBefore.at(0).m_nExeTimes, 0);
    QVERIFY(qAsConst(cTask.m_lstArithm).at(0).m_nExeTimes > 4);
}

QTEST_MAIN(TestTaskThreads)
#include "tst_taskthreads.moc"
