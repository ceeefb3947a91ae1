#ifndef PLUGIN_DESCRIPTION_H
#define PLUGIN_DESCRIPTION_H

#include <string>

#include "sdk/table.h"

namespace Plugin
{
/// What an author tells about a plug-in.
struct About {
    const char *m_szID;    ///< unique among all algorithms, never changed; a data source's is its name
    const char *m_szClass; ///< the group in the menus; "" for a data source
    const char *m_szName;  ///< as it is shown in the menus
    Caption m_cHelp;       ///< what it does, in a sentence
};

/// A plug-in as the SDK sees it. It lives as long as the plug-in.
struct PluginDescription {
    About m_cAbout;
    const Setting *m_pcSettings;
    size_t m_nSettings;
    /// Runs the step once: null for a data source. Throws what the author's function throws, with a
    /// sentence for the user in what(). Any thread may call it, several at once on different stores.
    std::string (*m_fnExecute)(const char *szConfig, ArithmParamMgr &cStore);

    const Setting *begin() const { return m_pcSettings; }
    const Setting *end() const { return m_pcSettings + m_nSettings; }
    bool isSource() const { return m_fnExecute == nullptr; }
};

/// As the exported table calls it.
constexpr const char *settingKindName(SettingKind eKind)
{
    constexpr const char *NAMES[] = {"integer", "real",  "choice",    "flag",   "text",
                                     "command", "file",  "directory", "colour", "colourRange",
                                     "region",  "input", "output"};
    return NAMES[static_cast<size_t>(eKind)];
}

/// The plug-in's table as every plug-in exports it for hosts (getArithmSettings,
/// getDataSourceSettings): one JSON object in UTF-8. Initial values stand as in a config string, captions as
/// {"zh": …, "en": …}; what a setting does not have is left out. The text is never freed.
const char *newSettingsTable(const PluginDescription &cPlugin);
} // namespace Plugin

#endif
