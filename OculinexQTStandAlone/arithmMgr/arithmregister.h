#ifndef ARITHMREGISTER_H
#define ARITHMREGISTER_H

#include <QLibrary>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>

#include "arithmMgr/arithms.h"
#include "oculinexqtstandalone_export.h"

/// The registry of algorithms, one for the process: the built-in ones, then the plug-ins found in
/// "baseArithm" and then in "extArithm" beside the host's executable. Two entries may share an ID
/// or a name; searches find the first in registry order.
///
/// Threads: made on first use under a lock; every function may be called by any thread.
class OCULINEXQTSTANDALONE_EXPORT ArithmFactory
{
public:
    struct OCULINEXQTSTANDALONE_EXPORT ArithmInfo {
        QString m_strClass;           ///< group in menus
        QString m_strName;            ///< display name within the class
        Arithm *m_pcArithm = nullptr; ///< not owned
    };

    static ArithmFactory *getInstance();

    ArithmFactory();
    ~ArithmFactory();
    ArithmFactory(const ArithmFactory &) = delete;
    ArithmFactory &operator=(const ArithmFactory &) = delete;

    QList<ArithmInfo> *getArithms(); ///< the registry itself, in registration order
    QList<QString> getArithmClassNames();
    QList<QString> getArithmNames(QString strClass);
    /// The ID of the first algorithm of that class and name, empty if there is none.
    QString getArithm(QString strClass, QString strName);
    /// The first algorithm with that ID, null if there is none.
    Arithm *getArithm(QString strID);

    QList<QLibrary *> m_lstArithmLib; ///< libraries of registered plug-ins, in load order
    QList<ArithmInfo> m_lstArithmInfo;
    QMap<QString, Arithm *> m_mapArithm; ///< cache by ID

    static ArithmFactory *s_pcAF;
    static QMutex s_cMtxForAF;
};

#endif
