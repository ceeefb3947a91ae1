#include "options.h"

#include <algorithm>
#include <cmath>

#include <QCommandLineParser>
#include <QFile>
#include <QRegularExpression>

namespace
{
const char *const DESCRIPTION =
    "Runs the tasks of a tasks file side by side and prints what their steps print, the errors, and\n"
    "at the end how often and how fast each task and each step ran. It ends with Ctrl-C, as one of\n"
    "the options below says, or when every task has ended.\n"
    "\n"
    "With --view and --out, what the tasks draw is written as PNG files: view0-000001.png is the first\n"
    "update of view 0. An update is what the tasks have drawn by the end of a run. When pictures come\n"
    "faster than they can be written the oldest that wait are dropped; the summary tells how many, and\n"
    "the gaps in the numbers which.\n"
    "\n"
    "With --try, algorithms run on pictures without a tasks file: each --try names one by its ID, its\n"
    "file (Blur, Blur.so) or class/name, and may be followed by a --config of its own, a text or @FILE.\n"
    "They run in order on one store. An input without an ID gets the newest output of its kind, else\n"
    "the picture; an output without one gets a fresh ID. Outputs are written as PNG files,\n"
    "PICTURE-TAG.png, lists drawn over the picture; several lists also together, PICTURE-all.png.\n"
    "    oculinex-run --try ToGray --try Threshold --config '<Method>Otsu</Method>' photo.jpg\n"
    "\n"
    "Plug-ins are looked for beside the program in baseArithm, extArithm and DataSource; with\n"
    "QT_LOGGING_RULES='oculinex.*=true' the log tells what was loaded. Relative paths in a tasks file\n"
    "count from the current directory.\n"
    "\n"
    "Exit code: 0 fine, 1 a task failed or a picture could not be written (with --check: something\n"
    "was found), 2 bad arguments, a file that can't be read or holds no task, or a directory in which\n"
    "no file can be made.";

constexpr int MAX_LENGTH = 10000; ///< of a view, in pixels

/// One "N=WxH"; an error text, empty when it is fine.
QString parseView(const QString &strView, QList<ViewOption> &lstView)
{
    static const QRegularExpression s_cForm("^([0-2])=(\\d{1,5})x(\\d{1,5})$");
    const QRegularExpressionMatch cMatch = s_cForm.match(strView);
    const ViewOption cView{cMatch.captured(1).toInt(),
                           {cMatch.captured(2).toInt(), cMatch.captured(3).toInt()}};
    const auto fnIsLength = [](int nLength) { return nLength >= 1 && nLength <= MAX_LENGTH; };
    if (!fnIsLength(cView.m_cSize.width()) || !fnIsLength(cView.m_cSize.height()))
        return QString("--view needs N=WxH with N from 0 to 2, W and H from 1 to %1, not '%2'.")
            .arg(MAX_LENGTH)
            .arg(strView);
    if (std::any_of(lstView.begin(), lstView.end(),
                    [&](const ViewOption &cOther) { return cOther.m_nView == cView.m_nView; }))
        return QString("View %1 is given twice.").arg(cView.m_nView);
    lstView += cView;
    return {};
}

/// The views, and whether what belongs to them fits; an error text, empty when it is fine.
QString parseViews(const QStringList &lstView, Options &cOptions)
{
    for (const QString &strView : lstView)
        if (QString strError = parseView(strView, cOptions.m_lstView); !strError.isEmpty())
            return strError;
    if (cOptions.m_lstView.isEmpty() != cOptions.m_strOut.isEmpty())
        return "--view and --out need each other.";
    if (cOptions.m_bLast && cOptions.m_strOut.isEmpty())
        return "--last needs --view and --out.";
    return {};
}
/// A whole number of at least nMin; an error text, empty when it is fine.
QString parseNumber(const QCommandLineParser &cParser, const QString &strName, int nMin, int &nValue)
{
    if (!cParser.isSet(strName))
        return {};
    nValue = cParser.value(strName).toInt();
    return nValue >= nMin ? QString()
                          : QString("--%1 needs a whole number of at least %2, not '%3'.")
                                .arg(strName)
                                .arg(nMin)
                                .arg(cParser.value(strName));
}

/// A text, or that in the file which it names.
QString readConfig(const QString &strGiven, QString &strConfig)
{
    strConfig = strGiven;
    if (!strGiven.startsWith('@'))
        return {};
    QFile cFile(strGiven.mid(1));
    if (!cFile.open(QFile::ReadOnly))
        return cFile.fileName() + ": " + cFile.errorString() + '.';
    strConfig = QString::fromUtf8(cFile.readAll()).trimmed();
    return {};
}

/// What is tried; an error text, empty when it is fine.
QString parseTry(const QCommandLineParser &cParser, Options &cOptions)
{
    QStringList lstAlgorithm = cParser.values("try");
    QStringList lstConfig = cParser.values("config");
    bool bWaits = false; // for the configuration of the last --try
    for (const QString &strName : cParser.optionNames()) {
        if (strName == "try") {
            cOptions.m_lstTry += {lstAlgorithm.takeFirst(), {}};
            bWaits = true;
        } else if (strName == "config") {
            if (!bWaits)
                return "Each --config follows the --try that it belongs to.";
            bWaits = false;
            if (QString strError = readConfig(lstConfig.takeFirst(), cOptions.m_lstTry.last().m_strConfig);
                !strError.isEmpty())
                return strError;
        }
    }
    if (QString strError = parseNumber(cParser, "repeat", 1, cOptions.m_nRepeat); !strError.isEmpty())
        return strError;
    if (QString strError = parseNumber(cParser, "max-width", 1, cOptions.m_nMaxWidth); !strError.isEmpty())
        return strError;
    if (cOptions.m_strOut.isEmpty())
        cOptions.m_strOut = ".";
    cOptions.m_lstPicture = cParser.positionalArguments();
    return cOptions.m_lstPicture.isEmpty() ? "--try needs a picture." : "";
}
} // namespace

