#include <QtTest>

#include <thread>

#include <QMenu>
#include <QPushButton>

#include "OculinexQTStandAloneInQt.h"
#include "arithmparammgr.h"
#include "dialoguser.h"
#include "taskMgr/taskMgr.h"

namespace
{
QStringList s_lstError;

/// A task in the hands of a user: all widgets, three steps that leave their number in strings 1.
struct Bench {
    Bench() : m_pcTask(new TaskInfo("t", [](QString strError) { s_lstError.append(strError); }))
    {
        s_lstError.clear();
        for (QComboBox *pcBox : {&m_cView, &m_cCore})
            pcBox->addItems({"0", "1", "2", "3"});
        m_cTable.setColumnCount(3);
        m_pcTask->m_nWhichView = 2;
        attach(*m_pcTask);
        m_pcTask->fromString(text());
        m_pcTask->connectEvents();
        m_cTable.show();
    }
    ~Bench() { delete m_pcTask; }

    void attach(TaskInfo &cTask)
    {
        cTask.addRunTaskButton(&m_cRun);
        cTask.addViewSelectCombo(&m_cView);
        cTask.addThreadSelectCombo(&m_cCore);
        cTask.addSelectDataSourceButton(&m_cSource);
        cTask.addTaskFlowListWidget(&m_cTable);
    }
    static QString text()
    {
        const QString strStep =
            "<-TaskItem-><-MaxExeTimes->%1</-MaxExeTimes-><-ArithmID->probe</-ArithmID-><-OptionStr->"
            "<Trace>1</Trace><Text>%2</Text><Window>%3</Window></-OptionStr-><-ArithmName->探针"
            "</-ArithmName-><-Describe->%4</-Describe-></-TaskItem->";
        return "<-Kernel->1</-Kernel-><-View->3</-View-><-DataSource-><DSName>Probe</DSName>"
               "<OutputType>RGB</OutputType><OutputID>1</OutputID></-DataSource->" +
               strStep.arg("-1", "0", "new0", "") + strStep.arg("-1", "1", "ERR:no", "second") +
               strStep.arg("5", "2", "", "");
    }

    /// The menu's action for the probe, whose window returns what its config text says.
    QAction *algorithm(const QString &strResult = QString())
    {
        emit m_cTable.customContextMenuRequested(QPoint(1, 1));
        QAction *pcAction = nullptr;
        for (auto it = m_pcTask->m_mapArithm.begin(); it != m_pcTask->m_mapArithm.end(); ++it) {
            if (it->m_strArithmID == "probe") {
                pcAction = it.key();
                it->m_strOptionStr = "<Window>" + strResult + "</Window>";
            }
        }
        m_pcTask->m_pcMenu->hide();
        return pcAction;
    }
    QString rows() const
    {
        QStringList lstRow;
        for (int nRow = 0; nRow < m_cTable.rowCount(); ++nRow)
            lstRow.append(m_cTable.item(nRow, 0)->text() + '|' + m_cTable.item(nRow, 1)->text());
        return lstRow.join(' ');
    }
    QString traced() const
    {
        return QStringList(m_pcTask->m_pcAPM->getParamStrings(1)->getStrings()).join(' ');
    }

    TaskInfo *m_pcTask;
    QPushButton m_cRun;
    QComboBox m_cView;
    QComboBox m_cCore;
    QPushButton m_cSource;
    QTableWidget m_cTable;
};
} // namespace

/// The flow table and the other widgets of a task, in a user's hands.
class TestTaskEditor : public QObject
{
    Q_OBJECT

private slots:
    void tableAndBoxes()
    {
        Bench cBench;
        QCOMPARE(cBench.m_cView.currentIndex(), 3);
        QCOMPARE(cBench.m_cCore.currentIndex(), 1);
        QCOMPARE(cBench.rows(), "探针|-1 second|-1 探针|5");
        const QList<TaskItem> &lstItem = cBench.m_pcTask->getTaskItem();
        cBench.m_cTable.item(0, 1)->setText("999999999");
        cBench.m_cTable.item(1, 1)->setText("abc");
        QCOMPARE(lstItem.at(0).m_nMaxExeTimes, TaskItem::CLEAN_UP_TIMES);
        QCOMPARE(lstItem.at(1).m_nMaxExeTimes, -1);
        QCOMPARE(cBench.m_cTable.item(1, 1)->text(), "abc");
    }

