#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <optional>
#include <vector>

#include "sdk/algorithm.h"

namespace
{
constexpr double LARGEST = 1e9;

/// The first number in a text, as 24 in "24 coins".
double firstNumber(const QString &strText)
{
    const QByteArray achText = strText.toUtf8();
    const char *const pchEnd = achText.constData() + achText.size();
    const auto fnDigit = [](char ch) { return ch >= '0' && ch <= '9'; };
    const char *pchNumber = std::find_if(achText.constData(), pchEnd, fnDigit);
    for (const char chBefore : {'.', '-'})
        if (pchNumber != achText.constData() && pchNumber[-1] == chBefore)
            --pchNumber;
    double dNumber = NAN;
    std::from_chars(pchNumber, pchEnd, dNumber);
    return dNumber;
}

double toDouble(const QString &strText)
{
    return firstNumber(strText);
}
template <typename Number>
double toDouble(Number nNumber)
{
    return static_cast<double>(nNumber);
}

std::string plain(double dValue)
{
    char szText[32];
    const bool bWhole = std::floor(dValue) == dValue && std::abs(dValue) < 1e15;
    const auto cEnd = bWhole ? std::to_chars(szText, std::end(szText), static_cast<long long>(dValue))
                             : std::to_chars(szText, std::end(szText), dValue, std::chars_format::general, 7);
    return {szText, cEnd.ptr};
}

class Compare
{
public:
    enum Value { COUNT, ELEMENT, SMALLEST, LARGEST_ONE, MEAN };
    enum Condition { LESS, AT_MOST, EQUAL, UNEQUAL, AT_LEAST, GREATER, BETWEEN, OUTSIDE };

    static constexpr Plugin::About ABOUT{
        "OCX_Compare",
        "流程控制",
        "计数比较",
        {"把列表的个数或其中的数与界限比较，按结果控制流程。",
         "Compares the length of a list, or a number in it, with limits and steers the flow by the result."}};

