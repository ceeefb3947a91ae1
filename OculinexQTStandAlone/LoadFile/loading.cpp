#include "LoadFile/loading.h"

#include <array>
#include <cstring>

#include <QImage>
#include <QImageReader>
#include <QMutex>

#include "arithmparammgr.h"
#include "configtext.h"
#include "logging.h"
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

    GreyWeights()
    {
        for (size_t i = 0; i < 256; ++i) {
            adFirst[i] = static_cast<double>(i) * 0.114;
            adSecond[i] = static_cast<double>(i) * 0.587;
            adThird[i] = static_cast<double>(i) * 0.299;
        }
    }
};

void toColour(const QImage &cImage, ParamDIB *pcDIB)
{
    uchar *puchDest = pcDIB->getDIB();
    if (puchDest == nullptr)
        return;
    if (cImage.format() == QImage::Format_RGB888) {
        // The rows of both are padded to 4 bytes.
        memcpy(puchDest, cImage.constBits(), static_cast<size_t>(cImage.sizeInBytes()));
        return;
    }
    const int nStride = ((cImage.width() + 1) * 3) & ~3;
    for (int y = 0; y < cImage.height(); ++y) {
        const uchar *puchFrom = cImage.constScanLine(y);
        uchar *puchTo = puchDest + static_cast<size_t>(y) * static_cast<size_t>(nStride);
        for (int x = 0; x < cImage.width(); ++x, puchTo += 3)
            puchTo[0] = puchTo[1] = puchTo[2] = puchFrom[x];
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
        if (cImage.format() == QImage::Format_Indexed8) {
            memcpy(puchTo, puchFrom, nWidth);
            continue;
        }
        for (size_t x = 0; x < nWidth; ++x, puchFrom += 3)
            puchTo[x] =
                static_cast<uchar>(s_cWeights.adThird[puchFrom[2]] + s_cWeights.adSecond[puchFrom[1]] +
                                   s_cWeights.adFirst[puchFrom[0]]);
    }
}

template <typename Param>
Param *prepare(Param *pcParam, const QImage &cImage, const QString &strName, const QString &strDescribe)
{
    pcParam->setName(strName);
    pcParam->setDescribe(strDescribe);
    pcParam->resize(cImage.width(), cImage.height());
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

char *Loading::showConfigWindow(char * /*pchConfig*/, ArithmParamMgr * /*pcAPM*/, bool /*bFlag*/)
{
    QString strResult;
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

    QImageReader cReader(strPath);
    cReader.setDecideFormatFromContent(true);
    QImage cImage = cReader.read();
    if (!cImage.isNull() && cImage.format() != QImage::Format_Indexed8)
        cImage = cImage.convertToFormat(QImage::Format_RGB888);
    if (cImage.isNull()) {
        qCWarning(lcFile).noquote() << "cannot load" << strPath + QLatin1Char(':') << cReader.errorString();
        return TextBuffer::blank();
    }

    const QString strName = cSettings.text("OutputName");
    const QString strDescribe = cSettings.text("Describe");
    if (bGrey)
        toGrey(cImage, prepare(pcAPM->getParamGray8(nID), cImage, strName, strDescribe));
    else
        toColour(cImage, prepare(pcAPM->getParamDIB(nID), cImage, strName, strDescribe));
    return TextBuffer::blank();
}

char *Loading::transConfigStr(QString &strText)
{
    return TextBuffer::storeShared(strText.toUtf8(), s_pchConfigStr, s_nBuffLen, gcMutexForConfigStr);
}
