#include "plainbmp.h"

#include <algorithm>

#include <QFile>
#include <QtEndian>

#include "pixelrows.h"

namespace
{
constexpr int HEADER_BYTES = 54;
constexpr int CHUNK_BYTES = 256 << 10; // what is read or written at once stays in a near cache

qint64 rowBytes(qint64 nWidth)
{
    return (3 * nWidth + 3) & ~qint64{3};
}

/// A write that a full disk cuts short tells no reason: the next one does.
bool writeWhole(QFile &cFile, const char *pchFrom, qint64 nBytes)
{
    while (nBytes > 0) {
        const qint64 nWritten = cFile.write(pchFrom, nBytes);
        if (nWritten <= 0)
            return false;
        pchFrom += nWritten;
        nBytes -= nWritten;
    }
    return true;
}

/// How many rows make a chunk.
int chunkRows(qint64 nRowBytes)
{
    return static_cast<int>(std::max<qint64>(CHUNK_BYTES / nRowBytes, 1));
}

class Header
{
public:
    Header() : m_achBytes(HEADER_BYTES, '\0') {}
    explicit Header(const QByteArray &achBytes) : m_achBytes(achBytes) {}

    qint32 get(int nOffset) const { return qFromLittleEndian<qint32>(m_achBytes.constData() + nOffset); }
    void set(int nOffset, qint64 nValue)
    {
        qToLittleEndian(static_cast<qint32>(nValue), m_achBytes.data() + nOffset);
    }
    bool isPlain() const
    {
        return m_achBytes.size() == HEADER_BYTES && m_achBytes.startsWith("BM") &&
               get(OFFSET) == HEADER_BYTES && get(INFO) == HEADER_BYTES - INFO && get(PLANES) == PLAIN &&
               get(COMPRESSION) == 0 && get(COLOURS) == 0 && get(WIDTH) > 0 && get(HEIGHT) > 0;
    }
    const QByteArray &bytes() const { return m_achBytes; }

    static constexpr int TYPE = 0;
    static constexpr int FILE_BYTES = 2;
    static constexpr int OFFSET = 10; // of the pixels
    static constexpr int INFO = 14;   // its own length
    static constexpr int WIDTH = 18;
    static constexpr int HEIGHT = 22;
    static constexpr int PLANES = 26; // 16 bits, then 16 bits for the bits a pixel
    static constexpr int COMPRESSION = 30;
    static constexpr int PIXEL_BYTES = 34;
    static constexpr int DOTS_X = 38; // a metre
    static constexpr int DOTS_Y = 42;
    static constexpr int COLOURS = 46;
    static constexpr int IMPORTANT_COLOURS = 50;
    static constexpr qint32 PLAIN = 24 << 16 | 1;
    static constexpr qint32 INDEXED = 8 << 16 | 1;

private:
    QByteArray m_achBytes;
};
} // namespace

QSize PlainBmp::size(QFile &cFile)
{
    const Header cHeader(cFile.peek(HEADER_BYTES));
    if (!cHeader.isPlain())
        return {};
    const QSize cSize(cHeader.get(Header::WIDTH), cHeader.get(Header::HEIGHT));
    const qint64 nPixelBytes = cFile.size() - HEADER_BYTES;
    return nPixelBytes / rowBytes(cSize.width()) >= cSize.height() ? cSize : QSize();
}

