#include <QtTest>

#include <memory>
#include <random>

#include <QImage>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"

namespace
{
constexpr QRgb BACKGROUND = 0xFF5A6B7C;
constexpr QRgb BLACK = 0xFF000000;
constexpr int VIEW = 2;

QImage target(QSize cSize, QImage::Format eFormat)
{
    QImage cTarget(cSize, eFormat);
    cTarget.fill(BACKGROUND);
    return cTarget;
}

QString describe(const Drawing::ViewScaleOpt &cScale)
{
    return QString::asprintf("%g,%g %d,%d", double{cScale.m_afScale[0]}, double{cScale.m_afScale[1]},
                             cScale.m_anOffset[0], cScale.m_anOffset[1]);
}
} // namespace

/// The pictures and the config strings: how pictures are placed, composed and copied.
class TestDrawing : public QObject
{
    Q_OBJECT

private slots:
    void placesPictures_data();
    void placesPictures();
    void composesGrey_data();
    void composesGrey();
    void everyWayGivesTheSamePixels();
    void translucentTableLetsTheTargetShine();
    void writesRowPaddingAndExchangesItsCopy();
    void badPicturesDrawNothing();
    void readsConfig_data();
    void readsConfig();

private:
    /// Draws the store's picture 1 into a new target.
    QImage drawn(int nType, const QString &strSettings, QSize cView, QImage::Format eFormat)
    {
        const std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(
            QStringLiteral("<View>%1</View><DataType>%2</DataType><DataID>1</DataID><Config>%3</Config>")
                .arg(VIEW)
                .arg(nType)
                .arg(strSettings),
            &m_cStore));
        QImage cTarget = target(cView, eFormat);
        Drawing::setViewScaleOpt(VIEW, {{7, 8}, {9, 10}});
        pcOpt->draw(&cTarget, &m_cStore);
        return cTarget;
    }

    ArithmParamMgr m_cStore;
};

void TestDrawing::placesPictures_data()
{
    QTest::addColumn<int>("nScale");
    QTest::addColumn<int>("nAlign");
    QTest::addColumn<QSize>("cPicture");
    QTest::addColumn<QStringList>("lstRows"); // codes of pixels: row and column from 1, ".." is black
    QTest::addColumn<QString>("strColourRecord");
    QTest::addColumn<QString>("strGreyRecord");
    const auto row = [](const char *szName, int nScale, int nAlign, QSize cPicture,
                        const QStringList &lstRows, const char *szRecord, const char *szGrey = nullptr) {
        QTest::newRow(szName) << nScale << nAlign << cPicture << lstRows << QString(szRecord)
                              << QString(szGrey ? szGrey : szRecord);
    };
    row("centre of a larger, odd one", 0, 0, {5, 4}, {"22 23 24", "32 33 34"}, "1,1 1,1");
    row("centre of a smaller one", 0, 0, {2, 2},
        {".. .. .. .. ..", ".. 11 12 .. ..", ".. 21 22 .. ..", ".. .. .. .. .."}, "1,1 -1,-1");
    row("centre, wider but lower", 0, 0, {5, 1}, {".. ..", "12 13", ".. .."}, "1,1 1,-1");
    row("origin, other type", 0, -7, {3, 4}, {"11 12 13 ..", "21 22 23 .."}, "1,1 0,0");
    row("fit width, shrunk, bars", 1, 0, {6, 6}, {".. ..", ".. ..", "22 25", "52 55", ".. ..", ".. .."},
        "3,3 0,-6");
    row("fit width, same width", 1, 1, {3, 5}, {"21 22 23", "31 32 33", "41 42 43"}, "1,1 0,1");
    row("fit height, doubled, sides cut", 2, 0, {4, 2},
        {"12 12 13 13", "12 12 13 13", "22 22 23 23", "22 22 23 23"}, "0.5,0.5 1,0");
    row("fit height, bars", 2, 0, {1, 3}, {".. 11 ..", ".. 21 ..", ".. 31 .."}, "1,1 -1,0");
    row("window, doubled", 3, 0, {2, 2}, {"11 11 12 12", "11 11 12 12", "21 21 22 22", "21 21 22 22"},
        "0,0 0,0", "0.5,0.5 0,0");
    row("window, a third", 3, 1, {6, 6}, {"22 25", "52 55"}, "3,3 0,0");
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
    ParamDIB *pcDIB = m_cStore.getParamDIB(1);
    pcDIB->resize(cPicture.width(), cPicture.height());
    ParamGray8 *pcGrey = m_cStore.getParamGray8(1);
    pcGrey->resize(cPicture.width(), cPicture.height());
    unsigned char *puchGrey = pcGrey->getGray8();
    for (int y = 0; y < cPicture.height(); ++y) {
        unsigned char *puchPixel = pcDIB->getDIB() + qint64{(cPicture.width() * 3 + 3) & ~3} * y;
        for (int x = 0; x < cPicture.width(); ++x) {
            const int nCode = 10 * (y + 1) + x + 1;
            *puchGrey++ = static_cast<unsigned char>(nCode);
            *puchPixel++ = static_cast<unsigned char>(nCode + 100); // blue
            *puchPixel++ = static_cast<unsigned char>(200 - nCode);
            *puchPixel++ = static_cast<unsigned char>(nCode);
        }
    }
    const int nLast = 10 * cPicture.height() + cPicture.width(); // of grey pictures this isn't written
    const QString strSettings = QStringLiteral("<Scale>%1</Scale><Pos>%2</Pos>").arg(nScale).arg(nAlign);
    const QSize cView(lstRows[0].split(QLatin1Char(' ')).size(), lstRows.size());
    // An RGB888 target may take a way of its own, any other one goes through the painter.
    for (const QImage::Format eFormat : {QImage::Format_RGB888, QImage::Format_RGB32}) {
        for (const int nType : {0, 1}) {
            const QImage cTarget = drawn(nType, strSettings, cView, eFormat);
            for (int y = 0; y < cView.height(); ++y) {
                for (int x = 0; x < cView.width(); ++x) {
                    const int nCode = lstRows[y].split(QLatin1Char(' '))[x].toInt();
                    QRgb nExpected = BLACK;
                    if (nCode > 0 && nType == 0)
                        nExpected = qRgb(nCode, 200 - nCode, nCode + 100);
                    else if (nCode > 0 && nCode != nLast)
                        nExpected = qRgb(nCode, nCode, nCode);
                    QVERIFY2(cTarget.pixel(x, y) == nExpected,
                             qPrintable(QString::asprintf("type %d (%d, %d): %08x, not %08x", nType, x, y,
                                                          cTarget.pixel(x, y), nExpected)));
                }
            }
            QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), nType == 0 ? strColourRecord : strGreyRecord);
        }
    }
}

