#include "registrylist.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

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

const KnownPart *findPart(const QList<KnownPart> &lstPart, const QString &strWanted)
{
    for (const KnownPart &cPart : lstPart) {
        const QFileInfo cFile(cPart.m_strFile);
        const bool bFile = cFile.suffix().compare("so", Qt::CaseInsensitive) == 0;
        for (const QString &strName :
             {cPart.m_strID, cPart.m_strClass + '/' + cPart.m_strName, bFile ? cFile.fileName() : QString(),
              bFile ? cFile.completeBaseName() : QString(), cPart.m_bSource ? cPart.m_strName : QString()})
            if (!strName.isEmpty() && strName.compare(strWanted, Qt::CaseInsensitive) == 0)
                return &cPart;
    }
    return nullptr;
}