QImage PlainBmp::read(QFile &cFile, QSize cSize, const PixelBuffers::Maker &fnMake)
{
    const qint64 nRowBytes = rowBytes(cSize.width());
    const PixelBuffers::Owned pcChunk(
        PixelBuffers::take(static_cast<size_t>(nRowBytes * chunkRows(nRowBytes))));
    QImage cImage = pcChunk ? fnMake(cSize, QImage::Format_RGB888) : QImage();
    if (cImage.isNull())
        return cImage;
    cFile.skip(HEADER_BYTES);
    for (int nLeft = cSize.height(); nLeft > 0;) {
        const int nRows = std::min(nLeft, chunkRows(nRowBytes));
        const qint64 nWanted = nRowBytes * nRows;
        const qint64 nRead =
            std::max<qint64>(cFile.read(reinterpret_cast<char *>(pcChunk.get()), nWanted), 0);
        std::fill(pcChunk.get() + nRead, pcChunk.get() + nWanted, uchar{0});
        for (int nRow = 0; nRow < nRows; ++nRow) {
            uchar *puchRow = cImage.scanLine(--nLeft);
            PixelRows::exchangeRedBlue(puchRow, pcChunk.get() + nRowBytes * nRow, cSize.width());
            std::fill(puchRow + qint64{3} * cSize.width(), puchRow + nRowBytes, uchar{0});
        }
    }
    return cImage;
}

bool PlainBmp::canWrite(const QImage &cImage)
{
    return cImage.format() == QImage::Format_RGB888 || cImage.format() == QImage::Format_Indexed8;
}

bool PlainBmp::write(QFile &cFile, const QImage &cImage)
{
    const bool bColour = cImage.format() == QImage::Format_RGB888;
    const int nColours = bColour ? 0 : cImage.colorCount();
    const qint64 nRowBytes = bColour ? rowBytes(cImage.width()) : (qint64{cImage.width()} + 3) & ~qint64{3};
    const qint64 nOffset = HEADER_BYTES + qint64{4} * nColours;
    Header cHeader;
    cHeader.set(Header::TYPE, 'M' << 8 | 'B');
    cHeader.set(Header::FILE_BYTES, nOffset + nRowBytes * cImage.height());
    cHeader.set(Header::OFFSET, nOffset);
    cHeader.set(Header::INFO, HEADER_BYTES - Header::INFO);
    cHeader.set(Header::WIDTH, cImage.width());
    cHeader.set(Header::HEIGHT, cImage.height());
    cHeader.set(Header::PLANES, bColour ? Header::PLAIN : Header::INDEXED);
    cHeader.set(Header::PIXEL_BYTES, nRowBytes * cImage.height());
    constexpr int DOTS = 2834; // where a picture tells none: 72 an inch
    cHeader.set(Header::DOTS_X, cImage.dotsPerMeterX() ? cImage.dotsPerMeterX() : DOTS);
    cHeader.set(Header::DOTS_Y, cImage.dotsPerMeterY() ? cImage.dotsPerMeterY() : DOTS);
    cHeader.set(Header::COLOURS, nColours);
    cHeader.set(Header::IMPORTANT_COLOURS, nColours);
    QByteArray achBegin = cHeader.bytes();
    for (int nColour = 0; nColour < nColours; ++nColour) {
        const QRgb nValue = cImage.color(nColour);
        for (const int nByte : {qBlue(nValue), qGreen(nValue), qRed(nValue), 0})
            achBegin.append(static_cast<char>(nByte));
    }
    if (!writeWhole(cFile, achBegin.constData(), achBegin.size()))
        return false;

    const PixelBuffers::Owned pcChunk(
        PixelBuffers::take(static_cast<size_t>(nRowBytes * chunkRows(nRowBytes))));
    if (!pcChunk)
        return false;
    for (int nLeft = cImage.height(); nLeft > 0;) {
        const int nRows = std::min(nLeft, chunkRows(nRowBytes));
        uchar *puchRow = pcChunk.get();
        for (int nRow = 0; nRow < nRows; ++nRow, puchRow += nRowBytes) {
            const uchar *puchFrom = cImage.constScanLine(--nLeft);
            if (bColour) {
                PixelRows::exchangeRedBlue(puchRow, puchFrom, cImage.width());
                std::fill(puchRow + qint64{3} * cImage.width(), puchRow + nRowBytes, uchar{0});
            } else {
                std::copy_n(puchFrom, nRowBytes, puchRow);
            }
        }
        if (!writeWhole(cFile, reinterpret_cast<const char *>(pcChunk.get()), nRowBytes * nRows))
            return false;
    }
    return true;
}
