#include <QtTest>

#include <memory>
#include <random>

#include <QImage>
#include <QPainter>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "fixtures/neighbourhood.h"

namespace
{
constexpr QRgb BACKGROUND = 0xFF5A6B7C;
constexpr QRgb BLACK = 0xFF000000;
constexpr int VIEW = 2;

QImage target(QSize cSize)
{
    QImage cTarget(cSize, QImage::Format_RGB888);
    cTarget.fill(BACKGROUND);
    return cTarget;
}

QString describe(const Drawing::ViewScaleOpt &cScale)
{
    return QString::asprintf("%g,%g %d,%d", double{cScale.m_afScale[0]}, double{cScale.m_afScale[1]},
                             cScale.m_anOffset[0], cScale.m_anOffset[1]);
}

QString describe(const Drawing::DrawingOpt *pcOpt)
{
    if (!pcOpt)
        return QStringLiteral("none");
    return QString::asprintf("view %d type %d id %d", pcOpt->getViewID(), pcOpt->getDataType(),
                             pcOpt->getDataID());
}

/// What a grey value of an object becomes; opaque or to be blended.
QRgb shown(const Drawing::Gray8DrawingOpt &cOpt, unsigned char nGrey)
{
    if (cOpt.m_nDrawMode == 0)
        return qRgb(nGrey, nGrey, nGrey);
    if (cOpt.m_nDrawMode == 1)
        return nGrey == 0 ? 0 : cOpt.m_nLapped == 0 ? qRgb(nGrey, nGrey, nGrey) : cOpt.m_anColourTable[nGrey];
    const QVector<QRgb> lstColours{0xFF000000, 0xFFFFFFFF, 0xFFFF0000};
    const bool bHidden = cOpt.m_nMaskVal == 1 ? nGrey == 0 : cOpt.m_nMaskVal == 0 && nGrey != 0;
    return bHidden ? 0 : lstColours.value(cOpt.m_nMaskCr, 0);
}
} // namespace

