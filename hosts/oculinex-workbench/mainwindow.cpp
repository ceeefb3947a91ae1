#include "mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>

#include "OculinexQTStandAloneInQt.h"
#include "actions.h"
#include "flowpage.h"
#include "flowpane.h"
#include "icons.h"
#include "logpane.h"
#include "memorydiskdock.h"
#include "operatormode.h"
#include "storepane.h"
#include "taskMgr/taskMgr.h"
#include "tasklist.h"
#include "viewpane.h"

namespace
{
constexpr int TICK_MS = 250;
constexpr int RECENT_FILES = 8;
constexpr int VIEWS = 3;      ///< that a host can read
constexpr int NOTE_MS = 6000; ///< for how long the status bar shows a note
constexpr QSize DEFAULT_VIEW(640, 480);
constexpr int SHOWN_LOSSES = 10;
constexpr int FINDINGS = 100; ///< that the log shows of a file
const QString KEY_WIDTH = QStringLiteral("width");
const QString KEY_HEIGHT = QStringLiteral("height");
const QString KEY_ZOOM = QStringLiteral("zoom");
const QString KEY_GEOMETRY = QStringLiteral("geometry");
const QString KEY_STATE = QStringLiteral("state");
const QString KEY_RECENT = QStringLiteral("recent");

QString jobText(Control::Action eAction)
{
    switch (eAction) {
    case Control::Action::Start:
        return MainWindow::tr("Starting %1…");
    case Control::Action::Stop:
        return MainWindow::tr("Stopping %1…");
    case Control::Action::RunOnce:
        return MainWindow::tr("Running %1 once…");
    }
    return {};
}

QString viewName(int nView)
{
    return QStringLiteral("view%1").arg(nView);
}

/// The file that may be opened; empty while a dialog is open, which drops pass by and which may be at work
/// with a task.
QString droppedFile(const QMimeData *pcData)
{
    if (QApplication::activeModalWidget())
        return {};
    const QList<QUrl> lstUrl = pcData->urls();
    return lstUrl.isEmpty() ? QString() : lstUrl.first().toLocalFile();
}
} // namespace

MainWindow::MainWindow()
    : m_cDocument(m_cControl),
      m_pcTasks(new TaskList(m_cDocument, m_cControl)),
      m_pcFlow(new FlowPane(m_cDocument, m_cControl))
{
    enableTaskStatus(true);
    setAcceptDrops(true);
    setCentralWidget(m_pcFlow);
    makeDocks();
    makeActions();
    statusBar();
    restoreLayout();

    connect(m_pcTasks, &TaskList::currentChanged, m_pcFlow, &FlowPane::setTask);
    connect(m_pcTasks, &TaskList::currentChanged, this, &MainWindow::enableActions);
    connect(m_pcTasks, &TaskList::currentChanged, m_pcStore, &StorePane::clear);
    connect(&m_cDocument, &Document::stateChanged, this, &MainWindow::showState);
    connect(&m_cDocument, &Document::tasksChanged, this, &MainWindow::enableActions);
    connect(&m_cDocument, &Document::refused, this,
            [this](const QString &strReason) { statusBar()->showMessage(strReason, NOTE_MS); });
    connect(&m_cControl, &Control::changed, this, [this] {
        const int nTask = m_cControl.currentTask();
        const auto eJob = m_cControl.jobOf(nTask);
        if (eJob)
            statusBar()->showMessage(jobText(*eJob).arg(m_cDocument.taskNames().value(nTask)));
        else
            statusBar()->clearMessage();
        enableActions();
    });
    connect(&m_cTick, &QTimer::timeout, this, &MainWindow::refresh);
    m_cTick.start(TICK_MS);
    showState();
    enableActions();
}

MainWindow::~MainWindow()
{
    if (m_cCheck.joinable())
        m_cCheck.join();
    // The panes go before the tasks and the document that they know.
    m_cTick.stop();
    delete m_pcOperator;
    for (QDockWidget *pcDock : findChildren<QDockWidget *>())
        delete pcDock;
    delete takeCentralWidget();
}

QAction *MainWindow::addAction(const QString &strText, const QIcon &cIcon, const QKeySequence &cKeys,
                               const QString &strTip, Slot fnDo)
{
    QAction *pcAction = makeAction(this, strText, strTip, cKeys, [this, fnDo] { (this->*fnDo)(); });
    pcAction->setIcon(cIcon);
    return pcAction;
}

