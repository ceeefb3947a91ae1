#include <QtTest>

#include <functional>
#include <limits>
#include <memory>

#include <QImage>
#include <QPainter>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"

namespace
{
constexpr int ID = 4;
constexpr int VIEW = 1;
constexpr int INT_LOW = std::numeric_limits<int>::min();
constexpr int INT_HIGH = std::numeric_limits<int>::max();
const QColor s_cOrange(255, 128, 64);
const QColor s_cExchanged(64, 128, 255);
const QColor s_cComplement(0, 127, 191);
// The alpha must not matter.
const QString s_strOrange = QStringLiteral("<Color>%1</Color><BorderColor>%1</BorderColor>").arg(0x12FF8040);

QImage black(int nWidth = 200, int nHeight = 150)
{
    QImage cTarget(nWidth, nHeight, QImage::Format_RGB888);
    cTarget.fill(Qt::black);
    return cTarget;
}

QPen solid(const QColor &cColour, int nWidth)
{
    return {cColour, double(nWidth), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin};
}

void lines(QPainter &c, const QVector<QLine> &lstLines)
{
    c.drawLines(lstLines);
}
} // namespace

/// The lists: where points, lines, polygons, areas and texts are painted, and in which colour.
class TestDrawingLists : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cStore.clean();
        Drawing::resetViewScaleOpt(VIEW);
    }

    void paintsPixelByPixel()
    {
        Drawing::setViewScaleOpt(VIEW, {{3, 3}, {2, 2}}); // towards zero
        m_cStore.getParamPoints(ID)->setPoints({{0, 0}});
        compare(3, "", [](QPainter &c) { c.drawPoint(0, 0); });
        Drawing::setViewScaleOpt(VIEW, {{0x1p26F, 1}, {INT_LOW, 0}}); // overflows, scaled back
        m_cStore.getParamPoints(ID)->setPoints({{INT_HIGH, 0}});
        compare(3, "", [](QPainter &c) { c.drawPoint(64, 0); });

        Drawing::setViewScaleOpt(VIEW, {{0.5F, 0.5F}, {0, 0}}); // every coordinate twice
        m_cStore.getParamPoints(ID)->setPoints({{10, 10}, {0, 99}, {-20, 50}, {101, 50}});
        for (const char *szSize : {"<Size>-3</Size>", ""})
            compare(3, szSize, [](QPainter &c) { c.drawPoint(20, 20); });
        compare(3, "<Size>3</Size>", [](QPainter &c) {
            lines(c, {{17, 20, 23, 20}, {20, 17, 20, 23}, {199, 100, 205, 100}});
        });

        m_cStore.getParamLines(ID)->setLines({{10, 20, 60, 20}, {10, 60, 40, 20}});
        for (const int nSize : {-2, 0, 6})
            compare(4, QStringLiteral("<Size>%1</Size><DspLen>2</DspLen>").arg(nSize), [nSize](QPainter &c) {
                c.setPen(solid(s_cOrange, nSize));
                lines(c, {{20, 40, 120, 40}, {20, 120, 80, 40}});
            });
        compare(4, "<Size>6 px</Size><DspLen>1</DspLen>", [](QPainter &c) {
            c.setPen(solid(s_cOrange, 1));
            c.drawLine(20, 40, 120, 40);
            c.setPen(s_cComplement); // and it stays
            c.drawText(70, 40, QStringLiteral("100.00"));
            c.drawLine(20, 120, 80, 40);
            c.drawText(50, 80, QStringLiteral("100.00"));
        });

        // Two vertices draw nothing; only the border exchanges red and blue.
        m_cStore.getParamPolys(ID)->setPolys({{{{45, 45}, {48, 48}}},
                                              {{{5, 5}, {30, 5}, {30, 20}, {5, 20}}},
                                              {{{35, 65}, {40, 70}, {40, 65}}}});
        for (const bool bArea : {false, true})
            compare(5, bArea ? "<BorderSize>5</BorderSize><DspArea>1</DspArea>" : "", [bArea](QPainter &c) {
                c.setPen(solid(s_cExchanged, bArea ? 5 : 0));
                lines(c, {{10, 10, 60, 10}, {60, 10, 60, 40}, {60, 40, 10, 40}, {10, 40, 10, 10}});
                if (bArea) {
                    c.setPen(s_cComplement); // and it stays
                    c.drawText(35, 25, QStringLiteral("1500.00"));
                    c.drawText(76, 133, QStringLiteral("-50.00"));
                }
                lines(c, {{70, 130, 80, 140}, {80, 140, 80, 130}, {80, 130, 70, 130}});
            });

        m_cStore.getParamAreas(ID)->setName(QStringLiteral("name"));
        m_cStore.getParamAreas(ID)->setAreas(
            {{5, {10, 25, 5, 40}, 20, 17}, {123456, {35, 45, 5, 15}, 0, 74}});
        for (const bool bName : {false, true})
            compare(6, bName ? "<DspArea>1</DspArea>" : "", [bName](QPainter &c) {
                c.drawRect(10, 20, 70, 30);
                c.drawRect(10, 70, 20, 20);
                lines(c, {{37, 34, 43, 34}, {40, 31, 40, 37}, {0, 148, 3, 148}, {0, 145, 0, 149}});
                c.setPen(s_cComplement);
                for (const int nY : {17, 67})
                    c.drawText(13, nY, bName ? QStringLiteral("name") : QString());
            });

        // An empty text leaves its line blank; a zero ends a text.
        m_cStore.getParamStrings(ID)->setStrings(
            {QStringLiteral("MM"), QString(), QStringLiteral("a") + QChar(0) + "M"});
        compare(7, "<FontSize>20</FontSize><Pos>10,5</Pos>", [](QPainter &c) {
            QFont cFont;
            cFont.setPixelSize(20);
            c.setFont(cFont);
            c.drawText(20, 30, QStringLiteral("MM"));
            c.drawText(20, 90, QStringLiteral("a"));
        });
    }

    void hostileNumbers()
    {
        for (const int n : {INT_LOW, INT_LOW / 2, -100'000, 0, 1 << 16, INT_HIGH}) {
            for (const int m : {INT_LOW, 50, INT_HIGH - 1}) {
                m_cStore.getParamPoints(ID)->addPoint({n, m});
                m_cStore.getParamLines(ID)->addLine({n, m, m, n});
                m_cStore.getParamPolys(ID)->addPoly({{{n, m}, {m, n}, {m, m}, {n, n}}});
                m_cStore.getParamAreas(ID)->addArea({n, {n, m, m, n}, m, n});
            }
        }
        m_cStore.getParamAreas(ID)->setName(QStringLiteral("name"));
        m_cStore.getParamStrings(ID)->setStrings({QStringLiteral("text"), QString(5000, QChar(0xD800))});
        QElapsedTimer cTimer;
        cTimer.start();
        for (const float fScale :
             {1.0F, 0.0F, -1.0F, 1e-30F, 1e30F, std::numeric_limits<float>::quiet_NaN()}) {
            for (const int nOffset : {0, INT_LOW, INT_HIGH}) {
                for (const int nSize : {INT_LOW, -1, 1, 1000, INT_HIGH}) {
                    Drawing::setViewScaleOpt(VIEW, {{fScale, fScale}, {nOffset, nOffset}});
                    for (int nType = 3; nType < 8; ++nType) {
                        const QImage cTarget = drawn(
                            nType,
                            QStringLiteral("<Size>%1</Size><BorderSize>%1</BorderSize><FontSize>%1</FontSize>"
                                           "<Pos>%1,%2</Pos><DspLen>1</DspLen><DspArea>1</DspArea>")
                                    .arg(nSize)
                                    .arg(nOffset) +
                                s_strOrange,
                            black(40, 30));
                        if (fScale == 0 || std::isnan(fScale))
                            QCOMPARE(cTarget, black(40, 30));
                    }
                }
            }
        }
        QVERIFY(cTimer.elapsed() < 20'000); // no painting without end
    }

private:
    QImage drawn(int nType, const QString &strSettings, QImage cTarget)
    {
        const std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(
            QStringLiteral("<DataType>%1</DataType><DataID>%2</DataID><Config>%3</Config>")
                .arg(QString::number(nType), QString::number(ID), strSettings),
            &m_cStore));
        pcOpt->setViewID(VIEW);
        pcOpt->draw(&cTarget, &m_cStore);
        return cTarget;
    }
    /// Compares what is drawn in orange with what a painter paints.
    void compare(int nType, const QString &strSettings, const std::function<void(QPainter &)> &fnPaint)
    {
        QImage cExpected = black();
        QPainter cPainter(&cExpected);
        cPainter.setPen(s_cOrange);
        fnPaint(cPainter);
        cPainter.end();
        QVERIFY2(drawn(nType, strSettings + s_strOrange, black()) == cExpected, qPrintable(strSettings));
    }

    ArithmParamMgr m_cStore;
};

QTEST_MAIN(TestDrawingLists)
#include "tst_drawinglists.moc"
