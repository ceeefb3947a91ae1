#include "stopsignals.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>

namespace
{
int s_anPipe[2] = {-1, -1};
std::atomic<int> s_nCount{0};

void signalArrived(int nSignal)
{
    if (nSignal != SIGPIPE && s_nCount++ > 0)
        _exit(128 + nSignal);
    const char chByte = 0;
    // A full pipe has woken the reader already.
    [[maybe_unused]] const ssize_t nWritten = write(s_anPipe[1], &chByte, 1);
}
} // namespace

StopSignals::StopSignals()
{
    if (pipe2(s_anPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals keep their default: they end the process
    auto *pcNotifier = new QSocketNotifier(s_anPipe[0], QSocketNotifier::Read, this);
    connect(pcNotifier, &QSocketNotifier::activated, this, [this] {
        char achBytes[64];
        while (read(s_anPipe[0], achBytes, sizeof achBytes) > 0)
            ;
        emit stopRequested();
    });

    struct sigaction cAction = {};
    cAction.sa_handler = signalArrived;
    cAction.sa_flags = SA_RESTART;
    for (const int nSignal : {SIGINT, SIGTERM, SIGPIPE})
        sigaction(nSignal, &cAction, nullptr);
    struct sigaction cHangUp = {};
    if (sigaction(SIGHUP, nullptr, &cHangUp) == 0 && cHangUp.sa_handler != SIG_IGN) // by nohup
        sigaction(SIGHUP, &cAction, nullptr);
}
