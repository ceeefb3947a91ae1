// Many threads at once, in an order that is different each time. OCULINEX_SEED repeats a row of random
// calls (not the order of the threads); OCULINEX_STRESS_MS makes it longer.

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <random>
#include <thread>

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "DataSource/datasource.h"
#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAlone.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithmregister.h"
#include "arithmparammgr.h"
#include "fixtures/together.h"
#include "globalfunction.h"
#include "qguard.h"
#include "taskMgr/taskMgr.h"

namespace
{
std::atomic<unsigned> s_nSeed{1};

/// From 0 to nBelow - 1; each thread has its own row of numbers.
unsigned random(unsigned nBelow)
{
    static std::atomic<unsigned> s_nThreads{0};
    thread_local std::mt19937 s_cNumbers(s_nSeed + ++s_nThreads);
    return static_cast<unsigned>(s_cNumbers()) % nBelow;
}
} // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(OCULINEX_TSAN)
namespace
{
void delay()
{
    const unsigned nChance = random(512);
    if (nChance == 0)
        usleep(random(300));
    else if (nChance < 16)
        std::this_thread::yield();
}
} // namespace

/// Both stand before the real ones: whoever locks takes its time before and after. The sanitizers have
/// their own.
void QMutex::lock() noexcept
{
    static const auto s_fnNext = reinterpret_cast<void (*)(QMutex *)>(dlsym(RTLD_NEXT, "_ZN6QMutex4lockEv"));
    delay();
    s_fnNext(this);
    delay();
}

extern "C" __attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t *pcMutex) noexcept
{
    static const auto s_fnNext =
        reinterpret_cast<int (*)(pthread_mutex_t *)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    delay();
    const int nError = s_fnNext(pcMutex);
    delay();
    return nError;
}
#endif

