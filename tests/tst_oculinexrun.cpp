// oculinex-run as its users have it: a process of its own with the probe plug-ins beside it.

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QJsonArray>

#include "oculinexrun.h"

namespace
{
int count(const QList<QJsonObject> &lstObject, const QString &strEvent, const QString &strTask)
{
    return static_cast<int>(
        std::count_if(lstObject.begin(), lstObject.end(), [&](const QJsonObject &cObject) {
            return cObject["event"].toString() == strEvent && cObject["task"].toString() == strTask;
        }));
}
} // namespace

class TestOculinexRun : public QObject, private OculinexRun
{
    Q_OBJECT

private slots:
    void initTestCase() { install(OCULINEX_BINARY_DIR); }
    void usage_data();
    void usage();
    void exitCodes_data();
    void exitCodes();
    void runsExactly();
    void onceInOrder();
    void manyMessages();
    void endsWhenIdle();
    void stopsCleanly_data();
    void stopsCleanly();
    void secondSignalQuits();
    void readerGone();
    void hangingStep();
    void lists();
    void check_data();
    void check();
    void checkKnowsShippedPlugins_data();
    void checkKnowsShippedPlugins();
};

void TestOculinexRun::usage_data()
{
    QTest::addColumn<QStringList>("lstArguments");
    QTest::addColumn<int>("nExitCode");
    QTest::addColumn<QString>("strOut");
    QTest::addColumn<QString>("strErr");

    const QString strEmpty = m_cDir.filePath("empty");
    QFile(strEmpty).open(QFile::WriteOnly);
    const QString strTasks = file(task("a", source("") + step(result(print("started")))));
    QTest::newRow("help") << QStringList{"--help"} << 0 << "--until-idle"
                          << "";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "oculinex-run "
                             << "";
    QTest::newRow("no file") << QStringList{"--once"} << 2 << ""
                             << "tasks file is missing";
    QTest::newRow("two files") << QStringList{"a", "b"} << 2 << ""
                               << "Only one tasks file";
    QTest::newRow("unknown option") << QStringList{"--fast", "a"} << 2 << ""
                                    << "fast";
    QTest::newRow("two modes") << QStringList{"--once", "--runs", "2", "a"} << 2 << ""
                               << "exclude each other";
    QTest::newRow("runs") << QStringList{"--runs", "0", "a"} << 2 << ""
                          << "--runs";
    QTest::newRow("seconds") << QStringList{"--seconds", "nan", "a"} << 2 << ""
                             << "--seconds";
    QTest::newRow("idle") << QStringList{"--until-idle", "-1", "a"} << 2 << ""
                          << "--until-idle";
    const QStringList lstOut{"--out", m_cDir.path(), "a"};
    for (const char *szView : {"3=4x3", "0=4", "0=0x3", "0=4x10001", "0=4x3x2", "view"})
        QTest::newRow(szView) << QStringList{"--view", szView} + lstOut << 2 << ""
                              << QString("not '%1'").arg(szView);
    QTest::newRow("same view") << QStringList{"--view=1=4x3", "--view=1=8x6"} + lstOut << 2 << ""
                               << "View 1 is given twice";
    QTest::newRow("no view") << lstOut << 2 << ""
                             << "need each other";
    QTest::newRow("no directory") << QStringList{"--view=0=4x3", "a"} << 2 << ""
                                  << "need each other";
    QTest::newRow("last of nothing") << QStringList{"--last", "a"} << 2 << ""
                                     << "--last needs";
    QTest::newRow("check and view") << QStringList{"--check", "--view=0=4x3"} + lstOut << 2 << ""
                                    << "draw nothing";
    for (const char *szFolder : {"/no/such", "/proc", "/dev/null"})
        QTest::newRow(szFolder) << QStringList{"--view=0=4x3", "--out", szFolder, strTasks} << 2 << ""
                                << QString("oculinex-run: ") + szFolder + ": ";
    QTest::newRow("missing file") << QStringList{"/no/such.tasks"} << 2 << ""
                                  << "/no/such.tasks: No such file";
    QTest::newRow("directory") << QStringList{"/tmp"} << 2 << ""
                               << "/tmp: ";
    QTest::newRow("no task") << QStringList{strEmpty} << 2 << "" << strEmpty + ": ";
    QTest::newRow("check, missing") << QStringList{"--check", "/no/such"} << 2 << ""
                                    << "/no/such: No such file";
    QTest::newRow("check, no task") << QStringList{"--check", strEmpty} << 2 << "" << strEmpty + ": ";
}

