#include <cmath>
#include <ctime>

#include <QLine>
#include <QTemporaryDir>

#include <opencv2/imgproc.hpp>

#include "datatable.h"
#include "fixtures/row.h"
#include "pluginfixture.h"

Q_DECLARE_METATYPE(cv::Point2d)

namespace
{
/// A disc, brighter or darker than what is around it, with soft edges and noise.
cv::Mat disc(cv::Size cSize, cv::Point2d cCentre, double dRadius, int nInside, int nOutside, double dNoise)
{
    cv::Mat cPicture(cSize, CV_8UC1);
    cv::RNG cRandom(7);
    for (int nY = 0; nY < cSize.height; ++nY)
        for (int nX = 0; nX < cSize.width; ++nX) {
            const double dDepth = dRadius - std::hypot(nX - cCentre.x, nY - cCentre.y);
            const double dShare = std::clamp(dDepth + 0.5, 0.0, 1.0);
            cPicture.at<uchar>(nY, nX) =
                cv::saturate_cast<uchar>(nOutside + (nInside - nOutside) * dShare + cRandom.gaussian(dNoise));
        }
    return cPicture;
}

cv::Mat grey(const cv::Mat &cColour)
{
    cv::Mat cGrey;
    cv::cvtColor(cColour, cGrey, cv::COLOR_BGR2GRAY);
    return cGrey;
}

const QLine cLong(20, 150, 180, 150);
const QLine cSlope(40, 10, 120, 90);
const QLine cUpper(220, 20, 220, 85);
const QLine cLower(220, 105, 220, 170);

const QString CIRCLE = "<InputID>1</InputID><ValuesID>1</ValuesID><StringsID>1</StringsID>"
                       "<CentreID>1</CentreID><OutlineID>1</OutlineID>";
const QString TO_LISTS = "<InputID>1</InputID><PolysID>2</PolysID><ParentsID>3</ParentsID>";
const QString MATCH = "<InputID>1</InputID><TemplateID>2</TemplateID><AreasID>1</AreasID>"
                      "<ScoresID>1</ScoresID>";
} // namespace

/// The plug-ins that find and measure shapes, and the one that decides by what was found.
class TestMeasuring : public PluginTest
{
    Q_OBJECT

private slots:
    void init() { newStore(); }

    void measuresACircle_data()
    {
        QTest::addColumn<cv::Point2d>("cCentre");
        QTest::addColumn<double>("dRadius");
        QTest::addColumn<QString>("strConfig");
        row("bright", cv::Point2d(199.33, 90.67), 50.3, "<Polarity>Bright</Polarity>");
        row("in a region", cv::Point2d(150.5, 130.2), 50.0, "<Region>70,60,160,150</Region>");
        row("cut by the border", cv::Point2d(30.3, 120.8), 50.0, "");
        row("large picture", cv::Point2d(900.7, 1100.2), 400.4, "");
    }
    void measuresACircle()
    {
        QFETCH(cv::Point2d, cCentre);
        QFETCH(double, dRadius);
        QFETCH(QString, strConfig);
        const cv::Size cSize = dRadius > 100 ? cv::Size(2000, 1600) : cv::Size(321, 240);
        put(m_pcStore->getParamGray8(1), disc(cSize, cCentre, dRadius, 180, 60, 8));
        works("OCX_CircleMeasure", CIRCLE + strConfig);
        const QList<double> lstValue = m_pcStore->getParamDoubles(1)->getDoubles();
        QCOMPARE(lstValue.size(), 5);
        const double dOff = std::hypot(lstValue[0] - cCentre.x, lstValue[1] - cCentre.y);
        QVERIFY2(dOff < 0.05 && std::abs(lstValue[2] - dRadius) < 0.05,
                 qPrintable(QString("off by %1, radius %2").arg(dOff).arg(lstValue[2])));
        for (const ParamPolys::Point &cCorner : m_pcStore->getParamPolys(1)->getPolys().value(0).verts)
            QVERIFY(std::abs(std::hypot(cCorner.x - cCentre.x, cCorner.y - cCentre.y) - dRadius) < 1.2);
    }

