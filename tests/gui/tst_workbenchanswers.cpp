// The workbench's window answers at any time, and leaves nothing behind when it is closed.

#include <QtTest>

#include <QDir>
#include <QTemporaryDir>

#include "bench.h"
#include "datatable.h"
#include "globalfunction.h"
#include "stamptask.h"
#include "viewpane.h"

namespace
{
/// All but those that Qt draws with, which come and go as it likes.
int threads()
{
    int nThreads = 0;
    for (const QString &strThread : QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile cName("/proc/self/task/" + strThread + "/comm");
        nThreads += cName.open(QFile::ReadOnly) && !cName.readAll().startsWith("Thread (pooled)");
    }
    return nThreads;
}

/// A drawing that takes as long as the gate is closed.
class HeldDrawing : public Drawing::DrawingOpt
{
public:
    HeldDrawing(Fake::Gate &cGate, std::atomic<bool> &bDrawn)
        : Drawing::DrawingOpt(0), m_cGate(cGate), m_bDrawn(bDrawn)
    {
    }
    void draw(QImage *, ArithmParamMgr *) override
    {
        m_cGate.enter();
        m_bDrawn = true;
    }

private:
    Fake::Gate &m_cGate;
    std::atomic<bool> &m_bDrawn;
};
} // namespace

class TestWorkbenchAnswers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        keepSettingsIn(m_cFolder.path());
        m_strFile = m_cFolder.filePath("flow.tasks");
        QImage cPicture(8, 8, QImage::Format_RGB888);
        cPicture.fill(Qt::black);
        cPicture.save(m_cFolder.filePath("picture.png"));
        Fake::reset();
        delete ArithmFactory::getInstance()->m_mapArithm.take("KQ_Drawing"); // the real one draws here
    }

    /// The window waits for no drawing, whatever is done with the views and the tasks meanwhile.
    void answersWhileAViewIsDrawn()
    {
        write(m_strFile, flowText("A", Stamp::steps({8, 8}, 1, 1), 0, m_cFolder.path()).toUtf8());
        Fake::Gate cGate;
        std::atomic<bool> bDrawn{false};
        Bench cBench(m_strFile);
        GlobalFunction *const pcViews = GlobalFunction::getInstance();
        auto *const pcCanvas = pcViews->requestViewDrawOption(0);
        pcCanvas->pushDrawingOpt(new HeldDrawing(cGate, bDrawn));
        pcViews->releaseViewDrawOption(0, pcCanvas);
        QVERIFY(cGate.waitEntered()); // by another thread
        for (ViewPane *pcView : cBench.findChildren<ViewPane *>())
            pcView->setViewSize({1920, 1080});
        cBench.resize(1600, 900);
        cBench.select(0);
        for (const bool bRuns : {true, false}) {
            DialogUser::click(cBench, "run");
            QTRY_VERIFY(cBench.control().isIdle());
            QCOMPARE(Document::task(0)->IsRunning(), bRuns);
        }
        QVERIFY(!bDrawn);
        cGate.open();
        QTRY_VERIFY(bDrawn);
    }

    void closesAtAnyTime_data()
    {
        addRows("when                          strDone           strSleepMs\n"
                "tasks run                     Ctrl+F5           1\n"
                "a step takes long             F5                2000\n"
                "a task starts                 F5 now            1\n"
                "a task stops                  F5,Shift+F5 now   1000\n"
                "a single run                  F7 now            1000\n"
                "in the midst of a run to here  F6 within        1000");
    }
    void closesAtAnyTime()
    {
        QFETCH(QString, strDone); // shortcuts typed before the window is closed
        QFETCH(QString, strSleepMs);
        QString strText;
        for (const char *szName : {"A", "B"})
            strText += flowText(szName, Stamp::steps({640, 480}, strSleepMs.toInt(), 0), 0, m_cFolder.path());
        write(m_strFile, strText.toUtf8());
        const int nThreads = threads();
        {
            Bench cBench(m_strFile);
            cBench.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&cBench));
            cBench.select(0);
            cBench.steps()->selectRow(4);
            QVERIFY(threads() > nThreads);
            if (strDone.endsWith(" within")) // the close button is pressed while nobody looks
                QCoreApplication::postEvent(&cBench, new QCloseEvent, Qt::LowEventPriority);
            for (const QString &strKeys : strDone.section(' ', 0, 0).split(',')) {
                QTRY_VERIFY(cBench.control().isIdle());
                typeKeys(cBench, strKeys);
            }
            if (strDone.endsWith(" now"))
                QVERIFY(!cBench.control().isIdle());
            else
                QTRY_VERIFY(cBench.control().isIdle());
            cBench.close();
            QTRY_VERIFY_WITH_TIMEOUT(!cBench.isVisible(), 20000);
            for (int nTask = 0; nTask < 2; ++nTask)
                QVERIFY(cBench.document().isIdle(nTask));
        }
        QTRY_COMPARE(threads(), nThreads);
    }

    /// A step that never ends keeps nobody from leaving; only the button that says so leaves it alone.
    void closesWithoutWaiting()
    {
        write(m_strFile, flowText("A", {Fake::step("hold|")}, 0, m_cFolder.path()).toUtf8());
        Fake::Gate cGate;
        Fake::s_mapHandlers["\nhold"] = [&] { cGate.enter(); };
        {
            Bench cBench(m_strFile);
            cBench.select(0);
            cBench.trigger("Start");
            QVERIFY(cGate.waitEntered());
            const auto fnCloseBox = [](QWidget &cTop) { cTop.close(); };
            for (const DialogUser::Act &fnAct :
                 {DialogUser::type(Qt::Key_Escape), DialogUser::Act(fnCloseBox),
                  pressButton("Close without waiting")}) {
                QVERIFY(cBench.isVisible() && !cBench.control().isAbandoned());
                const DialogUser cUser({fnAct});
                cBench.close();
                QTRY_VERIFY(cUser.isContent() && !QApplication::activeModalWidget());
            }
            QTRY_VERIFY(!cBench.isVisible());
        }
        // Both threads are still there; what they do from now on meets nothing that has gone.
        QVERIFY(TaskMgr::getInstance()->getTask(0)->IsRunning());
        cGate.open();
        QTRY_VERIFY(!TaskMgr::getInstance()->getTask(0)->IsRunning());
    }

private:
    QTemporaryDir m_cFolder;
    QString m_strFile;
};

QTEST_MAIN(TestWorkbenchAnswers)

#include "tst_workbenchanswers.moc"
