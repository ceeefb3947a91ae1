#include "MemoryDisk/memorydisk.h"

#include "MemoryDisk/dlgmemorydiskconfig.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"
#include "logging.h"
#include "textbuffer.h"

namespace
{
// Never destroyed, since a task's thread may still run at process exit.
QMutex &s_cMutexForText = *new QMutex;

/// Writes the picture; false when the memory disk did not take it. Empty pictures are skipped.
template <class Param, class Add>
bool write(const Param &cParam, unsigned char *puchPixels, Add fnAdd, MemoryDisk *pcDisk)
{
    if (cParam.getWidth() < 1 || cParam.getHeight() < 1)
        return true;
    return (pcDisk->*fnAdd)(puchPixels, cParam.getWidth(), cParam.getHeight());
}

QString writePicture(const ConfigText &cSettings, ArithmParamMgr *pcAPM)
{
    bool bOk = false;
    const int nDisk = cSettings.number("MemDisk", &bOk);
    if (!bOk || nDisk < 0 || nDisk >= MemoryDisk::DISK_NUM) {
        // One raw character instead of digits: readers of this text know it in that form.
        return QStringLiteral("指定的内存盘:") + QChar(nDisk & 0xFF) + QStringLiteral(" 不存在.");
    }
    const int nID = cSettings.number("InputID", &bOk);
    if (!bOk || !pcAPM)
        return QStringLiteral("指定的输入变量不存在.");

    const QString strType = cSettings.text("InputType");
    MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
    bool bTaken = false;
    if (strType == QLatin1String("RGB")) {
        const ParamDIB *pcDIB = pcAPM->getParamDIB(nID);
        bTaken = write(*pcDIB, pcDIB->getDIB(), &MemoryDisk::addDIB, pcDisk);
    } else if (strType == QLatin1String("Gray8")) {
        const ParamGray8 *pcGray8 = pcAPM->getParamGray8(nID);
        bTaken = write(*pcGray8, pcGray8->getGray8(), &MemoryDisk::addGray8, pcDisk);
    } else {
        return QStringLiteral("不支持的输入数据格式:") + strType;
    }
    if (!bTaken)
        qCInfo(lcTask) << "memory disk" << nDisk << "did not take picture" << nID << strType;
    return QString();
}
} // namespace

const char *MemoryDisk::s_ID = "KQ_MemoryDisk";
char *MemoryDisk::s_pchConfigStr = TextBuffer::create();
int MemoryDisk::s_nBuffLen = TextBuffer::INITIAL_LENGTH;

const char *MemoryDisk::getID()
{
    return s_ID;
}

QString MemoryDisk::getName()
{
    return QStringLiteral("写内存盘");
}

QString MemoryDisk::getClass()
{
    return QStringLiteral("系统");
}

char *MemoryDisk::showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool)
{
    QString strConfig = configFromDialog<DlgMemoryDiskConfig>(pchConfig, pcAPM);
    return transConfigStr(strConfig);
}

char *MemoryDisk::execute(char *pchConfig, ArithmParamMgr *pcAPM)
{
    QString strResult = writePicture(ConfigText(pchConfig), pcAPM);
    return transConfigStr(strResult);
}

char *MemoryDisk::transConfigStr(QString &strText)
{
    return TextBuffer::storeShared(strText, s_pchConfigStr, s_nBuffLen, s_cMutexForText);
}