    /// Whatever else listened is taken off, too.
    void eventsTakenOff()
    {
        Bench cBench;
        TaskInfo &cTask = *cBench.m_pcTask;
        bool bHeard = false;
        connect(&cBench.m_cRun, &QPushButton::clicked, [&] { bHeard = true; });
        cTask.disconnectEvents();
        cBench.m_cRun.click();
        cBench.m_cSource.click();
        cBench.m_cView.setCurrentIndex(0);
        emit cBench.m_cTable.customContextMenuRequested(QPoint());
        QVERIFY(!bHeard && !cTask.IsRunning() && !cTask.m_pcMenu);
        QCOMPARE(cTask.m_nWhichView, 3);
    }

    void addAndInsert()
    {
        Bench cBench;
        TaskInfo &cTask = *cBench.m_pcTask;
        const QList<TaskItem> &lstItem = cTask.getTaskItem();
        cBench.algorithm()->trigger(); // the window returns the empty text
        QCOMPARE(lstItem.size(), 3);
        cTask.m_pcAPM->getParamStrings(7);
        QAction *pcProbe = cBench.algorithm("cfg");
        pcProbe->trigger();
        QCOMPARE(lstItem.size(), 4);
        QCOMPARE(lstItem.at(3).m_strOptionStr, "cfg");
        QCOMPARE(lstItem.at(3).m_strArithmID, "probe");
        QCOMPARE(cBench.rows(), "探针|-1 second|-1 探针|5 探针|-1");
        QCOMPARE(cBench.traced(), "0 1 2"); // the store was emptied, then the whole flow ran
        QVERIFY(!cTask.m_pcAPM->requestParamStringsMap()->contains(7));

        cBench.m_cTable.selectRow(1);
        pcProbe->trigger();
        QCOMPARE(lstItem.at(1).m_strOptionStr, "cfg");
        QCOMPARE(cBench.rows(), "探针|-1 探针|-1 second|-1 探针|5 探针|-1");
        QCOMPARE(cBench.traced(), "0");
        cTask.insertArithm(0, pcProbe); // nothing stands before it: only a picture
        QCOMPARE(cBench.traced(), "");
        QCOMPARE(cTask.m_pcAPM->getParamDIB(1)->getWidth(), 4);
        cTask.insertArithm(6, pcProbe);
        cTask.insertArithm(-1, pcProbe);
        QCOMPARE(lstItem.size(), 6);

        QString strBox;
        const DialogUser cUser({DialogUser::read(strBox)});
        cBench.m_cTable.clearSelection();
        cTask.addArithm(nullptr);
        QCOMPARE(strBox, "Warning: Arithm is not finded. 1\n");
        const QPointer<QMenu> pcMenu = cTask.m_pcMenu;
        delete std::exchange(cBench.m_pcTask, nullptr);
        QTRY_VERIFY(!pcMenu);
    }

