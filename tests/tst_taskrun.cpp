#include <QFile>
#include <QTableWidget>
#include <QtTest>

#include "datatable.h"
#include "taskfixture.h"

/// One run of a flow: the commands, limits, texts and times, without the task's thread.
class TestTaskRun : public QObject
{
    Q_OBJECT

private slots:
    void init() { Fake::reset(); }

    void runs_data()
    {
        // The error "a:text" is that of step a.
        addRows(R"(
case                 flow                                                  runs  trace   printed  error  counts
two skips add up     a|<cmd>SKIP:3</cmd><CMD>Skip: +3</CMD>, b, c, d, e, f    1  a f         -  -  1 0 0 0 0 1
skip past both ends  a, b|{skip:-2147483648}|{skip:2147483647}, c             2  a b a b a b c  -  -  3 3 1
sum beyond 32 bits   a|{skip:2147483647}{skip:2147483647}, b                  1  a           -  -  1 0
no end               a|{print:1}<CMD>print:2                                  1  a           1  a:<CMD>print:2  0
body as it stands    a|{ print:x}, b|{xskip:2}, c                             1  a b c       -  -  1 1 1
stretches join       a|<C{print:1}MD>print:2</CMD>                            1  a           1,2  -  1
four characters      a|四个字符                                               1  a           -  a:四个字符  0
error ends the run   a, b||bad, c                                             5  a b c a b   -  b:bad  2 1 1
limits               0;n, 1;once, 2;twice, -5;all, 999999999;e                3  once twice all twice all all  -  -  0 1 2 3 0
)");
        // Each row of the guide's table of commands tells the truth.
        QFile cGuide(OCULINEX_SOURCE_DIR "/docs/tasks-file.md");
        QVERIFY(cGuide.open(QIODevice::ReadOnly));
        const QString strTable =
            QString::fromUtf8(cGuide.readAll()).section("| result of step 0", 1).section("\n\n", 0, 0);
        for (const QString &strRow : strTable.split('\n').mid(2)) {
            QStringList lstCell = strRow.split('|').mid(1, 4);
            for (QString &strCell : lstCell)
                strCell = strCell.trimmed().remove('`');
            const QString strError = lstCell[3].isEmpty()
                                         ? QString(lstCell[0].contains("stop:") ? "stopped" : "")
                                         : "0:" + lstCell[3];
            QTest::newRow(qPrintable("guide " + lstCell[0]))
                << "0|" + lstCell[0] + ", 1, 2, 3, 4" << QString("1") << lstCell[1]
                << lstCell[2].replace(' ', ',') << strError << QString("*");
        }
    }

    void runs()
    {
        QFETCH(QString, flow);
        QFETCH(QString, runs);
        QFETCH(QString, error);
        error.replace('{', "<CMD>").replace('}', "</CMD>");
        const QString strError =
            "算法\"" + error.section(':', 0, 0) + "\"出错, 错误信息:" + error.section(':', 1);

        Fake::Task cTask(flow);
        QString strMsg = error == "stopped" ? "of before" : QString();
        bool bGood = true;
        for (int nRun = 0; nRun < runs.toInt() && bGood; ++nRun)
            bGood = cTask.runOnce(strMsg, false, -1, -1);
        QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
        QTEST(Fake::take(Fake::s_lstPrinted).join(','), "printed");
        QCOMPARE(bGood, error.isEmpty());
        QCOMPARE(strMsg, error.isEmpty() || error == "stopped" ? QString() : strError);
        QStringList lstCounts;
        for (const TaskItem &cItem : cTask.getTaskItem())
            lstCounts.append(QString::number(cItem.m_nExeTimes));
        QFETCH(QString, counts);
        if (counts != "*")
            QCOMPARE(lstCounts.join(' '), counts);
    }

    void cleanUp_data()
    {
        addRows(R"(
case                flow                                        trace               printed  errors
after the run       999999999;x|{Print:bye}, a, 999999999;y     start a x y stop    bye  -
after a failure     a|bad, 999999999;x                          start a x stop      -  算法"a"出错, 错误信息:bad
print, then others  999999999;z|{print:1}{stop:n}{print:2}, 999999999;never  start z stop  1  Arithm "z" error, message:<CMD>print:2</CMD>
both fail           a|bad, 999999999;x|worse, 999999999;never   start a x stop      -  算法"a"出错, 错误信息:bad; Arithm "x" error, message:worse
unknown             ?, 999999999;?, 999999999;never             start stop          -  Arithm"?"is not existed.; Arithm"?"is not existed.
)");
    }

