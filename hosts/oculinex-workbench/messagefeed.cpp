#include "messagefeed.h"

#include <atomic>
#include <chrono>

#include <QTimer>

#include "OculinexQTStandAloneInQt.h"

namespace
{
constexpr std::chrono::milliseconds POLL(5);
/// Messages arrive in the window in lots, so many ms apart.
constexpr int LOT_INTERVAL = 50;
/// What comes beyond that before the window takes the lot is dropped, so that a window that is held up
/// does not fill the memory.
constexpr size_t LOT_SIZE = 10000;
/// A longer text of the library is cut, in bytes.
constexpr size_t TEXT_LENGTH = 64 * 1024;

std::mutex s_cHandlerMutex; // guards s_pcFeed and is held while the feed takes a message
MessageFeed *s_pcFeed = nullptr;
std::atomic<QtMessageHandler> s_fnBefore{nullptr};

QString logKind(QtMsgType eType)
{
    switch (eType) {
    case QtDebugMsg:
        return QStringLiteral("debug");
    case QtInfoMsg:
        return QStringLiteral("info");
    case QtWarningMsg:
        return QStringLiteral("warning");
    default:
        return QStringLiteral("critical");
    }
}
} // namespace

MessageFeed::MessageFeed(QObject *pcParent) : QObject(pcParent), m_achText(TEXT_LENGTH)
{
    init();
    {
        const std::lock_guard<std::mutex> cGuard(s_cHandlerMutex);
        s_pcFeed = this;
    }
    // After another program's handler was put on top of this one, it still hands on to this one.
    const QtMessageHandler fnBefore = qInstallMessageHandler(&MessageFeed::handleLog);
    if (fnBefore != &MessageFeed::handleLog)
        s_fnBefore = fnBefore;
    m_cThread = std::thread([this] { work(); });
}

MessageFeed::~MessageFeed()
{
    {
        const std::lock_guard<std::mutex> cGuard(s_cHandlerMutex);
        s_pcFeed = nullptr;
    }
    const QtMessageHandler fnOnTop = qInstallMessageHandler(s_fnBefore);
    if (fnOnTop != &MessageFeed::handleLog)
        qInstallMessageHandler(fnOnTop);
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bStop = true;
        m_cStopped.notify_one();
    }
    m_cThread.join();
}

void MessageFeed::work()
{
    std::unique_lock<std::mutex> cLock(m_cMutex);
    do {
        cLock.unlock();
        takeQueue(Kind::Error, getErrMsg);
        takeQueue(Kind::Print, getOutputMsg);
        cLock.lock();
    } while (!m_cStopped.wait_for(cLock, POLL, [this] { return m_bStop; }));
}

void MessageFeed::takeQueue(Kind eKind, int (*fnTake)(char *, int))
{
    for (int nMore = 1; nMore == 1;) {
        m_achText[0] = 0; // an empty message writes nothing
        nMore = fnTake(m_achText.data(), static_cast<int>(m_achText.size()));
        if (nMore >= 0)
            add(eKind, QString::fromLocal8Bit(m_achText.data()));
    }
}

void MessageFeed::add(Kind eKind, const QString &strText)
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    if (m_lstMessage.size() < LOT_SIZE)
        m_lstMessage.push_back({eKind, QDateTime::currentDateTime(), strText});
    if (m_bTold)
        return;
    m_bTold = true;
    QMetaObject::invokeMethod(
        this, [this] { QTimer::singleShot(LOT_INTERVAL, this, &MessageFeed::tell); }, Qt::QueuedConnection);
}

void MessageFeed::tell()
{
    Messages lstMessage;
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bTold = false;
        lstMessage.swap(m_lstMessage);
    }
    emit received(lstMessage);
}

void MessageFeed::handleLog(QtMsgType eType, const QMessageLogContext &cContext, const QString &strText)
{
    {
        const std::lock_guard<std::mutex> cGuard(s_cHandlerMutex);
        if (s_pcFeed) {
            QString strLine = logKind(eType);
            if (cContext.category && qstrcmp(cContext.category, "default") != 0)
                strLine = QString::fromUtf8(cContext.category) + ' ' + strLine;
            s_pcFeed->add(Kind::Log, strLine + QStringLiteral(": ") + strText);
        }
    }
    if (const QtMessageHandler fnBefore = s_fnBefore)
        fnBefore(eType, cContext, strText);
}
