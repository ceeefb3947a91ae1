#include <ctime>

#include <opencv2/imgproc.hpp>

#include "fixtures/row.h"
#include "pluginfixture.h"

namespace
{
const QString TO_2 = "<InputID>1</InputID><OutputID>2</OutputID>";
const QString TO_LISTS = "<InputID>1</InputID><PolysID>2</PolysID><ParentsID>3</ParentsID>";

cv::Mat drawing(int nWidth = 61, int nHeight = 40)
{
    return cv::Mat::zeros(nHeight, nWidth, CV_8UC1);
}

void drawRect(cv::Mat &cPicture, int nX, int nY, int nWidth, int nHeight, int nValue = 255)
{
    cPicture(cv::Rect(nX, nY, nWidth, nHeight)).setTo(nValue);
}
} // namespace

/// The plug-ins that tell objects from their background: colours, shapes, edges, outlines.
class TestSegmentation : public PluginTest
{
    Q_OBJECT

private slots:
    void init() { newStore(); }

    void selectsColours()
    {
        const cv::Mat cInput = fill(m_pcStore->getParamDIB(1), 1);
        cv::Mat cHsv;
        cv::cvtColor(cInput, cHsv, cv::COLOR_BGR2HSV);
        cv::RNG cRandom(2);
        for (int nRun = 0; nRun < 200; ++nRun) {
            // Every fourth hue range begins right behind its end: all hues.
            const int nHighHue = cRandom.uniform(0, 179);
            const int nLowHue = nRun % 4 ? cRandom.uniform(0, 180) : nHighHue + 1;
            const int nLow = cRandom.uniform(0, 256);
            const int nHigh = cRandom.uniform(nLow, 256);
            const bool bRound = nLowHue > nHighHue;
            cv::Mat cExpected;
            cv::Mat cToRed;
            cv::inRange(cHsv, cv::Scalar(nLowHue, nLow, 9), cv::Scalar(bRound ? 179 : nHighHue, nHigh, 255),
                        cExpected);
            cv::inRange(cHsv, cv::Scalar(0, nLow, 9), cv::Scalar(bRound ? nHighHue : -1, nHigh, 255), cToRed);
            cExpected |= cToRed;
            if (nRun % 2)
                cExpected = ~cExpected;
            const QString strRange =
                QString("%1,%2,9,%3,%4,255").arg(nLowHue).arg(nLow).arg(nHighHue).arg(nHigh);
            QCOMPARE(run("OCX_HsvRange", TO_2 + "<Range>" + strRange + "</Range><Objects>" +
                                             (nRun % 2 ? "Outside" : "Inside") + "</Objects>"),
                     QString());
            QVERIFY2(same(header(m_pcStore->getParamGray8(2)), cExpected), qPrintable(strRange));
        }
    }

    void selectsKnownColours_data()
    {
        QTest::addColumn<QString>("strRange");
        QTest::addColumn<int>("nLeast"); // share of the picture, in tenths of a percent
        QTest::addColumn<int>("nMost");
        row("blue sky", "105,30,20,130,255,255", 800, 845);
        row("lamps", "5,80,150,35,255,255", 18, 26);
    }

    void selectsKnownColours()
    {
        QFETCH(QString, strRange);
        QFETCH(int, nLeast);
        QFETCH(int, nMost);
        const cv::Mat cRocket = photograph("rocket.jpg");
        put(m_pcStore->getParamDIB(1), cRocket);
        QCOMPARE(run("OCX_HsvRange", TO_2 + "<Range>" + strRange + "</Range>"), QString());
        const int nPixels = cv::countNonZero(header(m_pcStore->getParamGray8(2)));
        const int nShare = nPixels * 1000 / static_cast<int>(cRocket.total());
        QVERIFY2(nShare >= nLeast && nShare <= nMost, qPrintable(QString::number(nShare)));
    }

