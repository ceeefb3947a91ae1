#ifndef MESSAGEFEED_H
#define MESSAGEFEED_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <QDateTime>
#include <QObject>
#include <QString>

/// Collects what the library and Qt have to say: errors, printed texts and the log of the process.
///
/// The library's queues hold ten messages each and drop further ones, so a thread of its own empties
/// them all the time. The log comes through a message handler that hands each message on to the one
/// before it.
///
/// Threads: made and destroyed on the GUI thread, where received() arrives; one at a time.
class MessageFeed : public QObject
{
    Q_OBJECT

public:
    enum class Kind { Error, Print, Log };
    struct Message {
        Kind m_eKind;
        QDateTime m_cTime;
        QString m_strText;
    };
    using Messages = std::vector<Message>;

    explicit MessageFeed(QObject *pcParent = nullptr);
    ~MessageFeed() override;

signals:
    void received(const MessageFeed::Messages &lstMessage);

private:
    void work();
    void add(Kind eKind, const QString &strText);
    void takeQueue(Kind eKind, int (*fnTake)(char *, int));
    void tell();
    static void handleLog(QtMsgType eType, const QMessageLogContext &cContext, const QString &strText);

    std::mutex m_cMutex; ///< guards what follows, up to the thread
    std::condition_variable m_cStopped;
    bool m_bStop = false;
    bool m_bTold = false; ///< received() is on its way
    Messages m_lstMessage;
    std::vector<char> m_achText; ///< of the thread alone
    std::thread m_cThread;
};

#endif