    void modifyRunAndDelete()
    {
        Bench cBench;
        TaskInfo &cTask = *cBench.m_pcTask;
        QList<TaskItem> &lstItem = cTask.getTaskItem();
        QString strBoxes;
        const auto fnRead = DialogUser::read(strBoxes);
        const DialogUser cUser({fnRead, fnRead, fnRead, DialogUser::type(Qt::Key_Return),
                                DialogUser::read(strBoxes, QMessageBox::Yes), fnRead, fnRead, fnRead});
        cTask.modifyOption();
        cTask.runHere();
        cTask.delArithm();

        cBench.m_cTable.selectRow(1);
        cTask.runHere();
        QCOMPARE(cBench.traced(), "0 1");
        QVERIFY(!cBench.m_cTable.item(1, 2)->text().isEmpty()); // its time
        cTask.modifyOption();
        QCOMPARE(lstItem.at(1).m_strOptionStr, "ERR:no");
        const QString strKept = lstItem.at(0).m_strOptionStr + lstItem.at(2).m_strOptionStr;
        cBench.m_cTable.selectRow(2);
        cTask.modifyOption(); // the window returns the empty text

        cBench.m_cTable.selectRow(1);
        cTask.delArithm(); // the default is No
        QCOMPARE(lstItem.size(), 3);
        cTask.delArithm();
        QCOMPARE(cBench.rows(), "探针|-1 探针|5");
        QCOMPARE(lstItem.at(0).m_strOptionStr + lstItem.at(1).m_strOptionStr, strKept);

        cBench.m_cTable.selectRow(1);
        lstItem[1].m_strArithmID = "unknown";
        cTask.modifyOption();
        lstItem.removeLast();
        cTask.modifyOption();
        delete std::exchange(cTask.m_pcDS, nullptr);
        cTask.runHere();
        QCOMPARE(strBoxes,
                 "Warning: No arithm have been selected. 1\n"
                 "Warning: No arithm is selected. 1\n"
                 "Warning: No arithm have been selected. 1\n"
                 "Warning: Would you like to delete the arithm? It can not be recover after delete. 2\n"
                 "Warning: No arithm have been selected, please delete it. 1\n"
                 "Warning: Serious error, arithm num is not equal with arithm list，please reconfig "
                 "this task. 1\n"
                 "Warning: No datasource assigned. 1\n");
    }

    void configureByIndex()
    {
        Bench cBench;
        TaskInfo &cTask = *cBench.m_pcTask;
        const QString strKept = cTask.getTaskItem().at(1).m_strOptionStr;
        cTask.m_pcAPM->getParamPoints(77);
        for (int nStep = -1; nStep < 4; ++nStep)
            cTask.showConfigWindow(nStep);
        QVERIFY(cTask.m_pcAPM->requestParamPointsMap()->contains(77)); // unlike an edit of the flow
        QCOMPARE(cTask.getTaskItem().at(0).m_strOptionStr, "new0");
        QCOMPARE(cTask.getTaskItem().at(1).m_strOptionStr, strKept);
        QCOMPARE(s_lstError, QStringList("ERR:no"));
    }

    /// The controls are off; what was opened before, or is called all the same, leaves the task alone.
    void notWhileRunning()
    {
        Bench cBench;
        TaskInfo &cTask = *cBench.m_pcTask;
        const DialogUser cUser({});
        QAction *pcProbe = cBench.algorithm("cfg");
        cBench.m_cTable.selectRow(1);
        const QString strBefore = cTask.toString();
        cBench.m_cRun.click();
        QVERIFY(cTask.IsRunning());
        cTask.showContextmenu(QPoint());
        QVERIFY(!cTask.m_pcMenu->isVisible());
        pcProbe->trigger();
        cTask.addArithm(pcProbe);
        cTask.modifyOption();
        cTask.delArithm();
        cTask.runHere();
        cTask.showConfigWindow(0);
        cTask.selectDataSource();
        QCOMPARE(cBench.m_cTable.item(1, 2)->text(), ""); // no single run wrote a time
        cBench.m_cRun.click();
        QVERIFY(!cTask.IsRunning());
        QCOMPARE(cTask.toString(), strBefore);
        QVERIFY(s_lstError.isEmpty());
    }

    /// Nobody could answer a box there, and nobody use a menu.
    void offTheGuiThread()
    {
        QTest::ignoreMessage(QtWarningMsg, "No arithm have been selected.");
        QTableWidget cTable;
        bool bMenu = true;
        std::thread([&] {
            TaskInfo cTask(QString(), nullptr);
            cTask.m_pcTaskFlow = &cTable;
            cTask.modifyOption();
            cTask.showContextmenu(QPoint());
            bMenu = cTask.m_pcMenu;
        }).join();
        QVERIFY(!bMenu);
    }

