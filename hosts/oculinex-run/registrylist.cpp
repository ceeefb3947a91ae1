#include "registrylist.h"

#include <QCoreApplication>
#include <QDir>

#include "DataSource/datasource.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"
#include "plugintables/plugintable.h"

namespace
{
QString place(const QString &strFile)
{
    if (strFile == fileOfFunction(&enableTaskStatus))
        return "built in";
    const QString strRelative = QDir(QCoreApplication::applicationDirPath()).relativeFilePath(strFile);
    return strRelative.startsWith("..") ? strFile : strRelative;
}
} // namespace

QList<KnownPart> knownParts()
{
    QList<KnownPart> lstPart;
    for (const ArithmFactory::ArithmInfo &cInfo : qAsConst(*ArithmFactory::getInstance()->getArithms()))
        lstPart += {false, cInfo.m_strClass, cInfo.m_strName, cInfo.m_pcArithm->getID(),
                    place(fileOfFunction(cInfo.m_pcArithm->m_fnExecute))};
    const auto &mapSource = DataSource::getInstance()->m_mapDataSourceInfo;
    for (auto iSource = mapSource.cbegin(); iSource != mapSource.cend(); ++iSource)
        lstPart += {true, {}, iSource.key(), {}, place(fileOfFunction(iSource.value()->m_fnRequestPicture))};
    return lstPart;
}
