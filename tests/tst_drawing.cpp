#include <QtTest>

#include <memory>
#include <random>
#include <vector>

#include <QImage>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"

using Bytes = std::vector<unsigned char>;

namespace
{
constexpr QRgb BACKGROUND = 0xFF5A6B7C;
constexpr int VIEW = 2;

size_t paddedRow(int nWidth)
{
    return (static_cast<size_t>(nWidth) * 3 + 3) / 4 * 4;
}

QImage target(int nWidth, int nHeight, QImage::Format eFormat = QImage::Format_RGB888)
{
    QImage cTarget(nWidth, nHeight, eFormat);
    cTarget.fill(BACKGROUND);
    return cTarget;
}

/// A picture whose pixel in row r and column c (from 1) is code "rc"; colour(code) tells its colour.
QRgb colour(int nCode)
{
    return qRgb(nCode, 200 - nCode, nCode + 100);
}

Bytes colourPicture(int nWidth, int nHeight)
{
    Bytes achPixels(paddedRow(nWidth) * static_cast<size_t>(nHeight), 0xEE);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            const QRgb nColour = colour(10 * (y + 1) + x + 1);
            unsigned char *puchPixel =
                &achPixels[paddedRow(nWidth) * static_cast<size_t>(y) + 3 * static_cast<size_t>(x)];
            puchPixel[0] = static_cast<unsigned char>(qBlue(nColour));
            puchPixel[1] = static_cast<unsigned char>(qGreen(nColour));
            puchPixel[2] = static_cast<unsigned char>(qRed(nColour));
        }
    }
    return achPixels;
}

Bytes greyPicture(int nWidth, int nHeight)
{
    Bytes achPixels;
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x)
            achPixels.push_back(static_cast<unsigned char>(10 * (y + 1) + x + 1));
    }
    return achPixels;
}

QString describe(const Drawing::ViewScaleOpt &cScale)
{
    return QStringLiteral("%1,%2 %3,%4")
        .arg(double{cScale.m_afScale[0]})
        .arg(double{cScale.m_afScale[1]})
        .arg(cScale.m_anOffset[0])
        .arg(cScale.m_anOffset[1]);
}

/// Compares a target with rows of codes: a pixel's code, ".." for black, "##" for untouched.
template <typename ColourOf>
void compareRows(const QImage &cTarget, const QStringList &lstRows, const ColourOf &fnColourOf)
{
    QCOMPARE(lstRows.size(), cTarget.height());
    for (int y = 0; y < cTarget.height(); ++y) {
        const QStringList lstCodes = lstRows[y].split(QLatin1Char(' '));
        QCOMPARE(lstCodes.size(), cTarget.width());
        for (int x = 0; x < cTarget.width(); ++x) {
            const QRgb nExpected = lstCodes[x] == QLatin1String("..")   ? 0xFF000000
                                   : lstCodes[x] == QLatin1String("##") ? BACKGROUND
                                                                        : fnColourOf(lstCodes[x].toInt());
            QVERIFY2(cTarget.pixel(x, y) == nExpected, qPrintable(QStringLiteral("(%1, %2): %3, not %4")
                                                                      .arg(x)
                                                                      .arg(y)
                                                                      .arg(cTarget.pixel(x, y), 8, 16)
                                                                      .arg(nExpected, 8, 16)));
        }
    }
}
} // namespace

/// The pictures: how they are placed, composed and copied.
class TestDrawing : public QObject
{
    Q_OBJECT

private slots:
    void init() { Drawing::resetViewScaleOpt(VIEW); }
    void placesPictures_data();
    void placesPictures();
    void composesGrey_data();
    void composesGrey();
    void everyWayGivesTheSamePixels();
    void writesRowPaddingAndExchangesItsCopy();
    void badPicturesDrawNothing();
    void readsConfig_data();
    void readsConfig();

private:
    ArithmParamMgr m_cStore;
};

