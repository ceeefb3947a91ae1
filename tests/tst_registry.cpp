// The registry of algorithms as a host meets it: folders of good and bad files beside the executable,
// look-ups by several threads, algorithms that misbehave.

#include <dlfcn.h>
#include <elf.h>
#include <unistd.h>

#include <QApplication>
#include <QtTest>

#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithmregister.h"
#include "arithmparammgr.h"
#include "dialoguser.h"
#include "fixtures/neighbourhood.h"
#include "fixtures/row.h"
#include "fixtures/together.h"
#include "taskMgr/taskMgr.h"

namespace
{
ArithmFactory *rebuild()
{
    forget(ArithmFactory::s_pcAF);
    return ArithmFactory::getInstance();
}

/// The IDs in registry order behind those of the built-in algorithms.
QString pluginIDs()
{
    QStringList lstIDs;
    for (const ArithmFactory::ArithmInfo &cInfo : ArithmFactory::getInstance()->getArithms()->mid(4))
        lstIDs.append(cInfo.m_pcArithm->getID());
    return lstIDs.join(' ');
}

bool isMapped(const QString &strPath)
{
    return dlopen(QFile::encodeName(strPath).constData(), RTLD_LAZY | RTLD_NOLOAD) != nullptr;
}

} // namespace

/// Before the host has an application object.
class TestWithoutApplication : public QObject
{
    Q_OBJECT

private slots:
    void looksBesideTheExecutable()
    {
        const Neighbourhood cHere;
        cHere.plugin("baseArithm/bare-C-N.so");
        cHere.write("baseArithm/barebroken.so", "text");
        const Warnings cWarnings;
        rebuild();
        QCOMPARE(pluginIDs(), "bare");
        const QStringList lstTexts = cWarnings.taken();
        QCOMPARE(lstTexts.size(), 1);
        QVERIFY2(lstTexts[0].contains("barebroken.so"), qPrintable(lstTexts[0]));
        QVERIFY(!QCoreApplication::instance());
    }
};

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_cHere.clear(); }

    void scansInOrder()
    {
        for (const char *szFile :
             {"baseArithm/order_b-Two-N2.so", "baseArithm/ORDER_A-One-N1.so", "baseArithm/order_c-One-N1.SO",
              "baseArithm/order_d-One-N3.So", "extArithm/order_0-One-N2.so", "extArithm/order_b-Two-N2.so",
              "baseArithm/order_e-One-N1.so.1", "baseArithm/order_g.so/x.so"})
            m_cHere.plugin(szFile);
        QCOMPARE(rebuild()->m_lstArithmLib.size(), 6);
        QCOMPARE(pluginIDs(), "ORDER_A order_b order_c order_d order_0 order_b");

        ArithmMgr &cMgr = *ArithmMgr::getInstance();
        QCOMPARE(cMgr.getArithmClassNames().mid(1), QList<QString>({"One", "Two"}));
        QCOMPARE(cMgr.getArithmNames("One"), QList<QString>({"N1", "N3", "N2"}));
        QCOMPARE(cMgr.getArithm("One", "N1"), "ORDER_A");
        QCOMPARE(cMgr.getArithm("One", "n1"), "");
        QCOMPARE(cMgr.getArithm("order_a"), nullptr);
        // The base plug-in wins over the extension of the same ID.
        QVERIFY(!cMgr.getArithm("order_b")->IsExtLib());
        QVERIFY(cMgr.getArithm("order_0")->IsExtLib());
    }

    /// Built-in algorithms come first, then plug-ins, then what a host adds; the first of an ID wins.
    void firstOfAnIDWins()
    {
        m_cHere.plugin("baseArithm/KQ_Drawing-C-N.so");
        m_cHere.plugin("baseArithm/plugged-C-N.so");
        ArithmFactory &cFactory = *rebuild();
        Arithm *const pcPlugged = cFactory.getArithm("plugged");
        QVERIFY(pcPlugged && !cFactory.getArithm(""));
        static Arithm s_cSame(
            false, [] { return "plugged"; }, nullptr, nullptr);
        static Arithm s_cEmpty(true, nullptr, nullptr, nullptr);
        for (Arithm *pcArithm : {&s_cSame, &s_cEmpty})
            cFactory.getArithms()->append({"C", "N2", pcArithm});
        QCOMPARE(cFactory.getArithm("plugged"), pcPlugged);
        QCOMPARE(cFactory.getArithm("KQ_Drawing"), cFactory.getArithms()->at(1).m_pcArithm);
        QCOMPARE(cFactory.getArithm(""), &s_cEmpty);
        QCOMPARE(s_cEmpty.showConfigWindow("config", nullptr), "");
    }

    void skipsWhatCannotBeLoaded_data()
    {
        const QByteArray achGood = m_cHere.named();
        QTest::addColumn<QByteArray>("achFile");
        row("empty", QByteArray());
        row("text", QByteArray("#!/bin/sh\necho not a library\n"));
        row("header", achGood.left(64));
        row("zeros at the end", achGood.left(4096).leftJustified(achGood.size(), '\0'));
        QByteArray achForeign = achGood;
        achForeign[18] = char(EM_S390);
        row("machine", achForeign);
        row("missing import", m_cHere.namedWithout("dladdr"));
    }

    void skipsWhatCannotBeLoaded()
    {
        QFETCH(QByteArray, achFile);
        const QString strTag = QString(QTest::currentDataTag()).replace(' ', '_');
        const QString strFile = "baseArithm/bad_" + strTag + ".so";
        m_cHere.write(strFile, achFile);
        m_cHere.plugin("extArithm/after_" + strTag + "-C-N.so");

        QString strBox;
        // A host that polls its tasks looks algorithms up while the box is open.
        DialogUser cUser(
            {[](QWidget &) { ArithmMgr::getInstance()->getArithm("no such ID"); }, DialogUser::read(strBox)});
        rebuild();
        QCOMPARE(pluginIDs(), "after_" + strTag);
        QVERIFY2(strBox.startsWith("Warning: ") && strBox.contains(m_cHere.path(strFile)),
                 qPrintable(strBox));

        // Off the GUI thread nobody could answer a box.
        const Warnings cWarnings;
        std::thread(rebuild).join();
        QCOMPARE(pluginIDs(), "after_" + strTag);
        QCOMPARE(cWarnings.taken().size(), 1);
    }

    /// The host's timers may remove the task, or its table, whose use shows what can't be loaded.
    void boxInTheMiddle()
    {
        m_cHere.write("baseArithm/broken.so", "text");
        const QList<std::function<void(TaskInfo &)>> lstUse = {
            [](TaskInfo &cTask) { cTask.startTask(); }, [](TaskInfo &cTask) { cTask.modifyOption(); },
            [](TaskInfo &cTask) { cTask.showConfigWindow(0); },
            [](TaskInfo &cTask) { cTask.showContextmenu(QPoint()); },
            [](TaskInfo &cTask) { cTask.showContextmenu(QPoint()); }};
        for (int nUse = 0; nUse < lstUse.size(); ++nUse) {
            const bool bTableGoes = nUse == lstUse.size() - 1;
            QPointer<QTableWidget> pcTable = new QTableWidget(1, 3);
            pcTable->setItem(0, 0, new QTableWidgetItem);
            pcTable->selectRow(0);
            QPointer<TaskInfo> pcTask = new TaskInfo(QString(), nullptr);
            pcTask->addTaskFlowListWidget(pcTable);
            pcTask->getTaskItem().append(TaskItem());
            pcTask->getTaskItem()[0].m_strArithmID = "KQ_MemoryDisk";
            forget(ArithmFactory::s_pcAF);
            const auto fnRemove = [&](QWidget &) { bTableGoes ? delete pcTable : delete pcTask; };
            const DialogUser cUser({fnRemove, DialogUser::type(Qt::Key_Return)});
            lstUse[nUse](*pcTask);
            QCOMPARE(pcTask.isNull(), !bTableGoes);
            delete pcTask;
            delete pcTable;
        }
    }

    /// What is no file, a link into nowhere, and a library that is no plug-in are passed over without
    /// a word. The library stays loaded: its code may have begun to run.
    void passesOverInSilence()
    {
        const QString strLibrary = "baseArithm/lacks_execute.so";
        m_cHere.write(strLibrary, m_cHere.namedWithout("execute"));
        QVERIFY(QFile::link("nowhere.so", m_cHere.path("baseArithm/dangling.so")));
        QCOMPARE(mkfifo(qPrintable(m_cHere.path("baseArithm/fifo.so")), 0600), 0);
        QVERIFY(QFile::link("fifo.so", m_cHere.path("baseArithm/link.so")));
        const Warnings cWarnings;
        const DialogUser cUser({});
        QCOMPARE(rebuild()->m_lstArithmLib.size(), 0);
        QCOMPARE(pluginIDs(), "");
        QVERIFY(cWarnings.taken().isEmpty());
        QVERIFY(isMapped(m_cHere.path(strLibrary)));
    }

    void executes_data()
    {
        QTest::addColumn<QString>("strConfig");
        QTest::addColumn<QString>("strResult");
        QTest::addColumn<bool>("bLogged");
        row("null", "<Null>1</Null>", "", false);
        row("bad bytes", "<Hex>41ff42c3</Hex>", "A\uFFFDB\uFFFD", false);
        row("long", "<Size>3000000</Size>", QString(3000000, 'x'), false);
        row("long config", QString(5000, ' ') + "<Result>end</Result>", "end", false);
        row("throws", "<Throw>no light</Throw>", "no light", true);
        row("throws int", "<ThrowInt>5</ThrowInt>", "unknown exception", true);
        row("overwrites", "<Overwrite>1</Overwrite><Result>kept</Result>", "kept", false);
    }

    void executes()
    {
        QFETCH(QString, strConfig);
        QFETCH(QString, strResult);
        QFETCH(bool, bLogged);
        Arithm &cProbe = probe();
        ArithmParamMgr cStore;
        const Warnings cWarnings;
        const QByteArray achConfig = strConfig.toUtf8();
        for (int i = 0; i < 2; ++i) { // the same text
            QCOMPARE(cProbe.execute(strConfig, &cStore), strResult);
            QCOMPARE(cProbe.executeUtf8(achConfig, &cStore), strResult);
        }
        QCOMPARE(cWarnings.taken().size(), bLogged ? 4 : 0);
        // The window gives the same, but no text of an exception: its result is a configuration.
        QCOMPARE(cProbe.showConfigWindow("<Window>" + strConfig + "</Window>", &cStore),
                 bLogged ? QString() : strResult);
    }

    /// Tasks that start together are the first to look an algorithm up, which caches it.
    void servesThreadsAtOnce()
    {
        static Arithm s_cLate(
            false, [] { return "late"; }, nullptr, nullptr);
        ArithmFactory::getInstance()->getArithms()->append({"C", "N", &s_cLate});
        std::atomic<int> nFound{0};
        for (int i = 0; i < 50; ++i) {
            ArithmFactory::getInstance()->m_mapArithm.remove("late");
            together(4, [&](int) { nFound += ArithmMgr::getInstance()->getArithm("late") == &s_cLate; });
        }
        QCOMPARE(nFound.load(), 4 * 50);
    }

private:
    Arithm &probe()
    {
        static Arithm *s_pcProbe = nullptr;
        if (!s_pcProbe) {
            m_cHere.write("baseArithm/probe.so", m_cHere.read("baseArithm/probe.so"));
            s_pcProbe = rebuild()->getArithm("probe");
        }
        return *s_pcProbe;
    }

    Neighbourhood m_cHere;
};

int main(int argc, char *argv[])
{
    TestWithoutApplication cBare;
    if (const int nFailed = QTest::qExec(&cBare, 1, argv))
        return nFailed;
    const QApplication cApp(argc, argv);
    TestRegistry cTest;
    return QTest::qExec(&cTest, argc, argv);
}

#include "tst_registry.moc"
