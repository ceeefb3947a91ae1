#ifndef PLUGIN_GUARD_H
#define PLUGIN_GUARD_H

#include <cxxabi.h>
#include <exception>
#include <string>

#define OCULINEX_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

class ArithmParamMgr;

/// What stands behind the functions that a plug-in exports.
namespace Plugin
{
struct PluginDescription;

/// A text handed over to the caller: valid until the thread's next call of a function that returns
/// one, so that several tasks may run one plug-in at once.
char *returnText(const std::string &strText);

/// Shows the plug-in's window. Returns what the system expects of a window: the new configuration; of
/// one that was cancelled or failed the empty text, or a data source's configuration as it was.
char *editConfig(const PluginDescription &cPlugin, const char *szConfig, ArithmParamMgr *pcStore);

/// Calls fnBody; no exception passes but the forced unwinding of a cancelled thread. What else is
/// thrown goes as text to fnFailed.
template <typename Body, typename Failed>
auto guarded(Body fnBody, Failed fnFailed) -> decltype(fnBody())
{
    std::string strReason;
    try {
        return fnBody();
    } catch (const abi::__forced_unwind &) {
        throw;
    } catch (const std::exception &cError) {
        strReason = cError.what();
    } catch (...) {
        strReason = "Something unknown went wrong.";
    }
    return fnFailed(strReason);
}
} // namespace Plugin

#endif
