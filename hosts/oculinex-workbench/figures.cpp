#include "figures.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPixmap>

namespace
{
constexpr qint64 RATE_MS = 1500; ///< over which a rate is taken
constexpr int DOT = 12;          ///< pixels
} // namespace

QString milliseconds(qint64 nNs)
{
    const double fMs = static_cast<double>(nNs) / 1e6;
    return QString::number(fMs, 'f', fMs < 10 ? 2 : fMs < 100 ? 1 : 0);
}

QString duration(qint64 nNs)
{
    const double fSeconds = static_cast<double>(nNs) / 1e9;
    if (fSeconds < 60)
        return QCoreApplication::translate("Figures", "%1 s").arg(fSeconds, 0, 'f', 1);
    const auto nSeconds = static_cast<qint64>(fSeconds);
    return QCoreApplication::translate("Figures", "%1 min %2 s").arg(nSeconds / 60).arg(nSeconds % 60);
}

QIcon dotIcon(const QColor &cColour)
{
    QPixmap cPixmap(DOT, DOT);
    cPixmap.fill(Qt::transparent);
    QPainter cPainter(&cPixmap);
    cPainter.setRenderHint(QPainter::Antialiasing);
    cPainter.setPen(cColour.darker(130));
    cPainter.setBrush(cColour);
    cPainter.drawEllipse(QRectF(1.5, 1.5, DOT - 3, DOT - 3));
    cPainter.end();
    return cPixmap;
}

void Rate::update(qint64 nCount)
{
    if (m_nCount < 0 || nCount < m_nCount) {
        m_nCount = nCount;
        m_fPerSecond = 0;
        m_cSince.start();
    } else if (m_cSince.elapsed() >= RATE_MS) {
        m_fPerSecond =
            static_cast<double>(nCount - m_nCount) * 1e9 / static_cast<double>(m_cSince.nsecsElapsed());
        m_nCount = nCount;
        m_cSince.start();
    }
}
