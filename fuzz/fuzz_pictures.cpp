// Picture files: the load step reads any bytes as a colour and as a grey picture of the same size, or
// leaves the store as it is.

#include <QSize>

#include "LoadFile/loading.h"
#include "fuzzing.h"

/// A file of a few bytes may announce a picture that takes seconds to fill: memory is short instead. The
/// fuzzer itself needs 20 MiB at once.
extern "C" const char *__asan_default_options()
{
    return "max_allocation_size_mb=24:allocator_may_return_null=1";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    const QByteArray achFile = Fuzzing::bytes(puchData, nSize);
    const QByteArray achPath = Fuzzing::writeScratch("picture", achFile).toUtf8();
    ArithmParamMgr cStore;
    for (const char *szGrey : {"0", "1"}) {
        QByteArray achConfig =
            "<FilePath>" + achPath + "</FilePath><PicID>1</PicID><BeGray>" + szGrey + "</BeGray>";
        Fuzzing::require(*Loading::execute(achConfig.data(), &cStore) == '\0', "a load step says nothing");
    }
    const auto size = [](const auto &mapPictures) {
        return mapPictures.isEmpty()
                   ? QSize(0, 0)
                   : QSize(mapPictures.first()->getWidth(), mapPictures.first()->getHeight());
    };
    const QSize cColour = size(cStore.m_mapParamDIB);
    const QSize cGrey = size(cStore.m_mapParamGray8);
    Fuzzing::require(cColour.isEmpty() == cColour.isNull() && cGrey.isEmpty() == cGrey.isNull(),
                     "a picture has both a width and a height, or neither");
    // A large one may find memory in one kind only.
    constexpr qint64 LARGE = 5000000;
    const bool bLarge = qint64{cGrey.width()} * cGrey.height() > LARGE;
    Fuzzing::require(cColour == cGrey || (bLarge && cColour.isNull()),
                     "both kinds of pictures are loaded alike");
    return 0;
}
