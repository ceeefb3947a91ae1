#include "OculinexQTStandAloneInQt.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QImage>
#include <QSaveFile>

#include "globalfunction.h"
#include "guardedcall.h"
#include "logging.h"
#include "taskMgr/taskMgr.h"
#include "textbuffer.h"
#include "viewhold.h"

int gMaxMsgNum = 10;
int gnBuffLenForStandAlone = TextBuffer::INITIAL_LENGTH;
char *gpchConfigStrForStandAlone = TextBuffer::create();
QList<QString> glstErrMsg;
QList<QString> glstOutputMsg;
QMutex gMtxErr;
QMutex gMtxOutput;
bool gbInited = false;
char gszBlank[1] = "";
char gszErrVerMsg[33] = "ArithmParamMgr version mismatch.";

namespace
{
constexpr int USABLE_VIEW_NUM = 4;
constexpr int READABLE_VIEW_NUM = 3; // view 3 can be filled and saved, but not read
constexpr int MAX_VIEW_LENGTH = 10000;

/// The queues are going, and a task that could not be stopped or a host's own last destructors may
/// still ask for them: nothing is added or taken any more.
std::atomic<bool> s_bQueuesEnded{false};

/// Stands behind the queues and so goes before them, when the process ends. Waits for whoever is just
/// at a queue.
class QueuesEnd
{
public:
    QueuesEnd() = default;
    ~QueuesEnd()
    {
        s_bQueuesEnded = true;
        for (QMutex *pcMutex : {&gMtxErr, &gMtxOutput})
            QGuard cGuard(*pcMutex);
    }
    QueuesEnd(const QueuesEnd &) = delete;
    QueuesEnd &operator=(const QueuesEnd &) = delete;
};

const QueuesEnd s_cQueuesEnd;

void pushMessage(QList<QString> &lstMsg, QMutex &cMutex, const QString &strMsg)
{
    QGuard cGuard(cMutex);
    if (lstMsg.size() < gMaxMsgNum && !s_bQueuesEnded)
        lstMsg.append(strMsg);
}

int takeMessage(QList<QString> &lstMsg, QMutex &cMutex, char *szBuff, int nBuffLen)
{
    QGuard cGuard(cMutex);
    QByteArray achMsg;
    const auto fnEncode = [&] { achMsg = lstMsg.constFirst().toLocal8Bit(); };
    if (s_bQueuesEnded || lstMsg.isEmpty() || !callIfMemoryAllows(fnEncode)) // it waits until memory is there
        return -1;
    lstMsg.removeFirst();
    const int nCopied = qMin(achMsg.size(), qMax(nBuffLen, 1) - 1);
    // Nothing to copy leaves the buffer as it is, without even a terminating zero.
    if (szBuff && nCopied > 0) {
        memcpy(szBuff, achMsg.constData(), static_cast<size_t>(nCopied));
        szBuff[nCopied] = '\0';
    }
    return lstMsg.isEmpty() ? 0 : 1;
}

/// The task at that position; null when the position is out of range or unused.
TaskInfo *taskAt(int nPos)
{
    TaskMgr *pcManager = TaskMgr::getInstance();
    return nPos >= 0 && nPos < pcManager->getTaskNum() ? pcManager->getTask(nPos) : nullptr;
}

/// The task at that position when it can be edited, else null and the reason.
TaskInfo *idleTaskAt(int nPos, QString &strError)
{
    if (nPos < 0 || nPos >= TaskMgr::getInstance()->getTaskNum()) {
        strError = QStringLiteral("nTaskPos must less than task quantity.");
        return nullptr;
    }
    TaskInfo *pcTask = TaskMgr::getInstance()->getTask(nPos);
    if (!pcTask)
        strError = QStringLiteral("Task is not exist.");
    else if (pcTask->IsRunning())
        strError = QStringLiteral("Task is running.");
    return strError.isEmpty() ? pcTask : nullptr;
}

/// The bytes up to the first zero byte. False when they can't be read, std::bad_alloc when they are
/// more than a text holds.
bool readText(QFile &cFile, QByteArray &achText)
{
    constexpr int CHUNK = 1 << 20;
    constexpr int MAX_LENGTH = 1 << 30;
    for (;;) {
        const int nOld = achText.size();
        if (nOld > MAX_LENGTH)
            throw std::bad_alloc();
        achText.resize(nOld + CHUNK);
        const qint64 nRead = cFile.read(achText.data() + nOld, CHUNK);
        achText.resize(nOld + static_cast<int>(qMax<qint64>(nRead, 0)));
        if (nRead < 0)
            return false;
        const int nZero = achText.indexOf('\0', nOld);
        if (nZero >= 0)
            achText.truncate(nZero);
        if (nRead == 0 || nZero >= 0)
            return true;
    }
}

/// Whether a new file may take the old one's place without anybody seeing more than new contents:
/// no other name and no other owner would be left behind.
bool isReplaceable(const QString &strPath)
{
    struct stat cStat = {};
    if (stat(QFile::encodeName(strPath).constData(), &cStat) != 0)
        return errno == ENOENT && !strPath.isEmpty();
    return S_ISREG(cStat.st_mode) && cStat.st_nlink == 1 && cStat.st_uid == geteuid() &&
           cStat.st_gid == getegid();
}

/// False when the file can't be opened. What can't be written is only logged.
bool writeText(const QString &strPath, const QByteArray &achText)
{
    constexpr QIODevice::OpenMode eMode = QIODevice::WriteOnly | QIODevice::Text;
    if (isReplaceable(strPath)) {
        QSaveFile cFile(strPath);
        if (cFile.open(eMode)) {
            // A disk that fills up takes a part and reports no error.
            if (cFile.write(achText) != achText.size() || !cFile.flush())
                cFile.cancelWriting();
            if (cFile.commit())
                return true;
            // A file that is mounted by itself takes new contents, but no other file in its place.
            if (cFile.error() != QFileDevice::RenameError) {
                qCWarning(lcFile, "%s keeps its old contents: %s", qUtf8Printable(strPath),
                          qUtf8Printable(cFile.errorString()));
                return true;
            }
        }
    }
    QFile cFile(strPath);
    if (!cFile.open(eMode | QIODevice::Truncate))
        return false;
    if (cFile.write(achText) != achText.size() || !cFile.flush())
        qCWarning(lcFile, "%s is not written whole: %s", qUtf8Printable(strPath),
                  qUtf8Printable(cFile.errorString()));
    return true;
}

/// As transConfigStr() does for a text that is known beforehand, which takes no memory.
char *failureText(const QByteArray &achText)
{
    TextBuffer::store(achText, gpchConfigStrForStandAlone, gnBuffLenForStandAlone);
    return gpchConfigStrForStandAlone;
}
} // namespace