    void widgetsGoFirst()
    {
        QString strBox;
        const DialogUser cUser({DialogUser::read(strBox)});
        TaskInfo cTask(QString(), nullptr);
        QThread cThread; // never started: nothing is delivered there
        TaskInfo cElsewhere(QString(), nullptr);
        cElsewhere.moveToThread(&cThread);
        {
            Bench cBench;
            cElsewhere.addRunTaskButton(&cBench.m_cRun);
            cBench.attach(cTask);
            cTask.connectEvents();
            cTask.showContextmenu(QPoint());
        }
        QVERIFY(!cElsewhere.m_pcRunTask);
        cTask.fromString(Bench::text());
        cTask.startTask();
        cTask.stopTask();
        cTask.runHere();
        cTask.showContextmenu(QPoint());
        QVERIFY(!cTask.m_pcMenu);
    }

    /// All goes while an action that was clicked in the menu is at work, in which Qt's own code still is.
    void menuOutlivesItsAction()
    {
        auto pcBench = std::make_unique<Bench>();
        pcBench->m_cTable.selectRow(0);
        emit pcBench->m_cTable.customContextMenuRequested(QPoint(1, 1));
        const QPointer<QMenu> pcMenu = pcBench->m_pcTask->m_pcMenu;
        const QPoint cDelete = pcMenu->actionGeometry(pcMenu->actions().at(4)).center();
        bool bKept = false;
        const DialogUser cUser({[&](QWidget &cBox) {
            const QPointer<QWidget> pcBox(&cBox);
            pcBench.reset();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            bKept = pcMenu;
            if (pcBox)
                pcBox->close();
        }});
        QTest::mouseMove(pcMenu, cDelete);
        QTest::mouseClick(pcMenu, Qt::LeftButton, {}, cDelete);
        QVERIFY(bKept);
        QTRY_VERIFY(!pcMenu);
    }

    /// A task that goes while a box or a step's window is open is there until that is closed.
    void tasksGoMeanwhile()
    {
        TaskMgr &cTasks = *TaskMgr::getInstance();
        Bench cBench;
        QPointer<TaskInfo> pcTask = std::exchange(cBench.m_pcTask, nullptr);
        cTasks.addTask(pcTask, 0);
        cBench.m_cTable.selectRow(0);
        QString strBox;
        bool bStopped = false;
        // The next task is given the widgets of the one that is still held.
        const auto fnReplace = [&](QWidget &) {
            pcTask->startTask();
            cTasks.fromString("<=TaskInfo=><-View->2</-View-></=TaskInfo=>");
            pcTask->startTask();
            bStopped = !pcTask->IsRunning();
            cBench.attach(*cTasks.getTask(0));
            cTasks.getTask(0)->connectEvents();
        };
        const DialogUser cUser({fnReplace, DialogUser::read(strBox, QMessageBox::Yes)});
        pcTask->delArithm();
        QVERIFY(!pcTask && bStopped);
        QCOMPARE(cBench.m_cTable.rowCount(), 3);
        cBench.m_cView.setCurrentIndex(1);
        QCOMPARE(cTasks.getTask(0)->m_nWhichView, 1);

        pcTask = new TaskInfo(QString(), nullptr);
        pcTask->fromString(Bench::text().replace("probe", "KQ_Drawing"));
        pcTask->m_pcAPM->getParamPoints(1)->setName("points");
        cTasks.addTask(pcTask, 0);
        bool bHeld = false;
        const auto fnClear = [&](QWidget &) {
            cTasks.clear();
            bHeld = pcTask;
        };
        const DialogUser cDrawer({fnClear, DialogUser::choose("tblPoints", 0),
                                  DialogUser::press("btnSelectElement"), DialogUser::press("btnOK")});
        QCOMPARE(::showConfigWindow(0, 0), "");
        QVERIFY(bHeld && !pcTask);
        QCOMPARE(cTasks.getTaskNum(), 0);
    }
};

QTEST_MAIN(TestTaskEditor)
#include "tst_taskeditor.moc"
