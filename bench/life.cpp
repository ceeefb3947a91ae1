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
#include <QProcess>
#include <QTemporaryDir>

#include "MemoryDisk/memorydisk.h"
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

/// Starts that many tasks or threads and waits until each has done something; a unit is all of them.
Measure startTasks(int nTasks)
{
    return [nTasks](int64_t n) {
        double dSeconds = 0;
        for (int64_t nTime = 0; nTime < n; ++nTime) {
            std::vector<std::shared_ptr<Relay>> vRelays;
            std::vector<std::unique_ptr<Flow>> vFlows;
            for (int nTask = 0; nTask < nTasks; ++nTask) {
                vRelays.push_back(std::make_shared<Relay>());
                vFlows.push_back(std::make_unique<Flow>(vRelays.back(), true, Bench::SourcePicture(),
                                                        std::vector<FlowStep>{{Bench::NOTHING, {}}}));
                vRelays.back()->letIn(1);
            }
            const double dBegan = Bench::secondsNow();
            for (const auto &pcFlow : vFlows)
                pcFlow->begin();
            for (const auto &pcRelay : vRelays)
                pcRelay->wait();
            dSeconds += Bench::secondsNow() - dBegan;
            // All are told at once: each is waited for in steps of a tenth of a second.
            for (size_t nTask = 0; nTask < vFlows.size(); ++nTask) {
                vFlows[nTask]->task().m_bExit = true;
                vRelays[nTask]->close();
            }
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

/// From the word to stop until the task is idle.
Measure stopTask()
{
    return [](int64_t n) {
        double dSeconds = 0;
        for (int64_t nTime = 0; nTime < n; ++nTime) {
            const auto pcRelay = std::make_shared<Relay>();
            Flow cFlow(pcRelay, true, {}, {{Bench::NOTHING, {}}});
            cFlow.begin();
            pcRelay->stream(1);
            pcRelay->close();
            const double dBegan = Bench::secondsNow();
            cFlow.task().stopTask();
            dSeconds += Bench::secondsNow() - dBegan;
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

/// The share of a core, in percent, that a task takes whose source has nothing.
Measure idleShare(const QString &strSource)
{
    const auto pcFlow = std::make_shared<Flow>(strSource, std::vector<FlowStep>{{Bench::NOTHING, {}}});
    pcFlow->begin();
    return [pcFlow](int64_t n) {
        const double dBegan = processSeconds();
        usleep(500000);
        return (processSeconds() - dBegan) / 0.5 * 100 * static_cast<double>(n);
    };
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
        int64_t m_nOffered = 0; ///< pictures that found a free buffer
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
        std::atomic<int64_t> nTaken{0};
        std::vector<std::thread> vThreads;
        for (int n = 0; n < 2; ++n) {
            vThreads.emplace_back([&] {
                std::vector<unsigned char> vPicture(size_t{WIDTH} * HEIGHT * 3, 1);
                while (bProduce)
                    nOffered += pcDisk->addDIB(vPicture.data(), WIDTH, HEIGHT) ? 1 : 0;
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
        return {nOffered, nTaken, dLast / dFirst};
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
        cTable.add("start " + std::to_string(nTasks) + " tasks, until all have run once", [nTasks] {
            Case cCase{{"startTask", startTasks(nTasks)}, {"as many threads", startThreads(nTasks)}};
            cCase.m_nUnits = 1;
            return cCase;
        });
    cTable.add("stop a task", [] {
        Case cCase{{"stopTask", stopTask()}, {}};
        cCase.m_nUnits = 1;
        return cCase;
    });
    cTable.add("idle task, empty memory disk, share of a core", [] {
        return once({{"task", idleShare("<DSName>Memory Disk 3</DSName><OutputType>RGB</OutputType>"
                                        "<OutputID>1</OutputID><Config></Config>")},
                     {}},
                    "%");
    });
    cTable.add("idle task, empty picture folder, share of a core", [] {
        const auto pcDir = std::make_shared<QTemporaryDir>();
        const Measure fnShare =
            idleShare("<DSName>Picture Folder</DSName><OutputType>RGB</OutputType><OutputID>1"
                      "</OutputID><Config><Path>" +
                      pcDir->path() + "</Path></Config>");
        return once({{"task", [pcDir, fnShare](int64_t n) { return fnShare(n); }}, {}}, "%");
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
    cTable.add("2 producers, 2 consumers, 60 s, pictures handed over", [] {
        const Crowd::Result &cResult = Crowd::result();
        return once({constant("offered", static_cast<double>(cResult.m_nOffered)),
                     constant("taken", static_cast<double>(cResult.m_nTaken))},
                    "pictures", 1.0);
    });
    cTable.add("2 producers, 2 consumers, 60 s, memory", [] {
        return once({constant("at the end", Crowd::result().m_dGrowth), constant("after 6 s", 1)}, "times",
                    1.01);
    });
}
