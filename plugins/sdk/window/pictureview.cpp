#include "sdk/window/pictureview.h"

#include <algorithm>
#include <cmath>

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <QtMath>

using Plugin::PictureView;

namespace
{
constexpr double MAX_ZOOM = 32;
constexpr double MIN_ZOOM = 1.0 / 64;
} // namespace

PictureView::PictureView(QWidget *pcParent) : QWidget(pcParent)
{
    setMinimumSize(320, 240);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMouseTracking(true);
}

void PictureView::setPicture(const QImage &cPicture, const QImage &cShrunk)
{
    m_cPicture = cPicture;
    m_cShrunk = QImage();
    update();
    if (!cPicture.isNull() && cPicture.size() != m_cSize) {
        m_cSize = cPicture.size();
        fit();
    }
    if (cShrunk.size() == shrunkSize(cPicture.size()))
        m_cShrunk = cShrunk;
}

QSize PictureView::shrunkSize(const QSize &cSize) const
{
    const double dZoom = m_bFitted || cSize != m_cSize ? fittedZoom(cSize) : m_dZoom;
    if (cSize.isEmpty() || dZoom >= 1)
        return {};
    return {std::max(1, qRound(cSize.width() * dZoom)), std::max(1, qRound(cSize.height() * dZoom))};
}

void PictureView::setZoom(double dZoom)
{
    if (dZoom > 0)
        zoomTo(dZoom, QRectF(rect()).center());
    else
        fit();
    update();
    emit zoomed();
}

void PictureView::setMarked(const QRect &cRect)
{
    m_cMarked = cRect;
    update();
}

void PictureView::setPicking(bool bPicking)
{
    m_bPicking = bPicking;
    m_bPressed = false;
    m_cDragged = QRect();
    setCursor(bPicking ? Qt::CrossCursor : Qt::ArrowCursor);
    update();
}

QPoint PictureView::toWidget(const QPoint &cPixel) const
{
    const QPointF cMiddle = m_cOrigin + (QPointF(cPixel) + QPointF(0.5, 0.5)) * m_dZoom;
    return {qFloor(cMiddle.x()), qFloor(cMiddle.y())};
}

QSize PictureView::sizeHint() const
{
    return {520, 390};
}

