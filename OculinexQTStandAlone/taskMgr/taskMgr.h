#ifndef TASKMGR_H
#define TASKMGR_H

#include <atomic>

#include <pthread.h>

#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QPoint>
#include <QString>

#include "DataSource/datasource.h"
#include "oculinexqtstandalone_export.h"
#include "taskMgr/taskstatus.h"

class ArithmParamMgr;
class QAction;
class QMenu;
class QTableWidgetItem;

/// One step of a flow.
class OCULINEXQTSTANDALONE_EXPORT TaskItem
{
public:
    static constexpr int CLEAN_UP_TIMES = 999999999; ///< limit that makes a step a clean-up step

    int m_nMaxExeTimes = -1; ///< runs that execute the step: below 0 all, 0 none
    int m_nExeTimes = 0;     ///< runs that executed it since the start
    QString m_strArithmID;
    QString m_strOptionStr; ///< the algorithm's config string
    QString m_strClassName; ///< the algorithm's class, for display
    QString m_strArithmName;
    QString m_strDescribe; ///< the user's description
};

/// One task: a named flow of steps, fed by one data source, run on a thread of its own.
///
/// Threads: one controlling thread makes, starts, stops, edits and deletes tasks (a task is made on
/// the thread whose event loop delivers its failure message). IsRunning() and getStatus() may be
/// called by any thread while the task lives. The callbacks are set while the task is idle; they
/// are called on the task's thread, and for a failed run on the thread that owns the object.
///
/// A step must not stop, start or delete its own task: it would wait for itself.
class OCULINEXQTSTANDALONE_EXPORT TaskInfo : public QObject
{
    Q_OBJECT

public:
    TaskInfo(QString strName, void (*fnHaveErrorMessage)(QString));
    /// Stops the task and waits for its thread.
    ~TaskInfo() override;

    QString getName();
    QList<TaskItem> &getTaskItem(); ///< the flow; not to be changed while the task runs
    bool IsRunning() const;
    void setMssageCallBack(void (*fnHaveErrorMessage)(QString));
    void setPrintCallBack(void (*fnHavePrintMessage)(QString));

    /// The task as a block of the tasks file, without the block's own markers.
    QString toString();
    void fromString(QString strTask);

    void initTaskItemExeTimes(); ///< sets every step's execution count to 0
    /// One run: a picture, then the steps up to nLastStep (all if negative), none begun after
    /// nTimeoutMs (no limit if negative). False with the reason in strMsg, or with an empty strMsg
    /// when a step said "stop:". bSingle resets the counts at the end and shows step times in the
    /// flow table.
    bool runOnce(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs);
    void startTask();
    /// Waits for the current run and the clean-up steps, for as long as they take.
    void stopTask();
    /// One run and the clean-up steps on the calling thread.
    void runTaskOnce();
    static void *threadTaskFunc(void *pvTask); ///< body of the task's thread

    void addRunTaskButton(QObject *pcButton);
    void addViewSelectCombo(QObject *pcCombo);
    void addThreadSelectCombo(QObject *pcCombo);
    void addSelectDataSourceButton(QObject *pcButton);
    void addTaskFlowListWidget(QObject *pcTable);
    void connectEvents();
    void disconnectEvents();

    /// Switches the status functions of all tasks on or off; off at first, and then a run pays
    /// nothing for them.
    static void setStatusEnabled(bool bEnabled);
    static bool isStatusEnabled();
    TaskStatus getStatus() const;

Q_SIGNALS:
    void threadFinished(QString strMsg, bool bSuccess);

public Q_SLOTS:
    void RunClicked();
    void ViewSelected(int nIndex);
    void ThreadSelected(int nIndex);
    void threadFinishedArrived(QString strMsg, bool bSuccess);
    void showContextmenu(QPoint cPos);
    void addArithm(QAction *pcAction);
    void insertArithm(int nRow, QAction *pcAction);
    void delArithm();
    void prepareForRemoveArithm(TaskItem cItem); ///< called before a step is removed; does nothing
    void modifyOption();
    QString showConfigWindow(int nArithmPos); ///< always returns the empty text
    void selectDataSource();
    void DataSourceClicked();
    void runHere();
    void TaskFlowTblCellChanged(int nRow, int nColumn);
    void TableItemClicked(QTableWidgetItem *pcItem);

public:
    QTableWidgetItem *m_pcLastSelectedItem = nullptr;
    QString m_strName;
    QObject *m_pcRunTask = nullptr;
    QObject *m_pcViewSelect = nullptr;
    QObject *m_pcThreadSelect = nullptr;
    QObject *m_pcDataSource = nullptr;
    QObject *m_pcTaskFlow = nullptr;
    QMenu *m_pcMenu = nullptr;
    QMap<QAction *, TaskItem> m_mapArithm;
    QList<TaskItem> m_lstArithm;                      ///< the flow, in execution order
    ArithmParamMgr *m_pcAPM;                          ///< owned
    DataSource::DataSourceInstance *m_pcDS = nullptr; ///< owned
    QString m_strDataSourceConfigString;
    int m_nWhichKernel = -1; ///< core to pin the thread to; below 1 none
    std::atomic<int> m_nWhichView{0};
    std::atomic<bool> m_bRunning{false};
    std::atomic<bool> m_bExit{false};
    std::atomic<bool> m_bExited{true};
    void (*m_fnHaveErrorMessage)(QString);
    void (*m_fnHavePrintMessage)(QString) = nullptr;
    std::atomic<pthread_t> m_hThread{0};
};

/// All tasks by position, one manager for the process; it owns them. Positions are keys: removing a
/// task renumbers nothing.
///
/// Threads: one controlling thread changes the tasks; getTaskNum, isTaskRunning and getTaskStatus
/// may be called by any thread. A task that getTask returns lives until the controlling thread
/// removes it.
class OCULINEXQTSTANDALONE_EXPORT TaskMgr
{
public:
    static TaskMgr *getInstance();
    /// Deletes the manager with its tasks; not from within a call to it or to one of its tasks.
    static void deleteThis();

    TaskMgr();
    ~TaskMgr();
    TaskMgr(const TaskMgr &) = delete;
    TaskMgr &operator=(const TaskMgr &) = delete;

    /// Callbacks of the tasks that are added from now on.
    void setMssageCallBack(void (*fnHaveErrorMessage)(QString));
    void setPrintCallBack(void (*fnHavePrintMessage)(QString));

    /// Takes the task over. One that stands at that position already is replaced, not deleted.
    void addTask(TaskInfo *pcTask, int nPos);
    TaskInfo *getTask(int nPos);
    int getTaskNum();
    void removeTask(int nPos);
    void clear();

    QString toString();
    /// Replaces all tasks by those of a tasks file's text; by none when memory is short
    /// (std::bad_alloc).
    void fromString(QString strTasks);

    /// False when there is no task at that position.
    bool isTaskRunning(int nPos, bool &bRunning);
    bool getTaskStatus(int nPos, TaskStatus &cStatus);

    QMap<int, TaskInfo *> m_mapTask;
    void (*m_fnHaveErrorMessage)(QString) = nullptr;
    void (*m_fnHavePrintMessage)(QString) = nullptr;

    static TaskMgr *s_pcInstance;
    static QMutex s_cMutex;
};

#endif
