#include "sdk/window/showsettings.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QThread>

#include "sdk/window/settingswindow.h"

QString Plugin::showSettings(const PluginDescription &cPlugin, const QString &strConfig,
                             ArithmParamMgr *pcStore)
{
    static const QLoggingCategory s_cLog("oculinex.plugin", QtWarningMsg);
    const auto *pcApplication = qobject_cast<QApplication *>(QCoreApplication::instance());
    if (!pcApplication || pcApplication->thread() != QThread::currentThread()) {
        qCWarning(s_cLog, "The window of %s needs the thread of a QApplication.", cPlugin.m_cAbout.m_szID);
        return {};
    }
    SettingsWindow cWindow(cPlugin, strConfig, pcStore);
    return cWindow.exec() == QDialog::Accepted ? cWindow.config() : QString();
}
