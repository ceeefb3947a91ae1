#include "LoadFile/loading.h"

#include <array>
#include <cstring>
#include <utility>

#include <QImage>
#include <QMutex>

#include "LoadFile/dlgloadfile.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"
#include "logging.h"
#include "picturefile.h"
#include "pixelrows.h"
#include "textbuffer.h"

const char *Loading::s_ID = "KQ_Loading";
char *Loading::s_pchConfigStr = TextBuffer::create();
int Loading::s_nBuffLen = TextBuffer::INITIAL_LENGTH;

namespace
{
QMutex gcMutexForConfigStr; // guards Loading::s_pchConfigStr and its length

/// The products that make a grey value, so that a pixel costs two additions.
struct GreyWeights {
    std::array<double, 256> adFirst{};
    std::array<double, 256> adSecond{};
    std::array<double, 256> adThird{};
    PixelRows::Lowering cOfGrey; ///< where all three are equal; rounding makes some one less

    GreyWeights()
    {
        for (size_t i = 0; i < 256; ++i) {
            adFirst[i] = static_cast<double>(i) * 0.114;
            adSecond[i] = static_cast<double>(i) * 0.587;
            adThird[i] = static_cast<double>(i) * 0.299;
            cOfGrey.set(i, grey(i, i, i) < i);
        }
    }
    uchar grey(size_t nFirst, size_t nSecond, size_t nThird) const
    {
        return static_cast<uchar>(adThird[nThird] + adSecond[nSecond] + adFirst[nFirst]);
    }
};

/// Pixels of four bytes, whose fourth is dropped: what most decoders deliver.
bool isPacked(QImage::Format eFormat)
{
    return eFormat == QImage::Format_RGB32 || eFormat == QImage::Format_ARGB32;
}

/// Bytes of a row of colour pixels, in the store and in an RGB888 picture.
int rowBytes(int nWidth)
{
    return ((nWidth + 1) * 3) & ~3;
}

void toColour(const QImage &cImage, ParamDIB *pcDIB)
{
    uchar *puchTo = pcDIB->getDIB();
    if (puchTo == nullptr)
        return;
    const int nWidth = cImage.width();
    const int nStride = rowBytes(nWidth);
    for (int y = 0; y < cImage.height(); ++y, puchTo += nStride) {
        const uchar *puchFrom = cImage.constScanLine(y);
        if (isPacked(cImage.format()))
            PixelRows::packColours(puchTo, reinterpret_cast<const QRgb *>(puchFrom), nWidth);
        else if (cImage.format() == QImage::Format_RGB888)
            memcpy(puchTo, puchFrom, static_cast<size_t>(nStride));
        else
            PixelRows::expandGrey(puchTo, puchFrom, nWidth);
    }
}

void toGrey(const QImage &cImage, ParamGray8 *pcGray8)
{
    static const GreyWeights s_cWeights;
    const auto nWidth = static_cast<size_t>(cImage.width());
    uchar *puchTo = pcGray8->getGray8();
    if (puchTo == nullptr)
        return;
    for (int y = 0; y < cImage.height(); ++y, puchTo += nWidth) {
        const uchar *puchFrom = cImage.constScanLine(y);
        if (isPacked(cImage.format())) {
            const auto *pnFrom = reinterpret_cast<const QRgb *>(puchFrom);
            for (size_t x = 0; x < nWidth; ++x)
                puchTo[x] =
                    s_cWeights.grey((pnFrom[x] >> 16) & 0xff, (pnFrom[x] >> 8) & 0xff, pnFrom[x] & 0xff);
        } else if (cImage.format() == QImage::Format_RGB888) {
            for (size_t x = 0; x < nWidth; ++x, puchFrom += 3)
                puchTo[x] = s_cWeights.grey(puchFrom[0], puchFrom[1], puchFrom[2]);
        } else if (cImage.format() == QImage::Format_Grayscale8) {
            PixelRows::lower(puchTo, puchFrom, s_cWeights.cOfGrey, cImage.width());
        } else {
            memcpy(puchTo, puchFrom, nWidth);
        }
    }
}

template <typename Param>
Param *prepare(Param *pcParam, QSize cSize, const ConfigText &cSettings)
{
    pcParam->setName(cSettings.text("OutputName"));
    pcParam->setDescribe(cSettings.text("Describe"));
    pcParam->resize(cSize.width(), cSize.height());
    return pcParam;
}
} // namespace

const char *Loading::getID()
{
    return s_ID;
}

QString Loading::getName()
{
    return QStringLiteral("加载图像");
}

QString Loading::getClass()
{
    return QStringLiteral("系统");
}

char *Loading::showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool)
{
    QString strResult = configFromDialog<DlgLoadFile>(pchConfig, pcAPM);
    return transConfigStr(strResult);
}

char *Loading::execute(char *pchConfig, ArithmParamMgr *pcAPM)
{
    if (pcAPM == nullptr)
        return TextBuffer::blank();
    const ConfigText cSettings(pchConfig);
    const QString strPath = cSettings.text("FilePath");
    const bool bGrey = cSettings.number("BeGray") == 1;
    bool bNumber = false;
    int nID = cSettings.number("PicID", &bNumber);
    if (!bNumber)
        nID = -1;

    QString strError = QStringLiteral("memory is short");
    bool bStored = false;
    const auto fnStored = [&](QSize cSize, QImage::Format eFormat) {
        bStored = true;
        ParamDIB *pcDIB = prepare(pcAPM->getParamDIB(nID), cSize, cSettings);
        return QImage(pcDIB->getDIB(), cSize.width(), cSize.height(), rowBytes(cSize.width()), eFormat);
    };
    QImage cImage = PictureFile::read(strPath, bGrey, strError,
                                      bGrey ? PixelBuffers::Maker(PixelBuffers::image) : fnStored);
    // The other kinds become 24-bit pixels on their way into the store.
    const QImage::Format eFormat = cImage.format();
    if (!isPacked(eFormat) && eFormat != QImage::Format_Indexed8 && eFormat != QImage::Format_Grayscale8)
        cImage = std::move(cImage).convertToFormat(QImage::Format_RGB888);
    if (cImage.isNull()) {
        qCWarning(lcFile).noquote() << "cannot load" << strPath + QLatin1Char(':') << strError;
        return TextBuffer::blank();
    }
    if (bGrey)
        toGrey(cImage, prepare(pcAPM->getParamGray8(nID), cImage.size(), cSettings));
    else if (!bStored)
        toColour(cImage, prepare(pcAPM->getParamDIB(nID), cImage.size(), cSettings));
    return TextBuffer::blank();
}

char *Loading::transConfigStr(QString &strText)
{
    return TextBuffer::storeShared(strText, s_pchConfigStr, s_nBuffLen, gcMutexForConfigStr);
}
