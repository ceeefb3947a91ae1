#include <QColor>
#include <QDir>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <malloc.h>
#include <sys/stat.h>

#include "Drawing/drawing.h"
#include "LoadFile/loading.h"
#include "SaveFile/saving.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "fixtures/limit.h"
#include "fixtures/row.h"
#include "fixtures/together.h"
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

    QString load(const QString &strPath, bool bGrey)
    {
        return execute(Loading::execute,
                       tag("FilePath", strPath) + tag("OutputName", "图") + tag("BeGray", bGrey ? "1" : "2") +
                           tag("PicID", "3"),
                       m_pcAPM);
    }
    /// What load() has put into the store's colour pictures.
    QImage loaded()
    {
        const ParamDIB *pcDIB = m_pcAPM->getParamDIB(3);
        return {pcDIB->getDIB(), pcDIB->getWidth(), pcDIB->getHeight(), QImage::Format_RGB888};
    }
    QString save(const QString &strConfig)
    {
        return execute(Saving::execute, strConfig + tag("BasePath", "."), m_pcAPM);
    }
    static void write(const QString &strName, const QByteArray &achContents)
    {
        QFile cFile(strName);
        QVERIFY(cFile.open(QIODevice::WriteOnly));
        QCOMPARE(cFile.write(achContents), qint64(achContents.size()));
    }
    static QByteArray read(const QString &strName)
    {
        QFile cFile(strName);
        return cFile.open(QIODevice::ReadOnly) ? cFile.readAll() : QByteArray();
    }
    /// Saves the grey picture 1 under just that name. Tags that stand before these replace them.
    static QString greyTo(const char *szName, const char *szFormat)
    {
        return tag("StringID", szName) + tag("Identity", "2") + tag("Format", szFormat) + tag("Wnd", "4") +
               tag("PicType", "Gray") + tag("PicID", "1");
    }
    static QStringList files() { return QDir().entryList(QDir::Files | QDir::Hidden); }