void MainWindow::makeActions()
{
    QMenu *pcFile = menuBar()->addMenu(tr("&File"));
    auto *pcBar = addToolBar(tr("Tool bar"));
    pcBar->setObjectName(QStringLiteral("toolBar"));
    pcBar->setIconSize(QSize(20, 20));
    const auto fnBoth = [pcBar](QMenu *pcMenu, QAction *pcAction) {
        pcMenu->addAction(pcAction);
        pcBar->addAction(pcAction);
        return pcAction;
    };
    fnBoth(pcFile, addAction(tr("&New"), icon(Icon::New), QKeySequence::New, tr("Begin with no task"),
                             &MainWindow::newFile));
    fnBoth(pcFile, addAction(tr("&Open…"), icon(Icon::Open), QKeySequence::Open, tr("Open a tasks file"),
                             &MainWindow::chooseFile));
    m_pcRecent = pcFile->addMenu(tr("Open &recent"));
    connect(m_pcRecent, &QMenu::aboutToShow, this, &MainWindow::fillRecent);
    pcFile->addSeparator();
    auto *pcSave = new QAction(icon(Icon::Save), tr("&Save"), this);
    pcSave->setShortcut(QKeySequence::Save);
    pcSave->setToolTip(
        tr("Save the tasks file (%1)").arg(pcSave->shortcut().toString(QKeySequence::NativeText)));
    connect(pcSave, &QAction::triggered, this, &MainWindow::save);
    fnBoth(pcFile, pcSave);
    connect(pcFile->addAction(tr("Save &as…")), &QAction::triggered, this, &MainWindow::saveAs);
    pcFile->actions().constLast()->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+S")));
    pcFile->addSeparator();
    QAction *pcQuit = pcFile->addAction(tr("&Quit"), this, &QWidget::close);
    pcQuit->setShortcut(QKeySequence(QStringLiteral("Ctrl+Q")));

    QMenu *pcEdit = menuBar()->addMenu(tr("&Edit"));
    pcBar->addSeparator();
    m_pcUndo = fnBoth(pcEdit, addAction(tr("&Undo"), icon(Icon::Undo), QKeySequence::Undo,
                                        tr("Take the last edit back"), &MainWindow::undo));
    m_pcRedo =
        fnBoth(pcEdit, addAction(tr("&Redo"), icon(Icon::Redo), QKeySequence(QStringLiteral("Ctrl+Shift+Z")),
                                 tr("Make the edit again"), &MainWindow::redo));
    pcEdit->addSeparator();
    pcEdit->addActions(m_pcFlow->stepActions());

    QMenu *pcTask = menuBar()->addMenu(tr("&Task"));
    pcBar->addSeparator();
    m_pcStart = fnBoth(pcTask, addAction(tr("&Start"), icon(Icon::Start), QKeySequence(QStringLiteral("F5")),
                                         tr("Start the selected task"), &MainWindow::startCurrent));
    m_pcStop =
        fnBoth(pcTask, addAction(tr("S&top"), icon(Icon::Stop), QKeySequence(QStringLiteral("Shift+F5")),
                                 tr("Stop the selected task"), &MainWindow::stopCurrent));
    m_pcOnce = fnBoth(pcTask, addAction(tr("Run &once"), icon(Icon::Once), QKeySequence(QStringLiteral("F7")),
                                        tr("Run the selected task once"), &MainWindow::runCurrentOnce));
    pcTask->addSeparator();
    pcBar->addSeparator();
    m_pcStartAll = fnBoth(pcTask, addAction(tr("Start a&ll"), icon(Icon::StartAll),
                                            QKeySequence(QStringLiteral("Ctrl+F5")), tr("Start all tasks"),
                                            &MainWindow::startAll));
    m_pcStopAll = fnBoth(pcTask, addAction(tr("Stop all"), icon(Icon::StopAll),
                                           QKeySequence(QStringLiteral("Ctrl+Shift+F5")),
                                           tr("Stop all tasks"), &MainWindow::stopAll));
    pcTask->addSeparator();
    pcTask->addActions(m_pcTasks->editActions());

    QMenu *pcView = menuBar()->addMenu(tr("&View"));
    for (const QDockWidget *pcDock : findChildren<QDockWidget *>())
        pcView->addAction(pcDock->toggleViewAction());
    pcView->addAction(pcBar->toggleViewAction());
    pcView->addSeparator();
    pcView->addActions(m_pcOperator->actions());
    menuBar()->addMenu(tr("&Help"))->addAction(tr("&About…"), this, &MainWindow::about);
}

