#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"
#include "cases.h"
#include "flow.h"
#include "taskMgr/taskMgr.h"

namespace
{
using Bench::Case;
using Bench::Flow;
using Bench::FlowStep;
using Bench::Measure;
using Bench::Relay;

/// The manager's tasks, which are all there are while it lives; each may run once.
class ManagedTasks
{
public:
    explicit ManagedTasks(int nTasks)
    {
        for (int nTask = 0; nTask < nTasks; ++nTask) {
            m_vRelays.push_back(std::make_shared<Relay>());
            m_vRelays.back()->letIn(1);
            TaskMgr::getInstance()->addTask(
                Bench::newFedTask(m_vRelays.back(), true, {}, {{Bench::NOTHING, {}}}).release(), nTask);
        }
    }
    ~ManagedTasks()
    {
        // All are told at once: each is waited for in steps of a tenth of a second.
        for (TaskInfo *pcTask : qAsConst(TaskMgr::getInstance()->m_mapTask))
            pcTask->m_bExit = true;
        letGo();
        TaskMgr::getInstance()->clear();
    }
    ManagedTasks(const ManagedTasks &) = delete;
    ManagedTasks &operator=(const ManagedTasks &) = delete;

    void waitForRuns() const
    {
        for (const auto &pcRelay : m_vRelays)
            pcRelay->wait();
    }
    /// The sources have nothing from now on.
    void letGo() const
    {
        for (const auto &pcRelay : m_vRelays)
            pcRelay->close();
    }

private:
    std::vector<std::shared_ptr<Relay>> m_vRelays;
};

/// Starts that many tasks or threads and waits until each has done something; a unit is all of them.
Measure startTasks(int nTasks)
{
    return [nTasks](int64_t n) {
        double dSeconds = 0;
        for (int64_t nTime = 0; nTime < n; ++nTime) {
            const ManagedTasks cTasks(nTasks);
            dSeconds += Bench::timed([&] {
                startAllTasks();
                cTasks.waitForRuns();
            })(1);
        }
        return dSeconds;
    };
}

Measure startThreads(int nThreads)
{
    return [nThreads](int64_t n) {
        double dSeconds = 0;
        for (int64_t nTime = 0; nTime < n; ++nTime) {
            std::vector<std::unique_ptr<Relay>> vRelays;
            for (int nThread = 0; nThread < nThreads; ++nThread) {
                vRelays.push_back(std::make_unique<Relay>());
                vRelays.back()->letIn(1);
            }
            std::vector<std::thread> vThreads;
            vThreads.reserve(vRelays.size());
            const double dBegan = Bench::secondsNow();
            for (const auto &pcRelay : vRelays)
                vThreads.emplace_back([&cRelay = *pcRelay] {
                    cRelay.enter();
                    cRelay.leave();
                });
            for (const auto &pcRelay : vRelays)
                pcRelay->wait();
            dSeconds += Bench::secondsNow() - dBegan;
            for (std::thread &cThread : vThreads)
                cThread.join();
        }
        return dSeconds;
    };
}

/// From the word to stop until all tasks are idle.
Measure stopTasks(int nTasks)
{
    return [nTasks](int64_t n) {
        double dSeconds = 0;
        for (int64_t nTime = 0; nTime < n; ++nTime) {
            const ManagedTasks cTasks(nTasks);
            startAllTasks();
            cTasks.waitForRuns();
            cTasks.letGo();
            dSeconds += Bench::timed(stopAllTasks)(1);
        }
        return dSeconds;
    };
}

double processSeconds()
{
    timespec cTime = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cTime);
    return static_cast<double>(cTime.tv_sec) + static_cast<double>(cTime.tv_nsec) * 1e-9;
}

/// Tasks whose sources have nothing. They are as many as start within a second, evenly, so that also a
/// short look sees its part of what each does once a second.
class IdleTasks
{
public:
    explicit IdleTasks(const QString &strSource)
    {
        for (int n = 0; n < NUM; ++n) {
            m_vFlows.push_back(
                std::make_unique<Flow>(strSource, std::vector<FlowStep>{{Bench::NOTHING, {}}}));
            m_vFlows.back()->begin();
            usleep(1000000 / NUM);
        }
    }
    ~IdleTasks()
    {
        for (const auto &pcFlow : m_vFlows)
            pcFlow->task().m_bExit = true;
    }
    IdleTasks(const IdleTasks &) = delete;
    IdleTasks &operator=(const IdleTasks &) = delete;

