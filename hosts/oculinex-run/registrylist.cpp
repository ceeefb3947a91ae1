#include "registrylist.h"

#include <dlfcn.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include "DataSource/datasource.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"

namespace
{
/// The file that a function was loaded from.
template <typename Function>
QString fileOf(Function fnAny)
{
    Dl_info cInfo = {};
    if (!fnAny || !dladdr(reinterpret_cast<void *>(fnAny), &cInfo) || !cInfo.dli_fname)
        return {};
    return QFile::decodeName(cInfo.dli_fname);
}

QString place(const QString &strFile)
{
    if (strFile == fileOf(&enableTaskStatus))
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
                    place(fileOf(cInfo.m_pcArithm->m_fnExecute))};
    const auto &mapSource = DataSource::getInstance()->m_mapDataSourceInfo;
    for (auto iSource = mapSource.cbegin(); iSource != mapSource.cend(); ++iSource)
        lstPart += {true, {}, iSource.key(), {}, place(fileOf(iSource.value()->m_fnRequestPicture))};
    return lstPart;
}
