#include "Drawing/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include <QImage>

#include "Drawing/plaintarget.h"
#include "Drawing/scalemap.h"
#include "pixelbuffers.h"
#include "pixelrows.h"

namespace
{
constexpr QRgb TRANSPARENT = 0;

constexpr std::array<unsigned int, 256> makeColourTable()
{
    const auto next = [](int nColour, float fStep) {
        return static_cast<int>(static_cast<float>(nColour) + fStep);
    };
    const auto pure = [](int nColour) { return nColour == 0 || nColour == 255; };
    std::array<unsigned int, 256> anTable{0xFF000000, 0xFFFFFFFF};
    size_t nEntry = 2;
    for (int nBlue = 0; nBlue < 256; nBlue = next(nBlue, 256.0F / 6)) {
        for (int nGreen = 0; nGreen < 256; nGreen = next(nGreen, 256.0F / 9)) {
            for (int nRed = 0; nRed < 256 && nEntry < anTable.size(); nRed = next(nRed, 256.0F / 5)) {
                if (!pure(nRed) || !pure(nGreen) || !pure(nBlue))
                    anTable[nEntry++] =
                        0xFF000000U | static_cast<unsigned int>(nRed << 16 | nGreen << 8 | nBlue);
            }
        }
    }
    return anTable;
}

constexpr std::array<unsigned int, 256> s_anColourTable = makeColourTable();
static_assert(s_anColourTable[2] == 0xFF330000 && s_anColourTable[6] == 0xFF001C00 &&
              s_anColourTable[255] == 0xFF9938A8);

/// A copy of nHeight rows of nRowBytes bytes; null when there is nothing to copy or no room.
unsigned char *copyPixels(const unsigned char *puchPixels, qint64 nRowBytes, int nHeight)
{
    if (!puchPixels || nRowBytes <= 0 || nHeight <= 0 ||
        nRowBytes > std::numeric_limits<qint64>::max() / nHeight)
        return nullptr;
    const auto nBytes = static_cast<size_t>(nRowBytes * nHeight);
    unsigned char *puchCopy = PixelBuffers::take(nBytes);
    if (puchCopy)
        memcpy(puchCopy, puchPixels, nBytes);
    return puchCopy;
}

/// Bytes of a row of three-byte pixels, padded to a multiple of 4.
qint64 rowBytes(qint64 nWidth)
{
    return (nWidth + 1) * 3 & ~qint64{3};
}

/// How a picture lies in a target.
struct Placement {
    QRectF m_cSource; ///< the part of the picture that fills the target
    Drawing::ViewScaleOpt m_cScale;
};

bool fitsInt(float fValue)
{
    return fValue >= -0x1p31F && fValue < 0x1p31F;
}

/// False for a scale type that places nothing and where the numbers overflow.
bool placePicture(int nScaleType, int nAlignType, QSize cPicture, QSize cTarget, bool bWholeScale,
                  Placement &cPlace)
{
    const int nW = cTarget.width();
    const int nH = cTarget.height();
    const int w = cPicture.width();
    const int h = cPicture.height();
    const QPoint cPictureHalf(w / 2, h / 2);
    const QPoint cTargetHalf(nW / 2, nH / 2);
    switch (nScaleType) {
    case 0: {
        const QPoint cOffset = nAlignType == 0 ? cPictureHalf - cTargetHalf : QPoint();
        cPlace = {QRectF(cOffset, cTarget), {{1.0F, 1.0F}, {cOffset.x(), cOffset.y()}}};
        return true;
    }
    case 1:
    case 2: {
        const float fScale = nScaleType == 1 ? static_cast<float>(w) / static_cast<float>(nW)
                                             : static_cast<float>(h) / static_cast<float>(nH);
        const float fX = static_cast<float>(cPictureHalf.x()) - static_cast<float>(cTargetHalf.x()) * fScale;
        const float fY = static_cast<float>(cPictureHalf.y()) - static_cast<float>(cTargetHalf.y()) * fScale;
        if (!fitsInt(fX) || !fitsInt(fY))
            return false;
        cPlace = {QRectF(fX, fY, static_cast<float>(nW) * fScale, static_cast<float>(nH) * fScale),
                  {{fScale, fScale}, {static_cast<int>(fX), static_cast<int>(fY)}}};
        return true;
    }
    case 3:
        cPlace = {QRectF(QPointF(), cPicture), {}};
        if (bWholeScale) {
            const QPoint cWhole(w / nW, h / nH);
            cPlace.m_cScale.m_afScale[0] = static_cast<float>(cWhole.x());
            cPlace.m_cScale.m_afScale[1] = static_cast<float>(cWhole.y());
        } else {
            cPlace.m_cScale.m_afScale[0] = static_cast<float>(w) / static_cast<float>(nW);
            cPlace.m_cScale.m_afScale[1] = static_cast<float>(h) / static_cast<float>(nH);
        }
        return true;
    default:
        return false;
    }
}

/// Where picture and target lie upon each other: pixel by pixel, or by a map.
struct Overlap {
    int m_nSrcX, m_nSrcY, m_nDstX, m_nDstY;
    int m_nWidth, m_nHeight; ///< 0 when they do not meet
    std::shared_ptr<const ScaleMap> m_pcMap;
};

bool findUnscaled(const QImage &cTarget, QSize cPicture, const QRectF &cSource, Overlap &cOverlap)
{
    if (!isPlainTarget(cTarget) || cSource.size() != QSizeF(cTarget.size()) ||
        cSource.x() != std::floor(cSource.x()) || cSource.y() != std::floor(cSource.y()))
        return false;
    const auto meet = [](qint64 nOffset, qint64 nSrcLen, qint64 nDstLen, int &nSrc, int &nDst, int &nLen) {
        const qint64 nFirst = qBound<qint64>(0, nOffset, nSrcLen);
        const qint64 nEnd = qBound<qint64>(nFirst, nOffset + nDstLen, nSrcLen);
        nSrc = static_cast<int>(nFirst);
        nLen = static_cast<int>(nEnd - nFirst);
        nDst = nLen > 0 ? static_cast<int>(nFirst - nOffset) : 0;
    };
    meet(static_cast<qint64>(cSource.x()), cPicture.width(), cTarget.width(), cOverlap.m_nSrcX,
         cOverlap.m_nDstX, cOverlap.m_nWidth);
    meet(static_cast<qint64>(cSource.y()), cPicture.height(), cTarget.height(), cOverlap.m_nSrcY,
         cOverlap.m_nDstY, cOverlap.m_nHeight);
    return true;
}

/// False where the painter has to paint.
bool findOverlap(const QImage &cTarget, QSize cPicture, const QRectF &cSource, Overlap &cOverlap)
{
    if (findUnscaled(cTarget, cPicture, cSource, cOverlap))
        return true;
    const auto pcMap = ScaleMap::find(cTarget, cPicture, cSource);
    if (pcMap)
        cOverlap = {0, 0, pcMap->m_nDstX, pcMap->m_nDstY, pcMap->width(), pcMap->height(), pcMap};
    return pcMap != nullptr;
}

size_t bytesOf(int nPixels)
{
    return static_cast<size_t>(nPixels) * 3;
}

unsigned char *targetPixels(QImage &cTarget, const Overlap &cOverlap, int nRow)
{
    return cTarget.scanLine(cOverlap.m_nDstY + nRow) + bytesOf(cOverlap.m_nDstX);
}

void repeatRow(QImage &cTarget, const Overlap &cOverlap, int nRow)
{
    memcpy(targetPixels(cTarget, cOverlap, nRow), targetPixels(cTarget, cOverlap, nRow - 1),
           bytesOf(cOverlap.m_nWidth));
}

void clearTarget(QImage &cTarget)
{
    memset(cTarget.bits(), 0, static_cast<size_t>(cTarget.sizeInBytes()));
}

/// Sets every byte of the target that the overlap does not cover to 0, the rows' padding included.
void clearAround(QImage &cTarget, const Overlap &cOverlap)
{
    if (cOverlap.m_nWidth == 0 || cOverlap.m_nHeight == 0) {
        clearTarget(cTarget);
        return;
    }
    const auto nRowBytes = static_cast<size_t>(cTarget.bytesPerLine());
    const auto nRows = static_cast<size_t>(cTarget.height());
    const auto nFirst = static_cast<size_t>(cOverlap.m_nDstY);
    const size_t nEnd = nFirst + static_cast<size_t>(cOverlap.m_nHeight);
    const size_t nLeft = bytesOf(cOverlap.m_nDstX);
    const size_t nRight = nLeft + bytesOf(cOverlap.m_nWidth);
    unsigned char *puchTarget = cTarget.bits();
    memset(puchTarget, 0, nFirst * nRowBytes);
    for (size_t nRow = nFirst; nRow < nEnd; ++nRow) {
        memset(puchTarget + nRow * nRowBytes, 0, nLeft);
        memset(puchTarget + nRow * nRowBytes + nRight, 0, nRowBytes - nRight);
    }
    memset(puchTarget + nEnd * nRowBytes, 0, (nRows - nEnd) * nRowBytes);
}

/// The picture's row at a row of the overlap.
int sourceRow(const Overlap &cOverlap, int nRow)
{
    return cOverlap.m_pcMap ? cOverlap.m_pcMap->m_anRows[static_cast<size_t>(nRow)] : cOverlap.m_nSrcY + nRow;
}

/// Calls fnRow(row of the overlap, its grey values, whether they are those of the row before) for each,
/// where fnGrey(y) is a row of the picture.
template <typename GreyFunction, typename RowFunction>
void forRows(const Overlap &cOverlap, const GreyFunction &fnGrey, const RowFunction &fnRow)
{
    const ScaleMap *pcMap = cOverlap.m_pcMap.get();
    unsigned char auchScaled[PAINTER_LIMIT]; // wider targets have no map
    for (int nRow = 0; nRow < cOverlap.m_nHeight; ++nRow) {
        const unsigned char *puchGrey = fnGrey(sourceRow(cOverlap, nRow)) + cOverlap.m_nSrcX;
        const bool bRepeated = pcMap && pcMap->repeatsRow(nRow);
        if (pcMap && !bRepeated)
            PixelRows::pickGrey(auchScaled, puchGrey, pcMap->m_anColumns.data(), pcMap->width());
        fnRow(nRow, pcMap ? auchScaled : puchGrey, bRepeated);
    }
}

/// Builds a picture of 8-bit grey values row by row and paints it: fnRow(row of the picture, y).
template <typename RowFunction>
void paintBuilt(QImage &cTarget, QSize cPicture, QImage::Format eFormat, const QRectF &cSource,
                const RowFunction &fnRow)
{
    const qint64 nRowBytes =
        eFormat == QImage::Format_RGB888 ? rowBytes(cPicture.width()) : qint64{4} * cPicture.width();
    if (nRowBytes > std::numeric_limits<int>::max())
        return;
    const PixelBuffers::Owned pcPixels(
        PixelBuffers::take(static_cast<size_t>(nRowBytes * cPicture.height())));
    if (!pcPixels)
        return;
    for (int y = 0; y < cPicture.height(); ++y)
        fnRow(pcPixels.get() + nRowBytes * y, y);
    ScaleMap::paint(
        cTarget,
        QImage(pcPixels.get(), cPicture.width(), cPicture.height(), static_cast<int>(nRowBytes), eFormat),
        cSource);
}

/// What an overlay or a mask paints for each grey value, and a way to do it on one row of a target.
class Overlay
{
public:
    explicit Overlay(const Drawing::Gray8DrawingOpt &cOpt);

