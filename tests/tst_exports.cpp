#include <QtTest>

#include <atomic>
#include <thread>

#include <QTemporaryDir>

#include "OculinexQTStandAlone.h"
#include "OculinexQTStandAloneInQt.h"
#include "taskMgr/taskMgr.h"

namespace
{
struct Queue {
    void (*m_fnPush)(QString);
    int (*m_fnTake)(char *, int);
};

const Queue s_cErrors = {FuncHaveErrorMessage, getErrMsg};
const Queue s_cOutput = {FuncHavePrintMessage, getOutputMsg};

/// All messages that wait, each with the result of the call that took it.
QStringList drain(const Queue &cQueue)
{
    QStringList lstMsg;
    char achBuffer[200] = "";
    for (int nResult = 1; nResult == 1;) {
        nResult = cQueue.m_fnTake(achBuffer, sizeof achBuffer);
        if (nResult >= 0)
            lstMsg.append(QStringLiteral("%1:%2").arg(nResult).arg(QString::fromLocal8Bit(achBuffer)));
    }
    return lstMsg;
}

/// A task that is fed endless small pictures and has one probe step.
QString taskText(const QString &strProbe, const QString &strSource = QStringLiteral("Probe"))
{
    return QStringLiteral(
               "<=TaskInfo=><-TaskName->t</-TaskName->"
               "<-DataSource-><DSName>%1</DSName><OutputType>RGB</OutputType><OutputID>1</OutputID>"
               "</-DataSource-><-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->probe"
               "</-ArithmID-><-OptionStr->%2</-OptionStr-></-TaskItem-></=TaskInfo=>")
        .arg(strSource, strProbe);
}

bool isRunning(int nPos)
{
    bool bRunning = false;
    return IsTaskRunning(bRunning, nPos) && bRunning;
}
} // namespace

Q_DECLARE_METATYPE(Queue)

/// The functions that a host calls, and the facade over them.
class TestExports : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ::init(); }
    void cleanup();

    void queue_data();
    void queue();
    void takes_data();
    void takes();
    void queuesBetweenThreads();
    void positions();
    void tasksByPosition();
    void facade();
    void anyThreadMayAsk();
};

void TestExports::cleanup()
{
    TaskMgr::getInstance()->clear();
    drain(s_cErrors);
    drain(s_cOutput);
}

void TestExports::queue_data()
{
    QTest::addColumn<Queue>("cQueue");
    QTest::newRow("errors") << s_cErrors;
    QTest::newRow("output") << s_cOutput;
}

void TestExports::queue()
{
    QFETCH(Queue, cQueue);
    QStringList lstExpected;
    for (int nMsg = 0; nMsg < 11; ++nMsg)
        cQueue.m_fnPush(QStringLiteral("消息 %1").arg(nMsg));
    for (int nMsg = 0; nMsg < 10; ++nMsg)
        lstExpected.append(QStringLiteral("%1:消息 %2").arg(nMsg < 9).arg(nMsg));
    QCOMPARE(drain(cQueue), lstExpected); // the eleventh was dropped
    char achBuffer[] = "untouched";
    QCOMPARE(cQueue.m_fnTake(achBuffer, sizeof achBuffer), -1);
    QCOMPARE(achBuffer, "untouched");
    cQueue.m_fnPush("after");
    QCOMPARE(drain(cQueue), QStringList("0:after"));
}

void TestExports::takes_data()
{
    QTest::addColumn<QString>("strMsg");
    QTest::addColumn<int>("nBuffLen");
    QTest::addColumn<QByteArray>("achWritten"); // into a buffer of '#'
    QTest::newRow("fits just") << "abc" << 4 << QByteArray("abc\0##", 6);
    QTest::newRow("cut") << "0123456789" << 5 << QByteArray("0123\0#", 6);
    QTest::newRow("cut to one") << "abc" << 2 << QByteArray("a\0####", 6);
    QTest::newRow("cut inside a character") << "é" << 2 << QByteArray("\xC3\0####", 6);
    QTest::newRow("no room") << "abc" << 1 << QByteArray("######");
    QTest::newRow("no length") << "abc" << 0 << QByteArray("######");
    QTest::newRow("negative length") << "abc" << -5 << QByteArray("######");
    QTest::newRow("least length") << "abc" << std::numeric_limits<int>::min() << QByteArray("######");
    QTest::newRow("empty message") << "" << 6 << QByteArray("######");
}

void TestExports::takes()
{
    QFETCH(QString, strMsg);
    QFETCH(int, nBuffLen);
    QFETCH(QByteArray, achWritten);
    for (const Queue &cQueue : {s_cErrors, s_cOutput}) {
        cQueue.m_fnPush(strMsg);
        cQueue.m_fnPush(strMsg);
        QByteArray achBuffer(6, '#');
        QCOMPARE(cQueue.m_fnTake(achBuffer.data(), nBuffLen), 1);
        QCOMPARE(achBuffer, achWritten);
        QCOMPARE(cQueue.m_fnTake(nullptr, nBuffLen), 0); // taken all the same
        QCOMPARE(cQueue.m_fnTake(nullptr, nBuffLen), -1);
    }
}

void TestExports::queuesBetweenThreads()
{
    std::atomic<int> nPushing{2};
    const auto fnPush = [&nPushing] {
        for (int nMsg = 0; nMsg < 2000; ++nMsg) {
            FuncHaveErrorMessage("e");
            FuncHavePrintMessage("o");
        }
        --nPushing;
    };
    std::thread acPusher[] = {std::thread(fnPush), std::thread(fnPush)};
    while (nPushing > 0) {
        const QStringList lstMsg = drain(s_cErrors) + drain(s_cOutput);
        for (const QString &strMsg : lstMsg)
            QVERIFY(strMsg == "0:e" || strMsg == "1:e" || strMsg == "0:o" || strMsg == "1:o");
    }
    for (std::thread &cPusher : acPusher)
        cPusher.join();
}

