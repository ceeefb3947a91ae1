#include <QTableWidget>
#include <QtTest>

#include "taskfixture.h"

/// One run of a flow: the commands, limits, texts and times, without the task's thread.
class TestTaskRun : public QObject
{
    Q_OBJECT

private slots:
    void init() { Fake::reset(); }
    void runs_data();
    void runs();
    void cleanUp_data();
    void cleanUp();
    void lastStepAndBudget_data();
    void lastStepAndBudget();
    void stepTimes();
    void configTexts();
    void badAlgorithms();
    void longResult();
};

void TestTaskRun::runs_data()
{
    QTest::addColumn<QStringList>("flow");
    QTest::addColumn<int>("runs");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("counts");

    const auto fnFailed = [](const QString &strName, const QString &strText) {
        return "算法\"" + strName + "\"出错, 错误信息:" + strText;
    };
    using List = QStringList;
    QTest::newRow("empty flow") << List() << 2 << ""
                                << ""
                                << ""
                                << "";
    QTest::newRow("plain") << List{"a", "b"} << 2 << "a b a b"
                           << ""
                           << ""
                           << "2 2";
    QTest::newRow("skip") << List{"a|<CMD>skip:3</CMD>", "b", "c", "d", "e"} << 1 << "a d e"
                          << ""
                          << ""
                          << "1 0 0 1 1";
    QTest::newRow("two skips add up")
        << List{"a|<cmd>SKIP:3</cmd><CMD>Skip: +3</CMD>", "b", "c", "d", "e", "f"} << 1 << "a f"
        << ""
        << ""
        << "1 0 0 0 0 1";
    QTest::newRow("skip by one, none, back")
        << List{"a|<CMD>skip:1</CMD>", "b|<CMD>skip:0</CMD>", "c|<CMD>skip:-1</CMD>"} << 1 << "a b b c b c"
        << ""
        << ""
        << "1 3 2";
    QTest::newRow("skip past both ends")
        << List{"a", "b|<CMD>skip:-2147483648</CMD>|<CMD>skip:2147483647</CMD>", "c"} << 2 << "a b a b a b c"
        << ""
        << ""
        << "3 3 1";
    QTest::newRow("sums beyond 32 bits")
        << List{"a|<CMD>skip:2147483647</CMD><CMD>skip:2147483647</CMD>", "b"} << 1 << "a"
        << ""
        << ""
        << "1 0";
    QTest::newRow("bad skip does nothing") << List{"a|<CMD>skip:x</CMD><CMD>skip:</CMD>", "b"} << 1 << "a b"
                                           << ""
                                           << ""
                                           << "1 1";
    QTest::newRow("print") << List{"a|<cMd>Print:hello</CmD><CMD>print: you|</CMD>", "b"} << 1 << "a"
                           << "hello" << fnFailed("a", "<CMD>print: you") << "0 0";
    QTest::newRow("prints in a row") << List{"a|<CMD>print:1</CMD><CMD>print:</CMD>", "b"} << 1 << "a b"
                                     << "1,"
                                     << ""
                                     << "1 1";
    QTest::newRow("body as it stands")
        << List{"a|<CMD> print:x</CMD>", "b|<CMD>xskip:2</CMD>", "c"} << 1 << "a b c"
        << ""
        << ""
        << "1 1 1";
    QTest::newRow("stop is silent") << List{"a|<CMD>STOP:done</CMD>rest", "b"} << 1 << "a"
                                    << "done"
                                    << "stopped"
                                    << "0 0";
    QTest::newRow("unknown is consumed") << List{"a|<CMD>foo:1</CMD>", "b"} << 1 << "a b"
                                         << ""
                                         << ""
                                         << "1 1";
    QTest::newRow("unknown ends the commands") << List{"a|<CMD>foo:1</CMD><CMD>print:x</CMD>"} << 1 << "a"
                                               << "" << fnFailed("a", "<CMD>print:x</CMD>") << "0";
    QTest::newRow("empty body ends the commands") << List{"a|<CMD></CMD><CMD>print:x</CMD>"} << 1 << "a"
                                                  << "" << fnFailed("a", "<CMD>print:x</CMD>") << "0";
    QTest::newRow("text around a command") << List{"a|x<CMD>print:1</CMD>y"} << 1 << "a"
                                           << "1" << fnFailed("a", "xy") << "0";
    QTest::newRow("removed stretches join") << List{"a|<C<CMD>print:1</CMD>MD>print:2</CMD>"} << 1 << "a"
                                            << "1,2"
                                            << ""
                                            << "1";
    QTest::newRow("four characters") << List{"a|四个字符"} << 1 << "a"
                                     << "" << fnFailed("a", "四个字符") << "0";
    QTest::newRow("error ends the run") << List{"a", "b||bad", "c"} << 5 << "a b c a b"
                                        << "" << fnFailed("b", "bad") << "2 1 1";
    QTest::newRow("limits") << List{"0;never", "1;once", "2;twice", "-5;always", "999999999;cleanup"} << 3
                            << "once twice always twice always always"
                            << ""
                            << ""
                            << "0 1 2 3 0";
    QTest::newRow("limit above the clean-up mark") << List{"1000000000;a", "2147483647;b"} << 2 << "a b a b"
                                                   << ""
                                                   << ""
                                                   << "2 2";
    QTest::newRow("limit ends a loop") << List{"a", "2;b!|<CMD>skip:0</CMD>", "c"} << 1 << "a b! b! c"
                                       << ""
                                       << ""
                                       << "1 2 1";
}

