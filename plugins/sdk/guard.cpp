#include "sdk/guard.h"

#include <vector>

#include <QLoggingCategory>

#include "sdk/description.h"
#include "sdk/window/showsettings.h"

Q_LOGGING_CATEGORY(lcPluginWindow, "oculinex.plugin", QtWarningMsg)

char *Plugin::returnText(const std::string &strText)
{
    thread_local std::vector<char> s_achText;
    s_achText.assign(strText.c_str(), strText.c_str() + strText.size() + 1);
    return s_achText.data();
}

char *Plugin::editConfig(const PluginDescription &cPlugin, const char *szConfig, ArithmParamMgr *pcStore)
{
    const std::string strGiven = szConfig ? szConfig : "";
    // Whatever a data source returns is kept as its configuration, also an empty text.
    const std::string strUnchanged = cPlugin.isSource() ? strGiven : std::string();
    return guarded(
        [&] {
            const QString strNew = showSettings(cPlugin, QString::fromStdString(strGiven), pcStore);
            return returnText(strNew.isNull() ? strUnchanged : strNew.toStdString());
        },
        [&](const std::string &strReason) {
            qCWarning(lcPluginWindow).noquote()
                << "The window of" << cPlugin.m_cAbout.m_szID << "failed:" << strReason.c_str();
            return returnText(strUnchanged);
        });
}
