#include "sdk/settings.h"

#include <charconv>
#include <limits>

#include "sdk/textvalue.h"

namespace
{
/// Whether "Tag>" stands at nPos, in any letter case.
bool isTagAt(std::string_view strConfig, size_t nPos, std::string_view strTag)
{
    return nPos + strTag.size() < strConfig.size() && strConfig[nPos + strTag.size()] == '>' &&
           Plugin::equalsIgnoringCase(strConfig.substr(nPos, strTag.size()), strTag);
}

std::string_view withoutPlus(std::string_view strText)
{
    const bool bPlus = strText.size() > 1 && strText[0] == '+' && strText[1] != '-';
    return strText.substr(bPlus ? 1 : 0);
}

bool toReal(std::string_view strText, double &dValue)
{
    strText = withoutPlus(Plugin::trimmed(strText));
    const char *pchEnd = strText.data() + strText.size();
    const auto [pchStop, eError] = std::from_chars(strText.data(), pchEnd, dValue);
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

QString Plugin::toQString(std::string_view strText)
{
    return QString::fromUtf8(strText.data(), static_cast<int>(strText.size()));
}

std::string_view Plugin::Settings::value(std::string_view strTag) const
{
    // One pass: the first begin tag, unless the first end tag stands before it.
    size_t nBody = 0;
    for (size_t nPos = m_strConfig.find('<'); nPos != std::string_view::npos;
         nPos = m_strConfig.find('<', nPos + 1)) {
        const bool bEnd = nPos + 1 < m_strConfig.size() && m_strConfig[nPos + 1] == '/';
        if (bEnd && isTagAt(m_strConfig, nPos + 2, strTag))
            return nBody ? trimmed(m_strConfig.substr(nBody, nPos - nBody)) : std::string_view();
        if (!bEnd && !nBody && isTagAt(m_strConfig, nPos + 1, strTag))
            nBody = nPos + strTag.size() + 2;
    }
    return {};
}

Plugin::Kind Plugin::Settings::kind(const Setting &cSetting) const
{
    const std::string_view strValue = *cSetting.m_szTypeTag ? value(cSetting.m_szTypeTag) : "";
    if (strValue.empty())
        return cSetting.m_eUsual;
    std::string strNames = kindName(cSetting.m_eUsual);
    for (int n = 0; n <= static_cast<int>(Kind::Bools); ++n) {
        const Kind eKind = static_cast<Kind>(n);
        if (!(cSetting.m_nKinds & kindBit(eKind)))
            continue;
        if (equalsIgnoringCase(strValue, kindName(eKind)))
            return eKind;
        if (eKind != cSetting.m_eUsual)
            strNames.append(", ").append(kindName(eKind));
    }
    refuse(cSetting.m_szTypeTag, strValue, "one of " + strNames);
}

int Plugin::Settings::id(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    if (strValue.empty())
        throw Error("Setting " + std::string(cSetting.m_szTag) + " is missing.");
    int nID = 0;
    if (!toNumber(strValue, nID) || nID < 0)
        refuse(cSetting.m_szTag, strValue,
               "a whole number from 0 to " + std::to_string(std::numeric_limits<int>::max()));
    return nID;
}

int Plugin::Settings::integer(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    if (strValue.empty())
        return static_cast<int>(cSetting.m_dInitial);
    int nValue = 0;
    if (!toNumber(strValue, nValue) || nValue < cSetting.m_dMin || nValue > cSetting.m_dMax)
        refuse(cSetting.m_szTag, strValue,
               "a whole number from " + plain(cSetting.m_dMin) + " to " + plain(cSetting.m_dMax));
    if (cSetting.m_bOdd && nValue % 2 == 0)
        refuse(cSetting.m_szTag, strValue, "an odd number");
    return nValue;
}

double Plugin::Settings::real(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    double dValue = cSetting.m_dInitial;
    // Written so that "nan" is refused too.
    if (!strValue.empty() &&
        !(toReal(strValue, dValue) && dValue >= cSetting.m_dMin && dValue <= cSetting.m_dMax))
        refuse(cSetting.m_szTag, strValue,
               "a number from " + plain(cSetting.m_dMin) + " to " + plain(cSetting.m_dMax));
    return dValue;
}

bool Plugin::Settings::flag(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    int nValue = cSetting.m_dInitial != 0;
    if (!strValue.empty() && (!toNumber(strValue, nValue) || nValue < 0 || nValue > 1))
        refuse(cSetting.m_szTag, strValue, "a whole number from 0 to 1");
    return nValue == 1;
}

int Plugin::Settings::choice(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    if (strValue.empty())
        return static_cast<int>(cSetting.m_dInitial);
    for (int n = 0; n < cSetting.m_nOptions; ++n)
        if (equalsIgnoringCase(strValue, cSetting.m_pcOptions[n].m_szValue))
            return n;
    std::string strNames;
    for (int n = 0; n < cSetting.m_nOptions; ++n)
        strNames.append(n ? ", " : "").append(cSetting.m_pcOptions[n].m_szValue);
    refuse(cSetting.m_szTag, strValue, "one of " + strNames);
}

std::string_view Plugin::Settings::text(const Setting &cSetting) const
{
    const std::string_view strValue = value(cSetting.m_szTag);
    return strValue.empty() ? std::string_view(cSetting.m_szInitial) : strValue;
}

std::string Plugin::Settings::command(const Setting &cSetting) const
{
    const std::string_view strCommand = text(cSetting);
    if (strCommand.empty())
        return {};
    if (!isCommand(strCommand))
        refuse(cSetting.m_szTag, strCommand, "skip:NUMBER, stop:TEXT or print:TEXT");
    return "<CMD>" + std::string(strCommand) + "</CMD>";
}

Plugin::Rgb Plugin::Settings::colour(const Setting &cSetting) const
{
    const std::string_view strValue = text(cSetting);
    unsigned nRgb = 0;
    if (!strValue.empty() && !toColour(strValue, nRgb))
        refuse(cSetting.m_szTag, strValue, "a colour as #FF8000");
    const auto fnByte = [=](int nShift) { return static_cast<unsigned char>(nRgb >> nShift & 0xff); };
    return {fnByte(16), fnByte(8), fnByte(0)};
}

Plugin::HsvRange Plugin::Settings::colourRange(const Setting &cSetting) const
{
    const std::string_view strValue = text(cSetting);
    int anValue[6] = {0, 0, 0, 179, 255, 255};
    if (!strValue.empty() && !toColourRange(strValue, anValue))
        refuse(cSetting.m_szTag, strValue,
               "h,s,v,h,s,v: the lowest and the highest hue (to 179), "
               "saturation and value (to 255)");
    return {{anValue[0], anValue[1], anValue[2]}, {anValue[3], anValue[4], anValue[5]}};
}

Plugin::Rect Plugin::Settings::region(const Setting &cSetting) const
{
    const std::string_view strValue = text(cSetting);
    int anValue[4] = {0, 0, 0, 0};
    if (!strValue.empty() && !toRegion(strValue, anValue))
        refuse(cSetting.m_szTag, strValue, "x,y,width,height");
    return {anValue[0], anValue[1], anValue[2], anValue[3]};
}

void Plugin::Settings::check(const Setting &cSetting) const
{
    switch (cSetting.m_eKind) {
    case SettingKind::Integer:
        integer(cSetting);
        break;
    case SettingKind::Real:
        real(cSetting);
        break;
    case SettingKind::Choice:
        choice(cSetting);
        break;
    case SettingKind::Flag:
        flag(cSetting);
        break;
    case SettingKind::Command:
        command(cSetting);
        break;
    case SettingKind::Colour:
        colour(cSetting);
        break;
    case SettingKind::ColourRange:
        colourRange(cSetting);
        break;
    case SettingKind::Region:
        region(cSetting);
        break;
    case SettingKind::Input:
    case SettingKind::Output:
        kind(cSetting);
        id(cSetting);
        break;
    case SettingKind::Text:
    case SettingKind::File:
    case SettingKind::Directory:
        break;
    }
}

std::string Plugin::whyRefused(std::string_view strTag, std::string_view strValue)
{
    if (!holdsTag(strValue) && strValue.find('\0') == std::string_view::npos)
        return {};
    return "Setting " + std::string(strTag) + " is \"" + std::string(strValue) +
           "\", which holds a tag: texts as <Name> have a meaning of their own.";
}

std::string Plugin::whyRefused(const Setting &cSetting, std::string_view strValue)
{
    std::string strReason = whyRefused(cSetting.m_szTag, strValue);
    if (!strReason.empty())
        return strReason;
    std::string strConfig;
    appendValue(strConfig, cSetting.m_szTag, strValue);
    try {
        Settings(strConfig).check(cSetting);
    } catch (const Error &cError) {
        return cError.what();
    }
    return {};
}

void Plugin::appendValue(std::string &strConfig, std::string_view strTag, std::string_view strValue)
{
    strConfig.append("<").append(strTag).append(">").append(strValue);
    strConfig.append("</").append(strTag).append(">");
}

std::string Plugin::printed(std::string_view strText)
{
    std::string strCommand("<CMD>print:");
    return strCommand.append(strText).append("</CMD>");
}
