#ifndef PLUGIN_SOURCE_H
#define PLUGIN_SOURCE_H

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/picture.h"
#include "sdk/settings.h"

namespace Plugin
{
/// One instance of a data source, as its author writes it: a class derived from this one.
///
/// Calls come from any thread, for one instance one after the other. An instance is made with its
/// first configuration, which is empty, and started and stopped any number of times. What the
/// author's functions throw becomes the instance's error.
class Source
{
public:
    using Clock = std::chrono::steady_clock;
    /// How long a request that has nothing to deliver keeps its task from asking again.
    static constexpr std::chrono::milliseconds IDLE_WAIT{100};

    Source() = default;
    virtual ~Source() = default;
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    // What the exported functions call.
    void applyConfig(const Settings &cSettings);
    void begin();
    void end();
    /// The pixels stay until the next call. With none to deliver it returns after IDLE_WAIT.
    Picture deliver(std::string_view strType);
    std::string lastError();
    void setError(std::string strReason); ///< an empty text: all is well

protected:
    /// Throws for settings that cannot be used.
    virtual void configure(const Settings &cSettings) = 0;
    virtual void start() {}
    virtual void stop() {}
    /// The next picture of that kind (DIB or Gray8), an empty one when there is none yet or none any
    /// more. The pixels stay until the next request.
    virtual Picture request(Kind eKind) = 0;

    /// For request(): waits while other calls for the instance go on, which may change it.
    void sleepUntil(Clock::time_point cUntil);

private:
    Picture next(Kind eKind);

    std::mutex m_cCall;       ///< held while one of the author's functions runs
    std::mutex m_cErrorMutex; ///< a leaf: errors can be read while a request takes its time
    std::string m_strConfigError;
    std::string m_strError;
    std::vector<unsigned char> m_achPacked; ///< pixels that the author laid out with other rows
};
} // namespace Plugin

#endif
