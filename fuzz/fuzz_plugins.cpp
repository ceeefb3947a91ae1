// Plug-in folders: both registries get over libraries that were damaged on their way to the device,
// and list those that were not. Each input is tried in a process of its own: a loaded library stays.
//
// Damage is a broken copy, a lost end or a wrong file. Code and tables that were changed inside stay
// the loader's business: such a library may do anything.

#include <sys/wait.h>
#include <unistd.h>

#include <fuzzer/FuzzedDataProvider.h>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "fixtures/neighbourhood.h"
#include "fuzzing.h"

namespace
{
constexpr int MAX_SECONDS = 20;
constexpr int UNLISTED = 2; ///< what the child says when a good library is not listed
/// What tells a library of another machine or kind.
constexpr int HEADER_LENGTH = 24;

enum Damage { None, Cut, Zeros, Header, Foreign, Empty, DAMAGES };

QByteArray damaged(FuzzedDataProvider &cData, QByteArray achFile, int nDamage)
{
    const int nAt = cData.ConsumeIntegralInRange<int>(0, achFile.size());
    switch (nDamage) {
    case Cut:
        return achFile.left(nAt);
    case Zeros:
        return achFile.left(nAt).leftJustified(achFile.size(), '\0');
    case Header:
        for (int i = cData.ConsumeIntegralInRange<int>(1, 4); i > 0; --i)
            achFile[cData.ConsumeIntegralInRange<int>(0, HEADER_LENGTH - 1)] =
                static_cast<char>(cData.ConsumeIntegral<uint8_t>());
        return achFile;
    case Foreign:
        return QByteArray::fromStdString(cData.ConsumeRandomLengthString(200));
    case Empty:
        return QByteArray();
    default:
        return achFile;
    }
}

/// In the child: whether the registries list what is undamaged.
bool scan(const QStringList &lstAlgorithms, const QStringList &lstSources)
{
    ArithmFactory cFactory;
    for (const QString &strID : lstAlgorithms)
        if (!cFactory.getArithm(strID))
            return false;
    for (int i = 0; i < 4; ++i)
        if (cFactory.getArithms()->at(i).m_strClass != QStringLiteral("系统"))
            return false;
    const DataSource cSources;
    for (const QString &strName : lstSources)
        if (!cSources.m_mapDataSourceInfo.contains(strName))
            return false;
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    static const Neighbourhood s_cHere;
    static const QByteArray s_achGood = s_cHere.named();
    FuzzedDataProvider cData(puchData, nSize);
    QStringList lstAlgorithms;
    QStringList lstSources;
    QStringList lstFiles;
    for (int nFile = cData.ConsumeIntegralInRange<int>(1, 3); nFile > 0; --nFile) {
        const QString strName = QString::number(nFile);
        const bool bSource = cData.ConsumeBool();
        const QString strFile =
            (bSource ? QStringLiteral("DataSource/") : QStringLiteral("baseArithm/")) + strName + "-C-N.so";
        const int nDamage = cData.ConsumeIntegralInRange<int>(0, DAMAGES - 1);
        s_cHere.write(strFile, damaged(cData, s_achGood, nDamage));
        lstFiles.append(strFile);
        if (nDamage == None)
            (bSource ? lstSources : lstAlgorithms).append(strName);
    }

    const pid_t nChild = fork();
    if (nChild == 0) {
        alarm(MAX_SECONDS);
        _exit(scan(lstAlgorithms, lstSources) ? 0 : UNLISTED);
    }
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    for (const QString &strFile : qAsConst(lstFiles))
        QFile::remove(s_cHere.path(strFile));
    const bool bUnlisted = WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == UNLISTED;
    Fuzzing::require(!bUnlisted, "every good library is listed");
    Fuzzing::require(nStatus == 0, "no damaged library ends the process or hangs it");
    return 0;
}