void TestOculinexRun::usage()
{
    QFETCH(QStringList, lstArguments);
    QFETCH(QString, strOut);
    QFETCH(QString, strErr);
    const Outcome cOutcome = run(lstArguments);
    QTEST(cOutcome.m_nExitCode, "nExitCode");
    QVERIFY2(cOutcome.m_strOut.contains(strOut), qPrintable(cOutcome.m_strOut));
    QVERIFY2(cOutcome.m_strErr.contains(strErr), qPrintable(cOutcome.m_strErr));
    QCOMPARE(cOutcome.m_strErr.count('\n'), strErr.isEmpty() ? 0 : 1);
}

void TestOculinexRun::exitCodes_data()
{
    QTest::addColumn<QString>("strTasks");
    QTest::addColumn<QString>("strMode");
    QTest::addColumn<int>("nExitCode");
    QTest::addColumn<QString>("strOut");
    QTest::addColumn<QString>("strErr");

    const QString strThree = source("<Pictures>3</Pictures><Wait>1</Wait>");
    const QString strStop = step(result("<CMD>stop:完了</CMD>"));
    const QString strFail = step(result("the lens is dirty"));
    QTest::newRow("stop") << task("a", strThree + strStop) << "" << 0 << "完了\n"
                          << "";
    QTest::newRow("stop, once") << task("a", strThree + strStop) << "--once" << 0 << "完了\n"
                                << "";
    QTest::newRow("failure") << task("a", strThree + strFail) << "" << 1 << "a "
                             << "error: 算法\"probe\"出错, "
                                "错误信息:the lens is dirty\n";
    QTest::newRow("failure, once") << task("a", strThree + strFail) << "--once" << 1 << "a "
                                   << "the lens is dirty\n";
    QTest::newRow("one of two") << task("good", strThree + strStop) + task("bad", strThree + strFail) << ""
                                << 1 << "good: 完了\n"
                                << "error: bad: ";
    QTest::newRow("same name") << task("a", strThree + strStop) + task("a", strThree + strStop) << "" << 0
                               << "a (task 2): 完了\n"
                               << "";
    QTest::newRow("no source") << task("a", strFail) << "" << 1 << ""
                               << "error: No datasource assigned.\n";
    QTest::newRow("unknown algorithm") << task("a", strThree + step("", -1, "gone")) << "" << 1 << ""
                                       << "\"gone\"is not existed.\n";
    QTest::newRow("failing clean-up after a requested stop")
        << task("a", strThree + cleanUp(result("valve is stuck"))) << "--seconds=0.2" << 1 << ""
        << "valve is stuck\n";
    QTest::newRow("source without pictures")
        << task("a", source("<Fail>1</Fail><Wait>1</Wait><LastError>cable?</LastError>")) << "--seconds=0.2"
        << 0 << "a "
        << "data source: cable?\n";
    QTest::newRow("step ends its thread")
        << task("a", strThree + step("<ExitThread>1</ExitThread>")) << "" << 1 << ""
        << "error: ";
}

