#include <QColor>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "Drawing/drawing.h"
#include "LoadFile/loading.h"
#include "SaveFile/saving.h"
#include "arithmparammgr.h"
#include "globalfunction.h"

namespace
{
/// A picture in which neighbouring pixels, rows and channels differ.
QImage pattern(int nWidth, int nHeight, QImage::Format eFormat)
{
    QImage cImage(nWidth, nHeight, QImage::Format_ARGB32);
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
            cImage.setPixel(x, y, qRgba(20 + 23 * x, 200 - 31 * y, (7 * x * y + 90) % 256, 255 - 10 * x));
    return cImage.convertToFormat(eFormat);
}

QImage indexed(int nWidth, int nHeight)
{
    QImage cImage(nWidth, nHeight, QImage::Format_Indexed8);
    QVector<QRgb> vecTable;
    for (int i = 0; i < 256; ++i)
        vecTable.append(qRgb(255 - i, (i * 7) % 256, i / 2));
    cImage.setColorTable(vecTable);
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
            cImage.scanLine(y)[x] = static_cast<uchar>(x * 17 + y * 5);
    return cImage;
}

QString tag(const char *szTag, const QString &strValue)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(szTag), strValue);
}

QString execute(char *(*fnExecute)(char *, ArithmParamMgr *), const QString &strConfig, ArithmParamMgr *pcAPM)
{
    QByteArray achConfig = strConfig.toUtf8();
    return QString::fromUtf8(fnExecute(achConfig.data(), pcAPM));
}
} // namespace

class TestImageFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_cDir;
    ArithmParamMgr *m_pcAPM = nullptr;

    QString path(const QString &strName) const { return m_cDir.filePath(strName); }
    QString load(const QString &strPath, bool bGrey, const QString &strID = QStringLiteral("3"))
    {
        return execute(Loading::execute,
                       tag("FilePath", strPath) + tag("OutputName", QStringLiteral("图")) +
                           tag("Describe", QStringLiteral("d")) + tag("BeGray", bGrey ? "1" : "0") +
                           tag("PicID", strID),
                       m_pcAPM);
    }
    QString save(const QString &strConfig)
    {
        return execute(Saving::execute, tag("BasePath", m_cDir.path()) + strConfig, m_pcAPM);
    }
    QStringList files() const { return QDir(m_cDir.path()).entryList(QDir::Files, QDir::Name); }

