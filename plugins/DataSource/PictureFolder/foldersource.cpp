#include "foldersource.h"

#include <algorithm>
#include <limits>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <opencv2/imgcodecs.hpp>

#include "naturalorder.h"
#include "sdk/opencv.h"

Q_LOGGING_CATEGORY(lcPictureFolder, "oculinex.source", QtWarningMsg)

namespace
{
const QStringList &suffixes()
{
    static const QStringList s_lstSuffix{"*.png", "*.jpg", "*.jpeg", "*.bmp", "*.tif", "*.tiff"};
    return s_lstSuffix;
}

/// The pictures below a path: all of a folder, those whose names match, or that one file.
QStringList picturesAt(const QString &strPath)
{
    const QFileInfo cInfo(strPath);
    if (cInfo.isFile())
        return {strPath};
    const bool bPattern = !cInfo.isDir() && cInfo.fileName().contains(QRegularExpression("[*?[]"));
    const QDir cDir(bPattern ? cInfo.path() : strPath);
    if (!cDir.exists())
        throw Plugin::Error(cDir.path().toStdString() + " does not exist.");
    QStringList lstFile = cDir.entryList(suffixes(), QDir::Files, QDir::Unsorted);
    if (bPattern) {
        const auto fnOther = [&](const QString &str) { return !QDir::match(cInfo.fileName(), str); };
        lstFile.erase(std::remove_if(lstFile.begin(), lstFile.end(), fnOther), lstFile.end());
    }
    if (lstFile.isEmpty())
        throw Plugin::Error("There are no pictures at " + strPath.toStdString() + ".");
    std::sort(lstFile.begin(), lstFile.end(), naturallyLess);
    for (QString &strFile : lstFile)
        strFile = cDir.filePath(strFile);
    return lstFile;
}
} // namespace

Plugin::Picture FolderSource::request(Plugin::Kind eKind)
{
    const bool bGray = eKind == Plugin::Kind::Gray8;
    const Clock::time_point cDeadline = Clock::now() + IDLE_WAIT;

    Next eNext = Next::Nothing;
    do
        eNext = prepareNext(bGray);
    while (eNext == Next::Undecodable && Clock::now() < cDeadline);
    if (eNext != Next::Ready || m_cDue > cDeadline)
        return {};
    if (Clock::now() < m_cDue)
        sleepUntil(m_cDue);
    // Another call may have changed meanwhile what is played.
    if (!m_bReady || m_bReadyGray != bGray)
        return {};

    // A task that was late does not hurry to catch up.
    const Clock::time_point cNow = Clock::now();
    m_cDue += m_cPeriod;
    if (m_cDue < cNow)
        m_cDue = cNow + m_cPeriod;
    m_bReady = false;
    ++m_nNext;
    return {m_cPixels.data, m_cPixels.cols, m_cPixels.rows, m_cPixels.step[0], eKind};
}

void FolderSource::configure(const Plugin::Settings &cSettings)
{
    m_strPath.clear();
    rewind();
    try {
        m_bLoop = cSettings[LOOP];
        const double dFps = cSettings[FPS];
        // One picture an hour is the slowest; the quotient of a tiny rate would overflow.
        const std::chrono::duration<double> cPeriod(dFps > 0 ? std::min(1 / dFps, 3600.0) : 0);
        m_cPeriod = std::chrono::duration_cast<Clock::duration>(cPeriod);
        m_strPath = Plugin::toQString(cSettings[PATH]);
    } catch (const Plugin::Error &cError) {
        qCWarning(lcPictureFolder).noquote() << "Picture Folder:" << cError.what();
        throw;
    }
    // Not worth a line in the log: each instance begins with an empty configuration.
    if (m_strPath.isEmpty())
        throw Plugin::Error("Setting Path is missing.");
}

void FolderSource::rewind()
{
    m_lstFile.clear();
    m_nNext = 0;
    m_bReady = false;
    m_cDue = Clock::now();
}

/// Makes m_cPixels the picture m_nNext; one that cannot be decoded is passed over.
FolderSource::Next FolderSource::prepareNext(bool bGray)
{
    if (m_bReady && m_bReadyGray == bGray)
        return Next::Ready;
    if (m_nNext >= m_lstFile.size()) {
        const bool bPlayed = !m_lstFile.isEmpty();
        if (m_strPath.isEmpty() || (bPlayed && !m_bLoop))
            return Next::Nothing;
        m_lstFile.clear();
        // Passes that find nothing but bad files follow each other at the pace of the idle wait.
        if ((bPlayed && !m_bAnyGood) || !listFiles())
            return Next::Nothing;
    }

    const QString &strFile = m_lstFile.at(m_nNext);
    QString strReason;
    try {
        decode(strFile, bGray);
        m_setBad.remove(strFile);
        m_bReady = true;
        m_bReadyGray = bGray;
        m_bAnyGood = true;
        return Next::Ready;
    } catch (const std::exception &cError) {
        strReason = QString::fromUtf8(cError.what());
    }
    strReason = strFile + ": " + strReason;
    setError(strReason.toStdString());
    if (!m_setBad.contains(strFile)) {
        m_setBad.insert(strFile);
        qCWarning(lcPictureFolder).noquote() << "Picture Folder passes over" << strReason;
    }
    m_bReady = false;
    ++m_nNext;
    return Next::Undecodable;
}

/// Begins a pass; false when there is nothing to play.
bool FolderSource::listFiles()
{
    m_nNext = 0;
    m_bAnyGood = false;
    QString strError;
    try {
        m_lstFile = picturesAt(m_strPath);
    } catch (const Plugin::Error &cError) {
        strError = cError.what();
    }
    setError(strError.toStdString());
    if (strError != m_strFolderError) {
        m_strFolderError = strError;
        qCWarning(lcPictureFolder).noquote()
            << "Picture Folder:" << (strError.isEmpty() ? m_strPath + " has pictures again." : strError);
    }
    if (!m_setBad.isEmpty())
        m_setBad.intersect(QSet<QString>(m_lstFile.cbegin(), m_lstFile.cend()));
    return !m_lstFile.isEmpty();
}

void FolderSource::decode(const QString &strFile, bool bGray)
{
    readFile(strFile);
    const cv::Mat cBytes(1, static_cast<int>(m_achFile.size()), CV_8UC1, m_achFile.data());
    // Given a target, imdecode() would leave the picture before in it when it finds no decoder; freed
    // first, that picture's memory serves the new one.
    m_cPixels.release();
    m_cPixels = cv::imdecode(cBytes, bGray ? cv::IMREAD_GRAYSCALE : cv::IMREAD_COLOR);
    if (m_cPixels.empty())
        throw Plugin::Error("It cannot be decoded.");
}

void FolderSource::readFile(const QString &strFile)
{
    // A link may lead to a pipe, which would be opened for as long as nobody writes into it.
    const QFileInfo cInfo(strFile);
    if (cInfo.exists() && !cInfo.isFile())
        throw Plugin::Error("It is no file.");
    QFile cFile(strFile);
    if (!cFile.open(QIODevice::ReadOnly))
        throw Plugin::Error(cFile.errorString().toStdString());
    const qint64 nSize = cFile.size();
    if (nSize < 1 || nSize > std::numeric_limits<int>::max())
        throw Plugin::Error(nSize < 1 ? "It is empty." : "It is too large.");
    m_achFile.resize(static_cast<size_t>(nSize));
    const qint64 nRead = cFile.read(reinterpret_cast<char *>(m_achFile.data()), nSize);
    if (nRead != nSize)
        throw Plugin::Error("It cannot be read to its end.");
}
