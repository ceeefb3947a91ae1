#include "table.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include <benchmark/benchmark.h>

#include <QJsonObject>

namespace
{
using Bench::Case;

/// Keeps what each repetition of each side took a unit.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &vRuns) override
    {
        for (const Run &cRun : vRuns)
            if (cRun.run_type == Run::RT_Iteration)
                m_mapValues[cRun.run_name.function_name].push_back(cRun.GetAdjustedRealTime());
    }

    std::map<std::string, std::vector<double>> m_mapValues;
};

/// Both sides in random order; a unit is one iteration.
std::map<std::string, std::vector<double>> measure(const Case &cCase)
{
    Collector cCollector;
    for (const auto &[szName, pcSide] :
         {std::pair("ours", &cCase.m_cOurs), std::pair("peer", &cCase.m_cPeer)}) {
        if (!pcSide->m_fnMeasure)
            continue;
        auto *pcBenchmark = benchmark::RegisterBenchmark(
            szName, [&fnMeasure = pcSide->m_fnMeasure](benchmark::State &cState) {
                const double dEach = fnMeasure(static_cast<int64_t>(cState.max_iterations)) /
                                     static_cast<double>(cState.max_iterations);
                for (auto cIteration : cState) {
                    (void)cIteration;
                    cState.SetIterationTime(dEach);
                }
            });
        pcBenchmark->UseManualTime()->Unit(benchmark::kSecond)->Repetitions(cCase.m_nRepetitions);
        if (cCase.m_nUnits > 0)
            pcBenchmark->Iterations(cCase.m_nUnits);
        else
            pcBenchmark->MinTime(cCase.m_dSeconds);
    }
    benchmark::RunSpecifiedBenchmarks(&cCollector, "all");
    benchmark::ClearRegisteredBenchmarks();
    return cCollector.m_mapValues;
}

struct Ratio {
    double m_dRatio;
    double m_dLow; ///< ends of the 95 % interval
    double m_dHigh;
};

/// The ratio of the quantiles, its interval by drawing repetitions anew (bootstrap).
Ratio ratioOf(const std::vector<double> &vOurs, const std::vector<double> &vPeer, double dPart)
{
    constexpr int DRAWS = 2000;
    std::mt19937 cRandom(1);
    const auto fnDrawn = [&cRandom, dPart](const std::vector<double> &vValues) {
        std::uniform_int_distribution<size_t> cIndex(0, vValues.size() - 1);
        std::vector<double> vDrawn(vValues.size());
        std::generate(vDrawn.begin(), vDrawn.end(), [&] { return vValues[cIndex(cRandom)]; });
        return Bench::quantile(std::move(vDrawn), dPart);
    };
    std::vector<double> vRatios(DRAWS);
    std::generate(vRatios.begin(), vRatios.end(), [&] { return fnDrawn(vOurs) / fnDrawn(vPeer); });
    return {Bench::quantile(vOurs, dPart) / Bench::quantile(vPeer, dPart), Bench::quantile(vRatios, 0.025),
            Bench::quantile(vRatios, 0.975)};
}

bool holds(const Case &cCase, const Ratio &cRatio)
{
    const double dReached = cCase.m_bUpper ? cRatio.m_dHigh : cRatio.m_dRatio;
    return cCase.m_bExact ? dReached == cCase.m_dGoal : dReached <= cCase.m_dGoal;
}

std::string number(const char *szFormat, double dValue)
{
    char szText[64];
    snprintf(szText, sizeof szText, szFormat, dValue);
    return szText;
}

std::string readable(double dValue, const std::string &strUnit)
{
    if (strUnit != "s")
        return number("%.4g ", dValue) + strUnit;
    const auto [dScale, szUnit] = dValue < 1e-6   ? std::pair(1e9, " ns")
                                  : dValue < 1e-3 ? std::pair(1e6, " us")
                                  : dValue < 1    ? std::pair(1e3, " ms")
                                                  : std::pair(1.0, " s");
    return number("%.4g", dValue * dScale) + szUnit;
}

