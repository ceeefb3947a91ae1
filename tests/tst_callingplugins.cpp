#include <mutex>
#include <set>
#include <string>

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"
#include "taskMgr/taskMgr.h"

namespace
{
std::mutex s_cControl; ///< one thread controls: the test's, which lends it to the task's while it waits
std::mutex s_cMutex;
std::set<std::string> s_setReached; ///< the functions of the plug-ins that called what they like
QByteArray s_achFile;
char s_szNothing[] = "";

/// What a plug-in may come to call: it reads all, and controls another task than its own.
void callBack(const char *szFunction)
{
    bool bRunning = false;
    char achText[64];
    TaskStatus cStatus;
    IsTaskRunning(bRunning, 0);
    getTaskStatus(0, cStatus);
    getErrMsg(achText, sizeof achText);
    getOutputMsg(achText, sizeof achText);
    useDrawingWindow(0, 16, 8);
    QImage cView(16, 8, QImage::Format_RGB888);
    getDrawingWindow(0, cView.bits(), cView.width(), cView.height());
    std::unique_lock<std::mutex> cControl(s_cControl, std::defer_lock);
    if (QThread::currentThread() != qApp->thread() && !cControl.try_lock())
        return;
    startTask(0); // its own, which runs or is in the middle of a run
    startTask(1);
    saveTasksFile(s_achFile.data());
    stopTask(1);
    if (TaskInfo *pcOther = TaskMgr::getInstance()->getTask(1)) {
        pcOther->getTaskItem().append(TaskItem());
        pcOther->getTaskItem().removeLast();
    }
    runTaskOnce(1);
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    s_setReached.insert(szFunction);
}

DataSource::DataSourceInfo *kind()
{
    auto *pcKind = new DataSource::DataSourceInfo;
    pcKind->m_fnRequestPicture = [](int, const char *, int *pnWidth, int *pnHeight) {
        static unsigned char s_uchPixel = 0;
        callBack("requestPicture");
        *pnWidth = *pnHeight = 1;
        return &s_uchPixel;
    };
    pcKind->m_fnReleasePicture = [](int) { callBack("releasePicture"); };
    pcKind->m_fnShowConfigDlg = [](char *, bool) {
        callBack("showConfigDlg");
        return s_szNothing;
    };
    pcKind->m_fnSetConfig = [](int, char *) { callBack("setConfig"); };
    pcKind->m_fnStart = [](int) { callBack("start"); };
    pcKind->m_fnStop = [](int) { callBack("stop"); };
    pcKind->m_fnRemoveInstance = [](int) { callBack("removeInstance"); };
    pcKind->m_fnGetLastError = [](int) {
        callBack("getLastError");
        return s_szNothing;
    };
    return pcKind;
}

bool reached(const char *szFunction)
{
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    return s_setReached.count(szFunction) > 0;
}
} // namespace

/// Plug-ins that call the library from each of their functions.
class TestCallingPlugins : public QObject
{
    Q_OBJECT

private slots:
    void fromEachFunction()
    {
        std::unique_lock<std::mutex> cControl(s_cControl);
        const QTemporaryDir cDir;
        s_achFile = cDir.filePath("saved.tasks").toUtf8();
        const auto fnID = [] {
            callBack("getID");
            return "caller";
        };
        const auto fnShow = [](auto...) {
            callBack("showConfigWindow");
            return s_szNothing;
        };
        const auto fnRun = [](auto...) {
            callBack("execute");
            return s_szNothing;
        };
        ArithmFactory::getInstance()->getArithms()->append({"", "", new Arithm(false, fnID, fnShow, fnRun)});
        DataSource::getInstance()->m_mapDataSourceInfo["Caller"] = kind();
        enableTaskStatus(true);
        const QString strStep = "<-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->%1</-ArithmID->"
                                "<-OptionStr->%2</-OptionStr-></-TaskItem->";
        TaskMgr::getInstance()->fromString(
            "<=TaskInfo=><-DataSource-><DSName>Caller</DSName><OutputType>Gray8</OutputType>"
            "<OutputID>1</OutputID></-DataSource->" +
            strStep.arg("caller", "x") +
            strStep.arg("KQ_Drawing", "<DataType>1</DataType><DataID>1</DataID>") +
            "</=TaskInfo=><=TaskInfo=><-TaskName->other</-TaskName-></=TaskInfo=>");

        startTask(0);
        cControl.unlock();
        const bool bReached = QTest::qWaitFor([] { return reached("execute") && reached("releasePicture"); });
        cControl.lock();
        QVERIFY(bReached);
        stopTask(0);
        runTaskOnce(0);
        showConfigWindow(0, 0);
        stopTask(0); // which the window has started
        TaskInfo *pcTask = TaskMgr::getInstance()->getTask(0);
        ArithmFactory::getInstance()->getArithm("caller")->showConfigWindow(QString(), pcTask->m_pcAPM);
        stopTask(0);
        pcTask->m_pcDS->showConfigWindow();
        pcTask->m_pcDS->getLastError();
        startTask(0);
        TaskMgr::deleteThis();
        for (const char *szFunction :
             {"getID", "execute", "showConfigWindow", "requestPicture", "start", "stop", "setConfig",
              "showConfigDlg", "getLastError", "removeInstance"})
            QVERIFY2(reached(szFunction), szFunction);
    }
};

QTEST_MAIN(TestCallingPlugins)
#include "tst_callingplugins.moc"