    static constexpr Plugin::Option VALUES[] = {{"Count", {"个数", "Count"}},
                                                {"Element", {"某一个数", "One number"}},
                                                {"Smallest", {"最小值", "Smallest"}},
                                                {"Largest", {"最大值", "Largest"}},
                                                {"Mean", {"平均值", "Mean"}}};
    static constexpr Plugin::Option CONDITIONS[] = {
        {"Less", {"小于", "<"}},          {"AtMost", {"不大于", "≤"}},     {"Equal", {"等于", "="}},
        {"Unequal", {"不等于", "≠"}},     {"AtLeast", {"不小于", "≥"}},    {"Greater", {"大于", ">"}},
        {"Between", {"之间", "between"}}, {"Outside", {"之外", "outside"}}};
    static constexpr Plugin::AnyListInput INPUT{
        "InputID", {"输入列表", "Input list"}, Plugin::Kind::Areas, "InputType"};
    static constexpr auto VALUE = Plugin::Choice<Value>("Value", {"数值", "Value"}, VALUES)
                                      .help({"比较列表的个数，或其中的数；文字中取第一个数。",
                                             "What is compared: the length of the list or numbers in it; of "
                                             "a text the first number."});
    static constexpr auto INDEX = Plugin::Integer("Index", {"序号", "Index"}, 0)
                                      .when(VALUE, ELEMENT)
                                      .help({"第一个数是 0。", "The first number is 0."});
    static constexpr Plugin::Choice<Condition> CONDITION{"Condition", {"条件", "Condition"}, CONDITIONS};
    static constexpr Plugin::Real LIMIT{"Limit", {"界限", "Limit"}, 1, -LARGEST, LARGEST};
    static constexpr auto UPPER =
        Plugin::Real("UpperLimit", {"上限", "Upper limit"}, 1, -LARGEST, LARGEST)
            .when(CONDITION, BETWEEN, OUTSIDE)
            .help({"只用于之间和之外；两个界限都算在之间。",
                   "For between and outside only; both limits themselves are between."});
    static constexpr auto TRUE =
        Plugin::Command("WhenTrue", {"成立时", "When true"})
            .help({"skip:步数、stop:文字 或 print:文字；文字中的 {value} 换成数值。",
                   "skip:STEPS, stop:TEXT or print:TEXT; {value} in a text becomes the value."});
    static constexpr auto FALSE = Plugin::Command("WhenFalse", {"不成立时", "When false"}).help(TRUE.m_cHelp);
    static constexpr auto MISSING =
        Plugin::Command("WhenMissing", {"没有数时", "When missing"})
            .help({"列表中没有这个数。", "When the list has no such number: neither true nor false."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, VALUE, INDEX, CONDITION, LIMIT,
                                                   UPPER, TRUE,  FALSE, MISSING};

    std::string execute(const Plugin::Step &cStep)
    {
        const Value eValue = cStep[VALUE];
        const Condition eCondition = cStep[CONDITION];
        const int nIndex = cStep[INDEX];
        const double dLimit = cStep[LIMIT];
        const double dUpper = cStep[UPPER];
        const std::string strTrue = cStep[TRUE];
        const std::string strFalse = cStep[FALSE];
        const std::string strMissing = cStep[MISSING];
        if ((eCondition == BETWEEN || eCondition == OUTSIDE) && dUpper < dLimit)
            throw Plugin::Error("Setting UpperLimit is " + plain(dUpper) + ", below Limit, which is " +
                                plain(dLimit) + ".");

        const double dValue =
            cStep.visit(INPUT, [=](const auto &lst) { return valueOf(lst, eValue, nIndex); });
        if (!std::isfinite(dValue))
            return filled(strMissing, "?");
        return filled(holds(eCondition, dValue, dLimit, dUpper) ? strTrue : strFalse, plain(dValue));
    }

private:
    /// Not a number where the list has none.
    template <typename Element>
    static double valueOf(const QList<Element> &lst, Value eValue, int nIndex)
    {
        if (eValue == COUNT)
            return lst.size();
        if constexpr (std::is_arithmetic_v<Element> || std::is_same_v<Element, QString>) {
            if (eValue == ELEMENT)
                return nIndex < lst.size() ? toDouble(lst[nIndex]) : NAN;
            double dSmallest = INFINITY;
            double dLargest = -INFINITY;
            double dSum = 0;
            int nNumbers = 0;
            for (const Element &cElement : lst) {
                const double dNumber = toDouble(cElement);
                if (!std::isfinite(dNumber))
                    continue;
                dSmallest = std::min(dSmallest, dNumber);
                dLargest = std::max(dLargest, dNumber);
                dSum += dNumber;
                ++nNumbers;
            }
            return eValue == SMALLEST ? dSmallest : eValue == MEAN ? dSum / nNumbers : dLargest;
        } else {
            throw Plugin::Error("Points, lines, polygons and areas have no numbers: their count can be "
                                "compared.");
        }
    }

    static bool holds(Condition eCondition, double dValue, double dLimit, double dUpper)
    {
        switch (eCondition) {
        case LESS:
            return dValue < dLimit;
        case AT_MOST:
            return dValue <= dLimit;
        case EQUAL:
            return dValue == dLimit;
        case UNEQUAL:
            return dValue != dLimit;
        case AT_LEAST:
            return dValue >= dLimit;
        case GREATER:
            return dValue > dLimit;
        case BETWEEN:
            return dValue >= dLimit && dValue <= dUpper;
        case OUTSIDE:
            return dValue < dLimit || dValue > dUpper;
        }
        return false;
    }

    /// The command with the value in its text.
    static std::string filled(std::string strCommand, const std::string &strValue)
    {
        constexpr std::string_view PLACE = "{value}";
        for (size_t nPos = strCommand.find(PLACE); nPos != std::string::npos;
             nPos = strCommand.find(PLACE, nPos + strValue.size()))
            strCommand.replace(nPos, PLACE.size(), strValue);
        return strCommand;
    }
};
} // namespace

OCULINEX_ALGORITHM(Compare)