void MainWindow::makeDocks()
{
    const auto fnDock = [this](const QString &strTitle, const QString &strName, QWidget *pcPane,
                               Qt::DockWidgetArea eArea) {
        auto *pcDock = new QDockWidget(strTitle, this);
        pcDock->setObjectName(strName);
        pcDock->setWidget(pcPane);
        addDockWidget(eArea, pcDock);
        return pcDock;
    };
    auto *pcTasks = fnDock(tr("Tasks"), QStringLiteral("tasksDock"), m_pcTasks, Qt::LeftDockWidgetArea);
    QDockWidget *apcView[VIEWS];
    for (int nView = 0; nView < VIEWS; ++nView) {
        m_lstView.append(new ViewPane(nView));
        apcView[nView] =
            fnDock(tr("View %1").arg(nView), viewName(nView), m_lstView.constLast(), Qt::RightDockWidgetArea);
        connect(m_lstView.constLast(), &ViewPane::settingsChanged, this, &MainWindow::keepViewSettings);
    }
    tabifyDockWidget(apcView[1], apcView[2]);
    apcView[1]->raise();
    auto *pcLogPane = new LogPane;
    auto *pcLog = fnDock(tr("Log"), QStringLiteral("logDock"), pcLogPane, Qt::BottomDockWidgetArea);
    connect(pcLogPane, &LogPane::failed, this,
            [this](const QString &strText) { statusBar()->showMessage(strText.simplified(), NOTE_MS); });
    m_pcStore = new StorePane;
    auto *pcStore = fnDock(tr("Store"), QStringLiteral("storeDock"), m_pcStore, Qt::BottomDockWidgetArea);
    auto *pcDisks = new MemoryDiskDock(this);
    addDockWidget(Qt::BottomDockWidgetArea, pcDisks);
    splitDockWidget(pcLog, pcStore, Qt::Horizontal);
    tabifyDockWidget(pcStore, pcDisks);
    pcStore->raise();
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    resizeDocks({pcTasks, apcView[0]}, {335, 400}, Qt::Horizontal);
    resizeDocks({pcLog, pcStore}, {420, 600}, Qt::Horizontal);
    resizeDocks({apcView[0], apcView[1], pcLog}, {320, 320, 270}, Qt::Vertical);
    m_pcOperator = new OperatorMode(m_cDocument, m_cControl, m_lstView, *pcLogPane, this);
    connect(m_pcOperator, &OperatorMode::startRequested, this, &MainWindow::startAll);
    connect(m_pcOperator, &OperatorMode::stopRequested, this, &MainWindow::stopAll);
    connect(m_pcFlow, &FlowPane::ranHere, this, [this, pcStore](TaskInfo *pcTask) {
        m_pcStore->showStore(pcTask);
        pcStore->show();
        pcStore->raise();
    });
}

void MainWindow::restoreLayout()
{
    const QSettings cSettings;
    if (!restoreGeometry(cSettings.value(KEY_GEOMETRY).toByteArray()))
        resize(1440, 860);
    restoreState(cSettings.value(KEY_STATE).toByteArray());
}

void MainWindow::applyViewSettings()
{
    for (int nView = 0; nView < VIEWS; ++nView) {
        const QJsonObject cSide = m_cDocument.paneSide(viewName(nView));
        m_lstView[nView]->setViewSize(
            {cSide[KEY_WIDTH].toInt(DEFAULT_VIEW.width()), cSide[KEY_HEIGHT].toInt(DEFAULT_VIEW.height())});
        m_lstView[nView]->setZoom(cSide[KEY_ZOOM].toDouble());
    }
}

