#ifndef PLUGIN_ALGORITHM_H
#define PLUGIN_ALGORITHM_H

#include "sdk/description.h"
#include "sdk/guard.h"
#include "sdk/step.h"
#include "sdk/tablecheck.h"

/// Makes an algorithm plug-in of a class with a default constructor and
///     static constexpr Plugin::About ABOUT;
///     static constexpr Plugin::Setting SETTINGS[];
///     std::string execute(const Plugin::Step &cStep);
/// execute() returns commands for the flow ("<CMD>print:…</CMD>", "<CMD>skip:2</CMD>",
/// "<CMD>stop:…</CMD>") or the empty text and throws for a failure, whose text then is the step's
/// error. Each thread has an object of its own, which serves all tasks of the thread: its members are
/// for buffers that are worth keeping, not for what belongs to a task.
#define OCULINEX_ALGORITHM(Class)                                                                            \
    static_assert(Plugin::checkTable<Class, false>());                                                       \
    OCULINEX_PLUGIN_EXPORT const char *getID()                                                               \
    {                                                                                                        \
        return Class::ABOUT.m_szID;                                                                          \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getArithmClass()                                                      \
    {                                                                                                        \
        return Class::ABOUT.m_szClass;                                                                       \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getArithmName()                                                       \
    {                                                                                                        \
        return Class::ABOUT.m_szName;                                                                        \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getArithmSettings()                                                   \
    {                                                                                                        \
        static const char *const s_szTable = Plugin::newSettingsTable(Plugin::ALGORITHM<Class>);             \
        return s_szTable;                                                                                    \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcStore, bool)            \
    {                                                                                                        \
        return Plugin::editConfig(Plugin::ALGORITHM<Class>, pchConfig, pcStore);                             \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *execute(char *pchConfig, ArithmParamMgr *pcStore)                           \
    {                                                                                                        \
        return Plugin::guarded(                                                                              \
            [=] { return Plugin::returnText(Plugin::execute<Class>(pchConfig, *pcStore)); },                 \
            Plugin::returnText);                                                                             \
    }

namespace Plugin
{
template <typename Class>
std::string execute(const char *szConfig, ArithmParamMgr &cStore)
{
    thread_local Class s_cAlgorithm;
    return s_cAlgorithm.execute(Step(szConfig ? szConfig : "", cStore));
}

template <typename Class>
inline constexpr PluginDescription ALGORITHM{Class::ABOUT, Class::SETTINGS, std::size(Class::SETTINGS),
                                             execute<Class>};
} // namespace Plugin

#endif