QString parseOptions(const QStringList &lstArguments, Options &cOptions)
{
    QCommandLineParser cParser;
    cParser.setApplicationDescription(DESCRIPTION);
    const QCommandLineOption cOnce("once", "Run each task once, one after the other as in the file.");
    const QCommandLineOption cRuns("runs", "Stop each task after <N> runs with a picture.", "N");
    const QCommandLineOption cSeconds("seconds", "Stop after <S> seconds.", "S");
    const QCommandLineOption cIdle("until-idle", "Stop when no source has given a picture for <S> seconds.",
                                   "S");
    const QCommandLineOption cView("view", "Give view <N> (0 to 2) a size and write what is drawn into it.",
                                   "N=WxH");
    const QCommandLineOption cOut(
        "out", "Write pictures into <DIR>; with --try the current one if not given.", "DIR");
    const QCommandLineOption cLast("last", "Keep only the newest picture of each view, as view0.png.");
    const QCommandLineOption cCheck("check", "Run nothing; report what loading keeps silent.");
    const QCommandLineOption cList("list", "Print the known algorithms and data sources.");
    const QCommandLineOption cTry("try", "Run <ALGORITHM> on pictures.", "ALGORITHM");
    const QCommandLineOption cConfig("config", "The config string of the --try before it, or @FILE.", "TEXT");
    const QCommandLineOption cRepeat("repeat", "Try <N> times and print the median and the best time.", "N");
    const QCommandLineOption cMaxWidth("max-width", "Write pictures at most <N> pixels wide.", "N");
    const QCommandLineOption cJson("json", "Print one JSON object a line.");
    const QCommandLineOption cQuiet("quiet", "Leave out what the steps print and the status line.");
    const QCommandLineOption cHelp({"h", "help"}, "Print this page.");
    const QCommandLineOption cVersion({"v", "version"}, "Print the version.");
    cParser.addOptions({cOnce, cRuns, cSeconds, cIdle, cView, cOut, cLast, cJson, cQuiet, cCheck, cList, cTry,
                        cConfig, cRepeat, cMaxWidth, cHelp, cVersion});
    cParser.addPositionalArgument(
        "FILE", "The tasks file to run or to check; with --try one or more pictures.", "FILE...");

    if (!cParser.parse(lstArguments))
        return cParser.errorText();
    cOptions.m_strHelp = cParser.helpText();
    cOptions.m_bJson = cParser.isSet(cJson);
    cOptions.m_bQuiet = cParser.isSet(cQuiet);

    if (cParser.isSet(cHelp)) {
        cOptions.m_eAction = Options::Action::Help;
        return {};
    }
    if (cParser.isSet(cVersion)) {
        cOptions.m_eAction = Options::Action::Version;
        return {};
    }
    int nModes = 0;
    for (const QCommandLineOption *pcOption : {&cOnce, &cRuns, &cSeconds, &cIdle, &cCheck, &cList, &cTry})
        nModes += cParser.isSet(*pcOption) ? 1 : 0;
    if (nModes > 1)
        return "--once, --runs, --seconds, --until-idle, --check, --list and --try exclude each other.";

    cOptions.m_strOut = cParser.value(cOut);
    cOptions.m_bLast = cParser.isSet(cLast);
    if (cParser.isSet(cTry)) {
        cOptions.m_eAction = Options::Action::Try;
        return cParser.isSet(cView) || cOptions.m_bLast
                   ? "--try draws into no view: it takes neither --view nor --last."
                   : parseTry(cParser, cOptions);
    }
    if (cParser.isSet(cConfig) || cParser.isSet(cRepeat) || cParser.isSet(cMaxWidth))
        return "--config, --repeat and --max-width need --try.";
    if (QString strError = parseViews(cParser.values(cView), cOptions); !strError.isEmpty())
        return strError;
    if (!cOptions.m_strOut.isEmpty() && (cParser.isSet(cCheck) || cParser.isSet(cList)))
        return "--check and --list draw nothing: they take no --view.";

    const QStringList lstFiles = cParser.positionalArguments();
    if (cParser.isSet(cList)) {
        cOptions.m_eAction = Options::Action::List;
        return lstFiles.isEmpty() ? QString() : "--list takes no file.";
    }
    if (lstFiles.size() != 1)
        return lstFiles.isEmpty() ? "A tasks file is missing." : "Only one tasks file can be given.";
    cOptions.m_strTasksFile = lstFiles.first();

    if (cParser.isSet(cCheck)) {
        cOptions.m_eAction = Options::Action::Check;
    } else if (cParser.isSet(cOnce)) {
        cOptions.m_eUntil = Options::Until::Once;
    } else if (cParser.isSet(cRuns)) {
        cOptions.m_eUntil = Options::Until::Runs;
        return parseNumber(cParser, "runs", 1, cOptions.m_nRuns);
    } else if (cParser.isSet(cSeconds) || cParser.isSet(cIdle)) {
        const bool bIdle = cParser.isSet(cIdle);
        const QString strValue = cParser.value(bIdle ? cIdle : cSeconds);
        cOptions.m_eUntil = bIdle ? Options::Until::Idle : Options::Until::Seconds;
        cOptions.m_fSeconds = strValue.toDouble();
        if (!(cOptions.m_fSeconds > 0 && std::isfinite(cOptions.m_fSeconds)))
            return QString("--%1 needs a number of seconds above 0, not '%2'.")
                .arg(bIdle ? "until-idle" : "seconds", strValue);
    }
    return {};
}
