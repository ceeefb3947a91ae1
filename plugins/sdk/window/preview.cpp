#include "sdk/window/preview.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "sdk/guard.h"
#include "sdk/window/storecopy.h"

using Plugin::Preview;

namespace
{
/// How many threads compute previews now. At exit, and before the plug-in is unloaded, they are
/// waited for, but not without end.
class Running
{
public:
    void add(int nCount)
    {
        const std::lock_guard cLock(m_cMutex);
        m_nRunning += nCount;
        m_cChanged.notify_all();
    }
    void waitForEnd()
    {
        constexpr std::chrono::seconds PATIENCE(5);
        std::unique_lock cLock(m_cMutex);
        m_cChanged.wait_for(cLock, PATIENCE, [this] { return m_nRunning == 0; });
    }
    /// Never destroyed, since a thread may outlast the patience.
    static Running &own()
    {
        static Running &s_cRunning = *new Running;
        static const struct AtExit {
            ~AtExit() { s_cRunning.waitForEnd(); }
        } s_cAtExit;
        return s_cRunning;
    }

private:
    std::mutex m_cMutex;
    std::condition_variable m_cChanged;
    int m_nRunning = 0;
};

/// The commands that a step returns, as a person reads them.
QString readable(const std::string &strReturned)
{
    QString strText = QString::fromStdString(strReturned);
    strText.replace(QLatin1String("</CMD>"), QLatin1String("\n"), Qt::CaseInsensitive);
    strText.remove(QLatin1String("<CMD>"), Qt::CaseInsensitive);
    return strText.trimmed();
}

Preview::Result resultOf(const Preview::Request &cRequest, ArithmParamMgr &cStore)
{
    Preview::Result cResult;
    Plugin::copyAll(*cRequest.m_pcInputs, cStore);
    const auto cBegin = std::chrono::steady_clock::now();
    Plugin::guarded([&] { cResult.m_strText = readable(cRequest.m_fnRun(cStore)); },
                    [&](const std::string &strReason) {
                        cResult.m_strError = QString::fromStdString(strReason);
                        if (cResult.m_strError.isEmpty())
                            cResult.m_strError = QStringLiteral("?");
                    });
    const std::chrono::duration<double, std::milli> cTook = std::chrono::steady_clock::now() - cBegin;
    cResult.m_dMs = cTook.count();

    // A step that failed has outputs of an earlier one.
    const bool bFailed = !cResult.m_strError.isEmpty();
    cResult.m_cPicture = Plugin::pictureOf(bFailed ? *cRequest.m_pcInputs : cStore,
                                           cRequest.m_cPicture.m_eKind, cRequest.m_cPicture.m_nID);
    if (bFailed)
        return cResult;
    for (const Preview::Output &cOutput : cRequest.m_lstOverlay) {
        if (cOutput.m_eKind == ArithmParamMgr::Kind::Strings)
            cResult.m_strText = (QStringList(cStore.snapshotStrings(cOutput.m_nID)) << cResult.m_strText)
                                    .join('\n')
                                    .trimmed();
        else
            Plugin::drawList(cResult.m_cPicture, cStore, cOutput.m_eKind, cOutput.m_nID);
    }
    return cResult;
}
} // namespace

/// What the two threads share.
class Preview::Worker
{
public:
    explicit Worker(Preview *pcOwner) : m_pcOwner(pcOwner) {}

    void ask(Request cRequest, unsigned nNumber)
    {
        const std::lock_guard cLock(m_cMutex);
        m_cAsked = std::move(cRequest);
        m_nAsked = nNumber;
        m_cChanged.notify_all();
    }
    void forget()
    {
        const std::lock_guard cLock(m_cMutex);
        m_cAsked.reset();
    }
    void leave()
    {
        const std::lock_guard cLock(m_cMutex);
        m_pcOwner = nullptr;
        m_cChanged.notify_all();
    }
    std::pair<unsigned, Result> result()
    {
        const std::lock_guard cLock(m_cMutex);
        return {m_nDone, std::move(m_cDone)};
    }
    void run()
    {
        ArithmParamMgr cStore;
        std::unique_lock cLock(m_cMutex);
        for (;;) {
            m_cChanged.wait(cLock, [this] { return !m_pcOwner || m_cAsked; });
            if (!m_pcOwner)
                return;
            const Request cRequest = *std::exchange(m_cAsked, std::nullopt);
            const unsigned nNumber = m_nAsked;
            cLock.unlock();
            Result cResult = resultOf(cRequest, cStore);
            cLock.lock();
            m_cDone = std::move(cResult);
            m_nDone = nNumber;
            // By name: the event is then made and freed by Qt alone.
            if (m_pcOwner)
                QMetaObject::invokeMethod(m_pcOwner, "takeResult", Qt::QueuedConnection);
        }
    }

private:
    std::mutex m_cMutex;
    std::condition_variable m_cChanged;
    Preview *m_pcOwner; ///< null once it is gone
    std::optional<Request> m_cAsked;
    unsigned m_nAsked = 0;
    Result m_cDone;
    unsigned m_nDone = 0;
};

Preview::Preview(QObject *pcParent) : QObject(pcParent) {}

Preview::~Preview()
{
    if (m_pcWorker)
        m_pcWorker->leave();
}

void Preview::compute(Request cRequest)
{
    if (!m_pcWorker) {
        m_pcWorker = std::make_shared<Worker>(this);
        Running::own().add(1);
        std::thread([pcWorker = m_pcWorker]() mutable {
            pcWorker->run();
            pcWorker.reset();
            Running::own().add(-1);
        }).detach();
    }
    m_pcWorker->ask(std::move(cRequest), ++m_nAsked);
}

void Preview::cancel()
{
    if (m_pcWorker)
        m_pcWorker->forget();
    m_nTold = m_nAsked;
}

bool Preview::isBusy() const
{
    return m_nAsked != m_nTold;
}

void Preview::takeResult()
{
    const auto [nNumber, cResult] = m_pcWorker->result();
    if (nNumber <= m_nTold)
        return;
    m_nTold = nNumber;
    emit computed(cResult);
}
