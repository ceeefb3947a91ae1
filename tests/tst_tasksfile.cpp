#include <QtTest>

#include <random>

#include <ctime>

#include <QFile>

#include "fixtures/plainreader.h"
#include "taskMgr/taskMgr.h"

namespace
{
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
        static const QStringList s_lstName = {"=TaskInfo=", "=TaskInfo=", "-TaskItem-",
                                              "-TaskItem-", "-TaskName-", "-Kernel-",
                                              "-View-",     "-Describe-", "-DataSource-"};
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

QString bigTask(int nSteps)
{
    TaskInfo cTask("big", nullptr);
    TaskItem cItem;
    cItem.m_strArithmID = "5E1A2C60-6A3E-4A5B-9C57-0D9F8B1E7A11";
    cItem.m_strOptionStr = "<In>1</In><Out>2</Out><Threshold>128</Threshold>";
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

    void readsSoupAsPlainly()
    {
        int nSaid = 0;
        for (unsigned nSeed = 0; nSeed < 8000; ++nSeed) {
            const QString strSoup = MarkerSoup(nSeed).cook(4);
            for (const QString &strText : {strSoup, "<=TaskInfo=>" + strSoup + "</=TaskInfo=>"}) {
                TaskMgr::getInstance()->fromString(strText);
                const QStringList lstSaid = PlainReader::held();
                QVERIFY2(lstSaid == PlainReader::read(strText), qPrintable(strText));
                nSaid += lstSaid.size();
            }
        }
        QVERIFY(nSaid > 32000);
    }

    void readsInLinearTime()
    {
        const auto fnCpuTime = [](const QString &strText) {
            clock_t nBest = std::numeric_limits<clock_t>::max();
            for (int nTry = 0; nTry < 3; ++nTry) {
                const clock_t nBegan = clock();
                TaskMgr::getInstance()->fromString(strText);
                nBest = qMin(nBest, clock() - nBegan);
            }
            return static_cast<double>(nBest);
        };
        // Many steps in a task, and many tasks.
        const QString strTask = bigTask(2);
        const double dSteps = fnCpuTime(bigTask(10000)) / fnCpuTime(bigTask(1000));
        const double dTasks = fnCpuTime(strTask.repeated(3000)) / fnCpuTime(strTask.repeated(300));
        QVERIFY2(dSteps < 30 && dTasks < 30, qPrintable(QString("%1 %2").arg(dSteps).arg(dTasks)));
    }

    /// Each example of the guide is a tasks file that is read and saved as it stands there, again and
    /// again; so are values that no guide would show.
    void examplesOfTheGuide()
    {
        TaskMgr *pcManager = TaskMgr::getInstance();
        QFile cGuide(OCULINEX_SOURCE_DIR "/docs/tasks-file.md");
        QVERIFY(cGuide.open(QIODevice::ReadOnly));
        QStringList lstExample =
            QString::fromUtf8(cGuide.readAll()).split("```").filter(QRegularExpression("^tasks\n"));
        QVERIFY(lstExample.size() >= 2);
        QString strOdd = lstExample.first();
        strOdd.replace(QRegularExpression("<-TaskName->[^<]*<"), "<-TaskName->任务 <1> & more<")
            .replace("<-OptionStr->\n", "<-OptionStr->\n<A>1</A>\n <B>two lines</B>\n");
        lstExample.append(strOdd);
        for (const QString &strPart : qAsConst(lstExample)) {
            const QString strExample = strPart.mid(6);
            pcManager->fromString(strExample);
            QVERIFY(pcManager->getTaskNum() > 0);
            for (int nTime = 0; nTime < 2; ++nTime)
                QCOMPARE(pcManager->toString(), strExample);
        }
        // A source that can't be made is forgotten with the next save.
        QVERIFY(pcManager->getTask(0)->m_pcDS);
        pcManager->fromString(pcManager->toString().replace("<DSName>", "<DSName>no such "));
        QVERIFY(!pcManager->getTask(0)->m_pcDS);
        QVERIFY(!pcManager->toString().contains("-DataSource-"));
    }
};

QTEST_GUILESS_MAIN(TestTasksFile)
#include "tst_tasksfile.moc"
