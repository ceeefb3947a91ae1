// The workbench's window, used as a person uses it.

#include <QtTest>

#include <random>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTreeWidget>

#include "bench.h"
#include "datatable.h"
#include "operatormode.h"
#include "operatorsetup.h"
#include "operatorwindow.h"
#include "tasklist.h"

class TestWorkbench : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { keepSettingsIn(m_cFolder.path()); }
    void init()
    {
        Fake::reset();
        m_strFile = makeFile(m_cFolder);
    }

    /// From nothing to a flow that is saved, with the mouse alone.
    void buildsAFlow()
    {
        const QString strFile = m_cFolder.filePath("built.tasks");
        {
            Bench cBench;
            QVERIFY(cBench.trigger("Add task"));
            {
                DialogUser cUser({DialogUser::set("edtName=picture"), useSource("Picture Folder"),
                                  DialogUser::set("Path=" + PICTURES), DialogUser::press("btnOK"),
                                  DialogUser::press("btnOK")});
                QTest::mouseClick(cBench.page()->findChild<QPushButton *>("source"), Qt::LeftButton);
                QVERIFY(cUser.isContent());
            }
            for (const char *szAlgorithm : {"灰度化", "平滑", "二值化"}) {
                DialogUser cUser({DialogUser::press("btnOK")});
                cBench.chooseAlgorithm(szAlgorithm);
                QVERIFY(cUser.isContent());
            }
            QCOMPARE(cBench.stepNames(), "灰度化 平滑 二值化");
            cBench.steps()->selectRow(1);
            QVERIFY(cBench.trigger("Run to here"));
            for (int nStep = 0; nStep < 3; ++nStep)
                QCOMPARE(cBench.steps()->item(nStep, 2)->text().isEmpty(), nStep == 2);
            QVERIFY(cBench.isWindowModified());
            DialogUser cUser({chooseFile(strFile)});
            QVERIFY(cBench.trigger("Save"));
            QVERIFY(cUser.isContent() && !cBench.isWindowModified());
            QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
            QVERIFY(cBench.close());
        }
        Bench cBench(strFile);
        QCOMPARE(cBench.stepNames(), "灰度化 平滑 二值化");
        QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
        QVERIFY(!cBench.isWindowModified());
        for (int nUndo = 0; nUndo < 6; ++nUndo)
            QVERIFY(!cBench.trigger("Undo"));
    }

    void undoesAndRedoes_data()
    {
        addRows("edit       strTasks                strSteps\n"
                "add        A B C *4                a b c\n"
                "duplicate  A B C *A                a b c\n"
                "remove     B C                     d\n"
                "move down  B A C                   a b c\n"
                "rename     X B C                   a b c\n"
                "view       A B C                   a b c\n"
                "describe   A B C                   A b c\n"
                "limit      A B C                   a b c\n"
                "step up    A B C                   b a c\n"
                "step off   A B C                   a b c\n"
                "delete     A B C                   a c\n"
                "configure  A B C                   a b c");
    }
    void undoesAndRedoes()
    {
        QFETCH(QString, strTasks);
        QFETCH(QString, strSteps);
        Bench cBench(m_strFile);
        const QString strBefore = allTasks();
        edit(cBench, QTest::currentDataTag());
        const QString strAfter = allTasks();
        QVERIFY(strBefore != strAfter);
        QVERIFY(cBench.isWindowModified());
        const auto fnCompare = [&] {
            // A name made by the window begins with a star here.
            QStringList lstName = cBench.names();
            if (lstName.size() > 3)
                lstName[3] = '*' + lstName[3].remove("Task ").remove(" (copy)");
            QCOMPARE(lstName.join(' '), strTasks);
            cBench.select(cBench.names().indexOf(strSteps.startsWith('d') ? "B"
                                                 : strTasks.contains('X') ? "X"
                                                                          : "A"));
            QCOMPARE(cBench.stepNames(), strSteps);
        };
        fnCompare();
        QVERIFY(cBench.trigger("Undo"));
        QCOMPARE(allTasks(), strBefore);
        QCOMPARE(cBench.names().join(' '), "A B C");
        cBench.select(0);
        QCOMPARE(cBench.stepNames(), "a b c");
        QVERIFY(!cBench.isWindowModified());
        QVERIFY(!cBench.action("Undo")->isEnabled());
        QVERIFY(cBench.trigger("Redo"));
        QCOMPARE(allTasks(), strAfter);
        fnCompare();
    }

    /// What is kept beside the tasks file follows its step through edits, and comes back with the file.
    void remembersLimits()
    {
        {
            Bench cBench(m_strFile);
            cBench.steps()->item(1, 3)->setCheckState(Qt::Unchecked);
            QTRY_COMPARE(cBench.steps()->item(1, 1)->text(), "0");
            cBench.steps()->selectRow(1);
            QVERIFY(cBench.trigger("Move step up"));
            cBench.page()->task()->m_lstArithm.prepend(Fake::step("new"));
            cBench.page()->fill();
            QVERIFY(cBench.trigger("Save"));
        }
        {
            Bench cBench(m_strFile);
            QCOMPARE(cBench.stepNames(), "new b a c");
            cBench.steps()->selectRow(1);
            QVERIFY(cBench.trigger("Switch step on or off"));
            QCOMPARE(cBench.page()->task()->m_lstArithm[1].m_nMaxExeTimes, 5);
        }
        write(m_strFile + ".workbench.json", "{ broken");
        QString strBox;
        DialogUser cUser({[&](QWidget &cTop) {
            strBox = qobject_cast<QMessageBox *>(&cTop)->text();
            cTop.close();
        }});
        Bench cBench(m_strFile);
        QVERIFY(strBox.contains("workbench.json"));
        QCOMPARE(cBench.stepNames(), "new b a c");
    }

    /// The window answers while a step makes the task's stop wait, and nothing is edited meanwhile.
    void stopsWithoutFreezing()
    {
        write(m_strFile, (taskText("A", {"hold|", "b"}) + taskText("B", {"d"})).toUtf8());
        Fake::Gate cGate;
        Fake::s_mapHandlers["\nhold"] = [&] { cGate.enter(); };
        Bench cBench(m_strFile);
        auto *pcRun = cBench.findChild<QPushButton *>("run");
        QTest::mouseClick(pcRun, Qt::LeftButton);
        QVERIFY(cGate.waitEntered());
        QTRY_COMPARE(pcRun->text(), "Stop");
        QTRY_VERIFY(!cBench.steps()->isEnabled());
        QVERIFY(!cBench.action("Remove task")->isEnabled());
        QTRY_VERIFY(cBench.steps()->item(0, 4)->text().endsWith(" s")); // it hangs

        QTest::mouseClick(pcRun, Qt::LeftButton);
        QElapsedTimer cSince;
        qint64 nWorstMs = 0;
        int nTicks = 0;
        QTimer cTimer;
        connect(&cTimer, &QTimer::timeout, this, [&] {
            nWorstMs = std::max(nWorstMs, cSince.restart());
            ++nTicks;
        });
        cSince.start();
        cTimer.start(10);
        // Another task goes on being edited.
        cBench.select(1);
        cBench.steps()->item(0, 0)->setText("D");
        QTRY_COMPARE(nTicks >= 40, true);
        QVERIFY2(nWorstMs < 200, qPrintable(QString::number(nWorstMs)));
        QVERIFY(TaskMgr::getInstance()->getTask(0)->IsRunning());
        QVERIFY(cBench.trigger("Undo"));
        QCOMPARE(cBench.stepNames(), "d");
        cGate.open();
        QTRY_VERIFY(cBench.control().isIdle());
        QVERIFY(!TaskMgr::getInstance()->getTask(0)->IsRunning());
        cBench.select(0);
        QTRY_VERIFY(cBench.steps()->isEnabled());
    }

    void asksBeforeClosing_data()
    {
        addRows("answer   strKeys\n"
                "save     Return\n"
                "discard  Space\n"
                "cancel   Esc");
    }
    void asksBeforeClosing()
    {
        QFETCH(QString, strKeys);
        const QString strAnswer = QTest::currentDataTag();
        Bench cBench(m_strFile);
        cBench.trigger("Start all");
        QTRY_COMPARE(cBench.tasks()->item(2, 1)->text(), "Running");
        const QByteArray achBefore = contents(m_strFile);
        TaskInfo *pcTask = TaskMgr::getInstance()->getTask(0);
        {
            const QSignalBlocker cBlocker(cBench.steps()); // typed while the task was started
            cBench.steps()->item(0, 0)->setText("unsaved");
        }
        pcTask->TaskFlowTblCellChanged(0, 0);
        {
            DialogUser cUser({[&](QWidget &cTop) {
                for (QAbstractButton *pcButton : cTop.findChildren<QAbstractButton *>())
                    if (strKeys == "Space" && pcButton->text() == "&Discard")
                        return typeKeys(*pcButton, strKeys);
                typeKeys(cTop, strKeys);
            }});
            cBench.close();
            QVERIFY(cUser.isContent());
        }
        const bool bCloses = strAnswer != "cancel";
        if (bCloses)
            QTRY_VERIFY(!cBench.isVisible());
        QCOMPARE(cBench.isVisible(), !bCloses);
        for (int nTask = 0; nTask < 3; ++nTask)
            QCOMPARE(TaskMgr::getInstance()->getTask(nTask)->IsRunning(), !bCloses);
        QCOMPARE(contents(m_strFile).contains("unsaved"), strAnswer == "save");
        QCOMPARE(contents(m_strFile) == achBefore, strAnswer != "save");
    }

    /// Whatever was done, undoing it and doing it again gives each file again, letter by letter.
    void undoesAnySequence_data()
    {
        QTest::addColumn<unsigned>("nSeed");
        for (const unsigned nSeed : {1U, 2U, 3U})
            QTest::newRow(qPrintable(QString::number(nSeed))) << nSeed;
    }
    void undoesAnySequence()
    {
        QFETCH(unsigned, nSeed);
        std::mt19937 cRandom(nSeed);
        Bench cBench(m_strFile);
        QStringList lstText{allTasks()};
        QStringList lstDone{"nothing"};
        for (int nEdit = 0; nEdit < 60; ++nEdit) {
            const QString strDone = editAnything(cBench, [&](int nBelow) {
                return static_cast<int>(cRandom() % static_cast<unsigned>(std::max(1, nBelow)));
            });
            if (allTasks() == lstText.constLast())
                continue;
            lstText.append(allTasks());
            lstDone.append(strDone);
        }
        QVERIFY(lstText.size() > 30);
        for (int nText = lstText.size() - 2; nText >= 0; --nText) {
            QVERIFY(cBench.trigger("Undo"));
            QVERIFY2(allTasks() == lstText[nText], qPrintable("undo " + lstDone[nText + 1]));
        }
        QVERIFY(!cBench.action("Undo")->isEnabled() && !cBench.isWindowModified());
        for (int nText = 1; nText < lstText.size(); ++nText) {
            QVERIFY(cBench.trigger("Redo"));
            QVERIFY2(allTasks() == lstText[nText], qPrintable("redo " + lstDone[nText]));
        }
        QVERIFY(!cBench.action("Redo")->isEnabled());
        cBench.trigger("Save");
        QCOMPARE(QString::fromUtf8(contents(m_strFile)), lstText.constLast());
    }

    /// What the operator sees is saved beside the file, asked about, and its picks can be undone.
    void keepsWhatTheOperatorSees()
    {
        OperatorSetup cSetup;
        cSetup.m_nTask = 2;
        cSetup.m_strGood = "fine";
        OperatorPick cPick;
        cPick.m_strTag = "Level";
        cSetup.m_lstStep = {{0, 0, {cPick}}, {0, 2, {cPick}}};
        {
            Bench cBench(m_strFile);
            cBench.document().setOperatorSetup(cSetup);
            QVERIFY(cBench.isWindowModified());
            QVERIFY(cBench.trigger("Undo"));
            QCOMPARE(cBench.document().operatorSetup().m_lstStep.size(), 0);
            QCOMPARE(cBench.document().operatorSetup().m_strGood, "");
            QVERIFY(!cBench.isWindowModified());
            QVERIFY(cBench.trigger("Redo"));
            cBench.select(1);
            QVERIFY(cBench.trigger("Remove task")); // the third is the second now
            QVERIFY(cBench.trigger("Save") && !cBench.isWindowModified());
        }
        Bench cBench(m_strFile);
        const OperatorSetup cRead = cBench.document().operatorSetup();
        QCOMPARE(cRead.m_nTask, 1);
        QCOMPARE(cRead.m_strGood, "fine");
        QCOMPARE(cRead.m_lstStep.size(), 2);
        QCOMPARE(cRead.m_lstStep[1].m_nStep, 2);
        QVERIFY(!cBench.isWindowModified());
    }

    /// The author picks, saves and opens again; the operator sets, starts, sees the verdict and leaves.
    /// The last test, since it ends the program's loop.
    void servesTheOperator()
    {
        // A text for each picture, of which there are fewer.
        write(m_strFile,
              taskText("A", {"<Level>40</Level>" + QString("|{print:24 coins}").repeated(9)}).toUtf8());
        {
            Bench cBench(m_strFile);
            DialogUser cUser({[](QWidget &cTop) {
                auto *pcRow = cTop.findChild<QTreeWidget *>("steps")->topLevelItem(0)->child(0)->child(0);
                pcRow->setCheckState(0, Qt::Checked);
                pcRow->setText(3, "50");
                cTop.findChild<QLineEdit *>("edtGood")->setText("24");
                cTop.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
            }});
            QVERIFY(cBench.trigger("What the operator sees"));
            QVERIFY(cUser.isContent());
            QVERIFY(cBench.trigger("Save"));
        }
        Bench cBench(m_strFile);
        auto *pcWindow = cBench.operatorMode().open(OperatorMode::Leaving::EndsProgram);
        QVERIFY(pcWindow->isFullScreen() && !cBench.isVisible());
        auto *pcLevel = pcWindow->findChild<QDoubleSpinBox *>("Level");
        pcLevel->selectAll();
        QTest::keyClicks(pcLevel, "45");
        QTest::keyClick(pcLevel, Qt::Key_Return);
        QTest::mouseClick(pcWindow->findChild<QPushButton *>("btnStart"), Qt::LeftButton);
        QVERIFY(!pcLevel->isEnabled()); // the task is being started
        QTRY_COMPARE(pcWindow->findChild<QLabel *>("lblVerdict")->text(), "OK");
        QTRY_COMPARE(pcWindow->findChild<QLabel *>("lblGood")->text(), "3");

        {
            DialogUser cUser({pressButton("Cancel")});
            QTest::keyClick(pcWindow, Qt::Key_Escape);
            QVERIFY(cUser.isContent());
        }
        QVERIFY(pcWindow->isVisible());
        QVERIFY(TaskMgr::getInstance()->getTask(0)->IsRunning());
        QTest::mouseClick(pcWindow->findChild<QPushButton *>("btnStop"), Qt::LeftButton);
        QTRY_VERIFY(pcWindow->findChild<QPushButton *>("btnStart")->isEnabled());
        QTRY_VERIFY(cBench.control().isIdle());
        DialogUser cUser({pressButton("Save")});
        QTimer::singleShot(0, pcWindow, [pcWindow] { QTest::keyClick(pcWindow, Qt::Key_Escape); });
        QTimer::singleShot(10000, pcWindow, [] { QApplication::exit(1); });
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(contents(m_strFile).contains("<Level>45</Level>"));
    }