/// The pictures and the config strings: how pictures are placed, composed and copied. This program has no
/// GUI application.
class TestDrawing : public QObject
{
    Q_OBJECT

private slots:
    void recordsScales()
    {
        const struct {
            const char *m_szSettings;
            QSize m_cPicture, m_cView;
            const char *m_szColour, *m_szGrey;
        } acCases[] = {{"<Scale>0</Scale>", {5, 1}, {2, 3}, "1,1 1,-1", "1,1 1,-1"}, // odd halves
                       {"<Scale>1</Scale>", {6, 6}, {2, 6}, "3,3 0,-6", "3,3 0,-6"},
                       {"<Scale>1</Scale><Pos>1</Pos>", {5, 9}, {2, 3}, "2.5,2.5 0,1", "2.5,2.5 0,1"},
                       // -2.5 and -0.5
                       {"<Scale>2</Scale>", {4, 3}, {7, 2}, "1.5,1.5 -2,0", "1.5,1.5 -2,0"},
                       {"<Scale>3</Scale><Pos>1</Pos>", {3, 4}, {2, 1}, "1,4 0,0", "1.5,4 0,0"}};
        for (const auto &[szSettings, cPicture, cView, szColour, szGrey] : acCases) {
            resize(cPicture);
            for (const int nType : {0, 1}) {
                QImage cTarget = target(cView);
                draw(*parsed(nType, szSettings), cTarget);
                QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), nType == 0 ? szColour : szGrey);
            }
        }
    }

    void paintsWhatAPainterPaints()
    {
        std::mt19937 cRandom(7);
        const auto number = [&cRandom](int nMin, int nMax) {
            return std::uniform_int_distribution(nMin, nMax)(cRandom);
        };
        const auto byte = [&] { return static_cast<unsigned char>(number(0, 3) == 0 ? 0 : number(1, 255)); };
        for (int nRound = 0; nRound < 2000; ++nRound) {
            // Rows differ in their vectors, chunks and edges; the first is longer than a painter's
            // coordinates.
            const int nMaxWidth = nRound % 20 == 0 ? 700 : 40;
            const QSize cPicture(nRound == 0 ? 33'000 : number(1, nMaxWidth), number(1, 5));
            const QSize cView =
                nRound == 0 || number(0, 2) == 0 ? cPicture : QSize(number(1, nMaxWidth), number(1, 5));
            const int nScale = number(0, 4);
            const QString strSettings = QString::asprintf(
                "<Scale>%d</Scale><Pos>%d</Pos><DrawMode><Val>%d</Val><Lapped>%d</"
                "Lapped><Mask>%d,%d</Mask></DrawMode>",
                nScale, number(0, 1), number(0, 3), number(0, 1), number(0, 2), number(0, 3));
            const int w = cPicture.width();
            const int h = cPicture.height();
            const int nStride = (w * 3 + 3) & ~3;
            resize(cPicture);
            unsigned char *const puchColour = m_cStore.getParamDIB(1)->getDIB();
            unsigned char *const puchGrey = m_cStore.getParamGray8(1)->getGray8();
            std::generate_n(puchColour, nStride * h, byte);
            std::generate_n(puchGrey, w * h, byte);
            // The first scaled drawing is the painter's own work, later ones go by what was learnt from it.
            for (int nDrawing = nRound; nDrawing < nRound + 4; ++nDrawing) {
                const auto pcOpt = parsed(nDrawing % 2, strSettings);
                auto *pcColour = dynamic_cast<Drawing::DIBDrawingOpt *>(pcOpt.get());
                auto *pcGrey = dynamic_cast<Drawing::Gray8DrawingOpt *>(pcOpt.get());
                const bool bOpaque = pcColour || pcGrey->m_nDrawMode == 0;
                QImage cShown = QImage(puchColour, w, h, nStride, QImage::Format_RGB888).rgbSwapped();
                if (pcGrey) {
                    cShown = QImage(cPicture, bOpaque ? QImage::Format_RGB888 : QImage::Format_ARGB32);
                    for (int n = 0; n < w * h; ++n)
                        cShown.setPixel(n % w, n / w, shown(*pcGrey, puchGrey[n]));
                    if (bOpaque)
                        cShown.setPixel(w - 1, h - 1, BLACK); // the last pixel is not written
                }

                QImage cTarget = target(cView);
                draw(*pcOpt, cTarget);
                const auto [afScale, anOffset] = Drawing::getViewScaleOpt(VIEW);
                const auto scaled = [fScale = afScale[0]](int n) { return static_cast<float>(n) * fScale; };
                const auto start = [&](int nHalf, int nViewHalf) {
                    return double{static_cast<float>(nHalf) - scaled(nViewHalf)};
                };
                QRectF cSource(start(w / 2, cView.width() / 2), start(h / 2, cView.height() / 2),
                               double{scaled(cView.width())}, double{scaled(cView.height())});
                if (nScale == 0)
                    cSource.moveTo(anOffset[0], anOffset[1]);
                if (nScale == 3)
                    cSource = QRectF(QPointF(), cPicture);
                QImage cExpected = target(cView);
                if (bOpaque)
                    cExpected.fill(0U);
                if (nScale < 4 && !(pcGrey && pcGrey->m_nDrawMode == 3))
                    QPainter(&cExpected).drawImage(QRectF(QPointF(), cView), cShown, cSource);
                QVERIFY2(cTarget == cExpected,
                         qPrintable(QString::asprintf("type %d, %dx%d in %dx%d: ", nDrawing % 2, w, h,
                                                      cView.width(), cView.height()) +
                                    strSettings));
                if (pcColour) // has exchanged red and blue in its copy
                    QCOMPARE(QImage(pcColour->m_puchData, w, h, nStride, QImage::Format_RGB888), cShown);
            }
        }
        const Drawing::Gray8DrawingOpt cOpt(1, nullptr, 1, 1);
        QCOMPARE(cOpt.m_anColourTable[7], 0xFF331C00);
    }

    void badPicturesDrawNothing()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        unsigned char auchPixels[16] = {};
        QImage cTarget = target({4, 4});
        const QImage cBefore = cTarget;
        for (const QSize &c : {QSize(0, 2), QSize(-1, -1), QSize(-3, 2), QSize(MAX, MAX)}) {
            Drawing::DIBDrawingOpt(1, auchPixels, c.width(), c.height()).draw(&cTarget, &m_cStore);
            Drawing::Gray8DrawingOpt(1, auchPixels, c.width(), c.height()).draw(&cTarget, &m_cStore);
        }
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
        cTarget = target({1, 10000});
        draw(*parsed(1, QStringLiteral("<Scale>1</Scale><DrawMode><Val>2</Val></DrawMode>")), cTarget);
        QCOMPARE(cTarget, target({1, 10000}));
        QCOMPARE(describe(Drawing::getViewScaleOpt(VIEW)), QStringLiteral("7,8 9,10"));
        m_cStore.clean();
    }

    void readsConfig_data()
    {
        addRows(R"(
case            start                                                   settings                        object
no type         <DataID>5</DataID>                                      -                               none
colour          <DataType>0</DataType><DataID>5</DataID>                -                               view 0 type 0 id 5
unknown type    <DataType>9</DataType><DataID>5</DataID>                <Size>1</Size>                  none
no ID           <DataType>3</DataType><DataID>5x</DataID>               -                               none
no view         <View>y</View><DataType>7</DataType><DataID>5</DataID>  -                               view 0 type 7 id 5
any case        <view>2</VIEW><datatype>3</DataType><DataID> +6 </dataid>  -                            view 2 type 3 id 6
)");
    }
    void readsConfig()
    {
        QFETCH(QString, start);
        QFETCH(QString, settings);
        QFETCH(QString, object);
        const QString strConfig = start + "<Config>" + settings + "</Config>";
        std::unique_ptr<Drawing::DrawingOpt> pcOpt(Drawing::parseConfigString(strConfig, &m_cStore));
        QCOMPARE(describe(pcOpt.get()), object);
        // Lists are not read before they are drawn.
        const bool bPicture = object.contains("type 0");
        pcOpt.reset(Drawing::parseConfigString(strConfig, nullptr));
        QCOMPARE(describe(pcOpt.get()), bPicture ? "none" : object);
    }

    void textsNeedAGuiApplication()
    {
        m_cStore.getParamStrings(1)->addString(QStringLiteral("text"));
        QImage cTarget = target({40, 30});
        const Warnings cWarnings;
        Drawing::resetViewScaleOpt(VIEW);
        parsed(7, QStringLiteral("<FontSize>9</FontSize>"))->draw(&cTarget, &m_cStore);
        QCOMPARE(cTarget, target({40, 30}));
        QVERIFY(cWarnings.taken().join('\n').contains("QGuiApplication"));
    }

private:
    /// An object of the store's picture 1.
    std::unique_ptr<Drawing::DrawingOpt> parsed(int nType, const QString &strSettings)
    {
        return std::unique_ptr<Drawing::DrawingOpt>(Drawing::parseConfigString(
            QStringLiteral("<View>%1</View><DataType>%2</DataType><DataID>1</DataID><Config>%3</Config>")
                .arg(VIEW)
                .arg(nType)
                .arg(strSettings),
            &m_cStore));
    }
    void resize(QSize cPicture)
    {
        m_cStore.getParamDIB(1)->resize(cPicture.width(), cPicture.height());
        m_cStore.getParamGray8(1)->resize(cPicture.width(), cPicture.height());
    }
    void draw(Drawing::DrawingOpt &cOpt, QImage &cTarget)
    {
        Drawing::setViewScaleOpt(VIEW, {{7, 8}, {9, 10}});
        cOpt.draw(&cTarget, &m_cStore);
    }

    ArithmParamMgr m_cStore;
};

QTEST_GUILESS_MAIN(TestDrawing)
#include "tst_drawing.moc"