    void findsLines_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QVector<QLine>>("lstExpected");
        const QString strEdges = "<Content>Edges</Content>";
        row("both sides in grey", "<Region>0,100,200,100</Region>", QVector<QLine>{cLong, cLong});
        row("fine angles", strEdges + "<AngleStep>0.5</AngleStep>",
            QVector<QLine>{cLong, cSlope, cUpper, cLower});
        row("no short ones", strEdges + "<MinLength>80</MinLength>", QVector<QLine>{cLong, cSlope});
        row("gap closed", strEdges + "<MaxGap>25</MaxGap>",
            QVector<QLine>{cLong, QLine(220, 20, 220, 170), cSlope});
        row("more votes than pixels", strEdges + "<Votes>200</Votes>", QVector<QLine>());
    }
    void findsLines()
    {
        QFETCH(QString, strConfig);
        QFETCH(QVector<QLine>, lstExpected);
        const int nWidth = strConfig.contains("Edges") ? 1 : 7;
        cv::Mat cPicture = cv::Mat::zeros(200, 301, CV_8UC1);
        for (const QLine &cLine : {cLong, cSlope, cUpper, cLower})
            cv::line(cPicture, {cLine.x1(), cLine.y1()}, {cLine.x2(), cLine.y2()}, 200, nWidth);
        put(m_pcStore->getParamGray8(1), cPicture);
        works("OCX_Lines", strConfig + "<InputID>1</InputID><LinesID>1</LinesID><Votes>30</Votes>");
        for (const ParamLines::Line &cLine : m_pcStore->getParamLines(1)->getLines()) {
            QLine cFound(cLine.sx, cLine.sy, cLine.ex, cLine.ey);
            if (cFound.dx() + cFound.dy() < 0)
                cFound = QLine(cFound.p2(), cFound.p1());
            const auto fnNear = [&cFound](const QLine &cOther) {
                return qMax((cFound.p1() - cOther.p1()).manhattanLength(),
                            (cFound.p2() - cOther.p2()).manhattanLength()) < 9;
            };
            const auto it = std::find_if(lstExpected.begin(), lstExpected.end(), fnNear);
            QVERIFY2(it != lstExpected.end(), qPrintable(QString("%1,%2").arg(cLine.sx).arg(cLine.sy)));
            lstExpected.erase(it);
        }
        QVERIFY2(lstExpected.isEmpty(), qPrintable(QString("%1 not found").arg(lstExpected.size())));
    }

    void outlines_data()
    {
        // The corners of each polygon; those of a hole's outline are cut, since its pixels touch there.
        addRows(
            "case          settings                                                   corners    parents\n"
            "all           <Which>Tree</Which>                                      4 8 4 4 1  -1 0 1 -1 -1\n"
            "no parent     <Which>Tree</Which><MaxArea>399</MaxArea>                  8 4 4 1    -1 0 -1 -1\n"
            "no hole       <Which>Tree</Which><MinArea>65</MinArea>                   4 4        -1 -1\n"
            "border        <Border>Drop</Border>                                      4 1        -\n"
            "hull          <Which>List</Which><Approximation>Hull</Approximation>     4 8 4 4 1  -\n"
            "polygon       <Which>List</Which><Approximation>Polygon</Approximation>  4 4 4 4 1  -\n"
            "dark          <Which>List</Which><Polarity>Dark</Polarity><MaxArea>64</MaxArea>  4 8 4  -");
    }

    /// A square of 20 with a hole of 8, in which lies one of 4; a rectangle of 7 x 10 at the right
    /// border; a speck.
    void outlines()
    {
        QFETCH(QString, settings);
        QFETCH(QString, corners);
        QFETCH(QString, parents);
        cv::Mat cPicture = cv::Mat::zeros(40, 61, CV_8UC1);
        const auto fnRect = [&](const cv::Rect &cRect, int nValue) { cPicture(cRect).setTo(nValue); };
        fnRect({5, 5, 20, 20}, 255);
        fnRect({10, 10, 8, 8}, 0);
        fnRect({12, 12, 4, 4}, 1);
        fnRect({54, 20, 7, 10}, 255);
        fnRect({40, 35, 1, 1}, 255);
        put(m_pcStore->getParamGray8(1), cPicture);
        works("OCX_Contours", TO_LISTS + settings);
        QStringList lstCorners;
        QStringList lstParents;
        for (const ParamPolys::Poly &cPoly : m_pcStore->getParamPolys(2)->getPolys())
            lstCorners << QString::number(cPoly.verts.size());
        for (const long nParent : m_pcStore->getParamLongs(3)->getLongs())
            lstParents << QString::number(nParent);
        QCOMPARE(lstCorners.join(' '), corners);
        QCOMPARE(lstParents.join(' '), parents);
        QVERIFY(same(header(m_pcStore->getParamGray8(1)), cPicture));
    }

    /// A time that grows with the square of the number of outlines is more than anybody waits.
    void treeOfNoise()
    {
        std::clock_t anTime[3] = {}; // of the processor: others may use it as well
        for (const int nScale : {1, 2}) {
            cv::Mat cNoise(750 * nScale, 1000 * nScale, CV_8UC1);
            cv::randu(cNoise, 0, 2);
            put(m_pcStore->getParamGray8(1), cNoise);
            anTime[nScale] = -std::clock();
            works("OCX_Contours", TO_LISTS + "<Which>Tree</Which>");
            anTime[nScale] += std::clock();
        }
        QVERIFY(m_pcStore->getParamLongs(3)->getLongs().size() > 100000);
        const double dGrowth = static_cast<double>(anTime[2]) / static_cast<double>(anTime[1]);
        QVERIFY2(dGrowth < 12, qPrintable(QString::number(dGrowth))); // 4 for four times as many
    }

    void findsTheCornersOfAChessboard()
    {
        // Squares of 20.5 pixels, drawn twice as large; they meet at 30 + 20.5 n.
        cv::Mat cLarge(440, 440, CV_8UC1, cv::Scalar(128));
        for (int nY = 0; nY < 8; ++nY)
            for (int nX = 0; nX < 8; ++nX)
                cLarge(cv::Rect(20 + 41 * nX, 20 + 41 * nY, 41, 41)) = (nX + nY) % 2 ? 220 : 30;
        cv::Mat cPicture;
        cv::resize(cLarge, cPicture, {}, 0.5, 0.5, cv::INTER_AREA);
        put(m_pcStore->getParamGray8(1), cPicture);
        const std::tuple<const char *, double, int> acCase[] = {
            {"", 1.5, 49},
            {"<Method>Harris</Method><Quality>0.3</Quality>", 1.5, 49},
            {"<SubPixel>1</SubPixel>", 0.5, 49},
            {"<SubPixel>1</SubPixel><Region>20,20,42,22</Region>", 0.5, 2}};
        for (const auto &[szConfig, dWrong, nCorners] : acCase) {
            // The board's outer corners are weaker.
            works("OCX_Corners",
                  szConfig + QString("<InputID>1</InputID><PointsID>1</PointsID><Quality>0.6</Quality>"));
            const auto lstPoint = m_pcStore->getParamPoints(1)->getPoints();
            QVERIFY2(lstPoint.size() == nCorners, szConfig);
            for (const ParamPoints::Point &cPoint : lstPoint)
                for (const int nPlace : {cPoint.x, cPoint.y}) {
                    const double dTrue = 30 + 20.5 * std::round((nPlace - 30) / 20.5);
                    QVERIFY2(std::abs(nPlace - dTrue) <= dWrong, szConfig);
                }
        }
    }

    void matchesWhereItWasCut()
    {
        const QTemporaryDir cDir;
        const QString strFile = cDir.filePath("部件.png");
        const auto fnSave = [&](const QRect &cCut, int nDays) {
            const QImage cPhotograph(OCULINEX_SOURCE_DIR "/examples/pictures/rocket.jpg");
            QFile cFile(strFile);
            return cPhotograph.copy(cCut).save(strFile) && cFile.open(QIODevice::ReadWrite) &&
                   cFile.setFileTime(QDateTime::currentDateTime().addDays(nDays),
                                     QFileDevice::FileModificationTime);
        };
        const QString strFromFile = MATCH + "<InputType>RGB</InputType><Matches>All</Matches><TemplateFile>" +
                                    strFile + "</TemplateFile>";
        const auto fnFound = [&](const QString &strConfig) {
            works("OCX_TemplateMatch", strConfig);
            const auto lstArea = m_pcStore->getParamAreas(1)->getAreas();
            const auto lstScore = m_pcStore->getParamDoubles(1)->getDoubles();
            if (lstArea.size() != 1 || lstScore.size() != 1 || lstScore[0] < 0.99 || lstScore[0] > 1.0001)
                return QRect();
            const auto &anBounds = lstArea[0].bounds;
            const QRect cFound(QPoint(anBounds[2], anBounds[0]), QPoint(anBounds[3], anBounds[1]));
            return lstArea[0].size == cFound.width() * cFound.height() ? cFound : QRect();
        };
        const QRect cFirst(301, 201, 41, 60);
        const QRect cSecond(290, 190, 60, 50);
        const cv::Mat cPhotograph = photograph("rocket.jpg");
        const cv::Mat cBrighter = cPhotograph * 0.8 + cv::Scalar::all(20);
        put(m_pcStore->getParamDIB(1), cBrighter);
        put(m_pcStore->getParamGray8(1), grey(cBrighter));
        put(m_pcStore->getParamGray8(2),
            grey(cPhotograph({cFirst.x(), cFirst.y(), cFirst.width(), cFirst.height()})));
        QCOMPARE(fnFound(MATCH + "<Template>Picture</Template><Region>250,150,330,200</Region>"), cFirst);

        // A file is read anew when it changes.
        QVERIFY(fnSave(cFirst, -2));
        QCOMPARE(fnFound(strFromFile), cFirst);
        QVERIFY(fnSave(cSecond, -1));
        QCOMPARE(fnFound(strFromFile), cSecond);
        QVERIFY(QFile::remove(strFile));
        QCOMPARE(run("OCX_TemplateMatch", strFromFile),
                 "Template file \"" + strFile + "\" cannot be read: No such file or directory.");
        put(m_pcStore->getParamGray8(2), cv::Mat(3, 5, CV_8UC1, cv::Scalar(9)));
        QCOMPARE(run("OCX_TemplateMatch", MATCH + "<Template>Picture</Template>"),
                 "All pixels of the template are alike: there is nothing to look for.");
        QCOMPARE(run("OCX_TemplateMatch", MATCH + "<Template>Picture</Template><Region>9999,0,5,5</Region>"),
                 "The region lies outside of the picture.");
    }

    void compares()
    {
        m_pcStore->getParamAreas(1)->setAreas({{}, {}, {}});
        // Whether it holds for three and a limit of 1, 2, 3, 4; the upper limit is one more.
        const QMap<QString, QString> mapHolds{{"Less", "nnny"},    {"AtMost", "nnyy"},  {"Equal", "nnyn"},
                                              {"Unequal", "yyny"}, {"AtLeast", "yyyn"}, {"Greater", "yynn"},
                                              {"Between", "nyyn"}, {"Outside", "ynny"}};
        for (auto it = mapHolds.begin(); it != mapHolds.end(); ++it)
            for (int nLimit = 1; nLimit <= 4; ++nLimit) {
                const QString strResult =
                    run("OCX_Compare", QString("<InputID>1</InputID><InputType>Areas</InputType>"
                                               "<Condition>%1</Condition><Limit>%2</Limit>"
                                               "<UpperLimit>%3</UpperLimit><WhenTrue>print:y</WhenTrue>"
                                               "<WhenFalse>print:n</WhenFalse>")
                                           .arg(it.key())
                                           .arg(nLimit)
                                           .arg(nLimit + 1));
                QVERIFY2(strResult == QString("<CMD>print:%1</CMD>").arg(it.value()[nLimit - 1]),
                         qPrintable(it.key() + ' ' + QString::number(nLimit)));
            }
    }

    void decides_data()
    {
        addRows(R"(
case                 type     settings                                   result
commands             Areas    Limit=9                                    <CMD>print:yes 3</CMD>
number               Doubles  Value=Element Limit=9                      <CMD>print:yes 2.5</CMD>
negative in a text   Strings  Value=Element Index=2                      <CMD>print:yes -0.75</CMD>
largest of texts     Strings  Value=Largest                              <CMD>stop:no 24</CMD>
mean                 Doubles  Value=Mean                                 <CMD>stop:no 2.833333</CMD>
count of nothing     Longs    Limit=1                                    <CMD>print:yes 0</CMD>
no numbers           Areas    Value=Mean                                 Points, lines, polygons and areas have no numbers: their count can be compared.
limits exchanged     Areas    Condition=Between Limit=5 UpperLimit=2.5   Setting UpperLimit is 2.5, below Limit, which is 5.
)");
    }
    void decides()
    {
        QFETCH(QString, type);
        QFETCH(QString, settings);
        QFETCH(QString, result);
        m_pcStore->getParamAreas(1)->setAreas({{}, {}, {}});
        m_pcStore->getParamLongs(1);
        m_pcStore->getParamDoubles(1)->setDoubles({2.5, -4, 10});
        m_pcStore->getParamStrings(1)->setStrings({"24 coins", "none", "r -0.75, x 3"});
        QString strConfig = "<InputID>1</InputID><InputType>" + type + "</InputType>";
        for (const QString &strSetting : settings.split(' '))
            strConfig +=
                QString("<%1>%2</%1>").arg(strSetting.section('=', 0, 0), strSetting.section('=', 1));
        // Of a setting that is there twice the first counts.
        QCOMPARE(run("OCX_Compare", strConfig + "<Condition>Less</Condition>"
                                                "<WhenTrue>print:yes {value}</WhenTrue>"
                                                "<WhenFalse>stop:no {value}</WhenFalse>"
                                                "<WhenMissing>skip:2</WhenMissing>"),
                 result);
    }
};

QTEST_GUILESS_MAIN(TestMeasuring)
#include "tst_measuring.moc"
