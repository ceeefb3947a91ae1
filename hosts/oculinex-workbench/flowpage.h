#ifndef FLOWPAGE_H
#define FLOWPAGE_H

#include <QPointer>
#include <QWidget>

#include "taskMgr/taskMgr.h"

class QComboBox;
class QLabel;
class QPushButton;
class StepTable;

/// The widgets of one task, bound to it from the page's making to the task's end: the task's slots do
/// the editing. While the page is made nobody else may work on the task.
class FlowPage : public QWidget
{
    Q_OBJECT

public:
    explicit FlowPage(TaskInfo &cTask, QWidget *pcParent = nullptr);

    TaskInfo *task() const { return m_pcTask; } ///< null once it is gone
    StepTable &steps() const { return *m_pcSteps; }
    /// Reads the flow again, which was changed past the widgets.
    void fill();
    void refresh(int nTask, bool bBusy);
    /// Its widgets come after that one when one goes on with the tabulator.
    void setTabOrderBehind(QWidget *pcBefore);

signals:
    /// The task may have been edited through the widgets.
    void edited(const QString &strWhat = QString());
    void menuOpened();
    void ranHere();

private:
    void bind();

    const QPointer<TaskInfo> m_pcTask;
    QComboBox *m_pcView;
    QComboBox *m_pcCore;
    QPushButton *m_pcSource;
    QLabel *m_pcSourceName;
    QWidget *m_pcHead;
    StepTable *m_pcSteps;
    QPointer<QMenu> m_pcMenu; ///< the task's, once it has one
    bool m_bAdding = false;   ///< a step, whose row isn't filled yet
};

/// Shows the busy cursor until events are handled again: a run on this thread is over by then, or a
/// dialog is open.
void showBusyCursor();

#endif
