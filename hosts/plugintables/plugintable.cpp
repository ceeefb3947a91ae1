#include "plugintables/plugintable.h"

#include <dlfcn.h>
#include <limits>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
PluginCaption caption(const QJsonValue &cValue)
{
    return {cValue["zh"].toString(), cValue["en"].toString()};
}

/// The value that has that name, of an enumeration that goes from 0 to eLast.
template <typename Enum>
Enum named(const QString &strName, Enum eLast, const char *(*fnName)(Enum), Enum eUnknown)
{
    for (int n = 0; n <= static_cast<int>(eLast); ++n)
        if (strName == fnName(static_cast<Enum>(n)))
            return static_cast<Enum>(n);
    return eUnknown;
}

PluginSetting setting(const QJsonValue &cValue)
{
    using Plugin::Kind;
    using Plugin::SettingKind;
    PluginSetting cSetting;
    cSetting.m_eKind =
        named(cValue["kind"].toString(), SettingKind::Output, Plugin::settingKindName, SettingKind::Text);
    cSetting.m_strTag = cValue["tag"].toString();
    cSetting.m_cCaption = caption(cValue["caption"]);
    cSetting.m_cHelp = caption(cValue["help"]);
    cSetting.m_cUnit = caption(cValue["unit"]);
    cSetting.m_strInitial = cValue["initial"].toString();
    // An infinite end of a range cannot be written as JSON.
    cSetting.m_dMin = cValue["min"].toDouble(-std::numeric_limits<double>::infinity());
    cSetting.m_dMax = cValue["max"].toDouble(std::numeric_limits<double>::infinity());
    cSetting.m_bOdd = cValue["odd"].toBool();
    for (const QJsonValue cOption : cValue["options"].toArray())
        cSetting.m_lstOption += {cOption["value"].toString(), caption(cOption["caption"])};
    cSetting.m_strFilter = cValue["filter"].toString();
    for (const QJsonValue cKind : cValue["kinds"].toArray())
        cSetting.m_lstKind += named(cKind.toString(), Kind::Bools, Plugin::kindName, Kind::DIB);
    cSetting.m_strTypeTag = cValue["typeTag"].toString();
    cSetting.m_strPrefix = cValue["prefix"].toString();
    cSetting.m_strName = cValue["name"].toString();
    cSetting.m_strDescribe = cValue["describe"].toString();
    cSetting.m_strWhenTag = cValue["when"]["tag"].toString();
    for (const QJsonValue cWhen : cValue["when"]["values"].toArray())
        cSetting.m_lstWhenValue += cWhen.toString();
    return cSetting;
}
/// The table that the exported function of that name returns.
PluginTable exportedTable(const QString &strFile, const char *szFunction)
{
    PluginTable cTable;
    void *pvPlugin = dlopen(QFile::encodeName(strFile).constData(), RTLD_NOW | RTLD_NOLOAD);
    if (!pvPlugin)
        return cTable;
    using GetSettings = const char *(*)();
    const auto fnTable = reinterpret_cast<GetSettings>(dlsym(pvPlugin, szFunction));
    // The search also looks into the libraries that the plug-in is linked with.
    if (fnTable &&
        QFileInfo(fileOfFunction(fnTable)).canonicalFilePath() == QFileInfo(strFile).canonicalFilePath()) {
        const QJsonObject cObject = QJsonDocument::fromJson(QByteArray(fnTable())).object();
        cTable.m_strID = cObject["id"].toString();
        cTable.m_strClass = cObject["class"].toString();
        cTable.m_strName = cObject["name"].toString();
        cTable.m_cHelp = caption(cObject["help"]);
        for (const QJsonValue cSetting : cObject["settings"].toArray())
            cTable.m_lstSetting += setting(cSetting);
    }
    dlclose(pvPlugin);
    return cTable;
}
} // namespace

QString fileOfFunction(const void *pvFunction)
{
    Dl_info cInfo = {};
    if (!pvFunction || !dladdr(pvFunction, &cInfo) || !cInfo.dli_fname)
        return {};
    return QFile::decodeName(cInfo.dli_fname);
}

PluginTable algorithmTable(const QString &strFile)
{
    return exportedTable(strFile, "getArithmSettings");
}

PluginTable dataSourceTable(const QString &strFile)
{
    return exportedTable(strFile, "getDataSourceSettings");
}