    /// The share of a core, in percent, that one of them takes.
    static double share()
    {
        const double dBegan = processSeconds();
        const double dSeconds = Bench::timed([] { usleep(100000); })(1);
        return (processSeconds() - dBegan) / dSeconds * 100 / NUM;
    }

private:
    static constexpr int NUM = 20;
    std::vector<std::unique_ptr<Flow>> m_vFlows;
};

Case idleCase(const QString &strSource)
{
    Case cCase{{"task", [pcTasks = std::make_shared<IdleTasks>(strSource)](
                            int64_t n) { return IdleTasks::share() * static_cast<double>(n); }},
               {}};
    cCase.m_nUnits = 1;
    cCase.m_szUnit = "%";
    return cCase;
}

/// The plug-in folders beside a copy of this program: 60 copies of one plug-in.
class ManyPlugins
{
public:
    static constexpr int NUM = 60;

    ManyPlugins()
    {
        const QDir cBin(QCoreApplication::applicationDirPath());
        QDir(m_cDir.path()).mkdir("baseArithm");
        QFile::copy(QCoreApplication::applicationFilePath(), program());
        for (int n = 0; n < NUM; ++n)
            QFile::copy(cBin.filePath("baseArithm/Threshold.so"),
                        m_cDir.filePath(QStringLiteral("baseArithm/Threshold%1.so").arg(n)));
        if (QDir(m_cDir.filePath("baseArithm")).entryList(QDir::Files).size() != NUM)
            throw std::runtime_error("the plug-in Threshold can't be copied");
    }

    /// What the program says that it took.
    double startUp(const char *szSide) const
    {
        QProcess cProcess;
        cProcess.start(program(), {"--start-up", szSide});
        cProcess.waitForFinished(-1);
        if (cProcess.exitCode() != 0)
            throw std::runtime_error("a start with 60 plug-ins failed");
        return cProcess.readAllStandardOutput().toDouble();
    }

private:
    QString program() const { return m_cDir.filePath("oculinex-bench"); }

    QTemporaryDir m_cDir;
};

/// Two producers and two consumers on one memory disk.
class Crowd
{
public:
    static constexpr int WIDTH = 640;
    static constexpr int HEIGHT = 480;

    struct Result {
        int64_t m_nOffered = 0;
        int64_t m_nAccepted = 0; ///< of those offered
        int64_t m_nTaken = 0;
        double m_dGrowth = 0; ///< resident memory at the end to that after the first tenth
    };

    static const Result &result()
    {
        static const Result s_cResult = run(60);
        return s_cResult;
    }

private:
    static double residentPages()
    {
        QFile cFile(QStringLiteral("/proc/self/statm"));
        return cFile.open(QIODevice::ReadOnly) ? cFile.readAll().split(' ').value(1).toDouble() : 0;
    }

    static Result run(int nSeconds)
    {
        MemoryDisk *pcDisk = MemoryDisk::getInstance(5);
        std::atomic<bool> bProduce{true};
        std::atomic<int> nProducers{2};
        std::atomic<int64_t> nOffered{0};
        std::atomic<int64_t> nAccepted{0};
        std::atomic<int64_t> nTaken{0};
        std::vector<std::thread> vThreads;
        for (int n = 0; n < 2; ++n) {
            vThreads.emplace_back([&] {
                std::vector<unsigned char> vPicture(size_t{WIDTH} * HEIGHT * 3, 1);
                while (bProduce) {
                    ++nOffered;
                    nAccepted += pcDisk->addDIB(vPicture.data(), WIDTH, HEIGHT) ? 1 : 0;
                }
                --nProducers;
            });
            vThreads.emplace_back([&] {
                std::vector<unsigned char> vPicture(size_t{WIDTH} * HEIGHT * 3);
                for (;;) {
                    const bool bLast = nProducers == 0;
                    MemoryDisk::DIB *pcRecord = pcDisk->requestDIB();
                    if (pcRecord) {
                        memcpy(vPicture.data(), pcRecord->getDIB(), vPicture.size());
                        pcDisk->releaseDIB(pcRecord);
                        ++nTaken;
                    } else if (bLast) {
                        break;
                    }
                }
            });
        }
        sleep(static_cast<unsigned>(nSeconds / 10));
        const double dFirst = residentPages();
        sleep(static_cast<unsigned>(nSeconds - nSeconds / 10));
        const double dLast = residentPages();
        bProduce = false;
        for (std::thread &cThread : vThreads)
            cThread.join();
        return {nOffered, nAccepted, nTaken, dLast / dFirst};
    }
};

Bench::Side constant(const char *szName, double dValue)
{
    return {szName, [dValue](int64_t n) { return dValue * static_cast<double>(n); }};
}

