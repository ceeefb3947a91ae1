#include <opencv2/imgcodecs.hpp>

#include <memory>

#include <sys/stat.h>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include "DataSource/datasource.h"
#include "datatable.h"
#include "pluginfixture.h"

/// The data source "Picture Folder", as the registry finds it beside the executable. A picture is
/// told from another by its width.
class TestPictureFolder : public PluginTest
{
    Q_OBJECT

private slots:
    void init()
    {
        m_pcDir = std::make_unique<QTemporaryDir>();
        newStore();
    }
    void cleanup() { m_pcSource.reset(); }

    void deliversPixels()
    {
        // Padded rows twice in one size, then no padding, then another padding and a single pixel.
        const QList<cv::Size> lstSize{{7, 5}, {7, 5}, {8, 5}, {9, 6}, {1, 1}};
        const auto fnFile = [&](int nPicture) {
            return path(QString("%1.%2").arg(nPicture).arg(nPicture % 2 ? "png" : "JPG")).toStdString();
        };
        cv::RNG cRandom(7);
        for (int nPicture = 0; nPicture < lstSize.size(); ++nPicture) {
            cv::Mat cPixels(lstSize.at(nPicture), CV_8UC3);
            cRandom.fill(cPixels, cv::RNG::UNIFORM, 0, 256);
            QVERIFY(cv::imwrite(fnFile(nPicture), cPixels));
        }
        for (const bool bGrey : {false, true}) {
            open(m_pcDir->path(), {}, bGrey ? "Gray8" : "RGB");
            for (int nPicture = 0; nPicture < lstSize.size(); ++nPicture) {
                QVERIFY(m_pcSource->execute());
                const cv::Mat cExpected =
                    cv::imread(fnFile(nPicture), bGrey ? cv::IMREAD_GRAYSCALE : cv::IMREAD_COLOR);
                QVERIFY(same(bGrey ? header(m_pcStore->getParamGray8(1)) : header(m_pcStore->getParamDIB(1)),
                             cExpected));
            }
        }
    }

    void playsInOrder_data()
    {
        addRows("case             path         settings        widths\n"
                "folder, once     -            -               1 2 3 10 11 0 0\n"
                "folder, looping  -            <Loop>1</Loop>  1 2 3 10 11 1 2 3\n"
                "one file         /img010.png  <Loop>1</Loop>  10 10 10");
    }

    void playsInOrder()
    {
        QFETCH(QString, path);
        QFETCH(QString, settings);
        QFETCH(QString, widths);
        write("img010.png", 10);
        write("img2.png", 2);
        write("Img3.png", 3);
        write("a1.bmp", 1);
        write("z.jpeg", 11);
        write("notes.txt", QByteArray("not a picture"));
        QVERIFY(QDir(m_pcDir->path()).mkdir("folder.png"));
        open(m_pcDir->path() + path, settings);
        QCOMPARE(play(widths.count(' ') + 1), widths);
        // A start goes back to the first picture, also in the middle.
        m_pcSource->start();
        QVERIFY(widths.startsWith(play(2)));
    }

    void seesNewFilesAtTheNextLoop()
    {
        write("2.png", 2);
        write("4.png", 4);
        open(m_pcDir->path(), "<Loop>1</Loop>");
        QCOMPARE(play(1), "2");
        write("3.png", 3);
        QCOMPARE(play(4), "4 2 3 4");
        QVERIFY(QFile::remove(path("2.png")));
        QCOMPARE(play(2), "3 4"); // the missing one is passed over
    }

