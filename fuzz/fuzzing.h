#ifndef FUZZING_H
#define FUZZING_H

#include <cstddef>
#include <cstdint>

#include <QByteArray>
#include <QString>

#include "arithmparammgr.h"

/// What the fuzzers share. Each is a program of one function, LLVMFuzzerTestOneInput, which is called
/// with one input after another; a QGuiApplication exists then, on no screen, and the log is silent.
namespace Fuzzing
{
/// A directory of the process's own, gone when it ends; ends with a slash.
const QString &scratch();
/// Empties it.
void clearScratch();
/// Replaces the contents of a file there; its path.
QString writeScratch(const char *szFile, const QByteArray &achContents);

/// Ends the process, and thereby reports the input, when a promise is broken.
void require(bool bKept, const char *szPromise);
/// The same for two texts that must be equal; shows both.
void requireEqual(const QString &strIs, const QString &strShallBe, const char *szPromise);

inline QByteArray bytes(const uint8_t *puchData, size_t nSize)
{
    return {reinterpret_cast<const char *>(puchData), static_cast<int>(nSize)};
}

/// The library draws into a buffer of a host that is as large as it must be and no byte larger. The
/// views hold what was drawn before; all of it is taken out.
void readViews(int nWidth, int nHeight);

/// Pictures and lists of a task's store, with IDs 0 to 2. Data is a FuzzedDataProvider.
template <typename Data>
void fillStore(Data &cData, ArithmParamMgr &cStore)
{
    constexpr int MAX_LENGTH = 40;
    const auto coordinate = [&cData] {
        return cData.ConsumeBool() ? cData.template ConsumeIntegralInRange<int>(-100, 100)
                                   : cData.template ConsumeIntegral<int>();
    };
    const auto paint = [&cData](void *pvPixels, size_t nBytes) {
        const auto uchSeed = cData.template ConsumeIntegral<uint8_t>();
        auto *puchPixels = static_cast<unsigned char *>(pvPixels);
        for (size_t i = 0; puchPixels && i < nBytes; ++i)
            puchPixels[i] = static_cast<unsigned char>(uchSeed * (i / 3));
    };
    for (int nID = 0; nID < 3 && cData.remaining_bytes() > 0; ++nID) {
        const int nWidth = cData.template ConsumeIntegralInRange<int>(0, MAX_LENGTH);
        const int nHeight = cData.template ConsumeIntegralInRange<int>(0, MAX_LENGTH);
        const auto nPixels = static_cast<size_t>(nWidth) * static_cast<size_t>(nHeight);
        switch (cData.template ConsumeIntegralInRange<int>(0, 7)) {
        case 0:
            cStore.getParamDIB(nID)->resize(nWidth, nHeight);
            paint(cStore.getParamDIB(nID)->getDIB(), nPixels * 3);
            break;
        case 1:
            cStore.getParamGray8(nID)->resize(nWidth, nHeight);
            paint(cStore.getParamGray8(nID)->getGray8(), nPixels);
            break;
        case 2:
            cStore.getParamGray16(nID)->resize(nWidth, nHeight);
            paint(cStore.getParamGray16(nID)->getGray16(), nPixels * 2);
            break;
        case 3:
            for (int i = 0; i < nWidth; ++i)
                cStore.getParamPoints(nID)->addPoint({coordinate(), coordinate()});
            break;
        case 4:
            for (int i = 0; i < nWidth; ++i)
                cStore.getParamLines(nID)->addLine({coordinate(), coordinate(), coordinate(), coordinate()});
            break;
        case 5:
            for (int i = 0; i < nWidth; ++i) {
                cStore.getParamPolys(nID)->addPoly({});
                for (int j = cData.template ConsumeIntegralInRange<int>(0, 5); j > 0; --j)
                    cStore.getParamPolys(nID)->addPolyVert({coordinate(), coordinate()}, i);
            }
            break;
        case 6:
            cStore.getParamAreas(nID)->setName(
                QString::fromStdString(cData.ConsumeRandomLengthString(MAX_LENGTH)));
            for (int i = 0; i < nWidth; ++i)
                cStore.getParamAreas(nID)->addArea({coordinate(),
                                                    {coordinate(), coordinate(), coordinate(), coordinate()},
                                                    coordinate(),
                                                    coordinate()});
            break;
        default:
            for (int i = 0; i < nWidth && cData.remaining_bytes() > 0; ++i)
                cStore.getParamStrings(nID)->addString(
                    QString::fromStdString(cData.ConsumeRandomLengthString(MAX_LENGTH)));
        }
    }
}
} // namespace Fuzzing

extern "C" int LLVMFuzzerInitialize(int *pnArgs, char ***ppszArgs);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize);

#endif
