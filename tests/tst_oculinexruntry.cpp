// oculinex-run --try as its users have it, with the shipped plug-ins and with the probe.

#include <QImage>
#include <QJsonArray>
#include <QPainter>

#include "datatable.h"
#include "oculinexrun.h"

class TestOculinexRunTry : public QObject, private OculinexRun
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        install(OCULINEX_BINARY_DIR);
        QImage cPicture(101, 80, QImage::Format_RGB32); // rows that need padding
        cPicture.fill(QColor(10, 20, 60));
        QPainter(&cPicture).fillRect(30, 20, 15, 10, QColor(250, 180, 200));
        QVERIFY(cPicture.save(m_cDir.filePath("图 1.png")));
    }

    void chain()
    {
        const Outcome cOutcome = tryOut({"--try", "togray", "--try", "Threshold.so", "--try", "检测/斑点分析",
                                         "--config", "<Print>1</Print>", "--max-width", "50", "图 1.png"});
        QCOMPARE(cOutcome.m_strErr, QString());
        QCOMPARE(cOutcome.m_nExitCode, 0);
        const QList<QJsonObject> lstObject = objects(cOutcome.m_strOut);
        QCOMPARE(lstObject.size(), 3);
        const QJsonObject cBlobs = lstObject[2];
        QCOMPARE(cBlobs["commands"].toArray(), QJsonArray{"print:1 objects, 150 pixels"});
        const QJsonObject cAreas = cBlobs["outputs"].toArray()[0].toObject();
        QCOMPARE(cAreas["count"].toInt(), 1);
        QCOMPARE(cAreas["first"].toArray(), QJsonArray{"150 pixels in 30,20 to 44,29"});

        // Drawn over the picture, at its new size.
        const QImage cDrawn(cAreas["file"].toString());
        QCOMPARE(cAreas["file"].toString(), out("图 1-3-AreasID.png"));
        QCOMPARE(cBlobs["allFile"].toString(), out("图 1-3-all.png"));
        QCOMPARE(cDrawn.size(), QSize(50, 40));
        QCOMPARE(cDrawn.pixelColor(14, 12), QColor(0, 255, 0));
        QCOMPARE(cDrawn.pixelColor(5, 5), QColor(10, 20, 60));
    }

    void inPlace()
    {
        QFile cConfig(m_cDir.filePath("dark.txt"));
        QVERIFY(cConfig.open(QFile::WriteOnly));
        cConfig.write(
            "<InputID>4</InputID><OutputID>4</OutputID>\n<Method>Fixed</Method><Polarity>Dark</Polarity>\n");
        cConfig.close();
        // A picture that is not put back would be inverted twice.
        const Outcome cOutcome =
            tryOut({"--try", "OCX_Threshold", "--config", "@dark.txt", "--repeat", "2", "图 1.png"});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        const QJsonObject cObject = objects(cOutcome.m_strOut).value(0);
        QCOMPARE(cObject["runs"].toInt(), 2);
        const QImage cResult(out("图 1-OutputID.png"));
        QCOMPARE(cResult.pixelColor(0, 0), QColor(Qt::white));
        QCOMPARE(cResult.pixelColor(30, 20), QColor(Qt::black));
    }

    void unknownSettings()
    {
        const Outcome cOutcome =
            run({"--try", "probe", "--config",
                 "<Trace>5</Trace><Text>丙</Text><Result><CMD>print:x</CMD></Result>", "--repeat", "2",
                 "--json", "--out", m_cDir.path(), m_cDir.filePath("图 1.png")});
        QCOMPARE(cOutcome.m_nExitCode, 0);
        QCOMPARE(objects(cOutcome.m_strOut).value(0)["commands"].toArray(), QJsonArray{"print:x"});
        QVERIFY(QFile::exists(m_cDir.filePath("图 1-Strings-5.png")));
    }

    /// Neither a picture that is given nor another one's results; what is missing keeps no other from it.
    void overwritesNothing()
    {
        QDir().mkpath(m_cDir.filePath("same"));
        for (const char *szTo : {"p.png", "p-OutputID.png", "same/p.png"})
            QVERIFY(QFile::copy(m_cDir.filePath("图 1.png"), m_cDir.filePath(szTo)));
        const Outcome cOutcome = tryOut(
            {"--out", m_cDir.path(), "--try", "ToGray", "p.png", "gone.png", "p-OutputID.png", "same/p.png"});
        QCOMPARE(cOutcome.m_nExitCode, 1);
        QVERIFY2(cOutcome.m_strOut.contains("gone.png: "), qPrintable(cOutcome.m_strOut));
        QSet<QString> setFile;
        for (const QJsonObject &cObject : objects(cOutcome.m_strOut))
            setFile += QFileInfo(cObject["outputs"].toArray()[0].toObject()["file"].toString()).fileName();
        QCOMPARE(setFile,
                 (QSet<QString>{"", "p_2-OutputID.png", "p-OutputID-OutputID.png", "p_3-OutputID.png"}));
        QCOMPARE(QImage(m_cDir.filePath("p-OutputID.png")), QImage(m_cDir.filePath("图 1.png")));
    }

    void refuses_data()
    {
        addRows("what            strArguments                    strExitCode  strText\n"
                "unknown         --try Nope PICTURE                     2  Blur.so\n"
                "no config file  --try Blur --config @gone PICTURE      2  gone: No such file\n"
                "bad setting     --try Blur --config <Size>4</Size> PICTURE  1  wanted is an odd number\n"
                "no picture file  --try Blur dark.txt                   1  dark.txt: ");
    }
    void refuses()
    {
        QFETCH(QString, strArguments);
        QFETCH(QString, strText);
        const Outcome cOutcome = tryOut(strArguments.split(' ').replaceInStrings("PICTURE", "图 1.png"));
        QTEST(QString::number(cOutcome.m_nExitCode), "strExitCode");
        const QString strTold = cOutcome.m_strErr + cOutcome.m_strOut;
        QVERIFY2(strTold.contains(strText), qPrintable(strTold));
        QCOMPARE(QDir(out("")).entryList(QDir::Files).size(), 0);
    }

private:
    /// Runs the tool that has the shipped plug-ins beside it, with an empty output folder.
    Outcome tryOut(const QStringList &lstArguments)
    {
        QDir(out("")).removeRecursively();
        QDir().mkpath(out(""));
        QProcess cTool;
        cTool.setWorkingDirectory(m_cDir.path());
        cTool.start(OCULINEX_BINARY_DIR "/bin/oculinex-run",
                    QStringList{"--json", "--out", out("")} + lstArguments);
        return end(cTool);
    }
    QString out(const QString &strFile) const { return m_cDir.filePath("out/" + strFile); }
};

QTEST_GUILESS_MAIN(TestOculinexRunTry)
#include "tst_oculinexruntry.moc"