    void passesOverWhatIsBroken()
    {
        write("1.png", 1);
        write("2.png", QByteArray("not a picture"));
        write("3.jpg", QByteArray());
        write("4.png", 60, 60);
        QFile cCut(path("4.png"));
        QVERIFY(cCut.open(QIODevice::ReadWrite) && cCut.resize(cCut.size() / 2));
        write("5.png", 5);
        const QByteArray achPipe = path("pipe").toLocal8Bit();
        QVERIFY(mkfifo(achPipe.constData(), 0600) == 0 && QFile::link(path("pipe"), path("0.png")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("0.png: It is no file"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("2.png: It cannot be decoded"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("3.jpg: It is empty"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("4.png: It cannot be decoded"));
        open(m_pcDir->path(), "<Loop>1</Loop>");
        QCOMPARE(play(2), "1 5");
        QCOMPARE(m_pcSource->getLastError(), path("4.png") + ": It cannot be decoded.");
    }

    void survivesAVanishedFolder()
    {
        const QString strFolder = path("in");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Folder: .*in does not exist"));
        open(strFolder, "<Loop>1</Loop>");
        QCOMPARE(play(1), "0");
        QCOMPARE(m_pcSource->getLastError(), strFolder + " does not exist.");

        QVERIFY(QDir().mkdir(strFolder));
        write("in/1.png", 1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("in has pictures again"));
        QCOMPARE(play(2), "1 1");
        QCOMPARE(m_pcSource->getLastError(), QString());
    }

    void keepsTheRate()
    {
        write("1.png", 1);
        QElapsedTimer cTimer;
        cTimer.start();
        open(m_pcDir->path(), "<Loop>1</Loop><Fps>50</Fps>");
        QCOMPARE(play(6), "1 1 1 1 1 1");
        QVERIFY2(cTimer.elapsed() >= 100, qPrintable(QString::number(cTimer.elapsed())));

        // A slow rate, at which the next picture is due in 1000 s, never holds the task for long.
        open(m_pcDir->path(), "<Loop>1</Loop><Fps>0.001</Fps>");
        QCOMPARE(play(2), "1 0");
    }

    void waitsWhenItHasNothing()
    {
        for (const char *szProblem : {"no pictures", "It cannot be decoded"}) {
            for (const char *szSettings : {"", "<Loop>1</Loop>"}) {
                QTest::ignoreMessage(QtWarningMsg, QRegularExpression(szProblem));
                open(m_pcDir->path(), szSettings);
                QElapsedTimer cTimer;
                cTimer.start();
                QCOMPARE(play(3), "0 0 0");
                QVERIFY2(cTimer.elapsed() >= 290, qPrintable(QString::number(cTimer.elapsed())));
            }
            write("1.png", QByteArray("not a picture"));
        }
    }

private:
    QString path(const QString &strName) const { return m_pcDir->filePath(strName); }
    void write(const QString &strName, int nWidth, int nHeight = 4)
    {
        const cv::Mat cPixels(nHeight, nWidth, CV_8UC3, cv::Scalar(10, 20, nWidth));
        QVERIFY(cv::imwrite(path(strName).toStdString(), cPixels));
    }
    void write(const QString &strName, const QByteArray &achContents)
    {
        QFile cFile(path(strName));
        QVERIFY(cFile.open(QIODevice::WriteOnly) && cFile.write(achContents) == achContents.size());
    }
    void open(const QString &strPath, const QString &strSettings = QString(), const QString &strType = "RGB")
    {
        m_pcSource.reset(DataSource::getInstance()->createDataSourceFromConfigString(
            m_pcStore.get(), "<DSName>Picture Folder</DSName><OutputType>" + strType +
                                 "</OutputType><OutputID>1</OutputID><Config><Path>" + strPath + "</Path>" +
                                 strSettings + "</Config>"));
        m_pcSource->start();
    }
    /// Widths of the next pictures, 0 for a request that gave none.
    QString play(int nRequests)
    {
        QStringList lstWidth;
        while (nRequests-- > 0)
            lstWidth << QString::number(m_pcSource->execute() ? m_pcStore->getParamDIB(1)->getWidth() : 0);
        return lstWidth.join(' ');
    }

    std::unique_ptr<QTemporaryDir> m_pcDir;
    std::unique_ptr<DataSource::DataSourceInstance> m_pcSource;
};

QTEST_GUILESS_MAIN(TestPictureFolder)
#include "tst_picturefolder.moc"
