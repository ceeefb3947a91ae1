#ifndef PLUGIN_SETTINGS_H
#define PLUGIN_SETTINGS_H

#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Plugin
{
/// A failure that the user can mend: the text names the thing and the reason.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The settings in a config string, read by tag: "<MinSize>200</MinSize>".
///
/// Tags are matched as everywhere in the system: in any letter case, at the first begin and the
/// first end tag of the whole text. A missing, an empty and a blank setting are the same. Readers
/// throw Error, with the tag and the value in its text, for a value that they cannot use.
///
/// Reads the caller's text in place: it must outlive the object and every view that text() returns.
class Settings
{
public:
    explicit Settings(const char *szConfig);

    /// The value without the blanks around it.
    std::string_view text(std::string_view strTag) const;
    /// A setting that cannot be left out.
    int number(std::string_view strTag, int nMin, int nMax) const;
    int number(std::string_view strTag, int nMin, int nMax, int nDefault) const;
    double real(std::string_view strTag, double dMin, double dMax, double dDefault) const;
    bool flag(std::string_view strTag, bool bDefault) const; ///< "0" or "1"
    /// The position of the value among the names (any letter case), 0 when it is missing.
    int choice(std::string_view strTag, std::initializer_list<std::string_view> lstName) const;
    /// The ID of a parameter of the store, at least 0; cannot be left out.
    int id(std::string_view strTag) const { return number(strTag, 0, std::numeric_limits<int>::max()); }

private:
    std::string_view m_strConfig;
};

bool equalsIgnoringCase(std::string_view strA, std::string_view strB); ///< letters A to Z only
std::string_view trimmed(std::string_view strText);
/// The whole number that is the whole text; blanks around it and a leading plus are accepted.
bool toNumber(std::string_view strText, int &nValue);
} // namespace Plugin

#endif
