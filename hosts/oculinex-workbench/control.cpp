#include "control.h"

#include <algorithm>

#include <QPointer>

#include "OculinexQTStandAloneInQt.h"

namespace
{
void execute(Control::Action eAction, int nTask)
{
    switch (eAction) {
    case Control::Action::Start:
        startTask(nTask);
        break;
    case Control::Action::Stop:
        stopTask(nTask);
        break;
    case Control::Action::RunOnce:
        runTaskOnce(nTask);
        break;
    }
}
} // namespace

Control::Control()
    : m_pcThread(std::make_unique<QThread>()),
      m_pcWorker(std::make_unique<QObject>()),
      m_pcReply(std::make_unique<QObject>())
{
    m_pcThread->setObjectName(QStringLiteral("control"));
    m_pcWorker->moveToThread(m_pcThread.get());
    m_pcThread->start();
}

Control::~Control()
{
    if (m_bAbandoned) {
        m_pcReply.release();
        m_pcThread.release();
        m_pcWorker.release();
        return;
    }
    m_pcThread->quit();
    m_pcThread->wait();
}

void Control::post(Action eAction, int nTask)
{
    m_lstJob.append({eAction, nTask});
    QMetaObject::invokeMethod(m_pcWorker.get(),
                              [pcThis = QPointer<Control>(this), pcReply = m_pcReply.get(), eAction, nTask] {
                                  execute(eAction, nTask);
                                  QMetaObject::invokeMethod(pcReply, [pcThis] {
                                      if (!pcThis) // abandoned
                                          return;
                                      pcThis->m_lstJob.removeFirst();
                                      emit pcThis->changed();
                                  });
                              });
    emit changed();
}

std::optional<Control::Action> Control::jobOf(int nTask) const
{
    const auto iJob = std::find_if(m_lstJob.begin(), m_lstJob.end(),
                                   [nTask](const Job &cJob) { return cJob.m_nTask == nTask; });
    return iJob == m_lstJob.end() ? std::nullopt : std::make_optional(iJob->m_eAction);
}
