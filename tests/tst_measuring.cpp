#include <cmath>

#include <QLine>
#include <QTemporaryDir>

#include <opencv2/imgproc.hpp>

#include "pluginfixture.h"

#include "fixtures/row.h"

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

QRect rect(const ParamAreas::Area &cArea)
{
    return {QPoint(cArea.bounds[2], cArea.bounds[0]), QPoint(cArea.bounds[3], cArea.bounds[1])};
}

const QString CIRCLE = "<InputID>1</InputID><ValuesID>1</ValuesID><StringsID>1</StringsID>"
                       "<CentreID>1</CentreID><OutlineID>1</OutlineID>";
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
        QTest::addColumn<double>("dX");
        QTest::addColumn<double>("dY");
        QTest::addColumn<double>("dRadius");
        QTest::addColumn<QString>("strConfig");
        row("whole pixels", 160.0, 120.0, 50.0, "");
        row("quarters", 101.25, 118.75, 50.0, "");
        row("thirds", 199.33, 90.67, 50.3, "<Polarity>Bright</Polarity>");
        row("in a region", 150.5, 130.2, 50.0, "<Region>70,60,160,150</Region>");
        row("small", 80.4, 60.6, 8.5, "<MinRadius>5</MinRadius><MaxRadius>20</MaxRadius>");
        row("cut by the border", 30.3, 120.8, 50.0, "");
        row("large picture", 900.7, 1100.2, 400.4, "");
    }

    void measuresACircle()
    {
        QFETCH(double, dX);
        QFETCH(double, dY);
        QFETCH(double, dRadius);
        QFETCH(QString, strConfig);
        const cv::Size cSize = dRadius > 100 ? cv::Size(2000, 1600) : cv::Size(321, 240);
        put(m_pcStore->getParamGray8(1), disc(cSize, {dX, dY}, dRadius, 180, 60, 8));
        QCOMPARE(run("OCX_CircleMeasure", CIRCLE + strConfig), QString());
        const QList<double> lstValue = m_pcStore->getParamDoubles(1)->getDoubles();
        QCOMPARE(lstValue.size(), 5);
        const double dOff = std::hypot(lstValue[0] - dX, lstValue[1] - dY);
        QVERIFY2(dOff < 0.05 && std::abs(lstValue[2] - dRadius) < 0.05,
                 qPrintable(QString("off by %1, radius %2").arg(dOff).arg(lstValue[2])));
        QCOMPARE(m_pcStore->getParamPoints(1)->getPoints().value(0).x, qRound(lstValue[0]));
        for (const ParamPolys::Point &cCorner : m_pcStore->getParamPolys(1)->getPolys().value(0).verts)
            QVERIFY(std::abs(std::hypot(cCorner.x - dX, cCorner.y - dY) - dRadius) < 1.2);
        QVERIFY(m_pcStore->getParamStrings(1)->getStrings().value(0).startsWith(
            QString("r %1, x").arg(lstValue[2], 0, 'f', 2)));
    }

    void findsNoCircle_data()
    {
        QTest::addColumn<QString>("strConfig");
        row("too dark inside", "<Polarity>Bright</Polarity>");
        row("too large", "<MaxRadius>40</MaxRadius>");
        row("too small", "<MinRadius>60</MinRadius>");
        row("too faint", "<Contrast>200</Contrast>");
        row("elsewhere", "<Region>0,0,60,60</Region>");
    }

    void findsNoCircle()
    {
        QFETCH(QString, strConfig);
        m_pcStore->getParamDoubles(1)->addDouble(1); // of an earlier run
        put(m_pcStore->getParamGray8(1), disc({321, 240}, {160, 120}, 50, 60, 180, 8));
        QCOMPARE(run("OCX_CircleMeasure", CIRCLE + strConfig), QString());
        QCOMPARE(m_pcStore->getParamDoubles(1)->getDoubleNum(), 0);
        QCOMPARE(m_pcStore->getParamPolys(1)->getPolyNum(), 0);
    }

    void measuresACoin()
    {
        put(m_pcStore->getParamGray8(1), photograph("coins.png"));
        QCOMPARE(run("OCX_CircleMeasure", CIRCLE + "<Region>305,145,79,80</Region><MinRadius>15</MinRadius>"),
                 QString());
        // As a person measures it; the coin is not quite round.
        const QList<double> lstTrue{347, 186.5, 31.5};
        const QList<double> lstValue = m_pcStore->getParamDoubles(1)->getDoubles();
        for (int n = 0; n < lstTrue.size(); ++n)
            QVERIFY2(std::abs(lstValue.value(n) - lstTrue[n]) < 1,
                     qPrintable(QString::number(lstValue.value(n))));
    }

    void findsLines_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QVector<QLine>>("lstExpected");
        const QLine cLong(20, 150, 180, 150);
        const QLine cSlope(40, 10, 120, 90);
        const QLine cUpper(220, 20, 220, 85);
        const QLine cLower(220, 105, 220, 170);
        const QVector<QLine> lstAll{cLong, cSlope, cUpper, cLower};
        const QString strEdges = "<Content>Edges</Content>";
        row("edges", strEdges, lstAll);
        row("both sides in grey", "<Region>0,100,200,100</Region>", QVector<QLine>{cLong, cLong});
        row("fine angles", strEdges + "<AngleStep>0.5</AngleStep>", lstAll);
        row("the longest", strEdges + "<MaxCount>1</MaxCount>", QVector<QLine>{cLong});
        row("no short ones", strEdges + "<MinLength>80</MinLength>", QVector<QLine>{cLong, cSlope});
        row("gap closed", strEdges + "<MaxGap>25</MaxGap>",
            QVector<QLine>{cLong, QLine(220, 20, 220, 170), cSlope});
        row("in a region", strEdges + "<Region>0,100,200,100</Region>", QVector<QLine>{cLong});
        row("more votes than pixels", strEdges + "<Votes>200</Votes>", QVector<QLine>());
    }

    void findsLines()
    {
        QFETCH(QString, strConfig);
        QFETCH(QVector<QLine>, lstExpected);
        const int nWidth = strConfig.contains("Edges") ? 1 : 7;
        cv::Mat cPicture = cv::Mat::zeros(200, 301, CV_8UC1);
        cv::line(cPicture, {20, 150}, {180, 150}, 200, nWidth);
        cv::line(cPicture, {40, 10}, {120, 90}, 200, nWidth);
        cv::line(cPicture, {220, 20}, {220, 85}, 200, nWidth);
        cv::line(cPicture, {220, 105}, {220, 170}, 200, nWidth);
        put(m_pcStore->getParamGray8(1), cPicture);
        QCOMPARE(run("OCX_Lines", strConfig + "<InputID>1</InputID><LinesID>1</LinesID><Votes>30</Votes>"),
                 QString());
        const auto lstFound = m_pcStore->getParamLines(1)->getLines();
        double dLast = INFINITY;
        for (const ParamLines::Line &cLine : lstFound) {
            const QLine cFound(cLine.sx, cLine.sy, cLine.ex, cLine.ey);
            const auto fnNear = [&](const QLine &cOther) {
                const auto fnOff = [](QPoint cA, QPoint cB) { return (cA - cB).manhattanLength(); };
                constexpr int NEAR = 9;
                return (fnOff(cFound.p1(), cOther.p1()) < NEAR && fnOff(cFound.p2(), cOther.p2()) < NEAR) ||
                       (fnOff(cFound.p1(), cOther.p2()) < NEAR && fnOff(cFound.p2(), cOther.p1()) < NEAR);
            };
            const auto it = std::find_if(lstExpected.begin(), lstExpected.end(), fnNear);
            QVERIFY2(
                it != lstExpected.end(),
                qPrintable(QString("%1,%2 %3,%4").arg(cLine.sx).arg(cLine.sy).arg(cLine.ex).arg(cLine.ey)));
            lstExpected.erase(it);
            QVERIFY(QLineF(cFound).length() <= dLast);
            dLast = QLineF(cFound).length();
        }
        QVERIFY2(lstExpected.isEmpty(), qPrintable(QString("%1 not found").arg(lstExpected.size())));
    }

    void findsTheCornersOfAChessboard_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<int>("nWrong"); // pixels
        QTest::addColumn<int>("nCorners");
        row("eigenvalue", "", 1, 49);
        row("harris", "<Method>Harris</Method><Quality>0.3</Quality>", 1, 49);
        row("sub-pixel", "<SubPixel>1</SubPixel>", 0, 49);
        row("in a region", "<SubPixel>1</SubPixel><Region>20,20,42,22</Region>", 0, 2);
        row("the clearest", "<MaxCount>7</MaxCount>", 1, 7);
        row("far apart", "<Distance>200</Distance>", 1, 1);
    }

    void findsTheCornersOfAChessboard()
    {
        QFETCH(QString, strConfig);
        QFETCH(int, nWrong);
        QFETCH(int, nCorners);
        // Squares of 20.5 pixels, drawn ten times as large; they meet at 30 + 20.5 n.
        constexpr int LARGE = 10;
        cv::Mat cLarge(2200, 2200, CV_8UC1, cv::Scalar(128));
        const auto fnEdge = [](int n) { return static_cast<int>(LARGE * (9.5 + 20.5 * n + 0.5)); };
        for (int nY = 0; nY < 8; ++nY)
            for (int nX = 0; nX < 8; ++nX)
                cLarge(cv::Range(fnEdge(nY), fnEdge(nY + 1)), cv::Range(fnEdge(nX), fnEdge(nX + 1))) =
                    (nX + nY) % 2 ? 220 : 30;
        cv::Mat cPicture;
        cv::resize(cLarge, cPicture, {}, 1.0 / LARGE, 1.0 / LARGE, cv::INTER_AREA);
        put(m_pcStore->getParamGray8(1), cPicture);
        // The board's outer corners are weaker.
        QCOMPARE(run("OCX_Corners",
                     strConfig + "<InputID>1</InputID><PointsID>1</PointsID><Quality>0.6</Quality>"),
                 QString());
        const auto lstPoint = m_pcStore->getParamPoints(1)->getPoints();
        QCOMPARE(lstPoint.size(), nCorners);
        for (const ParamPoints::Point &cPoint : lstPoint)
            for (const int nPlace : {cPoint.x, cPoint.y}) {
                const double dTrue = 30 + 20.5 * std::round((nPlace - 30) / 20.5);
                QVERIFY2(std::abs(nPlace - dTrue) <= nWrong + 0.5, qPrintable(QString::number(nPlace)));
            }
    }

    void matchesWhereItWasCut_data()
    {
        QTest::addColumn<bool>("bColour");
        QTest::addColumn<bool>("bFile");
        QTest::addColumn<QString>("strConfig");
        for (const bool bColour : {false, true})
            for (const bool bFile : {false, true})
                for (const char *szConfig :
                     {"", "<Matches>All</Matches>", "<Region>250,150,330,200</Region>"})
                    QTest::addRow("%s, %s, %s", bColour ? "colour" : "grey", bFile ? "file" : "picture",
                                  szConfig)
                        << bColour << bFile << QString(szConfig);
    }

    void matchesWhereItWasCut()
    {
        QFETCH(bool, bColour);
        QFETCH(bool, bFile);
        QFETCH(QString, strConfig);
        const cv::Mat cPhotograph = photograph("rocket.jpg");
        const cv::Rect cCut(301, 201, 41, 60);
        const cv::Mat cBrighter = cPhotograph * 0.8 + cv::Scalar::all(20);
        QTemporaryDir cDir;
        const QString strFile = cDir.filePath("部件.png");
        if (bColour) {
            put(m_pcStore->getParamDIB(1), cBrighter);
            put(m_pcStore->getParamDIB(2), cPhotograph(cCut));
        } else {
            put(m_pcStore->getParamGray8(1), grey(cBrighter));
            put(m_pcStore->getParamGray8(2), grey(cPhotograph(cCut)));
        }
        const cv::Mat cPart = cPhotograph(cCut);
        QVERIFY(
            QImage(cPart.data, cPart.cols, cPart.rows, static_cast<int>(cPart.step), QImage::Format_BGR888)
                .save(strFile));
        if (bFile)
            strConfig += "<TemplateFile>" + strFile + "</TemplateFile>";
        QCOMPARE(run("OCX_TemplateMatch", MATCH + (bColour ? "<InputType>RGB</InputType>" : "") +
                                              (bFile ? "" : "<Template>Picture</Template>") + strConfig),
                 QString());
        const auto lstArea = m_pcStore->getParamAreas(1)->getAreas();
        const auto lstScore = m_pcStore->getParamDoubles(1)->getDoubles();
        QCOMPARE(lstArea.size(), 1);
        QCOMPARE(rect(lstArea[0]), QRect(cCut.x, cCut.y, cCut.width, cCut.height));
        QCOMPARE(lstArea[0].size, cCut.area());
        QCOMPARE(lstScore.size(), 1);
        QVERIFY(lstScore[0] > 0.99 && lstScore[0] <= 1.0001);
    }

    void findsAllMatches_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<int>("nMatches");
        row("best", "", 1);
        row("all", "<Matches>All</Matches>", 3);
        row("perfect ones", "<Matches>All</Matches><Score>0.999</Score>",
            1); // another covers a part of the second
        row("two of them", "<Matches>All</Matches><MaxCount>2</MaxCount>", 2);
        row("overlapping", "<Matches>All</Matches><Overlap>60</Overlap>", 4);
        row("in a region", "<Matches>All</Matches><Region>0,0,50,50</Region>", 1);
    }

    void findsAllMatches()
    {
        QFETCH(QString, strConfig);
        QFETCH(int, nMatches);
        cv::Mat cPart(20, 20, CV_8UC1, cv::Scalar(40));
        cv::circle(cPart, {10, 10}, 7, 200, 2);
        cv::Mat cPicture(120, 200, CV_8UC1, cv::Scalar(40));
        cPart.copyTo(cPicture(cv::Rect(10, 10, 20, 20)));
        cPart.copyTo(cPicture(cv::Rect(150, 70, 20, 20)));
        cv::Mat cWorse = cPart.clone();
        cWorse(cv::Rect(9, 0, 3, 7)) = 40; // an open ring
        cWorse.copyTo(cPicture(cv::Rect(80, 40, 20, 20)));
        // Another open one is half below a whole one.
        cWorse.copyTo(cPicture(cv::Rect(150, 82, 20, 20)), cWorse > 40);
        put(m_pcStore->getParamGray8(1), cPicture);
        put(m_pcStore->getParamGray8(2), cPart);
        QCOMPARE(
            run("OCX_TemplateMatch", strConfig + "<Template>Picture</Template><Score>0.7</Score>" + MATCH),
            QString());
        const auto lstArea = m_pcStore->getParamAreas(1)->getAreas();
        const auto lstScore = m_pcStore->getParamDoubles(1)->getDoubles();
        QCOMPARE(lstArea.size(), nMatches);
        QCOMPARE(lstScore.size(), nMatches);
        QVERIFY(std::is_sorted(lstScore.rbegin(), lstScore.rend()));
    }

    void readsATemplateFileAnewWhenItChanges()
    {
        const QTemporaryDir cDir;
        const QString strFile = cDir.filePath("part.png");
        const QDateTime cTime = QDateTime::currentDateTime().addDays(-1);
        const auto fnSave = [&](const QRect &cCut, const QDateTime &cWhen) {
            QFile cFile(strFile);
            return QImage(OCULINEX_SOURCE_DIR "/examples/pictures/rocket.jpg").copy(cCut).save(strFile) &&
                   cFile.open(QIODevice::ReadWrite) &&
                   cFile.setFileTime(cWhen, QFileDevice::FileModificationTime);
        };
        const auto fnFound = [&] {
            const QString strError =
                run("OCX_TemplateMatch", MATCH + "<TemplateFile>" + strFile + "</TemplateFile>");
            return strError.isEmpty() ? rect(m_pcStore->getParamAreas(1)->getAreas().value(0)) : QRect();
        };
        put(m_pcStore->getParamGray8(1), grey(photograph("rocket.jpg")));
        const QRect cFirst(301, 201, 41, 60);
        const QRect cSecond(310, 260, 50, 40);
        QVERIFY(fnSave(cFirst, cTime));
        QCOMPARE(fnFound(), cFirst);
        QVERIFY(fnSave(cSecond, cTime));
        QCOMPARE(fnFound(), cFirst); // the same time: nobody looks into it
        QVERIFY(fnSave(cSecond, cTime.addSecs(1)));
        QCOMPARE(fnFound(), cSecond);
        QVERIFY(QFile::remove(strFile));
        QCOMPARE(run("OCX_TemplateMatch", MATCH + "<TemplateFile>" + strFile + "</TemplateFile>"),
                 "Template file \"" + strFile + "\" cannot be read: No such file or directory.");
    }

    void decides_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QString>("strResult");
        // Three areas; the numbers 2.5, -4, 10; the texts "24 coins", "none", "r -0.75, x 3".
        const auto decide = [](const char *szName, const char *szType, const char *szConfig,
                               const char *szResult) {
            row(szName, QString("<InputType>%1</InputType>").arg(szType) + szConfig, QString(szResult));
        };
        const char *const aszCondition[] = {"Less", "AtMost", "Equal", "Unequal", "AtLeast", "Greater"};
        const char *const aszHolds[] = {"nny", "nyy", "nyn", "yny", "yyn", "ynn"}; // limits 2, 3, 4
        for (size_t n = 0; n < std::size(aszCondition); ++n)
            for (int nLimit = 2; nLimit <= 4; ++nLimit)
                QTest::addRow("3 %s %d", aszCondition[n], nLimit)
                    << QString("<Condition>%1</Condition><Limit>%2</Limit>").arg(aszCondition[n]).arg(nLimit)
                    << (aszHolds[n][nLimit - 2] == 'y' ? "<CMD>print:yes 3</CMD>" : "<CMD>stop:no 3</CMD>");
        for (const bool bOutside : {false, true})
            for (const auto &[nLow, nHigh, bIn] :
                 {std::tuple(3, 5, true), {1, 3, true}, {4, 9, false}, {1, 2, false}})
                QTest::addRow("3 %s %d and %d", bOutside ? "Outside" : "Between", nLow, nHigh)
                    << QString("<Condition>%1</Condition><Limit>%2</Limit><UpperLimit>%3</UpperLimit>")
                           .arg(bOutside ? "Outside" : "Between")
                           .arg(nLow)
                           .arg(nHigh)
                    << (bIn != bOutside ? "<CMD>print:yes 3</CMD>" : "<CMD>stop:no 3</CMD>");
        const char *const szElement = "<Value>Element</Value><Condition>Equal</Condition>";
        const auto element = [=](const char *szConfig) { return QByteArray(szElement) + szConfig; };
        decide("first number", "Doubles", element("<Limit>2.5</Limit>"), "<CMD>print:yes 2.5</CMD>");
        decide("third number", "Doubles", element("<Index>2</Index><Limit>10</Limit>"),
               "<CMD>print:yes 10</CMD>");
        decide("no such number", "Doubles", element("<Index>3</Index>"), "<CMD>skip:2</CMD>");
        decide("text", "Strings", element("<Limit>24</Limit>"), "<CMD>print:yes 24</CMD>");
        decide("text without number", "Strings", element("<Index>1</Index>"), "<CMD>skip:2</CMD>");
        decide("negative in a text", "Strings", element("<Index>2</Index><Limit>-0.75</Limit>"),
               "<CMD>print:yes -0.75</CMD>");
        decide("smallest", "Doubles", "<Value>Smallest</Value><Condition>Less</Condition>",
               "<CMD>print:yes -4</CMD>");
        decide("largest of texts", "Strings", "<Value>Largest</Value><Condition>Less</Condition>",
               "<CMD>stop:no 24</CMD>");
        decide("mean", "Doubles", "<Value>Mean</Value><Condition>Less</Condition>",
               "<CMD>stop:no 2.833333</CMD>");
        decide("mean of nothing", "Longs", "<Value>Mean</Value>", "<CMD>skip:2</CMD>");
        decide("count of nothing", "Longs", "<Value>Count</Value>", "<CMD>print:yes 0</CMD>");
        decide("several values in a text", "Areas",
               "<WhenTrue>print:{value} or {value}</WhenTrue><Limit>9</Limit>", "<CMD>print:3 or 3</CMD>");
        decide("blank setting", "Areas", "<Limit>9</Limit><WhenTrue> </WhenTrue>", "");
        decide("no numbers", "Areas", "<Value>Mean</Value>",
               "Points, lines, polygons and areas have no numbers: their count can be compared.");
        decide("no such list", "Polys", "", "Input list 1 does not exist among the Polys.");
        decide(
            "no such kind", "Gray8", "",
            "Setting InputType is \"Gray8\", wanted is one of Areas, Points, Lines, Polys, Strings, Longs, "
            "Doubles, Bools.");
        decide("limits exchanged", "Areas",
               "<Condition>Between</Condition><Limit>5</Limit><UpperLimit>2.5</UpperLimit>",
               "Setting UpperLimit is 2.5, below Limit, which is 5.");
        decide("no command", "Areas", "<WhenFalse>jump:1</WhenFalse>",
               "Setting WhenFalse is \"jump:1\", wanted is skip:NUMBER, stop:TEXT or print:TEXT.");
    }

    void decides()
    {
        QFETCH(QString, strConfig);
        QFETCH(QString, strResult);
        m_pcStore->getParamAreas(1)->setAreas({{}, {}, {}});
        m_pcStore->getParamLongs(1);
        m_pcStore->getParamDoubles(1)->setDoubles({2.5, -4, 10});
        m_pcStore->getParamStrings(1)->setStrings({"24 coins", "none", "r -0.75, x 3"});
        // Of a setting that is there twice the first counts.
        QCOMPARE(run("OCX_Compare",
                     strConfig +
                         "<InputID>1</InputID>"
                         "<WhenTrue>print:yes {value}</WhenTrue><WhenFalse>stop:no {value}</WhenFalse>"
                         "<WhenMissing>skip:2</WhenMissing>"),
                 strResult);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("strID");
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QString>("strError");
        const QString strLines = "<InputID>1</InputID><LinesID>1</LinesID>";
        const QString strPicture = "<Template>Picture</Template>";
        row("region outside", "OCX_Lines", strLines + "<Region>61,0,5,5</Region>",
            "The region lies outside of the picture.");
        row("radii exchanged", "OCX_CircleMeasure",
            CIRCLE + "<MinRadius>80</MinRadius><MaxRadius>40</MaxRadius>",
            "Setting MinRadius is 80, above MaxRadius, which is 40.");
        row("no file", "OCX_TemplateMatch", MATCH, "No template file is chosen.");
        row("no picture in the file", "OCX_TemplateMatch",
            MATCH + "<TemplateFile>" OCULINEX_SOURCE_DIR "/README.md</TemplateFile>",
            "Template file \"" OCULINEX_SOURCE_DIR "/README.md\" cannot be read: Unsupported image format.");
        row("no template", "OCX_TemplateMatch", MATCH + strPicture, "Input picture 2 is empty.");
        row("template is plain", "OCX_TemplateMatch", "<TemplateID>3</TemplateID>" + strPicture + MATCH,
            "All pixels of the template are alike: there is nothing to look for.");
        row("template too large", "OCX_TemplateMatch",
            "<InputID>3</InputID><TemplateID>1</TemplateID>" + strPicture + MATCH,
            "The template (61 x 40) is larger than the picture (5 x 3).");
        row("template too large for the region", "OCX_TemplateMatch",
            "<TemplateID>1</TemplateID><Region>50,0,40,40</Region>" + strPicture + MATCH,
            "The template (61 x 40) is larger than the region (11 x 40).");
    }

    void refuses()
    {
        QFETCH(QString, strID);
        QFETCH(QString, strConfig);
        QFETCH(QString, strError);
        fill(m_pcStore->getParamGray8(1), 1);
        put(m_pcStore->getParamGray8(3), cv::Mat(3, 5, CV_8UC1, cv::Scalar(9)));
        QCOMPARE(run(strID, strConfig), strError);
    }
};

QTEST_GUILESS_MAIN(TestMeasuring)
#include "tst_measuring.moc"
