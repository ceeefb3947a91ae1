#ifndef TASKFIXTURE_H
#define TASKFIXTURE_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include <QElapsedTimer>
#include <QStringList>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "taskMgr/taskMgr.h"

/// What the tests of running tasks share: an algorithm and a data source inside the test itself.
///
/// The algorithm's config text is "label|first result|second result|…": each execution is traced
/// under its label and returns the next result, the empty text after the last. A label that ends
/// with '!' returns its first result each time. A handler set for a label runs before it returns, one
/// for "start" or "stop" when the source is started or stopped. "{x}" stands for "<CMD>x</CMD>".
namespace Fake
{
inline std::mutex s_cMutex;
inline QStringList s_lstTrace;
inline QStringList s_lstPrinted;
inline QStringList s_lstErrors;
inline std::map<QString, int> s_mapExecutions;
inline std::map<QString, std::function<void()>> s_mapHandlers;

/// Traces a label and runs its handler; how often it has been reached before.
inline int reach(const QString &strLabel)
{
    std::unique_lock<std::mutex> cGuard(s_cMutex);
    s_lstTrace.append(strLabel);
    const int nBefore = s_mapExecutions[strLabel]++;
    const std::function<void()> fnHandler = s_mapHandlers[strLabel];
    cGuard.unlock();
    if (fnHandler)
        fnHandler();
    return nBefore;
}

inline bool hasTraced(const QString &strWhat)
{
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    return s_lstTrace.contains(strWhat);
}

/// Waits without delivering events.
template <typename Condition>
bool spinUntil(const Condition &fnCondition)
{
    QElapsedTimer cTimer;
    for (cTimer.start(); !fnCondition() && cTimer.elapsed() < 20000;)
        std::this_thread::yield();
    return fnCondition();
}

inline QStringList take(QStringList &lstTexts)
{
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    return std::exchange(lstTexts, {});
}

template <QStringList &lstTexts>
void collect(QString strText)
{
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    lstTexts.append(strText);
}

constexpr auto onPrint = collect<s_lstPrinted>;
constexpr auto onError = collect<s_lstErrors>;

inline char *execute(char *pchConfig, ArithmParamMgr *)
{
    const QStringList lstParts = QString::fromUtf8(pchConfig).split('|');
    const QString &strLabel = lstParts.first();
    const int nResult = reach(strLabel) + 1;
    thread_local QByteArray s_achResult;
    s_achResult = lstParts.value(strLabel.endsWith('!') ? 1 : nResult).toUtf8();
    return s_achResult.data();
}

inline unsigned char *requestPicture(int, const char *, int *pnWidth, int *pnHeight)
{
    static unsigned char s_uchPixel = 0;
    *pnWidth = *pnHeight = 1;
    return &s_uchPixel;
}

inline void reset()
{
    ArithmFactory *pcFactory = ArithmFactory::getInstance();
    if (!pcFactory->getArithm("fake")) {
        pcFactory->getArithms()->append({"测试", "假",
                                         new Arithm(
                                             false, [] { return "fake"; }, nullptr, execute)});
        // In the place of the drawing algorithm, whose config text this one shows.
        auto *pcDrawing = new Arithm(
            false, [] { return "KQ_Drawing"; }, nullptr, execute);
        pcFactory->m_mapArithm.insert("KQ_Drawing", pcDrawing);
    }
    s_lstTrace.clear();
    s_lstPrinted.clear();
    s_lstErrors.clear();
    s_mapExecutions.clear();
    s_mapHandlers.clear();
}

inline TaskItem step(const QString &strConfig, int nLimit = -1, const QString &strID = "fake")
{
    TaskItem cItem;
    cItem.m_nMaxExeTimes = nLimit;
    cItem.m_strArithmID = strID;
    cItem.m_strOptionStr = QString(strConfig).replace('{', "<CMD>").replace('}', "</CMD>");
    cItem.m_strArithmName = strConfig.section('|', 0, 0);
    return cItem;
}

/// A step written as "[limit;]config".
inline TaskItem parse(const QString &strStep)
{
    return strStep.contains(';') ? step(strStep.section(';', 1), strStep.section(';', 0, 0).toInt())
                                 : step(strStep);
}

/// A task of such steps, apart by ", ", on the fake source.
class Task : public TaskInfo
{
public:
    explicit Task(const QString &strFlow = QString()) : TaskInfo("任务", onError)
    {
        setPrintCallBack(onPrint);
        for (const QString &strStep : strFlow.split(", ", Qt::SkipEmptyParts))
            m_lstArithm.append(parse(strStep));
        DataSource::DataSourceInfo cInfo;
        cInfo.m_fnRequestPicture = requestPicture;
        cInfo.m_fnReleasePicture = [](int) {};
        cInfo.m_fnStart = [](int) { reach("start"); };
        cInfo.m_fnStop = [](int) { reach("stop"); };
        m_pcDS = cInfo.newInstance({}, m_pcAPM);
        m_pcDS->setDataType("Gray8");
        m_pcDS->setDataID(1);
    }
};

/// Holds a step, the one of the given label when it is executed for the n-th time: it waits inside
/// enter() until the gate is open. A test that fails does not hang on it.
class Gate
{
public:
    Gate() = default;
    explicit Gate(const char *szLabel, int nTime = 1)
    {
        s_mapHandlers[szLabel] = [this, nTime] {
            if (++m_nTimes == nTime)
                enter();
        };
    }
    void enter()
    {
        std::unique_lock<std::mutex> cGuard(m_cMutex);
        m_bEntered = true;
        m_cChanged.notify_all();
        m_cChanged.wait_for(cGuard, std::chrono::seconds(20), [this] { return m_bOpen; });
    }
    bool waitEntered()
    {
        std::unique_lock<std::mutex> cGuard(m_cMutex);
        return m_cChanged.wait_for(cGuard, std::chrono::seconds(20), [this] { return m_bEntered; });
    }
    void open()
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bOpen = true;
        m_cChanged.notify_all();
    }

private:
    std::mutex m_cMutex;
    std::condition_variable m_cChanged;
    std::atomic<int> m_nTimes{0};
    bool m_bEntered = false;
    bool m_bOpen = false;
};
} // namespace Fake

#endif
