#ifndef PLUGIN_TABLE_H
#define PLUGIN_TABLE_H

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "arithmparammgr.h"

/// The table of settings that a plug-in is described by. It is made while the plug-in is compiled:
///
///     constexpr Plugin::PictureInput INPUT("InputID", {"输入图像", "Input picture"}, Plugin::Kind::Gray8);
///     constexpr Plugin::Integer LEVEL =
///         Plugin::Integer("Level", {"阈值", "Level"}, 127).range(0, 255).help({"…", "…"});
///     constexpr Plugin::Setting SETTINGS[] = {INPUT, LEVEL};
///
/// A setting's type is that of its value: step[LEVEL] is an int. All texts are UTF-8.
namespace Plugin
{
using Kind = ArithmParamMgr::Kind;

/// What is shown, in both languages.
struct Caption {
    const char *m_szChinese = "";
    const char *m_szEnglish = "";
};

/// One of the values of a choice: as it stands in the config string and as it is shown.
struct Option {
    const char *m_szValue;
    Caption m_cCaption;
};

enum class SettingKind {
    Integer,
    Real,
    Choice,
    Flag, ///< "0" or "1"
    Text,
    Command,     ///< "skip:N", "stop:TEXT" or "print:TEXT"; empty for none
    File,        ///< path of a file
    Directory,   ///< path of a folder
    Colour,      ///< "#rrggbb"
    ColourRange, ///< "h,s,v,h,s,v": lowest and highest; h 0 to 179 (the first may be the larger), s, v to 255
    Region,      ///< "x,y,width,height" in pixels; empty for the whole picture
    Input,       ///< ID of a parameter that is read
    Output,      ///< ID of a parameter that is written
};

/// One line of the table. Plug-ins make it through the typed settings below.
struct Setting {
    SettingKind m_eKind = SettingKind::Text;
    bool m_bOdd = false; ///< of a whole number: only odd ones
    const char *m_szTag = "";
    Caption m_cCaption;
    Caption m_cHelp;

    const char *m_szInitial = ""; ///< value of a text, path, command, colour or region that is missing
    double m_dInitial = 0;        ///< of a number that is missing; of a choice the position; of a flag 0 or 1
    double m_dMin = 0;            ///< of a number; both ends belong to the range
    double m_dMax = 0;
    Caption m_cUnit;

    const Option *m_pcOptions = nullptr; ///< of a choice
    const char *m_szFilter = "";         ///< of a file: "*.png *.jpg"

    int m_nOptions = 0;
    unsigned m_nKinds = 0;        ///< of a parameter: the kinds that it may have (kindBit)
    Kind m_eUsual = Kind::DIB;    ///< that one which it has when m_szTypeTag is missing
    unsigned m_nWhenOptions = 0;  ///< with m_szWhenTag: a bit for each option
    const char *m_szTypeTag = ""; ///< the tag that tells which ("RGB" …); "" if there is one kind only
    const char *m_szPrefix = "";  ///< of an output: before its tags "Name" and "Describe"
    const char *m_szName = "";    ///< of an output: its name and description when these are missing
    const char *m_szDescribe = "";