private:
    static void sayYes(QWidget &cTop)
    {
        qobject_cast<QMessageBox *>(&cTop)->button(QMessageBox::Yes)->click();
    }
    /// One random edit; what it was.
    template <typename Random>
    static QString editAnything(Bench &cBench, const Random &fnBelow)
    {
        static const QStringList s_lstAction{"Add task",       "Duplicate task",       "Remove task",
                                             "Move task up",   "Move task down",       "Move step up",
                                             "Move step down", "Switch step on or off"};
        cBench.select(fnBelow(cBench.tasks()->rowCount()));
        if (!cBench.page())
            return cBench.trigger("Add task"), "add the first task";
        const int nSteps = cBench.steps()->rowCount();
        const int nStep = fnBelow(nSteps);
        cBench.steps()->selectRow(nStep);
        const QString strText = QString::number(fnBelow(1000));
        const int nKind = fnBelow(s_lstAction.size() + 7);
        if (nKind < s_lstAction.size()) {
            cBench.trigger(s_lstAction[nKind]);
            return s_lstAction[nKind];
        }
        const int nTask = cBench.tasks()->currentRow();
        if (nKind == s_lstAction.size()) {
            cBench.tasks()->item(nTask, 0)->setText("检测 " + strText);
            return "rename";
        }
        if (nKind == s_lstAction.size() + 1 || nSteps == 0) {
            cBench.page()->task()->m_lstArithm.insert(nStep, Fake::step(strText));
            cBench.page()->fill();
            cBench.document().noticeEdit(nTask);
            return "insert";
        }
        if (nKind == s_lstAction.size() + 2) {
            DialogUser cUser({sayYes});
            cBench.trigger("Delete step");
            return "delete";
        }
        if (nKind == s_lstAction.size() + 3) {
            cBench.page()->findChild<QComboBox *>("view")->setCurrentIndex(fnBelow(4));
            return "view";
        }
        if (nKind == s_lstAction.size() + 4) {
            cBench.page()->task()->m_lstArithm[nStep].m_strOptionStr = "<A>" + strText + "</A>\n";
            cBench.document().noticeEdit(nTask);
            return "configure";
        }
        cBench.steps()->item(nStep, nKind % 2)->setText(strText);
        return "cell";
    }
    static void edit(Bench &cBench, const QString &strEdit)
    {
        TaskInfo *pcTask = cBench.page()->task();
        cBench.steps()->selectRow(1);
        if (strEdit == "add")
            cBench.trigger("Add task");
        else if (strEdit == "duplicate")
            cBench.trigger("Duplicate task");
        else if (strEdit == "remove")
            cBench.trigger("Remove task");
        else if (strEdit == "move down")
            cBench.trigger("Move task down");
        else if (strEdit == "rename")
            cBench.tasks()->item(0, 0)->setText("X");
        else if (strEdit == "view")
            cBench.page()->findChild<QComboBox *>("view")->setCurrentIndex(2);
        else if (strEdit == "describe")
            cBench.steps()->item(0, 0)->setText("A");
        else if (strEdit == "limit")
            cBench.steps()->item(0, 1)->setText("7");
        else if (strEdit == "step up")
            cBench.trigger("Move step up");
        else if (strEdit == "step off")
            cBench.trigger("Switch step on or off");
        else if (strEdit == "delete") {
            DialogUser cUser({sayYes});
            cBench.trigger("Delete step");
        } else if (strEdit == "configure")
            pcTask->m_lstArithm[1].m_strOptionStr = "changed"; // as an algorithm's window does
        // What no signal tells is seen at the next look.
        QTRY_VERIFY(cBench.action("Undo")->isEnabled());
    }

    QTemporaryDir m_cFolder;
    QString m_strFile;
};

QTEST_MAIN(TestWorkbench)

#include "tst_workbench.moc"
