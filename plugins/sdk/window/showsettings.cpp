#include "sdk/window/showsettings.h"

QString Plugin::showSettings(const PluginDescription & /*cPlugin*/, const QString & /*strConfig*/,
                             ArithmParamMgr * /*pcStore*/)
{
    return {};
}
