#include "sdk/description.h"

#include <algorithm>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
using Plugin::Caption;
using Plugin::Kind;
using Plugin::kindName;
using Plugin::PluginDescription;
using Plugin::Setting;
using Plugin::SettingKind;

void add(QJsonObject &cObject, const char *szKey, const char *szText)
{
    if (*szText)
        cObject[szKey] = szText;
}

void add(QJsonObject &cObject, const char *szKey, const Caption &cCaption)
{
    if (*cCaption.m_szChinese || *cCaption.m_szEnglish)
        cObject[szKey] = QJsonObject{{"zh", cCaption.m_szChinese}, {"en", cCaption.m_szEnglish}};
}

QJsonArray options(const Setting &cSetting)
{
    QJsonArray cOptions;
    for (int n = 0; n < cSetting.m_nOptions; ++n) {
        QJsonObject cOption{{"value", cSetting.m_pcOptions[n].m_szValue}};
        add(cOption, "caption", cSetting.m_pcOptions[n].m_cCaption);
        cOptions += cOption;
    }
    return cOptions;
}

/// The one that is meant when nothing is said comes first.
QJsonArray kinds(const Setting &cSetting)
{
    QJsonArray cKinds{kindName(cSetting.m_eUsual)};
    for (int n = 0; n <= static_cast<int>(Kind::Bools); ++n) {
        const Kind eKind = static_cast<Kind>(n);
        if (eKind != cSetting.m_eUsual && (cSetting.m_nKinds & Plugin::kindBit(eKind)))
            cKinds += kindName(eKind);
    }
    return cKinds;
}

/// The options of which the choice has to have one, for a setting that depends on it.
QJsonObject condition(const Setting &cSetting, const PluginDescription &cPlugin)
{
    const std::string_view strTag = cSetting.m_szWhenTag;
    const Setting *pcChoice = std::find_if(cPlugin.begin(), cPlugin.end(), [=](const Setting &cOther) {
        return cOther.m_eKind == SettingKind::Choice && strTag == cOther.m_szTag;
    });
    QJsonArray cValues;
    for (int n = 0; n < pcChoice->m_nOptions; ++n)
        if (cSetting.m_nWhenOptions >> n & 1)
            cValues += pcChoice->m_pcOptions[n].m_szValue;
    return {{"tag", cSetting.m_szWhenTag}, {"values", cValues}};
}

QString initialText(const Setting &cSetting)
{
    switch (cSetting.m_eKind) {
    case SettingKind::Integer:
    case SettingKind::Real:
    case SettingKind::Flag:
        return QString::number(cSetting.m_dInitial, 'g', 15);
    case SettingKind::Choice:
        return cSetting.m_pcOptions[static_cast<int>(cSetting.m_dInitial)].m_szValue;
    default:
        return cSetting.m_szInitial;
    }
}

QJsonObject toJson(const Setting &cSetting, const PluginDescription &cPlugin)
{
    QJsonObject cObject{{"tag", cSetting.m_szTag}, {"kind", settingKindName(cSetting.m_eKind)}};
    add(cObject, "caption", cSetting.m_cCaption);
    add(cObject, "help", cSetting.m_cHelp);
    add(cObject, "unit", cSetting.m_cUnit);
    add(cObject, "filter", cSetting.m_szFilter);
    if (*cSetting.m_szWhenTag)
        cObject["when"] = condition(cSetting, cPlugin);
    if (cSetting.m_nKinds != 0) {
        cObject["kinds"] = kinds(cSetting);
        add(cObject, "typeTag", cSetting.m_szTypeTag);
        add(cObject, "prefix", cSetting.m_szPrefix);
        add(cObject, "name", cSetting.m_szName);
        add(cObject, "describe", cSetting.m_szDescribe);
        return cObject;
    }
    cObject["initial"] = initialText(cSetting);
    if (cSetting.m_eKind == SettingKind::Integer || cSetting.m_eKind == SettingKind::Real) {
        cObject["min"] = cSetting.m_dMin;
        cObject["max"] = cSetting.m_dMax;
    }
    if (cSetting.m_bOdd)
        cObject["odd"] = true;
    if (cSetting.m_nOptions > 0)
        cObject["options"] = options(cSetting);
    return cObject;
}
} // namespace

const char *Plugin::newSettingsTable(const PluginDescription &cPlugin)
{
    QJsonArray cSettings;
    for (const Setting &cSetting : cPlugin)
        cSettings += toJson(cSetting, cPlugin);
    QJsonObject cTable{
        {"id", cPlugin.m_cAbout.m_szID}, {"name", cPlugin.m_cAbout.m_szName}, {"settings", cSettings}};
    add(cTable, "class", cPlugin.m_cAbout.m_szClass);
    add(cTable, "help", cPlugin.m_cAbout.m_cHelp);
    return qstrdup(QJsonDocument(cTable).toJson(QJsonDocument::Compact).constData());
}
