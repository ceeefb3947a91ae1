#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <functional>
#include <thread>

#include <QMainWindow>
#include <QTimer>

#include "control.h"
#include "document.h"

class FlowPane;
class OperatorMode;
class StorePane;
class TaskList;
class ViewPane;

/// The window of the workbench. The document and the library's tasks outlive its panes.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;
    MainWindow(const MainWindow &) = delete;
    MainWindow &operator=(const MainWindow &) = delete;

    /// Stops what runs, asks about what isn't saved, then opens the file; none of it for one that can't
    /// be opened.
    void openFile(const QString &strPath);

    Document &document() { return m_cDocument; }
    Control &control() { return m_cControl; }
    OperatorMode &operatorMode() { return *m_pcOperator; }

protected:
    void closeEvent(QCloseEvent *pcEvent) override;
    void dragEnterEvent(QDragEnterEvent *pcEvent) override;
    void dropEvent(QDropEvent *pcEvent) override;

private:
    using Slot = void (MainWindow::*)();

    void makeActions();
    QAction *addAction(const QString &strText, const QIcon &cIcon, const QKeySequence &cKeys,
                       const QString &strTip, Slot fnDo);
    void makeDocks();
    void restoreLayout();
    void applyViewSettings();
    void keepViewSettings();
    void showState();
    void refresh();
    void enableActions();

    void newFile();
    void chooseFile();
    void load(const QString &strPath);
    /// False for an error, which is told.
    bool isOpened(const QString &strPath, const QString &strError);
    /// On a thread of its own: a large file takes seconds.
    void tellWhatIsOdd();
    bool save();
    bool saveAs();
    bool saveTo(const QString &strPath);
    /// Asks about what saving destroys.
    bool maySave(const QString &strLoss, const QString &strYes);
    void fillRecent();
    void noteRecent(const QString &strPath);
    /// True when nothing is unsaved, or the user saved it or gave it up.
    bool mayLose();
    bool anyTaskWorks() const;
    /// Stops all tasks without keeping the window from its events, then calls fnThen.
    void afterStopping(const std::function<void()> &fnThen, bool bClosing);

    void undo();
    void redo();
    void startCurrent();
    void stopCurrent();
    void runCurrentOnce();
    void startAll();
    void stopAll();
    void about();

    Control m_cControl;
    Document m_cDocument;
    TaskList *m_pcTasks;
    FlowPane *m_pcFlow;
    StorePane *m_pcStore = nullptr;
    OperatorMode *m_pcOperator = nullptr;
    QList<ViewPane *> m_lstView;
    QMenu *m_pcRecent = nullptr;
    QAction *m_pcUndo = nullptr;
    QAction *m_pcRedo = nullptr;
    QAction *m_pcStart = nullptr;
    QAction *m_pcStop = nullptr;
    QAction *m_pcOnce = nullptr;
    QAction *m_pcStartAll = nullptr;
    QAction *m_pcStopAll = nullptr;
    std::thread m_cCheck; ///< of the file that was opened last
    QTimer m_cTick;
    bool m_bMayClose = false; ///< nothing runs and nothing is unsaved
};

#endif
