#include <opencv2/imgproc.hpp>

#include <functional>

#include <QDir>
#include <QtTest>

#include "OculinexQTStandAloneInQt.h"
#include "pluginfixture.h"

using Expected = std::function<void(const cv::Mat &, cv::Mat &)>;
Q_DECLARE_METATYPE(Expected)

/// The image-processing plug-ins, as the registry finds them beside the executable.
class TestPlugins : public PluginTest
{
    Q_OBJECT

private slots:
    void init() { newStore(); }

    void computesAsOpenCV_data()
    {
        QTest::addColumn<QString>("strID");
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<bool>("bColour"); // of the input
        QTest::addColumn<Expected>("fnExpected");
        const auto step = [](const char *szID, const QByteArray &achConfig, bool bColour,
                             const Expected &fn) {
            QTest::addRow("%s %s", szID, achConfig.constData())
                << QString(szID) << QString(achConfig) << bColour << fn;
        };
        step("OCX_ToGray", "", true,
             [](const cv::Mat &cIn, cv::Mat &cOut) { cv::cvtColor(cIn, cOut, cv::COLOR_BGR2GRAY); });
        step("OCX_ToGray", "<Channel>red</Channel>", true,
             [](const cv::Mat &cIn, cv::Mat &cOut) { cv::extractChannel(cIn, cOut, 2); });
        step("OCX_Threshold", "", false, [](const cv::Mat &cIn, cv::Mat &cOut) {
            cv::threshold(cIn, cOut, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
        });
        step("OCX_Threshold", "<Method>Fixed</Method><Level>100</Level><Polarity>Dark</Polarity>", false,
             [](const cv::Mat &cIn, cv::Mat &cOut) { cOut = cIn <= 100; });
        step("OCX_Threshold", "<Method>Adaptive</Method><Block>7</Block><Offset>20</Offset>", false,
             [](const cv::Mat &cIn, cv::Mat &cOut) {
                 cv::Mat cMean;
                 cv::blur(cIn, cMean, {7, 7}, {-1, -1}, cv::BORDER_REPLICATE);
                 cOut = cIn > cMean + 20;
             });
        step("OCX_Blur", "<InputType>RGB</InputType><Size>7</Size><Sigma>1.5</Sigma>", true,
             [](const cv::Mat &cIn, cv::Mat &cOut) {
                 cv::GaussianBlur(cIn, cOut, {7, 7}, 1.5);
             });
        step("OCX_Blur", "<Method>Median</Method>", false,
             [](const cv::Mat &cIn, cv::Mat &cOut) { cv::medianBlur(cIn, cOut, 5); });
        // The levels are the difference of grey at both sides: with the gradient of a step, in any square.
        for (const auto &[nAperture, nStep] : {std::pair(3, 4), {5, 48}, {7, 640}})
            for (const bool bLength : {false, true})
                step("OCX_Edges",
                     "<Low>20</Low><High>50</High><Aperture>" + QByteArray::number(nAperture) +
                         "</Aperture><Gradient>" + (bLength ? "Length" : "Sum") + "</Gradient>",
                     false, [=, nSide = nAperture, nScale = nStep](const cv::Mat &cIn, cv::Mat &cOut) {
                         cv::Canny(cIn, cOut, 20 * nScale, 50 * nScale, nSide, bLength);
                     });
        // Hues go round through red; where a range begins right behind its end, it is all of them.
        for (const auto &[nLowHue, nHighHue] : {std::pair(20, 100), {0, 179}, {170, 10}, {100, 99}})
            for (const bool bOutside : {false, true})
                step("OCX_HsvRange",
                     QString("<Range>%1,50,9,%2,200,240</Range><Objects>%3</Objects>")
                         .arg(nLowHue)
                         .arg(nHighHue)
                         .arg(bOutside ? "Outside" : "Inside")
                         .toUtf8(),
                     true, [=, nLow = nLowHue, nHigh = nHighHue](const cv::Mat &cIn, cv::Mat &cOut) {
                         std::vector<cv::Mat> lstHsv;
                         cv::Mat cHsv;
                         cv::cvtColor(cIn, cHsv, cv::COLOR_BGR2HSV);
                         cv::split(cHsv, lstHsv);
                         const cv::Mat cFrom = lstHsv[0] >= nLow;
                         const cv::Mat cTo = lstHsv[0] <= nHigh;
                         cOut = nLow > nHigh ? cFrom | cTo : cFrom & cTo;
                         cOut &=
                             (lstHsv[1] >= 50) & (lstHsv[1] <= 200) & (lstHsv[2] >= 9) & (lstHsv[2] <= 240);
                         if (bOutside)
                             cOut = ~cOut;
                     });
        const auto morphology = [&](const QByteArray &achSettings, bool bColour, int nOperation,
                                    const cv::Mat &cShape, int nIterations) {
            step("OCX_Morphology", achSettings, bColour, [=](const cv::Mat &cIn, cv::Mat &cOut) {
                cv::morphologyEx(cIn, cOut, nOperation, cShape, {-1, -1}, nIterations);
            });
        };
        const char *const aszOperation[] = {"Erode",    "Dilate", "Open",    "Close",
                                            "Gradient", "TopHat", "BlackHat"}; // as OpenCV counts them
        for (int nOperation = 0; nOperation < 7; ++nOperation)
            morphology(QByteArray("<Shape>Ellipse</Shape><Size>5</Size><Operation>") +
                           aszOperation[nOperation] + "</Operation>",
                       false, nOperation, cv::getStructuringElement(cv::MORPH_ELLIPSE, {5, 5}), 1);
        morphology("<InputType>RGB</InputType><Operation>Dilate</Operation><Iterations>4</Iterations>", true,
                   cv::MORPH_DILATE, cv::getStructuringElement(cv::MORPH_RECT, {3, 3}), 4);
    }

    void computesAsOpenCV()
    {
        QFETCH(QString, strID);
        QFETCH(QString, strConfig);
        QFETCH(bool, bColour);
        QFETCH(Expected, fnExpected);
        cv::Mat cExpected;
        // Into a picture of its own, again (the buffer must be kept), then in place.
        for (const int nOutputID : {2, 2, 1}) {
            const cv::Mat cInput = bColour ? fill(m_pcStore->getParamDIB(1), nOutputID)
                                           : fill(m_pcStore->getParamGray8(1), nOutputID);
            fnExpected(cInput, cExpected);
            const bool bColourOut = cExpected.channels() == 3;
            const auto pixels = [&] {
                return bColourOut ? header(m_pcStore->getParamDIB(nOutputID))
                                  : header(m_pcStore->getParamGray8(nOutputID));
            };
            const void *pvBefore = pixels().data;
            works(strID, QString("<InputID>1</InputID><OutputID>%1</OutputID>").arg(nOutputID) + strConfig);
            QVERIFY2(same(pixels(), cExpected), qPrintable(QString("into %1").arg(nOutputID)));
            QVERIFY(!pvBefore || pvBefore == pixels().data);
        }
    }

    void labelsAsOpenCV()
    {
        for (int nSeed = 0; nSeed < 75; ++nSeed) {
            const int nNeighbours = nSeed % 3 == 0 ? 8 : 4;
            const bool bDark = nSeed % 3 == 1;
            ParamGray8 *pcPicture = m_pcStore->getParamGray8(1);
            fill(pcPicture, nSeed, 60 + nSeed % 25, 80 - nSeed % 25);
            const int anPercent[] = {0, 5, 41, 59, 100}; // of the pixels are set
            cv::Mat cObjects = header(pcPicture);
            cv::threshold(cObjects, cObjects, 255 * (1 - anPercent[nSeed % 5] / 100.0), 255,
                          cv::THRESH_BINARY);
            cObjects = bDark ? cv::Mat(cObjects == 0) : cObjects.clone();
            cv::Mat cLabels;
            cv::Mat cStats;
            cv::Mat cCentres;
            const int nCount =
                cv::connectedComponentsWithStats(cObjects, cLabels, cStats, cCentres, nNeighbours) - 1;

            works("OCX_Blobs", QString("<InputID>1</InputID><AreasID>3</AreasID><StringsID>4</StringsID>"
                                       "<Neighbours>%1</Neighbours><Polarity>%2</Polarity>")
                                   .arg(nNeighbours)
                                   .arg(bDark ? "Dark" : "Bright"));
            const QList<ParamAreas::Area> lstArea = m_pcStore->getParamAreas(3)->getAreas();
            QCOMPARE(lstArea.size(), nCount);
            QSet<int> setLabel;
            int nLastSeed = -1;
            for (const ParamAreas::Area &cArea : lstArea) {
                const int nLabel = cLabels.at<int>(cArea.seedy, cArea.seedx);
                setLabel.insert(nLabel);
                QVERIFY(nLabel > 0);
                const int *pnStat = cStats.ptr<int>(nLabel);
                QCOMPARE(cArea.size, pnStat[cv::CC_STAT_AREA]);
                QCOMPARE(cArea.bounds[0], pnStat[cv::CC_STAT_TOP]);
                QCOMPARE(cArea.bounds[1], pnStat[cv::CC_STAT_TOP] + pnStat[cv::CC_STAT_HEIGHT] - 1);
                QCOMPARE(cArea.bounds[2], pnStat[cv::CC_STAT_LEFT]);
                QCOMPARE(cArea.bounds[3], pnStat[cv::CC_STAT_LEFT] + pnStat[cv::CC_STAT_WIDTH] - 1);
                const int nSeedPos = cArea.seedy * cObjects.cols + cArea.seedx;
                QVERIFY2(nSeedPos > nLastSeed, "areas stand from top left to bottom right");
                nLastSeed = nSeedPos;
            }
            QCOMPARE(setLabel.size(), nCount);
        }
    }

    void steersTheFlow()
    {
        ParamGray8 *pcPicture = m_pcStore->getParamGray8(0);
        pcPicture->resize(20, 10);
        cv::Mat cPixels = header(pcPicture);
        cPixels = 0;
        cPixels(cv::Rect(2, 2, 4, 3)) = 255;
        cPixels(cv::Rect(10, 4, 2, 2)) = 1;
        cPixels(cv::Rect(19, 9, 1, 1)) = 255;
        const QString strIDs = "<InputID>0</InputID><AreasID>1</AreasID><StringsID>1</StringsID>";
        QCOMPARE(run("OCX_Blobs", strIDs + "<MinSize>2</MinSize><MaxSize>11</MaxSize><Print>1</Print>"),
                 "<CMD>print:1 objects, 4 pixels</CMD>");
        QCOMPARE(run("OCX_Blobs", strIDs +
                                      "<MinSize>13</MinSize><MinCount>1</MinCount>"
                                      "<WhenInside>skip:2</WhenInside><WhenOutside>stop:none</WhenOutside>"),
                 "<CMD>stop:none</CMD>");
        works("OCX_Blobs", strIDs + "<Border>Drop</Border>");
        QCOMPARE(m_pcStore->getParamStrings(1)->getStrings(), QList<QString>{"2 objects"});
    }

    void countsOnThePhotographs()
    {
        // The flows name their files from the top of the tree; what they save stays out of it.
        const QTemporaryDir cTree;
        QVERIFY(QFile::link(OCULINEX_SOURCE_DIR "/examples", cTree.filePath("examples")));
        QVERIFY(QDir(cTree.path()).mkdir("build"));
        QVERIFY(QDir::setCurrent(cTree.path()));
        QCOMPARE(openTasksFile(const_cast<char *>("examples/coins.tasks")), "");
        startAllTasks();
        QStringList lstPrinted;
        char szText[256];
        const auto fnAllPrinted = [&] {
            while (getOutputMsg(szText, sizeof szText) >= 0)
                lstPrinted << szText;
            return lstPrinted.size() >= 10;
        };
        QTRY_VERIFY_WITH_TIMEOUT(fnAllPrinted(), 120000);
        stopAllTasks();
        QCOMPARE(getErrMsg(szText, sizeof szText), -1);

        const QString strPrinted = lstPrinted.join('\n');
        // A person counts 24 coins and, on the launch pad, 7 lamps and a rocket; the sky takes the other
        // branch.
        for (const char *szWanted :
             {"24 coins,", "8 bright things,", "0 lamps", "7 lamps,", "a deep field of galaxies."})
            QVERIFY2(strPrinted.contains(szWanted), qPrintable(strPrinted));
    }
};

QTEST_GUILESS_MAIN(TestPlugins)
#include "tst_plugins.moc"
