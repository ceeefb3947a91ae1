#ifndef OPTIONS_H
#define OPTIONS_H

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

/// A view to be read.
struct ViewOption {
    int m_nView;
    QSize m_cSize;
};

/// An algorithm to be tried.
struct TryOption {
    QString m_strAlgorithm; ///< as the user names it
    QString m_strConfig;
};

/// What the command line asks for.
struct Options {
    enum class Action { Run, Check, List, Try, Help, Version };
    /// When a run of the tasks ends, besides a signal and the end of all tasks.
    enum class Until { Ended, Once, Runs, Seconds, Idle };

    Action m_eAction = Action::Run;
    Until m_eUntil = Until::Ended;
    int m_nRuns = 0;       ///< for Until::Runs, at least 1
    double m_fSeconds = 0; ///< for Until::Seconds and Until::Idle, above 0
    bool m_bJson = false;
    bool m_bQuiet = false;
    QString m_strTasksFile;
    QList<ViewOption> m_lstView; ///< with Action::Run empty exactly when m_strOut is
    QString m_strOut;            ///< directory of the pictures that are written
    bool m_bLast = false;        ///< keep the newest picture of each view only
    QList<TryOption> m_lstTry;   ///< in order; not empty for Action::Try
    QStringList m_lstPicture;    ///< files for Action::Try, at least one
    int m_nRepeat = 1;           ///< runs of what is tried with each picture
    int m_nMaxWidth = 0;         ///< of pictures that Action::Try writes, 0: any
    QString m_strHelp;           ///< the page that --help prints
};

/// Reads the arguments (the first is the program's name). An error text, empty when they are fine.
QString parseOptions(const QStringList &lstArguments, Options &cOptions);

#endif
