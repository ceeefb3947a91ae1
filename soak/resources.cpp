#include "resources.h"

#include <QDir>
#include <QFile>

namespace
{
int entries(const char *szDirectory)
{
    return QDir(QLatin1String(szDirectory))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}
} // namespace

Resources Resources::now()
{
    Resources cNow;
    QFile cFile(QStringLiteral("/proc/self/smaps_rollup"));
    if (cFile.open(QIODevice::ReadOnly))
        for (const QByteArray &achLine : cFile.readAll().split('\n')) {
            const QList<QByteArray> lstWords = achLine.simplified().split(' ');
            if (lstWords[0] == "Pss:")
                cNow.m_nPssKb = lstWords.value(1).toLongLong();
            if (lstWords[0] == "Pss_Anon:" || lstWords[0] == "Pss_Shmem:")
                cNow.m_nHeapKb += lstWords.value(1).toLongLong();
        }
    cFile.close();
    cNow.m_nDescriptors = entries("/proc/self/fd") - 1; // one reads the directory
    cNow.m_nThreads = entries("/proc/self/task");
    return cNow;
}