void MainWindow::keepViewSettings()
{
    for (int nView = 0; nView < VIEWS; ++nView) {
        const QSize cSize = m_lstView[nView]->viewSize(); // empty: as large as the pane
        m_cDocument.setPaneSide(viewName(nView), {{KEY_WIDTH, std::max(0, cSize.width())},
                                                  {KEY_HEIGHT, std::max(0, cSize.height())},
                                                  {KEY_ZOOM, m_lstView[nView]->zoom()}});
    }
}

void MainWindow::showState()
{
    setWindowTitle(tr("%1[*] – Oculinex Workbench").arg(m_cDocument.name()));
    setWindowFilePath(m_cDocument.path());
    setWindowModified(m_cDocument.isModified());
    const QUndoStack &cUndo = m_cDocument.undoStack();
    m_pcUndo->setText(cUndo.canUndo() ? tr("&Undo %1").arg(cUndo.undoText()) : tr("&Undo"));
    m_pcRedo->setText(cUndo.canRedo() ? tr("&Redo %1").arg(cUndo.redoText()) : tr("&Redo"));
    m_pcUndo->setEnabled(cUndo.canUndo());
    m_pcRedo->setEnabled(cUndo.canRedo());
}

void MainWindow::refresh()
{
    m_pcTasks->refresh();
    m_pcFlow->refresh();
    enableActions();
}

void MainWindow::enableActions()
{
    const int nTask = m_pcTasks->current();
    const TaskInfo *pcTask = Document::task(nTask);
    const bool bFree = pcTask && !m_cControl.jobOf(nTask);
    m_pcStart->setEnabled(bFree && !pcTask->IsRunning());
    m_pcOnce->setEnabled(m_pcStart->isEnabled());
    m_pcStop->setEnabled(bFree && pcTask->IsRunning());
    bool bAnyStopped = false;
    for (int nOther = 0; nOther < m_cDocument.taskCount(); ++nOther)
        bAnyStopped = bAnyStopped || m_cDocument.isIdle(nOther);
    m_pcStartAll->setEnabled(bAnyStopped);
    m_pcStopAll->setEnabled(anyTaskWorks());
}

void MainWindow::newFile()
{
    if (mayLose())
        afterStopping(
            [this] {
                m_cDocument.makeNew();
                applyViewSettings();
            },
            false);
}

void MainWindow::chooseFile()
{
    const QString strFolder = m_cDocument.path().isEmpty() ? QString() : QFileInfo(m_cDocument.path()).path();
    const QString strPath = QFileDialog::getOpenFileName(this, tr("Open a tasks file"), strFolder,
                                                         tr("Tasks files (*.tasks);;All files (*)"));
    if (!strPath.isEmpty())
        openFile(strPath);
}

void MainWindow::openFile(const QString &strPath)
{
    QByteArray achText;
    if (isOpened(strPath, Document::read(strPath, achText)) && mayLose())
        afterStopping([this, strPath] { load(strPath); }, false);
}

bool MainWindow::isOpened(const QString &strPath, const QString &strError)
{
    if (!strError.isEmpty())
        QMessageBox::warning(this, tr("Open"), QStringLiteral("%1: %2").arg(strPath, strError));
    return strError.isEmpty();
}

void MainWindow::load(const QString &strPath)
{
    QString strWarning;
    if (!isOpened(strPath, m_cDocument.open(strPath, strWarning)))
        return;
    noteRecent(m_cDocument.path());
    applyViewSettings();
    m_pcTasks->setCurrent(0);
    tellWhatIsOdd();
    if (!strWarning.isEmpty())
        QMessageBox::warning(
            this, tr("Open"),
            tr("What the workbench keeps beside the tasks file is left out.\n%1").arg(strWarning));
}

void MainWindow::tellWhatIsOdd()
{
    if (m_cCheck.joinable())
        m_cCheck.join();
    m_cCheck = std::thread([this, strPath = m_cDocument.path(), strName = m_cDocument.name()] {
        const QStringList lstFinding = Document::findings(strPath);
        for (const QString &strFinding : lstFinding.mid(0, FINDINGS))
            qWarning("%s: %s", qUtf8Printable(strName), qUtf8Printable(strFinding));
        if (lstFinding.size() > FINDINGS)
            qWarning("%s: oculinex-run --check lists %d more", qUtf8Printable(strName),
                     lstFinding.size() - FINDINGS);
        if (!lstFinding.isEmpty())
            QMetaObject::invokeMethod(this, [this] {
                statusBar()->showMessage(tr("The log tells what is odd about this file."), NOTE_MS);
            });
    });
}