const char *ROW = "%-62s %12s  %-40s %12s  %-20s %5s  %s\n";

void print(const QJsonObject &cRow)
{
    const auto fnText = [&](const char *szKey) { return cRow[szKey].toString().toStdString(); };
    const bool bPeer = cRow.contains("ratio");
    const double dGoal = cRow["goal"].toDouble();
    printf(ROW, fnText("what").c_str(), readable(cRow["ours"].toDouble(), fnText("unit")).c_str(),
           fnText("peerName").c_str(), bPeer ? readable(cRow["peer"].toDouble(), fnText("unit")).c_str() : "",
           bPeer ? (number("%.3f", cRow["ratio"].toDouble()) + number(" [%.3f, ", cRow["low"].toDouble()) +
                    number("%.3f]", cRow["high"].toDouble()))
                       .c_str()
                 : "",
           dGoal > 0 ? number("%.2f", dGoal).c_str() : "", fnText("verdict").c_str());
    fflush(stdout);
}
} // namespace

double Bench::quantile(std::vector<double> vValues, double dPart)
{
    const double dRank = std::ceil(dPart * static_cast<double>(vValues.size()));
    const auto itValue = vValues.begin() + static_cast<std::ptrdiff_t>(std::max(dRank, 1.0)) - 1;
    std::nth_element(vValues.begin(), itValue, vValues.end());
    return *itValue;
}

void Bench::Table::add(const std::string &strWhat, const std::function<Case()> &fnMake)
{
    if (!std::regex_search(strWhat, m_cFilter))
        return;
    if (m_lstRow.isEmpty())
        printf(ROW, "what", "ours", "peer or limit", "", "ratio", "goal", "verdict");
    const Case cCase = fnMake();
    const auto mapValues = measure(cCase);
    QJsonObject cRow{{"what", QString::fromStdString(strWhat)},
                     {"oursName", QString::fromStdString(cCase.m_cOurs.m_strName)},
                     {"unit", cCase.m_szUnit},
                     {"ours", quantile(mapValues.at("ours"), cCase.m_dPart)},
                     {"goal", cCase.m_dGoal},
                     {"verdict", "-"}};
    if (cCase.m_cPeer.m_fnMeasure) {
        const Ratio cRatio = ratioOf(mapValues.at("ours"), mapValues.at("peer"), cCase.m_dPart);
        cRow["peerName"] = QString::fromStdString(cCase.m_cPeer.m_strName);
        cRow["peer"] = quantile(mapValues.at("peer"), cCase.m_dPart);
        cRow["ratio"] = cRatio.m_dRatio;
        cRow["low"] = cRatio.m_dLow;
        cRow["high"] = cRatio.m_dHigh;
        if (cCase.m_dGoal > 0)
            cRow["verdict"] = holds(cCase, cRatio) ? "holds" : "missed";
    }
    print(cRow);
    m_lstRow.append(cRow);
}

void Bench::printComparison(const QJsonArray &lstOld, const QJsonArray &lstNew)
{
    std::map<QString, QJsonObject> mapOld;
    for (const auto &cRow : lstOld)
        mapOld[cRow.toObject()["what"].toString()] = cRow.toObject();
    printf("\n%-62s %8s %8s %8s\n", "ratio to the peer", "then", "now", "now/then");
    for (const auto &cValue : lstNew) {
        const QJsonObject cNew = cValue.toObject();
        const QJsonObject cOld = mapOld[cNew["what"].toString()];
        if (!cOld.contains("ratio") || !cNew.contains("ratio"))
            continue;
        const double dThen = cOld["ratio"].toDouble();
        const double dNow = cNew["ratio"].toDouble();
        // What lies within both intervals may be chance.
        const char *szVerdict = cNew["low"].toDouble() > cOld["high"].toDouble()   ? "slower"
                                : cNew["high"].toDouble() < cOld["low"].toDouble() ? "faster"
                                                                                   : "same";
        printf("%-62s %8.3f %8.3f %8.3f  %s\n", qPrintable(cNew["what"].toString()), dThen, dNow,
               dNow / dThen, szVerdict);
    }
}
