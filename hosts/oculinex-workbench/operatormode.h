#ifndef OPERATORMODE_H
#define OPERATORMODE_H

#include <QObject>
#include <QPointer>

#include "operatorsetup.h"

class Document;
class LogPane;
class OperatorWindow;
class QAction;
class ViewPane;

/// Opens the operator's window in place of the main one, and keeps with the document what its author
/// chose to be seen there.
class OperatorMode : public QObject
{
    Q_OBJECT

public:
    /// pcMain owns all, and is hidden while the operator's window is open.
    OperatorMode(Document &cDocument, const QList<ViewPane *> &lstView, LogPane &cLog, QWidget *pcMain);
    ~OperatorMode() override;

    const QList<QAction *> &actions() const { return m_lstAction; }
    enum class Leaving { ShowsMain, EndsProgram };
    OperatorWindow *open(Leaving eLeaving = Leaving::ShowsMain);
    OperatorSetup setup() const;
    void setSetup(const OperatorSetup &cSetup);

signals:
    void startRequested();
    void stopRequested();

private:
    void configure();

    Document &m_cDocument;
    const QList<ViewPane *> m_lstView;
    LogPane &m_cLog;
    QWidget *m_pcMain;
    QPointer<OperatorWindow> m_pcWindow;
    QList<QAction *> m_lstAction;
};

#endif