    void cleanUp()
    {
        QFETCH(QString, flow);
        Fake::Task cTask(flow);
        for (TaskItem &cItem : cTask.getTaskItem())
            if (cItem.m_strArithmName == "?")
                cItem.m_strArithmID = "unknown";
        for (int nTime = 0; nTime < 2; ++nTime) { // the counts start anew each time
            Fake::s_mapExecutions.clear();
            cTask.runTaskOnce();
            QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
            QTEST(Fake::take(Fake::s_lstPrinted).join(' '), "printed");
            QTEST(Fake::take(Fake::s_lstErrors).join("; "), "errors");
            QVERIFY(!cTask.IsRunning());
        }
        // Also where the host hears nothing.
        Fake::s_mapExecutions.clear();
        cTask.setMssageCallBack(nullptr);
        cTask.setPrintCallBack(nullptr);
        cTask.runTaskOnce();
    }

    void lastStepAndBudget_data()
    {
        addRows(R"(
case                           flow                 last  budget  trace   timeout
up to a step                   a, b, c                 1      -1  a b     -
a jump passes the last step    a|{skip:2}, b, c        1      -1  a       -
no step begins late            a, slow, c             -1      20  a slow  yes
ending late is no time-out     a, slow                -1      20  a slow  -
)");
    }

    void lastStepAndBudget()
    {
        QFETCH(QString, flow);
        QFETCH(QString, last);
        QFETCH(QString, budget);
        QFETCH(QString, timeout);
        Fake::s_mapHandlers["slow"] = [] { QTest::qSleep(40); };
        Fake::Task cTask(flow);
        QString strMsg;
        QCOMPARE(cTask.runOnce(strMsg, true, last.toInt(), budget.toInt()), timeout.isEmpty());
        QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
        QCOMPARE(strMsg.isEmpty(), timeout.isEmpty());
        QCOMPARE(cTask.getTaskItem().at(0).m_nExeTimes, 0); // a single run forgets
    }

    void stepTimes()
    {
        Fake::s_mapHandlers["slow"] = [] { QTest::qSleep(30); };
        // A step writes into the row before the one that is next: step 0, which goes back, into none.
        Fake::Task cTask("a|{skip:-5}, slow|{skip:2}, b, c");
        QTableWidget cTable(4, 3);
        cTask.addTaskFlowListWidget(&cTable);
        QString strMsg;
        QVERIFY(cTask.runOnce(strMsg, true, -1, -1));
        QVERIFY(!cTable.item(1, 2));
        QVERIFY2(cTable.item(2, 2)->text().toInt() >= 30, qPrintable(cTable.item(2, 2)->text()));
    }

    /// What an algorithm is given: the option string of the moment; the drawing algorithm also the view.
    void configTexts()
    {
        Fake::Task cTask("a");
        for (const auto &[szConfig, nLimit] :
             {std::pair("图", 1), {"", -1}, {"end", TaskItem::CLEAN_UP_TIMES}})
            cTask.m_lstArithm.append(Fake::step(szConfig, nLimit, "KQ_Drawing"));
        for (const auto &[nView, nShown] : {std::pair(7, 3), {-7, 0}}) {
            cTask.m_nWhichView = nView;
            cTask.runTaskOnce();
            QCOMPARE(Fake::take(Fake::s_lstTrace).join(' '),
                     QString("start a <View>%1</View>图 <View>%1</View> end stop").arg(nShown));
            QCOMPARE(cTask.m_nWhichView, nShown);
        }
    }

    /// A callback of the host, while the task runs on the host's own thread, may have the task removed,
    /// append steps to it or start it.
    void callbacks()
    {
        static QPointer<Fake::Task> s_pcTask;
        static std::function<void()> s_fnDo;
        TaskMgr *pcManager = TaskMgr::getInstance();
        pcManager->setMssageCallBack([](QString) { s_fnDo(); });
        pcManager->setPrintCallBack([](QString) { s_fnDo(); });
        const auto fnTrace = [&](const QString &strFlow, const std::function<void()> &fnDo) {
            s_pcTask = new Fake::Task(strFlow);
            s_fnDo = fnDo;
            pcManager->addTask(s_pcTask, 0);
            s_pcTask->runTaskOnce();
            return Fake::take(Fake::s_lstTrace).join(' ');
        };
        QCOMPARE(fnTrace("a|{print:}, b, 999999999;x", [=] { pcManager->clear(); }), "start a b x stop");
        QVERIFY(!s_pcTask);
        const QString strTrace = fnTrace("c|{print:}", [] {
            for (int nStep = 0; nStep < 100; ++nStep)
                s_pcTask->m_lstArithm.append(Fake::step("x", TaskItem::CLEAN_UP_TIMES));
        });
        QCOMPARE(strTrace, "start c " + QString("x ").repeated(100) + "stop");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is not started in the middle"));
        QCOMPARE(fnTrace("d|bad, 999999999;x", [] { s_pcTask->startTask(); }), "start d x stop");
        QVERIFY(!s_pcTask->IsRunning());
        fnTrace("e, 999999999;y|bad", [] { s_pcTask->startTask(); }); // in the last message
        QVERIFY(s_pcTask->IsRunning());
        TaskMgr::deleteThis();
    }
};

QTEST_MAIN(TestTaskRun)
#include "tst_taskrun.moc"
