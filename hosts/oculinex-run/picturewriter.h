#ifndef PICTUREWRITER_H
#define PICTUREWRITER_H

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include <QImage>
#include <QString>

#include "report.h"

/// Writes pictures of views as PNG files into a directory, on a thread of its own. A file appears
/// under its name when it is whole.
///
/// What waits for the thread is bounded: when it would be too much, the oldest waiting picture is
/// dropped, as views drop their oldest drawings. A picture's number counts those that were added to
/// its view, so that a gap in the numbers tells of a dropped one.
///
/// Threads: one thread adds, one finishes; the report is called on the writer's own thread.
class PictureWriter
{
public:
    /// Only the newest picture of each view is kept, in one file, when bLast is set.
    PictureWriter(QString strFolder, bool bLast, Report &cReport);
    ~PictureWriter();
    PictureWriter(const PictureWriter &) = delete;
    PictureWriter &operator=(const PictureWriter &) = delete;

    /// Why no file can be made in a directory; empty when one can.
    static QString whyUnwritable(const QString &strFolder);

    /// Never waits for the encoder or the disk.
    void add(int nView, const QImage &cPicture);
    /// Returns when everything that waits has been written; nothing may be added then.
    void finish();
    /// The counts and names of one view.
    ViewSummary summary(int nView) const;

private:
    struct Waiting {
        int m_nView;
        qint64 m_nNumber;
        QImage m_cPicture;
    };

    void work();
    void write(const Waiting &cWaiting);
    void drop(std::deque<Waiting>::iterator itWaiting);
    QString fileName(const Waiting &cWaiting) const;

    const QString m_strFolder;
    const bool m_bLast;
    Report &m_cReport;
    QString m_strLastError; ///< told already; the writer's own thread

    mutable std::mutex m_cMutex; ///< guards what follows
    std::condition_variable m_cChanged;
    std::deque<Waiting> m_lstWaiting; ///< the oldest first
    qint64 m_nWaitingBytes = 0;
    bool m_bFinish = false;
    std::map<int, ViewSummary> m_mapView;

    std::thread m_cThread; ///< last: it uses the others
};

#endif
