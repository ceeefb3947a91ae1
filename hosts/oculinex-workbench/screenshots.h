#ifndef SCREENSHOTS_H
#define SCREENSHOTS_H

#include <QString>

/// Runs a tasks file as a user would who wants to show the program, and writes pictures of its windows
/// and of the library's into a folder: its second task is the one that is shown. Returns what went
/// wrong, the empty text when all pictures are there.
QString takeScreenshots(const QString &strTasksFile, const QString &strFolder);

#endif