void TestDrawing::placesPictures_data()
{
    QTest::addColumn<int>("nScale");
    QTest::addColumn<int>("nAlign");
    QTest::addColumn<QSize>("cPicture");
    QTest::addColumn<QStringList>("lstRows");
    QTest::addColumn<QString>("strColourRecord");
    QTest::addColumn<QString>("strGreyRecord");
    const auto row = [](const char *szName, int nScale, int nAlign, QSize cPicture,
                        const QStringList &lstRows, const QString &strRecord,
                        const QString &strGrey = QString()) {
        QTest::newRow(szName) << nScale << nAlign << cPicture << lstRows << strRecord
                              << (strGrey.isEmpty() ? strRecord : strGrey);
    };
    row("centre of a larger, odd one", 0, 0, {5, 4}, {"22 23 24", "32 33 34"}, "1,1 1,1");
    row("centre of a smaller one", 0, 0, {2, 2},
        {".. .. .. .. ..", ".. 11 12 .. ..", ".. 21 22 .. ..", ".. .. .. .. .."}, "1,1 -1,-1");
    row("centre, wider but lower", 0, 0, {5, 1}, {".. ..", "12 13", ".. .."}, "1,1 1,-1");
    row("origin of a smaller one", 0, 1, {3, 2}, {"11 12 13 ..", "21 22 23 ..", ".. .. .. .."}, "1,1 0,0");
    row("origin of a larger one, other type", 0, -7, {4, 3}, {"11 12", "21 22"}, "1,1 0,0");
    row("fit width, shrunk, bars", 1, 0, {6, 6}, {".. ..", ".. ..", "22 25", "52 55", ".. ..", ".. .."},
        "3,3 0,-6");
    row("fit width, same width", 1, 1, {3, 5}, {"21 22 23", "31 32 33", "41 42 43"}, "1,1 0,1");
    row("fit height, doubled, sides cut", 2, 0, {4, 2},
        {"12 12 13 13", "12 12 13 13", "22 22 23 23", "22 22 23 23"}, "0.5,0.5 1,0");
    row("fit height, offset truncated towards zero", 2, 0, {1, 3}, {".. 11 ..", ".. 21 ..", ".. 31 .."},
        "1,1 -1,0");
    row("window, doubled", 3, 0, {2, 2}, {"11 11 12 12", "11 11 12 12", "21 21 22 22", "21 21 22 22"},
        "0,0 0,0", "0.5,0.5 0,0");
    row("window, a third", 3, 1, {6, 6}, {"22 25", "52 55"}, "3,3 0,0");
    row("window, same size", 3, 0, {3, 2}, {"11 12 13", "21 22 23"}, "1,1 0,0");
    row("window, less than twice", 3, 0, {3, 1}, {"11 13"}, "1,1 0,0", "1.5,1 0,0");
    row("unknown type clears only", 4, 0, {2, 2}, {".. ..", ".. .."}, "7,8 9,10");
}

void TestDrawing::placesPictures()
{
    QFETCH(int, nScale);
    QFETCH(int, nAlign);
    QFETCH(QSize, cPicture);
    QFETCH(QStringList, lstRows);
    QFETCH(QString, strColourRecord);
    QFETCH(QString, strGreyRecord);
    const int nWidth = lstRows[0].split(QLatin1Char(' ')).size();
    const int nLast = 10 * cPicture.height() + cPicture.width();

    // An RGB888 target may take a way of its own, any other one goes through the painter.
    for (const QImage::Format eFormat : {QImage::Format_RGB888, QImage::Format_RGB32}) {
        Bytes achPixels = colourPicture(cPicture.width(), cPicture.height());
        Drawing::DIBDrawingOpt cColour(1, achPixels.data(), cPicture.width(), cPicture.height());
        cColour.setScaleType(nScale);
        cColour.setAlignType(nAlign);
        cColour.setViewID(VIEW);
        Drawing::setViewScaleOpt(VIEW, {{7, 8}, {9, 10}});
        QImage cTarget = target(nWidth, lstRows.size(), eFormat);
        cColour.draw(&cTarget, &m_cStore);
        compareRows(cTarget, lstRows, colour);
        QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), strColourRecord);

        Bytes achGrey = greyPicture(cPicture.width(), cPicture.height());
        Drawing::Gray8DrawingOpt cGrey(1, achGrey.data(), cPicture.width(), cPicture.height());
        cGrey.setScaleType(nScale);
        cGrey.setAlignType(nAlign);
        cGrey.setViewID(VIEW);
        Drawing::setViewScaleOpt(VIEW, {{7, 8}, {9, 10}});
        cTarget = target(nWidth, lstRows.size(), eFormat);
        cGrey.draw(&cTarget, &m_cStore);
        compareRows(cTarget, lstRows, [nLast](int nCode) {
            return nCode == nLast ? 0xFF000000 : qRgb(nCode, nCode, nCode); // the last one isn't written
        });
        QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), strGreyRecord);
    }
}

