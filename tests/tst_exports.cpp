#include <QtTest>

#include "OculinexQTStandAlone.h"
#include "OculinexQTStandAloneInQt.h"
#include "taskMgr/taskMgr.h"

namespace
{
struct Queue {
    void (*m_fnPush)(QString);
    int (OculinexQtStandAlone::*m_fnTake)(char *, int);

    int take(char *szBuff, int nBuffLen) const
    {
        return (OculinexQtStandAlone::getInstance()->*m_fnTake)(szBuff, nBuffLen);
    }
    /// All messages that wait, each with the result of the call that took it.
    QStringList drain() const
    {
        QStringList lstMsg;
        char achBuffer[200] = "";
        for (int nResult = 1; nResult == 1;) {
            nResult = take(achBuffer, sizeof achBuffer);
            if (nResult >= 0)
                lstMsg.append(QString("%1:%2").arg(nResult).arg(QString::fromLocal8Bit(achBuffer)));
        }
        return lstMsg;
    }
};

const Queue s_cErrors = {FuncHaveErrorMessage, &OculinexQtStandAlone::getErrMsg};
const Queue s_cOutput = {FuncHavePrintMessage, &OculinexQtStandAlone::getOutputMsg};

/// Tasks that are fed endless small pictures, each with one probe step that returns a text.
void makeTasks(const QStringList &lstResult)
{
    const QString strTask =
        "<=TaskInfo=><-TaskName->t</-TaskName-><-DataSource-><DSName>%1</DSName><OutputType>RGB</OutputType>"
        "<OutputID>1</OutputID></-DataSource-><-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->probe"
        "</-ArithmID-><-OptionStr-><Result>%2</Result></-OptionStr-></-TaskItem-></=TaskInfo=>";
    QString strText;
    for (const QString &strResult : lstResult)
        strText += strTask.arg(strResult == "no source" ? "" : "Probe", strResult);
    TaskMgr::getInstance()->fromString(strText);
}

bool isRunning(int nPos)
{
    bool bRunning = false;
    return OculinexQtStandAlone::getInstance()->IsTaskRunning(bRunning, nPos) && bRunning;
}
} // namespace

/// The functions that a host calls, most of them by way of the facade that forwards to them.
class TestExports : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QScopedValueRollback<int> cUnlimited(gMaxMsgNum, 300000000);
        ::init();
    }

    void cleanup()
    {
        TaskMgr::getInstance()->clear();
        s_cErrors.drain();
        s_cOutput.drain();
    }

    void queues()
    {
        for (const Queue &cQueue : {s_cErrors, s_cOutput}) {
            for (int nMsg = 0; nMsg < 11; ++nMsg)
                cQueue.m_fnPush(QString("消息 %1").arg(nMsg));
            const QStringList lstTaken = cQueue.drain();
            QCOMPARE(lstTaken.size(), 10); // the eleventh was dropped
            QCOMPARE(lstTaken.mid(8).join(' '), "1:消息 8 0:消息 9");
        }
    }

    void takes_data()
    {
        QTest::addColumn<QString>("strMsg");
        QTest::addColumn<int>("nBuffLen");
        QTest::addColumn<QByteArray>("achWritten"); // into a buffer of '#'
        QTest::newRow("fits just") << "abc" << 4 << QByteArray("abc\0##", 6);
        QTest::newRow("cut inside a character") << "é" << 2 << QByteArray("\xC3\0####", 6);
        QTest::newRow("no room") << "abc" << 1 << QByteArray("######");
        QTest::newRow("least length") << "abc" << std::numeric_limits<int>::min() << QByteArray("######");
    }

    void takes()
    {
        QFETCH(QString, strMsg);
        QFETCH(int, nBuffLen);
        QFETCH(QByteArray, achWritten);
        for (const Queue &cQueue : {s_cErrors, s_cOutput}) {
            cQueue.m_fnPush(strMsg);
            cQueue.m_fnPush(strMsg);
            QByteArray achBuffer(6, '#');
            QCOMPARE(cQueue.take(achBuffer.data(), nBuffLen), 1);
            QCOMPARE(achBuffer, achWritten);
            QCOMPARE(cQueue.take(nullptr, nBuffLen), 0); // taken all the same
            QCOMPARE(cQueue.take(nullptr, nBuffLen), -1);
        }
    }

    void positions()
    {
        TaskMgr *pcManager = TaskMgr::getInstance();
        makeTasks({"", "", "", ""});
        pcManager->removeTask(1);
        // Positions are keys: 3 is used, but not below the number of tasks.
        for (const int nPos : {-1, 1, 3, 4}) {
            bool bRunning = true;
            QVERIFY(!m_cLibrary.IsTaskRunning(bRunning, nPos));
            QVERIFY(!bRunning);
            m_cLibrary.startTask(nPos);
            const char *szText = nPos == 1 ? "Task is not exist." : "nTaskPos must less than task quantity.";
            QCOMPARE(m_cLibrary.showConfigWindow(nPos, 0), szText);
            QCOMPARE(m_cLibrary.selectDataSource(nPos), szText);
        }
        QVERIFY(!pcManager->getTask(3)->IsRunning());
        QCOMPARE(m_cLibrary.showConfigWindow(0, 1), ""); // a step that does not exist opens nothing
    }

    void tasks()
    {
        makeTasks({"<CMD>print:one</CMD>", "no source", "bad!!"});
        m_cLibrary.runAllTasksOnce();
        QCOMPARE(s_cOutput.drain(), QStringList("0:one"));
        QCOMPARE(s_cErrors.drain(),
                 QStringList({"1:No datasource assigned.", "0:算法\"\"出错, 错误信息:bad!!"}));

        m_cLibrary.startTask(0);
        QVERIFY(isRunning(0));
        QCOMPARE(m_cLibrary.showConfigWindow(0, 0), "Task is running.");
        QCOMPARE(m_cLibrary.selectDataSource(0), "Task is running.");
        m_cLibrary.runTaskOnce(0); // not beside its thread
        m_cLibrary.stopTask(0);
        QVERIFY(!isRunning(0) && !isRunning(1));

        m_cLibrary.startAllTasks(); // two of them fail at once
        QStringList lstErrors;
        QTRY_COMPARE((lstErrors += s_cErrors.drain()).size(), 2);
        QVERIFY(isRunning(0) && !isRunning(1) && !isRunning(2));
        m_cLibrary.stopAllTasks();
        QVERIFY(!isRunning(0));
    }

private:
    OculinexQtStandAlone &m_cLibrary = *OculinexQtStandAlone::getInstance();
};

QTEST_GUILESS_MAIN(TestExports)
#include "tst_exports.moc"
