#include "arithmMgr/arithmmgr.h"

#include "arithmMgr/arithmregister.h"
#include "singleton.h"

ArithmMgr *ArithmMgr::s_pcInstance = nullptr;
QMutex ArithmMgr::s_cMtxForIns;

ArithmMgr *ArithmMgr::getInstance()
{
    return singleton(s_pcInstance, s_cMtxForIns);
}

QList<QString> ArithmMgr::getArithmClassNames()
{
    return ArithmFactory::getInstance()->getArithmClassNames();
}

QList<QString> ArithmMgr::getArithmNames(QString strClass)
{
    return ArithmFactory::getInstance()->getArithmNames(strClass);
}

QString ArithmMgr::getArithm(QString strClass, QString strName)
{
    return ArithmFactory::getInstance()->getArithm(strClass, strName);
}

Arithm *ArithmMgr::getArithm(QString strID)
{
    return ArithmFactory::getInstance()->getArithm(strID);
}
