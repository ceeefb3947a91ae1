#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>

#include <opencv2/imgproc.hpp>

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>

#include "Blobs/labeller.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmparammgr.h"
#include "cases.h"
#include "flow.h"
#include "taskMgr/taskMgr.h"

namespace
{
using Bench::FlowStep;
using Bench::Measure;

/// The host's side of a view: one buffer, painted until nothing waits.
void readView(int nView, unsigned char *puchHost, int nWidth, int nHeight)
{
    while (getDrawingWindow(nView, puchHost, nWidth, nHeight) == 1) {
    }
}

/// A colour picture that is decoded already goes through grey, threshold, blobs, drawing and the
/// reading of the view, all on the task's thread.
class Inspection
{
public:
    Inspection(int nView, int nWidth, int nHeight)
        : m_cPicture(Bench::photograph(nWidth, nHeight, true)),
          m_cHost(Bench::storeCopy(cv::Mat::zeros(nHeight, nWidth, CV_8UC3))),
          m_cFlow(m_pcRelay, true, {m_cPicture.data, nWidth, nHeight}, steps(nView))
    {
        useDrawingWindow(nView, nWidth, nHeight);
        m_cFlow.task().m_nWhichView = nView;
    }

    Bench::Flow &flow() { return m_cFlow; }
    Bench::Relay &relay() { return *m_pcRelay; }

private:
    std::vector<FlowStep> steps(int nView)
    {
        return {
            {"OCX_ToGray", "<InputID>1</InputID><OutputID>1</OutputID>"},
            {"OCX_Threshold", "<InputID>1</InputID><OutputID>2</OutputID><Method>Otsu</Method>"},
            {"OCX_Blobs",
             "<InputID>2</InputID><AreasID>1</AreasID><StringsID>1</StringsID><MinSize>500</MinSize>"},
            {"KQ_Drawing", "<DataType>0</DataType><DataID>1</DataID><Config><Scale>0</Scale></Config>"},
            {"KQ_Drawing", "<DataType>6</DataType><DataID>1</DataID><Config><Color>65280</Color></Config>"},
            Bench::call([this, nView](ArithmParamMgr &) {
                readView(nView, m_cHost.data, m_cHost.cols, m_cHost.rows);
            })};
    }

    cv::Mat m_cPicture;
    cv::Mat m_cHost;
    std::shared_ptr<Bench::Relay> m_pcRelay = std::make_shared<Bench::Relay>();
    Bench::Flow m_cFlow;
};

/// The same by hand, with the copies that the rules ask of us: into the store, and into the drawing.
class HandWritten
{
public:
    HandWritten(int nWidth, int nHeight)
        : m_cPicture(Bench::photograph(nWidth, nHeight, true)),
          m_cStore(Bench::storeCopy(m_cPicture)),
          m_cDrawing(Bench::storeCopy(m_cPicture)),
          m_cHost(Bench::storeCopy(m_cPicture))
    {
    }

