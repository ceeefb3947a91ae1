#include "SaveFile/saving.h"

#include <atomic>
#include <cstring>
#include <memory>

#include <QDateTime>
#include <QDir>
#include <QImage>
#include <QMutex>
#include <QVector>

#include "Drawing/drawing.h"
#include "SaveFile/dlgsavefile.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"
#include "logging.h"
#include "picturefile.h"
#include "pixelbuffers.h"
#include "pixelrows.h"
#include "qguard.h"
#include "sharedfield.h"
#include "textbuffer.h"
#include "viewhold.h"

const char *Saving::s_ID = "KQ_Saving";
char *Saving::s_pchConfigStr = TextBuffer::create();
int Saving::s_nBuffLen = TextBuffer::INITIAL_LENGTH;

namespace
{
QMutex gcMutexForConfigStr;  // guards Saving::s_pchConfigStr and its length
std::atomic<int> gNumber{0}; // running number of the files of all save steps

constexpr int WINDOW_STORE = 4; ///< <Wnd> of a picture of the store; below it views

QString nameText(const ConfigText &cSettings, ArithmParamMgr *pcAPM)
{
    if (cSettings.number("IsStringID") < 1)
        return cSettings.text("StringID");
    const ParamStrings *pcStrings = pcAPM->getParamStrings(cSettings.number("StringID"));
    QGuard cGuard(gcMutexForConfigStr);
    const int nCopied = pcStrings->getString(Saving::s_pchConfigStr, Saving::s_nBuffLen - 1, 0);
    Saving::s_pchConfigStr[nCopied] = '\0';
    return QString::fromUtf8(Saving::s_pchConfigStr);
}

QString identity(const ConfigText &cSettings)
{
    switch (cSettings.number("Identity")) {
    case 0: {
        const QDateTime cNow = QDateTime::currentDateTime();
        const QDate cDate = cNow.date();
        const QTime cTime = cNow.time();
        return QString::asprintf("[%d.%d.%d][%d.%d.%d][%d]", cDate.year(), cDate.month(), cDate.day(),
                                 cTime.hour(), cTime.minute(), cTime.second(), cTime.msec());
    }
    case 1:
        return QString::number(gNumber++);
    default:
        return QString();
    }
}

QString extension(const ConfigText &cSettings)
{
    switch (cSettings.number("Format")) {
    case 0:
        return QStringLiteral(".jpg");
    case 1:
        return QStringLiteral(".png");
    case 2:
        return QStringLiteral(".bmp");
    default:
        return QString();
    }
}

/// The full path of the file; makes its directory.
QString filePath(const ConfigText &cSettings, ArithmParamMgr *pcAPM)
{
    const QString strName = nameText(cSettings, pcAPM);
    const QString strIdentity = identity(cSettings);
    const bool bExchanged = cSettings.number("Exg") == 1;
    const QString strFile = (bExchanged ? strIdentity : strName) + cSettings.text("Separator") +
                            (bExchanged ? strName : strIdentity) + extension(cSettings);

    QString strBase = cSettings.text("BasePath");
    if (!QDir(strBase).exists() && !QDir().mkdir(strBase))
        qCWarning(lcFile).noquote() << "cannot make the directory" << strBase;
    if (!strBase.endsWith(QDir::separator()))
        strBase += QLatin1Char('/');
    return strBase + strFile;
}

void tellFailure(const QString &strPath, const QString &strError)
{
    qCWarning(lcFile).noquote() << "cannot save" << strPath + QLatin1Char(':') << strError;
}

void save(const QImage &cImage, const QString &strPath)
{
    QString strError;
    if (!PictureFile::write(cImage, strPath, strError))
        tellFailure(strPath, strError);
}

void saveColour(const ParamDIB *pcDIB, const QString &strPath)
{
    const int nWidth = pcDIB->getWidth();
    const int nHeight = pcDIB->getHeight();
    uchar *puchDIB = pcDIB->getDIB();
    if (puchDIB == nullptr || nWidth < 1 || nHeight < 1)
        return save(QImage(), strPath);
    const int nStride = ((nWidth + 1) * 3) & ~3;
    uchar *puchRow = puchDIB;
    for (int y = 0; y < nHeight; ++y, puchRow += nStride)
        PixelRows::exchangeRedBlue(puchRow, nWidth);
    save(QImage(static_cast<const uchar *>(puchDIB), nWidth, nHeight, nStride, QImage::Format_RGB888),
         strPath);
}

void saveGrey(const ParamGray8 *pcGray8, const QString &strPath)
{
    const int nWidth = pcGray8->getWidth();
    const int nHeight = pcGray8->getHeight();
    uchar *puchGray8 = pcGray8->getGray8();
    if (puchGray8 == nullptr || nWidth < 1 || nHeight < 1)
        return save(QImage(), strPath);
    QImage cImage;
    if (nWidth % 4 == 0) {
        // Wrapped as pixels that may be written: the colour table would make a copy of others.
        cImage = QImage(puchGray8, nWidth, nHeight, nWidth, QImage::Format_Indexed8);
    } else {
        cImage = PixelBuffers::image({nWidth, nHeight}, QImage::Format_Indexed8);
        const auto nPadding = static_cast<size_t>(cImage.bytesPerLine() - nWidth);
        for (int y = 0; y < nHeight && !cImage.isNull(); ++y, puchGray8 += nWidth) {
            memcpy(cImage.scanLine(y), puchGray8, static_cast<size_t>(nWidth));
            memset(cImage.scanLine(y) + nWidth, 0, nPadding); // goes into a BMP file
        }
    }
    QVector<QRgb> vecTable(256);
    for (int i = 0; i < vecTable.size(); ++i)
        vecTable[i] = qRgb(i, i, i);
    cImage.setColorTable(vecTable);
    // The JPEG encoder looks each pixel of an indexed picture up; the file is the same.
    if (strPath.endsWith(QLatin1String(".jpg")))
        cImage.reinterpretAsFormat(QImage::Format_Grayscale8);
    save(cImage, strPath);
}

void saveView(int nView, const QString &strPath)
{
    QImage cImage;
    {
        const ViewHold cView(nView);
        if (!cView)
            return tellFailure(strPath, QStringLiteral("there is no view %1").arg(nView));
        if (!cView->haveDrawingOpt())
            return;
        cImage = PixelBuffers::image(
            {SharedField::load(cView->m_nViewWidth), SharedField::load(cView->m_nViewHeight)},
            QImage::Format_RGB888);
        cImage.fill(0);
        while (Drawing::DrawingOpt *pcObject = cView->popDrawingOpt()) {
            const std::unique_ptr<Drawing::DrawingOpt> pcOwned(pcObject);
            pcOwned->draw(&cImage, pcOwned->m_pcAPM);
        }
    }
    save(cImage, strPath);
}
} // namespace

