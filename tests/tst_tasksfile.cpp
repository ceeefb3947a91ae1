#include <QtTest>

#include <random>

#include <ctime>

#include <QFile>

#include "arithmparammgr.h"
#include "globalfunction.h"
#include "taskMgr/taskMgr.h"

namespace
{
/// What a tasks file says of a task, by the plainest reader of the format: it takes block after
/// block out of a copy of the text. The library must read every text just so.
struct PlainTask {
    QString m_strName;
    int m_nKernel;
    int m_nView;
    QString m_strDataSource;
    QList<QStringList> m_lstItem;
};

QString take(QString &strText, const char *szField)
{
    return GlobalFunction::getAndRemoveBody(strText, QStringLiteral("<%1>").arg(szField),
                                            QStringLiteral("</%1>").arg(szField));
}

QList<PlainTask> readPlainly(QString strText)
{
    QList<PlainTask> lstTask;
    for (QString strTask = take(strText, "=TaskInfo="); !strTask.isEmpty();
         strTask = take(strText, "=TaskInfo=")) {
        PlainTask cTask;
        cTask.m_strName = take(strTask, "-TaskName-");
        cTask.m_nKernel = take(strTask, "-Kernel-").toInt();
        cTask.m_nView = take(strTask, "-View-").toInt();
        cTask.m_strDataSource = take(strTask, "-DataSource-");
        for (QString strItem = take(strTask, "-TaskItem-"); !strItem.isEmpty();
             strItem = take(strTask, "-TaskItem-")) {
            QStringList lstField(QString::number(take(strItem, "-MaxExeTimes-").toInt()));
            for (const char *szField :
                 {"-ArithmID-", "-OptionStr-", "-ClassName-", "-ArithmName-", "-Describe-"})
                lstField.append(take(strItem, szField));
            cTask.m_lstItem.append(lstField);
        }
        lstTask.append(cTask);
    }
    return lstTask;
}

QStringList fieldsOf(const TaskItem &cItem)
{
    return {QString::number(cItem.m_nMaxExeTimes),
            cItem.m_strArithmID,
            cItem.m_strOptionStr,
            cItem.m_strClassName,
            cItem.m_strArithmName,
            cItem.m_strDescribe};
}

/// Compares what the manager holds with what the plain reader finds.
bool readsAsPlainly(const QString &strText)
{
    TaskMgr *pcManager = TaskMgr::getInstance();
    pcManager->fromString(strText);
    const QList<PlainTask> lstPlain = readPlainly(strText);
    bool bSame = pcManager->getTaskNum() == lstPlain.size();
    for (int nPos = 0; bSame && nPos < lstPlain.size(); ++nPos) {
        TaskInfo &cTask = *pcManager->getTask(nPos);
        const PlainTask &cPlain = lstPlain.at(nPos);
        QList<QStringList> lstItem;
        for (const TaskItem &cItem : qAsConst(cTask.getTaskItem()))
            lstItem.append(fieldsOf(cItem));
        bSame = cTask.getName() == cPlain.m_strName && cTask.m_nWhichKernel == cPlain.m_nKernel &&
                cTask.m_nWhichView == cPlain.m_nView &&
                cTask.m_strDataSourceConfigString == cPlain.m_strDataSource && lstItem == cPlain.m_lstItem;
    }
    return bSame;
}

/// Random text in which markers stand whole, in other letter cases, torn apart by further soup, alone
/// and in the wrong order.
class MarkerSoup
{
public:
    explicit MarkerSoup(unsigned nSeed) : m_cRandom(nSeed) {}

    QString cook(int nDepth)
    {
        QString strSoup;
        for (int nParts = below(6); nParts >= 0; --nParts)
            strSoup += part(nDepth);
        return strSoup;
    }

private:
    int below(int nEnd) { return static_cast<int>(m_cRandom() % static_cast<unsigned>(nEnd)); }

    QString marker(const QString &strName, bool bEnd)
    {
        QString strMarker = (bEnd ? "</" : "<") + strName + ">";
        switch (below(6)) {
        case 0:
            return strMarker.toUpper();
        case 1: // both fold to the ASCII letter
            return strMarker.replace('k', QChar(0x212a)).replace('s', QChar(0x17f));
        default:
            return strMarker;
        }
    }