    void run()
    {
        m_cPicture.copyTo(m_cStore);
        cv::cvtColor(m_cStore, m_cGrey, cv::COLOR_BGR2GRAY);
        cv::threshold(m_cGrey, m_cBinary, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
        m_vFound.clear();
        for (const Labeller::Area &cArea : m_cLabeller.find(m_cBinary, false, true))
            if (cArea.m_nSize >= 500)
                m_vFound.push_back(cArea);
        m_cStore.copyTo(m_cDrawing);
        cv::cvtColor(m_cDrawing, m_cHost, cv::COLOR_BGR2RGB);
        const cv::Scalar cColour(0, 255, 0);
        for (const Labeller::Area &c : m_vFound) {
            cv::rectangle(m_cHost, cv::Point(c.m_nLeft, c.m_nTop), cv::Point(c.m_nRight, c.m_nBottom),
                          cColour);
            cv::drawMarker(m_cHost, {c.m_nSeedX, c.m_nSeedY}, cColour, cv::MARKER_CROSS, 10);
        }
    }

private:
    cv::Mat m_cPicture;
    cv::Mat m_cStore;
    cv::Mat m_cGrey;
    cv::Mat m_cBinary;
    cv::Mat m_cDrawing;
    cv::Mat m_cHost;
    Labeller m_cLabeller;
    std::vector<Labeller::Area> m_vFound;
};

/// A unit is a picture.
Measure tasks(int nTasks, int nWidth, int nHeight)
{
    std::vector<std::shared_ptr<Inspection>> vTasks;
    vTasks.reserve(static_cast<size_t>(nTasks));
    for (int nTask = 0; nTask < nTasks; ++nTask) // three views can be read
        vTasks.push_back(std::make_shared<Inspection>(nTask % 3, nWidth, nHeight));
    for (const auto &pcTask : vTasks)
        pcTask->flow().begin();
    return [vTasks](int64_t n) {
        // Each task does its share; what counts is when the last one is done.
        const int64_t nTasksNow = static_cast<int64_t>(vTasks.size());
        const int64_t nEach = (n + nTasksNow - 1) / nTasksNow;
        const double dBegan = Bench::secondsNow();
        for (const auto &pcTask : vTasks)
            pcTask->relay().letIn(nEach);
        for (const auto &pcTask : vTasks)
            pcTask->relay().wait();
        return (Bench::secondsNow() - dBegan) * static_cast<double>(n) /
               static_cast<double>(nEach * nTasksNow);
    };
}

Measure byHand(int nWidth, int nHeight)
{
    return Bench::timed([pcHand = std::make_shared<HandWritten>(nWidth, nHeight)] { pcHand->run(); });
}

/// What callgrind counts in a process that inspects that many pictures.
double instructions(const char *szSide, int nPictures)
{
    QProcess cProcess;
    cProcess.setProcessChannelMode(QProcess::MergedChannels);
    cProcess.start("valgrind", {"--tool=callgrind", "--callgrind-out-file=/dev/null",
                                QCoreApplication::applicationFilePath(), "--inspect", szSide,
                                QString::number(nPictures)});
    cProcess.waitForFinished(-1);
    const QByteArray achOutput = cProcess.readAll();
    const int nAt = achOutput.indexOf("Collected : ");
    if (cProcess.exitCode() != 0 || nAt < 0)
        throw std::runtime_error("callgrind failed: " + achOutput.right(500).toStdString());
    return achOutput.mid(nAt + 12).simplified().split(' ').first().toDouble();
}

/// A unit is a picture; start-up and first allocations cancel out.
Measure counted(const char *szSide)
{
    return [szSide](int64_t n) {
        return (instructions(szSide, 7) - instructions(szSide, 2)) / 5 * static_cast<double>(n);
    };
}

/// The time of one run that the given part of all runs does not exceed, on core 1 alone.
Measure pinned(double dPart)
{
    const auto pcTask = std::make_shared<Inspection>(0, 640, 480);
    pcTask->flow().task().m_nWhichKernel = 1;
    pcTask->flow().begin();
    return [=](int64_t n) {
        return Bench::quantile(pcTask->relay().oneByOne(n), dPart) * static_cast<double>(n);
    };
}

Measure pinnedByHand(double dPart)
{
    const auto pcHand = std::make_shared<HandWritten>(640, 480);
    return [=](int64_t n) {
        std::vector<double> vSeconds;
        std::thread([&] {
            cpu_set_t cCores;
            CPU_ZERO(&cCores);
            CPU_SET(1, &cCores);
            pthread_setaffinity_np(pthread_self(), sizeof cCores, &cCores);
            for (int64_t nPicture = 0; nPicture < n; ++nPicture)
                vSeconds.push_back(Bench::timed([&] { pcHand->run(); })(1));
        }).join();
        return Bench::quantile(vSeconds, dPart) * static_cast<double>(n);
    };
}
} // namespace

int Bench::runInspection(int nArgs, char **pszArgs)
{
    if (nArgs != 4 || strcmp(pszArgs[1], "--inspect") != 0)
        return -1;
    const Measure fnMeasure = strcmp(pszArgs[2], "ours") == 0 ? tasks(1, 1920, 1080) : byHand(1920, 1080);
    fnMeasure(atoi(pszArgs[3]));
    return 0;
}

void Bench::addInspection(Table &cTable)
{
    cTable.add("inspection 1920x1080", [] {
        Case cCase{{"task", tasks(1, 1920, 1080)}, {"OpenCV by hand", byHand(1920, 1080)}};
        cCase.m_dGoal = 1.05;
        cCase.m_bUpper = true;
        cCase.m_nRepetitions = 41;
        cCase.m_dSeconds = 0.1;
        return cCase;
    });
    cTable.add("inspection 640x480", [] {
        return Case{{"task", tasks(1, 640, 480)}, {"OpenCV by hand", byHand(640, 480)}};
    });
    if (!QStandardPaths::findExecutable("valgrind").isEmpty()) {
        cTable.add("inspection 1920x1080, instructions", [] {
            Case cCase{{"task", counted("ours")}, {"OpenCV by hand", counted("peer")}};
            cCase.m_dGoal = 1.02;
            cCase.m_nUnits = 1;
            cCase.m_nRepetitions = 1; // a count, not a time
            cCase.m_szUnit = "instructions";
            return cCase;
        });
    }
    for (const int nTasks : {2, 4})
        cTable.add("inspection 1920x1080 in " + std::to_string(nTasks) + " tasks, a picture", [nTasks] {
            Case cCase{{"tasks", tasks(nTasks, 1920, 1080)}, {"in one task", tasks(1, 1920, 1080)}};
            cCase.m_dSeconds = 0.1;
            return cCase;
        });
    for (const auto &[szPart, dPart] :
         {std::pair("50 %", 0.5), std::pair("99 %", 0.99), std::pair("99.9 %", 0.999)})
        cTable.add("inspection 640x480, pinned, time of a run, " + std::string(szPart), [dPart = dPart] {
            Case cCase{{"task", pinned(dPart)}, {"OpenCV by hand", pinnedByHand(dPart)}};
            cCase.m_nUnits = dPart > 0.99 ? 1000 : 200;
            return cCase;
        });
}
