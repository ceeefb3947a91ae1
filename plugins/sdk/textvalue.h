#ifndef PLUGIN_TEXTVALUE_H
#define PLUGIN_TEXTVALUE_H

#include <cstddef>
#include <limits>
#include <string_view>

/// How the values of settings are written; for tables that are checked while a plug-in is compiled,
/// and for config strings.
namespace Plugin
{
constexpr char toLower(char ch)
{
    return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
}

/// Letters A to Z only.
constexpr bool equalsIgnoringCase(std::string_view strA, std::string_view strB)
{
    if (strA.size() != strB.size())
        return false;
    for (size_t n = 0; n < strA.size(); ++n)
        if (toLower(strA[n]) != toLower(strB[n]))
            return false;
    return true;
}

constexpr bool isTagLetter(char ch)
{
    return (toLower(ch) >= 'a' && toLower(ch) <= 'z') || (ch >= '0' && ch <= '9') || ch == '_';
}

/// Whether "<Word>", "</Word>" or a marker as "<-Word->" or "</=Word=>" stands in the text.
constexpr bool holdsTag(std::string_view strText)
{
    for (size_t nPos = strText.find('<'); nPos != std::string_view::npos;
         nPos = strText.find('<', nPos + 1)) {
        std::string_view strRest = strText.substr(nPos + 1);
        const auto fnSkip = [&](auto fnWanted) {
            const bool bThere = !strRest.empty() && fnWanted(strRest.front());
            strRest.remove_prefix(bThere ? 1 : 0);
            return bThere;
        };
        const auto fnMark = [](char ch) { return ch == '-' || ch == '='; };
        fnSkip([](char ch) { return ch == '/'; });
        fnSkip(fnMark);
        bool bWord = false;
        while (fnSkip(isTagLetter))
            bWord = true;
        fnSkip(fnMark);
        if (bWord && !strRest.empty() && strRest.front() == '>')
            return true;
    }
    return false;
}

constexpr std::string_view trimmed(std::string_view strText)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    const size_t nFirst = strText.find_first_not_of(BLANKS);
    if (nFirst == std::string_view::npos)
        return {};
    return strText.substr(nFirst, strText.find_last_not_of(BLANKS) - nFirst + 1);
}

/// The whole number that is the whole text; blanks around it and a leading plus are accepted.
constexpr bool toNumber(std::string_view strText, int &nValue)
{
    strText = trimmed(strText);
    const bool bMinus = !strText.empty() && strText[0] == '-';
    if (bMinus || (!strText.empty() && strText[0] == '+'))
        strText.remove_prefix(1);
    long long nRead = 0;
    for (const char ch : strText) {
        if (ch < '0' || ch > '9' || nRead > std::numeric_limits<int>::max())
            return false;
        nRead = 10 * nRead + (ch - '0');
    }
    nRead = bMinus ? -nRead : nRead;
    if (strText.empty() || nRead < std::numeric_limits<int>::min() || nRead > std::numeric_limits<int>::max())
        return false;
    nValue = static_cast<int>(nRead);
    return true;
}

/// Numbers separated by commas; false unless there are exactly as many.
template <size_t nCount>
constexpr bool toNumbers(std::string_view strText, int (&anValue)[nCount])
{
    for (size_t n = 0; n < nCount; ++n) {
        const size_t nComma = strText.find(',');
        if ((nComma == std::string_view::npos) != (n + 1 == nCount) ||
            !toNumber(strText.substr(0, nComma), anValue[n]))
            return false;
        strText.remove_prefix(n + 1 == nCount ? strText.size() : nComma + 1);
    }
    return true;
}

/// "skip:NUMBER", "stop:TEXT" or "print:TEXT".
constexpr bool isCommand(std::string_view strText)
{
    const size_t nColon = strText.find(':');
    if (nColon == std::string_view::npos)
        return false;
    const std::string_view strVerb = strText.substr(0, nColon);
    int nSteps = 0;
    return equalsIgnoringCase(strVerb, "stop") || equalsIgnoringCase(strVerb, "print") ||
           (equalsIgnoringCase(strVerb, "skip") && toNumber(strText.substr(nColon + 1), nSteps));
}

/// "#rrggbb", as 0xrrggbb.
constexpr bool toColour(std::string_view strText, unsigned &nRgb)
{
    if (strText.size() != 7 || strText[0] != '#')
        return false;
    constexpr std::string_view DIGITS = "0123456789abcdef";
    nRgb = 0;
    for (const char ch : strText.substr(1)) {
        const size_t nDigit = DIGITS.find(toLower(ch));
        if (nDigit == std::string_view::npos)
            return false;
        nRgb = nRgb << 4 | static_cast<unsigned>(nDigit);
    }
    return true;
}

/// "h,s,v,h,s,v": h to 179, s and v to 255.
constexpr bool toColourRange(std::string_view strText, int (&anValue)[6])
{
    bool bRight = toNumbers(strText, anValue);
    for (size_t n = 0; n < 6; ++n)
        bRight = bRight && anValue[n] >= 0 && anValue[n] <= (n % 3 == 0 ? 179 : 255);
    return bRight;
}

/// "x,y,width,height" with pixels inside.
constexpr bool toRegion(std::string_view strText, int (&anValue)[4])
{
    return toNumbers(strText, anValue) && anValue[2] >= 1 && anValue[3] >= 1;
}
} // namespace Plugin

#endif