    bool isEmpty() const { return m_eKind == Kind::Nothing; }
    /// False when a host has put colours into the table that let the target shine through.
    bool canCompose() const { return m_bOpaque; }
    QRgb operator[](unsigned char nGrey) const { return m_anColour[nGrey]; }
    void compose(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels) const;

private:
    enum class Kind { Nothing, Grey, Table, Mask };
    static constexpr int CHUNK = 256; // pixels; small enough to stay in the nearest cache

    Kind m_eKind = Kind::Nothing;
    bool m_bOpaque = true;               ///< whether each value but 0 of an overlay is opaque
    bool m_abShown[2] = {};              ///< a mask's: whether it paints zeros, and others
    std::array<QRgb, 256> m_anColour{};  ///< by grey value
    unsigned char m_auchMask[CHUNK * 3]; ///< the mask's colour again and again
};

Overlay::Overlay(const Drawing::Gray8DrawingOpt &cOpt)
{
    if (cOpt.m_nDrawMode == 1) {
        m_eKind = cOpt.m_nLapped == 0 ? Kind::Grey : Kind::Table;
        for (int g = 1; g < 256; ++g)
            m_anColour[static_cast<size_t>(g)] =
                cOpt.m_nLapped == 0 ? qRgb(g, g, g) : cOpt.m_anColourTable[g];
        m_bOpaque = std::all_of(m_anColour.begin() + 1, m_anColour.end(),
                                [](QRgb nColour) { return qAlpha(nColour) == 255; });
        return;
    }
    static constexpr QRgb s_anMaskColour[] = {0xFF000000, 0xFFFFFFFF, 0xFFFF0000};
    if (cOpt.m_nMaskCr < 0 || cOpt.m_nMaskCr > 2)
        return;
    const QRgb nColour = s_anMaskColour[cOpt.m_nMaskCr];
    m_eKind = Kind::Mask;
    m_abShown[0] = cOpt.m_nMaskVal != 1;
    m_abShown[1] = cOpt.m_nMaskVal != 0;
    m_anColour.fill(m_abShown[1] ? nColour : TRANSPARENT);
    m_anColour[0] = m_abShown[0] ? nColour : TRANSPARENT;
    for (int i = 0; i < CHUNK * 3; i += 3) {
        m_auchMask[i] = static_cast<unsigned char>(qRed(nColour));
        m_auchMask[i + 1] = static_cast<unsigned char>(qGreen(nColour));
        m_auchMask[i + 2] = static_cast<unsigned char>(qBlue(nColour));
    }
}

void Overlay::compose(unsigned char *puchDst, const unsigned char *puchGrey, int nPixels) const
{
    unsigned char auchShown[CHUNK * 3];
    unsigned char auchColour[CHUNK * 3];
    for (; nPixels > 0; nPixels -= CHUNK, puchGrey += CHUNK, puchDst += 3L * CHUNK) {
        const int nChunk = qMin(nPixels, CHUNK);
        const unsigned char *puchColour = auchShown; // a grey overlay shows the very values
        if (m_eKind == Kind::Mask) {
            const auto nZero = static_cast<unsigned char>(m_abShown[0] ? 255 : 0);
            const auto nOther = static_cast<unsigned char>(m_abShown[1] ? 255 : 0);
            for (int i = 0; i < nChunk; ++i)
                auchColour[i] = puchGrey[i] == 0 ? nZero : nOther;
            PixelRows::expandGrey(auchShown, auchColour, nChunk);
            puchColour = m_auchMask;
        } else {
            PixelRows::expandGrey(auchShown, puchGrey, nChunk);
            if (m_eKind == Kind::Table) {
                unsigned char *puchPixel = auchColour;
                for (int i = 0; i < nChunk; ++i, puchPixel += 3) {
                    const QRgb nColour = m_anColour[puchGrey[i]];
                    puchPixel[0] = static_cast<unsigned char>(nColour >> 16);
                    puchPixel[1] = static_cast<unsigned char>(nColour >> 8);
                    puchPixel[2] = static_cast<unsigned char>(nColour);
                }
                puchColour = auchColour;
            }
        }
        PixelRows::select(puchDst, auchShown, puchColour, 3 * nChunk);
    }
}
} // namespace

