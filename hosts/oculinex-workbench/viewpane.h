#ifndef VIEWPANE_H
#define VIEWPANE_H

#include <QImage>
#include <QPointer>
#include <QSize>
#include <QWidget>

#include "sdk/window/pictureview.h"

class QComboBox;
class QLabel;
class ViewFeed;

/// Shows view 0, 1 or 2 live: the wheel zooms, dragging moves the picture, a double click shows all of
/// it again; below stand position and colour of the pixel under the mouse.
class ViewPane : public QWidget
{
    Q_OBJECT

public:
    explicit ViewPane(int nView, QWidget *pcParent = nullptr);

    /// The size of the view in pixels, in which tasks draw; empty: as large as the pane.
    QSize viewSize() const;
    void setViewSize(const QSize &cSize);
    /// Pixels of the screen per pixel of the view; 0 shows the whole view.
    double zoom() const;
    void setZoom(double dZoom);
    /// What is shown; null before the first drawing.
    QImage picture() const;
    /// From now on shows the same in another window, too, which then is the one in sight; null ends it.
    void setMirror(Plugin::PictureView *pcMirror);

signals:
    void settingsChanged(); ///< the user has chosen a size or a zoom
    void updated();         ///< another picture is shown

public slots:
    void savePicture();
    void copyPicture();

protected:
    void resizeEvent(QResizeEvent *pcEvent) override;

private:
    void showNewest();
    void applySize();
    void tellShrunkSize();
    void tellPixel(const QPoint &cPixel);

    const int m_nView;
    ViewFeed *m_pcFeed;
    Plugin::PictureView *m_pcPicture;
    QPointer<Plugin::PictureView> m_pcMirror;
    QComboBox *m_pcSize;
    QLabel *m_pcPixel;
    QPoint m_cPixel{-1, -1}; ///< under the mouse
};

#endif
