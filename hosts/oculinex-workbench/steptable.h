#ifndef STEPTABLE_H
#define STEPTABLE_H

#include <QWidget>

class QScrollBar;
class QTableWidget;
class QTableWidgetItem;
class TaskItem;
struct TaskStatus;

/// The steps of a flow: the library's three columns, which it fills and reads itself, and beside them a
/// switch and the figures of each step. It can be scrolled while the library has the table disabled.
class StepTable : public QWidget
{
    Q_OBJECT

public:
    explicit StepTable(QWidget *pcParent = nullptr);

    QTableWidget *table() const { return m_pcTable; }
    int selectedStep() const; ///< -1 when there is none
    void select(int nStep);
    /// Writes the steps into the library's columns, as the library does.
    void fill(const QList<TaskItem> &lstStep);
    void showFigures(const QList<TaskItem> &lstStep, const TaskStatus &cStatus);
    /// Keeps edits off while somebody else works on the task.
    void setBusy(bool bBusy) { m_pcHolder->setEnabled(!bBusy); }

signals:
    void stepSwitched(int nStep, bool bOn);
    void configurationWanted();

protected:
    void wheelEvent(QWheelEvent *pcEvent) override;
    bool eventFilter(QObject *pcWatched, QEvent *pcEvent) override;

private:
    QTableWidgetItem *cell(int nRow, int nColumn);

    QTableWidget *m_pcTable;
    QWidget *m_pcHolder;
    QScrollBar *m_pcVertical; ///< stand beside the table, which may be disabled
    QScrollBar *m_pcHorizontal;
};

#endif
