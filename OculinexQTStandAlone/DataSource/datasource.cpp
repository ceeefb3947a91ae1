#include "DataSource/datasource.h"

#include <cstring>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "DataSource/MemoryDiskCallBack/memorydiskcallback.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "guardedcall.h"
#include "logging.h"
#include "pluginloader.h"
#include "singleton.h"

DataSource *DataSource::s_pcThis = nullptr;
QMutex DataSource::s_cMutexForThis;
std::atomic<int> DataSource::DataSourceInstance::BaseID{1};

namespace
{
/// The last logged failure of each function of each instance that ever failed: a source that fails
/// in every run is told once.
struct Failures {
    std::mutex m_cMutex;
    std::unordered_map<int, std::map<std::string_view, QString>> m_mapTexts;
};

Failures &failures()
{
    return immortal<Failures>();
}

void logFailure(int nInstanceID, const char *szFunction, const QString &strWhat)
{
    callIfMemoryAllows([&] {
        {
            const std::lock_guard<std::mutex> cGuard(failures().m_cMutex);
            const auto [itLast, bFirst] = failures().m_mapTexts[nInstanceID].try_emplace(szFunction, strWhat);
            if (!bFirst && itLast->second == strWhat)
                return;
            itLast->second = strWhat;
        }
        qCWarning(lcSource).noquote() << "instance" << nInstanceID << szFunction << "failed:" << strWhat;
    });
}

/// The result of fnCall, or none when an exception leaves it.
template <typename Call>
auto callKind(int nInstanceID, const char *szFunction, const Call &fnCall)
{
    return guardedCall(fnCall, [&](const QString &strWhat) {
        logFailure(nInstanceID, szFunction, strWhat);
        return decltype(fnCall())();
    });
}

/// The configuration that the kind's window returns.
QString showWindow(int nInstanceID, fnShowConfigDlg fnShow, const QString &strConfig)
{
    return callKind(nInstanceID, "showConfigDlg", [&] {
        QByteArray achConfig = strConfig.toUtf8();
        return fnShow ? textFromPlugin(fnShow(achConfig.data(), true)) : QString();
    });
}

unsigned char *pixels(const ParamDIB &cPicture)
{
    return cPicture.getDIB();
}

unsigned char *pixels(const ParamGray8 &cPicture)
{
    return cPicture.getGray8();
}

size_t rowLength(const ParamDIB &, size_t nWidth)
{
    return (nWidth + 1) * 3 / 4 * 4;
}

size_t rowLength(const ParamGray8 &, size_t nWidth)
{
    return nWidth;
}

template <typename Param>
void describe(const DataSource::DataSourceInstance &cSource, Param *pcPicture)
{
    pcPicture->setName(cSource.m_strName);
    pcPicture->setDescribe(cSource.m_strDescribe);
}

/// Fetches one picture of the source into the store's picture.
template <typename Param>
bool fetch(const DataSource::DataSourceInstance &cSource, Param &cPicture, const char *szType)
{
    describe(cSource, &cPicture);
    const int nID = cSource.m_nInstanceID;
    int nWidth = 0;
    int nHeight = 0;
    const unsigned char *puchSource = callKind(
        nID, "requestPicture", [&] { return cSource.m_fnRequestPicture(nID, szType, &nWidth, &nHeight); });
    bool bStored = false;
    if (nWidth >= 1 && nHeight >= 1 && puchSource) {
        cPicture.resize(nWidth, nHeight);
        // A size that the store refuses leaves its picture empty.
        if (unsigned char *puchTarget = pixels(cPicture)) {
            memcpy(puchTarget, puchSource,
                   rowLength(cPicture, static_cast<size_t>(nWidth)) * static_cast<size_t>(nHeight));
            bStored = true;
        }
    }
    callKind(nID, "releasePicture", [&] { cSource.m_fnReleasePicture(nID); });
    return bStored;
}

struct BuiltInKind {
    const char *m_szName;
    DataSource::DataSourceInfo m_cInfo;
};

template <typename Kind>
constexpr BuiltInKind builtInKind(const char *szName)
{
    return {szName,
            {Kind::MemoryDiskRequestPicture, Kind::MemoryDiskReleasePicture, Kind::MemoryDiskShowConfigDlg,
             Kind::MemoryDiskSetConfig, Kind::MemoryDiskStart, Kind::MemoryDiskStop,
             Kind::MemoryDiskRemoveInstance, Kind::MemoryDiskGetLastError}};
}

/// The built-in kinds. They are registered after the plug-ins and replace those of the same name.
const std::initializer_list<BuiltInKind> BUILT_IN_KINDS = {
    builtInKind<MemoryDiskCallBack0>("Memory Disk 0"), builtInKind<MemoryDiskCallBack1>("Memory Disk 1"),
    builtInKind<MemoryDiskCallBack2>("Memory Disk 2"), builtInKind<MemoryDiskCallBack3>("Memory Disk 3"),
    builtInKind<MemoryDiskCallBack4>("Memory Disk 4"), builtInKind<MemoryDiskCallBack5>("Memory Disk 5"),
};
} // namespace

