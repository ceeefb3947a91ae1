#include <memory>

#include <opencv2/imgcodecs.hpp>

#include <QFile>
#include <QTemporaryDir>

#include "LoadFile/loading.h"
#include "SaveFile/saving.h"
#include "arithmparammgr.h"
#include "cases.h"

namespace
{
using Bench::Measure;

struct Format {
    const char *m_szName;
    const char *m_szSuffix;
    int m_nNumber; ///< in the step's config string
    double m_dLoadGoal;
    std::vector<int> m_vSettings; ///< what the peer saves with: those that ours has
};
const Format FORMATS[] = {
    {"PNG",
     "png",
     1,
     1.3,
     {cv::IMWRITE_PNG_COMPRESSION, 6, cv::IMWRITE_PNG_STRATEGY, cv::IMWRITE_PNG_STRATEGY_DEFAULT}},
    {"JPEG", "jpg", 0, 1.1, {cv::IMWRITE_JPEG_QUALITY, 75}},
    {"BMP", "bmp", 2, 1.1, {}},
};

/// A store with one picture, and a directory for files.
struct Place {
    explicit Place(bool bColour) : m_bColour(bColour), m_cPicture(Bench::photograph(1920, 1080, bColour))
    {
        unsigned char *puchPixels = nullptr;
        if (bColour) {
            m_pcStore->getParamDIB(1)->resize(m_cPicture.cols, m_cPicture.rows);
            puchPixels = m_pcStore->getParamDIB(1)->getDIB();
        } else {
            m_pcStore->getParamGray8(1)->resize(m_cPicture.cols, m_cPicture.rows);
            puchPixels = m_pcStore->getParamGray8(1)->getGray8();
        }
        std::copy_n(m_cPicture.data, m_cPicture.step * static_cast<size_t>(m_cPicture.rows), puchPixels);
    }

    std::string path(const char *szName, const Format &cFormat) const
    {
        return (m_cDir.path() + "/").toStdString() + szName + "." + cFormat.m_szSuffix;
    }
    QByteArray saveConfig(const Format &cFormat) const
    {
        return "<BasePath>" + m_cDir.path().toUtf8() +
               "</BasePath><StringID>ours</StringID><Identity>2</Identity><Format>" +
               QByteArray::number(cFormat.m_nNumber) + "</Format><Wnd>4</Wnd><PicType>" +
               (m_bColour ? "RGB" : "Gray") + "</PicType><PicID>1</PicID>";
    }

    bool m_bColour;
    cv::Mat m_cPicture;
    std::shared_ptr<ArithmParamMgr> m_pcStore{ArithmParamMgr::newInstance(), ArithmParamMgr::deleteInstance};
    QTemporaryDir m_cDir;
};
} // namespace

void Bench::addPictureFiles(Table &cTable)
{
    for (const bool bColour : {true, false}) {
        const std::string strKind = bColour ? " 1920x1080 colour" : " 1920x1080 grey";
        for (const Format &cFormat : FORMATS) {
            cTable.add("save " + std::string(cFormat.m_szName) + strKind, [&] {
                const auto pcPlace = std::make_shared<Place>(bColour);
                QByteArray achConfig = pcPlace->saveConfig(cFormat);
                const std::string strPeer = pcPlace->path("peer", cFormat);
                Case cCase{{"save step", timed([=]() mutable {
                                Saving::execute(achConfig.data(), pcPlace->m_pcStore.get());
                            })},
                           {"cv::imwrite, same settings", timed([=, &cFormat] {
                                cv::imwrite(strPeer, pcPlace->m_cPicture, cFormat.m_vSettings);
                            })}};
                cCase.m_dGoal = 1.1;
                return cCase;
            });
            cTable.add("load " + std::string(cFormat.m_szName) + strKind, [&] {
                const auto pcPlace = std::make_shared<Place>(bColour);
                const std::string strPath = pcPlace->path("both", cFormat);
                cv::imwrite(strPath, pcPlace->m_cPicture, cFormat.m_vSettings);
                QByteArray achConfig = "<FilePath>" + QByteArray::fromStdString(strPath) +
                                       "</FilePath><BeGray>" + (bColour ? "0" : "1") +
                                       "</BeGray><PicID>2</PicID>";
                Case cCase{{"load step", timed([=]() mutable {
                                Loading::execute(achConfig.data(), pcPlace->m_pcStore.get());
                            })},
                           {"cv::imread", timed([=] {
                                (void)pcPlace; // keeps the file
                                cv::imread(strPath, bColour ? cv::IMREAD_COLOR : cv::IMREAD_GRAYSCALE);
                            })}};
                cCase.m_dGoal = cFormat.m_dLoadGoal;
                return cCase;
            });
        }
    }
}
