#ifndef PLUGIN_PARAMETER_H
#define PLUGIN_PARAMETER_H

#include <QString>

#include "sdk/settings.h"

/// The store's parameters as plug-ins write them.
namespace Plugin
{
inline QString toQString(std::string_view strText)
{
    return QString::fromUtf8(strText.data(), static_cast<int>(strText.size()));
}

/// Gives an output the name and the description of the settings Name and Describe, or its usual
/// ones. A step with several outputs puts a prefix before the two tags, as in "AreasName".
struct Title {
    const char *m_szName;
    const char *m_szDescribe;
};

template <typename Parameter>
void setTitle(Parameter &cParameter, const Settings &cSettings, const std::string &strPrefix,
              const Title &cTitle)
{
    const std::string_view strName = cSettings.text(strPrefix + "Name");
    const std::string_view strDescribe = cSettings.text(strPrefix + "Describe");
    cParameter.setName(toQString(strName.empty() ? cTitle.m_szName : strName));
    cParameter.setDescribe(toQString(strDescribe.empty() ? cTitle.m_szDescribe : strDescribe));
}
} // namespace Plugin

#endif
