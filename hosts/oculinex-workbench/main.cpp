#include <clocale>
#include <cstdio>
#include <langinfo.h>
#include <unistd.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "language.h"
#include "mainwindow.h"
#include "operatormode.h"
#include "screenshots.h"

namespace
{
constexpr int BAD_USAGE = 2;

struct Options {
    QString m_strFile;
    QString m_strLanguage;
    bool m_bOperator = false;
    QString m_strScreenshots; ///< folder; empty: none are taken
};

int refuse(const QString &strReason)
{
    fprintf(stderr, "oculinex-workbench: %s\n", qUtf8Printable(strReason));
    return BAD_USAGE;
}

/// Reads the command line, before there is a display. False when the program is to end with nExitCode.
bool parse(int &nArgc, char **ppchArgv, Options &cOptions, int &nExitCode)
{
    const QCoreApplication cApplication(nArgc, ppchArgv);
    QCommandLineParser cParser;
    cParser.setApplicationDescription(
        QStringLiteral("Builds, tries and watches the tasks of vision devices."));
    const QCommandLineOption cLanguage(QStringLiteral("lang"),
                                       QStringLiteral("Captions in zh or en; the locale's otherwise."),
                                       QStringLiteral("zh|en"));
    cParser.addOption(cLanguage);
    const QCommandLineOption cOperator(
        QStringLiteral("operator"),
        QStringLiteral("Show nothing but the operator view of FILE; leaving it ends the program."));
    cParser.addOption(cOperator);
    const QCommandLineOption cScreenshots(
        QStringLiteral("screenshot"),
        QStringLiteral("Write pictures of the windows, with FILE running, into a folder, and end."),
        QStringLiteral("folder"));
    cParser.addOption(cScreenshots);
    const QCommandLineOption cHelp = cParser.addHelpOption();
    const QCommandLineOption cVersion = cParser.addVersionOption();
    cParser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Tasks file to open."),
                                  QStringLiteral("[FILE]"));
    const bool bParsed = cParser.parse(QCoreApplication::arguments());
    cOptions.m_strLanguage = cParser.value(cLanguage);
    cOptions.m_bOperator = cParser.isSet(cOperator);
    cOptions.m_strScreenshots = cParser.value(cScreenshots);
    cOptions.m_strFile = cParser.positionalArguments().value(0);
    if (cParser.isSet(cHelp)) {
        fputs(qUtf8Printable(cParser.helpText()), stdout);
        nExitCode = 0;
    } else if (cParser.isSet(cVersion)) {
        puts("oculinex-workbench " OCULINEX_VERSION);
        nExitCode = 0;
    } else if (!bParsed) {
        nExitCode = refuse(cParser.errorText() + QStringLiteral(" See --help."));
    } else if (cParser.isSet(cLanguage) && cOptions.m_strLanguage != QLatin1String("zh") &&
               cOptions.m_strLanguage != QLatin1String("en")) {
        nExitCode = refuse(QStringLiteral("--lang is zh or en."));
    } else if (cParser.positionalArguments().size() > 1) {
        nExitCode = refuse(QStringLiteral("One tasks file at a time. See --help."));
    } else if (cOptions.m_strFile.isEmpty() &&
               (cOptions.m_bOperator || !cOptions.m_strScreenshots.isEmpty())) {
        nExitCode = refuse(QStringLiteral("--operator and --screenshot need a tasks file. See --help."));
    } else {
        return true;
    }
    return false;
}

/// Qt ends the process when it can't show windows; the reason in one line comes before.
void tellMissingDisplay(QtMsgType eType, const QMessageLogContext &, const QString &strText)
{
    if (eType == QtFatalMsg) {
        refuse(
            QStringLiteral("there is no display: set DISPLAY or WAYLAND_DISPLAY, or run it below xvfb-run."));
        _exit(BAD_USAGE);
    }
    if (eType != QtWarningMsg)
        fprintf(stderr, "%s\n", qUtf8Printable(strText));
}
} // namespace

int main(int argc, char **argv)
{
    setlocale(LC_ALL, "");
    if (QByteArray(nl_langinfo(CODESET)) == "ANSI_X3.4-1968") // paths may have any character
        qputenv("LC_ALL", "C.UTF-8");
    QCoreApplication::setApplicationName(QStringLiteral("oculinex-workbench"));
    QCoreApplication::setOrganizationName(QStringLiteral("oculinex"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OCULINEX_VERSION));
    Options cOptions;
    int nExitCode = 0;
    if (!parse(argc, argv, cOptions, nExitCode))
        return nExitCode;

    qInstallMessageHandler(tellMissingDisplay);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    const QApplication cApplication(argc, argv);
    qInstallMessageHandler(nullptr);
    QApplication::setApplicationDisplayName(QString());
    chooseLanguage(cOptions.m_strLanguage);

    if (!cOptions.m_strScreenshots.isEmpty()) {
        const QString strError = takeScreenshots(cOptions.m_strFile, cOptions.m_strScreenshots);
        return strError.isEmpty() ? 0 : refuse(strError);
    }
    MainWindow cWindow;
    if (!cOptions.m_bOperator)
        cWindow.show();
    QTimer::singleShot(0, &cWindow, [&] {
        // On this thread, so that a plug-in that can't be loaded is told in a box.
        ArithmFactory::getInstance();
        DataSource::getInstance();
        if (!cOptions.m_strFile.isEmpty())
            cWindow.openFile(cOptions.m_strFile);
        if (cOptions.m_bOperator && cWindow.document().taskCount() > 0)
            cWindow.operatorMode().open(OperatorMode::Leaving::EndsProgram);
        else
            cWindow.show();
    });
    return QApplication::exec();
}