void TestDrawing::composesGrey_data()
{
    QTest::addColumn<QString>("strMode");
    QTest::addColumn<QVector<uint>>("lstColours"); // for the grey values 0, 1, 2, 7, 255
    constexpr uint B = BACKGROUND;
    constexpr uint WHITE = 0xFFFFFFFF;
    constexpr uint RED = 0xFFFF0000;
    const auto row = [](const char *szMode, const QVector<uint> &lstColours) {
        QTest::newRow(szMode) << QString(szMode) << lstColours;
    };
    row("<Val>1</Val>", {B, 0xFF010101, 0xFF020202, 0xFF070707, WHITE});
    row("<Val>1</Val><Lapped>1</Lapped>", {B, WHITE, 0xFF330000, 0xFF331C00, 0xFF9938A8});
    row("<Val>2</Val>", {BLACK, B, B, B, B});
    row("<Val>2</Val><Mask>0,1</Mask>", {WHITE, B, B, B, B});
    row("<Val>2</Val><Mask>1,2</Mask>", {B, RED, RED, RED, RED});
    row("<Val>2</Val><Mask>5,2</Mask>", {RED, RED, RED, RED, RED});
    row("<Val>2</Val><Mask>1,3</Mask>", {B, B, B, B, B});
    row("<Val>3</Val><Mask>1,2</Mask>", {B, B, B, B, B});
}

void TestDrawing::composesGrey()
{
    QFETCH(QString, strMode);
    QFETCH(QVector<uint>, lstColours);
    ParamGray8 *pcGrey = m_cStore.getParamGray8(1);
    pcGrey->resize(5, 1);
    memcpy(pcGrey->getGray8(), "\x00\x01\x02\x07\xFF", 5);
    const QImage cTarget =
        drawn(1, QStringLiteral("<DrawMode>%1</DrawMode>").arg(strMode), {5, 1}, QImage::Format_RGB888);
    for (int x = 0; x < 5; ++x)
        QCOMPARE(cTarget.pixel(x, 0), lstColours[x]);
    QCOMPARE(Drawing::getViewScaleOpt(VIEW).m_afScale[0],
             strMode.startsWith(QLatin1String("<Val>3")) ? 7.0F : 1.0F);
}