void TestOculinexRun::exitCodes()
{
    QFETCH(QString, strTasks);
    QFETCH(QString, strMode);
    QFETCH(QString, strOut);
    QFETCH(QString, strErr);
    const Outcome cOutcome = run(strMode.split(' ', Qt::SkipEmptyParts) + QStringList{file(strTasks)});
    QTEST(cOutcome.m_nExitCode, "nExitCode");
    QVERIFY2(cOutcome.m_strOut.contains(strOut), qPrintable(cOutcome.m_strOut));
    QVERIFY2(cOutcome.m_strErr.contains(strErr), qPrintable(cOutcome.m_strErr));
    QCOMPARE(cOutcome.m_strErr.isEmpty(), strErr.isEmpty());
}

void TestOculinexRun::runsExactly()
{
    const QString strTasks =
        task("fast", source("") + step(result(print("x"))) + cleanUp(result(print("end")))) +
        task("slow", source("<Wait>20</Wait>") + step(result(print("x"))));
    const Outcome cOutcome = run({"--runs", "7", "--json", file(strTasks)});
    QCOMPARE(cOutcome.m_nExitCode, 0);
    const QList<QJsonObject> lstObject = objects(cOutcome.m_strOut);
    QCOMPARE(count(lstObject, "print", "fast"), 8);
    QCOMPARE(count(lstObject, "print", "slow"), 7);

    const QJsonObject &cSummary = lstObject.last();
    QCOMPARE(cSummary["event"].toString(), "summary");
    QCOMPARE(cSummary["exitCode"].toInt(-1), 0);
    const QJsonObject cFast = cSummary["tasks"].toArray().at(0).toObject();
    QCOMPARE(cFast["task"].toString(), "fast");
    QCOMPARE(cFast["runs"].toInt(), 7);
    QCOMPARE(cFast["pictures"].toInt(), 7);
    QCOMPARE(cFast["steps"].toArray().at(0).toObject()["runs"].toInt(), 7);
    QCOMPARE(cFast["steps"].toArray().at(1).toObject()["runs"].toInt(), 1);
}

void TestOculinexRun::onceInOrder()
{
    const QString strTasks =
        task("first", source("") + step("<Sleep>200</Sleep>" + result(print("1")))) +
        task("second", source("") + step(result(print("2"))) + cleanUp(result(print("3"))));
    const Outcome cOutcome = run({"--once", file(strTasks)});
    QCOMPARE(cOutcome.m_nExitCode, 0);
    QVERIFY2(cOutcome.m_strOut.startsWith("first: 1\nsecond: 2\nsecond: 3\n\n"),
             qPrintable(cOutcome.m_strOut));
}

void TestOculinexRun::manyMessages()
{
    const QString strLine(300, QChar(0x5b57));
    QString strBurst;
    for (int nLine = 0; nLine < 200; ++nLine)
        strBurst += print(strLine);
    QString strTasks;
    for (const char *szName : {"a", "b", "c", "d"})
        strTasks += task(szName, source("") + step(result(strBurst)));
    const Outcome cOutcome = run({"--runs=3", file(strTasks)});
    QCOMPARE(cOutcome.m_nExitCode, 0);
    const QStringList lstLine = cOutcome.m_strOut.split('\n');
    for (const QString strName : {"a", "b", "c", "d"})
        QCOMPARE(lstLine.count(strName + ": " + strLine), 3 * 200); // whole, none lost
}

void TestOculinexRun::endsWhenIdle()
{
    // A step that works for longer than the limit is no idleness.
    const QString strTasks = task("a", source("<Pictures>2</Pictures><Wait>10</Wait>") +
                                           step("<Sleep>400</Sleep>" + result(print("x"))));
    QElapsedTimer cClock;
    cClock.start();
    const Outcome cOutcome = run({"--until-idle=0.2", file(strTasks)});
    QVERIFY(cClock.elapsed() >= 2 * 400 + 200 - 50); // it looks every 50 ms
    QCOMPARE(cOutcome.m_nExitCode, 0);
    QCOMPARE(cOutcome.m_strOut.count("x\n"), 2);
}