const char *Saving::getID()
{
    return s_ID;
}

QString Saving::getName()
{
    return QStringLiteral("保存图像");
}

QString Saving::getClass()
{
    return QStringLiteral("系统");
}

char *Saving::showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool)
{
    QString strResult = configFromDialog<DlgSaveFile>(pchConfig, pcAPM);
    return transConfigStr(strResult);
}

char *Saving::execute(char *pchConfig, ArithmParamMgr *pcAPM)
{
    if (pcAPM == nullptr)
        return TextBuffer::blank();
    const ConfigText cSettings(pchConfig);
    const QString strPath = filePath(cSettings, pcAPM);
    const int nWindow = cSettings.number("Wnd");
    const int nID = cSettings.number("PicID");
    const QString strType = cSettings.text("PicType");
    const bool bFromStore = nWindow == WINDOW_STORE && nID >= 0;
    if (nWindow >= 0 && nWindow < WINDOW_STORE)
        saveView(nWindow, strPath);
    else if (bFromStore && strType == QLatin1String("RGB"))
        saveColour(pcAPM->getParamDIB(nID), strPath);
    else if (bFromStore && strType == QLatin1String("Gray"))
        saveGrey(pcAPM->getParamGray8(nID), strPath);
    else
        tellFailure(strPath, QStringLiteral("the step names no picture"));
    return TextBuffer::blank();
}

char *Saving::transConfigStr(QString &strText)
{
    return TextBuffer::storeShared(strText, s_pchConfigStr, s_nBuffLen, gcMutexForConfigStr);
}