void TestDrawing::everyWayGivesTheSamePixels()
{
    // Row loops differ from the painter in their vectors, chunks and edges: sizes from one pixel up.
    std::mt19937 cRandom(7);
    const auto number = [&cRandom](int nMin, int nMax) {
        return std::uniform_int_distribution(nMin, nMax)(cRandom);
    };
    for (int nRound = 0; nRound < 600; ++nRound) {
        const int nMaxWidth = nRound % 20 == 0 ? 700 : 40;
        // The first is longer than the painter's coordinates.
        const QSize cPicture(nRound == 0 ? 33'000 : number(1, nMaxWidth), number(1, 5));
        const QSize cView =
            nRound == 0 || number(0, 2) == 0 ? cPicture : QSize(number(1, nMaxWidth), number(1, 5));
        ParamDIB *pcDIB = m_cStore.getParamDIB(1);
        ParamGray8 *pcGrey = m_cStore.getParamGray8(1);
        pcDIB->resize(cPicture.width(), cPicture.height());
        pcGrey->resize(cPicture.width(), cPicture.height());
        const auto pixel = [&] { return number(0, 3) == 0 ? 0 : number(1, 255); };
        std::generate_n(pcDIB->getDIB(), ((cPicture.width() * 3 + 3) & ~3) * cPicture.height(), pixel);
        std::generate_n(pcGrey->getGray8(), cPicture.width() * cPicture.height(), pixel);
        const QString strSettings = QString::asprintf("<Scale>%d</Scale><Pos>%d</Pos><DrawMode><Val>%d</"
                                                      "Val><Lapped>%d</Lapped><Mask>%d,%d</Mask></DrawMode>",
                                                      number(0, 3), number(0, 1), number(0, 2), number(0, 1),
                                                      number(0, 2), number(0, 3));
        for (const int nType : {0, 1}) {
            const QImage cRows = drawn(nType, strSettings, cView, QImage::Format_RGB888);
            QVERIFY2(cRows.convertToFormat(QImage::Format_RGB32) ==
                         drawn(nType, strSettings, cView, QImage::Format_RGB32),
                     qPrintable(QString::asprintf("type %d, %dx%d in %dx%d: ", nType, cPicture.width(),
                                                  cPicture.height(), cView.width(), cView.height()) +
                                strSettings));
        }
    }
}

void TestDrawing::translucentTableLetsTheTargetShine()
{
    unsigned char auchGrey[] = {1, 2, 3};
    for (const QImage::Format eFormat : {QImage::Format_RGB888, QImage::Format_RGB32}) {
        Drawing::Gray8DrawingOpt cOpt(1, auchGrey, 3, 1);
        cOpt.setDrawMode(1);
        cOpt.setLapped(1);
        cOpt.m_anColourTable[1] = 0x00FFFFFF;
        cOpt.m_anColourTable[2] = 0x80FF0000;
        QImage cTarget = target({3, 1}, eFormat);
        cOpt.draw(&cTarget, &m_cStore);
        QCOMPARE(cTarget.pixel(0, 0), BACKGROUND);
        QVERIFY(qAbs(qRed(cTarget.pixel(1, 0)) - (0x5A + 0xFF) / 2) < 3);
        QVERIFY(qAbs(qBlue(cTarget.pixel(1, 0)) - 0x7C / 2) < 3);
        QCOMPARE(cTarget.pixel(2, 0), 0xFF660000);
    }
}

void TestDrawing::writesRowPaddingAndExchangesItsCopy()
{
    const QByteArray achPixels("bgrBGRxyz...cdeCDEuvw...");
    const QByteArray achExchanged("rgbRGBzyx...edcEDCwvu...");
    for (const int nScale : {3, 4}) { // copied row by row, not placed at all
        QByteArray achCaller(achPixels.constData(), achPixels.size());
        Drawing::DIBDrawingOpt cOpt(1, reinterpret_cast<unsigned char *>(achCaller.data()), 3, 2);
        cOpt.setScaleType(nScale);
        QByteArray achView(24, '\xAB');
        QImage cTarget(reinterpret_cast<unsigned char *>(achView.data()), 3, 2, 12, QImage::Format_RGB888);
        cOpt.draw(&cTarget, &m_cStore);
        QCOMPARE(achView.mid(9, 3) + achView.mid(21), QByteArray(6, 0));
        QCOMPARE(QByteArray(reinterpret_cast<char *>(cOpt.m_puchData), 24), achExchanged);
        QCOMPARE(achCaller, achPixels);
    }
}

void TestDrawing::badPicturesDrawNothing()
{
    constexpr int MAX = std::numeric_limits<int>::max();
    unsigned char auchPixels[16] = {};
    QImage cTarget = target({4, 4}, QImage::Format_RGB888);
    const QImage cBefore = cTarget;
    for (const QSize &c : {QSize(0, 2), QSize(2, 0), QSize(-1, -1), QSize(-3, 2), QSize(MAX, -MAX)}) {
        Drawing::DIBDrawingOpt(1, auchPixels, c.width(), c.height()).draw(&cTarget, &m_cStore);
        Drawing::Gray8DrawingOpt(1, auchPixels, c.width(), c.height()).draw(&cTarget, &m_cStore);
    }
    Drawing::DIBDrawingOpt(1, auchPixels, MAX, MAX).draw(&cTarget, &m_cStore);
    Drawing::Gray8DrawingOpt(1, nullptr, 2, 2).draw(&cTarget, &m_cStore);
    Drawing::Gray16DrawingOpt(1, auchPixels, 2, 2).draw(&cTarget, &m_cStore); // draws nothing, ever
    Drawing::DIBDrawingOpt cGood(1, auchPixels, 2, 2);
    cGood.draw(&cTarget, nullptr);
    cGood.draw(nullptr, &m_cStore);
    QCOMPARE(cTarget, cBefore);
    cGood.setViewID(77); // no such view: painted, recorded nowhere
    cGood.draw(&cTarget, &m_cStore);
    QVERIFY(cTarget != cBefore);

    // A source rectangle that leaves the range of int.
    m_cStore.getParamGray8(1)->resize(40'000'000, 1);
    const QString strSettings = QStringLiteral("<Scale>1</Scale><DrawMode><Val>2</Val></DrawMode>");
    QCOMPARE(drawn(1, strSettings, {1, 10000}, QImage::Format_RGB888),
             target({1, 10000}, QImage::Format_RGB888));
    QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), QStringLiteral("7,8 9,10"));
    m_cStore.clean();
}

