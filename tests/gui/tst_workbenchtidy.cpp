// Every window of the workbench and every dialog of the library, as it looks in each language.

#include <QDialogButtonBox>
#include <QDockWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "DataSource/datasource.h"
#include "DataSource/dlgdatasourceconfig.h"
#include "Drawing/dlgdrawingconfig.h"
#include "LoadFile/dlgloadfile.h"
#include "MemoryDisk/dlgmemorydiskconfig.h"
#include "MemoryDisk/dlgmemorydiskstatus.h"
#include "SaveFile/dlgsavefile.h"
#include "SaveFile/dlgselectpic.h"
#include "arithmparammgr.h"
#include "bench.h"
#include "datatable.h"
#include "dlgoperator.h"
#include "language.h"
#include "operatormode.h"
#include "operatorwindow.h"
#include "tidy.h"

namespace
{
const QString COINS = QStringLiteral(OCULINEX_SOURCE_DIR "/examples/coins.tasks");
constexpr int SHOWN_TASK = 1;
constexpr int SHOWN_STEP = 2; ///< with numbers for the operator

/// All tabs of a window, one after the other; what is untidy about the first that is.
QString faultOfAllTabs(QWidget &cWindow)
{
    if (!QTest::qWaitForWindowExposed(&cWindow))
        return "is not shown";
    QString strFault = Tidy::fault(&cWindow);
    for (QTabWidget *pcTabs : cWindow.findChildren<QTabWidget *>())
        for (int nTab = 0; nTab < pcTabs->count() && strFault.isEmpty(); ++nTab) {
            pcTabs->setCurrentIndex(nTab);
            QCoreApplication::processEvents();
            strFault = Tidy::fault(&cWindow);
        }
    return strFault;
}

/// A caption of letters that are no Chinese ones: nobody has translated it.
QString untranslated(const QWidget &cWindow)
{
    QStringList lstCaption;
    for (const QAction *pcAction : cWindow.findChildren<QAction *>())
        lstCaption << pcAction->text() << pcAction->toolTip() << pcAction->statusTip();
    for (const QWidget *pcWidget : cWindow.findChildren<QWidget *>()) {
        lstCaption << pcWidget->toolTip() << pcWidget->windowTitle();
        if (qobject_cast<const QAbstractButton *>(pcWidget) || qobject_cast<const QTabBar *>(pcWidget))
            lstCaption << Tidy::captions(pcWidget);
    }
    for (const QString &strCaption : lstCaption)
        if (strCaption.contains(QRegularExpression("[A-Za-z]{2}")) &&
            !strCaption.contains(QRegularExpression("\\p{Han}")))
            return strCaption;
    return {};
}
} // namespace

class TestWorkbenchTidy : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { keepSettingsIn(m_cFolder.path()); }

    void windows_data() { addRows("locale  strLanguage\nen  en\nzh  zh"); }
    void windows()
    {
        QFETCH(QString, strLanguage);
        chooseLanguage(strLanguage);
        Bench cBench;
        cBench.resize(1280, 800);
        QCOMPARE(faultOfAllTabs(cBench), QString()); // without a task
        cBench.openFile(COINS);
        cBench.select(SHOWN_TASK);
        cBench.steps()->selectRow(0);
        cBench.trigger(strLanguage == "zh" ? "执行到此处.H." : "Run to here");
        for (QDockWidget *pcDock : cBench.findChildren<QDockWidget *>()) {
            pcDock->raise();
            QTRY_VERIFY(!pcDock->widget()->visibleRegion().isEmpty());
            QCOMPARE(Tidy::fault(&cBench), QString());
        }
        if (strLanguage == "zh")
            QCOMPARE(untranslated(cBench), QString());

        OperatorSetup cSetup;
        cSetup.m_nTask = SHOWN_TASK;
        const TaskItem &cStep = Document::task(SHOWN_TASK)->m_lstArithm[SHOWN_STEP];
        cSetup.m_lstStep = {
            {SHOWN_TASK, SHOWN_STEP, pickableNumbers(cStep.m_strArithmID, cStep.m_strOptionStr)}};
        QVERIFY(!cSetup.m_lstStep[0].m_lstPick.isEmpty());
        cBench.document().setOperatorSetup(cSetup);
        DlgOperator cDialog(cBench.document().operatorSetup());
        cDialog.show();
        QCOMPARE(faultOfAllTabs(cDialog), QString());
        OperatorWindow *pcOperator = cBench.operatorMode().open();
        QTRY_COMPARE(faultOfAllTabs(*pcOperator), QString());
        if (strLanguage == "zh")
            QCOMPARE(untranslated(*pcOperator) + untranslated(cDialog), QString());
        pcOperator->close();
    }

    /// The author offers no number that the step refuses, and none that hides the present one, 101.
    void authorPicksARange()
    {
        chooseLanguage("en");
        Bench cBench(COINS);
        DlgOperator cDialog(cBench.document().operatorSetup());
        auto *pcSteps = cDialog.findChild<QTreeWidget *>("steps");
        QTreeWidgetItem *pcRow = pcSteps->findItems("Block", Qt::MatchExactly | Qt::MatchRecursive).value(0);
        QVERIFY(pcRow);
        pcRow->setCheckState(0, Qt::Checked);
        auto *pcOK = cDialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        for (const QStringList &lstRange : {QStringList{"1", "201"}, QStringList{"3", "99"}}) {
            pcRow->setText(2, lstRange[0]);
            pcRow->setText(3, lstRange[1]);
            QString strTold;
            QVERIFY(isAnswered({DialogUser::read(strTold)}, [&] { pcOK->click(); }));
            QVERIFY2(strTold.contains("Block: "), qPrintable(strTold));
        }
        QVERIFY(cDialog.result() != QDialog::Accepted);
    }

    void dialogs_data() { addRows("locale  strLanguage\nen  en\nzh  zh"); }
    void dialogs()
    {
        QFETCH(QString, strLanguage);
        chooseLanguage(strLanguage);
        TaskMgr::getInstance()->clear();
        ArithmParamMgr cStore;
        cStore.getParamDIB(1)->setName("图像");
        cStore.getParamStrings(2)->setDescribe("文字");
        QMap<QString, DataSource::DataSourceInfo *> mapSource =
            DataSource::getInstance()->m_mapDataSourceInfo;
        const std::unique_ptr<QDialog> apcDialog[] = {
            std::make_unique<DlgMemoryDiskConfig>(QString(), &cStore),
            std::make_unique<DlgMemoryDiskStatus>(),
            std::make_unique<DlgDataSource>(&mapSource, &cStore, QString()),
            std::make_unique<DlgDrawingConfig>(QString(), &cStore),
            std::make_unique<DlgSaveFile>(QString(), &cStore),
            std::make_unique<DlgSelectPic>(&cStore),
            std::make_unique<DlgLoadFile>(QString(), &cStore)};
        for (const auto &pcDialog : apcDialog) {
            pcDialog->show();
            const QString strFault = faultOfAllTabs(*pcDialog);
            QVERIFY2(strFault.isEmpty(), qPrintable(pcDialog->metaObject()->className() + (": " + strFault)));
        }
    }

private:
    QTemporaryDir m_cFolder;
};

QTEST_MAIN(TestWorkbenchTidy)

#include "tst_workbenchtidy.moc"