    QString part(int nDepth)
    {
        static const QStringList s_lstName = {"=TaskInfo=", "=TaskInfo=", "-TaskItem-", "-TaskItem-",
                                              "-TaskName-", "-Kernel-",   "-Describe-", "-DataSource-"};
        static const QStringList s_lstText = {"x", "12", "\n",     "<",          "</",
                                              ">", "<-", "\u017f", "\U0001F600", "="};
        const QString &strName = s_lstName.at(below(s_lstName.size()));
        const int nKind = nDepth > 0 ? below(8) : 6 + below(2);
        if (nKind < 4) // a block, now and then an empty one
            return marker(strName, false) + (below(12) ? cook(nDepth - 1) : QString()) +
                   marker(strName, true);
        if (nKind < 6) { // a marker torn apart
            const QString strMarker = marker(strName, below(3) == 0);
            const int nTorn = below(strMarker.size() + 1);
            return strMarker.left(nTorn) + cook(nDepth - 1) + strMarker.mid(nTorn);
        }
        return nKind == 6 ? s_lstText.at(below(s_lstText.size())) : marker(strName, below(2) == 0);
    }

    std::mt19937 m_cRandom;
};

double cpuSeconds()
{
    timespec cTime = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &cTime);
    return static_cast<double>(cTime.tv_sec) + 1e-9 * static_cast<double>(cTime.tv_nsec);
}

QString guide()
{
    QFile cFile(OCULINEX_SOURCE_DIR "/docs/tasks-file.md");
    return cFile.open(QIODevice::ReadOnly) ? QString::fromUtf8(cFile.readAll()) : QString();
}

QString bigTask(int nSteps)
{
    TaskInfo cTask(QStringLiteral("big"), nullptr);
    TaskItem cItem;
    cItem.m_strArithmID = QStringLiteral("5E1A2C60-6A3E-4A5B-9C57-0D9F8B1E7A11");
    cItem.m_strOptionStr = QStringLiteral("<In>1</In><Out>2</Out><Threshold>128</Threshold>");
    cItem.m_strClassName = cItem.m_strArithmName = QStringLiteral("阈值");
    for (int nStep = 0; nStep < nSteps; ++nStep)
        cTask.getTaskItem().append(cItem);
    return "<=TaskInfo=>\n" + cTask.toString() + "\n</=TaskInfo=>\n";
}

} // namespace

/// The text of a tasks file.
class TestTasksFile : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { TaskMgr::deleteThis(); }

    void roundTrip();
    void reads_data();
    void reads();
    void readsSoupAsPlainly();
    void readsInLinearTime();
    void positionsAreKeys();
    void examplesOfTheGuide();
    void commandsOfTheGuide();
};

void TestTasksFile::roundTrip()
{
    const QString strText = QString::fromUtf8(R"(<=TaskInfo=>
<-TaskName->任务 <1> & more</-TaskName->
<-Kernel->3</-Kernel->
<-View->2</-View->
<-DataSource->
<DSName>Memory Disk 1</DSName><OutputType>RGB</OutputType><OutputID>1</OutputID>
</-DataSource->
<-TaskItem->
<-MaxExeTimes->-1</-MaxExeTimes->
<-ArithmID->no such algorithm</-ArithmID->
<-OptionStr->
<A>1</A>
 <B>two lines</B>
</-OptionStr->
<-ClassName->类</-ClassName->
<-ArithmName->name</-ArithmName->
<-Describe->what for</-Describe->
</-TaskItem->
<-TaskItem->
<-MaxExeTimes->999999999</-MaxExeTimes->
<-ArithmID-></-ArithmID->
<-OptionStr->

</-OptionStr->
<-ClassName-></-ClassName->
<-ArithmName-></-ArithmName->
<-Describe-></-Describe->
</-TaskItem->

</=TaskInfo=>
<=TaskInfo=>
<-TaskName->任务 <1> & more</-TaskName->
<-Kernel->-1</-Kernel->
<-View->0</-View->

</=TaskInfo=>
)");
    TaskMgr *pcManager = TaskMgr::getInstance();
    pcManager->fromString(strText);
    QCOMPARE(pcManager->toString(), strText);
    QCOMPARE(pcManager->toString(), strText); // trimming the source's text in place changes nothing more
    QCOMPARE(pcManager->getTask(0)->getTaskItem().at(0).m_strOptionStr, "\n<A>1</A>\n <B>two lines</B>\n");
    QVERIFY(pcManager->getTask(0)->m_pcDS);
    QVERIFY(!pcManager->getTask(1)->m_pcDS);
}

