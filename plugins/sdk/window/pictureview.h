#ifndef PLUGIN_PICTUREVIEW_H
#define PLUGIN_PICTUREVIEW_H

#include <QImage>
#include <QWidget>

namespace Plugin
{
/// Shows a picture, at first as large as the widget. The wheel zooms where the mouse stands, dragging
/// moves the picture, a double click fits it in again. While it picks, dragging marks a rectangle
/// instead. Positions are pixels of the picture.
class PictureView : public QWidget
{
    Q_OBJECT

public:
    explicit PictureView(QWidget *pcParent = nullptr);

    /// A picture of the same size as the last one is shown at the same place and zoom; null shows none.
    /// Who has scaled it to shrunkSize() already, perhaps on another thread, saves that here.
    void setPicture(const QImage &cPicture, const QImage &cShrunk = QImage());
    const QImage &picture() const { return m_cPicture; }
    /// How large a picture of that size is shown while it is shown smaller than it is; else empty.
    QSize shrunkSize(const QSize &cSize) const;
    /// Pixels of the widget per pixel of the picture; 0 shows the whole picture, whatever the size.
    void setZoom(double dZoom);
    double zoom() const { return m_bFitted ? 0 : m_dZoom; }
    /// A frame drawn over the picture; an empty one is not drawn.
    void setMarked(const QRect &cRect);
    void setPicking(bool bPicking);
    bool isPicking() const { return m_bPicking; }
    /// Where a pixel's middle stands in the widget.
    QPoint toWidget(const QPoint &cPixel) const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void picked(const QRect &cRect);    ///< inside the picture, at least one pixel
    void hovered(const QPoint &cPixel); ///< where the mouse stands, perhaps outside the picture
    void zoomed();

protected:
    void paintEvent(QPaintEvent *pcEvent) override;
    void resizeEvent(QResizeEvent *pcEvent) override;
    void wheelEvent(QWheelEvent *pcEvent) override;
    void mousePressEvent(QMouseEvent *pcEvent) override;
    void mouseMoveEvent(QMouseEvent *pcEvent) override;
    void mouseReleaseEvent(QMouseEvent *pcEvent) override;
    void mouseDoubleClickEvent(QMouseEvent *pcEvent) override;
    void leaveEvent(QEvent *pcEvent) override;

private:
    void fit();
    double fittedZoom(const QSize &cSize) const;
    void zoomTo(double dZoom, const QPointF &cPos);
    void keepInSight();
    QRect draggedTo(const QPoint &cPos) const;
    QPointF toPicture(const QPointF &cPos) const;

    QImage m_cPicture;
    QImage m_cShrunk; ///< the picture at the present zoom, when that is below 1; null until needed
    QSize m_cSize;    ///< of the last picture
    QRect m_cMarked;
    QRect m_cDragged;
    QPointF m_cOrigin; ///< of the picture in the widget
    double m_dZoom = 1;
    bool m_bFitted = true;
    bool m_bPicking = false;
    bool m_bPressed = false;
    QPoint m_cPressed; ///< where the mouse went down, or was last while the picture is moved
};
} // namespace Plugin

#endif
