#include <QtTest>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>

#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"
#include "arithmMgr/arithms.h"
#include "arithmparammgr.h"
#include "taskMgr/taskMgr.h"

namespace
{
QStringList s_lstError;

/// What the user does with the next boxes; each answer is the text of a button.
class Boxes : public QObject
{
public:
    Boxes(const QStringList &lstAnswer = {}) : m_lstAnswer(lstAnswer)
    {
        connect(&m_cTimer, &QTimer::timeout, this, &Boxes::look);
        m_cTimer.start(5);
    }

    QStringList m_lstText; ///< the boxes that were seen
    std::function<void()> m_fnMeanwhile;

private:
    void look()
    {
        auto *pcBox = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!pcBox)
            return;
        m_lstText.append(pcBox->windowTitle() + ": " + pcBox->text());
        if (const auto fnMeanwhile = std::exchange(m_fnMeanwhile, nullptr))
            fnMeanwhile();
        const QString strAnswer = m_lstAnswer.isEmpty() ? QString() : m_lstAnswer.takeFirst();
        for (QAbstractButton *pcButton : pcBox->buttons())
            if (pcButton->text().remove('&') == strAnswer)
                return pcButton->click();
        pcBox->defaultButton()->click();
    }

    QStringList m_lstAnswer;
    QTimer m_cTimer;
};

/// A task in the hands of a user: all widgets, three steps that leave their number in strings 1.
struct Bench {
    Bench() : m_pcTask(new TaskInfo("t", [](QString strError) { s_lstError.append(strError); }))
    {
        s_lstError.clear();
        m_cView.addItems({"0", "1", "2", "3"});
        m_cCore.addItems({"0", "1", "2"});
        m_cTable.setColumnCount(3);
        m_pcTask->m_nWhichView = 2;
        m_pcTask->addRunTaskButton(&m_cRun);
        m_pcTask->addViewSelectCombo(&m_cView);
        m_pcTask->addThreadSelectCombo(&m_cCore);
        m_pcTask->addSelectDataSourceButton(&m_cSource);
        m_pcTask->addTaskFlowListWidget(&m_cTable);
        m_pcTask->fromString(text());
        m_pcTask->connectEvents();
        m_cTable.show();
    }
    ~Bench() { delete m_pcTask; }

    static QString step(const QString &strOption, const QString &strDescribe)
    {
        return "<-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->probe</-ArithmID-><-OptionStr->"
               // The result is for the window alone.
               "<From>9999</From>" +
               strOption + "</-OptionStr-><-ArithmName->探针</-ArithmName-><-Describe->" + strDescribe +
               "</-Describe-></-TaskItem->";
    }
    static QString text()
    {
        return "<-Kernel->1</-Kernel-><-View->3</-View-><-DataSource-><DSName>Probe</DSName>"
               "<OutputType>RGB</OutputType><OutputID>1</OutputID></-DataSource->" +
               step("<Trace>1</Trace><Text>0</Text><Window><Result>new0</Result></Window>", "") +
               step("<Trace>1</Trace><Text>1</Text><Window><Result>ERR:no</Result></Window>", "second") +
               step("<Trace>1</Trace><Text>2</Text>", "");
    }

