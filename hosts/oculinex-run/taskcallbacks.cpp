#include "taskcallbacks.h"

#include <array>
#include <atomic>
#include <utility>

#include <QString>

#include "report.h"
#include "taskMgr/taskMgr.h"

namespace
{
/// Tasks that are told apart; the messages of more come out without a name.
constexpr int NAMED_TASKS = 256;

struct Callbacks {
    void (*m_fnPrinted)(QString);
    void (*m_fnFailed)(QString);
};

Report *s_pcReport = nullptr;
std::array<std::atomic<bool>, NAMED_TASKS> s_abFailed{};

template <int nTask>
void printed(QString strText)
{
    s_pcReport->printed(nTask, strText);
}

template <int nTask>
void failed(QString strText)
{
    if constexpr (nTask >= 0)
        s_abFailed[nTask] = true;
    s_pcReport->failed(nTask, strText);
}

template <int... nTask>
constexpr std::array<Callbacks, sizeof...(nTask)> callbacks(std::integer_sequence<int, nTask...>)
{
    return {Callbacks{printed<nTask>, failed<nTask>}...};
}

constexpr auto CALLBACKS = callbacks(std::make_integer_sequence<int, NAMED_TASKS>());
} // namespace

void connectTaskMgr(Report &cReport)
{
    s_pcReport = &cReport;
    TaskMgr::getInstance()->setMssageCallBack(failed<-1>);
    TaskMgr::getInstance()->setPrintCallBack(printed<-1>);
}

void connectTasks()
{
    for (int nTask = 0; nTask < std::min(TaskMgr::getInstance()->getTaskNum(), NAMED_TASKS); ++nTask) {
        TaskInfo *pcTask = TaskMgr::getInstance()->getTask(nTask);
        pcTask->setPrintCallBack(CALLBACKS[static_cast<size_t>(nTask)].m_fnPrinted);
        pcTask->setMssageCallBack(CALLBACKS[static_cast<size_t>(nTask)].m_fnFailed);
    }
}

bool hasTaskFailed(int nTask)
{
    return nTask < NAMED_TASKS && s_abFailed[static_cast<size_t>(nTask)];
}
