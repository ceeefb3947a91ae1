#ifndef BENCH_H
#define BENCH_H

#include <QtTest>

#include <QAction>
#include <QFileDialog>
#include <QListWidget>
#include <QMenu>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>

#include "dialoguser.h"
#include "flowpage.h"
#include "flowpane.h"
#include "mainwindow.h"
#include "steptable.h"
#include "taskMgr/taskMgr.h"
#include "taskfixture.h"

/// What the tests of the workbench's window share.

inline const QString PICTURES = QStringLiteral(OCULINEX_SOURCE_DIR "/examples/pictures");
/// A task of such steps, which is given the three pictures of the examples once, or those of a folder
/// again and again.
inline QString flowText(const QString &strName, const QList<TaskItem> &lstStep, int nView = 0,
                        const QString &strFolder = QString())
{
    const QString strSource =
        strFolder.isEmpty() ? PICTURES + "</Path>" : strFolder + "</Path><Loop>1</Loop>";
    TaskInfo cTask(strName, nullptr);
    cTask.fromString("<-TaskName->" + strName +
                     "</-TaskName-><-DataSource-><DSName>Picture Folder</DSName><OutputName>p</OutputName>"
                     "<OutputDescribe></OutputDescribe><OutputType>RGB</OutputType><OutputID>9</OutputID>"
                     "<Config><Path>" +
                     strSource + "<Fps>1000</Fps></Config></-DataSource->");
    cTask.getTaskItem() = lstStep;
    cTask.m_nWhichView = nView;
    return "<=TaskInfo=>\n" + cTask.toString() + "\n</=TaskInfo=>\n";
}

/// A task whose steps are those of the fixture's algorithm, written "[limit;]config".
inline QString taskText(const QString &strName, const QStringList &lstStep)
{
    QList<TaskItem> lstItem;
    for (const QString &strStep : lstStep)
        lstItem.append(Fake::parse(strStep));
    return flowText(strName, lstItem);
}

inline void write(const QString &strPath, const QByteArray &achText)
{
    QFile cFile(strPath);
    QVERIFY(cFile.open(QFile::WriteOnly) && cFile.write(achText) == achText.size());
}

/// A file with the tasks A, B and C, another one at each call.
inline QString makeFile(const QTemporaryDir &cFolder)
{
    static int s_nFile = 0;
    QString strFile = cFolder.filePath(QString("检测 %1.tasks").arg(++s_nFile));
    write(strFile, (taskText("A", {"a", "5;b", "c"}) + taskText("B", {"d"}) + taskText("C", {})).toUtf8());
    return strFile;
}

/// What windows remember stays in the test's folder.
inline void keepSettingsIn(const QString &strFolder)
{
    QApplication::setOrganizationName("oculinex");
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, strFolder);
}

inline QByteArray contents(const QString &strPath)
{
    QFile cFile(strPath);
    return cFile.open(QFile::ReadOnly) ? cFile.readAll() : QByteArray();
}

inline QString allTasks()
{
    return TaskMgr::getInstance()->toString();
}

/// The window and the parts that a test takes hold of.
class Bench : public MainWindow
{
public:
    explicit Bench(const QString &strFile = QString())
    {
        show();
        if (!strFile.isEmpty())
            openFile(strFile);
    }

    QTableWidget *tasks() { return findChild<QTableWidget *>("tasks"); }
    FlowPage *page() { return findChild<FlowPane *>()->page(); }
    QTableWidget *steps() { return page()->steps().table(); }
    static QStringList firstColumn(const QTableWidget &cTable)
    {
        QStringList lstText;
        for (int nRow = 0; nRow < cTable.rowCount(); ++nRow)
            lstText.append(cTable.item(nRow, 0)->text());
        return lstText;
    }
    QStringList names() { return firstColumn(*tasks()); }
    QString stepNames() { return firstColumn(*steps()).join(' '); }
    void select(int nTask) { tasks()->setCurrentCell(nTask, 0); }

    QAction *action(const QString &strText)
    {
        // "Undo" and "Redo" are followed by what they do.
        const QRegularExpression cText('^' + strText + (strText.endsWith("do") ? "( .*)?$" : "…?$"));
        for (QAction *pcAction : findChildren<QAction *>())
            if (cText.match(pcAction->text().remove('&')).hasMatch())
                return pcAction;
        qFatal("there is no action %s", qUtf8Printable(strText));
    }
    bool trigger(const QString &strText)
    {
        const bool bEnabled = action(strText)->isEnabled();
        action(strText)->trigger();
        return bEnabled;
    }
    /// Chooses an algorithm in the context menu of the flow.
    void chooseAlgorithm(const QString &strName)
    {
        trigger("Add step");
        TaskInfo *pcTask = page()->task();
        pcTask->m_pcMenu->close();
        for (auto i = pcTask->m_mapArithm.begin(); i != pcTask->m_mapArithm.end(); ++i)
            if (i.value().m_strArithmName == strName)
                return i.key()->trigger();
        qFatal("there is no algorithm %s", qUtf8Printable(strName));
    }
};

/// Types a shortcut, written as in a menu.
inline void typeKeys(QWidget &cWidget, const QString &strKeys)
{
    const int nKeys = QKeySequence(strKeys)[0];
    QTest::keyClick(&cWidget, static_cast<Qt::Key>(nKeys & ~Qt::KeyboardModifierMask),
                    static_cast<Qt::KeyboardModifiers>(nKeys & Qt::KeyboardModifierMask));
}

/// Does what opens dialogs; whether they could be answered so, one after the other.
template <typename Do>
bool isAnswered(const std::list<DialogUser::Act> &lstAct, const Do &fnDo)
{
    const DialogUser cUser(lstAct);
    fnDo();
    return cUser.isContent();
}

inline DialogUser::Act chooseFile(const QString &strPath)
{
    return [strPath](QWidget &cTop) {
        auto *pcDialog = qobject_cast<QFileDialog *>(&cTop);
        pcDialog->selectFile(strPath);
        QMetaObject::invokeMethod(pcDialog, "accept");
    };
}

inline DialogUser::Act pressButton(const QString &strText)
{
    return [strText](QWidget &cTop) {
        for (QAbstractButton *pcButton : cTop.findChildren<QAbstractButton *>())
            if (pcButton->text().remove('&') == strText)
                pcButton->click();
    };
}

inline DialogUser::Act useSource(const QString &strKind)
{
    return [strKind](QWidget &cDialog) {
        auto *pcList = cDialog.findChild<QListWidget *>("lbSourceNames");
        pcList->setCurrentItem(pcList->findItems(strKind, Qt::MatchExactly).value(0));
        DialogUser::click(cDialog, "btnSetting");
    };
}

#endif
