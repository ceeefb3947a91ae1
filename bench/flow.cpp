#include "flow.h"

#include <cstdlib>
#include <deque>
#include <map>

#include <unistd.h>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "taskMgr/taskMgr.h"

const QString Bench::NOTHING = QStringLiteral("bench_nothing");

namespace
{
struct Source {
    std::shared_ptr<Bench::Relay> m_pcRelay;
    bool m_bCounts;
    Bench::SourcePicture m_cPicture;
    bool m_bEntered = false;
};

std::map<int, Source> gmapSources; // by instance ID; changed while no task of the benchmark runs
std::deque<std::function<void(ArithmParamMgr &)>> glstCalls;
char gszEmpty[1] = "";

unsigned char *requestPicture(int nInstanceID, const char *, int *pnWidth, int *pnHeight)
{
    static unsigned char s_uchPixel = 0;
    Source &cSource = gmapSources.find(nInstanceID)->second;
    if (cSource.m_bCounts && cSource.m_bEntered)
        cSource.m_pcRelay->leave();
    cSource.m_bEntered = cSource.m_pcRelay->enter();
    if (!cSource.m_bEntered) {
        usleep(10000); // as sources do that have nothing: others are stopping
        return nullptr;
    }
    *pnWidth = cSource.m_cPicture.m_nWidth;
    *pnHeight = cSource.m_cPicture.m_nHeight;
    return cSource.m_cPicture.m_puchPixels ? cSource.m_cPicture.m_puchPixels : &s_uchPixel;
}

void registerAlgorithms()
{
    static const bool s_bDone = [] {
        auto *pcRegistry = ArithmFactory::getInstance();
        pcRegistry->m_mapArithm.insert(
            Bench::NOTHING,
            new Arithm(false, nullptr, nullptr, [](char *, ArithmParamMgr *) { return gszEmpty; }));
        pcRegistry->m_mapArithm.insert(
            "bench_call", new Arithm(false, nullptr, nullptr, [](char *pchConfig, ArithmParamMgr *pcStore) {
                glstCalls[static_cast<size_t>(atoi(pchConfig))](*pcStore);
                return gszEmpty;
            }));
        return true;
    }();
    Q_UNUSED(s_bDone)
}

std::unique_ptr<TaskInfo> makeTask(const std::vector<Bench::FlowStep> &vSteps)
{
    registerAlgorithms();
    auto pcTask = std::make_unique<TaskInfo>("bench", nullptr);
    for (const Bench::FlowStep &cStep : vSteps) {
        TaskItem cItem;
        cItem.m_strArithmID = cStep.m_strID;
        cItem.m_strArithmName = cStep.m_strID;
        cItem.m_strOptionStr = cStep.m_strConfig;
        pcTask->m_lstArithm.append(cItem);
    }
    return pcTask;
}
} // namespace

Bench::FlowStep Bench::call(std::function<void(ArithmParamMgr &)> fnBody)
{
    glstCalls.push_back(std::move(fnBody));
    return {QStringLiteral("bench_call"), QString::number(glstCalls.size() - 1)};
}

std::unique_ptr<TaskInfo> Bench::newFedTask(std::shared_ptr<Relay> pcRelay, bool bCounts,
                                            SourcePicture cPicture, const std::vector<FlowStep> &vSteps)
{
    std::unique_ptr<TaskInfo> pcTask = makeTask(vSteps);
    pcTask->m_pcDS = new DataSource::DataSourceInstance;
    pcTask->m_pcDS->m_fnRequestPicture = requestPicture;
    pcTask->m_pcDS->m_fnReleasePicture = [](int) {};
    pcTask->m_pcDS->setArithmParamMgr(pcTask->m_pcAPM);
    pcTask->m_pcDS->setDataType(cPicture.m_puchPixels ? "RGB" : "Gray8");
    pcTask->m_pcDS->setDataID(1);
    gmapSources[pcTask->m_pcDS->m_nInstanceID] = {std::move(pcRelay), bCounts, cPicture};
    return pcTask;
}

Bench::Flow::Flow(std::shared_ptr<Relay> pcRelay, bool bCounts, SourcePicture cPicture,
                  const std::vector<FlowStep> &vSteps)
    : m_pcRelay(pcRelay), m_pcTask(newFedTask(std::move(pcRelay), bCounts, cPicture, vSteps))
{
}

Bench::Flow::Flow(const QString &strSource, const std::vector<FlowStep> &vSteps) : m_pcTask(makeTask(vSteps))
{
    m_pcTask->m_pcDS =
        DataSource::getInstance()->createDataSourceFromConfigString(m_pcTask->m_pcAPM, strSource);
}

Bench::Flow::~Flow()
{
    if (m_pcRelay)
        m_pcRelay->close();
    m_pcTask->stopTask();
}

void Bench::Flow::begin()
{
    m_pcTask->startTask();
}