bool MainWindow::save()
{
    return m_cDocument.path().isEmpty() ? saveAs() : saveTo(m_cDocument.path());
}

bool MainWindow::saveAs()
{
    const QString strSuggested =
        m_cDocument.path().isEmpty() ? m_cDocument.name() + QStringLiteral(".tasks") : m_cDocument.path();
    QFileDialog cDialog(this, tr("Save the tasks file"), QFileInfo(strSuggested).path(),
                        tr("Tasks files (*.tasks);;All files (*)"));
    cDialog.setAcceptMode(QFileDialog::AcceptSave);
    cDialog.setDefaultSuffix(QStringLiteral("tasks"));
    cDialog.selectFile(strSuggested);
    return cDialog.exec() == QDialog::Accepted && saveTo(cDialog.selectedFiles().constFirst());
}

bool MainWindow::maySave(const QString &strLoss, const QString &strYes)
{
    QMessageBox cBox(QMessageBox::Warning, tr("Save"), strLoss, QMessageBox::Cancel, this);
    cBox.setDefaultButton(QMessageBox::Cancel);
    const QPushButton *pcYes = cBox.addButton(strYes, QMessageBox::DestructiveRole);
    cBox.exec();
    return cBox.clickedButton() == pcYes;
}

bool MainWindow::saveTo(const QString &strPath)
{
    commitCell();
    QStringList lstLost = m_cDocument.lostSources();
    if (lstLost.size() > SHOWN_LOSSES)
        lstLost = lstLost.mid(0, SHOWN_LOSSES) << QStringLiteral("…");
    if (!lstLost.isEmpty() &&
        !maySave(
            tr("Saving loses the data source of these tasks, since it can't be made here. Its plug-in may "
               "be missing.\n%1")
                .arg(lstLost.join('\n')),
            tr("&Save")))
        return false;
    if (strPath == m_cDocument.path() && m_cDocument.wasChangedByOthers() &&
        !maySave(tr("%1 was changed by another program since it was read or saved here.").arg(strPath),
                 tr("&Overwrite")))
        return false;
    const QString strError = m_cDocument.save(strPath);
    if (!strError.isEmpty()) {
        QMessageBox::warning(this, tr("Save"), QStringLiteral("%1: %2").arg(strPath, strError));
        return false;
    }
    noteRecent(m_cDocument.path());
    statusBar()->showMessage(tr("Saved %1").arg(m_cDocument.path()), NOTE_MS);
    return true;
}

void MainWindow::fillRecent()
{
    m_pcRecent->clear();
    for (const QString &strPath : QSettings().value(KEY_RECENT).toStringList())
        m_pcRecent->addAction(QString(strPath).replace('&', QLatin1String("&&")), this,
                              [this, strPath] { openFile(strPath); });
    if (m_pcRecent->isEmpty())
        m_pcRecent->addAction(tr("None yet"))->setEnabled(false);
}

void MainWindow::noteRecent(const QString &strPath)
{
    QSettings cSettings;
    QStringList lstRecent = cSettings.value(KEY_RECENT).toStringList();
    lstRecent.removeAll(strPath);
    lstRecent.prepend(strPath);
    cSettings.setValue(KEY_RECENT, QStringList(lstRecent.mid(0, RECENT_FILES)));
}

bool MainWindow::mayLose()
{
    commitCell();
    for (int nTask = 0; nTask < m_cDocument.taskCount(); ++nTask)
        m_cDocument.noticeEdit(nTask);
    if (!m_cDocument.isModified())
        return true;
    QMessageBox cBox(QMessageBox::Question, tr("Unsaved changes"),
                     tr("Save the changes to %1?").arg(m_cDocument.name()), QMessageBox::NoButton, this);
    QPushButton *pcSave = cBox.addButton(tr("&Save"), QMessageBox::AcceptRole);
    const QPushButton *pcDiscard = cBox.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    cBox.addButton(tr("Cancel"), QMessageBox::RejectRole);
    cBox.setDefaultButton(pcSave);
    cBox.exec();
    return cBox.clickedButton() == pcSave ? save() : cBox.clickedButton() == pcDiscard;
}