DataSource::DataSourceInstance *DataSource::DataSourceInfo::newInstance(QString strConfig,
                                                                        ArithmParamMgr *pcAPM)
{
    auto pcInstance = std::make_unique<DataSourceInstance>();
    pcInstance->m_fnRequestPicture = m_fnRequestPicture;
    pcInstance->m_fnReleasePicture = m_fnReleasePicture;
    pcInstance->m_fnShowConfigDlg = m_fnShowConfigDlg;
    pcInstance->m_fnSetConfig = m_fnSetConfig;
    pcInstance->m_fnStart = m_fnStart;
    pcInstance->m_fnStop = m_fnStop;
    pcInstance->m_fnRemoveInstance = m_fnRemoveInstance;
    pcInstance->m_fnGetLastError = m_fnGetLastError;
    pcInstance->setConfigString(strConfig);
    pcInstance->setArithmParamMgr(pcAPM);
    return pcInstance.release();
}

QString DataSource::DataSourceInfo::showConfigWindow(QString strConfig)
{
    return showWindow(0, m_fnShowConfigDlg, strConfig);
}

DataSource::DataSourceInstance::DataSourceInstance() : m_nInstanceID(BaseID++) {}

DataSource::DataSourceInstance::~DataSourceInstance()
{
    callKind(m_nInstanceID, "removeInstance", [this] {
        if (m_fnRemoveInstance)
            m_fnRemoveInstance(m_nInstanceID);
    });
    const std::lock_guard<std::mutex> cGuard(failures().m_cMutex);
    failures().m_mapTexts.erase(m_nInstanceID);
}

void DataSource::DataSourceInstance::setNameAndDescribe(QString strName, QString strDescribe)
{
    m_strName = strName;
    m_strDescribe = strDescribe;
}

void DataSource::DataSourceInstance::setDataType(QString strDataType)
{
    m_strDataType = strDataType;
}

QString DataSource::DataSourceInstance::getDataType()
{
    return m_strDataType;
}

void DataSource::DataSourceInstance::setDataID(int nDataID)
{
    m_nDataID = nDataID;
}

int DataSource::DataSourceInstance::getDataID()
{
    return m_nDataID;
}

void DataSource::DataSourceInstance::setArithmParamMgr(ArithmParamMgr *pcAPM)
{
    m_pcAPM = pcAPM;
}

QString DataSource::DataSourceInstance::getConfigString()
{
    return m_strConfigStr;
}

void DataSource::DataSourceInstance::setConfigString(QString strConfig)
{
    m_strConfigStr = strConfig;
    QByteArray achConfig = strConfig.toUtf8();
    callKind(m_nInstanceID, "setConfig", [&] {
        if (m_fnSetConfig)
            m_fnSetConfig(m_nInstanceID, achConfig.data());
    });
}

void DataSource::DataSourceInstance::showConfigWindow()
{
    setConfigString(showWindow(m_nInstanceID, m_fnShowConfigDlg, m_strConfigStr));
}

void DataSource::DataSourceInstance::start()
{
    callKind(m_nInstanceID, "start", [this] {
        if (m_fnStart)
            m_fnStart(m_nInstanceID);
    });
}

void DataSource::DataSourceInstance::stop()
{
    callKind(m_nInstanceID, "stop", [this] {
        if (m_fnStop)
            m_fnStop(m_nInstanceID);
    });
}

bool DataSource::DataSourceInstance::execute()
{
    if (!m_fnRequestPicture || !m_fnReleasePicture || !m_pcAPM || m_nDataID < 1)
        return false;
    if (m_strDataType == QLatin1String("RGB"))
        return fetch(*this, *m_pcAPM->getParamDIB(m_nDataID), "RGB");
    if (m_strDataType == QLatin1String("Gray8"))
        return fetch(*this, *m_pcAPM->getParamGray8(m_nDataID), "Gray8");
    return false;
}

