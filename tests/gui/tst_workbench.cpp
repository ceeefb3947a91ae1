// The workbench's window, used as a person uses it.

#include <random>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTreeWidget>

#include "arithmparammgr.h"
#include "bench.h"
#include "datatable.h"
#include "operatormode.h"
#include "operatorwindow.h"

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

    /// From nothing to a flow that counts the coins and is saved, with the mouse and the guide's values.
    void buildsAFlow()
    {
        const QString strFile = m_cFolder.filePath("built.tasks");
        {
            Bench cBench;
            QVERIFY(cBench.trigger("Add task"));
            const DialogUser::Act fnOK = DialogUser::press("btnOK");
            QVERIFY(isAnswered({DialogUser::set("edtName=picture"), useSource("Picture Folder"),
                                DialogUser::set("Path=" + PICTURES + "/coins.png"), fnOK, fnOK},
                               [&] { DialogUser::click(*cBench.page(), "source"); }));
            const std::pair<const char *, QMap<const char *, int>> aStep[] = {
                {"灰度化", {}},
                {"平滑", {{"Size", 5}}},
                {"二值化", {{"Method", 2}, {"Block", 101}, {"Offset", 15}}},
                {"斑点分析", {{"MinSize", 500}, {"MinCount", 24}, {"MaxCount", 24}}}};
            for (const auto &[szAlgorithm, mapValue] : aStep) {
                const auto fnSet = [&mapValue = mapValue](QWidget &cTop) {
                    for (auto i = mapValue.begin(); i != mapValue.end(); ++i) {
                        auto *pcValue = cTop.findChild<QWidget *>(i.key());
                        pcValue->setProperty(pcValue->inherits("QComboBox") ? "currentIndex" : "value", *i);
                    }
                };
                QVERIFY(
                    isAnswered({fnSet, fnOK}, [&, szName = szAlgorithm] { cBench.chooseAlgorithm(szName); }));
            }
            QCOMPARE(cBench.stepNames(), "灰度化 平滑 二值化 斑点分析");
            QCOMPARE(cBench.action("Undo")->text(), "&Undo add step");
            cBench.steps()->selectRow(3);
            QVERIFY(cBench.trigger("Run to here"));
            QVERIFY(
                cBench.page()->task()->m_pcAPM->getParamStrings(1)->getStrings().value(0).startsWith("24 "));
            for (int nStep = 0; nStep < 4; ++nStep)
                cBench.steps()->item(nStep, 2)->setText({});
            cBench.steps()->selectRow(1);
            QVERIFY(cBench.trigger("Run to here"));
            for (int nStep = 0; nStep < 4; ++nStep)
                QCOMPARE(cBench.steps()->item(nStep, 2)->text().isEmpty(), nStep >= 2);
            QVERIFY(cBench.isWindowModified());
            QVERIFY(isAnswered({chooseFile(strFile)}, [&] { cBench.trigger("Save"); }));
            QVERIFY(!cBench.isWindowModified());
            QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
            QVERIFY(cBench.close());
        }
        Bench cBench(strFile);
        QCOMPARE(cBench.stepNames(), "灰度化 平滑 二值化 斑点分析");
        QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
        QVERIFY(!cBench.isWindowModified());
    }

    /// The same key deletes a task in the list of tasks, and a step in the flow.
    void deletesWhatHasTheFocus()
    {
        Bench cBench(m_strFile);
        cBench.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&cBench));
        cBench.steps()->selectRow(0);
        cBench.tasks()->setFocus();
        QVERIFY(isAnswered({}, [&] { QTest::keyClick(cBench.tasks(), Qt::Key_Delete); }));
        QCOMPARE(cBench.names().join(' ') + ": " + cBench.stepNames(), "B C: d");
        cBench.steps()->selectRow(0);
        cBench.steps()->setFocus();
        QVERIFY(isAnswered({pressButton("Yes")}, [&] { QTest::keyClick(cBench.steps(), Qt::Key_Delete); }));
        QCOMPARE(cBench.names().join(' ') + ": " + cBench.stepNames(), "B C: ");
    }

    /// A name that the file can't keep goes, and why is told.
    void refusesNames()
    {
        Bench cBench(m_strFile);
        for (const char *szName : {"\t", "a<=b"}) {
            cBench.statusBar()->clearMessage();
            cBench.tasks()->item(1, 0)->setText(szName);
            QCOMPARE(cBench.names().join(' '), "A B C");
            QVERIFY(!cBench.statusBar()->currentMessage().isEmpty());
        }
    }

    /// What an algorithm's window does to a step, no signal tells: it is seen at the next look.
    void noticesSilentEdits()
    {
        Bench cBench(m_strFile);
        cBench.page()->task()->m_lstArithm[1].m_strOptionStr = "changed";
        QTRY_VERIFY(cBench.action("Undo")->isEnabled() && cBench.isWindowModified());
    }

    /// What is still being typed into a cell counts, whatever is done next: here that a step is left out.
    void takesOverAnOpenCell_data()
    {
        addRows("does          strKeys\n"
                "saves         Ctrl+S\n"
                "quits         Ctrl+Q\n"
                "runs to here  F6");
    }
    void takesOverAnOpenCell()
    {
        QFETCH(QString, strKeys);
        Bench cBench(m_strFile);
        cBench.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&cBench));
        cBench.steps()->setCurrentCell(0, 1);
        cBench.steps()->editItem(cBench.steps()->item(0, 1));
        QTest::keyClicks(QApplication::focusWidget(), "0");
        const std::list<DialogUser::Act> lstAnswer(strKeys == "Ctrl+Q", pressButton("Save"));
        QVERIFY(isAnswered(lstAnswer, [&] { typeKeys(cBench, strKeys); }));
        QTRY_VERIFY(cBench.control().isIdle());
        QVERIFY(!Fake::hasTraced("\na\n"));
        QCOMPARE(contents(m_strFile).contains("<-MaxExeTimes->0<"), strKeys != "F6");
        QCOMPARE(Document::task(0)->m_lstArithm[0].m_nMaxExeTimes, 0);
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
        Bench cBench(m_strFile);
        QCOMPARE(cBench.stepNames(), "new b a c");
        cBench.steps()->selectRow(1);
        QVERIFY(cBench.trigger("Switch step on or off"));
        QCOMPARE(cBench.page()->task()->m_lstArithm[1].m_nMaxExeTimes, 5);
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
        // Another task goes on being edited.
        cBench.select(1);
        cBench.steps()->item(0, 0)->setText("D");
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
                "discard  -\n"
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
        {
            const QSignalBlocker cBlocker(cBench.steps()); // typed while the task was started
            cBench.steps()->item(0, 0)->setText("unsaved");
        }
        TaskMgr::getInstance()->getTask(0)->TaskFlowTblCellChanged(0, 0);
        const auto fnAnswer = [&](QWidget &cTop) {
            strAnswer == "discard" ? pressButton("Discard")(cTop) : typeKeys(cTop, strKeys);
        };
        QVERIFY(isAnswered({fnAnswer}, [&] { cBench.close(); }));
        const bool bCloses = strAnswer != "cancel";
        QTRY_COMPARE(cBench.isVisible(), !bCloses);
        for (int nTask = 0; nTask < 3; ++nTask)
            QCOMPARE(TaskMgr::getInstance()->getTask(nTask)->IsRunning(), !bCloses);
        QCOMPARE(contents(m_strFile).contains("unsaved"), strAnswer == "save");
        QCOMPARE(contents(m_strFile) == achBefore, strAnswer != "save");
    }

    /// Whatever was done, undoing it and doing it again gives each file again, letter by letter.
    void undoesAnySequence_data() { addRows("seed  strSeed\n1  1\n2  2\n3  3"); }
    void undoesAnySequence()
    {
        QFETCH(QString, strSeed);
        std::mt19937 cRandom(strSeed.toUInt());
        Bench cBench(m_strFile);
        QStringList lstText{allTasks()};
        QStringList lstDone{"nothing"};
        for (int nEdit = 0; nEdit < 80; ++nEdit) {
            const QString strDone = editAnything(cBench, [&](int nBelow) {
                return static_cast<int>(cRandom() % static_cast<unsigned>(std::max(1, nBelow)));
            });
            if (allTasks() == lstText.constLast())
                continue;
            lstText.append(allTasks());
            lstDone.append(strDone);
        }
        // Each kind of edit was done.
        QVERIFY2(QSet<QString>(lstDone.begin(), lstDone.end()).size() >= 14, qPrintable(lstDone.join(", ")));
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

    /// The window that was left hears of the tasks until it is gone.
    void leavesWhileATaskIsStopped()
    {
        Bench cBench(m_strFile);
        cBench.operatorMode().open()->close();
        cBench.control().post(Control::Action::Stop, 0);
        QVERIFY(cBench.isVisible());
        QTRY_VERIFY(cBench.control().isIdle());
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
            const auto fnPick = [](QWidget &cTop) {
                auto *pcRow = cTop.findChild<QTreeWidget *>("steps")->topLevelItem(0)->child(0)->child(0);
                pcRow->setCheckState(0, Qt::Checked);
                pcRow->setText(3, "50");
                cTop.findChild<QLineEdit *>("edtGood")->setText("24");
                cTop.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
            };
            QVERIFY(isAnswered({fnPick}, [&] { cBench.trigger("What the operator sees"); }));
            QVERIFY(cBench.trigger("Save"));
        }
        Bench cBench(m_strFile);
        auto *pcWindow = cBench.operatorMode().open(OperatorMode::Leaving::EndsProgram);
        QVERIFY(pcWindow->isFullScreen() && !cBench.isVisible());
        auto *pcLevel = pcWindow->findChild<QDoubleSpinBox *>("Level");
        pcLevel->selectAll();
        QTest::keyClicks(pcLevel, "45");
        QTest::keyClick(pcLevel, Qt::Key_Return);
        DialogUser::click(*pcWindow, "btnStart");
        QVERIFY(!pcLevel->isEnabled()); // the task is being started
        QTRY_COMPARE(pcWindow->findChild<QLabel *>("lblVerdict")->text(), "OK");
        QTRY_COMPARE(pcWindow->findChild<QLabel *>("lblGood")->text(), "3");

        QVERIFY(isAnswered({pressButton("Cancel")}, [&] { QTest::keyClick(pcWindow, Qt::Key_Escape); }));
        QVERIFY(pcWindow->isVisible());
        QVERIFY(TaskMgr::getInstance()->getTask(0)->IsRunning());
        DialogUser::click(*pcWindow, "btnStop");
        QTRY_VERIFY(pcWindow->findChild<QPushButton *>("btnStart")->isEnabled());
        QTRY_VERIFY(cBench.control().isIdle());
        DialogUser cUser({pressButton("Save")});
        QTimer::singleShot(0, pcWindow, [pcWindow] { QTest::keyClick(pcWindow, Qt::Key_Escape); });
        QTimer::singleShot(10000, pcWindow, [] { QApplication::exit(1); });
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(contents(m_strFile).contains("<Level>45</Level>"));
    }