Drawing::DIBDrawingOpt::DIBDrawingOpt(int nDataID, unsigned char *puchDIB, int nWidth, int nHeight)
    : DrawingOpt(nDataID),
      m_puchData(copyPixels(puchDIB, nWidth > 0 ? rowBytes(nWidth) : 0, nHeight)),
      m_nWidth(nWidth),
      m_nHeight(nHeight)
{
    m_nDataType = 0;
}

Drawing::DIBDrawingOpt::~DIBDrawingOpt()
{
    PixelBuffers::giveBack(m_puchData);
}

void Drawing::DIBDrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    if (!pcTarget || !pcAPM || pcTarget->isNull() || m_nWidth <= 0 || m_nHeight <= 0 || !m_puchData)
        return;
    const QSize cPicture(m_nWidth, m_nHeight);
    const qint64 nRowBytes = rowBytes(m_nWidth);
    Placement cPlace;
    Overlap cOverlap{};
    const bool bPlaced = placePicture(m_nScaleType, m_nAlignType, cPicture, pcTarget->size(), true, cPlace);
    const bool bCopied = bPlaced && findOverlap(*pcTarget, cPicture, cPlace.m_cSource, cOverlap);
    if (bCopied)
        clearAround(*pcTarget, cOverlap);
    else
        clearTarget(*pcTarget);
    for (int y = 0, nMapped = 0; y < m_nHeight; ++y) {
        unsigned char *puchRow = m_puchData + nRowBytes * y;
        if (const ScaleMap *pcMap = cOverlap.m_pcMap.get()) {
            PixelRows::exchangeRedBlue(puchRow, m_nWidth);
            for (; nMapped < pcMap->height() && pcMap->m_anRows[static_cast<size_t>(nMapped)] == y;
                 ++nMapped) {
                if (pcMap->repeatsRow(nMapped))
                    repeatRow(*pcTarget, cOverlap, nMapped);
                else
                    PixelRows::pickPixels(targetPixels(*pcTarget, cOverlap, nMapped), puchRow,
                                          pcMap->m_anColumns.data(), pcMap->width(), pcMap->m_nInner);
            }
            continue;
        }
        const int nRow = bCopied ? y - cOverlap.m_nSrcY : -1;
        const bool bShown = nRow >= 0 && nRow < cOverlap.m_nHeight;
        // What is shown goes to the target first and comes back from there, still in the nearest cache.
        const int nShown = bShown ? cOverlap.m_nWidth : 0;
        const int nLeft = bShown ? cOverlap.m_nSrcX : 0;
        unsigned char *puchShown = puchRow + bytesOf(nLeft);
        PixelRows::exchangeRedBlue(puchRow, nLeft);
        if (nShown > 0) {
            unsigned char *puchTarget = targetPixels(*pcTarget, cOverlap, nRow);
            PixelRows::exchangeRedBlue(puchTarget, puchShown, nShown);
            memcpy(puchShown, puchTarget, bytesOf(nShown));
        }
        PixelRows::exchangeRedBlue(puchShown + bytesOf(nShown), m_nWidth - nLeft - nShown);
    }
    if (!bPlaced)
        return;
    if (!bCopied && nRowBytes <= std::numeric_limits<int>::max())
        ScaleMap::paint(
            *pcTarget,
            QImage(m_puchData, m_nWidth, m_nHeight, static_cast<int>(nRowBytes), QImage::Format_RGB888),
            cPlace.m_cSource);
    setViewScaleOpt(m_nViewID, cPlace.m_cScale);
}

