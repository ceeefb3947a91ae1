#include <QtTest>

#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>

#include "OculinexQTStandAloneInQt.h"
#include "fixtures/limit.h"
#include "taskMgr/taskMgr.h"

namespace
{
QByteArray contentsOf(const QString &strPath)
{
    QFile cFile(strPath);
    return cFile.open(QIODevice::ReadOnly) ? cFile.readAll() : QByteArray("(can't be read)");
}

void setContents(const QString &strPath, const QByteArray &achText)
{
    QFile cFile(strPath);
    QVERIFY(cFile.open(QIODevice::WriteOnly));
    QCOMPARE(cFile.write(achText), achText.size());
}

QString save(QByteArray achPath)
{
    return saveTasksFile(achPath.isNull() ? nullptr : achPath.data());
}

QString open(QByteArray achPath)
{
    return openTasksFile(achPath.isNull() ? nullptr : achPath.data());
}

QByteArray currentText()
{
    return TaskMgr::getInstance()->toString().toUtf8();
}
} // namespace

/// Opening and saving a tasks file: paths, bytes, and what may go wrong with files.
class TestTasksFileIO : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        TaskMgr::getInstance()->fromString("<=TaskInfo=><-TaskName->held</-TaskName-></=TaskInfo=>");
    }
    void cleanupTestCase() { TaskMgr::deleteThis(); }

    /// A byte order mark, bytes that are no text, and a zero byte far behind, where the text ends.
    void openBytes()
    {
        const QByteArray achTask = "<=TaskInfo=><-TaskName->n\xC3\xA9\xFF</-TaskName-></=TaskInfo=>";
        setContents(path("bytes.tasks"),
                    "\xEF\xBB\xBF" + achTask + "\r\n" + QByteArray(3 << 20, ' ') + '\0' + achTask);
        QCOMPARE(open(path("bytes.tasks")), "");
        QCOMPARE(TaskMgr::getInstance()->getTaskNum(), 1);
        QCOMPARE(TaskMgr::getInstance()->getTask(0)->getName(), QStringLiteral("né\uFFFD"));
    }

    void failing()
    {
        for (const QByteArray &achPath :
             {QByteArray("/no/such/directory/file"), QByteArray("/tmp"), QByteArray()}) {
            QCOMPARE(open(achPath), "open file failed.");
            QCOMPARE(TaskMgr::getInstance()->getTask(0)->getName(), "held"); // nothing was lost
            QCOMPARE(save(achPath), "save file failed.");
        }
    }

    void saveAndOpen()
    {
        const QByteArray achPath = path("任务 é.tasks");
        const QByteArray achText = currentText();
        QCOMPARE(save(achPath), "");
        QCOMPARE(contentsOf(achPath), achText);
        TaskMgr::getInstance()->clear();
        QCOMPARE(open(achPath), "");
        QCOMPARE(currentText(), achText);
    }

    /// What a device does not take is not reported, but logged. Never as root, who could replace it.
    void fullDevice()
    {
        const uid_t nUser = geteuid();
        if (nUser == 0)
            QCOMPARE(seteuid(1234), 0);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^/dev/full is not written whole: "));
        const QString strResult = save("/dev/full");
        QCOMPARE(seteuid(nUser), 0);
        QCOMPARE(strResult, "");
    }

    void savingKeepsLinks()
    {
        setContents(path("target"), "old");
        QVERIFY(QFile::link("target", path("symlink")));
        setContents(path("first"), "old");
        QCOMPARE(::link(path("first"), path("second")), 0);
        for (const auto &[szSaved, szWritten] : {std::pair("symlink", "target"), {"second", "first"}}) {
            QCOMPARE(save(path(szSaved)), "");
            QCOMPARE(contentsOf(path(szWritten)), currentText());
        }
    }

    void savingKeepsModeAndOwner()
    {
        const QByteArray achOwned = path("owned");
        const auto fnSaved = [&] {
            struct stat cStat = {};
            return save(achOwned).isEmpty() && stat(achOwned, &cStat) == 0 ? cStat : decltype(cStat){};
        };
        setContents(achOwned, "old");
        QCOMPARE(chmod(achOwned, 0640), 0);
        QCOMPARE(fnSaved().st_mode & 07777u, 0640u);

        if (geteuid() != 0)
            QSKIP("only root can give files away");
        QCOMPARE(chown(achOwned, 1234, 1234), 0);
        QCOMPARE(fnSaved().st_uid, 1234u);

        // A file that can be written in a directory that can't.
        QVERIFY(QDir(m_cDir.path()).mkdir("shut"));
        setContents(path("shut/file"), "old");
        QCOMPARE(chmod(m_cDir.path().toUtf8(), 0755), 0);
        QCOMPARE(chown(path("shut/file"), 1234, getegid()), 0);
        QCOMPARE(seteuid(1234), 0);
        const QString strResults = save(path("shut/file")) + '/' + save(path("shut/new"));
        QCOMPARE(seteuid(0), 0);
        QCOMPARE(strResults, "/save file failed.");
        QCOMPARE(contentsOf(path("shut/file")), currentText());
    }

    void fullDiskKeepsTheOldFile()
    {
        const QByteArray achGood = currentText();
        QCOMPARE(save(path("good")), "");
        TaskMgr::getInstance()->getTask(0)->m_strName = QString(200000, 'x');

        signal(SIGXFSZ, SIG_IGN);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("good keeps its old contents: "));
        const QString strResult = [&] {
            const Limit cFullDisk(RLIMIT_FSIZE, 4096);
            return save(path("good"));
        }();
        QCOMPARE(strResult, "");
        QCOMPARE(contentsOf(path("good")), achGood);
        QCOMPARE(QDir(m_cDir.path()).entryList({"good*"}, QDir::Files).size(), 1);
    }

private:
    QByteArray path(const char *szName) const { return m_cDir.filePath(szName).toUtf8(); }

    QTemporaryDir m_cDir;
};

QTEST_GUILESS_MAIN(TestTasksFileIO)
#include "tst_tasksfileio.moc"
