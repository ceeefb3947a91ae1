// The panes of the workbench: views, log, store, the operator's window.

#include <thread>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include "OculinexQTStandAloneInQt.h"
#include "bench.h"
#include "datatable.h"
#include "dlgoperator.h"
#include "logmodel.h"
#include "logpane.h"
#include "operatorwindow.h"
#include "sdk/window/pictureview.h"
#include "stamptask.h"
#include "storepane.h"
#include "viewfeed.h"
#include "viewpane.h"

Q_LOGGING_CATEGORY(lcTest, "test.panes")

namespace
{
int rows(const LogPane &cLog)
{
    return cLog.findChild<QTreeView *>("lines")->model()->rowCount();
}
} // namespace

class TstWorkbenchPanes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { enableTaskStatus(true); }
    void cleanup() { TaskMgr::getInstance()->clear(); }

    void viewsShowWholeRuns_data()
    {
        addRows("pace                strPauseMs\n"
                "slow                20\n"
                "drawings get lost   0");
    }
    void viewsShowWholeRuns()
    {
        QFETCH(QString, strPauseMs);
        constexpr int WANTED_FRAMES = 30;
        TaskMgr::getInstance()->addTask(Stamp::newTask({64, 48}, strPauseMs.toInt(), strPauseMs.toInt()), 0);
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

    void viewFollowsItsSize()
    {
        TaskMgr::getInstance()->addTask(Stamp::newTask({64, 48}, 0, 1), 0);
        ViewPane cPane(0);
        cPane.resize(400, 300);
        cPane.show();
        startTask(0);
        for (const QSize &cSize : {QSize(1920, 1080), QSize(37, 19), QSize(1, 1), QSize()}) {
            cPane.setViewSize(cSize);
            const QSize cWanted = cSize.isEmpty() ? cPane.findChild<QWidget *>("picture")->size() : cSize;
            QTRY_COMPARE(cPane.picture().size(), cWanted);
        }
        cPane.resize(500, 400);
        QTRY_COMPARE(cPane.picture().size(), cPane.findChild<QWidget *>("picture")->size());
        stopTask(0);
    }

    void viewTellsPixels()
    {
        TaskMgr::getInstance()->addTask(Stamp::newTask({64, 48}, 0, 1), 0);
        ViewPane cPane(0);
        cPane.resize(400, 300);
        cPane.show();
        runTaskOnce(0);
        QTRY_VERIFY(!cPane.picture().isNull());
        auto *const pcPicture = cPane.findChild<Plugin::PictureView *>("picture");
        DialogUser::click(cPane, "btnPixels");
        QCOMPARE(cPane.zoom(), 1.0);
        const QPoint cMouse = pcPicture->toWidget({320, 200});
        QMouseEvent cMove(QEvent::MouseMove, cMouse, Qt::NoButton, {}, {});
        QApplication::sendEvent(pcPicture, &cMove);
        const int nLevel = qRed(cPane.picture().pixel(320, 200));
        const QList<QLabel *> lstLabel = cPane.findChildren<QLabel *>();
        QVERIFY(std::any_of(lstLabel.begin(), lstLabel.end(), [&](const QLabel *pcLabel) {
            return pcLabel->text() == QStringLiteral("320, 200: red %1, green %1, blue %1").arg(nLevel);
        }));
        DialogUser::click(cPane, "btnCopy");
        QCOMPARE(QApplication::clipboard()->image().size(), QSize(640, 480));
        DialogUser::click(cPane, "btnWhole");
        QCOMPARE(cPane.zoom(), 0.0);

        const QTemporaryDir cFolder;
        // A picture, whatever the name lacks.
        QVERIFY(
            isAnswered({chooseFile(cFolder.filePath("view"))}, [&] { DialogUser::click(cPane, "btnSave"); }));
        QCOMPARE(QImage(cFolder.filePath("view.png")).convertToFormat(QImage::Format_RGB888),
                 cPane.picture());
    }

    void logKeepsWhatAllThreadsSay()
    {
        static std::atomic<int> s_nBefore;
        s_nBefore = 0;
        const QtMessageHandler fnOriginal = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &) { ++s_nBefore; });
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
            QTRY_COMPARE(rows(cLog), 203);
            QCOMPARE(nFailed, 2);
            // The queues hold ten; the pane empties them faster than a task fills them.
            for (int nText = 0; nText < 60; ++nText) {
                FuncHavePrintMessage("text");
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
            QTRY_COMPARE(rows(cLog), 263);
        }
        qWarning("no pane is there");
        QCOMPARE(int(s_nBefore), 201);
        qInstallMessageHandler(fnOriginal);
    }

    void logFiltersAndCopies()
    {
        LogPane cLog;
        cLog.resize(600, 200);
        cLog.show();
        DialogUser::click(cLog, "btnLog"); // not what Qt says of the platform
        FuncHaveErrorMessage("An error\nof two lines");
        FuncHavePrintMessage("24 Coins");
        QTRY_COMPARE(rows(cLog), 2);
        DialogUser::click(cLog, "btnErrors");
        QCOMPARE(rows(cLog), 1);
        DialogUser::click(cLog, "btnErrors");
        QTest::keyClicks(cLog.findChild<QLineEdit *>("edtFilter"), "coins");
        QCOMPARE(rows(cLog), 1);
        DialogUser::click(cLog, "btnCopy");
        QVERIFY(QApplication::clipboard()->text().endsWith("\tprint\t24 Coins\n"));
        DialogUser::click(cLog, "btnClear");
        QCOMPARE(rows(cLog), 0);

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
            "says good                  OK       NOK     -          OK             OK          1 0\n"
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

    void operatorChangesPickedSettings()
    {
        Fake::reset();
        auto *const pcTask = new Fake::Task("work|, other|");
        pcTask->m_lstArithm[1].m_strOptionStr = "<Text>a</Text><level>40</LEVEL><Rest>1</Rest>";
        TaskMgr::getInstance()->addTask(pcTask, 0);
        OperatorPick cLevel;
        cLevel.m_strTag = cLevel.m_strName = "Level";
        cLevel.m_dMin = 10;
        cLevel.m_dMax = 50;
        OperatorPick cOdd = cLevel; // a tag that is missing
        cOdd.m_strTag = "Block";
        cOdd.m_bOdd = true;
        cOdd.m_dInitial = 11;
        OperatorSetup cSetup;
        cSetup.m_lstStep = {{0, 1, {cLevel, cOdd}}, {0, 7, {cLevel}}}; // there is no step 7 any more
        OperatorWindow cWindow(cSetup);
        cWindow.show();
        QStringList lstEdited;
        connect(&cWindow, &OperatorWindow::edited, this,
                [&](int, const QString &strWhat) { lstEdited << strWhat; });
        const auto fnType = [&](const char *szName, const QString &strText) {
            auto *const pcBox = cWindow.findChild<QDoubleSpinBox *>(szName);
            pcBox->setFocus();
            pcBox->selectAll();
            QTest::keyClicks(pcBox, strText);
            QTest::keyClick(pcBox, Qt::Key_Return);
        };
        QCOMPARE(cWindow.findChild<QDoubleSpinBox *>("Level")->value(), 40.0);
        QCOMPARE(cWindow.findChild<QDoubleSpinBox *>("Block")->value(), 11.0);
        fnType("Level", "45");
        fnType("Block", "50");
        QCOMPARE(pcTask->m_lstArithm[1].m_strOptionStr,
                 QStringLiteral("<Text>a</Text><level>45</LEVEL><Rest>1</Rest><Block>49</Block>"));
        QCOMPARE(lstEdited.size(), 2);

        Fake::Gate cGate;
        Fake::s_mapHandlers["work"] = [&] { cGate.enter(); };
        startTask(0);
        QVERIFY(cGate.waitEntered());
        QTRY_VERIFY(!cWindow.findChild<QDoubleSpinBox *>("Level")->isEnabled());
        cGate.open();
        stopTask(0);
        QTRY_VERIFY(cWindow.findChild<QDoubleSpinBox *>("Level")->isEnabled());
    }

    void authorPicksSettings()
    {
        Fake::reset();
        auto *const pcTask = new Fake::Task("work|");
        pcTask->m_lstArithm[0].m_strOptionStr = "<Level>40</Level><Text>a</Text><Factor>2.50</Factor>";
        TaskMgr::getInstance()->addTask(pcTask, 0);
        DlgOperator cDialog({});
        cDialog.show();
        auto *const pcSteps = cDialog.findChild<QTreeWidget *>("steps");
        QTreeWidgetItem *const pcStep = pcSteps->topLevelItem(0)->child(0);
        QCOMPARE(pcStep->childCount(), 2); // the numbers
        QTreeWidgetItem *const pcFactor = pcStep->child(1);
        pcFactor->setCheckState(0, Qt::Checked);
        pcFactor->setText(1, "Strength");
        pcFactor->setText(2, "0.5");
        QTest::keyClicks(cDialog.findChild<QLineEdit *>("edtBad"), "NOK");
        const OperatorSetup cSetup = cDialog.setup();
        QCOMPARE(cSetup.m_lstStep.size(), 1);
        QCOMPARE(OperatorSetup::fromJson(cSetup.toJson()).m_strBad, QStringLiteral("NOK"));
        // As it comes out of the dialog again, and back from the side file.
        const OperatorPick cPick =
            OperatorPick::fromJson(DlgOperator(cSetup).setup().m_lstStep[0].m_lstPick[0].toJson());
        QCOMPARE(cPick.m_strName, QStringLiteral("Strength"));
        QCOMPARE(cPick.m_dMin, 0.5);
        QCOMPARE(cPick.m_nDecimals, 2);
    }
};

QTEST_MAIN(TstWorkbenchPanes)
#include "tst_workbenchpanes.moc"
