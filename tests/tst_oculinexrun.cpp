// oculinex-run as its users have it: a process of its own with the probe plug-ins beside it.

#include <csignal>

#include <QElapsedTimer>
#include <QJsonArray>

#include "datatable.h"
#include "fixtures/row.h"
#include "oculinexrun.h"

class TestOculinexRun : public QObject, private OculinexRun
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        install(OCULINEX_BINARY_DIR);
        QVERIFY(QFile(m_cDir.filePath("empty")).open(QFile::WriteOnly));
        file(task("a", source("") + step(result(print("started")))));
    }
    void usage_data()
    {
        addRows("what             strArguments                      strTold\n"
                "help             --help                            --until-idle <S>\n"
                "endless          --seconds inf a                   above 0, not 'inf'\n"
                "no view          --out . a                         need each other\n"
                "missing folder   --view=0=4x3 --out /no/such 测试.tasks   oculinex-run: /no/such: \n"
                "missing file     /no/such.tasks                    /no/such.tasks: No such file\n"
                "no task          empty                             empty: ");
    }
    void usage()
    {
        QFETCH(QString, strArguments);
        QFETCH(QString, strTold);
        const bool bFine = strArguments == "--help";
        const Outcome cOutcome = run(strArguments.split(' '));
        QCOMPARE(cOutcome.m_nExitCode, bFine ? 0 : 2);
        const QString strText = bFine ? cOutcome.m_strOut : cOutcome.m_strErr;
        QVERIFY2(strText.contains(strTold), qPrintable(strText));
        QCOMPARE(cOutcome.m_strErr.count('\n'), bFine ? 0 : 1);
    }

    void exitCodes_data()
    {
        QTest::addColumn<QString>("strTasks");
        QTest::addColumn<QString>("strMode");
        QTest::addColumn<int>("nExitCode");
        QTest::addColumn<QString>("strOut");
        QTest::addColumn<QString>("strErr");
        const QString strThree = source("<Pictures>3</Pictures><Wait>1</Wait>");
        const QString strStop = strThree + step(result("<CMD>stop:完了</CMD>"));
        const QString strFail = strThree + step(result("the lens is dirty"));
        row("stop", task("a", strStop), "", 0, "完了\n", "");
        row("one of two fails", task("good", strStop) + task("bad", strFail), "", 1, "good: 完了\n",
            "error: bad: 算法\"probe\"出错, 错误信息:the lens is dirty\n");
        row("failing clean-up after a requested stop",
            task("a", strThree + cleanUp(result("valve is stuck"))), "--seconds=0.2", 1, "a ",
            "valve is stuck\n");
        row("source without pictures",
            task("a", source("<Fail>1</Fail><Wait>1</Wait><LastError>cable?</LastError>")), "--seconds=0.2",
            0, "a ", "data source: cable?\n");
        row("step ends its thread", task("a", strThree + step("<ExitThread>1</ExitThread>")), "", 1, "",
            "error: ");
    }
    void exitCodes()
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

    void runsExactly()
    {
        const QString strTasks =
            task("fast", source("") + step(result(print("x"))) + cleanUp(result(print("end")))) +
            task("slow", source("<Wait>20</Wait>") + step(result(print("x"))));
        const Outcome cOutcome = run({"--runs", "7", "--json", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QMap<QString, int> mapPrinted;
        const QList<QJsonObject> lstObject = objects(cOutcome.m_strOut);
        for (const QJsonObject &cObject : lstObject)
            if (cObject["event"].toString() == "print")
                ++mapPrinted[cObject["task"].toString()];
        QCOMPARE(mapPrinted, (QMap<QString, int>{{"fast", 8}, {"slow", 7}}));

        const QJsonObject cFast = lstObject.last()["tasks"].toArray().at(0).toObject();
        QCOMPARE(cFast["runs"].toInt(), 7);
        QCOMPARE(cFast["steps"].toArray().at(1).toObject()["runs"].toInt(), 1);
    }

    void onceInOrder()
    {
        const QString strTasks =
            task("first", source("") + step("<Sleep>200</Sleep>" + result(print("1")))) +
            task("second", source("") + step(result(print("2"))) + cleanUp(result(print("3"))));
        const Outcome cOutcome = run({"--once", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY2(cOutcome.m_strOut.startsWith("first: 1\nsecond: 2\nsecond: 3\n\n"),
                 qPrintable(cOutcome.m_strOut));
    }

    void endsWhenIdle()
    {
        // A step that works for longer than the limit is no idleness.
        const QString strTasks = task("a", source("<Pictures>1</Pictures><Wait>10</Wait>") +
                                               step("<Sleep>900</Sleep>" + result(print("x"))));
        QElapsedTimer cClock;
        cClock.start();
        const Outcome cOutcome = run({"--until-idle=0.5", file(strTasks)});
        QVERIFY(cClock.elapsed() >= 900 + 500 - 50); // it looks every 50 ms
        QCOMPARE(cOutcome.m_nExitCode, 0);
    }

    void stopsCleanly()
    {
        const QString strFlow = source("<Wait>1</Wait>") + step(result(print("begun")), 1) +
                                cleanUp(result(print("valve closed")));
        QProcess cTool;
        begin(cTool, {file(task("first", strFlow) + task("second", strFlow))});
        QByteArray achTold;
        while (achTold.count("begun") < 2 && cTool.waitForReadyRead(TIMEOUT_MS))
            achTold += cTool.readAllStandardOutput();
        stop(cTool, SIGTERM);
        const Outcome cOutcome = end(cTool);
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY(cOutcome.m_strOut.contains("first: valve closed"));
        QVERIFY(cOutcome.m_strOut.contains("second: valve closed"));
    }

    void secondSignalQuits()
    {
        const QString strTasks = task("a", source("<Wait>1</Wait>") + step(result(print("begun")), 1) +
                                               cleanUp(result(print("closing"))) + cleanUp("<Hold>7</Hold>"));
        QProcess cTool;
        begin(cTool, {file(strTasks)});
        QVERIFY(cTool.waitForReadyRead(TIMEOUT_MS));
        stop(cTool, SIGINT);
        QVERIFY(cTool.waitForReadyRead(TIMEOUT_MS)); // now a clean-up step hangs
        stop(cTool, SIGINT);
        QCOMPARE(end(cTool).m_nExitCode, 128 + SIGINT);
    }

    void hangingStep()
    {
        const QString strTasks = task("hangs", source("") + step("") + step("<Sleep>3000</Sleep>"));
        const QList<QJsonObject> lstObject =
            objects(run({"--runs=1", "--json", "--quiet", file(strTasks)}).m_strOut);
        QCOMPARE(lstObject.size(), 2); // told once, and the summary
        QCOMPARE(lstObject.first()["event"].toString(), "waiting");
        QCOMPARE(lstObject.first()["step"].toInt(), 2);
        QVERIFY(lstObject.first()["seconds"].toDouble() > 2);
    }

    void check_data()
    {
        QTest::addColumn<QString>("strTasks");
        QTest::addColumn<QString>("strFinding"); // the only one; empty for none
        const auto flow = [](const char *szName, const QString &strSteps, const char *szFinding) {
            row(szName, task("a", source("") + strSteps), szFinding);
        };
        const auto fnDisk = [&](int nID, int nLimit = -1) {
            return step(
                QString("<MemDisk>0</MemDisk><InputID>%1</InputID><InputType>Gray8</InputType>").arg(nID),
                nLimit, "KQ_MemoryDisk");
        };
        const auto fnLoad = [&](int nID, int nLimit = -1) {
            return step(QString("<BeGray>1</BeGray><PicID>%1</PicID>").arg(nID), nLimit, "KQ_Loading");
        };
        flow("clean",
             fnLoad(3) + fnDisk(3) + step("<DataType>0</DataType><DataID>1</DataID>", -1, "KQ_Drawing"), "");
        flow("unknown algorithm", step("", -1, "gone"), "task 'a' step 1 (gone): unknown algorithm 'gone'\n");
        row("unknown source", task("", source("", "Scanner")), "task 1: unknown data source 'Scanner'\n");
        flow("written later", fnDisk(3) + fnLoad(3),
             "task 'a' step 1 (KQ_MemoryDisk): reads grey picture 3 (<InputID>), which nothing before it "
             "writes; step 2 writes it\n");
        flow("clean-up comes last", fnDisk(3, 999999999) + fnLoad(3), "");
        flow("any algorithm may write", step("") + fnDisk(4), "");
        flow("grows", fnLoad(-1),
             "task 'a' step 1 (KQ_Loading): <PicID> is -1: every run adds another grey picture to the "
             "store\n");
    }
    void check()
    {
        QFETCH(QString, strTasks);
        QFETCH(QString, strFinding);
        const Outcome cOutcome = run({"--check", file(strTasks)});
        QCOMPARE(cOutcome.m_strOut, strFinding);
        QCOMPARE(cOutcome.m_strErr, QString());
        QCOMPARE(cOutcome.m_nExitCode, strFinding.isEmpty() ? 0 : 1);
    }

    void checkKnowsShippedPlugins()
    {
        const QString strTasks = task(
            "a",
            source("", "Picture Folder") +
                step("<InputID>1</InputID><OutputID>2</OutputID>", -1, "OCX_ToGray") +
                step("<InputType>rgb</InputType><InputID>1</InputID><OutputID>3</OutputID>", -1, "OCX_Blur") +
                step("<InputID>3</InputID><InputType>RGB</InputType>", -1, "KQ_MemoryDisk") +
                step("<InputID>2</InputID><AreasID>-1</AreasID><StringsID>7</StringsID>", -1, "OCX_Blobs") +
                step("<DataType>6</DataType><DataID>6</DataID>", -1, "KQ_Drawing") +
                step("<DataType>7</DataType><DataID>7</DataID>", -1, "KQ_Drawing"));
        QProcess cTool;
        cTool.start(OCULINEX_BINARY_DIR "/bin/oculinex-run", {"--check", file(strTasks)});
        QCOMPARE(end(cTool).m_strOut, "task 'a' step 4 (OCX_Blobs): <AreasID> is below 0: the step fails\n"
                                      "task 'a' step 5 (KQ_Drawing): reads area list 6 (<DataID>), which "
                                      "nothing before it writes\n");
    }
};

QTEST_GUILESS_MAIN(TestOculinexRun)
#include "tst_oculinexrun.moc"
