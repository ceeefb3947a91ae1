#include <ctime>

#include <opencv2/imgproc.hpp>

#include "datatable.h"
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
            works("OCX_HsvRange", TO_2 + "<Range>" + strRange + "</Range><Objects>" +
                                      (nRun % 2 ? "Outside" : "Inside") + "</Objects>");
            QVERIFY2(same(header(m_pcStore->getParamGray8(2)), cExpected), qPrintable(strRange));
        }
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
        step("TopHat", "", 1);
        step("BlackHat", "", 1);
        step("Erode", "<Shape>Cross</Shape><Iterations>2</Iterations>", 16 * 16 - 13);
        step("Dilate", "<Shape>Ellipse</Shape><Size>5</Size>", 22 * 24 + 2 * 20 + 17);
        step("Dilate", "<Iterations>4</Iterations>", 28 * 28 + 81);
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
            works("OCX_Morphology", strIDs + strConfig);
            const cv::Mat cResult = header(m_pcStore->getParamGray8(nOutputID));
            QCOMPARE(cv::countNonZero(cResult), nPixels);
            works("OCX_Morphology", strIDs + "<InputType>RGB</InputType>" + strConfig);
            cv::cvtColor(cResult, cColour, cv::COLOR_GRAY2BGR);
            QVERIFY(same(header(m_pcStore->getParamDIB(nOutputID)), cColour));
            cv::cvtColor(cPicture, cColour, cv::COLOR_GRAY2BGR);
        }
    }

    /// The thresholds are the difference of the grey levels at both sides, in any aperture.
    void edgesOfThePhotograph()
    {
        const cv::Mat cCoins = photograph("coins.png");
        const std::pair<int, int> acAperture[] = {{3, 4}, {5, 48}, {7, 640}}; // and a step's gradient
        for (const auto &[nAperture, nStep] : acAperture)
            for (const bool bLength : {false, true})
                for (const int nOutputID : {2, 1}) {
                    put(m_pcStore->getParamGray8(1), cCoins);
                    works("OCX_Edges",
                          QString("<InputID>1</InputID><OutputID>%1</OutputID><Low>20</Low>"
                                  "<High>50</High><Aperture>%2</Aperture><Gradient>%3</Gradient>")
                              .arg(nOutputID)
                              .arg(nAperture)
                              .arg(bLength ? "Length" : "Sum"));
                    cv::Mat cExpected;
                    cv::Canny(cCoins, cExpected, 20 * nStep, 50 * nStep, nAperture, bLength);
                    QVERIFY(cv::countNonZero(cExpected) > 1000);
                    QVERIFY(same(header(m_pcStore->getParamGray8(nOutputID)), cExpected));
                }
    }

    void outlines_data()
    {
        // The corners of each polygon; those of a hole's outline are cut, since its pixels touch there.
        addRows(
            "case          settings                                                   corners    parents\n"
            "no parent     <Which>Tree</Which><MaxArea>399</MaxArea>                  8 4 4 1    -1 0 -1 -1\n"
            "no hole       <Which>Tree</Which><MinArea>65</MinArea>                   4 4        -1 -1\n"
            "border        <Border>Drop</Border>                                      4 1        -\n"
            "all           <Approximation>All</Approximation>                         76 30 1    -\n"
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
        cv::Mat cPicture = drawing();
        drawRect(cPicture, 5, 5, 20, 20);
        drawRect(cPicture, 10, 10, 8, 8, 0);
        drawRect(cPicture, 12, 12, 4, 4, 1);
        drawRect(cPicture, 54, 20, 7, 10);
        drawRect(cPicture, 40, 35, 1, 1);
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

    void refuses_data()
    {
        // clang-format off
        addRows(
            "case           plugin    settings                         error\n"
            "no colour      HsvRange  <Range>0,90,0,10,80,255</Range>  Setting Range has a lowest saturation above the highest, so that no colour is in it.\n"
            "low over high  Edges     <Low>41</Low>                    Setting Low is \"41\", wanted is at most High, 40.\n"
            "no parents     Contours  <Which>Tree</Which>              Setting ParentsID is missing.");
        // clang-format on
    }

    void refuses()
    {
        QFETCH(QString, plugin);
        QFETCH(QString, settings);
        QFETCH(QString, error);
        put(m_pcStore->getParamDIB(1), cv::Mat(3, 5, CV_8UC3));
        put(m_pcStore->getParamGray8(1), cv::Mat(3, 5, CV_8UC1));
        QCOMPARE(run("OCX_" + plugin, TO_2 + "<PolysID>2</PolysID>" + settings), error);
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
            for (size_t n = 0; n < lstContour.size(); ++n) {
                const int nParent = lstLink[n][3];
                mapExpected[fnText(lstContour[n])] =
                    nParent < 0 ? "" : fnText(lstContour[static_cast<size_t>(nParent)]);
            }

            works("OCX_Contours", TO_LISTS + "<Which>Tree</Which><Approximation>All</Approximation>");
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
        works("OCX_Contours", TO_LISTS + "<Which>Tree</Which>");
        const double dSeconds = static_cast<double>(std::clock() - nBegin) / CLOCKS_PER_SEC;
        QVERIFY(m_pcStore->getParamLongs(3)->getLongs().size() > 100000);
        QVERIFY2(dSeconds < 10, qPrintable(QString::number(dSeconds)));
    }
};

QTEST_GUILESS_MAIN(TestSegmentation)
#include "tst_segmentation.moc"
