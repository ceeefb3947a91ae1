#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>

#include "cases.h"

namespace
{
QString processor()
{
    QFile cFile(QStringLiteral("/proc/cpuinfo"));
    if (cFile.open(QIODevice::ReadOnly))
        for (QByteArray achLine = cFile.readLine(); !achLine.isEmpty(); achLine = cFile.readLine())
            if (achLine.startsWith("model name"))
                return QString::fromLatin1(achLine).section(QLatin1Char(':'), 1).trimmed();
    return QSysInfo::currentCpuArchitecture();
}

QJsonArray readRows(const char *szPath)
{
    QFile cFile(QFile::decodeName(szPath));
    const QJsonDocument cDocument =
        cFile.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(cFile.readAll()) : QJsonDocument();
    if (!cDocument.object().contains("rows"))
        throw std::runtime_error(std::string(szPath) + " holds no measurements");
    return cDocument.object()["rows"].toArray();
}

void writeRows(const char *szPath, const QJsonArray &lstRow)
{
    QFile cFile(QFile::decodeName(szPath));
    const QJsonObject cRun{{"machine", processor()},
                           {"cores", static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN))},
                           {"date", QDateTime::currentDateTimeUtc().toString(Qt::ISODate)},
                           {"rows", lstRow}};
    if (!cFile.open(QIODevice::WriteOnly) || cFile.write(QJsonDocument(cRun).toJson()) < 0)
        throw std::runtime_error(std::string(szPath) + " can't be written");
}

struct Subject {
    const char *m_szName;
    void (*m_fnAdd)(Bench::Table &);
};
constexpr Subject SUBJECTS[] = {{"hand-over", Bench::addHandover},
                                {"steps", Bench::addSteps},
                                {"inspection", Bench::addInspection},
                                {"pictures drawn", Bench::addDrawing},
                                {"lists drawn", Bench::addDrawingLists},
                                {"row kernels", Bench::addKernels},
                                {"picture files", Bench::addPictureFiles},
                                {"tasks files", Bench::addTasksFile},
                                {"life", Bench::addLife}};

int runTable(int nArgs, char **pszArgs)
{
    std::string strFilter;
    const char *szJson = nullptr;
    QJsonArray lstOld;
    for (int nArg = 1; nArg < nArgs; ++nArg) {
        const bool bValue = nArg + 1 < nArgs;
        if (strcmp(pszArgs[nArg], "--json") == 0 && bValue)
            szJson = pszArgs[++nArg];
        else if (strcmp(pszArgs[nArg], "--compare") == 0 && bValue)
            lstOld = readRows(pszArgs[++nArg]);
        else if (strcmp(pszArgs[nArg], "--cpu-time") == 0)
            Bench::g_nClock = CLOCK_PROCESS_CPUTIME_ID;
        else if (pszArgs[nArg][0] != '-' && strFilter.empty())
            strFilter = pszArgs[nArg];
        else
            throw std::runtime_error(
                "usage: oculinex-bench [FILTER] [--cpu-time] [--json FILE] [--compare FILE]");
    }
    int nOwnArgs = 2;
    char achProgram[] = "bench";
    char achInterleave[] = "--benchmark_enable_random_interleaving=true";
    char *pszOwnArgs[] = {achProgram, achInterleave, nullptr};
    benchmark::Initialize(&nOwnArgs, pszOwnArgs);

    printf("%s, %ld cores, %s\n\n", qPrintable(processor()), sysconf(_SC_NPROCESSORS_ONLN),
           qPrintable(QDateTime::currentDateTime().toString(Qt::ISODate)));
    Bench::Table cTable(strFilter);
    std::string strTook;
    for (const auto &[szSubject, fnAdd] : SUBJECTS) {
        QElapsedTimer cTimer;
        cTimer.start();
        fnAdd(cTable);
        strTook +=
            std::string(", ") + szSubject + " " + std::to_string((cTimer.elapsed() + 500) / 1000) + " s";
    }
    printf("\ntook%s\n", strTook.c_str() + 1);
    if (cTable.rows().isEmpty())
        throw std::runtime_error("no row's name contains " + strFilter);
    if (szJson)
        writeRows(szJson, cTable.rows());
    if (!lstOld.isEmpty())
        Bench::printComparison(lstOld, cTable.rows());
    return 0;
}
} // namespace

int main(int nArgs, char **pszArgs)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    cv::setNumThreads(1); // the peers have one thread where ours has one
    try {
        int nResult = Bench::runStartUp(nArgs, pszArgs);
        if (nResult >= 0)
            return nResult;
        const QGuiApplication cApplication(nArgs, pszArgs);
        nResult = Bench::runInspection(nArgs, pszArgs);
        return nResult >= 0 ? nResult : runTable(nArgs, pszArgs);
    } catch (const std::exception &cError) {
        fprintf(stderr, "oculinex-bench: %s\n", cError.what());
        return 1;
    }
}
