// The workbench's window, used as a person uses it.

#include <QtTest>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeView>
#include <QTreeWidget>

#include "datatable.h"
#include "dialoguser.h"
#include "flowpage.h"
#include "flowpane.h"
#include "logmodel.h"
#include "mainwindow.h"
#include "operatormode.h"
#include "operatorwindow.h"
#include "steptable.h"
#include "taskMgr/taskMgr.h"
#include "taskfixture.h"
#include "tasklist.h"

namespace
{
const QString PICTURES = QStringLiteral(OCULINEX_SOURCE_DIR "/examples/pictures");
const QString SOURCE =
    "<DSName>Picture Folder</DSName><OutputName>p</OutputName><OutputDescribe></OutputDescribe>"
    "<OutputType>RGB</OutputType><OutputID>1</OutputID><Config><Path>" +
    PICTURES + "</Path><Fps>1000</Fps></Config>";

/// A task whose steps are those of the fixture's algorithm, written "[limit;]config".
QString taskText(const QString &strName, const QStringList &lstStep)
{
    TaskInfo cTask(strName, nullptr);
    cTask.fromString("<-TaskName->" + strName + "</-TaskName-><-DataSource->" + SOURCE + "</-DataSource->");
    for (const QString &strStep : lstStep)
        cTask.getTaskItem().append(Fake::parse(strStep));
    return "<=TaskInfo=>\n" + cTask.toString() + "\n</=TaskInfo=>\n";
}

void write(const QString &strPath, const QByteArray &achText)
{
    QFile cFile(strPath);
    QVERIFY(cFile.open(QFile::WriteOnly) && cFile.write(achText) == achText.size());
}

QByteArray contents(const QString &strPath)
{
    QFile cFile(strPath);
    return cFile.open(QFile::ReadOnly) ? cFile.readAll() : QByteArray();
}

QString allTasks()
{
    return TaskMgr::getInstance()->toString();
}

/// The window and the parts that a test takes hold of.
class Bench : public MainWindow
{
public:
    explicit Bench(const QString &strFile = QString())
    {
        show();
        if (!strFile.isEmpty())
            openFile(strFile);
    }

    QTableWidget *tasks() { return findChild<QTableWidget *>("tasks"); }
    FlowPage *page() { return findChild<FlowPane *>()->page(); }
    QTableWidget *steps() { return page()->steps().table(); }
    QString name(int nTask) { return tasks()->item(nTask, 0)->text(); }
    QStringList names()
    {
        QStringList lstName;
        for (int nTask = 0; nTask < tasks()->rowCount(); ++nTask)
            lstName.append(name(nTask));
        return lstName;
    }
    QString stepNames()
    {
        QStringList lstName;
        for (int nStep = 0; nStep < steps()->rowCount(); ++nStep)
            lstName.append(steps()->item(nStep, 0)->text());
        return lstName.join(' ');
    }
    void select(int nTask) { tasks()->setCurrentCell(nTask, 0); }

    QAction *action(const QString &strText)
    {
        // "Undo" is followed by what it undoes.
        for (const QString &strRest : {QStringLiteral("…?"), QStringLiteral(" .*")})
            for (QAction *pcAction : findChildren<QAction *>())
                if (QRegularExpression('^' + strText + strRest + '$')
                        .match(pcAction->text().remove('&'))
                        .hasMatch())
                    return pcAction;
        qFatal("there is no action %s", qUtf8Printable(strText));
    }
    bool trigger(const QString &strText)
    {
        const bool bEnabled = action(strText)->isEnabled();
        action(strText)->trigger();
        return bEnabled;
    }
    /// Chooses an algorithm in the context menu of the flow.
    void chooseAlgorithm(const QString &strName)
    {
        trigger("Add step");
        TaskInfo *pcTask = page()->task();
        pcTask->m_pcMenu->close();
        for (auto i = pcTask->m_mapArithm.begin(); i != pcTask->m_mapArithm.end(); ++i)
            if (i.value().m_strArithmName == strName)
                return i.key()->trigger();
        qFatal("there is no algorithm %s", qUtf8Printable(strName));
    }
};

DialogUser::Act chooseFile(const QString &strPath)
{
    return [strPath](QWidget &cTop) {
        auto *pcDialog = qobject_cast<QFileDialog *>(&cTop);
        pcDialog->selectFile(strPath);
        QMetaObject::invokeMethod(pcDialog, "accept");
    };
}

DialogUser::Act pressButton(const QString &strText)
{
    return [strText](QWidget &cTop) {
        for (QAbstractButton *pcButton : cTop.findChildren<QAbstractButton *>())
            if (pcButton->text().remove('&') == strText)
                pcButton->click();
    };
}

DialogUser::Act useSource(const QString &strKind)
{
    return [strKind](QWidget &cDialog) {
        auto *pcList = cDialog.findChild<QListWidget *>("lbSourceNames");
        pcList->setCurrentItem(pcList->findItems(strKind, Qt::MatchExactly).value(0));
        DialogUser::click(cDialog, "btnSetting");
    };
}
} // namespace

