#ifndef STOPSIGNALS_H
#define STOPSIGNALS_H

#include <QObject>

/// Turns the first Ctrl-C, SIGTERM or SIGHUP into a Qt signal; a second one ends the process at
/// once, whatever its threads wait for. A reader that closed the output (SIGPIPE) asks for a stop
/// too. One object a process; the Qt signal arrives in the thread that made it.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    StopSignals();

signals:
    void stopRequested();
};

#endif
