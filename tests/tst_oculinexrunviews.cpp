// oculinex-run --view: what tasks draw, as files.

#include <csignal>

#include <QImage>
#include <QJsonArray>

#include "oculinexrun.h"

namespace
{
constexpr int WIDTH = 4;
constexpr int HEIGHT = 3;
constexpr QPoint MARKED(1, 2); ///< where the mask paints red

QString draw(int nType, int nID, const QString &strSettings = "")
{
    return step(QString("<DataType>%1</DataType><DataID>%2</DataID><Config>%3</Config>")
                    .arg(nType)
                    .arg(nID)
                    .arg(strSettings),
                -1, "KQ_Drawing");
}

const QString DRAW_PICTURE = draw(0, 1);
const QString PAUSE = step("<Sleep>60</Sleep>");

QString view(int nView)
{
    return QString("<-View->%1</-View->\n").arg(nView);
}

/// What the probe source's picture number nPicture looks like, with or without the mask over it.
QImage picture(int nPicture, bool bMarked)
{
    QImage cImage(WIDTH, HEIGHT, QImage::Format_RGB888);
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x) {
            const int nBlue = 3 * (y * WIDTH + x) + nPicture;
            cImage.setPixel(x, y, qRgb(nBlue + 2, nBlue + 1, nBlue));
        }
    if (bMarked)
        cImage.setPixel(MARKED, qRgb(255, 0, 0));
    return cImage;
}

/// What the summary says of the first view.
QJsonObject firstView(const QString &strOut)
{
    return objects(strOut).last()["views"].toArray().at(0).toObject();
}

int numberOf(const QString &strFile)
{
    return strFile.mid(QString("view0-").size(), 6).toInt();
}
} // namespace

