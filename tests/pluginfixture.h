#ifndef PLUGINFIXTURE_H
#define PLUGINFIXTURE_H

#include <memory>

#include <QImage>
#include <QtTest>

#include <opencv2/core.hpp>

#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithms.h"
#include "arithmparammgr.h"

/// What the tests of the plug-ins share. Their executables stand beside the real plug-ins, where the
/// registry looks.

/// Runs a plug-in once; returns the result text of the step.
inline QString runPlugin(const QString &strID, QString strConfig, ArithmParamMgr *pcStore)
{
    Arithm *pcArithm = ArithmMgr::getInstance()->getArithm(strID);
    return pcArithm ? pcArithm->execute(strConfig, pcStore) : strID + " is not there";
}

/// Headers on the store's own pixels.
inline cv::Mat header(ParamDIB *pcPicture)
{
    const int nWidth = pcPicture->getWidth();
    return {pcPicture->getHeight(), nWidth, CV_8UC3, pcPicture->getDIB(),
            static_cast<size_t>((nWidth + 1) * 3 & ~3)};
}

inline cv::Mat header(ParamGray8 *pcPicture)
{
    return {pcPicture->getHeight(), pcPicture->getWidth(), CV_8UC1, pcPicture->getGray8()};
}

/// Copies pixels into the store.
template <typename Param>
void put(Param *pcPicture, const cv::Mat &cPixels)
{
    pcPicture->resize(cPixels.cols, cPixels.rows);
    cv::Mat cStored = header(pcPicture);
    CV_Assert(cStored.type() == cPixels.type());
    cPixels.copyTo(cStored);
}

/// A picture of random pixels; its odd width makes the rows of a colour picture padded. Returns a
/// copy.
template <typename Param>
cv::Mat fill(Param *pcPicture, int nSeed, int nWidth = 61, int nHeight = 40)
{
    pcPicture->resize(nWidth, nHeight);
    cv::Mat cPixels = header(pcPicture);
    cv::RNG cRandom(static_cast<uint64_t>(nSeed));
    cRandom.fill(cPixels, cv::RNG::UNIFORM, 0, 256);
    return cPixels.clone();
}

/// A picture of examples/pictures: blue, green, red or, if it is a grey one, grey.
inline cv::Mat photograph(const char *szFile)
{
    const QImage cFile(QString(OCULINEX_SOURCE_DIR "/examples/pictures/") + szFile);
    const bool bGrey = cFile.isGrayscale();
    QImage cImage = cFile.convertToFormat(bGrey ? QImage::Format_Grayscale8 : QImage::Format_BGR888);
    return cv::Mat(cImage.height(), cImage.width(), bGrey ? CV_8UC1 : CV_8UC3, cImage.bits(),
                   static_cast<size_t>(cImage.bytesPerLine()))
        .clone();
}

inline bool same(const cv::Mat &cA, const cv::Mat &cB)
{
    return cA.size() == cB.size() && cA.type() == cB.type() && cv::norm(cA, cB, cv::NORM_INF) == 0;
}

/// A test whose cases each begin with an empty store.
class PluginTest : public QObject
{
protected:
    void newStore() { m_pcStore = std::make_unique<ArithmParamMgr>(); }
    QString run(const QString &strID, const QString &strConfig)
    {
        return runPlugin(strID, strConfig, m_pcStore.get());
    }
    /// Runs a plug-in that has nothing to complain of.
    void works(const QString &strID, const QString &strConfig) { QCOMPARE(run(strID, strConfig), QString()); }

    std::unique_ptr<ArithmParamMgr> m_pcStore;
};

#endif