void TestOculinexRun::stopsCleanly_data()
{
    QTest::addColumn<int>("nSignal");
    QTest::addColumn<QStringList>("lstMode");
    QTest::addColumn<QString>("strOut"); // what follows the first line
    QTest::newRow("Ctrl-C") << int(SIGINT) << QStringList()
                            << "second: begun\nfirst: valve closed\n"
                               "second: valve closed\n";
    QTest::newRow("terminate") << int(SIGTERM) << QStringList()
                               << "second: begun\nfirst: valve closed\n"
                                  "second: valve closed\n";
    // The second task does not begin any more.
    QTest::newRow("once") << int(SIGINT) << QStringList{"--once"} << "first: valve closed\n";
}

void TestOculinexRun::stopsCleanly()
{
    QFETCH(int, nSignal);
    QFETCH(QStringList, lstMode);
    QFETCH(QString, strOut);
    const QString strFlow = source("<Wait>1</Wait>") + step(result(print("begun")), 1) +
                            step("<Sleep>300</Sleep>") + step(result(print("never")), 0) +
                            cleanUp(result(print("valve closed")));
    QProcess cTool;
    begin(cTool, lstMode + QStringList{file(task("first", strFlow) + task("second", strFlow))});
    QByteArray achOut;
    const int nBegun = lstMode.isEmpty() ? 2 : 1;
    while (achOut.count("begun") < nBegun && cTool.waitForReadyRead(TIMEOUT_MS))
        achOut += cTool.readAllStandardOutput();
    kill(static_cast<pid_t>(cTool.processId()), nSignal);
    const Outcome cOutcome = end(cTool);
    QCOMPARE(cOutcome.m_nExitCode, 0);
    QStringList lstLine = (QString::fromUtf8(achOut) + cOutcome.m_strOut).section("\n\n", 0, 0).split('\n');
    QStringList lstWanted = ("first: begun\n" + strOut).split('\n', Qt::SkipEmptyParts);
    lstLine.sort();
    lstWanted.sort();
    QCOMPARE(lstLine, lstWanted);
}

void TestOculinexRun::secondSignalQuits()
{
    const QString strTasks = task("a", source("<Wait>1</Wait>") + step(result(print("begun")), 1) +
                                           cleanUp(result(print("closing"))) + cleanUp("<Hold>7</Hold>"));
    QProcess cTool;
    begin(cTool, {file(strTasks)});
    QVERIFY(cTool.waitForReadyRead(TIMEOUT_MS));
    kill(static_cast<pid_t>(cTool.processId()), SIGINT);
    QVERIFY(cTool.waitForReadyRead(TIMEOUT_MS)); // now a clean-up step hangs
    kill(static_cast<pid_t>(cTool.processId()), SIGINT);
    QCOMPARE(end(cTool).m_nExitCode, 128 + SIGINT);
}

void TestOculinexRun::readerGone()
{
    const QString strTasks = task("a", source("<Wait>1</Wait>") + step(result(print("x"))) +
                                           cleanUp(result("told to the other stream")));
    QProcess cShell;
    cShell.start("bash", {"-c", "set -o pipefail; \"$0\" \"$1\" | head -n 1", m_cDir.filePath("oculinex-run"),
                          file(strTasks)});
    const Outcome cOutcome = end(cShell);
    QCOMPARE(cOutcome.m_strOut, "x\n");
    QVERIFY2(cOutcome.m_strErr.contains("told to the other stream"), qPrintable(cOutcome.m_strErr));
    QCOMPARE(cOutcome.m_nExitCode, 1);
}