void TestTaskRun::runs()
{
    QFETCH(QStringList, flow);
    QFETCH(int, runs);
    QFETCH(QString, error);

    // The last result of "print" holds the separator of results, which cuts it there.
    Fake::Task cTask(flow);
    QString strMsg;
    bool bGood = true;
    for (int nRun = 0; nRun < runs && bGood; ++nRun)
        bGood = cTask.runOnce(strMsg, false, -1, -1);
    QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
    QTEST(Fake::take(Fake::s_lstPrinted).join(','), "printed");
    QCOMPARE(bGood, error.isEmpty());
    QCOMPARE(strMsg, error == "stopped" ? QString() : error);
    QStringList lstCounts;
    for (const TaskItem &cItem : cTask.getTaskItem())
        lstCounts.append(QString::number(cItem.m_nExeTimes));
    QTEST(lstCounts.join(' '), "counts");
}

void TestTaskRun::cleanUp_data()
{
    QTest::addColumn<QStringList>("flow");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QStringList>("errors");

    using List = QStringList;
    QTest::newRow("after the run, in order")
        << List{"999999999;x|<CMD>Print:bye</CMD>", "a", "999999999;y"} << "start a x y stop"
        << "bye" << List();
    QTest::newRow("after a failed run") << List{"a|bad", "999999999;x"} << "start a x stop"
                                        << "" << List{"算法\"a\"出错, 错误信息:bad"};
    QTest::newRow("only print is known")
        << List{"999999999;x|<CMD>skip:2</CMD>", "999999999;y|<CMD>stop:no</CMD>",
                "999999999;z|<CMD>print:1</CMD><CMD>stop:no</CMD><CMD>print:2</CMD>", "999999999;never"}
        << "start x y z stop"
        << "1" << List{"Arithm \"z\" error, message:<CMD>print:2</CMD>"};
    QTest::newRow("both fail") << List{"a|bad", "999999999;x|worse", "999999999;never"} << "start a x stop"
                               << ""
                               << List{"算法\"a\"出错, 错误信息:bad", "Arithm \"x\" error, message:worse"};
    QTest::newRow("unknown algorithm")
        << List{"?", "999999999;?", "999999999;never"} << "start stop"
        << "" << List{"Arithm\"?\"is not existed.", "Arithm\"?\"is not existed."};
    QTest::newRow("after stop") << List{"a|<CMD>stop:</CMD>", "999999999;x"} << "start a x stop"
                                << "" << List();
}