Drawing::Gray8DrawingOpt::Gray8DrawingOpt(int nDataID, unsigned char *puchGray8, int nWidth, int nHeight)
    : GrayDrawingOpt(nDataID),
      m_puchData(copyPixels(puchGray8, nWidth, nHeight)),
      m_nWidth(nWidth),
      m_nHeight(nHeight)
{
    m_nDataType = 1;
    std::copy(s_anColourTable.begin(), s_anColourTable.end(), m_anColourTable);
}

Drawing::Gray8DrawingOpt::~Gray8DrawingOpt()
{
    PixelBuffers::giveBack(m_puchData);
}

void Drawing::Gray8DrawingOpt::draw(QImage *pcTarget, ArithmParamMgr *pcAPM)
{
    if (!pcTarget || !pcAPM || pcTarget->isNull() || m_nWidth <= 0 || m_nHeight <= 0 || !m_puchData ||
        m_nDrawMode < 0 || m_nDrawMode > 2)
        return;
    const QSize cPicture(m_nWidth, m_nHeight);
    const auto fnGrey = [this](int y) { return m_puchData + qint64{m_nWidth} * y; };
    Placement cPlace;
    Overlap cOverlap{};
    const bool bPlaced = placePicture(m_nScaleType, m_nAlignType, cPicture, pcTarget->size(), false, cPlace);
    const bool bCopied = bPlaced && findOverlap(*pcTarget, cPicture, cPlace.m_cSource, cOverlap);
    if (m_nDrawMode == 0) {
        if (bCopied)
            clearAround(*pcTarget, cOverlap);
        else
            clearTarget(*pcTarget);
    }
    if (!bPlaced)
        return;
    if (m_nDrawMode == 0) {
        // The picture's last pixel is not written and stays 0.
        if (bCopied) {
            forRows(cOverlap, fnGrey, [&](int nRow, const unsigned char *puchRow, bool bRepeated) {
                if (bRepeated) {
                    repeatRow(*pcTarget, cOverlap, nRow);
                    return;
                }
                unsigned char *puchTarget = targetPixels(*pcTarget, cOverlap, nRow);
                PixelRows::expandGrey(puchTarget, puchRow, cOverlap.m_nWidth);
                if (sourceRow(cOverlap, nRow) == m_nHeight - 1) {
                    const int nInner = cOverlap.m_pcMap
                                           ? cOverlap.m_pcMap->m_nInner
                                           : qBound(0, m_nWidth - 1 - cOverlap.m_nSrcX, cOverlap.m_nWidth);
                    memset(puchTarget + bytesOf(nInner), 0, bytesOf(cOverlap.m_nWidth - nInner));
                }
            });
        } else {
            paintBuilt(*pcTarget, cPicture, QImage::Format_RGB888, cPlace.m_cSource,
                       [&](unsigned char *puchRow, int y) {
                           PixelRows::expandGrey(puchRow, fnGrey(y), m_nWidth);
                           if (y == m_nHeight - 1)
                               memset(puchRow + bytesOf(m_nWidth - 1), 0, 3);
                       });
        }
    } else if (const Overlay cOverlay(*this); !cOverlay.isEmpty()) {
        if (bCopied && cOverlay.canCompose()) {
            forRows(cOverlap, fnGrey, [&](int nRow, const unsigned char *puchRow, bool) {
                cOverlay.compose(targetPixels(*pcTarget, cOverlap, nRow), puchRow, cOverlap.m_nWidth);
            });
        } else {
            paintBuilt(*pcTarget, cPicture, QImage::Format_ARGB32, cPlace.m_cSource,
                       [&](unsigned char *puchRow, int y) {
                           const unsigned char *puchGrey = fnGrey(y);
                           auto *pnRow = reinterpret_cast<QRgb *>(puchRow);
                           for (int x = 0; x < m_nWidth; ++x)
                               pnRow[x] = cOverlay[puchGrey[x]];
                       });
        }
    }
    setViewScaleOpt(m_nViewID, cPlace.m_cScale);
}

Drawing::Gray16DrawingOpt::Gray16DrawingOpt(int nDataID, unsigned char *puchGray16, int nWidth, int nHeight)
    : GrayDrawingOpt(nDataID),
      m_puchData(copyPixels(puchGray16, qint64{nWidth} * 2, nHeight)),
      m_nWidth(nWidth),
      m_nHeight(nHeight)
{
    m_nDataType = 2;
}

Drawing::Gray16DrawingOpt::~Gray16DrawingOpt()
{
    PixelBuffers::giveBack(m_puchData);
}

void Drawing::Gray16DrawingOpt::draw(QImage *, ArithmParamMgr *) {}
