#ifndef PLUGIN_PREVIEW_H
#define PLUGIN_PREVIEW_H

#include <functional>
#include <memory>
#include <vector>

#include <QImage>
#include <QObject>
#include <QString>

#include "arithmparammgr.h"

namespace Plugin
{
/// Computes what a configuration leads to, in a thread of its own and on copies, so that a window can
/// show it while its user works on. Settings that come faster than they are computed are passed over:
/// the newest is always computed last.
///
/// Every function belongs to the thread of the object. The thread that computes shares nothing with
/// it but the requests and the result, and ends by itself after the object is gone.
class Preview : public QObject
{
    Q_OBJECT

public:
    struct Output {
        ArithmParamMgr::Kind m_eKind;
        int m_nID;
    };
    /// What a computation needs; nothing in it belongs to the task.
    struct Request {
        /// Runs on a store that holds copies of the inputs; returns a text for the user and throws
        /// when it fails.
        std::function<std::string(ArithmParamMgr &)> m_fnRun;
        std::shared_ptr<const ArithmParamMgr> m_pcInputs; ///< never changed again once it is here
        /// The picture that is shown, perhaps an input, and the lists drawn over it.
        Output m_cPicture;
        std::vector<Output> m_lstOverlay;
    };
    struct Result {
        QImage m_cPicture;
        QString m_strText;  ///< what the computation returned, and the texts that it put out
        QString m_strError; ///< empty when all went well
        double m_dMs = 0;   ///< of the computation alone
    };

    explicit Preview(QObject *pcParent = nullptr);
    ~Preview() override;

    void compute(Request cRequest);
    /// Results of what was asked so far are not told any more.
    void cancel();
    bool isBusy() const; ///< a request was made whose result was not told yet

Q_SIGNALS:
    void computed(const Plugin::Preview::Result &cResult);

private Q_SLOTS:
    void takeResult();

private:
    class Worker;
    std::shared_ptr<Worker> m_pcWorker;
    unsigned m_nAsked = 0; ///< requests so far
    unsigned m_nTold = 0;  ///< the request whose result was told last
};
} // namespace Plugin

#endif
