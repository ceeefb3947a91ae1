#include "archive.h"

#include <QDir>

Archive::Archive(QString strDirectory) : m_strDirectory(std::move(strDirectory)) {}

void Archive::prune()
{
    constexpr int KEPT = 20;
    const QDir cDir(m_strDirectory);
    const QFileInfoList lstFiles = cDir.entryInfoList(QDir::Files, QDir::Time); // the newest first
    m_nKept = qMin(KEPT, lstFiles.size());
    for (const QFileInfo &cFile : lstFiles.mid(KEPT)) {
        m_nEmpty += cFile.size() == 0;
        m_nRemoved += QFile::remove(cFile.filePath());
    }
}
