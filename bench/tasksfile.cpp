#include <memory>

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include "OculinexQTStandAloneInQt.h"
#include "cases.h"
#include "taskMgr/taskMgr.h"

namespace
{
using Bench::Measure;

/// A tasks file on disk.
class TasksFile
{
public:
    TasksFile(int nTasks, int nSteps) : m_nTasks(nTasks), m_nSteps(nSteps)
    {
        const QByteArray achStep =
            QByteArrayLiteral("<-TaskItem->\n<-MaxExeTimes->-1</-MaxExeTimes->\n"
                              "<-ArithmID->OCX_Threshold</-ArithmID->\n<-OptionStr->\n"
                              "<InputID>1</InputID><OutputID>2</OutputID><Level>100</Level>\n"
                              "</-OptionStr->\n<-ClassName->图像处理</-ClassName->\n"
                              "<-ArithmName->二值化</-ArithmName->\n"
                              "<-Describe->Find what is bright</-Describe->\n</-TaskItem->\n");
        const QByteArray achTask = "<=TaskInfo=>\n<-TaskName->Task</-TaskName->\n<-Kernel->-1</-Kernel->\n"
                                   "<-View->0</-View->\n<-DataSource->\n</-DataSource->\n" +
                                   achStep.repeated(nSteps) + "</=TaskInfo=>\n";
        QFile cFile(m_cDir.filePath("given.tasks"));
        cFile.open(QIODevice::WriteOnly);
        cFile.write(achTask.repeated(nTasks));
    }
    ~TasksFile() { TaskMgr::getInstance()->clear(); }
    TasksFile(const TasksFile &) = delete;
    TasksFile &operator=(const TasksFile &) = delete;

    int steps() const { return m_nTasks * m_nSteps; }
    QByteArray path(const char *szName) const { return m_cDir.filePath(szName).toUtf8(); }

private:
    int m_nTasks;
    int m_nSteps;
    QTemporaryDir m_cDir;
};

using File = std::shared_ptr<TasksFile>;

/// Turns files into steps: a unit is a step.
Measure perStep(const Measure &fnFiles, int nSteps)
{
    return [=](int64_t n) {
        const int64_t nFiles = (n + nSteps - 1) / nSteps;
        return fnFiles(nFiles) * static_cast<double>(n) / static_cast<double>(nFiles * nSteps);
    };
}

Measure parse(const File &pcFile)
{
    return Bench::timed(
        [pcFile, achPath = pcFile->path("given.tasks")]() mutable { openTasksFile(achPath.data()); });
}

/// Opens the file whenever other tasks may be loaded, outside of the time that counts.
Measure write(const File &pcFile)
{
    return [pcFile](int64_t n) {
        openTasksFile(pcFile->path("given.tasks").data());
        return Bench::timed(
            [achPath = pcFile->path("ours.tasks")]() mutable { saveTasksFile(achPath.data()); })(n);
    };
}

QString readPlainly(const File &pcFile)
{
    QFile cFile(pcFile->path("given.tasks"));
    cFile.open(QIODevice::ReadOnly);
    return QString::fromUtf8(cFile.readAll());
}
} // namespace

void Bench::addTasksFile(Table &cTable)
{
    cTable.add("open 100 tasks of 1000 steps", [] {
        const auto pcFile = std::make_shared<TasksFile>(100, 1000);
        Case cCase{{"openTasksFile", parse(pcFile)}, {"plain read and one copy", timed([pcFile] {
                                                          QString strText = readPlainly(pcFile);
                                                          strText.data(); // its own copy already
                                                          QString strCopy(strText.constData(),
                                                                          strText.size());
                                                          benchmark::DoNotOptimize(strCopy);
                                                      })}};
        cCase.m_dGoal = 10;
        return cCase;
    });
    cTable.add("save 100 tasks of 1000 steps", [] {
        const auto pcFile = std::make_shared<TasksFile>(100, 1000);
        return Case{{"saveTasksFile", write(pcFile)},
                    {"plain write", timed([pcFile, strText = readPlainly(pcFile)] {
                         QFile cFile(pcFile->path("peer.tasks"));
                         cFile.open(QIODevice::WriteOnly);
                         cFile.write(strText.toUtf8());
                     })}};
    });
    // Growth that is not linear would multiply the time a step by up to ten from row to row.
    constexpr double FLAT = 1.5;
    for (const int nTasks : {10, 100, 1000}) {
        for (const bool bParse : {true, false}) {
            const std::string strWhat = bParse ? "open " : "save ";
            cTable.add(strWhat + std::to_string(nTasks) + " tasks of 100 steps, a step", [=] {
                const auto fnSide = [bParse](int nOfTasks) {
                    const auto pcFile = std::make_shared<TasksFile>(nOfTasks, 100);
                    return perStep(bParse ? parse(pcFile) : write(pcFile), pcFile->steps());
                };
                Case cCase{{bParse ? "openTasksFile" : "saveTasksFile", fnSide(nTasks)},
                           {"the same with a tenth of the tasks, a step", fnSide(nTasks / 10)}};
                cCase.m_dGoal = FLAT;
                return cCase;
            });
        }
    }
}