void TestOculinexRun::hangingStep()
{
    const int nMaster = posix_openpt(O_RDWR | O_NOCTTY);
    if (nMaster < 0)
        QSKIP("This machine has no terminals.");
    QVERIFY(grantpt(nMaster) == 0 && unlockpt(nMaster) == 0);
    const winsize cSize = {24, 60, 0, 0};
    ioctl(nMaster, TIOCSWINSZ, &cSize);

    const QString strFile =
        file(task(QString(20, QChar(0x5b57)), source("<Wait>200</Wait>") + step(result(print("x")))) +
             task("hangs", source("") + step("") + step("<Sleep>3000</Sleep>")));
    QProcess cOnTerminal;
    cOnTerminal.setStandardErrorFile(ptsname(nMaster));
    begin(cOnTerminal, {"--seconds=2.8", strFile});
    QProcess cForPrograms;
    begin(cForPrograms, {"--seconds=2.8", "--json", "--quiet", strFile});
    const Outcome cLines = end(cOnTerminal);
    const Outcome cObjects = end(cForPrograms);
    QByteArray achTerminal;
    std::array<char, 4096> achPart{};
    for (ssize_t nPart = 0; (nPart = read(nMaster, achPart.data(), achPart.size())) > 0;)
        achTerminal.append(achPart.data(), static_cast<int>(nPart));
    close(nMaster);

    QCOMPARE(cLines.m_nExitCode, 0);
    QVERIFY(!cLines.m_strOut.contains('\033'));
    const QString strTerminal = QString::fromUtf8(achTerminal);
    QVERIFY2(strTerminal.contains("hangs 0.0/s, in step 2 (probe) for 2."), qPrintable(strTerminal));
    QVERIFY(strTerminal.endsWith("\r\033[K"));
    for (const QString &strLine : strTerminal.split("\r\033[K"))
        QVERIFY2(strLine.size() + strLine.count(QChar(0x5b57)) < 60, qPrintable(strLine)); // one row

    const QList<QJsonObject> lstObject = objects(cObjects.m_strOut);
    QCOMPARE(lstObject.size(), 2); // told once, and the summary
    QCOMPARE(lstObject.first()["event"].toString(), "waiting");
    QCOMPARE(lstObject.first()["task"].toString(), "hangs");
    QCOMPARE(lstObject.first()["step"].toInt(), 2);
    QVERIFY(lstObject.first()["seconds"].toDouble() > 2);
}

void TestOculinexRun::lists()
{
    const QList<QJsonObject> lstObject = objects(run({"--list", "--json"}).m_strOut);
    QVERIFY(lstObject.contains({{"event", "algorithm"},
                                {"class", "测试"},
                                {"name", "探针"},
                                {"id", "probe"},
                                {"file", "baseArithm/probe.so"}}));
    QVERIFY(lstObject.contains(
        {{"event", "dataSource"}, {"name", "Probe"}, {"file", "DataSource/probesource.so"}}));
    QVERIFY(lstObject.contains({{"event", "dataSource"}, {"name", "Memory Disk 5"}, {"file", "built in"}}));
    const QString strText = run({"--list"}).m_strOut;
    QVERIFY2(strText.contains("探针") && strText.contains("写内存盘   系统   KQ_MemoryDisk  built in"),
             qPrintable(strText));
}

