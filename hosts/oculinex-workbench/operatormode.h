#ifndef OPERATORMODE_H
#define OPERATORMODE_H

#include <QObject>
#include <QPointer>

class Control;
class Document;
class LogPane;
class OperatorWindow;
class QAction;
class ViewPane;

/// Opens the operator's window in place of the main one, and the dialog in which its author chooses what
/// is seen there.
class OperatorMode : public QObject
{
    Q_OBJECT

public:
    /// pcMain owns all, and is hidden while the operator's window is open.
    OperatorMode(Document &cDocument, const Control &cControl, const QList<ViewPane *> &lstView,
                 LogPane &cLog, QWidget *pcMain);
    ~OperatorMode() override;

    const QList<QAction *> &actions() const { return m_lstAction; }
    enum class Leaving { ShowsMain, EndsProgram };
    OperatorWindow *open(Leaving eLeaving = Leaving::ShowsMain);

signals:
    void startRequested();
    void stopRequested();

private:
    void configure();

    Document &m_cDocument;
    const Control &m_cControl;
    const QList<ViewPane *> m_lstView;
    LogPane &m_cLog;
    QWidget *m_pcMain;
    QPointer<OperatorWindow> m_pcWindow;
    QList<QAction *> m_lstAction;
};

#endif
