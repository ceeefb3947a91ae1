#ifndef ARITHMMGR_H
#define ARITHMMGR_H

#include <QList>
#include <QMutex>
#include <QString>

#include "oculinexqtstandalone_export.h"

class Arithm;

/// The door to the algorithms for the rest of the library: forwards to ArithmFactory.
class OCULINEXQTSTANDALONE_EXPORT ArithmMgr
{
public:
    static ArithmMgr *getInstance();

    QList<QString> getArithmClassNames();
    QList<QString> getArithmNames(QString strClass);
    QString getArithm(QString strClass, QString strName);
    Arithm *getArithm(QString strID);

    static ArithmMgr *s_pcInstance;
    static QMutex s_cMtxForIns;
};

#endif
