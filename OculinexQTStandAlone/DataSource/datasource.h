#ifndef DATASOURCE_H
#define DATASOURCE_H

#include <atomic>

#include <QLibrary>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

/// The functions that make a data-source kind. All texts are UTF-8 and zero-terminated; the kind
/// owns the texts and pixels that it returns and the caller copies them at once. They may be called
/// from several threads at once for different instances.
using fnGetDataSourceName = const char *(*)();
/// The next picture of the instance as "RGB" (blue, green, red; rows padded to 4 bytes) or "Gray8"
/// (rows packed), null when none is ready.
using fnRequestPicture = unsigned char *(*)(int nInstanceID, const char *szType, int *pnWidth, int *pnHeight);
using fnReleasePicture = void (*)(int nInstanceID);
using fnShowConfigDlg = char *(*)(char *pchConfig, bool bFlag);
using fnSetConfig = void (*)(int nInstanceID, char *pchConfig);
using fnStart = void (*)(int nInstanceID);
using fnStop = void (*)(int nInstanceID);
using fnRemoveInstance = void (*)(int nInstanceID);
using fnGetLastError = char *(*)(int nInstanceID);

/// The registry of data-source kinds, one for the process: the plug-ins found in "DataSource"
/// beside the host's executable and the built-in memory disks.
///
/// Threads: made on first use under a lock and only read afterwards. Instances are made by the
/// controlling thread; their start, stop and execute run on the task's thread while it runs.
class OCULINEXQTSTANDALONE_EXPORT DataSource
{
public:
    class DataSourceInstance;

    /// One registered kind, owned by the registry.
    class OCULINEXQTSTANDALONE_EXPORT DataSourceInfo
    {
    public:
        /// A new instance of the kind, which receives the configuration; the caller owns it.
        DataSourceInstance *newInstance(QString strConfig, ArithmParamMgr *pcAPM);
        /// Opens the kind's configuration window (GUI thread) and returns what it returns.
        QString showConfigWindow(QString strConfig);

        fnRequestPicture m_fnRequestPicture = nullptr;
        fnReleasePicture m_fnReleasePicture = nullptr;
        fnShowConfigDlg m_fnShowConfigDlg = nullptr;
        fnSetConfig m_fnSetConfig = nullptr;
        fnStart m_fnStart = nullptr;
        fnStop m_fnStop = nullptr;
        fnRemoveInstance m_fnRemoveInstance = nullptr;
        fnGetLastError m_fnGetLastError = nullptr;
    };

    /// One configured source, owned by its task. Delivers only with a data ID of at least 1.
    class OCULINEXQTSTANDALONE_EXPORT DataSourceInstance
    {
    public:
        DataSourceInstance();
        ~DataSourceInstance();
        DataSourceInstance(const DataSourceInstance &) = delete;
        DataSourceInstance &operator=(const DataSourceInstance &) = delete;

        void setNameAndDescribe(QString strName, QString strDescribe);
        void setDataType(QString strDataType);
        QString getDataType();
        void setDataID(int nDataID);
        int getDataID();
        void setArithmParamMgr(ArithmParamMgr *pcAPM);
        QString getConfigString();
        void setConfigString(QString strConfig);
        void showConfigWindow();

        void start();
        void stop();
        /// Fetches one picture into the store; true only if a picture was stored.
        bool execute();
        QString getLastError();

        int m_nInstanceID; ///< unique within the process, at least 1
        QString m_strName;
        QString m_strDescribe;
        fnRequestPicture m_fnRequestPicture = nullptr;
        fnReleasePicture m_fnReleasePicture = nullptr;
        fnShowConfigDlg m_fnShowConfigDlg = nullptr;
        fnSetConfig m_fnSetConfig = nullptr;
        fnStart m_fnStart = nullptr;
        fnStop m_fnStop = nullptr;
        fnRemoveInstance m_fnRemoveInstance = nullptr;
        fnGetLastError m_fnGetLastError = nullptr;
        ArithmParamMgr *m_pcAPM = nullptr; ///< not owned
        QString m_strConfigStr;
        QString m_strDataType; ///< "RGB", "Gray8" or "Gray16"; the last delivers nothing
        int m_nDataID = 0;

        static std::atomic<int> BaseID; ///< the next instance's ID, 1 at first
    };

    static DataSource *getInstance();

    DataSource();
    ~DataSource();
    DataSource(const DataSource &) = delete;
    DataSource &operator=(const DataSource &) = delete;

    void initDataSources();
    /// The instance that a data-source config string describes, null when its kind is unknown. The
    /// caller owns it.
    DataSourceInstance *createDataSourceFromConfigString(ArithmParamMgr *pcAPM, QString strConfig);
    /// Lets the user choose and configure a source for the store, which stays alive meanwhile. Null
    /// when cancelled, off the GUI thread and without a QApplication; else the caller owns the
    /// instance, and strConfig is its config string.
    DataSourceInstance *newDataSource(ArithmParamMgr *pcAPM, QString &strConfig);

    QMap<QString, DataSourceInfo *> m_mapDataSourceInfo;
    QList<QLibrary *> m_lstArithmLib; ///< libraries of registered plug-ins

    static DataSource *s_pcThis;
    static QMutex s_cMutexForThis;
};

#endif
