#ifndef PLUGIN_DATASOURCE_H
#define PLUGIN_DATASOURCE_H

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "sdk/guard.h"
#include "sdk/settings.h"

namespace Plugin
{
/// The instances of a data-source kind by their ID. The lock is a leaf: it is never held while an
/// instance works, and an instance that is removed meanwhile lives until its call returns.
template <typename Source>
class Instances
{
public:
    /// Makes the instance if there is none.
    void add(int nID)
    {
        const std::lock_guard cLock(m_cMutex);
        std::shared_ptr<Source> &pcSource = m_mapSource[nID];
        if (!pcSource)
            pcSource = std::make_shared<Source>();
    }
    void remove(int nID)
    {
        std::shared_ptr<Source> pcSource;
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
        if (const std::shared_ptr<Source> pcSource = find(nID))
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
    std::shared_ptr<Source> find(int nID)
    {
        const std::lock_guard cLock(m_cMutex);
        const auto it = m_mapSource.find(nID);
        return it == m_mapSource.end() ? nullptr : it->second;
    }

    std::mutex m_cMutex;
    std::map<int, std::shared_ptr<Source>> m_mapSource;
};
} // namespace Plugin

/// Makes a data-source plug-in of a class with a default constructor and
///     unsigned char *request(std::string_view strType, int &nWidth, int &nHeight);
///         the next picture as "RGB" (blue, green, red; rows padded to 4 bytes) or "Gray8" (rows
///         packed), null when there is none; waits up to 100 ms then, so that a task without
///         pictures does not spin. The pixels stay until the next request.
///     void configure(const Plugin::Settings &cSettings);
///     void start();               back to the first picture
///     void stop();
///     std::string lastError();    empty when all is well
///     void setError(const std::string &strReason);
/// Calls for one instance may come from several threads.
#define OCULINEX_DATA_SOURCE(szName, Source)                                                                 \
    OCULINEX_PLUGIN_EXPORT const char *getDataSourceName()                                                   \
    {                                                                                                        \
        return szName;                                                                                       \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT unsigned char *requestPicture(int nID, const char *szType, int *pnWidth,          \
                                                         int *pnHeight)                                      \
    {                                                                                                        \
        unsigned char *puchPixels = nullptr;                                                                 \
        *pnWidth = *pnHeight = 0;                                                                            \
        Plugin::Instances<Source>::own().call(nID, [&](auto &cSource) {                                      \
            puchPixels = cSource.request(szType ? szType : "", *pnWidth, *pnHeight);                         \
        });                                                                                                  \
        return puchPixels;                                                                                   \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void releasePicture(int) {}                                                       \
    OCULINEX_PLUGIN_EXPORT char *showConfigDlg(char *pchConfig, bool)                                        \
    {                                                                                                        \
        return Plugin::returnText(pchConfig ? pchConfig : "");                                               \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void setConfig(int nID, char *pchConfig)                                          \
    {                                                                                                        \
        Plugin::Instances<Source>::own().add(nID);                                                           \
        Plugin::Instances<Source>::own().call(                                                               \
            nID, [=](auto &cSource) { cSource.configure(Plugin::Settings(pchConfig)); });                    \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void start(int nID)                                                               \
    {                                                                                                        \
        Plugin::Instances<Source>::own().call(nID, [](auto &cSource) { cSource.start(); });                  \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void stop(int nID)                                                                \
    {                                                                                                        \
        Plugin::Instances<Source>::own().call(nID, [](auto &cSource) { cSource.stop(); });                   \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT void removeInstance(int nID)                                                      \
    {                                                                                                        \
        Plugin::Instances<Source>::own().remove(nID);                                                        \
    }                                                                                                        \
    OCULINEX_PLUGIN_EXPORT char *getLastError(int nID)                                                       \
    {                                                                                                        \
        std::string strError;                                                                                \
        Plugin::Instances<Source>::own().call(nID, [&](auto &cSource) { strError = cSource.lastError(); });  \
        return Plugin::returnText(strError);                                                                 \
    }

#endif
