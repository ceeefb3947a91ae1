#ifndef PLUGIN_SETTINGS_H
#define PLUGIN_SETTINGS_H

#include <stdexcept>
#include <string>
#include <string_view>

#include <QString>

#include "sdk/table.h"
#include "sdk/textvalue.h"

namespace Plugin
{
/// A failure that the user can mend: the text names the thing and the reason.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct Rgb {
    unsigned char m_nRed;
    unsigned char m_nGreen;
    unsigned char m_nBlue;
};

/// Colours from a lowest to a highest: hue 0 to 179, saturation and value 0 to 255, all inside. A
/// lowest hue above the highest goes round through 179 and 0 (reds).
struct HsvRange {
    int m_anLow[3];
    int m_anHigh[3];
};

/// In pixels; a width or height of 0 is the whole picture. It may lie outside of a picture.
struct Rect {
    int m_nX;
    int m_nY;
    int m_nWidth;
    int m_nHeight;
};

/// The settings in a config string, "<MinSize>200</MinSize>", as the table describes them.
///
/// Tags are matched as everywhere in the system: in any letter case, at the first begin and the
/// first end tag of the whole text. A missing, an empty and a blank setting are the same: they have
/// the table's initial value. Readers throw Error, with the tag and the value in its text, for a
/// value that they cannot use.
///
/// Reads the caller's text in place: it must outlive the object and every view that it returns.
class Settings
{
public:
    explicit Settings(std::string_view strConfig) : m_strConfig(strConfig) {}

    int operator[](const Integer &cSetting) const { return integer(cSetting); }
    double operator[](const Real &cSetting) const { return real(cSetting); }
    bool operator[](const Flag &cSetting) const { return flag(cSetting); }
    std::string_view operator[](const Text &cSetting) const { return text(cSetting); }
    std::string_view operator[](const File &cSetting) const { return text(cSetting); }
    std::string_view operator[](const Directory &cSetting) const { return text(cSetting); }
    Rgb operator[](const Colour &cSetting) const { return colour(cSetting); }
    HsvRange operator[](const ColourRange &cSetting) const { return colourRange(cSetting); }
    Rect operator[](const Region &cSetting) const { return region(cSetting); }
    /// Framed for the step's result ("<CMD>skip:2</CMD>"); empty when there is none.
    std::string operator[](const Command &cSetting) const { return command(cSetting); }
    template <typename Enum>
    Enum operator[](const Choice<Enum> &cSetting) const
    {
        return static_cast<Enum>(choice(cSetting));
    }

    /// Any tag's value without the blanks around it.
    std::string_view value(std::string_view strTag) const;
    /// The kind and the ID of a parameter of the store; an ID cannot be left out.
    Kind kind(const Setting &cSetting) const;
    int id(const Setting &cSetting) const;
    /// Throws if a reader of this setting would.
    void check(const Setting &cSetting) const;

protected:
    std::string_view m_strConfig;

private:
    int integer(const Setting &cSetting) const;
    double real(const Setting &cSetting) const;
    bool flag(const Setting &cSetting) const;
    int choice(const Setting &cSetting) const;
    std::string_view text(const Setting &cSetting) const;
    std::string command(const Setting &cSetting) const;
    Rgb colour(const Setting &cSetting) const;
    HsvRange colourRange(const Setting &cSetting) const;
    Rect region(const Setting &cSetting) const;
};

/// Why that text cannot be the setting's value; empty if it can. Besides a value that no reader
/// takes, that is one which holds a tag or a marker of tasks files: these have no escape.
std::string whyRefused(const Setting &cSetting, std::string_view strValue);
/// The same for a text that has no setting of its own, as the name of an output.
std::string whyRefused(std::string_view strTag, std::string_view strValue);
/// Appends "<Tag>value</Tag>".
void appendValue(std::string &strConfig, std::string_view strTag, std::string_view strValue);
/// Frames a text that the step prints.
std::string printed(std::string_view strText);

QString toQString(std::string_view strText);
} // namespace Plugin

#endif