private:
    /// One random edit; what it was.
    template <typename Random>
    static QString editAnything(Bench &cBench, const Random &fnBelow)
    {
        const QStringList lstKind{"Add task",       "Duplicate task", "Remove task",
                                  "Move task up",   "Move task down", "Move step up",
                                  "Move step down", "Delete step",    "Switch step on or off",
                                  "rename",         "insert",         "view",
                                  "configure",      "describe",       "limit"};
        cBench.select(fnBelow(cBench.tasks()->rowCount()));
        QString strKind = lstKind[fnBelow(lstKind.size())];
        if (!cBench.page())
            return cBench.trigger("Add task"), "add the first task";
        const int nTask = cBench.tasks()->currentRow();
        const int nSteps = cBench.steps()->rowCount();
        if (nSteps == 0 && !strKind.endsWith("task"))
            strKind = "insert";
        const int nStep = fnBelow(nSteps);
        cBench.steps()->selectRow(nStep);
        const QString strText = QString::number(fnBelow(1000));
        if (strKind == "rename")
            cBench.tasks()->item(nTask, 0)->setText("检测 " + strText);
        else if (strKind == "view")
            cBench.page()->findChild<QComboBox *>("view")->setCurrentIndex(fnBelow(4));
        else if (strKind == "describe" || strKind == "limit")
            cBench.steps()->item(nStep, strKind == "limit")->setText(strText);
        else if (strKind == "insert" || strKind == "configure") {
            QList<TaskItem> &lstStep = cBench.page()->task()->m_lstArithm;
            if (strKind == "insert")
                lstStep.insert(nStep, Fake::step(strText));
            else
                lstStep[nStep].m_strOptionStr = "<A>" + strText + "</A>\n";
            cBench.page()->fill();
            cBench.document().noticeEdit(nTask);
        } else {
            const std::list<DialogUser::Act> lstAnswer(strKind == "Delete step", pressButton("Yes"));
            isAnswered(lstAnswer, [&] { cBench.trigger(strKind); });
        }
        return strKind;
    }

    QTemporaryDir m_cFolder;
    QString m_strFile;
};

QTEST_MAIN(TestWorkbench)

#include "tst_workbench.moc"
