#ifndef BENCH_TABLE_H
#define BENCH_TABLE_H

#include <cstdint>
#include <ctime>
#include <functional>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <QJsonArray>

/// Rows of measurements: what we do, side by side with a peer that does the same.
namespace Bench
{
/// How long that many units take, in the row's unit (seconds unless it names another).
using Measure = std::function<double(int64_t nUnits)>;

struct Side {
    std::string m_strName;
    Measure m_fnMeasure; ///< empty: nothing to compare with
};

/// A row as it is measured. The sides own what they need, which dies with the row.
struct Case {
    Side m_cOurs;
    Side m_cPeer;
    double m_dGoal = 0;         ///< the largest ratio of ours to the peer that is good; 0: none is set
    bool m_bUpper = false;      ///< the upper end of the ratio's interval has to reach the goal
    bool m_bExact = false;      ///< the ratio has to be the goal itself
    double m_dPart = 0.5;       ///< the quantile of the repetitions that is compared; 0.5: the median
    int64_t m_nUnits = 0;       ///< of each repetition; 0: as many as fill m_dSeconds
    double m_dSeconds = 0.03;   ///< of each repetition
    int m_nRepetitions = 21;    ///< of each side
    const char *m_szUnit = "s"; ///< of what the sides return
};

/// What times are read from. The process's own time leaves out what others make it wait for.
inline clockid_t g_nClock = CLOCK_MONOTONIC;

inline double secondsNow()
{
    timespec cNow{};
    clock_gettime(g_nClock, &cNow);
    return static_cast<double>(cNow.tv_sec) + 1e-9 * static_cast<double>(cNow.tv_nsec);
}

/// Calls fnUnit for each unit.
template <typename Unit>
Measure timed(Unit fnUnit)
{
    return [fnUnit](int64_t nUnits) mutable {
        const double dBegan = secondsNow();
        for (int64_t n = 0; n < nUnits; ++n)
            fnUnit();
        return secondsNow() - dBegan;
    };
}

/// The smallest value that at least the given part of the values does not exceed.
double quantile(std::vector<double> vValues, double dPart);

class Table
{
public:
    explicit Table(const std::string &strFilter) : m_cFilter(strFilter, std::regex::icase) {}

    /// Measures and prints a row, unless the filter leaves it out.
    void add(const std::string &strWhat, const std::function<Case()> &fnMake);
    const QJsonArray &rows() const { return m_lstRow; }

private:
    std::regex m_cFilter;
    QJsonArray m_lstRow;
};

/// Prints what became of the ratios of an earlier run.
void printComparison(const QJsonArray &lstOld, const QJsonArray &lstNew);
} // namespace Bench

#endif
