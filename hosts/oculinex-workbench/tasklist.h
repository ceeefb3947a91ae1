#ifndef TASKLIST_H
#define TASKLIST_H

#include <QVector>
#include <QWidget>

#include "figures.h"

class Control;
class Document;
class QAction;
class QMenu;
class QTableWidget;
class QTableWidgetItem;

/// The tasks of the document with their state, and what is done with them as a whole.
class TaskList : public QWidget
{
    Q_OBJECT

public:
    TaskList(Document &cDocument, const Control &cControl, QWidget *pcParent = nullptr);

    int current() const; ///< -1 when there is none
    void setCurrent(int nTask);
    void refresh(); ///< reads the figures of all tasks
    const QList<QAction *> &editActions() const { return m_lstAction; }

signals:
    void currentChanged(int nTask);

private:
    void rebuild();
    void refreshRow(int nTask);
    void enableActions();
    void itemChanged(QTableWidgetItem *pcItem);
    void move(int nBy);
    void fitColumns();
    QAction *addAction(const QString &strText, const QString &strTip, const QKeySequence &cKeys,
                       void (TaskList::*fnDo)());
    void add();
    void duplicate();
    void rename();
    void remove();
    void moveUp() { move(-1); }
    void moveDown() { move(1); }

    Document &m_cDocument;
    const Control &m_cControl;
    QTableWidget *m_pcTable;
    QList<QAction *> m_lstAction;
    QAction *m_pcDuplicate;
    QAction *m_pcRename;
    QAction *m_pcRemove;
    QAction *m_pcUp;
    QAction *m_pcDown;
    QVector<Rate> m_lstRate;
    const QIcon m_cRunning;
    const QIcon m_cBusy;
    const QIcon m_cStopped;
    const QIcon m_cFailed;
};

#endif
