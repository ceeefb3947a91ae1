#ifndef PLUGIN_ALGORITHM_H
#define PLUGIN_ALGORITHM_H

#include "sdk/guard.h"
#include "sdk/settings.h"

class ArithmParamMgr;

/// Makes an algorithm plug-in of a function
///     std::string fnRun(const Plugin::Settings &cSettings, ArithmParamMgr &cStore);
/// that reads its inputs from the task's store and writes its outputs there. It returns commands
/// for the flow ("<CMD>print:…</CMD>", "<CMD>skip:2</CMD>", "<CMD>stop:…</CMD>") or the empty text
/// and throws for a failure, whose text then is the step's error. Several tasks call it at once.
///
/// szID is unique among all algorithms and never changes; szClass and szName are shown in menus.
#define OCULINEX_ALGORITHM(szID, szClass, szName, fnRun)                                                     \
    OCULINEX_PLUGIN_EXPORT const char *getID()                                                               \
    {                                                                                                        \
        return szID;                                                                                         \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getArithmClass()                                                      \
    {                                                                                                        \
        return szClass;                                                                                      \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getArithmName()                                                       \
    {                                                                                                        \
        return szName;                                                                                       \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *showConfigWindow(char *, ArithmParamMgr *, bool)                            \
    {                                                                                                        \
        return Plugin::returnText({});                                                                       \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *execute(char *pchConfig, ArithmParamMgr *pcStore)                           \
    {                                                                                                        \
        return Plugin::guarded(                                                                              \
            [=] { return Plugin::returnText(fnRun(Plugin::Settings(pchConfig), *pcStore)); },                \
            Plugin::returnText);                                                                             \
    }

#endif