void TestTasksFile::reads_data()
{
    QTest::addColumn<QString>("strText");
    QTest::addColumn<QStringList>("lstTask"); // name, kernel, view, limits and IDs of the steps

    QTest::newRow("nothing") << "no block at all" << QStringList();
    QTest::newRow("fields missing") << "<=TaskInfo=>x<-TaskItem->y</-TaskItem-></=TaskInfo=>"
                                    << QStringList("/0/0/0:");
    QTest::newRow("any order, text between")
        << "a<=TaskInfo=><-TaskItem-><-ArithmID->i</-ArithmID->,<-MaxExeTimes->2</-MaxExeTimes-></-TaskItem->"
           "b<-View-> +2 </-View->c<-Kernel->1x</-Kernel-><-TaskName->n</-TaskName-></=TaskInfo=>d"
        << QStringList("n/0/2/2:i");
    QTest::newRow("other case") << "<=taskINFO=><-TASKNAME->n</-taskname-></=TASKinfo=>"
                                << QStringList("n/0/0");
    QTest::newRow("number too big") << "<=TaskInfo=><-Kernel->99999999999</-Kernel-></=TaskInfo=>"
                                    << QStringList("/0/0");
    QTest::newRow("stray end ends it")
        << "<=TaskInfo=>a</=TaskInfo=></=TaskInfo=><=TaskInfo=>b</=TaskInfo=>" << QStringList("/0/0");
    QTest::newRow("empty block ends it")
        << "<=TaskInfo=>a</=TaskInfo=><=TaskInfo=></=TaskInfo=><=TaskInfo=>b</=TaskInfo=>"
        << QStringList("/0/0");
    QTest::newRow("marker across a join")
        << "<=Task<=TaskInfo=>a</=TaskInfo=>Info=><-View->7</-View-></=TaskInfo=>"
        << QStringList({"/0/0", "/0/7"});
    QTest::newRow("marker across two joins")
        << "<=TaskI<=Task<=TaskInfo=>a</=TaskInfo=>Info=>b</=TaskInfo=>nfo=><-View->7</-View-></=TaskInfo=>"
        << QStringList({"/0/0", "/0/0", "/0/7"});
    QTest::newRow("end across a join")
        << "</=Task<=TaskInfo=>a</=TaskInfo=>Info=><=TaskInfo=>b</=TaskInfo=>" << QStringList("/0/0");
    QTest::newRow("a value that holds a marker")
        << "<=TaskInfo=><-TaskName->a<-View->3</-TaskName-><-View->4</-View-></=TaskInfo=>"
        << QStringList("a<-View->3/0/4");
}

void TestTasksFile::reads()
{
    QFETCH(QString, strText);
    QFETCH(QStringList, lstTask);
    TaskMgr *pcManager = TaskMgr::getInstance();
    pcManager->fromString(strText);
    QStringList lstRead;
    for (int nPos = 0; nPos < pcManager->getTaskNum(); ++nPos) {
        TaskInfo &cTask = *pcManager->getTask(nPos);
        QString strTask =
            QStringLiteral("%1/%2/%3").arg(cTask.getName()).arg(cTask.m_nWhichKernel).arg(cTask.m_nWhichView);
        for (const TaskItem &cItem : qAsConst(cTask.getTaskItem()))
            strTask += QStringLiteral("/%1:%2").arg(cItem.m_nMaxExeTimes).arg(cItem.m_strArithmID);
        lstRead.append(strTask);
    }
    QCOMPARE(lstRead, lstTask);
    QVERIFY(readsAsPlainly(strText));
}

void TestTasksFile::readsSoupAsPlainly()
{
    int nTasks = 0;
    int nItems = 0;
    for (unsigned nSeed = 0; nSeed < 8000; ++nSeed) {
        const QString strSoup = MarkerSoup(nSeed).cook(4);
        if (!readsAsPlainly(strSoup) || !readsAsPlainly("<=TaskInfo=>" + strSoup + "</=TaskInfo=>"))
            QFAIL(qPrintable(QStringLiteral("seed %1: %2").arg(nSeed).arg(strSoup)));
        nTasks += TaskMgr::getInstance()->getTaskNum();
        if (TaskInfo *pcTask = TaskMgr::getInstance()->getTask(0))
            nItems += pcTask->getTaskItem().size();
    }
    QVERIFY(nTasks > 4000);
    QVERIFY(nItems > 2000);
}

