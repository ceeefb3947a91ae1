#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "OculinexQTStandAloneInQt.h"
#include "SaveFile/saving.h"
#include "arithmparammgr.h"
#include "taskMgr/taskMgr.h"

/// Disks that are full, can't be written, or vanish, under pictures and the tasks file.
class TestFaultyDisks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_cStore.getParamGray8(1)->resize(100, 100); }
    void cleanupTestCase()
    {
        umount2(qPrintable(m_cDir.filePath("disk")), MNT_DETACH);
        TaskMgr::deleteThis();
    }

    void smallDisk()
    {
        m_strDisk = m_cDir.filePath("disk");
        QVERIFY(QDir().mkpath(m_strDisk));
        if (mount("none", qPrintable(m_strDisk), "tmpfs", 0, "size=128k") != 0)
            QSKIP("mounting a small disk takes root and a system that allows it");
        TaskMgr::getInstance()->fromString("<=TaskInfo=><-TaskName->good</-TaskName-></=TaskInfo=>");
        QCOMPARE(QString(saveTasksFile(file("good.tasks").data())), QString());
        const QByteArray achGood = contents("good.tasks");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*: No space left on device"));
        int nSaved = 0;
        while (save(nSaved))
            ++nSaved;
        // As many as there is room for, each of them whole; the flow saves on when there is room again.
        QVERIFY(nSaved > 2 && nSaved < 20);
        for (int nPicture = 0; nPicture < nSaved; ++nPicture)
            QCOMPARE(QImage(file(QString("p%1.bmp").arg(nPicture))).width(), 100);

        TaskMgr::getInstance()->getTask(0)->m_strName = QString(300000, 'x');
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("good.tasks keeps its old contents: "));
        QCOMPARE(QString(saveTasksFile(file("good.tasks").data())), QString());
        QCOMPARE(contents("good.tasks"), achGood);
        QVERIFY(QFile::remove(file("p0.bmp")));
        QVERIFY(save(0));
        QCOMPARE(QDir(m_strDisk).entryList(QDir::Files).size(), nSaved + 1); // nothing else is left

        // It can only be read from now on.
        QCOMPARE(mount(nullptr, qPrintable(m_strDisk), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        const QByteArray achPicture = contents("p0.bmp");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*: Read-only file system"));
        save(0);
        QCOMPARE(QString(saveTasksFile(file("good.tasks").data())), QString("save file failed."));
        QCOMPARE(contents("good.tasks"), achGood);
        QCOMPARE(contents("p0.bmp"), achPicture);
    }

    void vanishingDirectory()
    {
        m_strDisk = m_cDir.filePath("outer/inner");
        QVERIFY(QDir(m_cDir.path()).mkdir("outer"));
        QVERIFY(save(0));
        const QByteArray achPicture = contents("p0.bmp");
        QVERIFY(QDir(m_cDir.filePath("outer")).removeRecursively());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot make the directory .*inner"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot save .*: No such file"));
        QVERIFY(!save(0));
        QCOMPARE(QString(saveTasksFile(file("new.tasks").data())), QString("save file failed."));

        QVERIFY(QDir(m_cDir.path()).mkdir("outer"));
        QVERIFY(save(0)); // the last part of the directory is made anew
        QCOMPARE(contents("p0.bmp"), achPicture);
    }

private:
    QByteArray file(const QString &strName) const { return (m_strDisk + '/' + strName).toUtf8(); }
    QByteArray contents(const QString &strName) const
    {
        QFile cFile(file(strName));
        return cFile.open(QIODevice::ReadOnly) ? cFile.readAll() : QByteArray();
    }
    /// Whether the step left a file.
    bool save(int nPicture)
    {
        QByteArray achConfig =
            QString("<BasePath>%1</BasePath><StringID>p%2</StringID><Identity>2</Identity><Format>2</Format>"
                    "<Wnd>4</Wnd><PicType>Gray</PicType><PicID>1</PicID>")
                .arg(m_strDisk)
                .arg(nPicture)
                .toUtf8();
        Saving::execute(achConfig.data(), &m_cStore);
        return QFile::exists(file(QString("p%1.bmp").arg(nPicture)));
    }

    const QTemporaryDir m_cDir;
    QString m_strDisk; ///< where the pictures go
    ArithmParamMgr m_cStore;
};

QTEST_GUILESS_MAIN(TestFaultyDisks)
#include "tst_faultydisks.moc"
