#ifndef BENCH_FLOW_H
#define BENCH_FLOW_H

#include <functional>
#include <memory>
#include <vector>

#include <QString>

#include "relay.h"

class ArithmParamMgr;
class TaskInfo;

namespace Bench
{
/// A step of a measured flow: an algorithm with its config string.
struct FlowStep {
    QString m_strID;
    QString m_strConfig;
};

/// The algorithm that does nothing.
extern const QString NOTHING;
/// A step that calls a function of the benchmark on the task's thread; it lives as long as the process.
FlowStep call(std::function<void(ArithmParamMgr &)> fnBody);

/// What a source of the benchmark's own hands out: the same picture again and again.
struct SourcePicture {
    unsigned char *m_puchPixels = nullptr; ///< null: a single grey pixel
    int m_nWidth = 1;
    int m_nHeight = 1;
};

/// A task fed by a source of the benchmark's own, which takes each picture as the relay lets it in. With
/// bCounts a picture has left when the next one is asked for; else something else calls leave().
std::unique_ptr<TaskInfo> newFedTask(std::shared_ptr<Relay> pcRelay, bool bCounts, SourcePicture cPicture,
                                     const std::vector<FlowStep> &vSteps);

/// A task that runs on a thread of its own from begin() on.
class Flow
{
public:
    /// Fed as newFedTask() says.
    Flow(std::shared_ptr<Relay> pcRelay, bool bCounts, SourcePicture cPicture,
         const std::vector<FlowStep> &vSteps);
    /// Fed by a source that a config string describes.
    Flow(const QString &strSource, const std::vector<FlowStep> &vSteps);
    ~Flow();
    Flow(const Flow &) = delete;
    Flow &operator=(const Flow &) = delete;

    TaskInfo &task() { return *m_pcTask; }
    void begin();

private:
    std::shared_ptr<Relay> m_pcRelay;
    std::unique_ptr<TaskInfo> m_pcTask;
};
} // namespace Bench

#endif
