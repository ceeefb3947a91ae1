#ifndef PLUGIN_GUARD_H
#define PLUGIN_GUARD_H

#include <cxxabi.h>
#include <exception>
#include <string>
#include <vector>

#define OCULINEX_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace Plugin
{
/// A text handed over to the caller: valid until the thread's next call of a function that returns
/// one, so that several tasks may run one plug-in at once.
inline char *returnText(const std::string &strText)
{
    thread_local std::vector<char> s_achText;
    s_achText.assign(strText.c_str(), strText.c_str() + strText.size() + 1);
    return s_achText.data();
}

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
