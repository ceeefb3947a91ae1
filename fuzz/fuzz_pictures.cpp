// Picture files: the load step reads any bytes as a colour and as a grey picture of the same size, or
// leaves the store as it is.

#include <QBuffer>
#include <QImageReader>

#include "LoadFile/loading.h"
#include "fuzzing.h"

namespace
{
/// A file of a few bytes may announce a picture that takes seconds to fill.
bool isLarge(const QByteArray &achFile)
{
    constexpr qint64 MAX_PIXELS = 1 << 22;
    QByteArray achCopy = achFile;
    QBuffer cBuffer(&achCopy);
    cBuffer.open(QIODevice::ReadOnly);
    const QSize cSize = QImageReader(&cBuffer).size();
    return qint64{cSize.width()} * cSize.height() > MAX_PIXELS;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    const QByteArray achFile = Fuzzing::bytes(puchData, nSize);
    if (isLarge(achFile))
        return 0;
    const QByteArray achPath = Fuzzing::writeScratch("picture", achFile).toUtf8();
    ArithmParamMgr cStore;
    for (const char *szGrey : {"0", "1"}) {
        QByteArray achConfig =
            "<FilePath>" + achPath + "</FilePath><PicID>1</PicID><BeGray>" + szGrey + "</BeGray>";
        Fuzzing::require(*Loading::execute(achConfig.data(), &cStore) == '\0', "a load step says nothing");
    }
    const auto size = [](const auto &mapPictures) {
        if (mapPictures.isEmpty())
            return QSize();
        const QSize cSize(mapPictures.first()->getWidth(), mapPictures.first()->getHeight());
        Fuzzing::require(cSize.width() > 0 && cSize.height() > 0, "a picture that is stored has pixels");
        return cSize;
    };
    Fuzzing::require(size(cStore.m_mapParamDIB) == size(cStore.m_mapParamGray8),
                     "both kinds of pictures are loaded alike");
    return 0;
}
