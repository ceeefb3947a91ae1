#include "fuzzing.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include "OculinexQTStandAloneInQt.h"

const QString &Fuzzing::scratch()
{
    static const QTemporaryDir s_cDir;
    static const QString s_strPath = s_cDir.path() + QLatin1Char('/');
    return s_strPath;
}

void Fuzzing::clearScratch()
{
    for (const QFileInfo &cEntry : QDir(scratch()).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                                 QDir::System | QDir::NoDotAndDotDot)) {
        if (cEntry.isDir() && !cEntry.isSymLink())
            QDir(cEntry.filePath()).removeRecursively();
        else
            QFile::remove(cEntry.filePath());
    }
}

QString Fuzzing::writeScratch(const char *szFile, const QByteArray &achContents)
{
    QFile cFile(scratch() + QLatin1String(szFile));
    if (!cFile.open(QIODevice::WriteOnly) || cFile.write(achContents) != achContents.size() || !cFile.flush())
        qFatal("cannot write %s", qPrintable(cFile.fileName()));
    return cFile.fileName();
}

void Fuzzing::require(bool bKept, const char *szPromise)
{
    if (bKept)
        return;
    fprintf(stderr, "ERROR: a promise is broken: %s\n", szPromise);
    abort();
}

void Fuzzing::requireEqual(const QString &strIs, const QString &strShallBe, const char *szPromise)
{
    if (strIs != strShallBe)
        fprintf(stderr, "It is:\n%s\nand shall be:\n%s\n", qUtf8Printable(strIs), qUtf8Printable(strShallBe));
    require(strIs == strShallBe, szPromise);
}

void Fuzzing::readViews(int nWidth, int nHeight)
{
    const int nStride = (nWidth * 3 + 3) & ~3;
    for (int nView = 0; nView < 3; ++nView) {
        const auto puchBuffer =
            std::make_unique<unsigned char[]>(static_cast<size_t>(nStride) * static_cast<size_t>(nHeight));
        while (getDrawingWindow(nView, puchBuffer.get(), nWidth, nHeight) == 1) {
        }
    }
}

extern "C" int LLVMFuzzerInitialize(int *pnArgs, char ***ppszArgs)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType eType, const QMessageLogContext &, const QString &strText) {
        if (eType == QtFatalMsg)
            fprintf(stderr, "ERROR: %s\n", qUtf8Printable(strText));
    });
    // Never destroyed, as what is drawn at process exit would miss it.
    static auto *s_pcApp = new QGuiApplication(*pnArgs, *ppszArgs);
    Q_UNUSED(s_pcApp)
    for (int nView = 0; nView < 4; ++nView)
        useDrawingWindow(nView, 30, 20);
    return 0;
}
