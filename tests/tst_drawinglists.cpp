#include <QtTest>

#include <cstring>
#include <limits>
#include <memory>

#include <QGuiApplication>
#include <QImage>
#include <QProcess>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"

namespace
{
constexpr int ID = 4;
constexpr int VIEW = 1;
constexpr int INT_LOW = std::numeric_limits<int>::min();
constexpr int INT_HIGH = std::numeric_limits<int>::max();
constexpr QRgb BLACK = 0xFF000000;
constexpr QRgb RED = 0xFFFF0000;
constexpr QRgb BLUE = 0xFF0000FF;
constexpr QRgb ORANGE = 0xFFFF8000;
constexpr QRgb ORANGE_COMPLEMENT = 0xFF007FFF;

/// Colours of objects carry an alpha that must not matter.
int objectColour(QRgb nColour)
{
    return static_cast<int>(nColour & 0x12FFFFFF);
}

QImage black(int nWidth = 100, int nHeight = 100)
{
    QImage cTarget(nWidth, nHeight, QImage::Format_RGB888);
    cTarget.fill(BLACK);
    return cTarget;
}

int count(const QImage &cTarget, QRgb nColour, QRect cWithin = {})
{
    int nCount = 0;
    const QRect cRect = cWithin.isNull() ? cTarget.rect() : cWithin & cTarget.rect();
    for (int y = cRect.top(); y <= cRect.bottom(); ++y) {
        for (int x = cRect.left(); x <= cRect.right(); ++x)
            nCount += cTarget.pixel(x, y) == nColour;
    }
    return nCount;
}

int painted(const QImage &cTarget)
{
    return cTarget.width() * cTarget.height() - count(cTarget, BLACK);
}

/// The smallest rectangle that holds all pixels of one colour.
QRect bounds(const QImage &cTarget, QRgb nColour)
{
    QRect cBounds;
    for (int y = 0; y < cTarget.height(); ++y) {
        for (int x = 0; x < cTarget.width(); ++x) {
            if (cTarget.pixel(x, y) == nColour)
                cBounds |= QRect(x, y, 1, 1);
        }
    }
    return cBounds;
}

ParamPolys::Poly poly(std::initializer_list<ParamPolys::Point> lstVerts)
{
    return {lstVerts};
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
    void mapsCoordinates_data();
    void mapsCoordinates();
    void drawsPoints();
    void drawsLines();
    void drawsPolygons();
    void computesAreas();
    void drawsAreas();
    void drawsStrings();
    void hostileNumbers();
    void emptyListsAndMissingOnes();
    void textsNeedAGuiApplication();

private:
    template <typename Opt>
    QImage drawn(Opt &cOpt, QImage cTarget = black())
    {
        cOpt.setViewID(VIEW);
        cOpt.draw(&cTarget, &m_cStore);
        return cTarget;
    }

    ArithmParamMgr m_cStore;
};

void TestDrawingLists::mapsCoordinates_data()
{
    QTest::addColumn<float>("fScaleX");
    QTest::addColumn<float>("fScaleY");
    QTest::addColumn<QPoint>("cOffset");
    QTest::addColumn<QPoint>("cPoint");
    QTest::addColumn<QPoint>("cPixel"); // (-1, -1): none
    QTest::newRow("identity") << 1.0F << 1.0F << QPoint(0, 0) << QPoint(99, 0) << QPoint(99, 0);
    QTest::newRow("offset") << 1.0F << 1.0F << QPoint(160, 120) << QPoint(160, 120) << QPoint(0, 0);
    QTest::newRow("scale") << 2.0F << 0.5F << QPoint(0, 0) << QPoint(7, 7) << QPoint(3, 14);
    QTest::newRow("towards zero") << 3.0F << 3.0F << QPoint(2, 2) << QPoint(0, 0) << QPoint(0, 0);
    QTest::newRow("outside") << 1.0F << 1.0F << QPoint(0, 0) << QPoint(100, 5) << QPoint(-1, -1);
    QTest::newRow("scale 0") << 0.0F << 1.0F << QPoint(0, 0) << QPoint(5, 5) << QPoint(-1, -1);
    QTest::newRow("scale 0, 0 by 0") << 1.0F << 0.0F << QPoint(0, 0) << QPoint(0, 0) << QPoint(-1, -1);
    QTest::newRow("difference overflows")
        << 1.0F << 1.0F << QPoint(INT_HIGH, 0) << QPoint(INT_LOW, 0) << QPoint(-1, -1);
    QTest::newRow("difference overflows, scaled back")
        << 0x1p26F << 1.0F << QPoint(INT_LOW, 0) << QPoint(INT_HIGH, 0) << QPoint(64, 0);
}

void TestDrawingLists::mapsCoordinates()
{
    QFETCH(float, fScaleX);
    QFETCH(float, fScaleY);
    QFETCH(QPoint, cOffset);
    QFETCH(QPoint, cPoint);
    QFETCH(QPoint, cPixel);
    Drawing::setViewScaleOpt(VIEW, {{fScaleX, fScaleY}, {cOffset.x(), cOffset.y()}});
    m_cStore.getParamPoints(ID)->addPoint({cPoint.x(), cPoint.y()});
    Drawing::PointsDrawingOpt cOpt(ID);
    cOpt.setColor(objectColour(RED));
    const QImage cTarget = drawn(cOpt);
    QCOMPARE(painted(cTarget), cPixel.x() < 0 ? 0 : 1);
    if (cPixel.x() >= 0)
        QCOMPARE(cTarget.pixel(cPixel), RED);
}

void TestDrawingLists::drawsPoints()
{
    m_cStore.getParamPoints(ID)->setPoints({{10, 10}, {0, 99}, {-20, 50}, {104, 50}});
    Drawing::PointsDrawingOpt cOpt(ID);
    cOpt.setColor(objectColour(ORANGE));
    QCOMPARE(count(drawn(cOpt), ORANGE), 2);
    cOpt.setSize(-3);
    QCOMPARE(painted(drawn(cOpt)), 2);
    cOpt.setSize(3);
    QImage cTarget = drawn(cOpt);
    QCOMPARE(count(cTarget, ORANGE, {7, 7, 7, 7}), 13);
    QCOMPARE(count(cTarget, ORANGE, {0, 96, 4, 4}), 7); // arms to the right and up
    QCOMPARE(painted(cTarget), 20);                     // the fourth's arm ends at 101
    cOpt.setSize(5);
    QCOMPARE(count(drawn(cOpt), ORANGE, {99, 50, 1, 1}), 1);
    cOpt.setSize(INT_HIGH);
    cTarget = drawn(cOpt);
    QCOMPARE(count(cTarget, ORANGE, {0, 10, 100, 1}), 100);
    QCOMPARE(painted(cTarget), 3 * 100 + 2 * 100 - 2 * 3);
}

void TestDrawingLists::drawsLines()
{
    m_cStore.getParamLines(ID)->setLines({{10, 20, 60, 20}, {10, 50, 60, 50}});
    Drawing::LinesDrawingOpt cOpt(ID);
    cOpt.setColor(objectColour(ORANGE));
    QCOMPARE(count(drawn(cOpt), ORANGE), 2 * 51);
    cOpt.setSize(0);
    QCOMPARE(count(drawn(cOpt), ORANGE), 2 * 51);
    cOpt.setSize(-2);
    QCOMPARE(painted(drawn(cOpt)), 0); // as the painter has it
    cOpt.setSize(6);
    QImage cTarget = drawn(cOpt);
    QCOMPARE(cTarget.copy(0, 10, 100, 20), cTarget.copy(0, 40, 100, 20));
    QCOMPARE(bounds(cTarget, ORANGE).width(), 50 + 6); // square caps
    QCOMPARE(count(cTarget, ORANGE, {30, 0, 1, 35}), 6);

    // The length stands in the complement, and the pen stays thin and of that colour.
    cOpt.setDisplayLength(true);
    cTarget = drawn(cOpt);
    QCOMPARE(count(cTarget, ORANGE, {0, 35, 100, 65}), 0);
    QCOMPARE(count(cTarget, ORANGE_COMPLEMENT, {0, 50, 100, 1}), 51);
    QCOMPARE(count(cTarget, ORANGE_COMPLEMENT, {0, 51, 100, 49}), 0);
    QVERIFY(count(cTarget, ORANGE_COMPLEMENT, {35, 8, 45, 9}) > 10);
    // It is measured in view pixels: twice "50.00" is the wider "100.00".
    const int nShort = bounds(drawn(cOpt).copy(0, 8, 100, 9), ORANGE_COMPLEMENT).width();
    Drawing::setViewScaleOpt(VIEW, {{0.5F, 1}, {0, 0}});
    QVERIFY(bounds(drawn(cOpt, black(400, 100)).copy(0, 8, 400, 9), ORANGE_COMPLEMENT).width() > nShort);
}

void TestDrawingLists::drawsPolygons()
{
    m_cStore.getParamPolys(ID)->setPolys({poly({{90, 90}, {95, 95}}),
                                          poly({{10, 10}, {60, 10}, {60, 40}, {10, 40}}),
                                          poly({{70, 70}, {80, 70}, {80, 80}})});
    Drawing::PolysDrawingOpt cOpt(ID);
    cOpt.setBorderColor(objectColour(RED));
    QImage cTarget = drawn(cOpt);
    QCOMPARE(count(cTarget, BLUE), painted(cTarget)); // red and blue exchanged
    QCOMPARE(count(cTarget, BLUE, {0, 0, 65, 65}), 2 * 51 + 2 * 29);
    QCOMPARE(bounds(cTarget, BLUE), QRect(QPoint(10, 10), QPoint(80, 80))); // two vertices draw nothing
    cOpt.setBorderSize(4);
    QCOMPARE(count(drawn(cOpt), BLUE, {30, 0, 1, 30}), 4);

    cOpt.setBorderSize(0);
    cOpt.setDisplayArea(true);
    cTarget = drawn(cOpt);
    const QRgb nComplement = 0xFF00FFFF; // of the colour as stored
    QCOMPARE(count(cTarget, BLUE, {0, 0, 100, 12}), 51 + 2);
    QVERIFY(count(cTarget, nComplement, {35, 14, 24, 13}) > 10); // "1500.00" on (35, 25)
    QCOMPARE(count(cTarget, nComplement, {70, 70, 11, 1}), 11);  // the next border
    QCOMPARE(count(cTarget, nComplement, QRect(QPoint(0, 26), QPoint(34, 99))), 0);
}

void TestDrawingLists::computesAreas()
{
    Drawing::PolysDrawingOpt cOpt(ID);
    float afSquare[] = {0, 0, 10, 0, 10, 10, 0, 10};
    QVERIFY(qAbs(cOpt.getPolyArea2D(afSquare, 4) - 100) < 1e-3F);
    QCOMPARE(cOpt.getPolyArea2D(afSquare, 2), 0.0F);
    float afTurned[] = {0, 10, 10, 10, 10, 0, 0, 0};
    QVERIFY(qAbs(cOpt.getPolyArea2D(afTurned, 4) + 100) < 1e-3F);
    // Not the area but its square for a nearly flat one: 4e-6, whose root is 2e-3.
    float afFlat[] = {0, 0, 2, 0, 1, 0.002F};
    QVERIFY(cOpt.getPolyArea2D(afFlat, 3) < 1e-4F);
}

void TestDrawingLists::drawsAreas()
{
    ParamAreas *pcAreas = m_cStore.getParamAreas(ID);
    pcAreas->setName(QStringLiteral("88888888"));
    pcAreas->setAreas({{5, {20, 50, 10, 80}, 40, 35}, {123456, {70, 90, 10, 30}, 99, 99}});
    Drawing::AreasDrawingOpt cOpt(ID);
    cOpt.setColor(objectColour(ORANGE));
    QImage cTarget = drawn(cOpt);
    QCOMPARE(count(cTarget, ORANGE, {0, 0, 95, 60}), 2 * 71 + 2 * 29 + 13);
    QCOMPARE(count(cTarget, ORANGE, {37, 32, 7, 7}), 13);
    QCOMPARE(count(cTarget, ORANGE, {0, 60, 95, 35}), 2 * 21 + 2 * 19);
    QCOMPARE(count(cTarget, ORANGE, {95, 95, 5, 5}), 4 + 3); // a seed in the corner
    QCOMPARE(painted(cTarget), count(cTarget, ORANGE));

    cOpt.setDisplayArea(true);
    cTarget = drawn(cOpt);
    QVERIFY(count(cTarget, ORANGE_COMPLEMENT, {13, 5, 80, 14}) > 20);  // above the first one's corner,
    QVERIFY(count(cTarget, ORANGE_COMPLEMENT, {13, 55, 80, 13}) > 20); // and again above the second's
    QCOMPARE(cTarget.copy(10, 70, 21, 21), drawn(cOpt).copy(10, 70, 21, 21));
    QCOMPARE(count(cTarget, ORANGE, {10, 70, 21, 1}), 21); // in its own colour still
}

void TestDrawingLists::drawsStrings()
{
    ParamStrings *pcStrings = m_cStore.getParamStrings(ID);
    pcStrings->setStrings({QStringLiteral("MM"), QString(), QStringLiteral("MM"),
                           QString(3000, QLatin1Char('i')),
                           QStringLiteral("a") + QChar(0) + QStringLiteral("MMMM")});
    Drawing::StringsDrawingOpt cOpt(ID);
    cOpt.setColor(objectColour(ORANGE));
    cOpt.setPos(10, 5);
    cOpt.setFontSize(20);
    Drawing::setViewScaleOpt(VIEW, {{0.5F, 0.5F}, {0, 0}});
    const QImage cTarget = drawn(cOpt, black(300, 200));
    // Baselines at 30, 60 (blank), 90, 120, 150; capital letters stand some 0.7 of 20 high.
    const auto line = [](int nBaseline) { return QRect(0, nBaseline - 16, 300, 20); };
    QCOMPARE(bounds(cTarget.copy(line(30)), ORANGE).bottom(), 15);
    QVERIFY(bounds(cTarget.copy(line(30)), ORANGE).left() >= 20);
    QCOMPARE(painted(cTarget.copy(line(60))), 0);
    QCOMPARE(cTarget.copy(line(90)), cTarget.copy(line(30)));
    QVERIFY(count(cTarget, ORANGE, {280, 104, 20, 20}) > 0);
    QVERIFY(bounds(cTarget.copy(line(150)), ORANGE).right() < 40); // up to the zero

    cOpt.setFontSize(3);
    pcStrings->setStrings({QStringLiteral("M"), QStringLiteral("M")});
    Drawing::resetViewScaleOpt(VIEW);
    const QImage cSmall = drawn(cOpt);
    QCOMPARE(cOpt.getFontSize(), 5);
    QVERIFY(painted(cSmall.copy(0, 5, 100, 6)) > 0);  // baseline 10
    QVERIFY(painted(cSmall.copy(0, 20, 100, 6)) > 0); // baseline 25
    QCOMPARE(painted(cSmall.copy(0, 12, 100, 8)), 0);

    // 1023 bytes, no more: what a longer one adds is not painted.
    pcStrings->setStrings({QString(1021, QLatin1Char(' ')) + QStringLiteral("MM")});
    cOpt.setFontSize(12);
    const QImage cWhole = drawn(cOpt, black(9000, 30));
    pcStrings->setStrings({QString(1021, QLatin1Char(' ')) + QStringLiteral("MMMM")});
    QVERIFY(painted(cWhole) > 0);
    QCOMPARE(drawn(cOpt, black(9000, 30)), cWhole);
}

void TestDrawingLists::hostileNumbers()
{
    for (const int n : {INT_LOW, INT_LOW / 2, -100'000, 0, 1 << 16, INT_HIGH}) {
        for (const int m : {INT_LOW, 50, INT_HIGH - 1}) {
            m_cStore.getParamPoints(ID)->addPoint({n, m});
            m_cStore.getParamLines(ID)->addLine({n, m, m, n});
            m_cStore.getParamPolys(ID)->addPoly(poly({{n, m}, {m, n}, {m, m}, {n, n}}));
            m_cStore.getParamAreas(ID)->addArea({n, {n, m, m, n}, m, n});
        }
    }
    m_cStore.getParamAreas(ID)->setName(QStringLiteral("name"));
    m_cStore.getParamStrings(ID)->setStrings({QStringLiteral("text"), QString(5000, QChar(0xD800))});
    QElapsedTimer cTimer;
    cTimer.start();
    for (const float fScale : {1.0F, 0.0F, -1.0F, 1e-30F, 1e30F, std::numeric_limits<float>::quiet_NaN()}) {
        for (const int nOffset : {0, INT_LOW, INT_HIGH}) {
            for (const int nSize : {INT_LOW, -1, 1, 1000, INT_HIGH}) {
                Drawing::setViewScaleOpt(VIEW, {{fScale, fScale}, {nOffset, nOffset}});
                for (int nType = 3; nType < 8; ++nType) {
                    const std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(
                        QStringLiteral("<DataType>%1</DataType><DataID>%2</DataID><Config><Size>%3</Size>"
                                       "<BorderSize>%3</BorderSize><FontSize>%3</FontSize><Pos>%3,%4</Pos>"
                                       "<Color>255</Color><BorderColor>255</BorderColor><DspLen>1</DspLen>"
                                       "<DspArea>1</DspArea></Config>")
                            .arg(nType)
                            .arg(ID)
                            .arg(nSize)
                            .arg(nOffset),
                        &m_cStore));
                    const int nPainted = painted(drawn(*pcOpt, black(40, 30)));
                    if (fScale == 0 || std::isnan(fScale))
                        QCOMPARE(nPainted, 0);
                }
            }
        }
    }
    QVERIFY(cTimer.elapsed() < 20'000); // no painting without end
}

void TestDrawingLists::emptyListsAndMissingOnes()
{
    m_cStore.getParamStrings(ID);
    Drawing::PointsDrawingOpt cPoints(ID);
    Drawing::StringsDrawingOpt cStrings(ID);
    cStrings.setFontSize(1);
    QCOMPARE(painted(drawn(cPoints)), 0);
    QCOMPARE(painted(drawn(cStrings)), 0);
    QCOMPARE(cStrings.getFontSize(), 1); // nothing drawn, nothing raised
    m_cStore.getParamPoints(ID)->addPoint({1, 1});
    cPoints.draw(nullptr, &m_cStore);
    QImage cTarget = black();
    cPoints.draw(&cTarget, nullptr);
    QImage cNone;
    cPoints.draw(&cNone, &m_cStore);
    QCOMPARE(painted(cTarget), 0);
}

namespace
{
/// Draws a line with its length, then a text, in a process without a GUI application. Prints how
/// many pixels are painted.
int drawWithoutGui(int &argc, char **argv)
{
    const QCoreApplication cApp(argc, argv);
    ArithmParamMgr cStore;
    cStore.getParamLines(ID)->addLine({10, 10, 59, 10});
    cStore.getParamStrings(ID)->addString(QStringLiteral("text"));
    QImage cTarget = black();
    Drawing::LinesDrawingOpt cLines(ID);
    cLines.setColor(objectColour(RED));
    cLines.setDisplayLength(true);
    cLines.draw(&cTarget, &cStore);
    Drawing::StringsDrawingOpt cStrings(ID);
    cStrings.setColor(objectColour(RED));
    cStrings.draw(&cTarget, &cStore);
    printf("%d\n", painted(cTarget));
    return 0;
}
} // namespace

void TestDrawingLists::textsNeedAGuiApplication()
{
    QProcess cProcess;
    cProcess.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--without-gui")});
    QVERIFY(cProcess.waitForFinished());
    QCOMPARE(cProcess.exitStatus(), QProcess::NormalExit);
    QCOMPARE(cProcess.readAllStandardOutput(), QByteArray("50\n")); // the line alone
    const QByteArray achLog = cProcess.readAllStandardError();
    QCOMPARE(achLog.count("QGuiApplication"), 1); // said once
}

int main(int argc, char **argv)
{
    if (argc == 2 && strcmp(argv[1], "--without-gui") == 0)
        return drawWithoutGui(argc, argv);
    const QGuiApplication cApp(argc, argv);
    TestDrawingLists cTest;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&cTest, argc, argv);
}

#include "tst_drawinglists.moc"
