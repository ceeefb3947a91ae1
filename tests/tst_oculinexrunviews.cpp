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
        m_strOut = m_cDir.filePath(QString("图 ") + QTest::currentTestFunction());
        QVERIFY(QDir().mkdir(m_strOut));
    }

    void writesEachUpdate()
    {
        const QString strSource = source("<Pictures>3</Pictures><Wait>400</Wait>");
        // The reader finds the queue empty in the midst of each run, and once the run is over.
        const QString strTasks =
            task("overlay later", view(0) + strSource + DRAW_PICTURE + PAUSE + drawMask() + PAUSE) +
            task("picture again", view(1) + strSource + drawMask() + PAUSE + DRAW_PICTURE);
        const Outcome cOutcome =
            run(out("0=4x3") + QStringList{"--view=1=4x3", "--until-idle=1.2", file(strTasks)});
        QCOMPARE(cOutcome.m_strErr, QString());
        QCOMPARE(cOutcome.m_nExitCode, 0);

        for (const int nView : {0, 1}) {
            const QString strView = QString("view%1-00000").arg(nView);
            QCOMPARE(files().filter(strView).size(), 3);
            for (int nPicture = 0; nPicture < 3; ++nPicture)
                QCOMPARE(written(QString("%1%2.png").arg(strView).arg(nPicture + 1)),
                         picture(nPicture, nView == 0));
        }
    }

    void neverHalfAnUpdate()
    {
        // Run follows on run: the only moment between two is while a step works that comes before all
        // drawing. So few that none is handed over for the reader's impatience.
        const QString strTasks =
            task("a", source("") + PAUSE + DRAW_PICTURE + step("<Sleep>12</Sleep>") + drawMask());
        const Outcome cOutcome = run(out("0=4x3") + QStringList{"--runs=10", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        const QStringList lstFile = files();
        QVERIFY2(lstFile.size() > 1 && lstFile.size() <= 10, qPrintable(QString::number(lstFile.size())));
        for (const QString &strFile : lstFile)
            QCOMPARE(written(strFile).pixel(MARKED), qRgb(255, 0, 0));
        QCOMPARE(written(lstFile.last()), picture(9, true));
    }

    void sourceWithoutPause()
    {
        // There is no moment between two runs to be seen, and yet pictures come.
        const QString strTasks = task("a", source("") + DRAW_PICTURE + step("<Sleep>10</Sleep>"));
        const Outcome cOutcome = run(out("0=4x3") + QStringList{"--runs=60", file(strTasks)});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY(files().size() > 2);
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
        const auto fnNewest = [this] { return files().last().mid(QString("view0-").size(), 6).toInt(); };
        const auto fnHasGap = [&] { return fnNewest() > files().size(); };
        while ((files().isEmpty() || !fnHasGap()) && cTool.waitForReadyRead(TIMEOUT_MS))
            ;
        stop(cTool, SIGINT);
        const Outcome cOutcome = end(cTool);
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QVERIFY(fnHasGap());
        const QJsonObject cView = objects(cOutcome.m_strOut).last()["views"].toArray().at(0).toObject();
        QCOMPARE(cView["written"].toInt(), files().size());
        QCOMPARE(cView["written"].toInt() + cView["dropped"].toInt(), cView["updates"].toInt());
        // The newest always comes through.
        QCOMPARE(fnNewest(), cView["updates"].toInt());
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