/// A row of which one look is enough.
Case once(Case cCase, const char *szUnit, double dGoal = 0)
{
    cCase.m_nUnits = 1;
    cCase.m_nRepetitions = 1;
    cCase.m_szUnit = szUnit;
    cCase.m_dGoal = dGoal;
    return cCase;
}
} // namespace

int Bench::runStartUp(int nArgs, char **pszArgs)
{
    if (nArgs != 3 || strcmp(pszArgs[1], "--start-up") != 0)
        return -1;
    const QCoreApplication cApplication(nArgs, pszArgs);
    const double dBegan = secondsNow();
    if (strcmp(pszArgs[2], "ours") == 0) {
        if (ArithmFactory::getInstance()->m_lstArithmLib.size() != ManyPlugins::NUM)
            return 1;
    } else {
        const QDir cDir(QCoreApplication::applicationDirPath() + "/baseArithm");
        for (const QString &strName : cDir.entryList(QDir::Files)) {
            void *pvLibrary = dlopen(QFile::encodeName(cDir.filePath(strName)).constData(), RTLD_NOW);
            for (const char *szFunction :
                 {"getID", "showConfigWindow", "execute", "getArithmClass", "getArithmName"})
                if (!pvLibrary || !dlsym(pvLibrary, szFunction))
                    return 1;
        }
    }
    printf("%.9f\n", secondsNow() - dBegan);
    return 0;
}

void Bench::addLife(Table &cTable)
{
    for (const int nTasks : {1, 100})
        cTable.add("startAllTasks, " + std::to_string(nTasks) + " tasks, until all have run once", [nTasks] {
            Case cCase{{"startAllTasks", startTasks(nTasks)}, {"as many threads", startThreads(nTasks)}};
            cCase.m_nUnits = 1;
            return cCase;
        });
    cTable.add("stopAllTasks, 1 tasks", [] {
        Case cCase{{"stopAllTasks", stopTasks(1)}, {"a nap of 0.1 s", timed([] { usleep(100000); })}};
        cCase.m_nUnits = 1;
        return cCase;
    });
    // Ten seconds long, and of a hundred waits already.
    cTable.add("stopAllTasks, 100 tasks", [] {
        return once({{"stopAllTasks", stopTasks(100)}, constant("as many naps of 0.1 s", 10)}, "s");
    });
    cTable.add("idle task, empty memory disk, share of a core", [] {
        return idleCase("<DSName>Memory Disk 3</DSName><OutputType>RGB</OutputType>"
                        "<OutputID>1</OutputID><Config></Config>");
    });
    cTable.add("idle task, empty picture folder, share of a core", [] {
        const auto pcDir = std::make_shared<QTemporaryDir>();
        // Each of the tasks tells that there are no pictures.
        QLoggingCategory::setFilterRules("oculinex.source.warning=false");
        Case cCase = idleCase("<DSName>Picture Folder</DSName><OutputType>RGB</OutputType><OutputID>1"
                              "</OutputID><Config><Path>" +
                              pcDir->path() + "</Path></Config>");
        cCase.m_cOurs.m_fnMeasure = [pcDir, fnShare = cCase.m_cOurs.m_fnMeasure](int64_t n) {
            return fnShare(n);
        };
        return cCase;
    });
    cTable.add("start-up with 60 plug-ins", [] {
        const auto pcPlugins = std::make_shared<ManyPlugins>();
        const auto fnSide = [&](const char *szSide) {
            return [=](int64_t n) { return pcPlugins->startUp(szSide) * static_cast<double>(n); };
        };
        Case cCase{{"registry", fnSide("ours")}, {"dlopen and dlsym of the same", fnSide("peer")}};
        cCase.m_nUnits = 1;
        return cCase;
    });
    const auto fnCounts = [](const char *szOurs, int64_t nOurs, const char *szPeer, int64_t nPeer) {
        Case cCase =
            once({constant(szOurs, static_cast<double>(nOurs)), constant(szPeer, static_cast<double>(nPeer))},
                 "pictures", 1.0);
        cCase.m_bExact = true;
        return cCase;
    };
    cTable.add("2 producers, 2 consumers, 60 s, pictures offered", [&] {
        return fnCounts("offered", Crowd::result().m_nOffered, "accepted", Crowd::result().m_nAccepted);
    });
    cTable.add("2 producers, 2 consumers, 60 s, pictures accepted", [&] {
        return fnCounts("accepted", Crowd::result().m_nAccepted, "taken", Crowd::result().m_nTaken);
    });
    cTable.add("2 producers, 2 consumers, 60 s, memory", [] {
        return once({constant("at the end", Crowd::result().m_dGrowth), constant("after 6 s", 1)}, "times",
                    1.01);
    });
}
