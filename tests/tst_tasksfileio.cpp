#include <QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>

#include "OculinexQTStandAlone.h"
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

QString save(const QString &strPath)
{
    return OculinexQtStandAlone::getInstance()->saveTasksFile(strPath.isNull() ? nullptr
                                                                               : strPath.toUtf8().data());
}

QString open(const QString &strPath)
{
    return OculinexQtStandAlone::getInstance()->openTasksFile(
        strPath.isNull() ? nullptr : strPath.toLocal8Bit().data());
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

    void openBytes_data()
    {
        QTest::addColumn<QByteArray>("achFile");
        QTest::addColumn<QString>("strName"); // of the only task, "-" for none
        const QByteArray achTask = "<=TaskInfo=><-TaskName->n\xC3\xA9</-TaskName-></=TaskInfo=>";
        QTest::newRow("byte order mark") << "\xEF\xBB\xBF" + achTask + "\r\n"
                                         << "né";
        QTest::newRow("zero byte before") << QByteArray(1, '\0') + achTask << "-";
        QTest::newRow("zero byte far behind") << achTask + QByteArray(3 << 20, ' ') + '\0' + achTask << "né";
        QTest::newRow("bad bytes") << QByteArray("<=TaskInfo=><-TaskName->n\xFF</-TaskName-></=TaskInfo=>")
                                   << QStringLiteral("n\uFFFD");
        QTest::newRow("empty") << QByteArray() << "-";
    }

    void openBytes()
    {
        QFETCH(QByteArray, achFile);
        QFETCH(QString, strName);
        setContents(path("bytes.tasks"), achFile);
        QCOMPARE(open(path("bytes.tasks")), "");
        QCOMPARE(TaskMgr::getInstance()->getTaskNum(), strName == "-" ? 0 : 1);
        if (TaskInfo *pcTask = TaskMgr::getInstance()->getTask(0))
            QCOMPARE(pcTask->getName(), strName);
    }

    void openFails()
    {
        for (const char *szPath :
             {"/no/such/file", "/tmp", "/proc/self/mem", "", static_cast<const char *>(nullptr)}) {
            QCOMPARE(open(szPath), "open file failed.");
            QCOMPARE(TaskMgr::getInstance()->getTask(0)->getName(), "held"); // nothing was lost
        }
    }

    /// Paths are in the local encoding for opening, in UTF-8 for saving.
    void saveAndOpenPaths()
    {
        const QString strPath = path("任务 é.tasks");
        const QByteArray achText = currentText();
        for (int nTime = 0; nTime < 2; ++nTime) {
            QCOMPARE(save(strPath), "");
            QCOMPARE(contentsOf(strPath), achText);
            TaskMgr::getInstance()->clear();
            QCOMPARE(open(strPath), "");
            QCOMPARE(currentText(), achText);
        }
        QCOMPARE(QDir(m_cDir.path()).entryList({"*任务*"}, QDir::Files).size(),
                 1); // nothing is left beside it
    }

    void saveFails()
    {
        for (const char *szPath : {"/no/such/directory/file", "/tmp", "/dev/null/file", "/proc/file", "",
                                   static_cast<const char *>(nullptr)})
            QCOMPARE(save(szPath), "save file failed.");
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
        const QByteArray achText = currentText();
        setContents(path("target"), "old");
        QVERIFY(QFile::link("target", path("symlink")));
        QCOMPARE(save(path("symlink")), "");
        QVERIFY(QFileInfo(path("symlink")).isSymLink());
        QCOMPARE(contentsOf(path("target")), achText);

        setContents(path("first"), "old");
        QCOMPARE(::link(qPrintable(path("first")), qPrintable(path("second"))), 0);
        QCOMPARE(save(path("second")), "");
        QCOMPARE(contentsOf(path("first")), achText);

        QVERIFY(QFile::link("new", path("dangling")));
        QCOMPARE(save(path("dangling")), "");
        QCOMPARE(contentsOf(path("new")), achText);
    }

    void savingKeepsModeAndOwner()
    {
        const QByteArray achText = currentText();
        const auto fnStat = [&] {
            struct stat cStat = {};
            stat(qPrintable(path("owned")), &cStat);
            return cStat;
        };
        setContents(path("owned"), "old");
        QCOMPARE(chmod(qPrintable(path("owned")), 0640), 0);
        QCOMPARE(save(path("owned")), "");
        QCOMPARE(fnStat().st_mode & 07777u, 0640u);

        if (geteuid() != 0)
            QSKIP("only root can give files away");
        setContents(path("owned"), "old");
        QCOMPARE(chown(qPrintable(path("owned")), 1234, 1234), 0);
        QCOMPARE(save(path("owned")), "");
        QCOMPARE(fnStat().st_uid, 1234u);
        QCOMPARE(contentsOf(path("owned")), achText);

        // A file that can be written in a directory that can't.
        QVERIFY(QDir(m_cDir.path()).mkdir("shut"));
        setContents(path("shut/file"), "old");
        QCOMPARE(chmod(qPrintable(m_cDir.path()), 0755), 0);
        QCOMPARE(chown(qPrintable(path("shut/file")), 1234, getegid()), 0);
        QCOMPARE(seteuid(1234), 0);
        const QString strResult = save(path("shut/file"));
        const QString strNew = save(path("shut/new"));
        QCOMPARE(seteuid(0), 0);
        QCOMPARE(strResult, "");
        QCOMPARE(contentsOf(path("shut/file")), achText);
        QCOMPARE(strNew, "save file failed.");
    }

    void fullDiskKeepsTheOldFile()
    {
        const QByteArray achGood = currentText();
        QCOMPARE(save(path("good")), "");
        TaskMgr::getInstance()->getTask(0)->m_strName = QString(200000, 'x');

        // A limit on the length of files stands for the full disk.
        rlimit cOld = {};
        getrlimit(RLIMIT_FSIZE, &cOld);
        const rlimit cSmall = {4096, cOld.rlim_max};
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &cSmall);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("good keeps its old contents: "));
        const QString strResult = save(path("good"));
        setrlimit(RLIMIT_FSIZE, &cOld);

        QCOMPARE(strResult, "");
        QCOMPARE(contentsOf(path("good")), achGood);
        QCOMPARE(QDir(m_cDir.path()).entryList({"good*"}, QDir::Files).size(), 1);
    }

private:
    QString path(const QString &strName) { return m_cDir.filePath(strName); }

    QTemporaryDir m_cDir;
};

QTEST_GUILESS_MAIN(TestTasksFileIO)
#include "tst_tasksfileio.moc"
