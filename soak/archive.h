#ifndef ARCHIVE_H
#define ARCHIVE_H

#include <QString>

/// The directory that pictures are saved into: counts them and keeps but the newest.
class Archive
{
public:
    explicit Archive(QString strDirectory);

    void prune();
    qint64 count() const
    {
        return m_nRemoved + m_nKept;
    }                                         ///< files that were ever saved, as of the last prune
    qint64 empty() const { return m_nEmpty; } ///< of those that were removed

private:
    const QString m_strDirectory;
    qint64 m_nRemoved = 0;
    qint64 m_nKept = 0;
    qint64 m_nEmpty = 0;
};

#endif