void TestDrawing::composesGrey_data()
{
    QTest::addColumn<int>("nMode");
    QTest::addColumn<int>("nLapped");
    QTest::addColumn<QPoint>("cMask"); // value, colour
    QTest::addColumn<QVector<uint>>("lstColours");
    const uint B = BACKGROUND;
    const auto row = [](const char *szName, int nMode, int nLapped, QPoint cMask,
                        const QVector<uint> &lstColours) {
        QTest::newRow(szName) << nMode << nLapped << cMask << lstColours;
    };
    // for the grey values 0, 1, 2, 7, 255
    row("overlay grey", 1, 0, {}, {B, 0xFF010101, 0xFF020202, 0xFF070707, 0xFFFFFFFF});
    row("overlay colours", 1, 1, {}, {B, 0xFFFFFFFF, 0xFF330000, 0xFF331C00, 0xFF9938A8});
    row("mask zeros black", 2, 0, {0, 0}, {0xFF000000, B, B, B, B});
    row("mask zeros white", 2, 9, {0, 1}, {0xFFFFFFFF, B, B, B, B});
    row("mask others red", 2, 0, {1, 2}, {B, 0xFFFF0000, 0xFFFF0000, 0xFFFF0000, 0xFFFF0000});
    row("mask all red", 2, 0, {5, 2}, {0xFFFF0000, 0xFFFF0000, 0xFFFF0000, 0xFFFF0000, 0xFFFF0000});
    row("mask others, no such colour", 2, 0, {1, 3}, {B, B, B, B, B});
    row("no such mode", 3, 0, {1, 2}, {B, B, B, B, B});
}

void TestDrawing::composesGrey()
{
    QFETCH(int, nMode);
    QFETCH(int, nLapped);
    QFETCH(QPoint, cMask);
    QFETCH(QVector<uint>, lstColours);
    unsigned char auchGrey[] = {0, 1, 2, 7, 255};
    for (const int nFactor : {1, 2}) {
        Drawing::Gray8DrawingOpt cOpt(1, auchGrey, 5, 1);
        cOpt.setScaleType(3);
        cOpt.setDrawMode(nMode);
        cOpt.setLapped(nLapped);
        cOpt.setMaskVal(cMask.x());
        cOpt.setMaskColor(cMask.y());
        cOpt.setViewID(VIEW);
        Drawing::setViewScaleOpt(VIEW, {{7, 7}, {7, 7}});
        QImage cTarget = target(5 * nFactor, nFactor);
        cOpt.draw(&cTarget, &m_cStore);
        for (int x = 0; x < cTarget.width(); ++x)
            QCOMPARE(cTarget.pixel(x, nFactor - 1), lstColours[x / nFactor]);
        const float fScale = nMode == 3 ? 7 : 1.0F / static_cast<float>(nFactor);
        QCOMPARE(Drawing::getViewScaleOpt(VIEW).m_afScale[0], fScale);
    }
}