    const char *m_szWhenTag = ""; ///< counts only while this choice is in m_nWhenOptions; "" always
};

constexpr unsigned kindBit(Kind eKind)
{
    return 1U << static_cast<unsigned>(eKind);
}

/// As in the tags that hold a type.
constexpr const char *kindName(Kind eKind)
{
    constexpr const char *NAMES[] = {"RGB",   "Gray8",   "Gray16", "Points",  "Lines", "Polys",
                                     "Areas", "Strings", "Longs",  "Doubles", "Bools"};
    return NAMES[static_cast<size_t>(eKind)];
}

constexpr bool isPicture(Kind eKind)
{
    return eKind == Kind::DIB || eKind == Kind::Gray8 || eKind == Kind::Gray16;
}

/// What every typed setting can be given.
template <typename Self>
struct Described : Setting {
    constexpr Described(SettingKind eKind, const char *szTag, Caption cCaption)
    {
        m_eKind = eKind;
        m_szTag = szTag;
        m_cCaption = cCaption;
    }
    constexpr Self help(Caption cHelp) const
    {
        Self cSelf = self();
        cSelf.m_cHelp = cHelp;
        return cSelf;
    }
    /// Counts only while that choice has one of these options.
    template <typename Choice, typename... Options>
    constexpr Self when(const Choice &cChoice, Options... eOptions) const
    {
        static_assert(sizeof...(Options) > 0 && (std::is_same_v<typename Choice::Value, Options> && ...),
                      "A setting depends on options of the choice.");
        Self cSelf = self();
        cSelf.m_szWhenTag = cChoice.m_szTag;
        cSelf.m_nWhenOptions = ((1U << static_cast<unsigned>(eOptions)) | ...);
        return cSelf;
    }
    constexpr Self unit(Caption cUnit) const
    {
        Self cSelf = self();
        cSelf.m_cUnit = cUnit;
        return cSelf;
    }

protected:
    constexpr Self self() const { return static_cast<const Self &>(*this); }
};

/// A whole number; 0 and more unless given a range.
struct Integer : Described<Integer> {
    constexpr Integer(const char *szTag, Caption cCaption, int nInitial)
        : Described(SettingKind::Integer, szTag, cCaption)
    {
        m_dInitial = nInitial;
        m_dMax = 0x7fffffff;
    }
    constexpr Integer range(int nMin, int nMax) const
    {
        Integer cSelf = self();
        cSelf.m_dMin = nMin;
        cSelf.m_dMax = nMax;
        return cSelf;
    }
    constexpr Integer odd() const
    {
        Integer cSelf = self();
        cSelf.m_bOdd = true;
        return cSelf;
    }
};

struct Real : Described<Real> {
    constexpr Real(const char *szTag, Caption cCaption, double dInitial, double dMin, double dMax)
        : Described(SettingKind::Real, szTag, cCaption)
    {
        m_dInitial = dInitial;
        m_dMin = dMin;
        m_dMax = dMax;
    }
};

/// One of the options, which Enum numbers from 0 in the order of the array; the first when missing.
template <typename Enum>
struct Choice : Described<Choice<Enum>> {
    using Value = Enum;
    template <size_t nOptions>
    constexpr Choice(const char *szTag, Caption cCaption, const Option (&acOption)[nOptions])
        : Described<Choice>(SettingKind::Choice, szTag, cCaption)
    {
        this->m_pcOptions = acOption;
        this->m_nOptions = static_cast<int>(nOptions);
    }
};

struct Flag : Described<Flag> {
    constexpr Flag(const char *szTag, Caption cCaption, bool bInitial = false)
        : Described(SettingKind::Flag, szTag, cCaption)
    {
        m_dInitial = bInitial ? 1 : 0;
    }
};

/// The settings whose value is a text or is read from one.
template <SettingKind eSettingKind>
struct Written : Described<Written<eSettingKind>> {
    constexpr Written(const char *szTag, Caption cCaption, const char *szInitial = "")
        : Described<Written>(eSettingKind, szTag, cCaption)
    {
        this->m_szInitial = szInitial;
    }
    /// Of a file: "*.png *.jpg".
    constexpr Written filter(const char *szFilter) const
    {
        static_assert(eSettingKind == SettingKind::File, "Only files have a filter.");
        Written cSelf = this->self();
        cSelf.m_szFilter = szFilter;
        return cSelf;
    }
};
using Text = Written<SettingKind::Text>;
using Command = Written<SettingKind::Command>;
using File = Written<SettingKind::File>;
using Directory = Written<SettingKind::Directory>;
using Colour = Written<SettingKind::Colour>;
using ColourRange = Written<SettingKind::ColourRange>;
using Region = Written<SettingKind::Region>;

/// A picture that is read.
struct PictureInput : Described<PictureInput> {
    constexpr PictureInput(const char *szTag, Caption cCaption, Kind eKind)
        : Described(SettingKind::Input, szTag, cCaption)
    {
        m_eUsual = eKind;
        m_nKinds = kindBit(eKind);
    }
    /// May also be of that kind; the tag tells which it is.
    constexpr PictureInput orKind(Kind eKind, const char *szTypeTag) const
    {
        PictureInput cSelf = self();
        cSelf.m_nKinds |= kindBit(eKind);
        cSelf.m_szTypeTag = szTypeTag;
        return cSelf;
    }
};

/// Outputs have a name and a description, which the settings Name and Describe replace. A step with
/// several outputs puts a prefix before the two tags, as in "AreasName".
template <typename Self>
struct Titled : Described<Self> {
    constexpr Titled(const char *szTag, Caption cCaption, const char *szName, const char *szDescribe)
        : Described<Self>(SettingKind::Output, szTag, cCaption)
    {
        this->m_szName = szName;
        this->m_szDescribe = szDescribe;
    }
    constexpr Self prefix(const char *szPrefix) const
    {
        Self cSelf = this->self();
        cSelf.m_szPrefix = szPrefix;
        return cSelf;
    }
};

/// A picture that is written.
struct PictureOutput : Titled<PictureOutput> {
    constexpr PictureOutput(const char *szTag, Caption cCaption, Kind eKind, const char *szName,
                            const char *szDescribe)
        : Titled(szTag, cCaption, szName, szDescribe)
    {
        m_eUsual = eKind;
        m_nKinds = kindBit(eKind);
    }
    /// Of the same kind as that input.
    constexpr PictureOutput(const char *szTag, Caption cCaption, const PictureInput &cInput,
                            const char *szName, const char *szDescribe)
        : PictureOutput(szTag, cCaption, cInput.m_eUsual, szName, szDescribe)
    {
        m_nKinds = cInput.m_nKinds;
        m_szTypeTag = cInput.m_szTypeTag;
    }
};

/// A list that is read.
template <Kind eListKind>
struct ListInput : Described<ListInput<eListKind>> {
    static_assert(!isPicture(eListKind), "Pictures are read through PictureInput.");
    constexpr ListInput(const char *szTag, Caption cCaption)
        : Described<ListInput>(SettingKind::Input, szTag, cCaption)
    {
        this->m_eUsual = eListKind;
        this->m_nKinds = kindBit(eListKind);
    }
};

/// A list that is read, of whatever kind; the type tag tells which.
struct AnyListInput : Described<AnyListInput> {
    constexpr AnyListInput(const char *szTag, Caption cCaption, Kind eUsual, const char *szTypeTag)
        : Described(SettingKind::Input, szTag, cCaption)
    {
        m_eUsual = eUsual;
        m_szTypeTag = szTypeTag;
        for (const Kind eKind : {Kind::Points, Kind::Lines, Kind::Polys, Kind::Areas, Kind::Strings,
                                 Kind::Longs, Kind::Doubles, Kind::Bools})
            m_nKinds |= kindBit(eKind);
    }
};

/// A list that is written.
template <Kind eListKind>
struct ListOutput : Titled<ListOutput<eListKind>> {
    static_assert(!isPicture(eListKind), "Pictures are written through PictureOutput.");
    constexpr ListOutput(const char *szTag, Caption cCaption, const char *szName, const char *szDescribe)
        : Titled<ListOutput>(szTag, cCaption, szName, szDescribe)
    {
        this->m_eUsual = eListKind;
        this->m_nKinds = kindBit(eListKind);
    }
};
} // namespace Plugin

#endif
