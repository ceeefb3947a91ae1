#ifndef PLUGIN_DATASOURCE_H
#define PLUGIN_DATASOURCE_H

#include <map>
#include <memory>

#include "sdk/description.h"
#include "sdk/guard.h"
#include "sdk/source.h"
#include "sdk/tablecheck.h"

namespace Plugin
{
/// The instances of a data-source kind by their ID. The lock is a leaf: it is never held while an
/// instance works, and an instance that is removed meanwhile lives until its call returns.
template <typename Class>
class Instances
{
public:
    /// Makes the instance if there is none.
    void add(int nID)
    {
        const std::lock_guard cLock(m_cMutex);
        std::shared_ptr<Class> &pcSource = m_mapSource[nID];
        if (!pcSource)
            pcSource = std::make_shared<Class>();
    }
    void remove(int nID)
    {
        std::shared_ptr<Class> pcSource;
        const std::lock_guard cLock(m_cMutex);
        if (const auto it = m_mapSource.find(nID); it != m_mapSource.end()) {
            pcSource = std::move(it->second);
            m_mapSource.erase(it);
        }
    }
    /// Calls fnBody with the instance, if there is one; an exception becomes the instance's error.
    template <typename Body>
    void call(int nID, Body fnBody)
    {
        if (const std::shared_ptr<Class> pcSource = find(nID))
            guarded([&] { fnBody(*pcSource); },
                    [&](const std::string &strReason) { pcSource->setError(strReason); });
    }

    /// The kind's own instances. Never destroyed: at exit a task may still use one.
    static Instances &own()
    {
        static Instances &s_cInstances = *new Instances;
        return s_cInstances;
    }

private:
    std::shared_ptr<Class> find(int nID)
    {
        const std::lock_guard cLock(m_cMutex);
        const auto it = m_mapSource.find(nID);
        return it == m_mapSource.end() ? nullptr : it->second;
    }

    std::mutex m_cMutex;
    std::map<int, std::shared_ptr<Class>> m_mapSource;
};

template <typename Class>
inline constexpr PluginDescription SOURCE{Class::ABOUT, Class::SETTINGS, std::size(Class::SETTINGS), nullptr};
} // namespace Plugin

/// Makes a data-source plug-in of a class with a default constructor, derived from Plugin::Source,
/// that has
///     static constexpr Plugin::About ABOUT;
///     static constexpr Plugin::Setting SETTINGS[];
/// and overrides the functions of Plugin::Source.
#define OCULINEX_DATA_SOURCE(Class)                                                                          \
    static_assert(Plugin::checkTable<Class, true>());                                                        \
    OCULINEX_PLUGIN_EXPORT const char *getDataSourceName()                                                   \
    {                                                                                                        \
        return Class::ABOUT.m_szName;                                                                        \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT unsigned char *requestPicture(int nID, const char *szType, int *pnWidth,          \
                                                         int *pnHeight)                                      \
    {                                                                                                        \
        Plugin::Picture cPicture;                                                                            \
        Plugin::Instances<Class>::own().call(                                                                \
            nID, [&](Plugin::Source &cSource) { cPicture = cSource.deliver(szType ? szType : ""); });        \
        *pnWidth = cPicture.m_nWidth;                                                                        \
        *pnHeight = cPicture.m_nHeight;                                                                      \
        return cPicture.m_puchPixels;                                                                        \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void releasePicture(int) {}                                                       \
    OCULINEX_PLUGIN_EXPORT const char *getDataSourceSettings()                                               \
    {                                                                                                        \
        static const char *const s_szTable = Plugin::newSettingsTable(Plugin::SOURCE<Class>);                \
        return s_szTable;                                                                                    \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *showConfigDlg(char *pchConfig, bool)                                        \
    {                                                                                                        \
        return Plugin::editConfig(Plugin::SOURCE<Class>, pchConfig, nullptr);                                \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void setConfig(int nID, char *pchConfig)                                          \
    {                                                                                                        \
        Plugin::Instances<Class>::own().add(nID);                                                            \
        Plugin::Instances<Class>::own().call(nID, [=](Plugin::Source &cSource) {                             \
            cSource.applyConfig(Plugin::Settings(pchConfig ? pchConfig : ""));                               \
        });                                                                                                  \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void start(int nID)                                                               \
    {                                                                                                        \
        Plugin::Instances<Class>::own().call(nID, [](Plugin::Source &cSource) { cSource.begin(); });         \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void stop(int nID)                                                                \
    {                                                                                                        \
        Plugin::Instances<Class>::own().call(nID, [](Plugin::Source &cSource) { cSource.end(); });           \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void removeInstance(int nID)                                                      \
    {                                                                                                        \
        Plugin::Instances<Class>::own().remove(nID);                                                         \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *getLastError(int nID)                                                       \
    {                                                                                                        \
        std::string strError;                                                                                \
        Plugin::Instances<Class>::own().call(                                                                \
            nID, [&](Plugin::Source &cSource) { strError = cSource.lastError(); });                          \
        return Plugin::returnText(strError);                                                                 \
    }

#endif