QString DataSource::DataSourceInstance::getLastError()
{
    return callKind(m_nInstanceID, "getLastError", [this] {
        return m_fnGetLastError ? textFromPlugin(m_fnGetLastError(m_nInstanceID)) : QString();
    });
}

DataSource *DataSource::getInstance()
{
    return singleton(s_pcThis, s_cMutexForThis);
}

DataSource::DataSource()
{
    try {
        initDataSources();
    } catch (...) {
        qDeleteAll(m_lstArithmLib);
        qDeleteAll(m_mapDataSourceInfo);
        throw;
    }
}

DataSource::~DataSource()
{
    for (QLibrary *pcLibrary : qAsConst(m_lstArithmLib)) {
        pcLibrary->unload();
        delete pcLibrary;
    }
    qDeleteAll(m_mapDataSourceInfo);
    m_mapDataSourceInfo.clear();
}

void DataSource::initDataSources()
{
    const auto fnStore = [this](const QString &strName, std::unique_ptr<DataSourceInfo> pcInfo) {
        DataSourceInfo *&pcKept = m_mapDataSourceInfo[strName];
        delete std::exchange(pcKept, pcInfo.release());
    };

    PluginLoader::loadAll(
        QStringLiteral("DataSource/"),
        {"getDataSourceName", "requestPicture", "releasePicture", "showConfigDlg", "setConfig", "start",
         "stop", "removeInstance", "getLastError"},
        [&](std::unique_ptr<QLibrary> pcLibrary, const std::vector<QFunctionPointer> &vSymbols) {
            auto pcInfo = std::make_unique<DataSourceInfo>();
            pcInfo->m_fnRequestPicture = reinterpret_cast<fnRequestPicture>(vSymbols[1]);
            pcInfo->m_fnReleasePicture = reinterpret_cast<fnReleasePicture>(vSymbols[2]);
            pcInfo->m_fnShowConfigDlg = reinterpret_cast<fnShowConfigDlg>(vSymbols[3]);
            pcInfo->m_fnSetConfig = reinterpret_cast<fnSetConfig>(vSymbols[4]);
            pcInfo->m_fnStart = reinterpret_cast<fnStart>(vSymbols[5]);
            pcInfo->m_fnStop = reinterpret_cast<fnStop>(vSymbols[6]);
            pcInfo->m_fnRemoveInstance = reinterpret_cast<fnRemoveInstance>(vSymbols[7]);
            pcInfo->m_fnGetLastError = reinterpret_cast<fnGetLastError>(vSymbols[8]);
            fnStore(PluginLoader::selfDescription(*pcLibrary, "getDataSourceName", vSymbols[0]),
                    std::move(pcInfo));
            m_lstArithmLib.append(pcLibrary.get());
            static_cast<void>(pcLibrary.release());
        },
        [](const QString &strError) { qCInfo(lcPlugin).noquote() << strError; });

    for (const BuiltInKind &cKind : BUILT_IN_KINDS)
        fnStore(QString::fromLatin1(cKind.m_szName), std::make_unique<DataSourceInfo>(cKind.m_cInfo));
}

DataSource::DataSourceInstance *DataSource::createDataSourceFromConfigString(ArithmParamMgr *pcAPM,
                                                                             QString strConfig)
{
    const ConfigText cSettings(strConfig);
    DataSourceInfo *pcInfo = m_mapDataSourceInfo.value(cSettings.text("DSName"));
    if (!pcInfo)
        return nullptr;

    std::unique_ptr<DataSourceInstance> pcInstance(pcInfo->newInstance(cSettings.text("Config"), pcAPM));
    pcInstance->setNameAndDescribe(cSettings.text("OutputName"), cSettings.text("OutputDescribe"));
    const int nDataID = cSettings.number("OutputID");
    if (nDataID < 1)
        return pcInstance.release();

    const QString strType = cSettings.text("OutputType");
    pcInstance->setDataID(nDataID);
    pcInstance->setDataType(strType);
    if (!pcAPM)
        return pcInstance.release();
    if (strType == QLatin1String("RGB"))
        describe(*pcInstance, pcAPM->getParamDIB(nDataID));
    else if (strType == QLatin1String("Gray8"))
        describe(*pcInstance, pcAPM->getParamGray8(nDataID));
    else if (strType == QLatin1String("Gray16"))
        describe(*pcInstance, pcAPM->getParamGray16(nDataID));
    return pcInstance.release();
}
