// Every plug-in in four tasks at once; the thread sanitizer looks on.

#include <QTemporaryDir>
#include <QtTest>

#include "OculinexQTStandAloneInQt.h"
#include "everyplugin.h"
#include "taskMgr/taskstatus.h"

using namespace EveryPlugin;

class TestPluginTasks : public QObject
{
    Q_OBJECT

private slots:
    void runTogether();
};

void TestPluginTasks::runTogether()
{
    constexpr int TASKS = 4;
    constexpr int RUNS = 20;
    // Photographs of sizes that grow and shrink, so that each step makes its buffers anew.
    const QTemporaryDir cDir;
    const QImage cPhotograph(OCULINEX_SOURCE_DIR "/examples/pictures/rocket.jpg");
    for (const int nWidth : {320, 161, 400, 90, 257})
        QVERIFY(cPhotograph.scaledToWidth(nWidth).save(cDir.filePath(QString::number(nWidth) + ".png")));
    QString strSteps;
    const QList<Step> lstFlow = flow();
    QVERIFY(lstFlow.size() > 10);
    for (const Step &cStep : lstFlow)
        strSteps += tagged("-TaskItem-", tagged("-MaxExeTimes-", "-1") +
                                             tagged("-ArithmID-", cStep.m_cTable.m_strID) +
                                             tagged("-OptionStr-", cStep.m_strConfig));
    QString strTasks;
    for (int nTask = 0; nTask < TASKS; ++nTask)
        strTasks += tagged(
            "=TaskInfo=",
            tagged("-TaskName-", QString::number(nTask)) + tagged("-Kernel-", "-1") + tagged("-View-", "-1") +
                tagged("-DataSource-", "<DSName>Picture Folder</DSName><OutputType>RGB</OutputType>"
                                       "<OutputID>1</OutputID><Config><Path>" +
                                           cDir.path() + "</Path><Loop>1</Loop></Config>") +
                strSteps);
    QFile cFile(cDir.filePath("four.tasks"));
    QVERIFY(cFile.open(QIODevice::WriteOnly) && cFile.write(strTasks.toUtf8()) > 0);
    cFile.close();
    enableTaskStatus(true);
    QCOMPARE(openTasksFile(cFile.fileName().toUtf8().data()), "");

    startAllTasks();
    TaskStatus cStatus;
    for (int nTask = 0; nTask < TASKS; ++nTask)
        QTRY_VERIFY_WITH_TIMEOUT(
            getTaskStatus(nTask, cStatus) && (cStatus.m_nRuns >= RUNS || cStatus.m_nFailures), 60000);
    stopAllTasks();
    for (int nTask = 0; nTask < TASKS; ++nTask) {
        QVERIFY(getTaskStatus(nTask, cStatus));
        QCOMPARE(cStatus.m_strLastError, QString());
        QCOMPARE(cStatus.m_lstStep.size(), lstFlow.size());
        QVERIFY(cStatus.m_lstStep.last().m_nExecutions >= RUNS);
    }
}

QTEST_GUILESS_MAIN(TestPluginTasks)
#include "tst_plugintasks.moc"