char *transConfigStr(QString strConfigStr)
{
    TextBuffer::store(strConfigStr.toLocal8Bit(), gpchConfigStrForStandAlone, gnBuffLenForStandAlone);
    return gpchConfigStrForStandAlone;
}

void FuncHaveErrorMessage(QString str)
{
    pushMessage(glstErrMsg, gMtxErr, str);
}

void FuncHavePrintMessage(QString str)
{
    pushMessage(glstOutputMsg, gMtxOutput, str);
}

int getErrMsg(char *szBuff, int nBuffLen)
{
    return takeMessage(glstErrMsg, gMtxErr, szBuff, nBuffLen);
}

int getOutputMsg(char *szBuff, int nBuffLen)
{
    return takeMessage(glstOutputMsg, gMtxOutput, szBuff, nBuffLen);
}

void init()
{
    if (gbInited)
        return;
    TaskMgr::getInstance()->setMssageCallBack(FuncHaveErrorMessage);
    TaskMgr::getInstance()->setPrintCallBack(FuncHavePrintMessage);
    // As much as lets a list of that many texts move them rather than grow: a message that says that
    // memory is short needs none. A host that wants no limit sets one that no memory could hold.
    constexpr int MOST = 1000;
    for (QList<QString> *plstMsg : {&glstErrMsg, &glstOutputMsg})
        plstMsg->reserve(4 * qBound(0, gMaxMsgNum, MOST));
    gbInited = true;
}

char *openTasksFile(char *szTaskFilePath)
{
    try {
        init();
        QString strTasks;
        {
            QFile cFile(QString::fromLocal8Bit(szTaskFilePath));
            QByteArray achText;
            if (!cFile.open(QIODevice::ReadOnly) || !readText(cFile, achText)) {
                qCWarning(lcFile, "%s: %s", qUtf8Printable(cFile.fileName()),
                          qUtf8Printable(cFile.errorString()));
                return failureText(QByteArrayLiteral("open file failed."));
            }
            strTasks = QString::fromUtf8(achText);
        }
        TaskMgr::getInstance()->fromString(strTasks);
        return gszBlank;
    } catch (const std::bad_alloc &) {
        callIfMemoryAllows([&] { qCWarning(lcFile, "%s takes more memory than there is.", szTaskFilePath); });
        return failureText(QByteArrayLiteral("open file failed."));
    }
}

