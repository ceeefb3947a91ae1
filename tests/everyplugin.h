#ifndef EVERYPLUGIN_H
#define EVERYPLUGIN_H

#include <algorithm>
#include <functional>

#include <QHash>
#include <QMap>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "plugintables/plugintable.h"

/// All plug-ins that stand beside the executable, driven by nothing but the tables that they export.
namespace EveryPlugin
{
using Plugin::Kind;
using Plugin::SettingKind;
/// Values by tag. What is not there has its initial value, and ID 1 or 2 for what is read or written.
using Values = QHash<QString, QString>;

inline QList<PluginTable> algorithms()
{
    QList<PluginTable> lstTable;
    for (const auto &cInfo : qAsConst(*ArithmFactory::getInstance()->getArithms()))
        lstTable << algorithmTable(fileOfFunction(cInfo.m_pcArithm->m_fnExecute));
    lstTable.erase(std::remove_if(lstTable.begin(), lstTable.end(), std::mem_fn(&PluginTable::isNull)),
                   lstTable.end()); // built in
    return lstTable;
}

inline QList<PluginTable> dataSources()
{
    QList<PluginTable> lstTable;
    for (const auto *pcInfo : qAsConst(DataSource::getInstance()->m_mapDataSourceInfo)) {
        const PluginTable cTable = dataSourceTable(fileOfFunction(pcInfo->m_fnRequestPicture));
        if (!cTable.isNull())
            lstTable << cTable;
    }
    return lstTable;
}

/// Of an algorithm or a data source; null: there is none with that ID.
inline PluginTable table(const QString &strID)
{
    for (const PluginTable &cTable : algorithms() + dataSources())
        if (cTable.m_strID == strID)
            return cTable;
    return {};
}

inline QString tagged(const QString &strTag, const QString &strValue)
{
    return QStringLiteral("<%1>%2</%1>").arg(strTag, strValue);
}

inline QString config(const PluginTable &cTable, const Values &hashValue)
{
    QString strConfig;
    for (const PluginSetting &cSetting : cTable.m_lstSetting) {
        const QString strInitial = cSetting.isInput()                           ? QStringLiteral("1")
                                   : cSetting.isOutput()                        ? QStringLiteral("2")
                                   : cSetting.m_eKind == SettingKind::Directory ? OCULINEX_SOURCE_DIR
                                       "/examples/pictures"
                                   : cSetting.m_strFilter.contains(QLatin1String("png"))
                                       ? OCULINEX_SOURCE_DIR "/plugins/baseArithm/TemplateMatch/lamp.png"
                                       : cSetting.m_strInitial;
        strConfig += tagged(cSetting.m_strTag, hashValue.value(cSetting.m_strTag, strInitial));
        if (cSetting.isInput() && hashValue.contains(cSetting.m_strTypeTag))
            strConfig += tagged(cSetting.m_strTypeTag, hashValue[cSetting.m_strTypeTag]);
    }
    return strConfig;
}

/// The values with which a setting counts.
inline Values inForce(const PluginSetting &cSetting)
{
    return cSetting.m_strWhenTag.isEmpty() ? Values()
                                           : Values{{cSetting.m_strWhenTag, cSetting.m_lstWhenValue.first()}};
}

/// A step of every algorithm, in an order and with IDs so that each reads what the latest of the
/// steps before has written, or the colour picture 1, which is there.
struct Step {
    PluginTable m_cTable;
    QString m_strConfig;
};

inline QList<Step> flow()
{
    QList<Step> lstStep;
    QMap<Kind, int> mapLatest{{Kind::DIB, 1}};
    const auto fnFollows = [&](const PluginTable &cTable) {
        Values hashValue;
        for (const PluginSetting &cSetting : cTable.m_lstSetting) {
            if (!cSetting.isInput() || !cSetting.m_strWhenTag.isEmpty())
                continue;
            const auto pcKind = std::find_if(cSetting.m_lstKind.cbegin(), cSetting.m_lstKind.cend(),
                                             [&](Kind eKind) { return mapLatest.contains(eKind); });
            if (pcKind == cSetting.m_lstKind.cend())
                return false;
            hashValue[cSetting.m_strTag] = QString::number(mapLatest[*pcKind]);
            if (!cSetting.m_strTypeTag.isEmpty())
                hashValue[cSetting.m_strTypeTag] = Plugin::kindName(*pcKind);
        }
        for (const PluginSetting &cSetting : cTable.m_lstSetting) {
            if (!cSetting.isOutput())
                continue;
            Kind eKind = cSetting.m_lstKind.first();
            for (const Kind eOther : cSetting.m_lstKind)
                if (hashValue.value(cSetting.m_strTypeTag) == Plugin::kindName(eOther))
                    eKind = eOther;
            hashValue[cSetting.m_strTag] = QString::number(++mapLatest[eKind]);
        }
        lstStep.append({cTable, config(cTable, hashValue)});
        return true;
    };
    QList<PluginTable> lstWaiting = algorithms();
    for (int nBefore = 0; nBefore != lstWaiting.size();) {
        nBefore = lstWaiting.size();
        lstWaiting.erase(std::remove_if(lstWaiting.begin(), lstWaiting.end(), fnFollows), lstWaiting.end());
    }
    return lstWaiting.isEmpty() ? lstStep : QList<Step>();
}
} // namespace EveryPlugin

#endif
