#include <clocale>
#include <cstdio>
#include <langinfo.h>

#include <QFile>
#include <QGuiApplication>

#include "OculinexQTStandAloneInQt.h"
#include "common/taskcheck.h"
#include "options.h"
#include "picturewriter.h"
#include "registrylist.h"
#include "report.h"
#include "runner.h"
#include "taskMgr/taskMgr.h"
#include "taskcallbacks.h"
#include "tryout.h"

namespace
{
constexpr int BAD_USAGE = 2;
const char *const NO_TASK = "the file holds no task.";

/// Devices often have neither a display nor a locale; texts and paths are UTF-8 throughout.
void prepareEnvironment()
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    setlocale(LC_ALL, "");
    if (QByteArray(nl_langinfo(CODESET)) != "UTF-8")
        qputenv("LC_ALL", "C.UTF-8");
}

/// Qt warns of what devices don't have (a runtime directory …) when it starts.
void dropWarnings(QtMsgType eType, const QMessageLogContext &, const QString &strText)
{
    if (eType != QtWarningMsg)
        fprintf(stderr, "%s\n", qUtf8Printable(strText));
}

/// Sends the log through the report while it lives: whole lines that spare the status line.
class LogToReport
{
public:
    explicit LogToReport(Report &cReport)
    {
        s_pcReport = &cReport;
        qInstallMessageHandler(
            [](QtMsgType eType, const QMessageLogContext &cContext, const QString &strText) {
                s_pcReport->logged(qFormatLogMessage(eType, cContext, strText));
            });
    }
    ~LogToReport() { qInstallMessageHandler(nullptr); }
    LogToReport(const LogToReport &) = delete;
    LogToReport &operator=(const LogToReport &) = delete;

private:
    static inline Report *s_pcReport = nullptr;
};

int refuse(const QString &strReason)
{
    fprintf(stderr, "oculinex-run: %s\n", strReason.toUtf8().constData());
    return BAD_USAGE;
}

int refuseFile(const Options &cOptions, const QString &strReason)
{
    return refuse(cOptions.m_strTasksFile + ": " + strReason);
}

int check(const Options &cOptions, Report &cReport)
{
    QFile cFile(cOptions.m_strTasksFile);
    if (!cFile.open(QFile::ReadOnly))
        return refuseFile(cOptions, cFile.errorString());
    int nTasks = 0;
    const QList<Finding> lstFinding = checkTasks(QString::fromUtf8(cFile.readAll().constData()), nTasks);
    cReport.findings(lstFinding);
    if (nTasks == 0)
        return refuseFile(cOptions, NO_TASK);
    return lstFinding.isEmpty() ? 0 : 1;
}

int tryOut(const Options &cOptions, Report &cReport)
{
    Tryout cTryout(cOptions, cReport);
    const QString strError = cTryout.prepare();
    return strError.isEmpty() ? cTryout.run() : refuse(strError);
}

int run(const Options &cOptions, Report &cReport)
{
    QFile cFile(cOptions.m_strTasksFile);
    if (!cFile.open(QFile::ReadOnly)) // the library doesn't tell the reason
        return refuseFile(cOptions, cFile.errorString());
    cFile.close();
    if (!cOptions.m_strOut.isEmpty()) {
        const QString strReason = PictureWriter::whyUnwritable(cOptions.m_strOut);
        if (!strReason.isEmpty())
            return refuse(cOptions.m_strOut + ": " + strReason);
    }
    init(); // connects the bounded queues, which the report's callbacks then replace
    connectTaskMgr(cReport);
    const QString strError =
        QString::fromLocal8Bit(openTasksFile(cOptions.m_strTasksFile.toLocal8Bit().data()));
    if (!strError.isEmpty())
        return refuseFile(cOptions, strError);
    if (TaskMgr::getInstance()->getTaskNum() == 0)
        return refuseFile(cOptions, NO_TASK);
    const int nExitCode = Runner(cOptions, cReport).run();
    TaskMgr::getInstance()->clear(); // while the report, which the tasks speak to, lives
    return nExitCode;
}
} // namespace

int main(int argc, char **argv)
{
    prepareEnvironment();
    qInstallMessageHandler(dropWarnings);
    const QGuiApplication cApplication(argc, argv);
    qInstallMessageHandler(nullptr);
    QCoreApplication::setApplicationName("oculinex-run");
    QCoreApplication::setApplicationVersion(OCULINEX_VERSION);

    Options cOptions;
    const QString strError = parseOptions(QCoreApplication::arguments(), cOptions);
    if (!strError.isEmpty())
        return refuse(strError + " See oculinex-run --help.");
    const auto pcReport = Report::make(cOptions.m_bJson, cOptions.m_bQuiet);
    const LogToReport cLog(*pcReport);

    switch (cOptions.m_eAction) {
    case Options::Action::Run:
        return run(cOptions, *pcReport);
    case Options::Action::Check:
        return check(cOptions, *pcReport);
    case Options::Action::Try:
        return tryOut(cOptions, *pcReport);
    case Options::Action::List:
        pcReport->known(knownParts());
        break;
    case Options::Action::Help:
        fputs(cOptions.m_strHelp.toUtf8().constData(), stdout);
        break;
    case Options::Action::Version:
        puts("oculinex-run " OCULINEX_VERSION);
        break;
    }
    return 0;
}
