// Tagged text: what stands between two markers, as the plainest search finds it, and texts that are
// handed out as bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include "Drawing/drawing.h"
#include "LoadFile/loading.h"
#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAloneInQt.h"
#include "SaveFile/saving.h"
#include "fuzzing.h"
#include "globalfunction.h"

namespace
{
QString consumeText(FuzzedDataProvider &cData, size_t nMax)
{
    return QString::fromStdString(cData.ConsumeRandomLengthString(nMax));
}

int firstOf(const QString &strText, const QString &strMarker)
{
    for (int nAt = 0; nAt + strMarker.size() <= strText.size(); ++nAt)
        if (strText.midRef(nAt, strMarker.size()).compare(strMarker, Qt::CaseInsensitive) == 0)
            return nAt;
    return -1;
}

void takesBodies(QString strText, const QString &strBegin, const QString &strEnd)
{
    for (bool bLeft = true; bLeft;) {
        const int nBegin = firstOf(strText, strBegin);
        const int nEnd = firstOf(strText, strEnd);
        QString strBody;
        QString strRest = strText;
        if (nBegin >= 0 && nBegin < nEnd && nEnd < strText.size()) {
            strBody = strText.mid(nBegin + strBegin.size(), qMax(0, nEnd - nBegin - strBegin.size()));
            strRest = strText.left(nBegin) + strText.mid(nEnd + strEnd.size());
        }
        Fuzzing::requireEqual(GlobalFunction::getBody(strText, strBegin, strEnd), strBody, "the body");
        Fuzzing::requireEqual(GlobalFunction::getAndRemoveBody(strText, strBegin, strEnd), strBody,
                              "the body that is taken");
        Fuzzing::requireEqual(strText, strRest, "what is left");
        bLeft = !strBody.isEmpty();
    }
}

void trims(QString strText)
{
    QString strShallBe = strText;
    const auto blank = [](QChar ch) { return QStringLiteral(" \r\n").contains(ch); };
    while (!strShallBe.isEmpty() && blank(strShallBe.front()))
        strShallBe.remove(0, 1);
    while (!strShallBe.isEmpty() && blank(strShallBe.back()))
        strShallBe.chop(1);
    GlobalFunction::trimString(strText);
    Fuzzing::requireEqual(strText, strShallBe, "the trimmed text");
}

void handsOut(QString strText)
{
    const auto same = [](const char *pchIs, const QByteArray &achShallBe) {
        return memcmp(pchIs, achShallBe.constData(), static_cast<size_t>(achShallBe.size()) + 1) == 0;
    };
    const QByteArray achLocal = strText.toLocal8Bit();
    Fuzzing::require(same(transConfigStr(strText), achLocal) && gnBuffLenForStandAlone > achLocal.size(),
                     "the boundary's text is in its buffer");
    for (const auto fnConvert : {MemoryDisk::transConfigStr, Drawing::transConfigStr, Saving::transConfigStr,
                                 Loading::transConfigStr})
        Fuzzing::require(same(fnConvert(strText), strText.toUtf8()), "an algorithm's text is handed out");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    FuzzedDataProvider cData(puchData, nSize);
    const QString strBegin = consumeText(cData, 20);
    const QString strEnd = consumeText(cData, 20);
    const QString strText = QString::fromStdString(cData.ConsumeRemainingBytesAsString());
    if (!strBegin.isEmpty() || !strEnd.isEmpty())
        takesBodies(strText, strBegin, strEnd);
    trims(strText);
    handsOut(strText);
    return 0;
}
