#include "pluginloader.h"

#include <dirent.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include "guardedcall.h"
#include "logging.h"

namespace
{
constexpr unsigned char NATIVE_CLASS = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
constexpr unsigned char NATIVE_DATA = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB;

/// Whether a library of this machine's kind is a copy that was broken off: it ends before its
/// segments do, or its end was never written and reads as zeros (power lost). The loader maps such
/// a file all the same, and touching what is missing kills the process.
bool isBrokenOff(const QString &strPath)
{
    QFile cFile(strPath);
    ElfW(Ehdr) cHeader;
    if (!cFile.open(QIODevice::ReadOnly) ||
        cFile.read(reinterpret_cast<char *>(&cHeader), sizeof cHeader) != qint64(sizeof cHeader) ||
        memcmp(cHeader.e_ident, ELFMAG, SELFMAG) != 0 || cHeader.e_ident[EI_CLASS] != NATIVE_CLASS ||
        cHeader.e_ident[EI_DATA] != NATIVE_DATA || cHeader.e_phentsize != sizeof(ElfW(Phdr)))
        return false; // the loader itself refuses these
    const quint64 nSize = static_cast<quint64>(cFile.size());
    std::vector<ElfW(Phdr)> vSegments(cHeader.e_phnum);
    const qint64 nTableSize = qint64{cHeader.e_phnum} * qint64{sizeof(ElfW(Phdr))};
    if (cHeader.e_phoff > nSize || !cFile.seek(static_cast<qint64>(cHeader.e_phoff)) ||
        cFile.read(reinterpret_cast<char *>(vSegments.data()), nTableSize) != nTableSize)
        return false; // nor does it read further here
    for (const ElfW(Phdr) & cSegment : vSegments)
        if (cSegment.p_type == PT_LOAD &&
            (cSegment.p_offset > nSize || cSegment.p_filesz > nSize - cSegment.p_offset))
            return true;
    // The table of sections, which need not be there, stands at the end; its last entry is never empty.
    ElfW(Shdr) cSection;
    const quint64 nLast = cHeader.e_shoff + (cHeader.e_shnum - quint64{1}) * sizeof cSection;
    return cHeader.e_shnum > 1 && cHeader.e_shentsize == sizeof cSection && cHeader.e_shoff < nSize &&
           cFile.seek(static_cast<qint64>(nLast)) &&
           cFile.read(reinterpret_cast<char *>(&cSection), sizeof cSection) == qint64(sizeof cSection) &&
           cSection.sh_type == SHT_NULL;
}

/// The names in a folder in the order of the registry, by name ignoring case. Not through QDir, which
/// does not tell a folder that can't be read now, for want of memory or descriptors, from an empty one.
QStringList namesIn(const QString &strFolder)
{
    QStringList lstNames;
    const QByteArray achFolder = QFile::encodeName(strFolder);
    const std::unique_ptr<DIR, int (*)(DIR *)> pcDir(opendir(achFolder.constData()), closedir);
    if (!pcDir && errno == ENOMEM)
        throw std::bad_alloc();
    if (!pcDir && errno != ENOENT)
        qCWarning(lcPlugin, "%s: %s", achFolder.constData(), qUtf8Printable(qt_error_string()));
    while (const dirent *pcEntry = pcDir ? readdir(pcDir.get()) : nullptr)
        lstNames.append(QFile::decodeName(pcEntry->d_name));
    std::sort(lstNames.begin(), lstNames.end(), [](const QString &strOne, const QString &strOther) {
        return std::make_pair(strOne.toLower(), strOne) < std::make_pair(strOther.toLower(), strOther);
    });
    return lstNames;
}

/// Libraries that stay loaded though no registry lists them.
std::vector<std::unique_ptr<QLibrary>> &keptLibraries()
{
    static auto *s_pvKept = new std::vector<std::unique_ptr<QLibrary>>;
    return *s_pvKept;
}
} // namespace

QString PluginLoader::applicationDir()
{
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path();
}

void PluginLoader::loadAll(const QString &strFolder, const std::vector<const char *> &vSymbolNames,
                           const FoundCallback &fnFound, const FailedCallback &fnFailed)
{
    const QString strDir = applicationDir() + QLatin1Char('/') + strFolder;
    for (const QString &strName : namesIn(strDir)) {
        const QString strPath = QDir::cleanPath(strDir + QLatin1Char('/') + strName);
        // Opening a pipe would wait for a writer.
        if (strName.startsWith(QLatin1Char('.')) ||
            !strName.endsWith(QLatin1String(".so"), Qt::CaseInsensitive) || !QFileInfo(strPath).isFile())
            continue;
        if (isBrokenOff(strPath)) {
            fnFailed(QStringLiteral("Cannot load library %1: (the file is incomplete)").arg(strPath));
            continue;
        }
        auto pcLibrary = std::make_unique<QLibrary>(strPath);
        // All symbols are bound now: one that is missing is an error text here and the end of the
        // process when it is met in a call.
        pcLibrary->setLoadHints(QLibrary::PreventUnloadHint | QLibrary::ResolveAllSymbolsHint);
        if (!pcLibrary->load()) {
            fnFailed(pcLibrary->errorString());
            continue;
        }
        std::vector<QFunctionPointer> vSymbols;
        for (const char *szName : vSymbolNames) {
            vSymbols.push_back(pcLibrary->resolve(szName));
            if (!vSymbols.back()) {
                qCInfo(lcPlugin).noquote() << strPath << "is no plug-in: it lacks" << szName;
                break;
            }
        }
        if (vSymbols.back())
            fnFound(std::move(pcLibrary), vSymbols);
        else
            keptLibraries().push_back(std::move(pcLibrary));
    }
}

QString PluginLoader::selfDescription(const QLibrary &cLibrary, const char *szFunction,
                                      QFunctionPointer fnText)
{
    const auto fnFailed = [&](const QString &strWhat) -> const char * {
        qCWarning(lcPlugin).noquote() << szFunction << "of" << cLibrary.fileName() << "failed:" << strWhat;
        return nullptr;
    };
    return textFromPlugin(
        guardedCall([&] { return reinterpret_cast<const char *(*)()>(fnText)(); }, fnFailed));
}