void TestDrawing::everyWayGivesTheSamePixels()
{
    // Row loops differ from the painter in their vectors, chunks and edges: sizes from one pixel up.
    std::mt19937 cRandom(7);
    const auto number = [&cRandom](int nMin, int nMax) {
        return std::uniform_int_distribution(nMin, nMax)(cRandom);
    };
    for (int nRound = 0; nRound < 600; ++nRound) {
        const bool bWide = nRound % 20 == 0;
        const QSize cPicture(number(1, bWide ? 700 : 40), number(1, 5));
        const QSize cView = number(0, 2) == 0 ? cPicture : QSize(number(1, bWide ? 700 : 40), number(1, 5));
        Bytes achPixels(paddedRow(cPicture.width()) * static_cast<size_t>(cPicture.height()));
        for (unsigned char &nByte : achPixels)
            nByte = static_cast<unsigned char>(number(0, 3) == 0 ? 0 : number(1, 255));
        const int nScale = number(0, 3);
        const int nAlign = number(0, 1);
        const int nMode = number(-1, 2); // -1 is the colour picture
        const int nLapped = number(0, 1);
        const QPoint cMask(number(0, 2), number(0, 3));
        const auto draw = [&](QImage::Format eFormat) {
            QImage cTarget = target(cView.width(), cView.height(), eFormat);
            const auto place = [&](auto &cOpt) {
                cOpt.setScaleType(nScale);
                cOpt.setAlignType(nAlign);
            };
            if (nMode < 0) {
                Drawing::DIBDrawingOpt cOpt(1, achPixels.data(), cPicture.width(), cPicture.height());
                place(cOpt);
                cOpt.draw(&cTarget, &m_cStore);
                return cTarget;
            }
            Drawing::Gray8DrawingOpt cOpt(1, achPixels.data(), cPicture.width(), cPicture.height());
            place(cOpt);
            cOpt.setDrawMode(nMode);
            cOpt.setLapped(nLapped);
            cOpt.setMaskVal(cMask.x());
            cOpt.setMaskColor(cMask.y());
            cOpt.draw(&cTarget, &m_cStore);
            return cTarget;
        };
        const QImage cRows = draw(QImage::Format_RGB888).convertToFormat(QImage::Format_RGB32);
        QVERIFY2(cRows == draw(QImage::Format_RGB32),
                 qPrintable(QStringLiteral("round %1: %2x%3 in %4x%5, scale %6, mode %7")
                                .arg(nRound)
                                .arg(cPicture.width())
                                .arg(cPicture.height())
                                .arg(cView.width())
                                .arg(cView.height())
                                .arg(nScale)
                                .arg(nMode)));
    }
}

void TestDrawing::writesRowPaddingAndExchangesItsCopy()
{
    for (const bool bFitting : {true, false}) {
        Bytes achPixels = colourPicture(3, 2);
        Drawing::DIBDrawingOpt cOpt(1, achPixels.data(), 3, 2);
        cOpt.setScaleType(bFitting ? 3 : 4);
        Bytes achView(24, 0xAB);
        QImage cTarget(achView.data(), 3, 2, 12, QImage::Format_RGB888);
        cOpt.draw(&cTarget, &m_cStore);
        QCOMPARE(Bytes(achView.begin() + 9, achView.begin() + 12), Bytes(3, 0));
        QCOMPARE(Bytes(achView.begin() + 21, achView.end()), Bytes(3, 0));
        QCOMPARE(achPixels, colourPicture(3, 2)); // the store's own pixels stay
        for (size_t i : {0, 3, 6, 12, 15, 18})
            std::swap(achPixels[i], achPixels[i + 2]);
        QCOMPARE(Bytes(cOpt.m_puchData, cOpt.m_puchData + 24), achPixels);
    }
}

