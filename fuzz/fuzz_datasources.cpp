// Data sources: any config string makes a source that can be started, asked, stopped and deleted, or
// none.

#include <memory>

#include "DataSource/datasource.h"
#include "MemoryDisk/memorydisk.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    static unsigned char s_auchPixels[4 * 4 * 3];
    QString strConfig = QString::fromUtf8(Fuzzing::bytes(puchData, nSize));
    // What the corpus writes for a folder that has pictures.
    static const QString s_strFolder = [] {
        Fuzzing::writeScratch("a.bmp", QByteArray("BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\2\0\0\0"
                                                  "\1\0\x18\0\0\0\0\0\x10\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                                                  "\0\0\0\0\1\2\3\4\5\6\0\0\7\10\11\12\13\14\0\0",
                                                  70));
        return Fuzzing::scratch();
    }();
    strConfig.replace(QLatin1String("FOLDER/"), s_strFolder);

    Fuzzing::require(
        DataSource::getInstance()->m_mapDataSourceInfo.contains(QStringLiteral("Picture Folder")),
        "the plug-in is beside the fuzzer");
    ArithmParamMgr cStore;
    const std::unique_ptr<DataSource::DataSourceInstance> pcSource(
        DataSource::getInstance()->createDataSourceFromConfigString(&cStore, strConfig));
    if (!pcSource)
        return 0;
    // A memory disk that is empty would be waited for.
    for (int nDisk = 0; nDisk < MemoryDisk::DISK_NUM; ++nDisk) {
        MemoryDisk::getInstance(nDisk)->addDIB(s_auchPixels, 4, 4);
        MemoryDisk::getInstance(nDisk)->addGray8(s_auchPixels, 3, 5);
    }
    pcSource->start();
    if (pcSource->execute()) {
        const int nID = pcSource->getDataID();
        const bool bColour = pcSource->getDataType() == QLatin1String("RGB");
        Fuzzing::require(bColour ? cStore.getParamDIB(nID)->getWidth() > 0 &&
                                       cStore.getParamDIB(nID)->m_strName == pcSource->m_strName
                                 : cStore.getParamGray8(nID)->getWidth() > 0 &&
                                       cStore.getParamGray8(nID)->m_strName == pcSource->m_strName,
                         "a picture that came stands in the store under its name");
    }
    pcSource->getLastError();
    pcSource->stop();
    for (int nDisk = 0; nDisk < MemoryDisk::DISK_NUM; ++nDisk) {
        MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
        pcDisk->emptyDIBPrepared();
        pcDisk->emptyGray8Prepared();
        Fuzzing::require(pcDisk->getDIBIdleNum() == pcDisk->getDIBBuffNum() &&
                             pcDisk->getGray8IdleNum() == pcDisk->getGray8BuffNum(),
                         "every record comes back");
    }
    return 0;
}
