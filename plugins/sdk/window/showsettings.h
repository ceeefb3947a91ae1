#ifndef PLUGIN_SHOWSETTINGS_H
#define PLUGIN_SHOWSETTINGS_H

#include <QString>

class ArithmParamMgr;

namespace Plugin
{
struct PluginDescription;

/// Lets the user edit a configuration in a modal window and returns the new one, which begins with
/// a tag; a null text when the window was cancelled. pcStore is null for a data source.
/// Called in the GUI thread only.
QString showSettings(const PluginDescription &cPlugin, const QString &strConfig, ArithmParamMgr *pcStore);
} // namespace Plugin

#endif