void TestTaskRun::cleanUp()
{
    QFETCH(QStringList, flow);

    Fake::Task cTask(flow);
    for (TaskItem &cItem : cTask.getTaskItem())
        if (cItem.m_strArithmName == "?")
            cItem.m_strArithmID = "unknown";
    for (int nTime = 0; nTime < 2; ++nTime) { // the counts start anew each time
        Fake::s_mapExecutions.clear();
        cTask.runTaskOnce();
        QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
        QTEST(Fake::take(Fake::s_lstPrinted).join(' '), "printed");
        QTEST(Fake::take(Fake::s_lstErrors), "errors");
        QVERIFY(!cTask.IsRunning());
    }
}

void TestTaskRun::lastStepAndBudget_data()
{
    QTest::addColumn<QStringList>("flow");
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("budget");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<bool>("timeout");

    using List = QStringList;
    QTest::newRow("up to a step") << List{"a", "b", "c"} << 1 << -1 << "a b" << false;
    QTest::newRow("beyond the flow") << List{"a", "b"} << 9 << 10000 << "a b" << false;
    QTest::newRow("a jump passes the last step")
        << List{"a|<CMD>skip:2</CMD>", "b", "c"} << 1 << -1 << "a" << false;
    QTest::newRow("no step begins late") << List{"a", "slow", "c"} << -1 << 20 << "a slow" << true;
    QTest::newRow("ending late is no time-out") << List{"a", "slow"} << -1 << 20 << "a slow" << false;
}

void TestTaskRun::lastStepAndBudget()
{
    QFETCH(QStringList, flow);
    QFETCH(int, last);
    QFETCH(int, budget);
    QFETCH(bool, timeout);

    Fake::s_mapHandlers["slow"] = [] { QTest::qSleep(40); };
    Fake::Task cTask(flow);
    QString strMsg;
    QCOMPARE(cTask.runOnce(strMsg, true, last, budget), !timeout);
    QTEST(Fake::take(Fake::s_lstTrace).join(' '), "trace");
    QCOMPARE(strMsg, timeout ? QStringLiteral("Execute time out, there is a infinite loop or have a long "
                                              "waiting event, continue to wait?.")
                             : QString());
    for (const TaskItem &cItem : cTask.getTaskItem())
        QCOMPARE(cItem.m_nExeTimes, 0); // a single run forgets
}

void TestTaskRun::stepTimes()
{
    Fake::s_mapHandlers["slow"] = [] { QTest::qSleep(30); };
    // Step 0 goes back before the first row, step 2 beyond the last: neither has a row to write to.
    Fake::Task cTask({"a|<CMD>skip:-5</CMD>", "slow|<CMD>skip:2</CMD>", "b", "c|<CMD>skip:99</CMD>"});
    QTableWidget cTable(4, 3);
    cTask.m_pcTaskFlow = &cTable;
    cTable.setItem(3, 2, new QTableWidgetItem("old"));
    QString strMsg;
    QVERIFY(cTask.runOnce(strMsg, false, -1, -1));
    QVERIFY(!cTable.item(0, 2)); // the task's own runs show nothing

    Fake::s_mapExecutions.clear();
    QVERIFY(cTask.runOnce(strMsg, true, -1, -1));
    QCOMPARE(Fake::take(Fake::s_lstTrace).mid(4).join(' '), QString("a a slow c"));
    QCOMPARE(cTable.item(0, 2)->text(), QString("0")); // the second execution of "a"
    QVERIFY(!cTable.item(1, 2));                       // "slow" wrote into the row before its target
    QVERIFY2(cTable.item(2, 2)->text().toInt() >= 30, qPrintable(cTable.item(2, 2)->text()));
    QVERIFY(!(cTable.item(2, 2)->flags() & Qt::ItemIsEditable));
    QCOMPARE(cTable.item(3, 2)->text(), QString("old"));
    cTask.m_pcTaskFlow = nullptr;
}

