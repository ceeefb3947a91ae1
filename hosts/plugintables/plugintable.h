#ifndef PLUGINTABLE_H
#define PLUGINTABLE_H

#include <QList>
#include <QStringList>

#include "sdk/description.h"

/// What a plug-in that is made with the SDK tells hosts about itself: its help and its settings, with
/// their ranges, choices, and the parameters of the store that it reads and writes.

struct PluginCaption {
    QString m_strChinese;
    QString m_strEnglish;
};

struct PluginOption {
    QString m_strValue; ///< as in the config string
    PluginCaption m_cCaption;
};

/// One setting. What its kind does not have is empty.
struct PluginSetting {
    Plugin::SettingKind m_eKind = Plugin::SettingKind::Text;
    QString m_strTag;
    PluginCaption m_cCaption;
    PluginCaption m_cHelp;
    PluginCaption m_cUnit;
    QString m_strInitial; ///< as in the config string; what counts while the tag is missing
    double m_dMin = 0;    ///< of a number; both ends belong to the range
    double m_dMax = 0;
    bool m_bOdd = false;
    QList<PluginOption> m_lstOption;
    QString m_strFilter; ///< of a file: "*.png *.jpg"

    QList<Plugin::Kind> m_lstKind; ///< of an input or output; the first when m_strTypeTag is missing
    QString m_strTypeTag;          ///< the tag that tells which kind; empty if there is one only
    QString m_strPrefix;           ///< of an output: stands before its tags "Name" and "Describe"
    QString m_strName;             ///< of an output: counts while those are missing
    QString m_strDescribe;

    QString m_strWhenTag; ///< counts only while this choice is one of m_lstWhenValue; empty: always
    QStringList m_lstWhenValue;

    bool isInput() const { return m_eKind == Plugin::SettingKind::Input; }
    bool isOutput() const { return m_eKind == Plugin::SettingKind::Output; }
};

struct PluginTable {
    QString m_strID; ///< empty: there is no table
    QString m_strClass;
    QString m_strName;
    PluginCaption m_cHelp;
    QList<PluginSetting> m_lstSetting;

    bool isNull() const { return m_strID.isEmpty(); }
};

/// The file that a function was loaded from; empty for null.
QString fileOfFunction(const void *pvFunction);
template <typename Function>
QString fileOfFunction(Function *fnAny)
{
    return fileOfFunction(reinterpret_cast<const void *>(fnAny));
}

/// The table of an algorithm or a data source whose plug-in is loaded in this process; a null one for
/// any other file and for a plug-in that exports none. It is read anew with each call. Any thread.
PluginTable algorithmTable(const QString &strFile);
PluginTable dataSourceTable(const QString &strFile);

#endif
