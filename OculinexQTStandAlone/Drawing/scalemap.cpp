#include "Drawing/scalemap.h"

#include <algorithm>
#include <array>
#include <mutex>

#include <QPainter>

#include "Drawing/plaintarget.h"
#include "pixelbuffers.h"

namespace
{
constexpr size_t MAX_KEPT = 16;                // maps; those of six views with some layers each
constexpr qint64 MAX_PIXELS = qint64{1} << 25; // of a picture or target, since learning paints as many

struct Geometry {
    QSize m_cTarget;
    QSize m_cPicture;
    std::array<qreal, 4> m_afSource; // QRectF would compare with a tolerance

    bool operator==(const Geometry &cOther) const
    {
        return m_cTarget == cOther.m_cTarget && m_cPicture == cOther.m_cPicture &&
               m_afSource == cOther.m_afSource;
    }
};

enum class State { New, AskedOnce, Learnt };

struct Known {
    Geometry m_cGeometry;
    State m_eState = State::New;
    std::shared_ptr<const ScaleMap> m_pcMap; ///< null, though learnt: the painter has to paint
};

std::mutex s_cMutex; // guards the list
/// The latest first. Never destroyed, since a task's thread may still draw at process exit.
std::vector<Known> &s_acKnown = *new std::vector<Known>;

/// Puts what is known of a geometry, if only that it is new, first. To be called with the mutex held.
Known &known(const Geometry &cGeometry)
{
    const auto pcKnown = std::find_if(s_acKnown.begin(), s_acKnown.end(), [&cGeometry](const Known &cKnown) {
        return cKnown.m_cGeometry == cGeometry;
    });
    if (pcKnown != s_acKnown.end()) {
        std::rotate(s_acKnown.begin(), pcKnown, pcKnown + 1);
    } else {
        if (s_acKnown.size() == MAX_KEPT)
            s_acKnown.pop_back();
        s_acKnown.insert(s_acKnown.begin(), {cGeometry, State::New, nullptr});
    }
    return s_acKnown.front();
}

/// What the painter makes of a picture whose pixels tell their own column (or row) + 1; 0 where it paints
/// nothing. Null without memory.
QImage paintPositions(const Geometry &cGeometry, bool bRows)
{
    QImage cPicture = PixelBuffers::image(cGeometry.m_cPicture, QImage::Format_RGB888);
    QImage cTarget = PixelBuffers::image(cGeometry.m_cTarget, QImage::Format_RGB888);
    if (cPicture.isNull() || cTarget.isNull())
        return {};
    for (int y = 0; y < cPicture.height(); ++y) {
        unsigned char *puchPixel = cPicture.scanLine(y);
        for (int x = 0; x < cPicture.width(); ++x, puchPixel += 3) {
            const int nPosition = (bRows ? y : x) + 1;
            puchPixel[0] = static_cast<unsigned char>(nPosition >> 16);
            puchPixel[1] = static_cast<unsigned char>(nPosition >> 8);
            puchPixel[2] = static_cast<unsigned char>(nPosition);
        }
    }
    cTarget.fill(0);
    const auto [fX, fY, fWidth, fHeight] = cGeometry.m_afSource;
    ScaleMap::paint(cTarget, cPicture, QRectF(fX, fY, fWidth, fHeight));
    return cTarget;
}

int positionAt(const QImage &cPainted, int x, int y)
{
    const unsigned char *puchPixel = cPainted.constScanLine(y) + qint64{3} * x;
    return puchPixel[0] << 16 | puchPixel[1] << 8 | puchPixel[2];
}

/// Null when what is painted is no rectangle, or its columns do not depend on x alone and its rows on y.
std::shared_ptr<const ScaleMap> learn(const Geometry &cGeometry)
{
    const QImage cColumns = paintPositions(cGeometry, false);
    const QImage cRows = paintPositions(cGeometry, true);
    if (cColumns.isNull() || cRows.isNull())
        return nullptr;
    auto pcMap = std::make_shared<ScaleMap>();
    int &nX = pcMap->m_nDstX;
    int &nY = pcMap->m_nDstY;
    const int nWidth = cColumns.width();
    const int nHeight = cColumns.height();
    while (nY < nHeight && positionAt(cColumns, nX, nY) == 0) {
        if (++nX == nWidth) {
            nX = 0;
            ++nY;
        }
    }
    for (int x = nX; nY < nHeight && x < nWidth && positionAt(cColumns, x, nY) > 0; ++x)
        pcMap->m_anColumns.push_back(positionAt(cColumns, x, nY) - 1);
    for (int y = nY; y < nHeight && positionAt(cRows, nX, y) > 0; ++y)
        pcMap->m_anRows.push_back(positionAt(cRows, nX, y) - 1);

    const auto expected = [](const std::vector<int> &anPositions, int nOffset) {
        return anPositions[static_cast<size_t>(nOffset)] + 1;
    };
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            const bool bPainted = x >= nX && x - nX < pcMap->width() && y >= nY && y - nY < pcMap->height();
            if (positionAt(cColumns, x, y) != (bPainted ? expected(pcMap->m_anColumns, x - nX) : 0) ||
                positionAt(cRows, x, y) != (bPainted ? expected(pcMap->m_anRows, y - nY) : 0))
                return nullptr;
        }
    }
    const auto pnFirst = pcMap->m_anColumns.begin();
    const auto pnEnd = pcMap->m_anColumns.end();
    if (!std::is_sorted(pnFirst, pnEnd) || !std::is_sorted(pcMap->m_anRows.begin(), pcMap->m_anRows.end()))
        return nullptr;
    pcMap->m_nInner =
        static_cast<int>(std::lower_bound(pnFirst, pnEnd, cGeometry.m_cPicture.width() - 1) - pnFirst);
    return pcMap;
}
} // namespace

void ScaleMap::paint(QImage &cTarget, const QImage &cPicture, const QRectF &cSource)
{
    QPainter cPainter(&cTarget);
    cPainter.drawImage(QRectF(QPointF(), cTarget.size()), cPicture, cSource);
}

std::shared_ptr<const ScaleMap> ScaleMap::find(const QImage &cTarget, QSize cPicture, const QRectF &cSource)
{
    const auto fits = [](QSize cSize) { return qint64{cSize.width()} * cSize.height() <= MAX_PIXELS; };
    if (!isPlainTarget(cTarget) || !fits(cTarget.size()) || !fits(cPicture))
        return nullptr;
    const Geometry cGeometry{
        cTarget.size(), cPicture, {cSource.x(), cSource.y(), cSource.width(), cSource.height()}};
    {
        const std::lock_guard cLock(s_cMutex);
        Known &cKnown = known(cGeometry);
        if (cKnown.m_eState == State::New) {
            cKnown.m_eState = State::AskedOnce;
            return nullptr;
        }
        if (cKnown.m_eState == State::Learnt)
            return cKnown.m_pcMap;
    }
    auto pcMap = learn(cGeometry);
    const std::lock_guard cLock(s_cMutex);
    known(cGeometry) = {cGeometry, State::Learnt, pcMap};
    return pcMap;
}