void TestDrawing::badPicturesDrawNothing()
{
    constexpr int MAX = std::numeric_limits<int>::max();
    unsigned char auchPixels[16] = {};
    const struct {
        unsigned char *m_puchPixels;
        int m_nWidth;
        int m_nHeight;
    } acBad[] = {{nullptr, 2, 2},     {auchPixels, 0, 2},     {auchPixels, 2, 0},     {auchPixels, -1, -1},
                 {auchPixels, -3, 2}, {auchPixels, MAX, MAX}, {auchPixels, MAX, -MAX}};
    QImage cTarget = target(4, 4);
    const QImage cBefore = cTarget;
    for (const auto &cBad : acBad) {
        Drawing::DIBDrawingOpt cColour(1, cBad.m_puchPixels, cBad.m_nWidth, cBad.m_nHeight);
        cColour.draw(&cTarget, &m_cStore);
        if (cBad.m_nWidth == MAX && cBad.m_nHeight == MAX)
            continue; // only three bytes a pixel overflow; less is a matter of memory
        Drawing::Gray8DrawingOpt cGrey(1, cBad.m_puchPixels, cBad.m_nWidth, cBad.m_nHeight);
        cGrey.draw(&cTarget, &m_cStore);
        Drawing::Gray16DrawingOpt(1, cBad.m_puchPixels, cBad.m_nWidth, cBad.m_nHeight)
            .draw(&cTarget, &m_cStore);
    }
    Drawing::DIBDrawingOpt cGood(1, auchPixels, 2, 2);
    cGood.draw(&cTarget, nullptr);
    cGood.draw(nullptr, &m_cStore);
    QImage cNone;
    cGood.draw(&cNone, &m_cStore);
    Drawing::Gray16DrawingOpt(1, auchPixels, 2, 2).draw(&cTarget, &m_cStore); // draws nothing, ever
    QCOMPARE(cTarget, cBefore);
    cGood.setViewID(77); // no such view: painted, recorded nowhere
    cGood.draw(&cTarget, &m_cStore);
    QVERIFY(cTarget != cBefore);

    // Numbers that overflow: a single column, as wide as a float can't tell from its neighbours.
    constexpr int LONG = 40'000'000;
    Bytes achLong(LONG, 9);
    Drawing::Gray8DrawingOpt cLong(1, achLong.data(), LONG, 1);
    cLong.setScaleType(1);
    QImage cColumn = target(1, 10000);
    cLong.setDrawMode(2);
    Drawing::setViewScaleOpt(0, {{7, 8}, {9, 10}});
    cLong.draw(&cColumn, &m_cStore);
    QCOMPARE(cColumn, target(1, 10000));
    QCOMPARE(describe(Drawing::getViewScaleOpt(0)), QStringLiteral("7,8 9,10"));
}

namespace
{
QString describe(const Drawing::DrawingOpt *pcOpt)
{
    if (!pcOpt)
        return QStringLiteral("none");
    const QString strBase = QStringLiteral("view %1 type %2 id %3:")
                                .arg(pcOpt->getViewID())
                                .arg(pcOpt->getDataType())
                                .arg(pcOpt->getDataID());
    const auto text = [&strBase](std::initializer_list<int> lstFields) {
        QString strText = strBase;
        for (const int nField : lstFields)
            strText += QLatin1Char(' ') + QString::number(nField);
        return strText;
    };
    const auto grey = [&text](const auto *p) {
        return text({p->getScaleType(), p->getAlignType(), p->getDrawMode(), p->getLapped(), p->getMaskVal(),
                     p->getMaskColor(), p->m_nWidth, p->m_nHeight});
    };
    if (auto *p = dynamic_cast<const Drawing::DIBDrawingOpt *>(pcOpt))
        return text({p->getScaleType(), p->getAlignType(), p->m_nWidth, p->m_nHeight});
    if (auto *p = dynamic_cast<const Drawing::Gray8DrawingOpt *>(pcOpt))
        return grey(p);
    if (auto *p = dynamic_cast<const Drawing::Gray16DrawingOpt *>(pcOpt))
        return grey(p);
    if (auto *p = dynamic_cast<const Drawing::PointsDrawingOpt *>(pcOpt))
        return text({p->getSize(), p->getColor()});
    if (auto *p = dynamic_cast<const Drawing::LinesDrawingOpt *>(pcOpt))
        return text({p->getSize(), p->getColor(), p->getDisplayLength()});
    if (auto *p = dynamic_cast<const Drawing::PolysDrawingOpt *>(pcOpt))
        return text({p->getBorderSize(), p->getBorderColor(), p->getDisplayArea()});
    if (auto *p = dynamic_cast<const Drawing::AreasDrawingOpt *>(pcOpt))
        return text({p->getColor(), p->getDisplayArea()});
    const auto *p = dynamic_cast<const Drawing::StringsDrawingOpt *>(pcOpt);
    int nX = 0;
    int nY = 0;
    p->getPos(nX, nY);
    return text({p->getColor(), nX, nY, p->getFontSize()});
}
} // namespace

