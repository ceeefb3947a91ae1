#ifndef SIDEFILE_H
#define SIDEFILE_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QVector>

/// What the workbench keeps beyond the tasks file, in a file beside it: for each task what is known of
/// its steps, and what the panes remember. A tasks file without one is complete.
struct SideFile {
    QList<QVector<QJsonObject>> m_lstTask; ///< per task, per step
    QJsonObject m_cPanes;                  ///< by name of the pane

    /// Where it stands for a tasks file.
    static QString pathFor(const QString &strTasksFile);

    /// The reason why there is a file that can't be read; empty otherwise.
    QString read(const QString &strTasksFile);
    /// The reason why it can't be written; empty when it was, or when there is nothing to keep.
    QString write(const QString &strTasksFile) const;

private:
    bool isEmpty() const;
};

/// Makes sure that a file that was written and its name outlive a power cut.
void syncToDisk(const QString &strPath);

#endif
