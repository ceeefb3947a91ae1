#include "screenshots.h"

#include <functional>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include "MemoryDisk/dlgmemorydiskstatus.h"
#include "OculinexQTStandAloneInQt.h"
#include "dlgoperator.h"
#include "flowpage.h"
#include "flowpane.h"
#include "logpane.h"
#include "mainwindow.h"
#include "operatormode.h"
#include "operatorwindow.h"
#include "steptable.h"
#include "storepane.h"
#include "taskMgr/taskMgr.h"
#include "tasklist.h"
#include "viewpane.h"

namespace
{
constexpr int SHOWN_TASK = 1;
constexpr int SHOWN_STEP = 7;   ///< of that task
constexpr int SHOWN_ENTRY = 3;  ///< of its store
constexpr int PATIENCE = 20000; // ms
/// Until a window that has opened shows all, previews included, in ms.
constexpr int SETTLE = 1500;
/// Until the figures of tasks that work are steady, in ms.
constexpr int WORKING = 4000;
constexpr QSize VIEW_SIZE(720, 480);
constexpr QSize SCREEN(1280, 720);

void wait(int nMs)
{
    QEventLoop cLoop;
    QTimer::singleShot(nMs, &cLoop, &QEventLoop::quit);
    cLoop.exec();
}

/// A step to open the window of.
struct Shot {
    const char *m_szName;
    const char *m_szArithm;
    const char *m_szConfig; ///< null: as it stands in the flow
    const char *m_szButton; ///< that opens a further window; null for none
    const char *m_szSecond; ///< the name of that
};

const Shot SHOTS[] = {
    {"dialog-drawing", "KQ_Drawing", nullptr, nullptr, nullptr},
    {"dialog-save", "KQ_Saving", "<Wnd>4</Wnd><PicID>1</PicID><PicType>RGB</PicType>", "btnSelectPic",
     "dialog-select-picture"},
    {"dialog-load", "KQ_Loading", "", nullptr, nullptr},
    {"dialog-memory-disk", "KQ_MemoryDisk",
     "<MemDisk>0</MemDisk><InputID>1</InputID><InputType>RGB</InputType>", nullptr, nullptr},
    {"plugin-threshold", "OCX_Threshold", nullptr, nullptr, nullptr},
    {"plugin-blobs", "OCX_Blobs", nullptr, nullptr, nullptr},
};

class Photographer
{
public:
    explicit Photographer(const QString &strFolder) : m_cFolder(strFolder) {}

    const QString &error() const { return m_strError; }

    void take(QWidget &cWindow, const QString &strName)
    {
        const QString strFile = m_cFolder.filePath(strName + QStringLiteral(".png"));
        if (!cWindow.grab().toImage().convertToFormat(QImage::Format_RGB888).save(strFile, "PNG", 0))
            fail(strFile + QStringLiteral(" could not be written."));
    }

    /// Opens a modal window, takes its picture and closes it.
    void takeModal(const Shot &cShot, const std::function<void()> &fnOpen)
    {
        bool bTaken = false;
        QTimer cTimer;
        cTimer.setSingleShot(true);
        QObject::connect(&cTimer, &QTimer::timeout, &cTimer, [&] {
            QWidget *const pcWindow = QApplication::activeModalWidget();
            if (!pcWindow)
                return;
            take(*pcWindow, cShot.m_szName);
            bTaken = true;
            auto *const pcButton =
                cShot.m_szButton ? pcWindow->findChild<QAbstractButton *>(cShot.m_szButton) : nullptr;
            if (pcButton)
                takeModal({cShot.m_szSecond, nullptr, nullptr, nullptr, nullptr}, [&] { pcButton->click(); });
            pcWindow->close();
        });
        cTimer.start(SETTLE);
        fnOpen();
        if (!bTaken)
            fail(cShot.m_szName + QStringLiteral(" did not open."));
    }

