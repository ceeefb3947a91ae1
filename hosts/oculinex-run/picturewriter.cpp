#include "picturewriter.h"

#include <algorithm>
#include <utility>

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>
#include <QTemporaryFile>

namespace
{
/// Pixels that may wait for the encoder; some seventy pictures of 640 x 480. One may always wait.
constexpr qint64 MAX_WAITING_BYTES = 64 << 20;
/// Light compression: two to three times as fast as the default, for files up to a fifth larger.
constexpr int QUALITY = 80;

bool writeFile(QSaveFile &cFile, const QByteArray &achBytes)
{
    // Unbuffered: what fails only while a buffer is emptied would not keep commit() from succeeding.
    if (!cFile.open(QFile::WriteOnly | QFile::Unbuffered))
        return false;
    // A disk that takes only a part gives the reason when it is asked to take the rest.
    qint64 nWritten = 0;
    for (qint64 nPart = 1; nPart > 0 && nWritten < achBytes.size(); nWritten += nPart)
        nPart = cFile.write(achBytes.constData() + nWritten, achBytes.size() - nWritten);
    return nWritten == achBytes.size() && cFile.commit();
}
} // namespace

PictureWriter::PictureWriter(QString strFolder, bool bLast, Report &cReport)
    : m_strFolder(std::move(strFolder)), m_bLast(bLast), m_cReport(cReport), m_cThread([this] { work(); })
{
}

PictureWriter::~PictureWriter()
{
    finish();
}

QString PictureWriter::whyUnwritable(const QString &strFolder)
{
    if (!QFileInfo(strFolder).isDir())
        return QFileInfo::exists(strFolder) ? "Not a directory" : "No such directory";
    QTemporaryFile cFile(strFolder + "/oculinex-run");
    return cFile.open() ? QString() : cFile.errorString();
}

void PictureWriter::add(int nView, const QImage &cPicture)
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    const auto fnWaits = [nView](const Waiting &cWaiting) { return cWaiting.m_nView == nView; };
    if (const auto itOld = std::find_if(m_lstWaiting.begin(), m_lstWaiting.end(), fnWaits);
        m_bLast && itOld != m_lstWaiting.end())
        drop(itOld);
    while (!m_lstWaiting.empty() && m_nWaitingBytes + cPicture.sizeInBytes() > MAX_WAITING_BYTES)
        drop(m_lstWaiting.begin());
    m_nWaitingBytes += cPicture.sizeInBytes();
    m_lstWaiting.push_back({nView, ++m_mapView[nView].m_nUpdates, cPicture});
    m_cChanged.notify_one();
}

void PictureWriter::drop(std::deque<Waiting>::iterator itWaiting)
{
    ++m_mapView[itWaiting->m_nView].m_nDropped;
    m_nWaitingBytes -= itWaiting->m_cPicture.sizeInBytes();
    m_lstWaiting.erase(itWaiting);
}

void PictureWriter::finish()
{
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        m_bFinish = true;
        m_cChanged.notify_one();
    }
    if (m_cThread.joinable())
        m_cThread.join();
}

ViewSummary PictureWriter::summary(int nView) const
{
    const std::lock_guard<std::mutex> cGuard(m_cMutex);
    const auto itView = m_mapView.find(nView);
    ViewSummary cView = itView == m_mapView.end() ? ViewSummary() : itView->second;
    cView.m_nView = nView;
    return cView;
}

void PictureWriter::work()
{
    std::unique_lock<std::mutex> cLock(m_cMutex);
    for (;;) {
        m_cChanged.wait(cLock, [this] { return m_bFinish || !m_lstWaiting.empty(); });
        if (m_lstWaiting.empty())
            return;
        const Waiting cWaiting = std::move(m_lstWaiting.front());
        m_lstWaiting.pop_front();
        m_nWaitingBytes -= cWaiting.m_cPicture.sizeInBytes();
        cLock.unlock();
        write(cWaiting);
        cLock.lock();
    }
}

void PictureWriter::write(const Waiting &cWaiting)
{
    // Encoded first, so that the file under its temporary name lives only while bytes are copied.
    QBuffer cBytes;
    QImageWriter cEncoder(&cBytes, "png");
    cEncoder.setQuality(QUALITY);
    const bool bEncoded = cEncoder.write(cWaiting.m_cPicture);
    QSaveFile cFile(fileName(cWaiting));
    const bool bWritten = bEncoded && writeFile(cFile, cBytes.data());
    {
        const std::lock_guard<std::mutex> cGuard(m_cMutex);
        ViewSummary &cView = m_mapView[cWaiting.m_nView];
        ++(bWritten ? cView.m_nWritten : cView.m_nFailed);
        if (bWritten && cView.m_strFirst.isEmpty())
            cView.m_strFirst = cFile.fileName();
        if (bWritten)
            cView.m_strLast = cFile.fileName();
    }
    if (bWritten)
        return m_cReport.pictureWritten(cWaiting.m_nView, cWaiting.m_nNumber, cFile.fileName());
    const QString strReason = bEncoded ? cFile.errorString() : cEncoder.errorString();
    if (strReason != std::exchange(m_strLastError, strReason)) // a full disk is told once
        m_cReport.failed(-1, cFile.fileName() + ": " + strReason);
}

QString PictureWriter::fileName(const Waiting &cWaiting) const
{
    const QString strView = QString("%1/view%2").arg(m_strFolder).arg(cWaiting.m_nView);
    return m_bLast ? strView + ".png"
                   : QString("%1-%2.png").arg(strView).arg(cWaiting.m_nNumber, 6, 10, QChar('0'));
}
