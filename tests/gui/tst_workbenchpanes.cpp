// The panes of the workbench: views, log, store, the operator's window.

#include <thread>

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLoggingCategory>
#include <QTreeView>
#include <QTreeWidget>

#include "OculinexQTStandAloneInQt.h"
#include "bench.h"
#include "datatable.h"
#include "logmodel.h"
#include "logpane.h"
#include "operatorwindow.h"
#include "sdk/window/pictureview.h"
#include "stamptask.h"
#include "storepane.h"
#include "viewfeed.h"
#include "viewpane.h"

Q_LOGGING_CATEGORY(lcTest, "test.panes")

class TstWorkbenchPanes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { enableTaskStatus(true); }
    void cleanup() { TaskMgr::getInstance()->clear(); }

    /// Also when drawings get lost, as they do at this pace.
    void viewsShowWholeRuns()
    {
        constexpr int WANTED_FRAMES = 30;
        TaskMgr::getInstance()->addTask(Stamp::newTask({64, 48}, 0, 0), 0);
        ViewFeed cFeed(0, {64, 48});
        int nFrames = 0;
        QSet<int> setLevel;
        connect(&cFeed, &ViewFeed::ready, this, [&] {
            const QImage cPicture = cFeed.take().m_cPicture;
            const int nLeft = qRed(cPicture.pixel(8, 24));
            QVERIFY(nLeft > 0);
            QCOMPARE(cPicture.pixel(56, 24), qRgb(nLeft, nLeft, nLeft));
            setLevel.insert(nLeft);
            ++nFrames;
        });
        startTask(0);
        QTRY_VERIFY(nFrames >= WANTED_FRAMES || QTest::currentTestFailed());
        stopTask(0);
        QVERIFY(setLevel.size() > WANTED_FRAMES / 4);
    }

    void viewIsSaved()
    {
        TaskMgr::getInstance()->addTask(Stamp::newTask({64, 48}, 0, 1), 0);
        ViewPane cPane(0);
        cPane.resize(400, 300);
        cPane.show();
        runTaskOnce(0);
        QTRY_VERIFY(!cPane.picture().isNull());
        const QTemporaryDir cFolder;
        // A picture, whatever the name lacks.
        QVERIFY(
            isAnswered({chooseFile(cFolder.filePath("view"))}, [&] { DialogUser::click(cPane, "btnSave"); }));
        QCOMPARE(QImage(cFolder.filePath("view.png")).convertToFormat(QImage::Format_RGB888),
                 cPane.picture());
        // What has the completed name already is asked for.
        write(cFolder.filePath("old.png"), "precious");
        const auto fnSaveAsOld = chooseFile(cFolder.filePath("old"));
        const auto fnLeave = [](QWidget &cTop) { cTop.close(); };
        QVERIFY(isAnswered({fnSaveAsOld, pressButton("No"), fnLeave},
                           [&] { DialogUser::click(cPane, "btnSave"); }));
        QCOMPARE(contents(cFolder.filePath("old.png")), "precious");
    }

    void logKeepsWhatAllThreadsSay()
    {
        int nFailed = 0;
        {
            LogPane cLog;
            connect(&cLog, &LogPane::failed, this, [&] { ++nFailed; });
            std::thread cTalker([] {
                for (int nLine = 0; nLine < 200; ++nLine)
                    qCWarning(lcTest, "line %d", nLine);
            });
            FuncHaveErrorMessage("错误");
            FuncHaveErrorMessage("");
            FuncHavePrintMessage(QString(3000, 'x'));
            cTalker.join();
            QTRY_COMPARE(cLog.findChild<QTreeView *>("lines")->model()->rowCount(), 203);
            QCOMPARE(nFailed, 2);
        }
        qWarning("no pane is there");
    }

    void logForgetsTheOldest()
    {
        LogModel cModel;
        for (const size_t nLines : {6000U, 25000U}) {
            MessageFeed::Messages lstMessage(nLines, {MessageFeed::Kind::Log, QDateTime(), "old"});
            lstMessage.back().m_strText = "newest";
            cModel.append(lstMessage);
            QVERIFY(cModel.rowCount() <= LogModel::MAX_LINES);
            QCOMPARE(cModel.text(cModel.rowCount() - 1), QStringLiteral("newest"));
        }
        QCOMPARE(cModel.rowCount(), LogModel::MAX_LINES);
    }

    void storeOutlivesTheTask()
    {
        StorePane cPane;
        cPane.resize(500, 500);
        cPane.show();
        auto *const pcList = cPane.findChild<QTreeWidget *>("list");
        auto *const pcTable = cPane.findChild<QTableWidget *>("table");
        auto *const pcPicture = cPane.findChild<Plugin::PictureView *>("picture");
        {
            const std::unique_ptr<TaskInfo> pcTask(Stamp::newTask({64, 48}, 0, 0));
            pcTask->runTaskOnce();
            ParamAreas &cAreas = *pcTask->m_pcAPM->getParamAreas(3);
            cAreas.setName("斑点");
            cAreas.addArea({12, {10, 20, 30, 50}, 31, 11});
            pcTask->m_pcAPM->getParamStrings(1)->setStrings({"a", "b", "c"});
            cPane.showStore(pcTask.get());
        }
        QCOMPARE(pcList->topLevelItemCount(), 5); // with the source's own picture
        QCOMPARE(pcPicture->picture().size(), QSize(64, 48));
        const int nLevel = qRed(pcPicture->picture().pixel(3, 3));
        QTRY_VERIFY(nLevel > 0);

        // A list is drawn over the picture, texts are not.
        pcList->setCurrentItem(pcList->topLevelItem(3));
        QCOMPARE(pcTable->item(0, 0)->text() + ' ' + pcTable->item(0, 1)->text() + ' ' +
                     pcTable->item(0, 3)->text(),
                 QStringLiteral("12 30 21"));
        QCOMPARE(pcPicture->picture().pixelColor(30, 15), QColor(0, 230, 0));
        pcList->setCurrentItem(pcList->topLevelItem(4));
        QCOMPARE(pcTable->rowCount(), 3);
        QVERIFY(!pcPicture->isVisible());
        cPane.clear();
        QCOMPARE(pcList->topLevelItemCount(), 0);
    }

    void operatorJudges_data()
    {
        // The step's result in a single run, what is printed, the verdict, and the counts of good and bad.
        addRows(
            "case                       strGood  strBad  strResult  strPrinted     strVerdict  strCounts\n"
            "printed texts don't count  -        -       -          NOK 3          OK          1 0\n"
            "stopped                    -        -       {stop:no}  -              NOK         0 1\n"
            "says bad                   OK       NOK     -          nok: 23 coins  NOK         0 1\n"
            "says nothing               OK       NOK     -          hello          –           0 0\n"
            "failed, says nothing       OK       NOK     broken     -              NOK         0 1");
    }
    void operatorJudges()
    {
        QFETCH(QString, strGood);
        QFETCH(QString, strBad);
        QFETCH(QString, strResult);
        QFETCH(QString, strPrinted);
        QFETCH(QString, strVerdict);
        QFETCH(QString, strCounts);
        Fake::reset();
        TaskMgr::getInstance()->addTask(new Fake::Task("work|" + strResult), 0);
        OperatorSetup cSetup;
        cSetup.m_strGood = strGood;
        cSetup.m_strBad = strBad;
        OperatorWindow cWindow(cSetup);
        connect(&cWindow, &OperatorWindow::startRequested, this, [&] {
            runTaskOnce(0);
            cWindow.printed(strPrinted);
        });
        cWindow.show();
        DialogUser::click(cWindow, "btnStart");
        const auto fnText = [&](const char *szName) { return cWindow.findChild<QLabel *>(szName)->text(); };
        QTRY_COMPARE(fnText("lblGood") + ' ' + fnText("lblBad"), strCounts);
        QTest::qWait(250); // two more looks count nothing twice
        QCOMPARE(fnText("lblGood") + ' ' + fnText("lblBad"), strCounts);
        QCOMPARE(fnText("lblVerdict"), strVerdict);
    }

    /// What nobody could set here is shown all the same, and what is typed is shown as the flow took it.
    void operatorSeesTheFlow_data()
    {
        addRows(
            "case         strConfig                strShown  strTyped  strTaken\n"
            "beyond       <Level>200</Level>       200       199       <Level>49</Level>\n"
            "without end  <Level>2147483647</Level>  no limit  12      <Level>13</Level>\n"
            "amid others  <A>a</A><level>40</LEVEL><B>1</B>  40  20    <A>a</A><level>21</LEVEL><B>1</B>\n"
            "missing      <A>a</A>                 15        12        <A>a</A><Level>13</Level>");
    }
    void operatorSeesTheFlow()
    {
        QFETCH(QString, strConfig);
        QFETCH(QString, strShown);
        QFETCH(QString, strTyped);
        QFETCH(QString, strTaken);
        Fake::reset();
        auto *pcTask = new Fake::Task(strConfig);
        TaskMgr::getInstance()->addTask(pcTask, 0);
        OperatorPick cPick;
        cPick.m_strTag = "Level";
        cPick.m_dMin = 10;
        cPick.m_dMax = 50;
        cPick.m_bOdd = true;
        cPick.m_dInitial = 15;
        OperatorSetup cSetup;
        cSetup.m_lstStep = {{0, 0, {cPick}}};
        OperatorWindow cWindow(cSetup);
        cWindow.show();
        auto *pcBox = cWindow.findChild<QDoubleSpinBox *>("Level");
        QCOMPARE(pcBox->text(), strShown);
        pcBox->setFocus();
        pcBox->selectAll();
        QTest::keyClicks(pcBox, strTyped);
        QTest::keyClick(pcBox, Qt::Key_Return);
        QCOMPARE(pcTask->m_lstArithm[0].m_strOptionStr, strTaken);
        QVERIFY2(strTaken.contains('>' + pcBox->text() + '<'), qPrintable(pcBox->text()));
    }
};

QTEST_MAIN(TstWorkbenchPanes)
#include "tst_workbenchpanes.moc"