void TestOculinexRun::check_data()
{
    QTest::addColumn<QString>("strTasks");
    QTest::addColumn<QString>("strFinding"); // the only one; empty for none

    const QString strSource = source("");
    const QString strGreyDisk = "<MemDisk>0</MemDisk><InputID>%1</InputID><InputType>Gray8</InputType>";
    const QString strWrite = "<BeGray>1</BeGray><PicID>%1</PicID>";
    const auto fnDisk = [&](int nID, int nLimit = -1) {
        return step(strGreyDisk.arg(nID), nLimit, "KQ_MemoryDisk");
    };
    const auto fnLoad = [&](int nID, int nLimit = -1) {
        return step(strWrite.arg(nID), nLimit, "KQ_Loading");
    };

    QTest::newRow("clean") << task("a",
                                   strSource + fnLoad(3) + fnDisk(3) +
                                       step("<DataType>0</DataType><DataID>1</DataID>", -1, "KQ_Drawing"))
                           << "";
    QTest::newRow("unknown algorithm") << task("a", strSource + step("", -1, "gone"))
                                       << "task 'a' step 1 (gone): unknown algorithm 'gone'\n";
    QTest::newRow("unknown source") << task("", source("", "Scanner"))
                                    << "task 1: unknown data source 'Scanner'\n";
    QTest::newRow("no source") << task("a", "") << "task 'a': no data source\n";
    QTest::newRow("silent source")
        << task("a", source("", "Probe", "0"))
        << "task 'a': the data source delivers nothing: its output ID is not at least 1\n";
    QTest::newRow("never written") << task("a", strSource + fnDisk(4))
                                   << "task 'a' step 1 (KQ_MemoryDisk): reads grey picture 4 (<InputID>), "
                                      "which nothing before it writes\n";
    QTest::newRow("other kind")
        << task("a", strSource + fnDisk(1))
        << "task 'a' step 1 (KQ_MemoryDisk): reads grey picture 1 (<InputID>), which nothing "
           "before it writes; the data source writes a colour picture of that ID\n";
    QTest::newRow("written later")
        << task("a", strSource + fnDisk(3) + fnLoad(3))
        << "task 'a' step 1 (KQ_MemoryDisk): reads grey picture 3 (<InputID>), which "
           "nothing before it writes; step 2 writes it\n";
    QTest::newRow("clean-up comes last") << task("a", strSource + fnDisk(3, 999999999) + fnLoad(3)) << "";
    QTest::newRow("any algorithm may write") << task("a", strSource + step("") + fnDisk(4)) << "";
    QTest::newRow("grows")
        << task("a", strSource + fnLoad(-1))
        << "task 'a' step 1 (KQ_Loading): <PicID> is -1: every run adds another grey picture to "
           "the store\n";
    QTest::newRow("no number") << task("a",
                                       strSource + step("<InputType>RGB</InputType>", -1, "KQ_MemoryDisk"))
                               << "task 'a' step 1 (KQ_MemoryDisk): <InputID> holds no number\n";
    QTest::newRow("limit 0") << task("a", strSource + fnLoad(3, 0))
                             << "task 'a' step 1 (KQ_Loading): never runs: its limit is 0\n";
    QTest::newRow("limit missing")
        << task("a", strSource + "<-TaskItem-><-ArithmID->probe</-ArithmID-></-TaskItem->")
        << "task 'a' step 1 (probe): never runs: its limit '<-MaxExeTimes->' is missing\n";
    QTest::newRow("bad number") << task("a", strSource + "<-View->one</-View->")
                                << "task 'a': '<-View->' holds 'one', which is no number and read as 0\n";
    QTest::newRow("marker in a value")
        << task("a", strSource + step("<Text><-describe-></Text>"))
        << "task 'a' step 1 (probe): the value of '<-OptionStr->' holds the marker '<-describe->'\n";
    QTest::newRow("stray marker") << task("a", strSource + "</-View->")
                                  << "task 'a': stray marker '</-View->'\n";
    QTest::newRow("text between the tasks") << task("a", strSource) + "version 2\n"
                                            << "text outside any block: 'version 2'\n";
}

void TestOculinexRun::check()
{
    QFETCH(QString, strTasks);
    QFETCH(QString, strFinding);
    const Outcome cOutcome = run({"--check", file(strTasks)});
    QCOMPARE(cOutcome.m_strOut, strFinding);
    QCOMPARE(cOutcome.m_strErr, QString());
    QCOMPARE(cOutcome.m_nExitCode, strFinding.isEmpty() ? 0 : 1);
}