class TestOculinexRunViews : public QObject, private OculinexRun
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        install(OCULINEX_BINARY_DIR);
        QImage cMask(WIDTH, HEIGHT, QImage::Format_Grayscale8);
        cMask.fill(0);
        cMask.setPixel(MARKED, qRgb(255, 255, 255));
        QVERIFY(cMask.save(m_cDir.filePath("mask.png")));
    }

    void init()
    {
        m_strOut = m_cDir.filePath(
            QString("图 %1-%2").arg(QTest::currentTestFunction()).arg(QTest::currentDataTag()));
        QVERIFY(QDir().mkdir(m_strOut));
    }

    void writesEachUpdate_data()
    {
        QTest::addColumn<QString>("strFlow");
        QTest::addColumn<bool>("bMarked");
        QTest::newRow("picture") << DRAW_PICTURE << false;
        // The reader finds the queue empty in the midst of each run, and once the run is over.
        QTest::newRow("overlay later") << DRAW_PICTURE + PAUSE + drawMask() + PAUSE << true;
        QTest::newRow("picture again") << drawMask() + PAUSE + DRAW_PICTURE << false;
    }
    void writesEachUpdate()
    {
        QFETCH(QString, strFlow);
        QFETCH(bool, bMarked);
        // A second task, which draws into another view all the time, does not disturb.
        const QString strTasks =
            task("a", view(0) + source("<Pictures>3</Pictures><Wait>100</Wait>") + strFlow) +
            task("b", view(1) + source("<Pictures>40</Pictures><Wait>10</Wait>") + DRAW_PICTURE + drawMask());
        const Outcome cOutcome =
            run(out("0=4x3") + QStringList{"--view=1=6x5", "--until-idle=0.5", file(strTasks)});
        QCOMPARE(cOutcome.m_strErr, QString());
        QCOMPARE(cOutcome.m_nExitCode, 0);

        const QStringList lstWanted{"view0-000001.png", "view0-000002.png", "view0-000003.png"};
        QCOMPARE(files().filter("view0"), lstWanted);
        for (int nPicture = 0; nPicture < lstWanted.size(); ++nPicture)
            QCOMPARE(written(lstWanted[nPicture]), picture(nPicture, bMarked));
        QCOMPARE(written("view1-000001.png").size(), QSize(6, 5));

        const QJsonObject cView = firstView(cOutcome.m_strOut);
        QCOMPARE(cView["written"].toInt(), 3);
        QCOMPARE(cView["last"].toString(), m_strOut + "/view0-000003.png");
    }

    void neverHalfAnUpdate()
    {
        // Run follows on run: the only moment between two is while a step works that comes before all
        // drawing.
        const QString strTasks = task("a", source("") + step("<Sleep>30</Sleep>") + DRAW_PICTURE +
                                               step("<Sleep>12</Sleep>") + drawMask());
        const Outcome cOutcome = run(out("0=4x3") + QStringList{"--runs=20", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        const QStringList lstFile = files();
        QVERIFY2(lstFile.size() > 5 && lstFile.size() <= 20, qPrintable(QString::number(lstFile.size())));
        for (const QString &strFile : lstFile)
            QCOMPARE(written(strFile).pixel(MARKED), qRgb(255, 0, 0));
        QCOMPARE(written(lstFile.last()), picture(19, true));
    }

    void sourceWithoutPause()
    {
        // There is no moment between two runs to be seen, and yet pictures come.
        const Outcome cOutcome =
            run(out("0=4x3") + QStringList{"--seconds=0.5", file(task("a", source("") + DRAW_PICTURE))});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY(files().size() > 3);
    }

    void keepsTheLast()
    {
        const QString strTasks = task("a", source("<Wait>20</Wait>") + DRAW_PICTURE) +
                                 task("b", view(2) + source("<Wait>20</Wait>") + DRAW_PICTURE + drawMask());
        const Outcome cOutcome =
            run(out("0=4x3") + QStringList{"--view=2=4x3", "--last", "--runs=10", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QCOMPARE(files(), (QStringList{"view0.png", "view2.png"}));
        QCOMPARE(written("view0.png"), picture(9, false));
        QCOMPARE(written("view2.png"), picture(9, true));
    }

    void dropsTheOldest()
    {
        // 12 MB each, so that at most five wait; drawing one is quicker than writing it.
        const QString strTasks = task("a", source("<Wait>10</Wait>") + DRAW_PICTURE);
        QProcess cTool;
        begin(cTool, out("0=2000x2000") + QStringList{file(strTasks)});
        const auto fnHasGap = [this] { return numberOf(files().last()) > files().size(); };
        QByteArray achOut;
        while ((files().isEmpty() || !fnHasGap()) && cTool.waitForReadyRead(TIMEOUT_MS))
            achOut += cTool.readAllStandardOutput();
        stop(cTool, SIGINT);
        const Outcome cOutcome = end(cTool);
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY(fnHasGap());
        const QJsonObject cView = firstView(achOut + cOutcome.m_strOut);
        QCOMPARE(cView["written"].toInt(), files().size());
        QCOMPARE(cView["written"].toInt() + cView["dropped"].toInt(), cView["updates"].toInt());
        // The newest always comes through.
        QCOMPARE(numberOf(files().last()), cView["updates"].toInt());
    }

private:
    /// Steps that paint red over the picture.
    QString drawMask() const
    {
        return step("<FilePath>" + m_cDir.filePath("mask.png") +
                        "</FilePath><BeGray>1</BeGray><PicID>9</PicID>",
                    -1, "KQ_Loading") +
               draw(1, 9, "<DrawMode><Val>2</Val><Mask>1,2</Mask></DrawMode>");
    }

    QStringList out(const QString &strView) const { return {"--json", "--view", strView, "--out", m_strOut}; }
    QStringList files() const { return QDir(m_strOut).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    QImage written(const QString &strFile) const
    {
        return QImage(m_strOut + '/' + strFile).convertToFormat(QImage::Format_RGB888);
    }

    QString m_strOut;
};

QTEST_GUILESS_MAIN(TestOculinexRunViews)
#include "tst_oculinexrunviews.moc"
