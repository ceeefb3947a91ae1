#ifndef FOLDERSOURCE_H
#define FOLDERSOURCE_H

#include <vector>

#include <QSet>
#include <QString>
#include <QStringList>

#include <opencv2/core.hpp>

#include "sdk/description.h"
#include "sdk/source.h"

/// One instance of "Picture Folder": plays the pictures of a folder in natural order.
///
/// The next picture is decoded before its time comes, so that the rate does not depend on the
/// decoding; its pixels stay with the instance until the picture after it is decoded.
class FolderSource : public Plugin::Source
{
public:
    static constexpr Plugin::About ABOUT{
        "Picture Folder",
        "",
        "Picture Folder",
        {"按自然顺序播放文件夹中的图像。", "Plays the pictures of a folder in natural order."}};

    static constexpr auto PATH =
        Plugin::Directory("Path", {"路径", "Path"})
            .help({"文件夹、单个文件，或文件夹中文件名的通配符（* ? […]）。",
                   "A folder, one file, or a pattern for the file names in a folder (* ? […])."});
    static constexpr auto LOOP = Plugin::Flag("Loop", {"循环", "Loop"})
                                     .help({"播完后从头开始。", "Begin again after the last picture."});
    static constexpr auto FPS =
        Plugin::Real("Fps", {"帧率", "Rate"}, 0, 0, 10000)
            .unit({"帧/秒", "pictures/s"})
            .help({"0：有请求就给出。", "0 gives each picture as soon as it is asked for."});
    static constexpr Plugin::Setting SETTINGS[] = {PATH, LOOP, FPS};

protected:
    void configure(const Plugin::Settings &cSettings) override;
    void start() override { rewind(); }
    Plugin::Picture request(Plugin::Kind eKind) override;

private:
    enum class Next { Ready, Undecodable, Nothing };

    void rewind();
    Next prepareNext(bool bGray);
    bool listFiles();
    void decode(const QString &strFile, bool bGray);
    void readFile(const QString &strFile);

    QString m_strPath;
    bool m_bLoop = false;
    Clock::duration m_cPeriod{}; ///< between two pictures; 0 is as fast as they are asked for

    QStringList m_lstFile;   ///< of this pass
    int m_nNext = 0;         ///< the first that has not been delivered
    bool m_bAnyGood = false; ///< a picture of this pass could be decoded
    bool m_bReady = false;   ///< m_cPixels holds picture m_nNext
    bool m_bReadyGray = false;
    Clock::time_point m_cDue; ///< when the next picture may be delivered

    std::vector<unsigned char> m_achFile; ///< the file as it is
    cv::Mat m_cPixels;                    ///< the decoded picture

    QString m_strFolderError; ///< as it was logged last
    QSet<QString> m_setBad;   ///< files whose failure was logged
};

#endif
