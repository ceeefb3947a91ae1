#include "picturefile.h"

#include <cerrno>
#include <climits>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSet>
#include <QtEndian>

#include "plainbmp.h"

namespace
{
/// Bytes that the system can give without ending processes; 0 when it does not tell.
qint64 availableMemory()
{
    QFile cFile(QStringLiteral("/proc/meminfo"));
    if (!cFile.open(QIODevice::ReadOnly))
        return 0;
    for (QByteArray achLine = cFile.readLine(); !achLine.isEmpty(); achLine = cFile.readLine())
        if (achLine.startsWith("MemAvailable:"))
            return achLine.simplified().split(' ').at(1).toLongLong() * 1024;
    return 0;
}

QByteArray bytesAt(QFile &cFile, qint64 nOffset, int nCount)
{
    const qint64 nOld = cFile.pos();
    const QByteArray achBytes = cFile.seek(nOffset) ? cFile.read(nCount) : QByteArray();
    cFile.seek(nOld);
    return achBytes.leftJustified(nCount, '\0');
}

/// The first bytes of the PNG file that an icon consists of; empty where there is none.
QByteArray pngOfIcon(QFile &cFile, const QImageReader &cReader)
{
    if (cReader.format() != "ico" && cReader.format() != "cur")
        return QByteArray();
    const quint32 nFile = qFromLittleEndian<quint32>(bytesAt(cFile, 18, 4).constData());
    const QByteArray achPng = bytesAt(cFile, nFile, 24);
    return achPng.startsWith("\x89PNG\r\n\x1a\n") ? achPng : QByteArray();
}

/// The size that a reader tells. That of a BMP file whose rows run from the top down has a negative height.
QSize toldSize(const QImageReader &cReader)
{
    const QSize cTold = cReader.size();
    return {cTold.width(), qAbs(cTold.height())};
}

/// The size of the picture that will be decoded. What a reader tells may be that of a part: a GIF
/// file's first frame on a larger screen, or what an icon's list of contents says of a PNG file in it.
QSize decodedSize(QFile &cFile, const QImageReader &cReader)
{
    // First: a reader that has told an icon's size has left the place where it would know the format.
    const QByteArray achPng = pngOfIcon(cFile, cReader);
    const QSize cTold = toldSize(cReader);
    if (cReader.format() == "gif") {
        const QByteArray achScreen = bytesAt(cFile, 6, 4);
        return cTold.expandedTo({qFromLittleEndian<quint16>(achScreen.constData()),
                                 qFromLittleEndian<quint16>(achScreen.constData() + 2)});
    }
    if (!achPng.isEmpty())
        return cTold.expandedTo({qFromBigEndian<qint32>(achPng.constData() + 16),
                                 qFromBigEndian<qint32>(achPng.constData() + 20)});
    return cTold;
}

/// Whether an icon's list of contents announces far more bytes than there are. The decoder of a PNG file in
/// it asks the memory for them all, and ends the process that hasn't got them.
bool lacksBytes(QFile &cFile, const QImageReader &cReader)
{
    constexpr qint64 HARMLESS = 1 << 20;
    const qint64 nBytes = qFromLittleEndian<quint32>(bytesAt(cFile, 14, 4).constData());
    return nBytes > qMax(cFile.size(), HARMLESS) && !pngOfIcon(cFile, cReader).isEmpty();
}

/// Whether a picture of that size can be decoded and stored. A file of a few bytes may announce any.
bool fits(QSize cSize, bool bGrey)
{
    constexpr qint64 NEEDED = 8;       // bytes of a pixel while it is decoded and stored
    constexpr qint64 SMALL = 64 << 20; // bytes that need no asking
    const qint64 nWidth = cSize.width();
    const qint64 nRow = bGrey ? nWidth : (3 * nWidth + 3) & ~3;
    if (nRow > INT_MAX / qMax(1, cSize.height())) // the store's limit
        return false;
    const qint64 nNeeded = nWidth * cSize.height() * NEEDED;
    const qint64 nAvailable = nNeeded > SMALL ? availableMemory() : 0;
    return nAvailable == 0 || nNeeded < nAvailable;
}

/// Keeps a path to one writer at a time; two at once would mix their bytes.
class PathHold
{
public:
    explicit PathHold(const QString &strPath) : m_strPath(QFileInfo(strPath).absoluteFilePath())
    {
        std::unique_lock<std::mutex> cLock(s_cMutex);
        s_cReleased.wait(cLock, [this] { return !s_setHeld.contains(m_strPath); });
        s_setHeld.insert(m_strPath);
    }
    ~PathHold()
    {
        {
            const std::lock_guard<std::mutex> cGuard(s_cMutex);
            s_setHeld.remove(m_strPath);
        }
        s_cReleased.notify_all();
    }
    PathHold(const PathHold &) = delete;
    PathHold &operator=(const PathHold &) = delete;

private:
    static std::mutex s_cMutex;
    static std::condition_variable &s_cReleased;
    static QSet<QString> &s_setHeld;
    const QString m_strPath;
};

// Never destroyed under a thread that outlives main().
std::mutex PathHold::s_cMutex;
std::condition_variable &PathHold::s_cReleased = *new std::condition_variable;
QSet<QString> &PathHold::s_setHeld = *new QSet<QString>;

/// A file that is emptied to be written and does not outlive a failure, whatever the failure was: what
/// undoes it needs no memory.
class NewFile
{
public:
    explicit NewFile(const QString &strPath)
        : m_nHandle(
              open(QFile::encodeName(strPath).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666))
    {
    }
    ~NewFile()
    {
        if (m_nHandle < 0)
            return;
        if (!m_bWhole)
            remove();
        close(m_nHandle);
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    const int m_nHandle; ///< -1 when it can't be opened, as errno tells
    bool m_bWhole = false;

private:
    /// What a link leads to, never the link.
    void remove() const
    {
        char achLink[32];
        char achPath[PATH_MAX + 1] = "";
        snprintf(achLink, sizeof achLink, "/proc/self/fd/%d", m_nHandle);
        if (readlink(achLink, achPath, PATH_MAX) > 0)
            unlink(achPath);
    }
};

bool isSpecial(const QString &strPath, QString &strError)
{
    const QFileInfo cInfo(strPath);
    if (!cInfo.exists() || cInfo.isFile())
        return false;
    strError = QStringLiteral("it is no regular file");
    return true;
}
} // namespace

QImage PictureFile::read(const QString &strPath, bool bGrey, QString &strError,
                         const PixelBuffers::Maker &fnMake)
{
    QFile cFile(strPath);
    if (isSpecial(strPath, strError))
        return QImage();
    if (!cFile.open(QIODevice::ReadOnly)) {
        strError = cFile.errorString();
        return QImage();
    }
    const QSize cPlain = PlainBmp::size(cFile);
    if (cPlain.isValid() && fits(cPlain, bGrey))
        return PlainBmp::read(cFile, cPlain, fnMake);
    QImageReader cReader(&cFile);
    cReader.setDecideFormatFromContent(true);
    if (cReader.format().startsWith("svg")) {
        strError = QStringLiteral("SVG is not supported");
        return QImage();
    }
    if (lacksBytes(cFile, cReader)) {
        strError = QStringLiteral("the file lacks bytes");
        return QImage();
    }
    const QSize cDecoded = decodedSize(cFile, cReader);
    const QSize cSize = toldSize(cReader);
    if (cDecoded.isValid() && !fits(cDecoded, bGrey)) {
        strError = QStringLiteral("%1 x %2 pixels are too many").arg(cDecoded.width()).arg(cDecoded.height());
        return QImage();
    }
    // Decoders fill a picture of the right kind in place, and some leave out what a file lacks.
    QImage cImage;
    if (cSize.isValid() && cReader.imageFormat() != QImage::Format_Invalid) {
        cImage = PixelBuffers::image(cSize, cReader.imageFormat());
        cImage.fill(0);
    }
    if (!cReader.read(&cImage)) {
        strError = cReader.errorString();
        return QImage();
    }
    return cImage;
}

bool PictureFile::write(const QImage &cImage, const QString &strPath, QString &strError)
{
    const QByteArray achFormat = QFileInfo(strPath).suffix().toLower().toLatin1();
    if (cImage.isNull()) {
        strError = QStringLiteral("there is no picture");
        return false;
    }
    // Opening the file empties it.
    if (!QImageWriter::supportedImageFormats().contains(achFormat)) {
        strError = QStringLiteral("the name ends with no known format");
        return false;
    }
    if (isSpecial(strPath, strError))
        return false;
    const PathHold cHold(strPath);
    NewFile cNew(strPath);
    if (cNew.m_nHandle < 0) {
        strError = qt_error_string(errno);
        return false;
    }
    QFile cFile;
    cFile.open(cNew.m_nHandle, QIODevice::WriteOnly);
    QImageWriter cWriter(&cFile, achFormat);
    const bool bPlain = achFormat == "bmp" && PlainBmp::canWrite(cImage);
    const bool bEncoded = bPlain ? PlainBmp::write(cFile, cImage) : cWriter.write(cImage);
    // A write that a full disk cuts short tells no reason: the next one does.
    cNew.m_bWhole = bEncoded && (cFile.flush() || cFile.flush()) && cFile.error() == QFileDevice::NoError;
    if (!cNew.m_bWhole)
        strError = cFile.error() != QFileDevice::NoError ? cFile.errorString() : cWriter.errorString();
    return cNew.m_bWhole;
}
