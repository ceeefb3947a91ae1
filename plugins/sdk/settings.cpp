#include "sdk/settings.h"

#include <charconv>
#include <cstring>

#include <strings.h>

namespace
{
constexpr std::string_view BLANKS = " \t\r\n";

/// Where "<Tag>" or "</Tag>" first begins, npos if nowhere.
size_t findTag(std::string_view strConfig, std::string_view strBracket, std::string_view strTag)
{
    const size_t nLength = strBracket.size() + strTag.size() + 1;
    for (size_t nPos = strConfig.find('<');
         nPos != std::string_view::npos && strConfig.size() - nPos >= nLength;
         nPos = strConfig.find('<', nPos + 1)) {
        const std::string_view strHere = strConfig.substr(nPos, nLength);
        if (strHere.back() == '>' && strHere.substr(0, strBracket.size()) == strBracket &&
            Plugin::equalsIgnoringCase(strHere.substr(strBracket.size(), strTag.size()), strTag))
            return nPos;
    }
    return std::string_view::npos;
}

std::string_view withoutPlus(std::string_view strText)
{
    const bool bPlus = strText.size() > 1 && strText[0] == '+' && strText[1] != '-';
    return strText.substr(bPlus ? 1 : 0);
}

template <typename Number>
bool parse(std::string_view strText, Number &nValue)
{
    strText = withoutPlus(Plugin::trimmed(strText));
    const char *pchEnd = strText.data() + strText.size();
    const auto [pchStop, eError] = std::from_chars(strText.data(), pchEnd, nValue);
    return eError == std::errc() && pchStop == pchEnd && !strText.empty();
}

[[noreturn]] void refuse(std::string_view strTag, std::string_view strValue, const std::string &strWanted)
{
    throw Plugin::Error("Setting " + std::string(strTag) + " is \"" + std::string(strValue) +
                        "\", wanted is " + strWanted + ".");
}

std::string plain(double dValue)
{
    std::string strText = std::to_string(dValue);
    strText.erase(strText.find_last_not_of('0') + 1);
    if (!strText.empty() && strText.back() == '.')
        strText.pop_back();
    return strText;
}
} // namespace

bool Plugin::equalsIgnoringCase(std::string_view strA, std::string_view strB)
{
    return strA.size() == strB.size() && strncasecmp(strA.data(), strB.data(), strA.size()) == 0;
}

std::string_view Plugin::trimmed(std::string_view strText)
{
    const size_t nFirst = strText.find_first_not_of(BLANKS);
    if (nFirst == std::string_view::npos)
        return {};
    return strText.substr(nFirst, strText.find_last_not_of(BLANKS) - nFirst + 1);
}

bool Plugin::toNumber(std::string_view strText, int &nValue)
{
    return parse(strText, nValue);
}

Plugin::Settings::Settings(const char *szConfig) : m_strConfig(szConfig ? szConfig : "") {}

std::string_view Plugin::Settings::text(std::string_view strTag) const
{
    const size_t nBegin = findTag(m_strConfig, "<", strTag);
    if (nBegin == std::string_view::npos)
        return {};
    const size_t nEnd = findTag(m_strConfig, "</", strTag);
    if (nEnd == std::string_view::npos || nEnd < nBegin)
        return {};
    const size_t nBody = nBegin + strTag.size() + 2;
    return trimmed(m_strConfig.substr(nBody, nEnd - nBody));
}

int Plugin::Settings::number(std::string_view strTag, int nMin, int nMax) const
{
    const std::string_view strValue = text(strTag);
    if (strValue.empty())
        throw Error("Setting " + std::string(strTag) + " is missing.");
    int nValue = 0;
    if (!toNumber(strValue, nValue) || nValue < nMin || nValue > nMax)
        refuse(strTag, strValue,
               "a whole number from " + std::to_string(nMin) + " to " + std::to_string(nMax));
    return nValue;
}

int Plugin::Settings::number(std::string_view strTag, int nMin, int nMax, int nDefault) const
{
    return text(strTag).empty() ? nDefault : number(strTag, nMin, nMax);
}

double Plugin::Settings::real(std::string_view strTag, double dMin, double dMax, double dDefault) const
{
    const std::string_view strValue = text(strTag);
    double dValue = dDefault;
    // Written so that "nan" is refused too.
    if (!strValue.empty() && !(parse(strValue, dValue) && dValue >= dMin && dValue <= dMax))
        refuse(strTag, strValue, "a number from " + plain(dMin) + " to " + plain(dMax));
    return dValue;
}

bool Plugin::Settings::flag(std::string_view strTag, bool bDefault) const
{
    return number(strTag, 0, 1, bDefault ? 1 : 0) == 1;
}

int Plugin::Settings::choice(std::string_view strTag, std::initializer_list<std::string_view> lstName) const
{
    const std::string_view strValue = text(strTag);
    if (strValue.empty())
        return 0;
    std::string strNames;
    int nPos = 0;
    for (const std::string_view strName : lstName) {
        if (equalsIgnoringCase(strValue, strName))
            return nPos;
        strNames.append(nPos++ ? ", " : "").append(strName);
    }
    refuse(strTag, strValue, "one of " + strNames);
}