char *saveTasksFile(char *szTaskFilePath)
{
    try {
        init();
        if (writeText(QString::fromUtf8(szTaskFilePath), TaskMgr::getInstance()->toString().toUtf8()))
            return gszBlank;
    } catch (const std::bad_alloc &) {
        callIfMemoryAllows([&] { qCWarning(lcFile, "%s is not saved: memory is short.", szTaskFilePath); });
    }
    return failureText(QByteArrayLiteral("save file failed."));
}

void startAllTasks()
{
    init();
    for (int nPos = 0; nPos < TaskMgr::getInstance()->getTaskNum(); ++nPos)
        startTask(nPos);
}

void stopAllTasks()
{
    init();
    for (int nPos = 0; nPos < TaskMgr::getInstance()->getTaskNum(); ++nPos)
        stopTask(nPos);
}

void startTask(int nPos)
{
    init();
    TaskInfo *pcTask = taskAt(nPos);
    try {
        if (pcTask && !pcTask->IsRunning())
            pcTask->startTask();
    } catch (const std::bad_alloc &) {
        FuncHaveErrorMessage(QStringLiteral("Task has no thread: std::bad_alloc"));
    }
}

void stopTask(int nPos)
{
    init();
    TaskInfo *pcTask = taskAt(nPos);
    if (pcTask && pcTask->IsRunning())
        pcTask->stopTask();
}

void runAllTasksOnce()
{
    init();
    for (int nPos = 0; nPos < TaskMgr::getInstance()->getTaskNum(); ++nPos)
        runTaskOnce(nPos);
}

void runTaskOnce(int nPos)
{
    init();
    TaskInfo *pcTask = taskAt(nPos);
    if (pcTask && !pcTask->IsRunning())
        pcTask->runTaskOnce();
}

bool IsTaskRunning(bool &bRunning, int nPos)
{
    init();
    bRunning = false;
    TaskMgr *pcManager = TaskMgr::getInstance();
    return nPos >= 0 && nPos < pcManager->getTaskNum() && pcManager->isTaskRunning(nPos, bRunning);
}

char *showConfigWindow(int nTaskPos, int nArithmPos)
{
    init();
    QString strError;
    TaskInfo *pcTask = idleTaskAt(nTaskPos, strError);
    return transConfigStr(pcTask ? pcTask->showConfigWindow(nArithmPos) : strError);
}

char *selectDataSource(int nTaskPos)
{
    init();
    QString strError;
    TaskInfo *pcTask = idleTaskAt(nTaskPos, strError);
    if (!pcTask)
        return transConfigStr(strError);
    pcTask->selectDataSource();
    return gszBlank;
}

void useDrawingWindow(int nPos, int nWidth, int nHeight)
{
    init();
    if (nPos >= 0 && nPos < USABLE_VIEW_NUM && nWidth >= 1 && nHeight >= 1)
        callIfMemoryAllows([=] { GlobalFunction::getInstance()->addView(nPos, nWidth, nHeight); });
}

int getDrawingWindow(int nPos, unsigned char *puchDIB, int nWidth, int nHeight)
{
    init();
    const auto isLength = [](int nLength) { return nLength >= 1 && nLength <= MAX_VIEW_LENGTH; };
    if (!isLength(nWidth) || !isLength(nHeight) || nPos < 0 || nPos >= READABLE_VIEW_NUM)
        return -1;
    std::unique_ptr<Drawing::DrawingOpt> pcOpt;
    bool bMore = false;
    if (const ViewHold cView(nPos); cView) {
        pcOpt.reset(cView->popDrawingOpt());
        bMore = cView->haveDrawingOpt();
    }
    if (!pcOpt)
        return -1;
    try {
        QImage cTarget(puchDIB, nWidth, nHeight, (nWidth * 3 + 3) & ~3, QImage::Format_RGB888);
        pcOpt->draw(&cTarget, pcOpt->m_pcAPM);
    } catch (const std::bad_alloc &) {
        callIfMemoryAllows(
            [&] { qCWarning(lcTask) << "view" << nPos << "misses an object: memory is short"; });
    }
    return bMore ? 1 : 0;
}

void enableTaskStatus(bool bEnabled)
{
    init();
    TaskInfo::setStatusEnabled(bEnabled);
}

bool getTaskStatus(int nPos, TaskStatus &cStatus)
{
    init();
    TaskMgr *pcManager = TaskMgr::getInstance();
    return nPos >= 0 && nPos < pcManager->getTaskNum() && pcManager->getTaskStatus(nPos, cStatus);
}
