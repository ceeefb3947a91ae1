#include <unistd.h>

#include <cstdio>
#include <cstring>

#include <QProcess>
#include <QtTest>

#include "taskfixture.h"

namespace
{
/// A host that returns from main() while its task runs.
int runAndLeave(const char *szStep)
{
    Fake::reset();
    Fake::s_mapHandlers["hang"] = [] {
        while (true)
            pause();
    };
    Fake::s_mapHandlers["late"] = [] { usleep(3500000); };
    Fake::s_mapHandlers["leave"] = [] { exit(0); };
    Fake::s_mapHandlers["end"] = [] {
        fputs("cleaned up", stdout);
        fflush(stdout);
    };
    // The process takes its time to go once the tasks have been asked to stop.
    std::atexit([] { usleep(1000000); });
    // It is destroyed after the tasks have been asked to stop, and its step may still be at work.
    static std::unique_ptr<Fake::Task> s_pcTask;
    s_pcTask = std::make_unique<Fake::Task>(QString("first, %1, 999999999;end").arg(szStep));
    s_pcTask->startTask();
    while (!Fake::hasTraced(szStep))
        usleep(1000);
    return 0;
}
} // namespace

/// The end of a process whose task still runs.
class TestTaskExit : public QObject
{
    Q_OBJECT

private slots:
    /// A task that can stop does so, clean-up steps included; one that can't does not hold the process
    /// up for ever, nor crash it when it comes back.
    void exitWhileRunning()
    {
        std::map<QString, QProcess> mapProcess; // of the step that is at work by then
        for (const char *szStep : {"run!", "hang", "late", "leave"}) {
            mapProcess[szStep].setProcessChannelMode(QProcess::ForwardedErrorChannel);
            mapProcess[szStep].start(QCoreApplication::applicationFilePath(), {"--run", szStep});
        }
        for (auto &[strStep, cProcess] : mapProcess) {
            QVERIFY2(cProcess.waitForFinished(20000), qPrintable(strStep));
            QVERIFY2(cProcess.exitStatus() == QProcess::NormalExit && cProcess.exitCode() == 0,
                     qPrintable(strStep));
            QCOMPARE(QString(cProcess.readAllStandardOutput()), strStep == "run!" ? "cleaned up" : "");
        }
    }
};

int main(int argc, char **argv)
{
    QCoreApplication cApp(argc, argv);
    if (argc == 3 && strcmp(argv[1], "--run") == 0)
        return runAndLeave(argv[2]);
    TestTaskExit cTest;
    return QTest::qExec(&cTest, argc, argv);
}
#include "tst_taskexit.moc"
