#ifndef FOLDERSOURCE_H
#define FOLDERSOURCE_H

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <QSet>
#include <QString>
#include <QStringList>

#include <opencv2/core.hpp>

#include "sdk/settings.h"

/// One instance of "Picture Folder": plays the pictures of a folder in natural order.
///
/// The next picture is decoded before its time comes, so that the rate does not depend on the
/// decoding; its pixels stay with the instance until the picture after it is decoded.
///
/// Threads: every function may be called by any thread; the lock is given up while one waits.
class FolderSource
{
public:
    unsigned char *request(std::string_view strType, int &nWidth, int &nHeight);
    void configure(const Plugin::Settings &cSettings);
    void start();
    void stop() {}
    std::string lastError();
    void setError(const std::string &strReason);

private:
    using Clock = std::chrono::steady_clock;
    enum class Next { Ready, Undecodable, Nothing };

    void rewind();
    Next prepareNext(bool bGray);
    bool listFiles();
    void decode(const QString &strFile, bool bGray);
    void readFile(const QString &strFile);

    std::mutex m_cMutex;

    QString m_strPath;
    bool m_bLoop = false;
    Clock::duration m_cPeriod{}; ///< between two pictures; 0 is as fast as they are asked for
    std::string m_strConfigError;

    QStringList m_lstFile;   ///< of this pass
    int m_nNext = 0;         ///< the first that has not been delivered
    bool m_bAnyGood = false; ///< a picture of this pass could be decoded
    bool m_bReady = false;   ///< m_cPixels holds picture m_nNext
    bool m_bReadyGray = false;
    Clock::time_point m_cDue; ///< when the next picture may be delivered

    std::vector<unsigned char> m_achFile;   ///< the file as it is
    std::vector<unsigned char> m_achPadded; ///< pixels whose rows need padding
    cv::Mat m_cPixels;                      ///< the decoded picture, perhaps a header on m_achPadded

    QString m_strError;       ///< what went wrong last in this pass
    QString m_strFolderError; ///< as it was logged last
    QSet<QString> m_setBad;   ///< files whose failure was logged
};

#endif