void TestTasksFile::readsInLinearTime()
{
    const auto fnSeconds = [](const QString &strText) {
        double dBest = 1e9;
        for (int nTry = 0; nTry < 3; ++nTry) {
            const double dBegan = cpuSeconds();
            TaskMgr::getInstance()->fromString(strText);
            dBest = qMin(dBest, cpuSeconds() - dBegan);
        }
        return dBest;
    };
    // Many steps in a task, and many tasks.
    const QString strTask = bigTask(2);
    const double dSteps = fnSeconds(bigTask(1000));
    const double dTasks = fnSeconds(strTask.repeated(300));
    const double dTenfoldSteps = fnSeconds(bigTask(10000));
    QCOMPARE(TaskMgr::getInstance()->getTask(0)->getTaskItem().size(), 10000);
    const double dTenfoldTasks = fnSeconds(strTask.repeated(3000));
    QCOMPARE(TaskMgr::getInstance()->getTaskNum(), 3000);
    QVERIFY2(dTenfoldSteps < 30 * dSteps, qPrintable(QString::number(dTenfoldSteps / dSteps)));
    QVERIFY2(dTenfoldTasks < 30 * dTasks, qPrintable(QString::number(dTenfoldTasks / dTasks)));
}

void TestTasksFile::positionsAreKeys()
{
    TaskMgr *pcManager = TaskMgr::getInstance();
    pcManager->fromString(QStringLiteral("<=TaskInfo=><-TaskName->n</-TaskName-></=TaskInfo=>").repeated(3));
    pcManager->removeTask(1);
    pcManager->removeTask(1);
    QCOMPARE(pcManager->getTaskNum(), 2);
    QVERIFY(!pcManager->getTask(1));
    QVERIFY(pcManager->getTask(2));

    QPointer<TaskInfo> pcReplaced = pcManager->getTask(0);
    pcManager->addTask(nullptr, 0);
    QVERIFY(pcReplaced);
    delete pcReplaced;
    QCOMPARE(pcManager->getTaskNum(), 2);
    QCOMPARE(pcManager->toString().count("<=TaskInfo=>"), 1);
    bool bRunning = true;
    QVERIFY(!pcManager->isTaskRunning(0, bRunning));
}

/// Each example of the guide is a tasks file that is read and saved as it stands there.
void TestTasksFile::examplesOfTheGuide()
{
    const QString strGuide = guide();
    const QStringList lstPart = strGuide.split("```");
    int nExamples = 0;
    for (const QString &strPart : lstPart) {
        if (!strPart.startsWith("tasks\n"))
            continue;
        ++nExamples;
        const QString strExample = strPart.mid(6);
        TaskMgr::getInstance()->fromString(strExample);
        QVERIFY(TaskMgr::getInstance()->getTaskNum() > 0);
        QCOMPARE(TaskMgr::getInstance()->toString(), strExample);
    }
    QVERIFY(nExamples >= 2);
}

/// Each row of the guide's table of commands tells the truth.
void TestTasksFile::commandsOfTheGuide()
{
    const QString strGuide = guide();
    const QStringList lstRow = strGuide.mid(strGuide.indexOf("| result of step 0")).split('\n').mid(2);
    static QStringList s_lstPrinted;
    int nRows = 0;
    for (; lstRow.value(nRows).startsWith('|'); ++nRows) {
        QStringList lstCell = lstRow.at(nRows).split('|').mid(1, 4);
        for (QString &strCell : lstCell)
            strCell = strCell.trimmed().remove('`');

        TaskInfo cTask(QString(), nullptr);
        cTask.setPrintCallBack([](QString strText) { s_lstPrinted.append(strText); });
        s_lstPrinted.clear();
        cTask.fromString("<-DataSource-><DSName>Probe</DSName><OutputType>RGB</OutputType>"
                         "<OutputID>1</OutputID></-DataSource->");
        TaskItem cItem;
        cItem.m_strArithmID = "probe";
        for (int nStep = 0; nStep < 5; ++nStep) {
            cItem.m_strOptionStr = QStringLiteral("<Trace>1</Trace><Text>%1</Text>").arg(nStep);
            if (nStep == 0)
                cItem.m_strOptionStr += "<Result>" + lstCell.at(0) + "</Result>";
            cTask.getTaskItem().append(cItem);
        }
        QString strMsg;
        cTask.m_pcDS->start();
        cTask.runOnce(strMsg, false, -1, -1);
        const QString strFrame = QStringLiteral("算法\"\"出错, 错误信息:");
        QCOMPARE(QStringList(cTask.m_pcAPM->getParamStrings(1)->getStrings()).join(' '), lstCell.at(1));
        QCOMPARE(s_lstPrinted.join(' '), lstCell.at(2));
        QCOMPARE(strMsg, lstCell.at(3).isEmpty() ? QString() : strFrame + lstCell.at(3));
    }
    QVERIFY(nRows >= 10);
}

QTEST_GUILESS_MAIN(TestTasksFile)
#include "tst_tasksfile.moc"