/// What an algorithm is given: the option string of the moment; the drawing algorithm also the view.
void TestTaskRun::configTexts()
{
    Fake::Task cTask({"a"});
    cTask.m_lstArithm.append(Fake::step("图", 1, "KQ_Drawing"));
    cTask.m_lstArithm.append(Fake::step("", -1, "KQ_Drawing"));
    cTask.m_lstArithm.append(Fake::step("end", TaskItem::CLEAN_UP_TIMES, "KQ_Drawing"));
    cTask.m_nWhichView = 7;
    cTask.runTaskOnce();
    QCOMPARE(Fake::take(Fake::s_lstTrace).join(' '),
             QString("start a <View>3</View>图 <View>3</View> end stop"));
    QCOMPARE(cTask.m_nWhichView, 3);

    // Within one start: the view and a text may change from run to run.
    cTask.m_lstArithm = {Fake::step("1!"), Fake::step("d!", -1, "KQ_Drawing"), Fake::step("last!")};
    cTask.m_nWhichView = -2;
    Fake::s_mapHandlers["last!"] = [&cTask] {
        if (cTask.m_nWhichView++ == 1)
            cTask.m_bExit = true;
        const_cast<QString &>(qAsConst(cTask.m_lstArithm).at(0).m_strOptionStr)[0] = '2';
    };
    cTask.startTask();
    QTRY_VERIFY(!cTask.IsRunning());
    QCOMPARE(Fake::take(Fake::s_lstTrace).join(' '),
             QString("start 1! <View>0</View>d! last! 2! <View>1</View>d! last! stop"));
}

void TestTaskRun::badAlgorithms()
{
    struct Bad {
        const char *m_szID;
        fnExecute m_fnExecute;
        QString m_strError;
    };
    const std::initializer_list<Bad> lstBad = {
        {"no function", nullptr, ""},
        {"null", [](char *, ArithmParamMgr *) -> char * { return nullptr; }, ""},
        {"exception", [](char *, ArithmParamMgr *) -> char * { throw std::runtime_error("故障"); }, "故障"},
        {"other exception", [](char *, ArithmParamMgr *) -> char * { throw 1; }, "unknown exception"},
        {"bad bytes",
         [](char *, ArithmParamMgr *) {
             static char s_szBad[] = "<CMD>print:\xff</CMD>\xc3(";
             return s_szBad;
         },
         QString(QChar::ReplacementCharacter) + "("},
        {"writes into its config",
         [](char *pchConfig, ArithmParamMgr *) {
             static std::string s_strGiven;
             s_strGiven = pchConfig;
             *pchConfig = '\0';
             return s_strGiven.data();
         },
         "config"},
    };
    for (const Bad &cBad : lstBad) {
        auto *pcArithm = new Arithm(
            false, [] { return "bad"; }, nullptr, cBad.m_fnExecute);
        ArithmFactory::getInstance()->m_mapArithm.insert(cBad.m_szID, pcArithm);
        Fake::Task cTask({});
        cTask.m_lstArithm = {Fake::step("config", -1, cBad.m_szID)};
        for (int nRun = 0; nRun < 2; ++nRun) {
            QString strMsg;
            QCOMPARE(cTask.runOnce(strMsg, false, -1, -1), cBad.m_strError.isEmpty());
            QCOMPARE(strMsg, cBad.m_strError.isEmpty() ? QString()
                                                       : "算法\"config\"出错, 错误信息:" + cBad.m_strError);
        }
    }
    QCOMPARE(Fake::s_lstPrinted,
             (QStringList{QString(QChar::ReplacementCharacter), QString(QChar::ReplacementCharacter)}));

    Fake::Task cTask({"a"});
    delete std::exchange(cTask.m_pcDS, nullptr);
    cTask.runTaskOnce();
    QCOMPARE(Fake::s_lstErrors, QStringList{"No datasource assigned."});
}

/// A result of many commands costs in proportion to its length.
void TestTaskRun::longResult()
{
    static QByteArray s_achResult;
    s_achResult = QByteArray("<CMD>print:x</CMD>").repeated(200000);
    ArithmFactory::getInstance()->m_mapArithm.insert(
        "long", new Arithm(
                    false, [] { return "long"; }, nullptr,
                    [](char *, ArithmParamMgr *) { return s_achResult.data(); }));
    Fake::Task cTask({});
    cTask.m_lstArithm = {Fake::step("", -1, "long")};
    QString strMsg;
    QVERIFY(cTask.runOnce(strMsg, false, -1, -1));
    QCOMPARE(Fake::s_lstPrinted.size(), 200000);
}

QTEST_MAIN(TestTaskRun)
#include "tst_taskrun.moc"