void TestOculinexRun::checkKnowsShippedPlugins_data()
{
    QTest::addColumn<QString>("strOld");
    QTest::addColumn<QString>("strNew");
    QTest::addColumn<QStringList>("lstFinding");

    QTest::newRow("clean") << ""
                           << "" << QStringList();
    QTest::newRow("ToGray") << "<OutputID>2<"
                            << "<OutputID>12<" << QStringList{"step 2 (OCX_Blur): reads grey picture 2 "};
    QTest::newRow("Blur, grey") << "<OutputID>3<"
                                << "<OutputID>13<"
                                << QStringList{"step 4 (OCX_Threshold): reads grey picture 3 "};
    QTest::newRow("Blur, colour") << "<OutputID>4<"
                                  << "<OutputID>14<"
                                  << QStringList{"step 6 (KQ_MemoryDisk): reads colour picture 4 "};
    QTest::newRow("Threshold") << "<OutputID>5<"
                               << "<OutputID>15<"
                               << QStringList{"step 5 (OCX_Blobs): reads grey picture 5 ",
                                              "step 9 (KQ_Saving): reads grey picture 5 "};
    QTest::newRow("Blobs, areas") << "<AreasID>6<"
                                  << "<AreasID>16<" << QStringList{"step 7 (KQ_Drawing): reads area list 6 "};
    QTest::newRow("Blobs, strings") << "<StringsID>7<"
                                    << "<StringsID>17<"
                                    << QStringList{"step 8 (KQ_Drawing): reads string list 7 "};
    QTest::newRow("refused") << "<AreasID>6<"
                             << "<AreasID>-1<"
                             << QStringList{"step 5 (OCX_Blobs): <AreasID> is below 0: the step fails",
                                            "step 7 (KQ_Drawing): reads area list 6 "};
    QTest::newRow("ignored") << "<PicID>5<"
                             << "<PicID>-1<"
                             << QStringList{"step 9 (KQ_Saving): <PicID> is below 0: the step does nothing"};
}

void TestOculinexRun::checkKnowsShippedPlugins()
{
    QFETCH(QString, strOld);
    QFETCH(QString, strNew);
    QFETCH(QStringList, lstFinding);
    QString strTasks = task(
        "a",
        source("", "Picture Folder") + step("<InputID>1</InputID><OutputID>2</OutputID>", -1, "OCX_ToGray") +
            step("<InputID>2</InputID><OutputID>3</OutputID>", -1, "OCX_Blur") +
            step("<InputType>rgb</InputType><InputID>1</InputID><OutputID>4</OutputID>", -1, "OCX_Blur") +
            step("<InputID>3</InputID><OutputID>5</OutputID>", -1, "OCX_Threshold") +
            step("<InputID>5</InputID><AreasID>6</AreasID><StringsID>7</StringsID>", -1, "OCX_Blobs") +
            step("<InputID>4</InputID><InputType>RGB</InputType>", -1, "KQ_MemoryDisk") +
            step("<DataType>6</DataType><DataID>6</DataID>", -1, "KQ_Drawing") +
            step("<DataType>7</DataType><DataID>7</DataID>", -1, "KQ_Drawing") +
            step("<Wnd>4</Wnd><PicType>Gray</PicType><PicID>5</PicID>", -1, "KQ_Saving"));
    QVERIFY(strTasks.contains(strOld));
    if (!strOld.isEmpty())
        strTasks.replace(strOld, strNew);
    QProcess cTool;
    cTool.start(OCULINEX_BINARY_DIR "/bin/oculinex-run", {"--check", file(strTasks)});
    const QStringList lstLine = end(cTool).m_strOut.split('\n', Qt::SkipEmptyParts);
    QVERIFY2(lstLine.size() == lstFinding.size(), qPrintable(lstLine.join('\n')));
    for (int nLine = 0; nLine < lstLine.size(); ++nLine)
        QVERIFY2(lstLine[nLine].startsWith("task 'a' " + lstFinding[nLine]), qPrintable(lstLine[nLine]));
}

QTEST_GUILESS_MAIN(TestOculinexRun)
#include "tst_oculinexrun.moc"
