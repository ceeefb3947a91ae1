#ifndef FLOWPANE_H
#define FLOWPANE_H

#include <QHash>
#include <QIcon>
#include <QWidget>

class Control;
class Document;
class FlowPage;
class QAction;
class QLabel;
class QPushButton;
class QStackedWidget;
class TaskInfo;

/// The flow of the selected task, and what is done with its steps.
class FlowPane : public QWidget
{
    Q_OBJECT

public:
    FlowPane(Document &cDocument, Control &cControl, QWidget *pcParent = nullptr);

    void setTask(int nTask); ///< -1: none
    int task() const { return m_nTask; }
    FlowPage *page() const; ///< null when there is none
    void refresh();
    const QList<QAction *> &stepActions() const { return m_lstAction; }

signals:
    /// The store holds what the steps up to a selected one left.
    void ranHere(TaskInfo *pcTask);

private:
    QAction *addAction(const QString &strText, const QString &strTip, const QKeySequence &cKeys,
                       void (FlowPane::*fnDo)());
    bool mayEdit() const;
    int selectedStep() const;
    void enableActions();
    void showPage();
    void flowChanged(int nTask);
    void addStep();
    void configureStep();
    void deleteStep();
    void moveStep(int nBy);
    void moveUp() { moveStep(-1); }
    void moveDown() { moveStep(1); }
    void switchStep();
    void runHere();
    void runOrStop();

    Document &m_cDocument;
    Control &m_cControl;
    int m_nTask = -1;
    QLabel *m_pcName;
    QPushButton *m_pcRun;
    QStackedWidget *m_pcPages;
    QLabel *m_pcNote; ///< instead of a page
    const QIcon m_cRunIcon;
    const QIcon m_cStopIcon;
    QHash<const QObject *, FlowPage *> m_mapPage; ///< by task
    QList<QAction *> m_lstAction;
    QAction *m_pcAdd;
    QAction *m_pcConfigure;
    QAction *m_pcDelete;
    QAction *m_pcUp;
    QAction *m_pcDown;
    QAction *m_pcSwitch;
    QAction *m_pcHere;
};

#endif
