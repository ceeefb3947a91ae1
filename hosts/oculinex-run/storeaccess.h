#ifndef STOREACCESS_H
#define STOREACCESS_H

#include <QList>
#include <QString>

/// Which parameters of the store a step reads and writes, as its config string says.

enum class ParamKind {
    Dib,
    Gray8,
    Gray16,
    Points,
    Lines,
    Polys,
    Areas,
    Strings,
    Longs,
    Doubles,
    Bools,
};

/// What a kind is called in messages, as in "grey picture".
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
    ParamKind m_eKind = ParamKind::Dib;
    QString m_strTag; ///< the tag that holds the ID
    int m_nID = 0;
    bool m_bNumber = false; ///< whether the tag holds a number
};

/// False for an algorithm whose tags are not known: it may read and write anything.
bool isStoreAccessKnown(const QString &strArithmID);
/// In the order in which the tags stand in the table: what is read comes first.
QList<StoreAccess> storeAccess(const QString &strArithmID, const QString &strConfig);

#endif
