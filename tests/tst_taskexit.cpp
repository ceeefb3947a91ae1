#include <unistd.h>

#include <cstdio>
#include <cstring>

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include "taskfixture.h"

/// The end of a process whose task still runs.
class TestTaskExit : public QObject
{
    Q_OBJECT

private slots:
    void exitWhileRunning();
};

/// A task that can stop does so, clean-up steps included; one that can't does not hold the process
/// up for ever, nor crash it when it comes back.
void TestTaskExit::exitWhileRunning()
{
    const QMap<QString, QString> mapOutput = {
        {"run!", "cleaned up"}, {"hang", ""}, {"late", ""}, {"leave", ""}};
    QMap<QString, QProcess *> mapProcess;
    for (const QString &strStep : mapOutput.keys()) {
        mapProcess[strStep] = new QProcess(this);
        mapProcess[strStep]->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mapProcess[strStep]->start(QCoreApplication::applicationFilePath(), {"--run", strStep});
    }
    for (auto it = mapProcess.cbegin(); it != mapProcess.cend(); ++it) {
        QVERIFY2(it.value()->waitForFinished(20000), qPrintable(it.key()));
        QVERIFY2(it.value()->exitStatus() == QProcess::NormalExit && it.value()->exitCode() == 0,
                 qPrintable(it.key()));
        QCOMPARE(QString::fromUtf8(it.value()->readAllStandardOutput()), mapOutput[it.key()]);
    }
}

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

int main(int argc, char **argv)
{
    QCoreApplication cApp(argc, argv);
    if (argc == 3 && strcmp(argv[1], "--run") == 0)
        return runAndLeave(argv[2]);
    TestTaskExit cTest;
    return QTest::qExec(&cTest, argc, argv);
}
#include "tst_taskexit.moc"