    QAction *algorithm(const QString &strOption = QString())
    {
        emit m_cTable.customContextMenuRequested(QPoint(1, 1));
        QAction *pcAction = nullptr;
        for (auto it = m_pcTask->m_mapArithm.begin(); it != m_pcTask->m_mapArithm.end(); ++it) {
            if (it->m_strArithmID == "probe") {
                pcAction = it.key();
                it->m_strOptionStr = strOption; // the probe's window returns what its config says
            }
        }
        m_pcTask->m_pcMenu->hide();
        return pcAction;
    }
    QStringList rows() const
    {
        QStringList lstRow;
        for (int nRow = 0; nRow < m_cTable.rowCount(); ++nRow)
            lstRow.append(m_cTable.item(nRow, 0)->text() + '|' + m_cTable.item(nRow, 1)->text());
        return lstRow;
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
    void widgetsShowTheTask();
    void userEdits();
    void menu();
    void add();
    void insert();
    void modify();
    void remove();
    void runHere();
    void configureByIndex();
    void notWhileRunning();
    void widgetsGoFirst();
    void tasksGoWhileABoxIsOpen();
    void tasksGoWhileAWindowIsOpen();
};

void TestTaskEditor::widgetsShowTheTask()
{
    Bench cBench;
    QCOMPARE(cBench.m_cView.currentIndex(), 3);
    QCOMPARE(cBench.m_cCore.currentIndex(), 1);
    QCOMPARE(cBench.rows(), QStringList({"探针|-1", "second|-1", "探针|-1"}));
    for (int nRow = 0; nRow < 3; ++nRow) {
        QCOMPARE(cBench.m_cTable.item(nRow, 0)->toolTip(), "探针");
        QVERIFY(!(cBench.m_cTable.item(nRow, 2)->flags() & Qt::ItemIsEditable));
    }
    QComboBox cLater;
    cLater.addItems({"0", "1", "2", "3"});
    cBench.m_pcTask->addViewSelectCombo(&cLater);
    QCOMPARE(cLater.currentIndex(), 3);
}

void TestTaskEditor::userEdits()
{
    Bench cBench;
    TaskInfo &cTask = *cBench.m_pcTask;
    cBench.m_cView.setCurrentIndex(1);
    cBench.m_cCore.setCurrentIndex(2);
    QCOMPARE(cTask.m_nWhichView, 1);
    QCOMPARE(cTask.m_nWhichKernel, 2);
    cBench.m_cTable.item(0, 0)->setText("named");
    cBench.m_cTable.item(0, 1)->setText("999999999");
    cBench.m_cTable.item(1, 1)->setText("abc");
    QCOMPARE(cTask.getTaskItem().at(0).m_strDescribe, "named");
    QCOMPARE(cTask.getTaskItem().at(0).m_nMaxExeTimes, TaskItem::CLEAN_UP_TIMES);
    QCOMPARE(cTask.getTaskItem().at(1).m_nMaxExeTimes, -1);
    QCOMPARE(cBench.m_cTable.item(1, 1)->text(), "abc");
    cBench.m_cTable.insertRow(3);
    cBench.m_cTable.setItem(3, 0, new QTableWidgetItem("no step"));

    // A second press on a selected cell takes the selection off.
    for (const bool bSelected : {true, false, true}) {
        QTest::mouseClick(cBench.m_cTable.viewport(), Qt::LeftButton, Qt::NoModifier,
                          cBench.m_cTable.visualItemRect(cBench.m_cTable.item(1, 0)).center());
        QCOMPARE(!cBench.m_cTable.selectedItems().isEmpty(), bSelected);
    }
    // The events that are said to stay are all that still works.
    cTask.disconnectEvents();
    cBench.m_cView.setCurrentIndex(0);
    cBench.m_cCore.setCurrentIndex(0);
    cBench.m_cTable.item(0, 0)->setText("again");
    QCOMPARE(cTask.m_nWhichView, 1);
    QCOMPARE(cTask.m_nWhichKernel, 0);
    QCOMPARE(cTask.getTaskItem().at(0).m_strDescribe, "again");
}

void TestTaskEditor::menu()
{
    Bench cBench;
    QVERIFY(cBench.algorithm());
    QMenu *pcMenu = cBench.m_pcTask->m_pcMenu;
    QStringList lstText;
    for (const QAction *pcAction : pcMenu->actions())
        lstText.append(pcAction->text());
    QCOMPARE(lstText,
             QStringList({"添加算法", "添加扩展算法", "", "修改配置", "删除", "", "执行到选中算法"}));
    cBench.algorithm();
    QCOMPARE(cBench.m_pcTask->m_pcMenu, pcMenu); // built once
}

void TestTaskEditor::add()
{
    Bench cBench;
    const QList<TaskItem> &lstItem = cBench.m_pcTask->getTaskItem();
    cBench.algorithm()->trigger(); // the window returns the empty text
    QCOMPARE(lstItem.size(), 3);
    cBench.m_pcTask->m_pcAPM->getParamStrings(7);
    cBench.algorithm("<Window><Result>cfg</Result></Window>")->trigger();
    QCOMPARE(lstItem.size(), 4);
    QCOMPARE(lstItem.at(3).m_strOptionStr, "cfg");
    QCOMPARE(lstItem.at(3).m_strArithmID, "probe");
    QCOMPARE(cBench.rows().at(3), "探针|-1");
    QCOMPARE(cBench.traced(), "0 1 2"); // the store was emptied, then the whole flow ran
    QVERIFY(!cBench.m_pcTask->m_pcAPM->requestParamStringsMap()->contains(7));

    Boxes cBoxes;
    cBench.m_pcTask->addArithm(nullptr);
    QCOMPARE(cBoxes.m_lstText, QStringList("Warning: Arithm is not finded."));
}

void TestTaskEditor::insert()
{
    Bench cBench;
    QAction *pcProbe = cBench.algorithm("<Window><Result>cfg</Result></Window>");
    cBench.m_cTable.selectRow(1);
    pcProbe->trigger();
    QCOMPARE(cBench.m_pcTask->getTaskItem().size(), 4);
    QCOMPARE(cBench.m_pcTask->getTaskItem().at(1).m_strOptionStr, "cfg");
    QCOMPARE(cBench.rows(), QStringList({"探针|-1", "探针|-1", "second|-1", "探针|-1"}));
    QCOMPARE(cBench.traced(), "0");
    cBench.m_pcTask->insertArithm(0, pcProbe); // nothing stands before it: only a picture
    QCOMPARE(cBench.traced(), "");
    QCOMPARE(cBench.m_pcTask->m_pcAPM->getParamDIB(1)->getWidth(), 4);
    cBench.m_pcTask->insertArithm(5, pcProbe);
    cBench.m_pcTask->insertArithm(-1, pcProbe);
    QCOMPARE(cBench.m_pcTask->getTaskItem().size(), 5);
}

void TestTaskEditor::modify()
{
    Bench cBench;
    Boxes cBoxes;
    QList<TaskItem> &lstItem = cBench.m_pcTask->getTaskItem();
    cBench.m_pcTask->modifyOption();
    cBench.m_cTable.selectRow(0);
    cBench.m_pcTask->modifyOption();
    QCOMPARE(lstItem.at(0).m_strOptionStr, "new0");
    const QString strKept = lstItem.at(2).m_strOptionStr;
    cBench.m_cTable.selectRow(2);
    cBench.m_pcTask->modifyOption(); // the window returns the empty text
    QCOMPARE(lstItem.at(2).m_strOptionStr, strKept);
    lstItem[2].m_strArithmID = "unknown";
    cBench.m_pcTask->modifyOption();
    lstItem.removeLast();
    cBench.m_pcTask->modifyOption();
    QCOMPARE(cBoxes.m_lstText,
             QStringList({"Warning: No arithm have been selected.",
                          "Warning: No arithm have been selected, please delete it.",
                          "Warning: Serious error, arithm num is not equal with arithm list，"
                          "please reconfig this task."}));
}

void TestTaskEditor::remove()
{
    Bench cBench;
    Boxes cBoxes({"OK", "", "Yes"});
    cBench.m_pcTask->delArithm();
    cBench.m_cTable.selectRow(1);
    cBench.m_pcTask->delArithm(); // the default is No
    QCOMPARE(cBench.m_pcTask->getTaskItem().size(), 3);
    cBench.m_pcTask->delArithm();
    QCOMPARE(cBench.rows(), QStringList({"探针|-1", "探针|-1"}));
    QCOMPARE(cBench.m_pcTask->getTaskItem().size(), 2);
    QCOMPARE(
        cBoxes.m_lstText.mid(0, 2),
        QStringList({"Warning: No arithm have been selected.",
                     "Warning: Would you like to delete the arithm? It can not be recover after delete."}));
}

void TestTaskEditor::runHere()
{
    Bench cBench;
    Boxes cBoxes;
    cBench.m_pcTask->runHere();
    cBench.m_cTable.selectRow(1);
    cBench.m_pcTask->runHere();
    QCOMPARE(cBench.traced(), "0 1");
    bool bNumber = false;
    cBench.m_cTable.item(1, 2)->text().toInt(&bNumber);
    QVERIFY(bNumber);
    QCOMPARE(cBench.m_cTable.item(2, 2)->text(), "");
    delete std::exchange(cBench.m_pcTask->m_pcDS, nullptr);
    cBench.m_pcTask->runHere();
    QCOMPARE(cBoxes.m_lstText,
             QStringList({"Warning: No arithm is selected.", "Warning: No datasource assigned."}));
}

void TestTaskEditor::configureByIndex()
{
    Bench cBench;
    TaskInfo &cTask = *cBench.m_pcTask;
    const QString strKept = cTask.getTaskItem().at(1).m_strOptionStr;
    for (int nStep = -1; nStep < 4; ++nStep)
        QCOMPARE(cTask.showConfigWindow(nStep), QString());
    QCOMPARE(cTask.getTaskItem().at(0).m_strOptionStr, "new0");
    QCOMPARE(cTask.getTaskItem().at(1).m_strOptionStr, strKept);
    QCOMPARE(s_lstError, QStringList("ERR:no"));

    // A run that fails before the window is told, and the window opens all the same.
    s_lstError.clear();
    cTask.getTaskItem()[1].m_strOptionStr = "<Window><Result>new1</Result></Window>";
    delete std::exchange(cTask.m_pcDS, nullptr);
    cTask.showConfigWindow(1);
    QCOMPARE(cTask.getTaskItem().at(1).m_strOptionStr, "new1");
    cTask.getTaskItem()[0].m_strArithmID = "unknown";
    cTask.showConfigWindow(0);
    QCOMPARE(s_lstError,
             QStringList({"No datasource assigned.", "Arithm is not finded, please delete this arithm."}));
}

void TestTaskEditor::notWhileRunning()
{
    Bench cBench;
    cBench.m_cRun.click();
    QVERIFY(cBench.m_pcTask->IsRunning());
    QCOMPARE(cBench.m_cRun.text(), "停止任务");
    const QList<QWidget *> lstControl = {&cBench.m_cView, &cBench.m_cCore, &cBench.m_cSource,
                                         &cBench.m_cTable};
    for (const QWidget *pcControl : lstControl)
        QVERIFY(!pcControl->isEnabled());
    cBench.m_pcTask->showContextmenu(QPoint());
    QVERIFY(!cBench.m_pcTask->m_pcMenu);
    cBench.m_cRun.click();
    QVERIFY(!cBench.m_pcTask->IsRunning());
    QCOMPARE(cBench.m_cRun.text(), "执行任务");
    for (const QWidget *pcControl : lstControl)
        QVERIFY(pcControl->isEnabled());
}

void TestTaskEditor::widgetsGoFirst()
{
    Boxes cBoxes;
    TaskInfo cTask(QString(), nullptr);
    {
        Bench cBench;
        cTask.addRunTaskButton(&cBench.m_cRun);
        cTask.addViewSelectCombo(&cBench.m_cView);
        cTask.addThreadSelectCombo(&cBench.m_cCore);
        cTask.addSelectDataSourceButton(&cBench.m_cSource);
        cTask.addTaskFlowListWidget(&cBench.m_cTable);
        cTask.connectEvents();
        cTask.showContextmenu(QPoint());
    }
    cTask.fromString(Bench::text());
    cTask.startTask();
    cTask.stopTask();
    cTask.runHere();
    cTask.showContextmenu(QPoint());
    QVERIFY(!cTask.m_pcMenu);
    QVERIFY(cTask.m_mapArithm.isEmpty());
}

void TestTaskEditor::tasksGoWhileABoxIsOpen()
{
    Bench cBench;
    QPointer<TaskInfo> pcTask = std::exchange(cBench.m_pcTask, nullptr);
    TaskMgr::getInstance()->addTask(pcTask, 0);
    cBench.m_cTable.selectRow(0);
    Boxes cBoxes({"Yes"});
    cBoxes.m_fnMeanwhile = [] { TaskMgr::getInstance()->fromString(QString()); };
    pcTask->delArithm();
    QVERIFY(!pcTask);
    QCOMPARE(cBench.m_cTable.rowCount(), 3);
}

/// The window's own code uses the task's store until it returns.
void TestTaskEditor::tasksGoWhileAWindowIsOpen()
{
    static QPointer<TaskInfo> s_pcTask;
    const auto fnID = [] { return "window"; };
    const auto fnWindow = [](char *, ArithmParamMgr *pcAPM, bool) {
        TaskMgr::getInstance()->clear();
        s_lstError.append(s_pcTask ? "held" : "gone");
        pcAPM->getParamStrings(1)->addString("still there");
        static char s_szConfig[] = "config";
        return s_szConfig;
    };
    const auto fnStep = [](char *, ArithmParamMgr *) -> char * { return nullptr; };
    Arithm cWindow(false, fnID, fnWindow, fnStep);
    ArithmFactory *pcFactory = ArithmFactory::getInstance();
    pcFactory->m_mapArithm.insert("window", &cWindow);

    s_lstError.clear();
    s_pcTask = new TaskInfo(QString(), nullptr);
    s_pcTask->fromString(Bench::text().replace("probe", "window"));
    TaskMgr::getInstance()->addTask(s_pcTask, 0);
    QCOMPARE(::showConfigWindow(0, 1), "");
    QCOMPARE(s_lstError, QStringList("held"));
    QVERIFY(!s_pcTask);
    QCOMPARE(TaskMgr::getInstance()->getTaskNum(), 0);
    pcFactory->m_mapArithm.remove("window");
}

QTEST_MAIN(TestTaskEditor)
#include "tst_taskeditor.moc"