private slots:
    void initTestCase() { QVERIFY(QDir::setCurrent(m_cDir.path())); }
    void init()
    {
        m_pcAPM = ArithmParamMgr::newInstance();
        for (const QString &strFile : files())
            QFile::remove(strFile);
    }
    void cleanup() { ArithmParamMgr::deleteInstance(m_pcAPM); }

    void loadsEveryFormatAndWidth_data()
    {
        QTest::addColumn<QImage::Format>("eFormat");
        row("palette.png", QImage::Format_Indexed8);
        row("grey.png", QImage::Format_Grayscale8);
        row("图 像 24.bmp", QImage::Format_RGB888);
        row("alpha.png", QImage::Format_ARGB32);
        row("16 bit colour.png", QImage::Format_RGBA64);
        row("overstates its bytes.ico", QImage::Format_ARGB32);
    }
    void loadsEveryFormatAndWidth()
    {
        QFETCH(QImage::Format, eFormat);
        const QString strFile = QTest::currentDataTag();
        for (int nWidth : {1, 2, 3, 4, 5, 6, 7, 8, 9, 250}) {
            QVERIFY(pattern(nWidth, 4, eFormat).save(strFile));
            if (strFile.endsWith("ico"))
                write(strFile, read(strFile).replace(14, 4, "\xFF\xFF\xFF\x7F"));
            const QImage cDecoded(strFile);
            QCOMPARE(load(strFile, false), QString());
            QCOMPARE(load(strFile, true), QString());
            // Alpha is dropped, not blended; red comes first in memory and last in weight.
            QImage cColour = cDecoded.convertToFormat(QImage::Format_RGB888);
            QImage cGrey(cDecoded.size(), QImage::Format_Grayscale8);
            for (int n = 0; n < nWidth * 4; ++n) {
                const QColor cPixel = cColour.pixelColor(n % nWidth, n / nWidth);
                cGrey.scanLine(n / nWidth)[n % nWidth] =
                    static_cast<uchar>(cPixel.blue() * 0.299 + cPixel.green() * 0.587 + cPixel.red() * 0.114);
            }
            if (cDecoded.format() == QImage::Format_Indexed8) { // the indices count, not the palette
                cGrey = cDecoded;
                cGrey.reinterpretAsFormat(QImage::Format_Grayscale8);
                cColour = cGrey.convertToFormat(QImage::Format_RGB888);
            }
            const ParamGray8 *pcGray8 = m_pcAPM->getParamGray8(3);
            QCOMPARE(pcGray8->getName(), "图");
            QCOMPARE(loaded(), cColour);
            QCOMPARE(QImage(pcGray8->getGray8(), pcGray8->getWidth(), pcGray8->getHeight(), nWidth,
                            QImage::Format_Grayscale8),
                     cGrey);
        }
    }

    void refusesFiles_data()
    {
        QTest::addColumn<QByteArray>("achContents"); // or "> target" of a link
        QTest::addColumn<QString>("strReason");      // that the log tells
        const QString strSpecial = "it is no regular file";
        row("cut", QByteArray("\x89PNG\r\n\x1a\n"), QString());
        row("fits no colour picture",
            QByteArray("#define a_width 32767\n#define a_height 32767\nstatic char a_bits[] = {0x00};"),
            QString("32767 x 32767 pixels are too many"));
        // One that says 1 x 1 of its first part, and 30000 x 30000 further on.
        row("large screen", QByteArray::fromBase64("R0lGODlhMHUwdYAAAAUEBAAAACwAAAAAAQABAAACAkQBADs="),
            QString("30000 x 30000 pixels are too many"));
        row("largest picture in an icon",
            QByteArray::fromBase64("AAABAAEAAQEAAAEAIAA5AAAAFgAAAIlQTkcNChoKAAAADUlIRFJ/////f////wEAAAAATlzF"
                                   "FwAAAAxJREFUeJxjYGBgAAAABAAB9hc4VQ=="),
            QString("2147483647 x 2147483647 pixels are too many"));
        row("reads a pipe",
            "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink'>"
            "<image width='9' height='9' xlink:href='" +
                QFile::encodeName(QDir::current().filePath("pipe")) + "'/></svg>",
            // The latter where Qt has no plug-in for it.
            QString("(SVG is not supported|Unsupported image format)"));
        row("missing", QByteArray("> nowhere"), QString("No such file"));
        row("pipe", QByteArray("> pipe"), strSpecial);
        row("device", QByteArray("> /dev/zero"), strSpecial);
        row("directory", QByteArray("> ."), strSpecial);
    }
    void refusesFiles()
    {
        QFETCH(QByteArray, achContents);
        QFETCH(QString, strReason);
        QVERIFY(mkfifo("pipe", 0600) == 0);
        if (achContents.startsWith('>'))
            QVERIFY(QFile::link(achContents.mid(2), "bad.png"));
        else
            write("bad.png", achContents);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot load .*bad.png: " + strReason));
        load("bad.png", false); // would wait for ever for the pipe
        QVERIFY(m_pcAPM->requestParamDIBMap()->isEmpty());
        if (strReason == "it is no regular file") {
            m_pcAPM->getParamGray8(1)->resize(4, 2);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*bad.png: .*regular"));
            save(greyTo("bad", "1"));
        }
        QFile::remove("pipe");
        QFile::remove("bad.png");
    }

    /// As Qt reads them; what a file lacks is black.
    void variantsOfBmpAreReadAlike_data()
    {
        QTest::addColumn<int>("nOffset");
        QTest::addColumn<QByteArray>("achBytes");
        const QByteArray achFromTop("\x90\xfe\xff\xff", 4); // the height: -368
        row("as written", 0, QByteArray("B"));
        row("top row first", 22, achFromTop);
        row("lower than its pixels", 22, QByteArray("\x03\0\0\0", 4));
        row("pixels further on", 10, QByteArray("\x3c"));
        row("bit fields", 30, QByteArray("\x03"));
        row("no pixel wide", 18, QByteArray("\0\0", 2));
        row("cut", 0, QByteArray("B"));
    }
    void variantsOfBmpAreReadAlike()
    {
        QFETCH(int, nOffset);
        QFETCH(QByteArray, achBytes);
        const bool bCut = QByteArray("cut") == QTest::currentDataTag();
        const QSize cSize(333, 368); // more than is read at once
        QVERIFY(pattern(cSize.width(), cSize.height(), QImage::Format_RGB888).save("a.bmp"));
        // Some bytes more, for the pixels that stand further on.
        const QByteArray achFile =
            read("a.bmp").replace(nOffset, achBytes.size(), achBytes) + QByteArray(6, '\0');
        write("a.bmp", bCut ? achFile.left(54 + 3) : achFile); // in the first row of pixels
        QImage cExpected(cSize, QImage::Format_RGB888);
        cExpected.fill(Qt::black);
        if (!bCut)
            cExpected = QImage("a.bmp").convertToFormat(QImage::Format_RGB888);
        if (cExpected.isNull())
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot load .*a.bmp: "));
        mallopt(M_PERTURB, 0x5a); // what is not written shows
        load("a.bmp", false);
        mallopt(M_PERTURB, 0);
        QCOMPARE(m_pcAPM->requestParamDIBMap()->isEmpty(), cExpected.isNull());
        QCOMPARE(loaded(), cExpected);
    }

    void aFailedSaveLeavesNoFileAndSpoilsNone()
    {
        write("notes", "precious"); // the name without a format
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*notes: "));
        save(greyTo("notes", "7"));
        QCOMPARE(read("notes"), QByteArray("precious"));
        QFile::remove("notes");

        // A disk that is full takes a part, which only the flush at the end can tell.
        QVERIFY(QFile::link("target.png", "link.png"));
        m_pcAPM->getParamGray8(1)->resize(30, 30);
        signal(SIGXFSZ, SIG_IGN);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*link.png: "));
        {
            const Limit cLimit(RLIMIT_FSIZE, 60);
            save(greyTo("link", "1"));
        }
        QCOMPARE(files(), QStringList());
        save(greyTo("link", "1"));
        QCOMPARE(QImage("target.png").width(), 30);
    }

    void tasksThatSaveOneFileAtOnceDoNotMixIt()
    {
        ArithmParamMgr acAPM[2];
        QList<QByteArray> lstAlone;
        const QString strConfig = tag("BasePath", ".") + greyTo("both", "1");
        for (ArithmParamMgr &cAPM : acAPM) {
            const int nSide = &cAPM == acAPM ? 200 : 240;
            cAPM.getParamGray8(1)->resize(nSide, nSide);
            QRandomGenerator::global()->fillRange(
                reinterpret_cast<quint32 *>(cAPM.getParamGray8(1)->getGray8()), nSide * nSide / 4);
            execute(Saving::execute, strConfig, &cAPM);
            lstAlone.append(read("both.png"));
        }
        for (int i = 0; i < 40; ++i) {
            together(2, [&](int nTask) { execute(Saving::execute, strConfig, &acAPM[nTask]); });
            QVERIFY(lstAlone.contains(read("both.png")));
        }
    }

    void namesFiles_data()
    {
        addRows("case               settings                         pattern\n"
                "number last        Identity=1;Separator=_           cam_[0-9]+\\.png\n"
                "number first       Identity=1;Separator=_;Exg=1     [0-9]+_cam\\.png\n"
                "time               Identity=0                       "
                "cam\\[20\\d\\d\\.\\d+\\.\\d+\\]\\[\\d+\\.\\d+\\.\\d+\\]\\[\\d+\\]\\.png\n"
                "no identity        StringID=相 机                   相 机\\.png\n"
                "stored name        StringID=9;IsStringID=1          零件\\.png\n"
                "no format          Format=7                         -\n"
                "empty picture      PicType=RGB;PicID=5              -\n"
                "view never shown   Wnd=3                            -");
    }
    void namesFiles()
    {
        QFETCH(QString, settings);
        QFETCH(QString, pattern);
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        m_pcAPM->getParamDIB(0)->resize(4, 2);
        m_pcAPM->getParamStrings(9)->addString(QStringLiteral("零件"));
        if (pattern.isEmpty())
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*cam.*: "));
        QString strConfig;
        for (const QString &strSetting : settings.split(';'))
            strConfig += tag(qPrintable(strSetting.section('=', 0, 0)), strSetting.section('=', 1));
        QCOMPARE(save(strConfig + greyTo("cam", "1")), QString());
        const QString strFiles = files().join(' ');
        QVERIFY2(QRegularExpression('^' + pattern + '$').match(strFiles).hasMatch(), qPrintable(strFiles));
    }

    void savesPixelsOfEveryWidth()
    {
        for (const QString strFormat : {"1", "2"}) {
            const QString strFile = strFormat == "1" ? "p.png" : "p.bmp";
            const QString strGrey = greyTo("p", qPrintable(strFormat));
            const QString strColour = tag("PicType", "RGB") + strGrey;
            for (int nWidth = 1; nWidth <= 9; ++nWidth) {
                QImage cPattern = pattern(nWidth, 3, QImage::Format_RGB888);
                ParamDIB *pcDIB = m_pcAPM->getParamDIB(1);
                pcDIB->resize(nWidth, 3);
                memcpy(pcDIB->getDIB(), cPattern.constBits(), static_cast<size_t>(cPattern.sizeInBytes()));
                // The store's first byte is saved as blue; a second save finds the bytes exchanged.
                for (int n = 0; n < 2; ++n) {
                    cPattern = cPattern.rgbSwapped();
                    save(strColour);
                    QCOMPARE(QImage(strFile).convertToFormat(QImage::Format_RGB888), cPattern);
                    QCOMPARE(pcDIB->getDIB()[0], cPattern.constBits()[0]);
                }

                ParamGray8 *pcGray8 = m_pcAPM->getParamGray8(1);
                pcGray8->resize(nWidth, 3);
                for (int i = 0; i < nWidth * 3; ++i)
                    pcGray8->getGray8()[i] = static_cast<uchar>(i * 9);
                save(strGrey);
                QCOMPARE(QImage(strFile).convertToFormat(QImage::Format_Grayscale8),
                         QImage(pcGray8->getGray8(), nWidth, 3, nWidth, QImage::Format_Grayscale8));
            }
        }
    }

    void aLongStoredNameIsCutToTheBuffer()
    {
        // No file can have so long a name: what is left of the buffer's length is the directory part.
        m_pcAPM->getParamStrings(1)->addString(QStringLiteral("d/").repeated(600));
        m_pcAPM->getParamGray8(1)->resize(4, 2);
        const int nLimit = Saving::s_nBuffLen - 1;
        save(tag("IsStringID", "1") + greyTo("1", "0"));
        QCOMPARE(static_cast<int>(qstrlen(Saving::s_pchConfigStr)), nLimit);
        QVERIFY(files().isEmpty());
    }

    void savingAViewEmptiesIt()
    {
        GlobalFunction::getInstance()->addView(2, 60, 50); // no other test leaves memory of that size
        m_pcAPM->getParamGray8(1)->resize(1, 1);
        *m_pcAPM->getParamGray8(1)->getGray8() = 10;
        execute(Drawing::execute,
                tag("View", "2") + tag("DataType", "1") + tag("DataID", "1") +
                    tag("Config", "<Pos>1</Pos><DrawMode><Val>1</Val></DrawMode>"), // clears nothing
                m_pcAPM);

        const QString strConfig = tag("Wnd", "2") + greyTo("view", "1");
        QImage cExpected(60, 50, QImage::Format_RGB32);
        cExpected.fill(Qt::black);
        cExpected.setPixel(0, 0, qRgb(10, 10, 10));
        mallopt(M_PERTURB, 0x5a); // what is not cleared shows
        save(strConfig);
        mallopt(M_PERTURB, 0);
        QCOMPARE(QImage("view.png").convertToFormat(QImage::Format_RGB32), cExpected);
        QFile::remove("view.png");
        save(strConfig);
        QVERIFY(files().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestImageFiles)
#include "tst_imagefiles.moc"