    void shapes_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<int>("nPixels"); // that are not black
        const auto step = [](const char *szOperation, const char *szRest, int nPixels) {
            const QString strConfig = QString("<Operation>%1</Operation>%2").arg(szOperation, szRest);
            row(qPrintable(strConfig), strConfig, nPixels);
        };
        step("Erode", "", 18 * 18 - 9);
        step("Dilate", "", 22 * 22 + 9);
        step("Open", "", 20 * 20 - 1);
        step("Close", "", 20 * 20 + 1);
        step("Gradient", "", 22 * 22 + 9 - (18 * 18 - 9));
        step("TopHat", "", 1);
        step("BlackHat", "", 1);
        step("Erode", "<Shape>Cross</Shape><Iterations>2</Iterations>", 16 * 16 - 13);
        step("Dilate", "<Shape>Ellipse</Shape><Size>5</Size>", 22 * 24 + 2 * 20 + 17);
        step("Dilate", "<Iterations>4</Iterations>", 28 * 28 + 81);
        step("Dilate", "<Size>1</Size><Iterations>4</Iterations>", 20 * 20);
    }

    /// A square of 20 with a hole of one pixel, and a speck.
    void shapes()
    {
        QFETCH(QString, strConfig);
        QFETCH(int, nPixels);
        cv::Mat cPicture = drawing();
        drawRect(cPicture, 10, 10, 20, 20);
        drawRect(cPicture, 20, 20, 1, 1, 0);
        drawRect(cPicture, 50, 5, 1, 1);
        cv::Mat cColour;
        cv::cvtColor(cPicture, cColour, cv::COLOR_GRAY2BGR);
        for (const int nOutputID : {2, 1}) {
            const QString strIDs = QString("<InputID>1</InputID><OutputID>%1</OutputID>").arg(nOutputID);
            put(m_pcStore->getParamGray8(1), cPicture);
            put(m_pcStore->getParamDIB(1), cColour);
            QCOMPARE(run("OCX_Morphology", strIDs + strConfig), QString());
            const cv::Mat cResult = header(m_pcStore->getParamGray8(nOutputID));
            QCOMPARE(cv::countNonZero(cResult), nPixels);
            QCOMPARE(run("OCX_Morphology", strIDs + "<InputType>RGB</InputType>" + strConfig), QString());
            cv::cvtColor(cResult, cColour, cv::COLOR_GRAY2BGR);
            QVERIFY(same(header(m_pcStore->getParamDIB(nOutputID)), cColour));
            cv::cvtColor(cPicture, cColour, cv::COLOR_GRAY2BGR);
        }
    }

    /// The thresholds are the difference of the grey levels at both sides, in any aperture.
    void edgesOfSteps()
    {
        for (const char *szAperture : {"3", "5", "7"})
            for (const int nDifference : {40, 41}) {
                cv::Mat cPicture = drawing();
                drawRect(cPicture, 30, 0, 31, 40, nDifference);
                put(m_pcStore->getParamGray8(1), cPicture);
                QCOMPARE(run("OCX_Edges", TO_2 + "<High>40</High><Aperture>" + szAperture + "</Aperture>"),
                         QString());
                QCOMPARE(cv::countNonZero(header(m_pcStore->getParamGray8(2))), nDifference > 40 ? 40 : 0);
            }
    }

    void edgesOfThePhotograph()
    {
        const cv::Mat cCoins = photograph("coins.png");
        const std::pair<int, int> acAperture[] = {{3, 4}, {5, 48}, {7, 640}}; // and a step's gradient
        for (const auto &[nAperture, nStep] : acAperture)
            for (const bool bLength : {false, true})
                for (const int nOutputID : {2, 1}) {
                    put(m_pcStore->getParamGray8(1), cCoins);
                    QCOMPARE(run("OCX_Edges",
                                 QString("<InputID>1</InputID><OutputID>%1</OutputID><Low>20</Low>"
                                         "<High>50</High><Aperture>%2</Aperture><Gradient>%3</Gradient>")
                                     .arg(nOutputID)
                                     .arg(nAperture)
                                     .arg(bLength ? "Length" : "Sum")),
                             QString());
                    cv::Mat cExpected;
                    cv::Canny(cCoins, cExpected, 20 * nStep, 50 * nStep, nAperture, bLength);
                    QVERIFY(cv::countNonZero(cExpected) > 1000);
                    QVERIFY(same(header(m_pcStore->getParamGray8(nOutputID)), cExpected));
                }
    }

    void outlines_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QList<int>>("lstCorners"); // of each polygon
        QTest::addColumn<QList<long>>("lstParents");
        using Corners = QList<int>;
        using Parents = QList<long>;
        row("external", "", Corners{4, 4, 1}, Parents{});
        // The corners of a hole's outline are cut, since its pixels touch there.
        row("list", "<Which>List</Which>", Corners{4, 8, 4, 4, 1}, Parents{});
        row("tree", "<Which>Tree</Which>", Corners{4, 8, 4, 4, 1}, Parents{-1, 0, 1, -1, -1});
        row("parent left out", "<Which>Tree</Which><MaxArea>399</MaxArea>", Corners{8, 4, 4, 1},
            Parents{-1, 0, -1, -1});
        row("hole left out", "<Which>Tree</Which><MinArea>65</MinArea>", Corners{4, 4}, Parents{-1, -1});
        row("hole's area", "<Which>Tree</Which><MinArea>64</MinArea><MaxArea>64</MaxArea>", Corners{8},
            Parents{-1});
        row("area", "<MinArea>2</MinArea><MaxArea>70</MaxArea>", Corners{4}, Parents{});
        row("border", "<Border>Drop</Border>", Corners{4, 1}, Parents{});
        row("all", "<Approximation>All</Approximation>", Corners{76, 30, 1}, Parents{});
        row("hull", "<Which>List</Which><Approximation>Hull</Approximation><MaxArea>64</MaxArea>",
            Corners{8, 4, 1}, Parents{});
        row("polygon",
            "<Which>List</Which><Approximation>Polygon</Approximation><MinArea>64</MinArea>"
            "<MaxArea>64</MaxArea>",
            Corners{4}, Parents{});
        row("dark", "<Polarity>Dark</Polarity><MaxArea>100</MaxArea>", Corners{}, Parents{});
        row("dark list", "<Polarity>Dark</Polarity><Which>List</Which><MaxArea>64</MaxArea>",
            Corners{4, 8, 4}, Parents{});
    }

    /// A square of 20 with a hole of 8, in which lies one of 4; a rectangle of 7 x 10 at the right
    /// border; a speck.
    void outlines()
    {
        QFETCH(QString, strConfig);
        QFETCH(QList<int>, lstCorners);
        QFETCH(QList<long>, lstParents);
        cv::Mat cPicture = drawing();
        drawRect(cPicture, 5, 5, 20, 20);
        drawRect(cPicture, 10, 10, 8, 8, 0);
        drawRect(cPicture, 12, 12, 4, 4, 1);
        drawRect(cPicture, 54, 20, 7, 10);
        drawRect(cPicture, 40, 35, 1, 1);
        put(m_pcStore->getParamGray8(1), cPicture);
        QCOMPARE(run("OCX_Contours", TO_LISTS + strConfig), QString());
        QList<int> lstFound;
        for (const ParamPolys::Poly &cPoly : m_pcStore->getParamPolys(2)->getPolys())
            lstFound << cPoly.verts.size();
        QCOMPARE(lstFound, lstCorners);
        QCOMPARE(m_pcStore->getParamLongs(3)->getLongs(), lstParents);
        QVERIFY(same(header(m_pcStore->getParamGray8(1)), cPicture));
    }

    /// Outlines enclose the pixels of an object and all that the outside does not reach.
    void outlinesEncloseTheirPixels()
    {
        for (int nSeed = 1; nSeed <= 20; ++nSeed) {
            fill(m_pcStore->getParamGray8(1), nSeed);
            cv::Mat cPicture = header(m_pcStore->getParamGray8(1));
            cv::threshold(cPicture, cPicture, 100 + nSeed * 7, 255, cv::THRESH_BINARY);
            cv::Mat cOutside;
            cv::copyMakeBorder(cPicture, cOutside, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
            cv::floodFill(cOutside, {0, 0}, 128);
            const cv::Mat cFilled = cOutside != 128;
            cv::Mat cLabels;
            cv::Mat cStats;
            cv::Mat cCentres;
            const int nCount = cv::connectedComponentsWithStats(cFilled, cLabels, cStats, cCentres, 8);
            QMap<int, int> mapCount; // of the objects by size
            for (int n = 1; n < nCount; ++n)
                ++mapCount[cStats.at<int>(n, cv::CC_STAT_AREA)];
            mapCount[1000] += 0;
            for (auto it = mapCount.cbegin(); it != mapCount.cend(); ++it)
                for (const char *szApproximation : {"All", "Corners"}) {
                    QCOMPARE(
                        run("OCX_Contours", TO_LISTS + QString("<MinArea>%1</MinArea><MaxArea>%1</MaxArea>"
                                                               "<Approximation>%2</Approximation>")
                                                           .arg(it.key())
                                                           .arg(szApproximation)),
                        QString());
                    QCOMPARE(m_pcStore->getParamPolys(2)->getPolyNum(), it.value());
                }
        }
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("strID");
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QString>("strError");
        row("no colour in the range", "OCX_HsvRange", TO_2 + "<Range>0,90,0,10,80,255</Range>",
            "Setting Range has a lowest saturation above the highest, so that no colour is in it.");
        row("low above high", "OCX_Edges", TO_2 + "<Low>41</Low>",
            "Setting Low is \"41\", wanted is at most High, 40.");
        row("no parents", "OCX_Contours", "<InputID>1</InputID><PolysID>2</PolysID><Which>Tree</Which>",
            "Setting ParentsID is missing.");
    }

    void refuses()
    {
        QFETCH(QString, strID);
        QFETCH(QString, strConfig);
        QFETCH(QString, strError);
        put(m_pcStore->getParamDIB(1), cv::Mat(3, 5, CV_8UC3));
        put(m_pcStore->getParamGray8(1), cv::Mat(3, 5, CV_8UC1));
        QCOMPARE(run(strID, strConfig), strError);
    }

    void treeIsThatOfOpenCV()
    {
        for (int nSeed = 1; nSeed <= 15; ++nSeed) {
            fill(m_pcStore->getParamGray8(1), nSeed);
            cv::Mat cPicture = header(m_pcStore->getParamGray8(1));
            cv::threshold(cPicture, cPicture, 30 + nSeed * 13, 255, cv::THRESH_BINARY);
            std::vector<std::vector<cv::Point>> lstContour;
            std::vector<cv::Vec4i> lstLink;
            cv::findContours(cPicture, lstContour, lstLink, cv::RETR_TREE, cv::CHAIN_APPROX_NONE);
            const auto fnText = [](const auto &lstPoint) {
                QString strText;
                for (const auto &cPoint : lstPoint)
                    strText += QString("%1,%2 ").arg(cPoint.x).arg(cPoint.y);
                return strText;
            };
            QMap<QString, QString> mapExpected; // outline to parent
            for (size_t n = 0; n < lstContour.size(); ++n)
                mapExpected[fnText(lstContour[n])] =
                    lstLink[n][3] < 0 ? QString() : fnText(lstContour[static_cast<size_t>(lstLink[n][3])]);

            QCOMPARE(run("OCX_Contours", TO_LISTS + "<Which>Tree</Which><Approximation>All</Approximation>"),
                     QString());
            const QList<ParamPolys::Poly> lstPoly = m_pcStore->getParamPolys(2)->getPolys();
            const QList<long> lstParent = m_pcStore->getParamLongs(3)->getLongs();
            QMap<QString, QString> mapFound;
            for (int n = 0; n < lstPoly.size(); ++n) {
                const int nParent = static_cast<int>(lstParent[n]);
                mapFound[fnText(lstPoly[n].verts)] = nParent < 0 ? "" : fnText(lstPoly[nParent].verts);
            }
            QCOMPARE(mapFound, mapExpected);
        }
    }

    /// Hundreds of thousands of outlines: a time that grows with their square is more than anybody waits.
    void treeOfNoise()
    {
        cv::Mat cNoise(1500, 2000, CV_8UC1);
        cv::randu(cNoise, 0, 2);
        put(m_pcStore->getParamGray8(1), cNoise);
        const std::clock_t nBegin = std::clock(); // of the processor: others may use it as well
        QCOMPARE(run("OCX_Contours", TO_LISTS + "<Which>Tree</Which>"), QString());
        const double dSeconds = static_cast<double>(std::clock() - nBegin) / CLOCKS_PER_SEC;
        QVERIFY(m_pcStore->getParamLongs(3)->getLongs().size() > 100000);
        constexpr double PATIENCE_SECONDS = 10;
        QVERIFY2(dSeconds < PATIENCE_SECONDS, qPrintable(QString::number(dSeconds)));
    }

    void findsTheCoins()
    {
        put(m_pcStore->getParamGray8(1), photograph("coins.png"));
        const QString strIDs = "<InputID>%1</InputID><OutputID>%2</OutputID>";
        QCOMPARE(run("OCX_Threshold", strIDs.arg(1).arg(2) + "<Method>Adaptive</Method><Block>151</Block>"
                                                             "<Offset>20</Offset>"),
                 QString());
        QCOMPARE(run("OCX_Morphology", strIDs.arg(2).arg(2) + "<Operation>Close</Operation>"
                                                              "<Shape>Ellipse</Shape><Size>5</Size>"),
                 QString());
        QCOMPARE(run("OCX_Contours", "<InputID>2</InputID><PolysID>2</PolysID><MinArea>500</MinArea>"),
                 QString());
        QCOMPARE(m_pcStore->getParamPolys(2)->getPolyNum(), 24);
    }
};

QTEST_GUILESS_MAIN(TestSegmentation)
#include "tst_segmentation.moc"
