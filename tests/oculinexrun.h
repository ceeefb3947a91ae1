#ifndef OCULINEXRUN_H
#define OCULINEXRUN_H

#include <csignal>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// What the tests of oculinex-run share: tasks files for the probe plug-ins, and the tool as a process.

inline constexpr int TIMEOUT_MS = 20000;

inline QString step(const QString &strConfig, int nLimit = -1, const QString &strID = "probe")
{
    return QString("<-TaskItem-><-MaxExeTimes->%1</-MaxExeTimes-><-ArithmID->%2</-ArithmID->"
                   "<-OptionStr->\n%3\n</-OptionStr-><-ArithmName->%2</-ArithmName-></-TaskItem->\n")
        .arg(nLimit)
        .arg(strID, strConfig);
}

inline QString cleanUp(const QString &strConfig)
{
    return step(strConfig, 999999999);
}

inline QString source(const QString &strConfig, const QString &strKind = "Probe")
{
    return QString("<-DataSource->\n<DSName>%1</DSName><OutputType>RGB</OutputType><OutputID>1</OutputID>"
                   "<Config>%2</Config>\n</-DataSource->\n")
        .arg(strKind, strConfig);
}

inline QString task(const QString &strName, const QString &strContent)
{
    return QString("<=TaskInfo=>\n<-TaskName->%1</-TaskName->\n%2</=TaskInfo=>\n").arg(strName, strContent);
}

inline QString print(const QString &strText)
{
    return "<CMD>print:" + strText + "</CMD>";
}

inline QString result(const QString &strResult)
{
    return "<Result>" + strResult + "</Result>";
}

struct Outcome {
    int m_nExitCode = -1;
    QString m_strOut;
    QString m_strErr;
};

inline QList<QJsonObject> objects(const QString &strLines)
{
    QList<QJsonObject> lstObject;
    for (const QString &strLine : strLines.split('\n', Qt::SkipEmptyParts))
        lstObject += QJsonDocument::fromJson(strLine.toUtf8()).object();
    return lstObject;
}

/// The tool in a directory of its own, with the probe plug-ins beside it.
class OculinexRun
{
public:
    void install(const QString &strBuild)
    {
        // The tool takes the plug-ins beside itself: a copy finds the probes.
        QVERIFY(QFile::copy(strBuild + "/bin/oculinex-run", m_cDir.filePath("oculinex-run")));
        for (const char *szFolder : {"baseArithm", "DataSource"})
            QVERIFY(QFile::link(QDir(QCoreApplication::applicationDirPath()).filePath(szFolder),
                                m_cDir.filePath(szFolder)));
    }

    QString file(const QString &strTasks)
    {
        QFile cFile(m_cDir.filePath("测试.tasks"));
        if (!cFile.open(QFile::WriteOnly) || cFile.write(strTasks.toUtf8()) < 0)
            qFatal("no tasks file");
        return cFile.fileName();
    }

    void begin(QProcess &cTool, const QStringList &lstArguments)
    {
        cTool.setWorkingDirectory(m_cDir.path());
        cTool.start(m_cDir.filePath("oculinex-run"), lstArguments);
        QVERIFY(cTool.waitForStarted());
    }

    Outcome end(QProcess &cTool)
    {
        if (!cTool.waitForFinished(TIMEOUT_MS)) {
            cTool.kill();
            cTool.waitForFinished();
        }
        return {cTool.exitStatus() == QProcess::NormalExit ? cTool.exitCode() : -1,
                QString::fromUtf8(cTool.readAllStandardOutput()),
                QString::fromUtf8(cTool.readAllStandardError())};
    }

    static void stop(const QProcess &cTool, int nSignal)
    {
        kill(static_cast<pid_t>(cTool.processId()), nSignal);
    }

    Outcome run(const QStringList &lstArguments)
    {
        QProcess cTool;
        begin(cTool, lstArguments);
        return end(cTool);
    }

    QTemporaryDir m_cDir;
};

#endif
