#ifndef STOREACCESS_H
#define STOREACCESS_H

#include <QList>
#include <QString>

#include "plugintables/plugintable.h"

/// Which parameters of the store a step reads and writes, as its config string says.

using ParamKind = Plugin::Kind;

/// What a kind is called in messages, as in "grey picture", in the language of the program.
QString paramKindName(ParamKind eKind);

/// What a step does with an ID below 0.
enum class Negative {
    Allowed, ///< an ID like any other, but -1 makes a new parameter each time
    Refused, ///< the step fails
    Ignored, ///< the step does nothing
};

struct StoreAccess {
    bool m_bWrite = false;
    Negative m_eNegative = Negative::Allowed;
    ParamKind m_eKind = ParamKind::DIB;
    QString m_strTag; ///< the tag that holds the ID
    int m_nID = 0;
    bool m_bNumber = false; ///< whether the tag holds a number
};

/// The table of an algorithm; a null one for those that are built in or made without the SDK. It stays
/// as it is while the process lives. Any thread, as what follows.
const PluginTable &settingsTable(const QString &strArithmID);
/// Whether a setting counts: those that depend on a choice do so with one of its options only.
bool isInForce(const PluginSetting &cSetting, const PluginTable &cTable, const QString &strConfig);
/// The kind of an input or output that may have one of several.
ParamKind kindOf(const PluginSetting &cSetting, const QString &strConfig);
/// A tag's value as it stands, and without the blanks around it.
QString rawConfigValue(const QString &strConfig, const QString &strTag);
QString configValue(const QString &strConfig, const QString &strTag);

/// False for an algorithm whose tags are not known: it may read and write anything.
bool isStoreAccessKnown(const QString &strArithmID);
/// What is read comes first.
QList<StoreAccess> storeAccess(const QString &strArithmID, const QString &strConfig);

#endif