private slots:
    void init()
    {
        m_pcAPM = ArithmParamMgr::newInstance();
        for (const QString &strFile : files())
            QFile::remove(path(strFile));
    }
    void cleanup() { ArithmParamMgr::deleteInstance(m_pcAPM); }

    void loadsEveryFormatAndWidth_data()
    {
        QTest::addColumn<QString>("strFile");
        QTest::addColumn<QImage::Format>("eFormat");
        QTest::newRow("palette") << "palette.png" << QImage::Format_Indexed8;
        QTest::newRow("palette bmp") << "palette.bmp" << QImage::Format_Indexed8;
        QTest::newRow("grey png") << "grey.png" << QImage::Format_Grayscale8;
        QTest::newRow("24 bit") << "图 像 24.bmp" << QImage::Format_RGB888;
        QTest::newRow("32 bit with alpha") << "alpha.png" << QImage::Format_ARGB32;
        QTest::newRow("16 bit grey") << "grey16.png" << QImage::Format_Grayscale16;
        QTest::newRow("16 bit colour") << "deep.png" << QImage::Format_RGBA64;
        QTest::newRow("one bit") << "mono.png" << QImage::Format_Mono;
    }
    void loadsEveryFormatAndWidth()
    {
        QFETCH(QString, strFile);
        QFETCH(QImage::Format, eFormat);
        for (int nWidth = 1; nWidth <= 9; ++nWidth) {
            const QImage cWritten =
                eFormat == QImage::Format_Indexed8 ? indexed(nWidth, 4) : pattern(nWidth, 4, eFormat);
            QVERIFY(cWritten.save(path(strFile)));
            const QImage cDecoded(path(strFile));
            const bool bIndexed = cDecoded.format() == QImage::Format_Indexed8;

            QCOMPARE(load(path(strFile), false), QString());
            QCOMPARE(load(path(strFile), true), QString());
            const ParamDIB *pcDIB = m_pcAPM->getParamDIB(3);
            const ParamGray8 *pcGray8 = m_pcAPM->getParamGray8(3);
            QCOMPARE(pcDIB->getName(), QStringLiteral("图"));
            QCOMPARE(QSize(pcDIB->getWidth(), pcDIB->getHeight()), cDecoded.size());
            QCOMPARE(QSize(pcGray8->getWidth(), pcGray8->getHeight()), cDecoded.size());
            const int nStride = (nWidth * 3 + 3) / 4 * 4;
            for (int y = 0; y < 4; ++y) {
                for (int x = 0; x < nWidth; ++x) {
                    const uchar *puchPixel = pcDIB->getDIB() + y * nStride + x * 3;
                    const QList<int> lstFound{puchPixel[0], puchPixel[1], puchPixel[2]};
                    const int nGrey = pcGray8->getGray8()[y * nWidth + x];
                    if (bIndexed) {
                        const int nIndex = cDecoded.pixelIndex(x, y);
                        QCOMPARE(lstFound, (QList<int>{nIndex, nIndex, nIndex}));
                        QCOMPARE(nGrey, nIndex);
                    } else {
                        // Alpha is dropped, not blended; red comes first in memory and last in weight.
                        const QColor cColour =
                            cDecoded.convertToFormat(QImage::Format_RGB888).pixelColor(x, y);
                        QCOMPARE(lstFound, (QList<int>{cColour.red(), cColour.green(), cColour.blue()}));
                        QCOMPARE(nGrey, static_cast<int>(cColour.blue() * 0.299 + cColour.green() * 0.587 +
                                                         cColour.red() * 0.114));
                    }
                }
            }
        }
    }

    void weighsAsRuled()
    {
        QImage cImage(3, 1, QImage::Format_RGB888);
        cImage.setPixel(0, 0, qRgb(255, 0, 0));
        cImage.setPixel(1, 0, qRgb(0, 0, 255));
        cImage.setPixel(2, 0, qRgb(0, 255, 0));
        QVERIFY(cImage.save(path("weights.bmp")));
        load(path("weights.bmp"), true);
        const uchar *puchGrey = m_pcAPM->getParamGray8(3)->getGray8();
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(puchGrey), 3), QByteArray("\x1d\x4c\x95", 3));
    }

    void badFilesLeaveTheStoreAsItIs()
    {
        QVERIFY(pattern(5, 5, QImage::Format_RGB888).save(path("good.png")));
        QFile cGood(path("good.png"));
        QVERIFY(cGood.open(QIODevice::ReadOnly));
        QFile cCut(path("cut.png"));
        QVERIFY(cCut.open(QIODevice::WriteOnly));
        cCut.write(cGood.read(40));
        cCut.close();
        for (const QString &strPath : {path("missing.png"), path("cut.png"), m_cDir.path(), QString()}) {
            QCOMPARE(load(strPath, false), QString());
            QVERIFY(m_pcAPM->requestParamDIBMap()->isEmpty());
        }
        QCOMPARE(execute(Loading::execute, tag("FilePath", path("good.png")), nullptr), QString());
        // Neither a number nor grey: a colour picture under a fresh ID.
        load(path("good.png"), false, QStringLiteral("abc"));
        QCOMPARE(m_pcAPM->requestParamDIBMap()->size(), 1);
        QVERIFY(m_pcAPM->requestParamDIBMap()->firstKey() >= 1);
    }

    void namesFiles_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QString>("strPattern");
        const QString strGrey = tag("Wnd", "4") + tag("PicType", "Gray") + tag("PicID", "1");
        QTest::newRow("number last") << tag("StringID", "cam") + tag("Separator", "_") +
                                            tag("Identity", "1") + tag("Format", "1") + strGrey
                                     << "^cam_[0-9]+\\.png$";
        QTest::newRow("number first")
            << tag("StringID", "cam") + tag("Separator", "_") + tag("Identity", "1") + tag("Format", "1") +
                   tag("Exg", "1") + strGrey
            << "^[0-9]+_cam\\.png$";
        QTest::newRow("time") << tag("StringID", "x") + strGrey
                              << "^x\\[20\\d\\d\\.\\d+\\.\\d+\\]\\[\\d+\\.\\d+\\.\\d+\\]\\[\\d+\\]\\.jpg$";
        QTest::newRow("no identity") << tag("StringID", "相 机") + tag("Identity", "2") + tag("Format", "2") +
                                            strGrey
                                     << "^相 机\\.bmp$";
        QTest::newRow("stored name") << tag("StringID", "9") + tag("IsStringID", "1") + tag("Identity", "2") +
                                            tag("Format", "1") + strGrey
                                     << "^零件\\.png$";
        QTest::newRow("empty stored list") << tag("StringID", "8") + tag("IsStringID", "1") +
                                                  tag("Identity", "2") + tag("Format", "1") + strGrey
                                           << "^\\.png$";
        QTest::newRow("no format") << tag("StringID", "cam") + tag("Identity", "2") + tag("Format", "7") +
                                          strGrey
                                   << QString();
        QTest::newRow("unknown type")
            << tag("StringID", "a") + tag("Wnd", "4") + tag("PicType", "Gray8") + tag("PicID", "1")
            << QString();
        QTest::newRow("negative ID") << tag("StringID", "a") + tag("Wnd", "4") + tag("PicType", "Gray") +
                                            tag("PicID", "-1")
                                     << QString();
        QTest::newRow("empty picture")
            << tag("StringID", "a") + tag("Wnd", "4") + tag("PicType", "RGB") + tag("PicID", "5")
            << QString();
        QTest::newRow("no such view") << tag("StringID", "a") + tag("Wnd", "5") << QString();
        QTest::newRow("view never announced") << tag("StringID", "a") + tag("Wnd", "3") << QString();
    }
    void namesFiles()
    {
        QFETCH(QString, strConfig);
        QFETCH(QString, strPattern);
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        m_pcAPM->getParamStrings(9)->addString(QStringLiteral("零件"));
        QCOMPARE(save(strConfig), QString());
        const QStringList lstFiles = QDir(m_cDir.path()).entryList(QDir::Files | QDir::Hidden);
        QCOMPARE(lstFiles.size(), strPattern.isEmpty() ? 0 : 1);
        if (!lstFiles.isEmpty()) {
            QVERIFY2(QRegularExpression(strPattern).match(lstFiles.first()).hasMatch(),
                     qPrintable(lstFiles.first()));
            QFile::remove(path(lstFiles.first()));
        }
    }

    void theRunningNumberAdvancesWithoutAFile()
    {
        const QString strNumbered =
            tag("Identity", "1") + tag("Format", "1") + tag("Wnd", "4") + tag("PicID", "1");
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        save(strNumbered + tag("PicType", "Gray"));
        save(strNumbered + tag("PicType", "none"));
        save(strNumbered + tag("PicType", "Gray"));
        QStringList lstFiles = files();
        QCOMPARE(lstFiles.size(), 2);
        QList<int> lstNumbers;
        for (const QString &strFile : lstFiles)
            lstNumbers.append(QFileInfo(strFile).baseName().toInt());
        std::sort(lstNumbers.begin(), lstNumbers.end());
        QCOMPARE(lstNumbers.last() - lstNumbers.first(), 2);
    }

    void savesPixelsOfEveryWidth_data()
    {
        QTest::addColumn<QString>("strFormat");
        QTest::addColumn<QString>("strSuffix");
        QTest::newRow("png") << "1"
                             << ".png";
        QTest::newRow("bmp") << "2"
                             << ".bmp";
    }
    void savesPixelsOfEveryWidth()
    {
        QFETCH(QString, strFormat);
        QFETCH(QString, strSuffix);
        const QString strConfig = tag("StringID", "p") + tag("Identity", "2") + tag("Format", strFormat) +
                                  tag("Wnd", "4") + tag("PicID", "1");
        for (int nWidth = 1; nWidth <= 9; ++nWidth) {
            const QImage cPattern = pattern(nWidth, 3, QImage::Format_RGB888);
            ParamDIB *pcDIB = m_pcAPM->getParamDIB(1);
            ParamGray8 *pcGray8 = m_pcAPM->getParamGray8(1);
            pcDIB->resize(nWidth, 3);
            pcGray8->resize(nWidth, 3);
            memcpy(pcDIB->getDIB(), cPattern.constBits(), static_cast<size_t>(cPattern.sizeInBytes()));
            for (int i = 0; i < nWidth * 3; ++i)
                pcGray8->getGray8()[i] = static_cast<uchar>(i * 9);

            // The store's first byte is saved as blue; a second save finds the bytes exchanged.
            save(strConfig + tag("PicType", "RGB"));
            QCOMPARE(QImage(path("p" + strSuffix)).convertToFormat(QImage::Format_RGB888),
                     cPattern.rgbSwapped());
            QCOMPARE(pcDIB->getDIB()[0], cPattern.constBits()[2]);
            save(strConfig + tag("PicType", "RGB"));
            QCOMPARE(QImage(path("p" + strSuffix)).convertToFormat(QImage::Format_RGB888), cPattern);

            save(strConfig + tag("PicType", "Gray"));
            const QImage cGrey(path("p" + strSuffix));
            QCOMPARE(cGrey.width(), nWidth);
            for (int i = 0; i < nWidth * 3; ++i)
                QCOMPARE(qGray(cGrey.pixel(i % nWidth, i / nWidth)), i * 9);
        }
    }

    void aLongStoredNameIsCutToTheBuffer()
    {
        // No file can have so long a name: what is left of the buffer's length is the directory part.
        QString strLong = QStringLiteral("d/").repeated(600);
        m_pcAPM->getParamStrings(1)->addString(strLong);
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        const int nLimit = Saving::s_nBuffLen - 1;
        save(tag("StringID", "1") + tag("IsStringID", "1") + tag("Wnd", "4") + tag("PicType", "Gray") +
             tag("PicID", "1"));
        QCOMPARE(static_cast<int>(qstrlen(Saving::s_pchConfigStr)), nLimit);
        QVERIFY(files().isEmpty());
    }

    void makesOneLevelOfDirectories()
    {
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        const QString strConfig = tag("StringID", "a") + tag("Identity", "2") + tag("Format", "1") +
                                  tag("PicType", "Gray") + tag("PicID", "1");
        execute(Saving::execute, tag("BasePath", path("new")) + strConfig + tag("Wnd", "4"), m_pcAPM);
        QVERIFY(QFile::exists(path("new/a.png")));
        execute(Saving::execute, tag("BasePath", path("made")) + strConfig + tag("Wnd", "9"), m_pcAPM);
        QVERIFY(QDir(path("made")).exists());
        execute(Saving::execute, tag("BasePath", path("x/y")) + strConfig + tag("Wnd", "4"), m_pcAPM);
        QVERIFY(!QDir(path("x")).exists());
    }

    void savingAViewEmptiesIt()
    {
        GlobalFunction *pcViews = GlobalFunction::getInstance();
        pcViews->addView(2, 6, 5);
        uchar auchGrey[] = {10, 20, 30, 40, 50, 60};
        GlobalFunction::ViewDrawOption *pcView = pcViews->requestViewDrawOption(2);
        QVERIFY(pcView != nullptr);
        for (int i = 0; i < 3; ++i) {
            auto *pcObject = new Drawing::Gray8DrawingOpt(1, auchGrey, 3, 2);
            pcObject->setAlignType(1);
            pcObject->setViewID(2);
            pcObject->m_pcAPM = m_pcAPM;
            pcView->pushDrawingOpt(pcObject);
        }
        pcViews->releaseViewDrawOption(2, pcView);

        const QString strConfig =
            tag("StringID", "view") + tag("Identity", "2") + tag("Format", "1") + tag("Wnd", "2");
        save(strConfig);
        const QImage cImage(path("view.png"));
        QCOMPARE(cImage.size(), QSize(6, 5));
        QCOMPARE(cImage.pixel(0, 0), qRgb(10, 10, 10));
        QCOMPARE(cImage.pixel(1, 1), qRgb(50, 50, 50));
        QCOMPARE(cImage.pixel(5, 4), qRgb(0, 0, 0));

        QFile::remove(path("view.png"));
        save(strConfig);
        QVERIFY(files().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestImageFiles)
#include "tst_imagefiles.moc"
