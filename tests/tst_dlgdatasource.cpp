// The choice of a task's data source, in a user's hands.

#include <memory>

#include <QtTest>

#include <QListWidget>
#include <QTableWidget>

#include "DataSource/datasource.h"
#include "DataSource/dlgdatasourceconfig.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmparammgr.h"
#include "dialoguser.h"
#include "taskMgr/taskMgr.h"

namespace
{
/// A kind in this process: what was called, what comes of a call, and what its window does.
QStringList s_lstCall;
std::function<void(const QString &)> s_fnCalled;
std::function<QByteArray()> s_fnWindow;

void called(const QString &strCall)
{
    s_lstCall.append(strCall);
    if (const auto fnCalled = s_fnCalled) // it may set another
        fnCalled(strCall);
}

char *showKind(char *pchConfig, bool)
{
    called(QString("show ") + pchConfig);
    static QByteArray s_achConfig;
    s_achConfig = s_fnWindow();
    return s_achConfig.data();
}

/// Selects a kind and presses its button.
DialogUser::Act use(const QString &strKind)
{
    return [strKind](QWidget &cDialog) {
        auto *pcList = cDialog.findChild<QListWidget *>("lbSourceNames");
        const QListWidgetItem *pcItem = pcList->findItems(strKind, Qt::MatchExactly).value(0);
        QTest::mouseClick(pcList->viewport(), Qt::LeftButton, Qt::NoModifier,
                          pcList->visualItemRect(pcItem).center());
        DialogUser::click(cDialog, "btnSetting");
    };
}

DialogUser::Act look(QString &strShown)
{
    return DialogUser::look(strShown, "lbSourceNames edtSelectedSource edtName edtDescribe cbDataType");
}

std::unique_ptr<DataSource::DataSourceInstance> newSource(ArithmParamMgr *pcStore, QString &strConfig)
{
    return std::unique_ptr<DataSource::DataSourceInstance>(
        DataSource::getInstance()->newDataSource(pcStore, strConfig));
}

const auto OK = DialogUser::press("btnOK");
} // namespace

