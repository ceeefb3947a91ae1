#include "icons.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace
{
constexpr int GRID = 16; ///< the icons are drawn on a grid of this size
constexpr int SCALE = 4; ///< pixels of a grid unit, so that larger sizes stay sharp

const QColor GREEN(0x2f, 0x96, 0x3d);
const QColor RED(0xc8, 0x38, 0x2c);
const QColor BLUE(0x2c, 0x6f, 0xbb);

void triangle(QPainter &cPainter, double fLeft, const QColor &cColour)
{
    cPainter.setBrush(cColour);
    cPainter.setPen(Qt::NoPen);
    const QPointF acPoint[] = {{fLeft, 3}, {fLeft + 9, 8}, {fLeft, 13}};
    cPainter.drawPolygon(acPoint, 3);
}

void square(QPainter &cPainter, const QRectF &cRect)
{
    cPainter.setBrush(RED);
    cPainter.setPen(Qt::NoPen);
    cPainter.drawRoundedRect(cRect, 1, 1);
}

/// A vertical arrow; up with nSign -1.
void arrow(QPainter &cPainter, int nSign)
{
    const auto fnY = [nSign](double fY) { return 8 + nSign * fY; };
    cPainter.drawLine(QPointF(8, fnY(-5)), QPointF(8, fnY(5)));
    const QPointF acHead[] = {{4, fnY(1)}, {8, fnY(5)}, {12, fnY(1)}};
    cPainter.drawPolyline(acHead, 3);
}

/// An arrow that bends back to the left.
void bentArrow(QPainter &cPainter)
{
    QPainterPath cPath(QPointF(3, 6));
    cPath.lineTo(9.5, 6);
    cPath.cubicTo(14, 6, 14, 13, 9.5, 13);
    cPath.lineTo(6, 13);
    cPainter.drawPath(cPath);
    const QPointF acHead[] = {{6, 2.5}, {2.5, 6}, {6, 9.5}};
    cPainter.drawPolyline(acHead, 3);
}

void sheet(QPainter &cPainter, const QPointF &cAt, double fWidth, double fHeight)
{
    const QPointF acEdge[] = {cAt, cAt + QPointF(fWidth - 3, 0), cAt + QPointF(fWidth, 3),
                              cAt + QPointF(fWidth, fHeight), cAt + QPointF(0, fHeight)};
    cPainter.drawPolygon(acEdge, 5);
}

void draw(QPainter &cPainter, Icon eIcon)
{
    switch (eIcon) {
    case Icon::New:
        sheet(cPainter, {3.5, 1.5}, 9, 13);
        break;
    case Icon::Open: {
        const QPointF acEdge[] = {{1.5, 13}, {1.5, 3}, {6, 3}, {7.5, 5}, {13, 5}, {13, 7.5}};
        cPainter.drawPolyline(acEdge, 6);
        const QPointF acFront[] = {{1.5, 13}, {4, 7.5}, {15, 7.5}, {12.5, 13}};
        cPainter.drawPolygon(acFront, 4);
        break;
    }
    case Icon::Save:
        cPainter.drawRoundedRect(QRectF(2, 2, 12, 12), 1, 1);
        cPainter.drawRect(QRectF(5, 2, 6, 4));
        cPainter.drawRect(QRectF(4.5, 9, 7, 5));
        break;
    case Icon::Redo:
        cPainter.translate(GRID, 0);
        cPainter.scale(-1, 1);
        [[fallthrough]];
    case Icon::Undo:
        bentArrow(cPainter);
        break;
    case Icon::Add:
        cPainter.setPen(QPen(GREEN, 2.2));
        cPainter.drawLine(QPointF(8, 3), QPointF(8, 13));
        cPainter.drawLine(QPointF(3, 8), QPointF(13, 8));
        break;
    case Icon::Remove:
        cPainter.setPen(QPen(RED, 2.2));
        cPainter.drawLine(QPointF(4, 4), QPointF(12, 12));
        cPainter.drawLine(QPointF(12, 4), QPointF(4, 12));
        break;
    case Icon::Duplicate:
        sheet(cPainter, {2, 1.5}, 7.5, 10);
        cPainter.setBrush(QApplication::palette().color(QPalette::Base));
        sheet(cPainter, {6, 4.5}, 7.5, 10);
        break;
    case Icon::Rename: {
        const QPointF acPen[] = {{3, 13}, {4, 9.5}, {11, 2.5}, {13.5, 5}, {6.5, 12}};
        cPainter.drawPolygon(acPen, 5);
        break;
    }
    case Icon::Up:
        arrow(cPainter, -1);
        break;
    case Icon::Down:
        arrow(cPainter, 1);
        break;
    case Icon::Start:
        triangle(cPainter, 4, GREEN);
        break;
    case Icon::StartAll:
        triangle(cPainter, 1, GREEN.lighter(140));
        triangle(cPainter, 6, GREEN);
        break;
    case Icon::Stop:
        square(cPainter, {3.5, 3.5, 9, 9});
        break;
    case Icon::StopAll:
        square(cPainter, {1.5, 4, 6, 8});
        square(cPainter, {8.5, 4, 6, 8});
        break;
    case Icon::Once:
        triangle(cPainter, 3, BLUE);
        cPainter.setPen(QPen(BLUE, 2));
        cPainter.drawLine(QPointF(13, 3.5), QPointF(13, 12.5));
        break;
    case Icon::Here: {
        cPainter.setPen(QPen(BLUE, 1.8));
        cPainter.drawLine(QPointF(8, 1.5), QPointF(8, 10));
        const QPointF acHead[] = {{4.5, 6.5}, {8, 10}, {11.5, 6.5}};
        cPainter.drawPolyline(acHead, 3);
        cPainter.drawLine(QPointF(2.5, 13.5), QPointF(13.5, 13.5));
        break;
    }
    case Icon::Configure:
        for (const auto &[fY, fX] : {std::pair(3.5, 10.5), std::pair(8.0, 5.5), std::pair(12.5, 10.5)}) {
            cPainter.drawLine(QPointF(2, fY), QPointF(14, fY));
            cPainter.setBrush(QApplication::palette().color(QPalette::Base));
            cPainter.drawEllipse(QPointF(fX, fY), 1.7, 1.7);
        }
        break;
    case Icon::Source:
        cPainter.drawRoundedRect(QRectF(1.5, 4.5, 13, 9), 1.5, 1.5);
        cPainter.drawEllipse(QPointF(8, 9), 2.7, 2.7);
        cPainter.drawLine(QPointF(5.5, 2.5), QPointF(10.5, 2.5));
        break;
    }
}
} // namespace

QIcon icon(Icon eIcon)
{
    QPixmap cPixmap(GRID * SCALE, GRID * SCALE);
    cPixmap.fill(Qt::transparent);
    QPainter cPainter(&cPixmap);
    cPainter.setRenderHint(QPainter::Antialiasing);
    cPainter.scale(SCALE, SCALE);
    cPainter.setPen(QPen(QApplication::palette().color(QPalette::WindowText), 1.3, Qt::SolidLine,
                         Qt::RoundCap, Qt::RoundJoin));
    draw(cPainter, eIcon);
    cPainter.end();
    return cPixmap;
}