void TestExports::positions()
{
    TaskMgr *pcManager = TaskMgr::getInstance();
    pcManager->fromString(taskText(QString()).repeated(4));
    pcManager->removeTask(1);
    TaskStatus cStatus;
    // Positions are keys: 3 is used, but not below the number of tasks.
    for (const int nPos : {-1, 1, 3, 4, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        bool bRunning = true;
        QVERIFY(!IsTaskRunning(bRunning, nPos));
        QVERIFY(!bRunning);
        QVERIFY(!getTaskStatus(nPos, cStatus));
        startTask(nPos);
        runTaskOnce(nPos);
        stopTask(nPos);
        const char *szText = nPos == 1 ? "Task is not exist." : "nTaskPos must less than task quantity.";
        QCOMPARE(showConfigWindow(nPos, 0), szText);
        QCOMPARE(selectDataSource(nPos), szText);
    }
    QVERIFY(!pcManager->getTask(3)->IsRunning());
    QVERIFY(getTaskStatus(2, cStatus));
    QCOMPARE(cStatus.m_strName, "t");
    QCOMPARE(showConfigWindow(0, -1), ""); // a step that does not exist opens nothing
    QCOMPARE(showConfigWindow(0, 1), "");
}

void TestExports::tasksByPosition()
{
    TaskMgr::getInstance()->fromString(taskText("<Result><CMD>print:one</CMD></Result>") +
                                       taskText(QString(), "no such source") +
                                       taskText("<Result>bad!!</Result>"));
    runTaskOnce(0);
    QCOMPARE(drain(s_cOutput), QStringList("0:one"));
    runAllTasksOnce();
    QCOMPARE(drain(s_cOutput), QStringList("0:one"));
    QCOMPARE(drain(s_cErrors), QStringList({"1:No datasource assigned.", "0:算法\"\"出错, 错误信息:bad!!"}));

    startTask(0);
    QVERIFY(isRunning(0));
    QCOMPARE(showConfigWindow(0, 0), "Task is running.");
    QCOMPARE(selectDataSource(0), "Task is running.");
    runTaskOnce(0); // not beside its thread
    startTask(0);
    QVERIFY(!isRunning(1));
    stopTask(0);
    QVERIFY(!isRunning(0));
    stopTask(0);

    startAllTasks(); // two of them fail at once
    QTRY_COMPARE(drain(s_cErrors).size() + (isRunning(1) || isRunning(2) ? 0 : 10), 10);
    QVERIFY(isRunning(0));
    stopAllTasks();
    QVERIFY(!isRunning(0));
}

void TestExports::facade()
{
    QTemporaryDir cDir;
    QByteArray achPath = cDir.filePath("saved.tasks").toUtf8();
    OculinexQtStandAlone *pcLibrary = OculinexQtStandAlone::getInstance();
    QCOMPARE(OculinexQtStandAlone::getInstance(), pcLibrary);

    TaskMgr::getInstance()->fromString(taskText("<Result><CMD>print:p</CMD>error</Result>").repeated(2));
    QCOMPARE(pcLibrary->saveTasksFile(achPath.data()), "");
    TaskMgr::getInstance()->clear();
    QCOMPARE(pcLibrary->openTasksFile(achPath.data()), "");
    QCOMPARE(TaskMgr::getInstance()->getTaskNum(), 2);

    char achMsg[100] = "";
    pcLibrary->runTaskOnce(1);
    QCOMPARE(pcLibrary->getOutputMsg(achMsg, sizeof achMsg), 0);
    QCOMPARE(achMsg, "p");
    pcLibrary->runAllTasksOnce();
    QCOMPARE(pcLibrary->getErrMsg(achMsg, 3), 1);
    QCOMPARE(strlen(achMsg), size_t(2));
    QCOMPARE(drain(s_cErrors).size(), 2);

    QCOMPARE(pcLibrary->showConfigWindow(2, 0), "nTaskPos must less than task quantity.");
    QCOMPARE(pcLibrary->selectDataSource(-1), "nTaskPos must less than task quantity.");
    TaskMgr::getInstance()->fromString(taskText(QString()).repeated(2));
    bool bRunning = false;
    pcLibrary->startTask(1);
    QVERIFY(pcLibrary->IsTaskRunning(bRunning, 1) && bRunning);
    QVERIFY(pcLibrary->IsTaskRunning(bRunning, 0) && !bRunning);
    pcLibrary->stopTask(1);
    pcLibrary->startAllTasks();
    QVERIFY(isRunning(0) && isRunning(1));
    pcLibrary->stopAllTasks();
    QVERIFY(!isRunning(0) && !isRunning(1));
}

/// Asking for a task's state is safe while the controlling thread deletes the task.
void TestExports::anyThreadMayAsk()
{
    std::atomic<bool> bDone{false};
    std::atomic<int> nAnswers{0};
    std::thread cAsker([&] {
        TaskStatus cStatus;
        bool bRunning = false;
        while (!bDone)
            for (int nPos = 0; nPos < 3; ++nPos)
                nAnswers += IsTaskRunning(bRunning, nPos) + getTaskStatus(nPos, cStatus);
    });
    const QString strTasks = taskText(QString()).repeated(3);
    for (int nRound = 0; nRound < 300 || nAnswers < 100; ++nRound)
        TaskMgr::getInstance()->fromString(strTasks);
    bDone = true;
    cAsker.join();
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_exports.moc"