class TestDlgDataSource : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        auto *pcKind = new DataSource::DataSourceInfo;
        pcKind->m_fnShowConfigDlg = showKind;
        pcKind->m_fnSetConfig = [](int, char *pchConfig) { called(QString("set ") + pchConfig); };
        pcKind->m_fnRemoveInstance = [](int) { called("remove"); };
        DataSource::getInstance()->m_mapDataSourceInfo.insert("假", pcKind);
        DataSource::getInstance()->m_mapDataSourceInfo.insert("坏", nullptr);
    }
    void init()
    {
        s_lstCall.clear();
        s_fnCalled = nullptr;
        s_fnWindow = [] { return "kind's own"; };
    }

    void makesASource()
    {
        ArithmParamMgr cStore;
        cStore.getParamDIB(4);
        QString strConfig;
        QString strBox;
        QString strShown;
        DialogUser cUser({look(strShown), OK, DialogUser::read(strBox), DialogUser::set("edtName=图像"), OK,
                          DialogUser::read(strBox), DialogUser::set("edtDescribe=相机&<1>"), use("坏"),
                          DialogUser::read(strBox), use("假"), OK});
        const auto pcInstance = newSource(&cStore, strConfig);
        QVERIFY(pcInstance);
        QCOMPARE(strShown, "||||RGB|");
        QCOMPARE(strBox, "警告: 数据名称不能为空 1\n警告: 无数据源 1\n警告: 创建数据源实例失败. 1\n");
        QCOMPARE(s_lstCall, QStringList({"set ", "set ", "show ", "set kind's own"}));
        QCOMPARE(strConfig, "<DSName>假</DSName><OutputName>图像</OutputName>"
                            "<OutputDescribe>相机&<1></OutputDescribe><OutputType>RGB</OutputType>"
                            "<OutputID>5</OutputID><Config>kind's own</Config>");
        QVERIFY(cStore.requestParamDIBMap()->contains(5));
    }

    /// The picture stays, and so does the configuration where the kind's window is cancelled.
    void editsASource()
    {
        const QString strText = "<DSName>假</DSName><OutputName>图像</OutputName><OutputDescribe>d"
                                "</OutputDescribe><OutputType>Gray8</OutputType><OutputID>12</OutputID>"
                                "<Config>old</Config>";
        s_fnWindow = [] { return ""; };
        ArithmParamMgr cStore;
        QString strConfig = strText;
        QString strShown;
        QString strBox;
        DialogUser cUser({look(strShown), OK, DialogUser::read(strBox), use("假"), OK});
        const auto pcInstance = newSource(&cStore, strConfig);
        QVERIFY(pcInstance);
        QCOMPARE(strShown, "假||图像|d|Gray8|");
        QCOMPARE(strBox, "警告: 无数据源 1\n");
        QCOMPARE(s_lstCall, QStringList({"set ", "set old", "show old", "set "}));
        QCOMPARE(strConfig, strText);
        QCOMPARE(pcInstance->getDataID(), 12);
    }

    /// Nothing survives a dialog that is left.
    void cancels()
    {
        ArithmParamMgr cStore;
        QString strConfig = "<DSName>gone</DSName><Config>old</Config>";
        DialogUser cUser({use("假"), use("假"), DialogUser::press("btnCancel")});
        QVERIFY(!newSource(&cStore, strConfig));
        QCOMPARE(strConfig, "<DSName>gone</DSName><Config>old</Config>");
        QCOMPARE(s_lstCall.filter("show").size(), 2);
        QCOMPARE(s_lstCall.filter("remove").size(), 2);
        QVERIFY(cStore.requestParamDIBMap()->isEmpty());
    }

    /// The task takes the source over, unless another tasks file has replaced it meanwhile.
    void ofATask()
    {
        ::init();
        QTemporaryFile cFile;
        QVERIFY(cFile.open());
        for (const bool bReplaced : {false, true}) {
            auto *pcTask = new TaskInfo("t", nullptr);
            const QPointer<TaskInfo> pcAlive(pcTask);
            TaskMgr::getInstance()->clear();
            TaskMgr::getInstance()->addTask(pcTask, 0);
            s_lstCall.clear();
            s_fnWindow = [&] {
                if (bReplaced && s_lstCall.filter("show").size() == 1)
                    openTasksFile(cFile.fileName().toLocal8Bit().data());
                return "kind's own";
            };
            DialogUser cUser({use("假"), use("假"), DialogUser::set("edtName=n"), OK});
            QCOMPARE(::selectDataSource(0), "");
            QCOMPARE(!pcAlive, bReplaced);
            QCOMPARE(s_lstCall.filter("remove").size(), bReplaced ? 2 : 1);
            if (!bReplaced)
                QVERIFY(pcTask->m_pcDS &&
                        pcTask->m_strDataSourceConfigString.startsWith("<DSName>假</DSName>"));
            TaskMgr::getInstance()->clear();
            QCOMPARE(s_lstCall.filter("remove").size(), 2);
        }
    }

    /// A kind may let events through in each of its functions, and the dialog go by them.
    void dialogGoesMeanwhile()
    {
        for (const QString strCall : {"set ", "show ", "remove"}) {
            s_lstCall.clear();
            ArithmParamMgr cStore;
            QPointer<QWidget> pcParent = new QWidget;
            QPointer<DlgDataSource> pcDialog = new DlgDataSource(
                &DataSource::getInstance()->m_mapDataSourceInfo, &cStore, QString(), pcParent);
            auto *pcList = pcDialog->findChild<QListWidget *>("lbSourceNames");
            pcList->setCurrentItem(pcList->findItems("假", Qt::MatchExactly).value(0));
            s_fnCalled = [&](const QString &strCalled) {
                if (strCalled == strCall)
                    delete pcParent;
            };
            pcDialog->on_btnSetting_clicked();
            if (pcDialog)
                pcDialog->reject();
            QVERIFY2(!pcDialog, qPrintable(strCall));
            s_fnCalled = nullptr;
            QCOMPARE(s_lstCall.filter("remove").size(), 1);
        }

        // Nor does a click count in a dialog that goes.
        s_lstCall.clear();
        ArithmParamMgr cStore;
        auto pcDialog = std::make_unique<DlgDataSource>(&DataSource::getInstance()->m_mapDataSourceInfo,
                                                        &cStore, QString(), nullptr);
        pcDialog->show();
        use("假")(*pcDialog);
        s_fnCalled = [&, &cDialog = *pcDialog](const QString &) {
            s_fnCalled = nullptr;
            for (const char *szButton : {"btnCancel", "btnSetting"})
                DialogUser::click(cDialog, szButton);
        };
        pcDialog.reset();
        QCOMPARE(s_lstCall.filter("remove").size(), 1);
    }

    /// A host uses the task whose source goes, and removes the one that is read.
    void hostGoesOnMeanwhile()
    {
        TaskMgr &cTasks = *TaskMgr::getInstance();
        const QString strTask = "<=TaskInfo=><-DataSource-><DSName>假</DSName>"
                                "</-DataSource-><-TaskItem->x</-TaskItem-></=TaskInfo=>";
        cTasks.fromString(strTask);
        TaskInfo *const pcTask = cTasks.getTask(0);
        QTableWidget cTable(1, 3);
        cTable.setItem(0, 0, new QTableWidgetItem);
        pcTask->addTaskFlowListWidget(&cTable);
        pcTask->connectEvents();
        const DataSource::DataSourceInstance *const pcOld = pcTask->m_pcDS;
        s_fnCalled = [&](const QString &strCall) {
            if (strCall != "remove")
                return;
            QVERIFY(pcTask->m_pcDS != pcOld);
            cTable.item(0, 0)->setText("typed");
        };
        DialogUser cUser({use("假"), DialogUser::set("edtName=n"), OK});
        pcTask->selectDataSource();

        // Nothing is done any more with a task that goes.
        s_lstCall.clear();
        s_fnCalled = [&](const QString &) {
            s_fnCalled = nullptr;
            cTable.selectRow(0);
            cTable.item(0, 0)->setText("typed");
            pcTask->startTask();
            pcTask->runTaskOnce();
            pcTask->runHere();
            pcTask->modifyOption();
            pcTask->delArithm();
            pcTask->selectDataSource();
        };
        cTasks.clear();
        QCOMPARE(s_lstCall, QStringList("remove"));

        // One that is read anew stays until it has been read.
        cTasks.addTask(new TaskInfo(QString(), nullptr), 0);
        const QPointer<TaskInfo> pcRead = cTasks.getTask(0);
        bool bStayed = false;
        s_fnCalled = [&](const QString &) {
            s_fnCalled = nullptr;
            cTasks.clear();
            bStayed = pcRead;
        };
        pcRead->fromString("<-DataSource-><DSName>假</DSName></-DataSource->");
        QVERIFY(bStayed && !pcRead);
    }
};

QTEST_MAIN(TestDlgDataSource)
#include "tst_dlgdatasource.moc"