void PictureView::paintEvent(QPaintEvent *)
{
    QPainter cPainter(this);
    cPainter.fillRect(rect(), palette().color(QPalette::Dark));
    if (m_cPicture.isNull())
        return;
    if (m_dZoom < 1 && m_cShrunk.isNull())
        m_cShrunk =
            m_cPicture.scaled(shrunkSize(m_cPicture.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (m_dZoom < 1) {
        cPainter.drawImage(m_cOrigin.toPoint(), m_cShrunk);
    } else {
        // Only what is in sight is enlarged.
        const QRect cSight =
            QRectF(toPicture({0, 0}), toPicture(QPointF(width(), height()))).toAlignedRect() &
            m_cPicture.rect();
        cPainter.drawImage(
            QRectF(m_cOrigin + QPointF(cSight.topLeft()) * m_dZoom, QSizeF(cSight.size()) * m_dZoom),
            m_cPicture, cSight);
    }
    const QRect &cFrame = m_cDragged.isEmpty() ? m_cMarked : m_cDragged;
    if (cFrame.isEmpty())
        return;
    const QRectF cShown(m_cOrigin + QPointF(cFrame.topLeft()) * m_dZoom, QSizeF(cFrame.size()) * m_dZoom);
    // Two colours, so that one is seen on any ground.
    cPainter.setPen(QPen(Qt::black, 3));
    cPainter.drawRect(cShown);
    cPainter.setPen(QPen(Qt::yellow, 1));
    cPainter.drawRect(cShown);
}

void PictureView::resizeEvent(QResizeEvent *)
{
    if (m_bFitted)
        fit();
    else
        keepInSight();
}

void PictureView::wheelEvent(QWheelEvent *pcEvent)
{
    if (m_cPicture.isNull())
        return;
    zoomTo(m_dZoom * std::pow(1.25, pcEvent->angleDelta().y() / 120.0), pcEvent->position());
    update();
    emit zoomed();
}

/// What stands at cPos stays there.
void PictureView::zoomTo(double dZoom, const QPointF &cPos)
{
    const QPointF cPixel = toPicture(cPos);
    m_dZoom = std::clamp(dZoom, MIN_ZOOM, MAX_ZOOM);
    m_bFitted = false;
    m_cShrunk = QImage();
    m_cOrigin = cPos - cPixel * m_dZoom;
    keepInSight();
}

void PictureView::mousePressEvent(QMouseEvent *pcEvent)
{
    if (pcEvent->button() != Qt::LeftButton || m_cPicture.isNull())
        return;
    m_bPressed = true;
    m_cPressed = pcEvent->pos();
    if (m_bPicking)
        m_cDragged = draggedTo(pcEvent->pos());
    update();
}

void PictureView::mouseMoveEvent(QMouseEvent *pcEvent)
{
    const QPointF cPixel = toPicture(pcEvent->pos());
    emit hovered({qFloor(cPixel.x()), qFloor(cPixel.y())});
    if (!m_bPressed)
        return;
    if (m_bPicking) {
        m_cDragged = draggedTo(pcEvent->pos());
    } else {
        m_bFitted = false;
        m_cOrigin += pcEvent->pos() - m_cPressed;
        m_cPressed = pcEvent->pos();
        keepInSight();
    }
    update();
}

void PictureView::mouseReleaseEvent(QMouseEvent *pcEvent)
{
    if (pcEvent->button() != Qt::LeftButton || !m_bPressed)
        return;
    m_bPressed = false;
    if (!m_bPicking)
        return;
    const QRect cRect = draggedTo(pcEvent->pos());
    m_cDragged = QRect();
    update();
    if (!cRect.isEmpty())
        emit picked(cRect);
}

void PictureView::mouseDoubleClickEvent(QMouseEvent *pcEvent)
{
    if (m_bPicking) {
        mousePressEvent(pcEvent);
        return;
    }
    setZoom(0);
}

void PictureView::leaveEvent(QEvent *)
{
    emit hovered({-1, -1});
}

void PictureView::fit()
{
    m_bFitted = true;
    m_cShrunk = QImage();
    if (m_cPicture.isNull())
        return;
    m_dZoom = fittedZoom(m_cPicture.size());
    keepInSight();
}

double PictureView::fittedZoom(const QSize &cSize) const
{
    return std::min({1.0 * width() / cSize.width(), 1.0 * height() / cSize.height(), MAX_ZOOM});
}

/// A picture smaller than the widget stands in the middle, a larger one leaves no gap. It begins with a
/// whole pixel of the widget, so that 1:1 is exact.
void PictureView::keepInSight()
{
    const auto fnPlace = [](double dOrigin, double dSpace) {
        return std::floor(dSpace >= 0 ? dSpace / 2 : std::clamp(dOrigin, dSpace, 0.0));
    };
    m_cOrigin = {fnPlace(m_cOrigin.x(), width() - m_cPicture.width() * m_dZoom),
                 fnPlace(m_cOrigin.y(), height() - m_cPicture.height() * m_dZoom)};
}

/// The pixels from where the mouse went down to cPos.
QRect PictureView::draggedTo(const QPoint &cPos) const
{
    const QPointF cA = toPicture(m_cPressed);
    const QPointF cB = toPicture(cPos);
    const QPoint cFirst(qFloor(std::min(cA.x(), cB.x())), qFloor(std::min(cA.y(), cB.y())));
    const QPoint cLast(qFloor(std::max(cA.x(), cB.x())), qFloor(std::max(cA.y(), cB.y())));
    return QRect(cFirst, cLast) & m_cPicture.rect();
}

QPointF PictureView::toPicture(const QPointF &cPos) const
{
    return (cPos - m_cOrigin) / m_dZoom;
}