class TestWorkbench : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setOrganizationName("oculinex");
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_cFolder.path());
    }
    void init()
    {
        Fake::reset();
        m_strFile = m_cFolder.filePath(QString("检测 %1.tasks").arg(++m_nFile));
        write(m_strFile,
              (taskText("A", {"a", "5;b", "c"}) + taskText("B", {"d"}) + taskText("C", {})).toUtf8());
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
            for (const char *szAlgorithm : {"灰度化", "二值化"}) {
                DialogUser cUser({DialogUser::press("btnOK")});
                cBench.chooseAlgorithm(szAlgorithm);
                QVERIFY(cUser.isContent());
            }
            QCOMPARE(cBench.stepNames(), "灰度化 二值化");
            cBench.steps()->selectRow(0);
            QVERIFY(cBench.trigger("Run to here"));
            QVERIFY(!cBench.steps()->item(0, 2)->text().isEmpty());
            QVERIFY(cBench.steps()->item(1, 2)->text().isEmpty());
            QVERIFY(cBench.isWindowModified());
            DialogUser cUser({chooseFile(strFile)});
            QVERIFY(cBench.trigger("Save"));
            QVERIFY(cUser.isContent() && !cBench.isWindowModified());
            QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
            QVERIFY(cBench.close());
        }
        Bench cBench(strFile);
        QCOMPARE(cBench.stepNames(), "灰度化 二值化");
        QCOMPARE(QString::fromUtf8(contents(strFile)), allTasks());
        QVERIFY(!cBench.isWindowModified());
        for (int nUndo = 0; nUndo < 5; ++nUndo)
            QVERIFY(!cBench.trigger("Undo"));
    }

    /// What loading keeps silent about a file is told in the log.
    void tellsWhatIsOdd()
    {
        write(m_strFile, contents(m_strFile).replace("<-MaxExeTimes->5<", "<-MaxExeTimes->five<"));
        Bench cBench(m_strFile);
        const auto *pcLines = cBench.findChild<QTreeView *>("lines")->model();
        const auto fnTold = [&] {
            for (int nRow = 0; nRow < pcLines->rowCount(); ++nRow)
                if (pcLines->index(nRow, LogModel::Text).data().toString().contains("holds 'five'"))
                    return true;
            return false;
        };
        QTRY_VERIFY(fnTold());
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
        addRows("answer   strAnswer  strClosed\n"
                "save     Save       1\n"
                "discard  Discard    1\n"
                "cancel   Cancel     0");
    }
    void asksBeforeClosing()
    {
        QFETCH(QString, strAnswer);
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
            DialogUser cUser({pressButton(strAnswer)});
            cBench.close();
            QVERIFY(cUser.isContent());
        }
        const bool bCloses = strAnswer != "Cancel";
        if (bCloses)
            QTRY_VERIFY(!cBench.isVisible());
        QCOMPARE(cBench.isVisible(), !bCloses);
        for (int nTask = 0; nTask < 3; ++nTask)
            QCOMPARE(TaskMgr::getInstance()->getTask(nTask)->IsRunning(), !bCloses);
        QCOMPARE(contents(m_strFile).contains("unsaved"), strAnswer == "Save");
        QCOMPARE(contents(m_strFile) == achBefore, strAnswer != "Save");
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
            DialogUser cUser({[](QWidget &cTop) {
                qobject_cast<QMessageBox *>(&cTop)->button(QMessageBox::Yes)->click();
            }});
            cBench.trigger("Delete step");
        } else if (strEdit == "configure")
            pcTask->m_lstArithm[1].m_strOptionStr = "changed"; // as an algorithm's window does
        // What no signal tells is seen at the next look.
        QTRY_VERIFY(cBench.action("Undo")->isEnabled());
    }

    QTemporaryDir m_cFolder;
    QString m_strFile;
    int m_nFile = 0;
};

QTEST_MAIN(TestWorkbench)

#include "tst_workbench.moc"
