#include <cstring>
#include <deque>
#include <memory>
#include <thread>

#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"
#include "cases.h"
#include "flow.h"
#include "gstreamer.h"
#include "taskMgr/taskMgr.h"

namespace
{
using Bench::Case;
using Bench::Relay;

struct Kind {
    const char *m_szName;
    int m_nWidth;
    int m_nHeight;
    bool m_bColour;

    size_t bytes() const
    {
        const auto nWidth = static_cast<size_t>(m_nWidth);
        return (m_bColour ? ((nWidth + 1) * 3) & ~size_t{3} : nWidth) * static_cast<size_t>(m_nHeight);
    }
};

/// Something that hands pictures from one thread to another.
struct Pipe {
    virtual ~Pipe() = default;
    Relay &relay() { return *m_pcRelay; }

protected:
    std::shared_ptr<Relay> m_pcRelay = std::make_shared<Relay>();
};

/// Task, memory disk, task.
class TaskPipe : public Pipe
{
public:
    explicit TaskPipe(const Kind &cKind)
        : m_cProducer(m_pcRelay, false, {}, {{"KQ_MemoryDisk", config(cKind)}}),
          m_cConsumer(source(cKind),
                      {Bench::call([pcRelay = m_pcRelay](ArithmParamMgr &) { pcRelay->leave(); })})
    {
        ArithmParamMgr *pcStore = m_cProducer.task().m_pcAPM;
        unsigned char *puchPixels = nullptr;
        if (cKind.m_bColour) {
            pcStore->getParamDIB(2)->resize(cKind.m_nWidth, cKind.m_nHeight);
            puchPixels = pcStore->getParamDIB(2)->getDIB();
        } else {
            pcStore->getParamGray8(2)->resize(cKind.m_nWidth, cKind.m_nHeight);
            puchPixels = pcStore->getParamGray8(2)->getGray8();
        }
        memset(puchPixels, 77, cKind.bytes());
        m_cProducer.begin();
        m_cConsumer.begin();
    }

private:
    static QString type(const Kind &cKind) { return cKind.m_bColour ? "RGB" : "Gray8"; }
    static QString config(const Kind &cKind)
    {
        return "<MemDisk>0</MemDisk><InputID>2</InputID><InputType>" + type(cKind) + "</InputType>";
    }
    static QString source(const Kind &cKind)
    {
        return "<DSName>Memory Disk 0</DSName><OutputType>" + type(cKind) +
               "</OutputType><OutputID>1</OutputID><Config></Config>";
    }

    Bench::Flow m_cProducer;
    Bench::Flow m_cConsumer;
};

/// Six buffers, two threads, a copy at each end, and nothing else.
class BarePipe : public Pipe
{
public:
    explicit BarePipe(const Kind &cKind)
        : m_vSource(cKind.bytes(), 77), m_vTarget(cKind.bytes()), m_vBuffers(6)
    {
        for (auto &vBuffer : m_vBuffers) {
            vBuffer.resize(cKind.bytes());
            m_lstIdle.push_back(vBuffer.data());
        }
        m_cProducer = std::thread([this] {
            while (m_pcRelay->enter()) {
                unsigned char *puchBuffer = take(m_lstIdle);
                memcpy(puchBuffer, m_vSource.data(), m_vSource.size());
                give(m_lstPrepared, puchBuffer);
            }
            give(m_lstPrepared, nullptr);
        });
        m_cConsumer = std::thread([this] {
            while (unsigned char *puchBuffer = take(m_lstPrepared)) {
                memcpy(m_vTarget.data(), puchBuffer, m_vTarget.size());
                give(m_lstIdle, puchBuffer);
                m_pcRelay->leave();
            }
        });
    }
    ~BarePipe() override
    {
        m_pcRelay->close();
        m_cProducer.join();
        m_cConsumer.join();
    }
    BarePipe(const BarePipe &) = delete;
    BarePipe &operator=(const BarePipe &) = delete;

private:
    using List = std::deque<unsigned char *>;
    unsigned char *take(List &lstFrom)
    {
        std::unique_lock<std::mutex> cLock(m_cMutex);
        m_cChanged.wait(cLock, [&] { return !lstFrom.empty(); });
        unsigned char *puchBuffer = lstFrom.front();
        lstFrom.pop_front();
        return puchBuffer;
    }
    void give(List &lstTo, unsigned char *puchBuffer)
    {
        {
            const std::lock_guard<std::mutex> cGuard(m_cMutex);
            lstTo.push_back(puchBuffer);
        }
        m_cChanged.notify_all();
    }

