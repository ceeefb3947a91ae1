// Algorithms: steps of any algorithm, with any config strings, on a store with small pictures and
// lists; then the views are read. An input is config strings that end with a backslash and another
// character, from its begin on, and numbers from its end on.

#include <fuzzer/FuzzedDataProvider.h>

#include <QDir>
#include <QRegularExpression>

#include "Drawing/drawing.h"
#include "MemoryDisk/memorydisk.h"
#include "SaveFile/saving.h"
#include "arithmMgr/arithmregister.h"
#include "fuzzing.h"

namespace
{
/// Nothing is written outside of the scratch directory: the first base path counts, which is this
/// one, and no name leads up from it. Slashes remain in end tags only.
QByteArray keptInside(const QByteArray &achConfig)
{
    static const QRegularExpression s_cSlash(QStringLiteral("(?<!<)/"));
    return "<BasePath>" + Fuzzing::scratch().toUtf8() + "</BasePath>" +
           QString::fromUtf8(achConfig).replace(s_cSlash, QStringLiteral("_")).toUtf8();
}

void keepInside(ArithmParamMgr &cStore)
{
    for (ParamStrings *pcStrings : qAsConst(cStore.m_mapParamStrings))
        for (QString &strText : pcStrings->m_lstStrings)
            strText.replace(QLatin1Char('/'), QLatin1Char('_'));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    constexpr int BUILT_IN = 4;
    constexpr int MAX_STEPS = 8;
    constexpr size_t MAX_CONFIG = 400;
    FuzzedDataProvider cData(puchData, nSize);
    QList<QByteArray> lstConfigs;
    for (int nSteps = cData.ConsumeIntegralInRange<int>(1, MAX_STEPS); nSteps > 0; --nSteps)
        lstConfigs.append(QByteArray::fromStdString(cData.ConsumeRandomLengthString(MAX_CONFIG)));
    const auto &lstAlgorithms = *ArithmFactory::getInstance()->getArithms();
    Fuzzing::require(lstAlgorithms.size() > BUILT_IN, "the plug-ins are beside the fuzzer");
    {
        ArithmParamMgr cStore;
        Fuzzing::fillStore(cData, cStore);
        keepInside(cStore);
        bool bSaves = false;
        for (const QByteArray &achConfig : qAsConst(lstConfigs)) {
            Arithm &cAlgorithm =
                *lstAlgorithms[cData.ConsumeIntegralInRange<int>(0, lstAlgorithms.size() - 1)].m_pcArithm;
            cAlgorithm.executeUtf8(keptInside(achConfig), &cStore);
            bSaves = bSaves || cAlgorithm.m_fnExecute == Saving::execute;
        }
        if (cData.ConsumeBool())
            Fuzzing::readViews(cData.ConsumeIntegralInRange<int>(1, 50),
                               cData.ConsumeIntegralInRange<int>(1, 50));
        for (int nDisk = 0; nDisk < MemoryDisk::DISK_NUM; ++nDisk) {
            MemoryDisk::getInstance(nDisk)->emptyDIBPrepared();
            MemoryDisk::getInstance(nDisk)->emptyGray8Prepared();
        }
        if (bSaves)
            Fuzzing::clearScratch();
        Drawing::disarm(&cStore);
    }
    // Drawings that outlive their store.
    Fuzzing::readViews(1, 1);
    return 0;
}