namespace
{
const int STRESS_MS = qMax(2000, qEnvironmentVariableIntValue("OCULINEX_STRESS_MS"));

std::atomic<int> s_nInside{0}; ///< steps that run now
std::atomic<int> s_nTwice{0};  ///< steps that met another one of their own task

/// Fills lists and fails now and then: in one of as many runs as its config text says, never with 0.
char *fill(char *pchConfig, ArithmParamMgr *pcAPM)
{
    static std::mutex s_cMutex;
    static QSet<ArithmParamMgr *> s_setInside;
    static char s_szBlank[] = "";
    static char s_szFailed[] = "failed";
    ++s_nInside;
    {
        const std::lock_guard<std::mutex> cGuard(s_cMutex);
        s_nTwice += s_setInside.contains(pcAPM);
        s_setInside.insert(pcAPM);
    }
    const int nX = static_cast<int>(random(64));
    pcAPM->getParamPoints(1)->clearPoints();
    pcAPM->getParamPoints(1)->addPoint({nX, 5});
    pcAPM->getParamStrings(1)->clearStrings();
    pcAPM->getParamStrings(1)->addString(QString::number(nX));
    usleep(random(300));
    {
        const std::lock_guard<std::mutex> cGuard(s_cMutex);
        s_setInside.remove(pcAPM);
    }
    --s_nInside;
    const unsigned nOneIn = static_cast<unsigned>(atoi(pchConfig));
    return nOneIn > 0 && random(nOneIn) == 0 ? s_szFailed : s_szBlank;
}

/// One task a line: "source, type, view: steps", steps apart by '|', each "ID config".
QByteArray tasks(const QString &strTasks)
{
    const QString strDraw = "KQ_Drawing <DataID>1</DataID><Config><DspLen>1</DspLen></Config>"
                            "<DataType>\\1</DataType>";
    const QString strSave = "KQ_Saving <BasePath>saved</BasePath><StringID>s</StringID><Identity>2</Identity>"
                            "<Format>2</Format><Wnd>4</Wnd><PicType>RGB</PicType><PicID>1</PicID>";
    QString strText;
    for (const QString &strTask : strTasks.split('\n', Qt::SkipEmptyParts)) {
        const QStringList lstHead = strTask.section(": ", 0, 0).split(", ");
        strText += QString("<=TaskInfo=><-View->%3</-View-><-DataSource-><DSName>%1</DSName><OutputType>%2"
                           "</OutputType><OutputID>1</OutputID><Config><Width>60</Width><Height>40</Height>"
                           "</Config></-DataSource->")
                       .arg(lstHead[0], lstHead[1], lstHead[2]);
        for (QString strStep : strTask.section(": ", 1).split('|')) {
            strStep.replace(QRegularExpression("DRAW (.)"), strDraw).replace("SAVE", strSave);
            strText += QString("<-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->%1</-ArithmID->"
                               "<-OptionStr->%2</-OptionStr-></-TaskItem->")
                           .arg(strStep.section(' ', 0, 0), strStep.section(' ', 1));
        }
        strText += "</=TaskInfo=>";
    }
    return strText.toUtf8();
}

const QByteArray ALL_TASKS = tasks(R"(
Probe, RGB, 0: fill 0|KQ_MemoryDisk <MemDisk>0</MemDisk><InputID>1</InputID><InputType>RGB</InputType>
Probe, Gray8, 1: fill 90|KQ_MemoryDisk <MemDisk>1</MemDisk><InputID>1</InputID><InputType>Gray8</InputType>
Memory Disk 0, RGB, 0: fill 60|DRAW 0|DRAW 3|DRAW 7
Probe, RGB, 2: fill 60|DRAW 0|DRAW 3|DRAW 7
Memory Disk 1, Gray8, 1: DRAW 1|fill 40|probe <Result><CMD>print:p</CMD></Result>
Memory Disk 0, RGB, 3: SAVE|fill 50
Probe, RGB, 2: fill 2
-, RGB, 0: fill 2
)");
constexpr unsigned TASKS = 8;

bool isRunning(int nTask)
{
    bool bRunning = false;
    return IsTaskRunning(bRunning, nTask) && bRunning;
}

/// Other threads of the host for as long as it lives.
class Others
{
public:
    Others()
    {
        loop([] {
            char szText[20];
            getErrMsg(szText, sizeof szText);
            getOutputMsg(szText, sizeof szText);
            TaskStatus cStatus;
            const int nTask = static_cast<int>(random(TASKS + 2)) - 1;
            isRunning(nTask);
            getTaskStatus(nTask, cStatus);
        });
        // Nobody waits long for a picture or a free buffer, so that a stop does not take a second.
        loop([] {
            unsigned char achPicture[4 * 3] = {};
            MemoryDisk *pcColour = MemoryDisk::getInstance(0);
            MemoryDisk *pcGrey = MemoryDisk::getInstance(1);
            if (pcColour->getDIBPreparedNum() == 0)
                pcColour->addDIB(achPicture, 1, 3);
            if (pcColour->getDIBIdleNum() == 0)
                pcColour->emptyDIBPrepared();
            if (pcGrey->getGray8PreparedNum() == 0)
                pcGrey->addGray8(achPicture, 4, 3);
            if (pcGrey->getGray8IdleNum() == 0)
                pcGrey->emptyGray8Prepared();
        });
        for (int nReader = 0; nReader < 2; ++nReader)
            loop([this] {
                std::vector<unsigned char> auchView(size_t(303) * 100);
                m_nDrawn += getDrawingWindow(static_cast<int>(random(3)), auchView.data(),
                                             1 + static_cast<int>(random(100)),
                                             1 + static_cast<int>(random(100))) >= 0;
            });
    }
    ~Others()
    {
        m_bEnd = true;
        for (std::thread &cThread : m_lstThreads)
            cThread.join();
    }
    Others(const Others &) = delete;
    Others &operator=(const Others &) = delete;