    std::vector<unsigned char> m_vSource;
    std::vector<unsigned char> m_vTarget;
    std::vector<std::vector<unsigned char>> m_vBuffers;
    List m_lstIdle;
    List m_lstPrepared;
    std::mutex m_cMutex;
    std::condition_variable m_cChanged;
    std::thread m_cProducer;
    std::thread m_cConsumer;
};

#ifdef BENCH_GSTREAMER
/// appsrc ! queue ! appsink, with a copy at each end.
class GstPipe : public Pipe
{
public:
    explicit GstPipe(const Kind &cKind)
        : m_vSource(cKind.bytes(), 77), m_vTarget(cKind.bytes()), m_cQueue(cKind.bytes())
    {
        m_cProducer = std::thread([this] {
            while (m_pcRelay->enter())
                m_cQueue.push(m_vSource.data());
            m_cQueue.end();
        });
        m_cConsumer = std::thread([this] {
            while (m_cQueue.pull(m_vTarget.data()))
                m_pcRelay->leave();
        });
    }
    ~GstPipe() override
    {
        m_pcRelay->close();
        m_cProducer.join();
        m_cConsumer.join();
    }
    GstPipe(const GstPipe &) = delete;
    GstPipe &operator=(const GstPipe &) = delete;

private:
    std::vector<unsigned char> m_vSource;
    std::vector<unsigned char> m_vTarget;
    Bench::Gst::Queue m_cQueue;
    std::thread m_cProducer;
    std::thread m_cConsumer;
};
#endif

template <typename SomePipe>
Bench::Measure streamed(const Kind &cKind)
{
    return [pcPipe = std::make_shared<SomePipe>(cKind)](int64_t n) { return pcPipe->relay().stream(n); };
}

constexpr Kind KINDS[] = {{"1920x1080 colour", 1920, 1080, true}, {"1920x1080 grey", 1920, 1080, false},
                          {"640x480 colour", 640, 480, true},     {"640x480 grey", 640, 480, false},
                          {"4096x3000 colour", 4096, 3000, true}, {"4096x3000 grey", 4096, 3000, false}};

template <typename Peer>
void addPeer(Bench::Table &cTable, const Kind &cKind, const std::string &strShort, const char *szPeer,
             double dGoal)
{
    const std::string strName = cKind.m_szName;
    // Only the largest picture in common use has a goal.
    const bool bGoal = &cKind == KINDS;
    cTable.add("hand over " + strName + " / " + strShort, [&] {
        Case cCase{{"task, memory disk, task", streamed<TaskPipe>(cKind)}, {szPeer, streamed<Peer>(cKind)}};
        cCase.m_dGoal = bGoal ? dGoal : 0;
        cCase.m_dSeconds = cKind.m_nWidth == 640 ? 0.05 : 0.1;
        return cCase;
    });
    for (const auto &[szPart, dPart] : {std::pair("50 %", 0.5), std::pair("99 %", 0.99)}) {
        std::string strWhat = "hand over " + strName;
        strWhat.append(", latency ").append(szPart).append(" / ").append(strShort);
        cTable.add(strWhat, [&, dPart = dPart] {
            // One picture through the empty pipe is a repetition.
            Case cCase{{"task, memory disk, task", streamed<TaskPipe>(cKind)},
                       {szPeer, streamed<Peer>(cKind)}};
            cCase.m_nUnits = 1;
            cCase.m_nRepetitions = cKind.m_nWidth > 2000 ? 150 : 300;
            cCase.m_dPart = dPart;
            return cCase;
        });
    }
}
} // namespace

void Bench::addHandover(Table &cTable)
{
    for (const Kind &cKind : KINDS) {
        addPeer<BarePipe>(cTable, cKind, "pool", "bare pool, two copies", 1.05);
#ifdef BENCH_GSTREAMER
        addPeer<GstPipe>(cTable, cKind, "GStreamer", "appsrc ! queue ! appsink, two copies", 1.0);
#endif
    }
}