    void fail(const QString &strReason)
    {
        if (m_strError.isEmpty())
            m_strError = strReason;
    }

private:
    const QDir m_cFolder;
    QString m_strError;
};

/// Starts and waits until the shown task has drawn its first run.
bool startAndWait(MainWindow &cWindow, const std::function<void()> &fnStart)
{
    auto *const pcView = cWindow.findChildren<ViewPane *>().constFirst();
    QEventLoop cLoop;
    bool bDrawn = false;
    QObject::connect(pcView, &ViewPane::updated, &cLoop, [&] {
        TaskStatus cStatus;
        bDrawn = getTaskStatus(SHOWN_TASK, cStatus) && cStatus.m_nRuns > 0;
        if (bDrawn)
            cLoop.quit();
    });
    QTimer::singleShot(PATIENCE, &cLoop, &QEventLoop::quit);
    fnStart();
    cLoop.exec();
    wait(400); // figures and the log follow
    return bDrawn;
}

void waitIdle(MainWindow &cWindow)
{
    QElapsedTimer cSince;
    cSince.start();
    while (!cWindow.control().isIdle() && cSince.elapsed() < PATIENCE)
        wait(20);
}

void stopAndWait(MainWindow &cWindow)
{
    for (int nTask = 0; nTask < cWindow.document().taskCount(); ++nTask)
        cWindow.control().post(Control::Action::Stop, nTask);
    waitIdle(cWindow);
}

/// The shown task on the pictures of the first, so that each of its steps can be prepared by itself.
int addTaskOnPictures()
{
    static const QRegularExpression s_cSource(QStringLiteral("<-DataSource->.*</-DataSource->"),
                                              QRegularExpression::DotMatchesEverythingOption);
    TaskMgr *const pcTasks = TaskMgr::getInstance();
    QString strText = pcTasks->getTask(SHOWN_TASK)->toString();
    strText.replace(s_cSource, s_cSource.match(pcTasks->getTask(0)->toString()).captured());
    auto *const pcTask = new TaskInfo(QStringLiteral("Coins"), FuncHaveErrorMessage);
    pcTask->fromString(strText);
    const int nTask = pcTasks->getTaskNum();
    pcTasks->addTask(pcTask, nTask);
    return nTask;
}

/// The step of a shot; it is put before the first drawing when the flow does not have it as it is to be.
int stepOf(const Shot &cShot, QList<TaskItem> &lstStep)
{
    int nStep = 0;
    const char *const szWanted = cShot.m_szConfig ? "KQ_Drawing" : cShot.m_szArithm;
    while (nStep < lstStep.size() && lstStep[nStep].m_strArithmID != QLatin1String(szWanted))
        ++nStep;
    if (cShot.m_szConfig) {
        TaskItem cStep;
        cStep.m_strArithmID = cShot.m_szArithm;
        cStep.m_strOptionStr = cShot.m_szConfig;
        lstStep.insert(nStep, cStep);
    }
    return nStep;
}
/// The tasks in a file of the same name whose first task shows one picture again and again. Its path.
QString makeEndless(const QString &strTasksFile, const QString &strFolder)
{
    QFile cFile(strTasksFile);
    if (!cFile.open(QFile::ReadOnly))
        return {};
    QString strText = QString::fromUtf8(cFile.readAll());
    strText.replace(QStringLiteral("<Path>examples/pictures</Path><Fps>1</Fps>"),
                    QStringLiteral("<Path>examples/pictures/coins.png</Path><Loop>1</Loop><Fps>5</Fps>"));
    QFile cCopy(QDir(strFolder).filePath(QFileInfo(strTasksFile).fileName()));
    if (!cCopy.open(QFile::WriteOnly) || cCopy.write(strText.toUtf8()) < 0)
        return {};
    return cCopy.fileName();
}

/// The main window at work: the store after a run to a step, then everything running.
void photographWork(MainWindow &cWindow, Photographer &cCamera)
{
    for (ViewPane *const pcView : cWindow.findChildren<ViewPane *>())
        pcView->setViewSize(VIEW_SIZE);
    cWindow.control().post(Control::Action::RunOnce, 0); // a picture for the shown task
    waitIdle(cWindow);
    cWindow.findChild<TaskList *>()->setCurrent(SHOWN_TASK);
    auto *const pcFlow = cWindow.findChild<FlowPane *>();
    pcFlow->page()->steps().select(SHOWN_STEP);
    pcFlow->stepActions().constLast()->trigger(); // runs to it
    auto *const pcStore = cWindow.findChild<StorePane *>()->findChild<QTreeWidget *>(QStringLiteral("list"));
    pcStore->setCurrentItem(pcStore->topLevelItem(std::min(SHOWN_ENTRY, pcStore->topLevelItemCount() - 1)));
    const auto fnStartAll = [&] {
        for (int nTask = 0; nTask < cWindow.document().taskCount(); ++nTask)
            cWindow.control().post(Control::Action::Start, nTask);
    };
    if (!startAndWait(cWindow, fnStartAll))
        cCamera.fail(QStringLiteral("The tasks draw nothing."));
    wait(WORKING);
    cCamera.take(cWindow, QStringLiteral("workbench"));
    {
        DlgMemoryDiskStatus cStatus(nullptr);
        cStatus.show();
        wait(SETTLE);
        cCamera.take(cStatus, QStringLiteral("dialog-memory-disk-status"));
    }
    stopAndWait(cWindow);
}

void photographOperator(MainWindow &cWindow, Photographer &cCamera)
{
    OperatorSetup cSetup;
    cSetup.m_nTask = SHOWN_TASK;
    cSetup.m_strGood = QStringLiteral("24 coins");
    cSetup.m_strBad = QStringLiteral("There should");
    const QList<TaskItem> &lstStep = cWindow.document().task(SHOWN_TASK)->getTaskItem();
    for (int nStep = 0; nStep < lstStep.size() && cSetup.m_lstStep.isEmpty(); ++nStep)
        if (lstStep[nStep].m_strArithmID == QLatin1String("OCX_Threshold"))
            cSetup.m_lstStep.append(
                {SHOWN_TASK, nStep,
                 pickableNumbers(lstStep[nStep].m_strArithmID, lstStep[nStep].m_strOptionStr).mid(1)});
    cWindow.document().setOperatorSetup(cSetup);
    {
        DlgOperator cDialog(cWindow.document().operatorSetup());
        cDialog.show();
        wait(200);
        cCamera.take(cDialog, QStringLiteral("operator-setup"));
    }
    OperatorWindow *const pcOperator = cWindow.operatorMode().open();
    pcOperator->resize(SCREEN); // some displays have no one to make it as large as the screen
    wait(200);
    if (!startAndWait(cWindow, [&] { pcOperator->findChild<QAbstractButton *>("btnStart")->click(); }))
        cCamera.fail(QStringLiteral("The operator's window starts nothing."));
    wait(WORKING);
    cCamera.take(*pcOperator, QStringLiteral("operator"));
    pcOperator->close();
    stopAndWait(cWindow);
}

void photographDialogs(Photographer &cCamera)
{
    const int nTask = addTaskOnPictures();
    TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(nTask);
    cCamera.takeModal({"dialog-data-source", nullptr, nullptr, nullptr, nullptr},
                      [&] { selectDataSource(nTask); });
    for (const Shot &cShot : SHOTS) {
        const int nStep = stepOf(cShot, pcTask->getTaskItem());
        cCamera.takeModal(cShot, [&] { showConfigWindow(nTask, nStep); });
        if (cShot.m_szConfig)
            pcTask->getTaskItem().removeAt(nStep);
    }
    TaskMgr::getInstance()->removeTask(nTask);
}
} // namespace

QString takeScreenshots(const QString &strTasksFile, const QString &strFolder)
{
    // The user's own layout and list of files stay as they are.
    const QTemporaryDir cOwn;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, cOwn.path());
    if (!QDir().mkpath(strFolder))
        return strFolder + QStringLiteral(" can't be made.");
    Photographer cCamera(strFolder);
    MainWindow cWindow;
    cWindow.show();
    cWindow.openFile(makeEndless(strTasksFile, cOwn.path()));
    if (cWindow.document().taskCount() <= SHOWN_TASK)
        return strTasksFile + QStringLiteral(" has no task to show.");
    photographWork(cWindow, cCamera);
    photographOperator(cWindow, cCamera);
    photographDialogs(cCamera);
    return cCamera.error();
}