void TestDrawing::readsConfig_data()
{
    QTest::addColumn<QString>("strConfig");
    QTest::addColumn<QString>("strObject");
    const auto row = [](const char *szName, const QString &strType, const QString &strSettings,
                        const QString &strObject) {
        QTest::newRow(szName) << QStringLiteral("<View>1</View><DataType>%1</DataType><DataID>5</DataID>"
                                                "<Config>%2</Config>")
                                     .arg(strType, strSettings)
                              << strObject;
    };
    QTest::newRow("empty") << ""
                           << "none";
    QTest::newRow("no type") << "<View>1</View><DataID>5</DataID>"
                             << "none";
    QTest::newRow("type no number") << "<DataType>x</DataType><DataID>5</DataID>"
                                    << "none";
    QTest::newRow("no ID") << "<DataType>3</DataType><DataID>5x</DataID>"
                           << "none";
    QTest::newRow("no view, no settings") << "<DataType>3</DataType><DataID>5</DataID>"
                                          << "view 0 type 3 id 5: 0 0";
    QTest::newRow("strings without settings") << "<View>y</View><DataType>7</DataType><DataID>5</DataID>"
                                              << "view 0 type 7 id 5: 0 0 0 12";
    row("unknown type", "9", "<Size>1</Size>", "none");
    row("negative type", "-1", "", "none");
    row("colour", "0", "<Scale>3</Scale><Pos>1</Pos>", "view 1 type 0 id 5: 3 1 3 2");
    row("grey", "1",
        "<Scale>2</Scale><Pos>1</Pos><DrawMode><Lapped>1</Lapped><Mask>1,2</Mask><Val>2</Val></DrawMode>",
        "view 1 type 1 id 5: 2 1 2 1 1 2 3 2");
    row("16 bit, mask value alone, mode outside", "2", "<DrawMode><Mask>1</Mask></DrawMode><Val>2</Val>",
        "view 1 type 2 id 5: 0 0 0 0 1 0 3 2");
    row("mask colour alone", "1", "<DrawMode><Mask>,2,9</Mask></DrawMode>",
        "view 1 type 1 id 5: 0 0 0 0 0 2 3 2");
    row("points", "3", "<Size>4</Size><Color>-65536</Color>", "view 1 type 3 id 5: 4 -65536");
    row("lines, malformed size", "4", "<Size>2 px</Size><DspLen>2</DspLen>", "view 1 type 4 id 5: 1 0 0");
    row("lines", "4", "<Size>2</Size><DspLen>1</DspLen><Color>255</Color>", "view 1 type 4 id 5: 2 255 1");
    row("polygons", "5", "<BorderSize>2</BorderSize><BorderColor>7</BorderColor><DspArea>1</DspArea>",
        "view 1 type 5 id 5: 2 7 1");
    row("areas", "6", "<DspArea>1</DspArea><Color>8</Color>", "view 1 type 6 id 5: 8 1");
    row("strings", "7", "<Color>9</Color><Pos>10,-20</Pos><FontSize>30</FontSize>",
        "view 1 type 7 id 5: 9 10 -20 30");
    row("strings, no font size", "7", "<Pos>x,3</Pos>", "view 1 type 7 id 5: 0 0 3 0");
    row("strings, one coordinate", "7", "<Pos>3</Pos><FontSize>z</FontSize>", "view 1 type 7 id 5: 0 0 0 0");
    QTest::newRow("any letter case") << "<view>2</VIEW><datatype>3</DataType><DataID> +6 </dataid>"
                                     << "view 2 type 3 id 6: 0 0";
}

void TestDrawing::readsConfig()
{
    QFETCH(QString, strConfig);
    QFETCH(QString, strObject);
    m_cStore.getParamDIB(5)->resize(3, 2);
    m_cStore.getParamGray8(5)->resize(3, 2);
    m_cStore.getParamGray16(5)->resize(3, 2);
    const std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(strConfig, &m_cStore));
    QCOMPARE(describe(pcOpt.get()), strObject);
    const std::unique_ptr<Drawing::DrawingOpt> pcNoStore(Drawing::parseConfigString(strConfig, nullptr));
    QVERIFY(!pcNoStore);
}

QTEST_GUILESS_MAIN(TestDrawing)
#include "tst_drawing.moc"