    std::atomic<int> m_nDrawn{0};

private:
    template <class Work>
    void loop(const Work &fnWork)
    {
        m_lstThreads.emplace_back([this, fnWork] {
            while (!m_bEnd) {
                fnWork();
                usleep(random(200));
            }
        });
    }
    std::atomic<bool> m_bEnd{false};
    std::vector<std::thread> m_lstThreads;
};

/// The first calls of a process come from four threads at once; 0 when all meet the same objects.
int firstUse()
{
    constexpr int THREADS = 4;
    std::array<std::array<const void *, 6>, THREADS> acSeen{};
    together(THREADS, [&](int nThread) {
        acSeen[static_cast<size_t>(nThread)] = {
            OculinexQtStandAlone::getInstance(), TaskMgr::getInstance(),
            GlobalFunction::getInstance(),       ArithmMgr::getInstance()->getArithm("probe"),
            DataSource::getInstance(),           MemoryDisk::getInstance(0)};
    });
    for (const auto &cSeen : acSeen)
        if (cSeen != acSeen[0] || std::count(cSeen.begin(), cSeen.end(), nullptr) > 0)
            return 1;
    return 0;
}
} // namespace

class TestRaces : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qInfo("OCULINEX_SEED=%u", s_nSeed.load());
        QDir::setCurrent(m_cDir.path());
        QVERIFY(QDir().mkdir("saved"));
        ArithmFactory::getInstance()->getArithms()->append(
            {"C", "fill",
             new Arithm(
                 false, [] { return "fill"; }, nullptr, fill)});
        for (const int nView : {0, 1, 2, 3})
            useDrawingWindow(nView, 60, 40);
    }

    void cleanup()
    {
        TaskMgr::getInstance()->clear();
        QCOMPARE(s_nInside.load(), 0);
        QCOMPARE(s_nTwice.load(), 0);
    }

    /// One thread controls, others look on.
    void randomCalls()
    {
        TaskMgr::getInstance()->fromString(ALL_TASKS);
        QCOMPARE(saveTasksFile(QByteArray("all.tasks").data()), "");
        const auto fnTask = [] { return static_cast<int>(random(TASKS + 1)); };
        const auto fnIdle = [&] { // most of the time
            const int nTask = fnTask();
            if (random(4) > 0)
                stopTask(nTask);
            return nTask;
        };
        const std::pair<unsigned, std::function<void()>> CALLS[] = {
            {12, [&] { startTask(fnTask()); }},
            {6, [&] { stopTask(fnTask()); }},
            {6, [] { startAllTasks(); }},
            {1, [] { stopAllTasks(); }},
            {2, [&] { runTaskOnce(fnTask()); }},
            {1, [] { runAllTasksOnce(); }},
            {1, [&] { showConfigWindow(fnIdle(), static_cast<int>(random(5))); }},
            {1, [&] { selectDataSource(fnIdle()); }},
            {1, [] { openTasksFile(QByteArray("all.tasks").data()); }},
            {2, [] { saveTasksFile(QByteArray("saved.tasks").data()); }},
            {4, [] { useDrawingWindow(static_cast<int>(random(4)), 1 + static_cast<int>(random(90)), 40); }},
            {1, [] { GlobalFunction::getInstance()->removeView(static_cast<int>(random(4))); }},
            {2, [] { enableTaskStatus(random(2) == 0); }},
            {1, [&] { TaskMgr::getInstance()->removeTask(fnTask()); }},
            {6, [] { QCoreApplication::processEvents(); }},
            {8, [] { usleep(random(5000)); }},
        };
        unsigned nWeights = 0;
        for (const auto &cCall : CALLS)
            nWeights += cCall.first;

        QTimer cCloser; // of the windows that two of the calls open
        connect(&cCloser, &QTimer::timeout, [&] {
            if (QWidget *pcTop = QApplication::activeModalWidget())
                pcTop->close();
        });
        cCloser.start(1);

        auto pcOthers = std::make_unique<Others>();
        QElapsedTimer cTimer;
        for (cTimer.start(); cTimer.elapsed() < STRESS_MS;) {
            unsigned nChosen = random(nWeights);
            const auto *pcCall = std::begin(CALLS);
            while (nChosen >= pcCall->first)
                nChosen -= (pcCall++)->first;
            pcCall->second();
        }
        stopAllTasks();
        QCOMPARE(s_nInside.load(), 0);

        // Whatever happened, all works as before and no buffer is missing.
        openTasksFile(QByteArray("all.tasks").data());
        useDrawingWindow(0, 60, 40);
        const int nDrawn = pcOthers->m_nDrawn;
        // Those that fail by chance start again; a machine that does much else takes its time.
        QTRY_VERIFY_WITH_TIMEOUT((startAllTasks(), pcOthers->m_nDrawn > nDrawn + 20), 60000);
        stopAllTasks();
        pcOthers.reset();
        for (const int nDisk : {0, 1}) {
            MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
            QCOMPARE(pcDisk->getDIBIdleNum() + pcDisk->getDIBPreparedNum(), pcDisk->getDIBBuffNum());
            QCOMPARE(pcDisk->getGray8IdleNum() + pcDisk->getGray8PreparedNum(), pcDisk->getGray8BuffNum());
            QVERIFY(!(pcDisk->m_lstDIBIdle + pcDisk->m_lstDIBPrepared).contains(nullptr));
            QVERIFY(!(pcDisk->m_lstGray8Idle + pcDisk->m_lstGray8Prepared).contains(nullptr));
        }
    }

    /// A stop and a start meet tasks that fail by themselves at that very moment.
    void failingTasks()
    {
        TaskMgr::getInstance()->fromString(tasks(QString("Probe, RGB, 0: fill 2\n").repeated(4)));
        Others cOthers;
        QElapsedTimer cTimer;
        for (cTimer.start(); cTimer.elapsed() < STRESS_MS / 4;) {
            startAllTasks();
            const int nTask = static_cast<int>(random(4));
            while (isRunning(nTask)) {
            }
            startTask(nTask); // in the instant of its failure
            usleep(random(1000));
            stopAllTasks();
            for (int nStopped = 0; nStopped < 4; ++nStopped)
                QVERIFY(!isRunning(nStopped));
            QCOMPARE(s_nInside.load(), 0);
            if (random(4) == 0)
                QCoreApplication::processEvents(); // late news of failures
        }
    }

    void firstUseByManyThreads()
    {
        for (int nRound = 0; nRound < 5; ++nRound)
            QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(), {"--first-use"}), 0);
    }

    void unloadedWhileRunning()
    {
        TaskMgr::getInstance()->fromString(tasks("Probe, RGB, 0: probe <Sleep>1</Sleep>"));
        QCOMPARE(saveTasksFile(QByteArray("plain.tasks").data()), "");
        Dl_info cInfo;
        QVERIFY(dladdr(reinterpret_cast<void *>(&::startAllTasks), &cInfo) != 0);
        QCOMPARE(QProcess::execute(QCoreApplication::applicationDirPath() + "/unloader",
                                   {QFile::decodeName(cInfo.dli_fname), m_cDir.filePath("plain.tasks")}),
                 0);
    }

private:
    QTemporaryDir m_cDir;
};

int main(int argc, char **argv)
{
    const unsigned nGiven = qEnvironmentVariable("OCULINEX_SEED").toUInt();
    s_nSeed = nGiven != 0 ? nGiven : static_cast<unsigned>(QDateTime::currentMSecsSinceEpoch());
    if (argc == 2 && strcmp(argv[1], "--first-use") == 0)
        return firstUse();
    QApplication cApp(argc, argv);
    TestRaces cTest;
    return QTest::qExec(&cTest, argc, argv);
}
#include "tst_races.moc"
