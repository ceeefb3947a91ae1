// The workbench's window answers at any time, and leaves nothing behind when it is closed.

#include <QDir>

#include <sys/syscall.h>
#include <unistd.h>

#include "bench.h"
#include "datatable.h"
#include "stamptask.h"
#include "viewpane.h"

namespace
{
constexpr int INTERVAL_MS = 10;
constexpr int PATIENCE_MS = 50;
constexpr int MEASURED_MS = 6000;

/// For how long the calling thread was ready while others had the processors, in ms.
double starvedMs()
{
    QFile cFile(QStringLiteral("/proc/self/task/%1/schedstat").arg(syscall(SYS_gettid)));
    if (!cFile.open(QFile::ReadOnly))
        return 0;
    return cFile.readAll().split(' ').value(1).toDouble() / 1e6;
}

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

/// Watches a timer of the calling thread. Each moment at which it was due is a case.
class Watch : public QObject
{
public:
    Watch()
    {
        connect(&m_cTimer, &QTimer::timeout, this, &Watch::fired);
        m_cTimer.setTimerType(Qt::PreciseTimer);
        m_cTimer.start(INTERVAL_MS);
        m_cSince.start();
        m_dStarved = starvedMs();
    }
    /// Percent of the cases in which it fired in time, but for what other programs took.
    double inTime() const { return 100.0 * (m_nDue - m_nLate) / std::max(1, m_nDue); }

private:
    void fired()
    {
        const double dGap = static_cast<double>(m_cSince.nsecsElapsed()) / 1e6;
        m_cSince.start();
        const double dStarved = starvedMs();
        const double dOwn = dGap - (dStarved - std::exchange(m_dStarved, dStarved));
        m_nDue += std::max(1, qRound(dGap / INTERVAL_MS));
        m_nLate += std::max(0, qCeil((dOwn - PATIENCE_MS) / INTERVAL_MS) - 1);
    }

    QTimer m_cTimer;
    QElapsedTimer m_cSince;
    double m_dStarved = 0;
    int m_nDue = 0;
    int m_nLate = 0;
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

    /// While tasks draw into all views 30 times a second, and start, and stop, which takes up to a second.
    void timersFireInTime()
    {
        const QSize cSize(1920, 1080);
        QString strText;
        for (int nView = 0; nView < 3; ++nView)
            strText +=
                flowText("V" + QString::number(nView), Stamp::steps(cSize, 10, 20), nView, m_cFolder.path());
        strText += flowText("slow", Stamp::steps({8, 8}, 1000, 0), 3, m_cFolder.path());
        write(m_strFile, strText.toUtf8());
        Bench cBench(m_strFile);
        cBench.resize(1600, 900);
        int nPictures = 0;
        for (ViewPane *pcView : cBench.findChildren<ViewPane *>()) {
            pcView->setViewSize(cSize);
            connect(pcView, &ViewPane::updated, this, [&] { ++nPictures; });
        }
        int nControlled = 0;
        connect(&cBench.control(), &Control::changed, this,
                [&] { nControlled += cBench.control().isIdle(); });
        cBench.trigger("Start all");
        QTRY_VERIFY_WITH_TIMEOUT(nPictures > 30, 60000);

        const auto fnMeasure = [&] {
            nPictures = 0;
            Watch cWatch;
            QElapsedTimer cClock;
            cClock.start();
            for (int nTask = 3; cClock.elapsed() < MEASURED_MS; nTask = nTask == 3 ? 0 : 3) {
                cBench.select(nTask);
                DialogUser::click(cBench, "run");
                do
                    QTest::qWait(50);
                while (!cBench.control().isIdle());
            }
            qInfo("%.2f %% in time, %d pictures, %d control calls", cWatch.inTime(), nPictures, nControlled);
            return cWatch.inTime();
        };
        QVERIFY(fnMeasure() >= 99 || fnMeasure() >= 99); // once more on a busy machine
        QVERIFY(nPictures > 0);
        QVERIFY(nControlled > 4);
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