bool MainWindow::anyTaskWorks() const
{
    return !m_cDocument.mayRearrange(0);
}

void MainWindow::afterStopping(const std::function<void()> &fnThen, bool bClosing)
{
    if (!anyTaskWorks()) {
        fnThen();
        return;
    }
    stopAll();
    auto *pcNote = new QProgressDialog(tr("Waiting for the tasks to stop…"), {}, 0, 0, this);
    auto *pcButton = new QPushButton(bClosing ? tr("Close without waiting") : tr("Cancel"));
    pcNote->setCancelButton(pcButton);
    pcNote->setWindowTitle(tr("Stopping"));
    pcNote->setWindowModality(Qt::ApplicationModal); // the operator's window waits, too
    pcNote->setAttribute(Qt::WA_DeleteOnClose);
    // By the button, Esc or the box's own: what was to come doesn't.
    connect(pcNote, &QProgressDialog::canceled, this, [this, pcNote] {
        m_cControl.disconnect(pcNote);
        pcNote->deleteLater();
    });
    if (bClosing)
        connect(pcButton, &QPushButton::clicked, this, [this, fnThen] {
            m_cControl.abandon();
            fnThen();
        });
    connect(&m_cControl, &Control::changed, pcNote, [this, fnThen, pcNote] {
        if (anyTaskWorks())
            return;
        pcNote->disconnect(this);
        pcNote->close();
        // Not below the control's own signal.
        QTimer::singleShot(0, this, fnThen);
    });
    pcNote->show();
}

void MainWindow::closeEvent(QCloseEvent *pcEvent)
{
    if (!m_bMayClose) {
        pcEvent->ignore();
        if (mayLose())
            afterStopping(
                [this] {
                    m_bMayClose = true;
                    close();
                },
                true);
        if (!m_bMayClose)
            return;
    }
    QSettings cSettings;
    cSettings.setValue(KEY_GEOMETRY, saveGeometry());
    cSettings.setValue(KEY_STATE, saveState());
    pcEvent->accept();
    if (!isVisible()) // behind the operator's window: Qt ends the program for what was in sight only
        QTimer::singleShot(0, qApp, &QApplication::quit);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *pcEvent)
{
    if (!droppedFile(pcEvent->mimeData()).isEmpty())
        pcEvent->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *pcEvent)
{
    const QString strPath = droppedFile(pcEvent->mimeData());
    if (strPath.isEmpty())
        return;
    pcEvent->acceptProposedAction();
    // The program that the file was dragged from waits for this function.
    QTimer::singleShot(0, this, [this, strPath] { openFile(strPath); });
}

void MainWindow::undo()
{
    m_cDocument.noticeEdit(m_pcTasks->current());
    m_cDocument.undo();
}

void MainWindow::redo()
{
    m_cDocument.noticeEdit(m_pcTasks->current());
    m_cDocument.redo();
}

void MainWindow::startCurrent()
{
    m_cDocument.noticeEdit(m_pcTasks->current());
    m_cControl.post(Control::Action::Start, m_pcTasks->current());
}

void MainWindow::stopCurrent()
{
    m_cControl.post(Control::Action::Stop, m_pcTasks->current());
}

void MainWindow::runCurrentOnce()
{
    m_cDocument.noticeEdit(m_pcTasks->current());
    m_cControl.post(Control::Action::RunOnce, m_pcTasks->current());
}

void MainWindow::startAll()
{
    m_cDocument.noticeEdit(m_pcTasks->current());
    for (int nTask = 0; nTask < m_cDocument.taskCount(); ++nTask)
        if (m_cDocument.isIdle(nTask))
            m_cControl.post(Control::Action::Start, nTask);
}

void MainWindow::stopAll()
{
    for (int nTask = 0; nTask < m_cDocument.taskCount(); ++nTask)
        if (!m_cDocument.isIdle(nTask) && m_cControl.jobOf(nTask) != Control::Action::Stop)
            m_cControl.post(Control::Action::Stop, nTask);
}

void MainWindow::about()
{
    QMessageBox::about(this, tr("About"),
                       tr("<h3>Oculinex Workbench %1</h3><p>Builds, tries and watches the tasks of vision "
                          "devices.</p>")
                           .arg(QApplication::applicationVersion()));
}
