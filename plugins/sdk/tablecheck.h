#ifndef PLUGIN_TABLECHECK_H
#define PLUGIN_TABLECHECK_H

#include "sdk/table.h"
#include "sdk/textvalue.h"

/// What is checked of a table while the plug-in is compiled.
namespace Plugin
{
/// A tag in two parts, since the tags for an output's name and description are its prefix and a word.
struct TagParts {
    std::string_view m_strFirst;
    std::string_view m_strSecond;

    constexpr size_t size() const { return m_strFirst.size() + m_strSecond.size(); }
    constexpr char at(size_t nPos) const
    {
        return nPos < m_strFirst.size() ? m_strFirst[nPos] : m_strSecond[nPos - m_strFirst.size()];
    }
    constexpr bool equals(const TagParts &cOther) const
    {
        if (size() != cOther.size())
            return false;
        for (size_t n = 0; n < size(); ++n)
            if (toLower(at(n)) != toLower(cOther.at(n)))
                return false;
        return true;
    }
};

constexpr size_t TAGS_A_SETTING = 4;

/// The tags that a setting uses: its own, its type's, and those of an output's name and description;
/// empty where it has none.
constexpr TagParts tagOf(const Setting &cSetting, size_t nTag)
{
    const bool bOutput = cSetting.m_eKind == SettingKind::Output;
    switch (nTag) {
    case 0:
        return {cSetting.m_szTag, ""};
    case 1:
        return {cSetting.m_szTypeTag, ""};
    case 2:
        return bOutput ? TagParts{cSetting.m_szPrefix, "Name"} : TagParts{};
    default:
        return bOutput ? TagParts{cSetting.m_szPrefix, "Describe"} : TagParts{};
    }
}

/// Tags that frame other texts. An algorithm's configuration never stands beside the tag OutputID of
/// a task's source, so it may use that one.
constexpr bool usesReservedTag(const Setting *pcSettings, size_t nSettings, bool bSource)
{
    constexpr std::string_view RESERVED[] = {"DSName", "OutputName", "OutputDescribe", "OutputType", "Config",
                                             "View",   "CMD",        "OutputID"};
    const size_t nReserved = std::size(RESERVED) - (bSource ? 0 : 1);
    for (size_t n = 0; n < nSettings; ++n)
        for (size_t nTag = 0; nTag < TAGS_A_SETTING; ++nTag)
            for (size_t nWord = 0; nWord < nReserved; ++nWord)
                if (tagOf(pcSettings[n], nTag).equals({RESERVED[nWord], ""}))
                    return true;
    return false;
}

/// Each setting has a tag of letters and digits, and no two tags are the same but those of types.
constexpr bool hasProperTags(const Setting *pcSettings, size_t nSettings)
{
    for (size_t n = 0; n < nSettings * TAGS_A_SETTING; ++n) {
        const TagParts cTag = tagOf(pcSettings[n / TAGS_A_SETTING], n % TAGS_A_SETTING);
        if (cTag.size() == 0 && n % TAGS_A_SETTING == 0)
            return false;
        for (size_t nPos = 0; nPos < cTag.size(); ++nPos)
            if (!isTagLetter(cTag.at(nPos)))
                return false;
        for (size_t nOther = 0; nOther < n && cTag.size() > 0; ++nOther) {
            const bool bTypes = n % TAGS_A_SETTING == 1 && nOther % TAGS_A_SETTING == 1;
            if (!bTypes && cTag.equals(tagOf(pcSettings[nOther / TAGS_A_SETTING], nOther % TAGS_A_SETTING)))
                return false;
        }
    }
    return true;
}

constexpr bool hasProperRange(const Setting &cSetting)
{
    switch (cSetting.m_eKind) {
    case SettingKind::Integer:
    case SettingKind::Real:
        return cSetting.m_dMin < cSetting.m_dMax && cSetting.m_dMin <= cSetting.m_dInitial &&
               cSetting.m_dInitial <= cSetting.m_dMax &&
               !(cSetting.m_bOdd && static_cast<int>(cSetting.m_dInitial) % 2 == 0);
    case SettingKind::Choice:
        return cSetting.m_nOptions > 0;
    default:
        return true;
    }
}

/// What the plug-in's window would refuse is no initial value either.
constexpr bool hasProperText(const Setting &cSetting)
{
    const std::string_view strText = cSetting.m_szInitial;
    unsigned nRgb = 0;
    int anRange[6] = {};
    int anRegion[4] = {};
    switch (strText.empty() ? SettingKind::Text : cSetting.m_eKind) {
    case SettingKind::Command:
        return isCommand(strText) && !holdsTag(strText);
    case SettingKind::Colour:
        return toColour(strText, nRgb);
    case SettingKind::ColourRange:
        return toColourRange(strText, anRange);
    case SettingKind::Region:
        return toRegion(strText, anRegion);
    default:
        return !holdsTag(strText);
    }
}

constexpr bool allAre(bool (&fnProper)(const Setting &), const Setting *pcSettings, size_t nSettings)
{
    for (size_t n = 0; n < nSettings; ++n)
        if (!fnProper(pcSettings[n]))
            return false;
    return true;
}

/// A setting depends only on a choice of the same table.
constexpr bool hasProperConditions(const Setting *pcSettings, size_t nSettings)
{
    constexpr int WHEN_BITS = 32; // of Setting::m_nWhenOptions
    for (size_t n = 0; n < nSettings; ++n) {
        const std::string_view strWhen = pcSettings[n].m_szWhenTag;
        bool bThere = strWhen.empty();
        for (size_t nOther = 0; nOther < nSettings; ++nOther)
            bThere = bThere ||
                     (pcSettings[nOther].m_eKind == SettingKind::Choice &&
                      pcSettings[nOther].m_nOptions <= WHEN_BITS && strWhen == pcSettings[nOther].m_szTag);
        if (!bThere)
            return false;
    }
    return true;
}

constexpr bool hasParameters(const Setting *pcSettings, size_t nSettings)
{
    for (size_t n = 0; n < nSettings; ++n)
        if (pcSettings[n].m_nKinds != 0)
            return true;
    return false;
}

template <typename Author, bool bSource>
constexpr bool checkTable()
{
    constexpr size_t SETTINGS_NUM = std::size(Author::SETTINGS);
    static_assert(!usesReservedTag(Author::SETTINGS, SETTINGS_NUM, bSource),
                  "A setting uses a tag that frames other texts: DSName, OutputName, OutputDescribe, "
                  "OutputType, Config, View, CMD or, in a data source, OutputID.");
    static_assert(hasProperTags(Author::SETTINGS, SETTINGS_NUM),
                  "A setting has no tag, a tag with other than letters and digits, or one twice.");
    static_assert(allAre(hasProperRange, Author::SETTINGS, SETTINGS_NUM),
                  "A setting's minimum is not below its maximum, or its initial value is outside of its "
                  "range, or even where only odd ones count.");
    static_assert(allAre(hasProperText, Author::SETTINGS, SETTINGS_NUM),
                  "A setting's initial text holds a tag as <Name>, or is no command (skip:2, stop:TEXT, "
                  "print:TEXT), colour (#FF8000), colour range (h,s,v,h,s,v) or region (x,y,width,height).");
    static_assert(hasProperConditions(Author::SETTINGS, SETTINGS_NUM),
                  "A setting depends on a choice that is not in the table or has more than 32 options.");
    static_assert(!bSource || !hasParameters(Author::SETTINGS, SETTINGS_NUM),
                  "A data source has no parameters of the store among its settings.");
    return true;
}
} // namespace Plugin

#endif