namespace
{
QString describe(const Drawing::DrawingOpt *pcOpt)
{
    if (!pcOpt)
        return QStringLiteral("none");
    QVector<int> lstFields; // those of lists show in what is painted
    if (auto *p = dynamic_cast<const Drawing::GrayDrawingOpt *>(pcOpt))
        lstFields = {p->getScaleType(), p->getAlignType(), p->getDrawMode(),
                     p->getLapped(),    p->getMaskVal(),   p->getMaskColor()};
    if (auto *p = dynamic_cast<const Drawing::StringsDrawingOpt *>(pcOpt))
        lstFields = {p->getColor(), p->m_nX, p->m_nY, p->getFontSize()};
    QString strText = QString::asprintf("view %d type %d id %d:", pcOpt->getViewID(), pcOpt->getDataType(),
                                        pcOpt->getDataID());
    for (const int nField : lstFields)
        strText += QLatin1Char(' ') + QString::number(nField);
    return strText;
}
} // namespace

void TestDrawing::readsConfig_data()
{
    QTest::addColumn<QString>("strConfig");
    QTest::addColumn<QString>("strObject");
    const auto row = [](const char *szStart, const char *szSettings, const char *szObject) {
        QTest::addRow("%s %s", szStart, szSettings)
            << QString(szStart) + QStringLiteral("<Config>") + szSettings + "</Config>" << QString(szObject);
    };
    row("<DataID>5</DataID>", "", "none");
    row("<DataType>x</DataType><DataID>5</DataID>", "", "none");
    row("<DataType>9</DataType><DataID>5</DataID>", "<Size>1</Size>", "none");
    row("<DataType>3</DataType><DataID>5x</DataID>", "", "none");
    row("<View>y</View><DataType>7</DataType><DataID>5</DataID>", "", "view 0 type 7 id 5: 0 0 0 12");
    row("<view>2</VIEW><datatype>3</DataType><DataID> +6 </dataid>", "", "view 2 type 3 id 6:");
    const char *szGrey8 = "<View>1</View><DataType>1</DataType><DataID>5</DataID>";
    const char *szGrey16 = "<DataType>2</DataType><DataID>5</DataID>";
    const char *szTexts = "<DataType>7</DataType><DataID>5</DataID>";
    row(szGrey8, "<DrawMode><Mask>,2,9</Mask><Lapped>4</Lapped></DrawMode>",
        "view 1 type 1 id 5: 0 0 0 4 0 2");
    row(szGrey16, "<DrawMode><Mask>1</Mask></DrawMode><Val>2</Val>", "view 0 type 2 id 5: 0 0 0 0 1 0");
    row(szTexts, "<Color>9</Color><Pos>10,-20</Pos><FontSize>30</FontSize>",
        "view 0 type 7 id 5: 9 10 -20 30");
    row(szTexts, "<Pos>x,3</Pos>", "view 0 type 7 id 5: 0 0 3 0");
    row(szTexts, "<Pos>3</Pos><FontSize>z</FontSize>", "view 0 type 7 id 5: 0 0 0 0");
}

void TestDrawing::readsConfig()
{
    QFETCH(QString, strConfig);
    QFETCH(QString, strObject);
    std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(strConfig, &m_cStore));
    QCOMPARE(describe(pcOpt.get()), strObject);
    // Lists are not read before they are drawn.
    const bool bPicture = strObject.contains(QRegularExpression(QStringLiteral("type [012]")));
    pcOpt.reset(Drawing::parseConfigString(strConfig, nullptr));
    QCOMPARE(describe(pcOpt.get()), bPicture ? QStringLiteral("none") : strObject);
}

QTEST_GUILESS_MAIN(TestDrawing)
#include "tst_drawing.moc"
