#include <memory>

#include "cases.h"
#include "flow.h"
#include "gstreamer.h"

namespace
{
using Bench::Measure;

/// A unit is a step.
Measure flow(int nSteps, int nConfigBytes)
{
    const auto pcRelay = std::make_shared<Bench::Relay>();
    const std::vector<Bench::FlowStep> vSteps(static_cast<size_t>(nSteps),
                                              {Bench::NOTHING, QString(nConfigBytes, QLatin1Char('c'))});
    const auto pcFlow = std::make_shared<Bench::Flow>(pcRelay, true, Bench::SourcePicture(), vSteps);
    pcFlow->begin();
    return [pcRelay, pcFlow, nSteps](int64_t n) {
        const int64_t nRuns = (n + nSteps - 1) / nSteps;
        return pcRelay->stream(nRuns) * static_cast<double>(n) / static_cast<double>(nRuns * nSteps);
    };
}

#ifdef BENCH_GSTREAMER
Measure identities(int nElements)
{
    const auto pcChain = std::make_shared<Bench::Gst::IdentityChain>(nElements);
    return [pcChain, nElements](int64_t n) {
        const int64_t nBuffers = (n + nElements - 1) / nElements;
        return Bench::timed([&] { pcChain->push(); })(nBuffers) * static_cast<double>(n) /
               static_cast<double>(nBuffers * nElements);
    };
}
#endif

Measure functionPointer()
{
    return Bench::timed([] {
        static char s_szEmpty[1] = "";
        static char *(*volatile s_fnNothing)(char *, void *) = [](char *, void *) { return s_szEmpty; };
        s_fnNothing(s_szEmpty, nullptr);
    });
}
} // namespace

void Bench::addSteps(Table &cTable)
{
    struct Row {
        int m_nSteps;
        int m_nConfigBytes;
        bool m_bGoal;
    };
    for (const Row cRow : {Row{100, 100, true},
                           {100, 0, false},
                           {100, 10000, false},
                           {1, 100, false},
                           {10, 100, false},
                           {1000, 100, false}}) {
        const std::string strWhat = "step that does nothing, " + std::to_string(cRow.m_nSteps) +
                                    " in the flow, config " + std::to_string(cRow.m_nConfigBytes) + " B";
#ifdef BENCH_GSTREAMER
        cTable.add(strWhat, [&] {
            Case cCase{{"task", flow(cRow.m_nSteps, cRow.m_nConfigBytes)},
                       {"identity of GStreamer", identities(cRow.m_nSteps)}};
            cCase.m_dGoal = cRow.m_bGoal ? 1.0 : 0;
            return cCase;
        });
#endif
        cTable.add(strWhat + " / call", [&] {
            return Case{{"task", flow(cRow.m_nSteps, cRow.m_nConfigBytes)},
                        {"call by a function pointer", functionPointer()}};
        });
    }
}
