#include "operatormode.h"

#include <QAction>

#include "actions.h"
#include "control.h"
#include "dlgoperator.h"
#include "document.h"
#include "logpane.h"
#include "operatorwindow.h"
#include "viewpane.h"

OperatorMode::OperatorMode(Document &cDocument, const Control &cControl, const QList<ViewPane *> &lstView,
                           LogPane &cLog, QWidget *pcMain)
    : QObject(pcMain),
      m_cDocument(cDocument),
      m_cControl(cControl),
      m_lstView(lstView),
      m_cLog(cLog),
      m_pcMain(pcMain)
{
    m_lstAction = {makeAction(this, tr("&Operator view"),
                              tr("Show what the operator sees, on the whole screen"),
                              QKeySequence(QStringLiteral("F11")), [this] { open(); }),
                   makeAction(this, tr("What the operator &sees…"),
                              tr("Choose view, verdict and settings of the operator view"), {},
                              [this] { configure(); })};
}

OperatorMode::~OperatorMode()
{
    delete m_pcWindow;
}

OperatorWindow *OperatorMode::open(Leaving eLeaving)
{
    if (m_pcWindow)
        return m_pcWindow;
    const OperatorSetup cSetup = m_cDocument.operatorSetup();
    ViewPane *const pcView = m_lstView[cSetup.m_nView];
    auto *const pcWindow = new OperatorWindow(cSetup);
    m_pcWindow = pcWindow;
    m_pcWindow->setAttribute(Qt::WA_QuitOnClose, false); // the main window ends the program
    connect(&m_cLog, &LogPane::printed, m_pcWindow, &OperatorWindow::printed);
    // For as long as the window lives, which is a while after it was left.
    const auto fnTellBusy = [this, pcWindow] { pcWindow->setBusy(!m_cControl.isIdle()); };
    connect(&m_cControl, &Control::changed, m_pcWindow, fnTellBusy);
    fnTellBusy();
    connect(m_pcWindow, &OperatorWindow::startRequested, this, &OperatorMode::startRequested);
    connect(m_pcWindow, &OperatorWindow::stopRequested, this, &OperatorMode::stopRequested);
    connect(m_pcWindow, &OperatorWindow::edited, this,
            [this](int nTask, const QString &strWhat) { m_cDocument.noticeEdit(nTask, strWhat); });
    connect(m_pcWindow, &OperatorWindow::leaving, m_pcMain, [this, pcView, eLeaving, pcWindow] {
        if (eLeaving == Leaving::EndsProgram) { // unless the main window has questions
            m_pcMain->close();
            return;
        }
        pcWindow->disconnect(m_pcMain); // keys that were typed meanwhile would leave it once more
        pcView->setMirror(nullptr);
        m_pcMain->show();
        pcWindow->hide();
        pcWindow->deleteLater();
        m_pcWindow.clear();
    });
    pcView->setMirror(m_pcWindow->pictureView());
    m_pcWindow->showFullScreen();
    m_pcMain->hide();
    return m_pcWindow;
}

void OperatorMode::configure()
{
    for (int nTask = 0; nTask < m_cDocument.taskCount(); ++nTask)
        m_cDocument.noticeEdit(nTask);
    DlgOperator cDialog(m_cDocument.operatorSetup(), m_pcMain);
    if (cDialog.exec() == QDialog::Accepted)
        m_cDocument.setOperatorSetup(cDialog.setup());
}
