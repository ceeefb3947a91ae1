// The registry of algorithms as a host meets it: folders of good and bad files beside the executable,
// look-ups by several threads, algorithms that misbehave.

#include <dlfcn.h>
#include <sys/stat.h>
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

const QString LONG = QString("long ").repeated(300000);
} // namespace
Q_DECLARE_METATYPE(fnExecute)

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

    /// Built-in algorithms come first, then plug-ins by their files' names; the first of an ID wins.
    void scansInOrder()
    {
        for (const char *szFile :
             {"baseArithm/ORDER_B-Two-N2.so", "baseArithm/order_a-One-N1.so", "baseArithm/order_c-One-N1.SO",
              "baseArithm/order_d-One-N3.So", "extArithm/order_0-One-N2.so", "extArithm/ORDER_B-Two-N2.so",
              "baseArithm/order_e-One-N1.so.1", "extArithm/KQ_Drawing-Two-N2.so"})
            m_cHere.plugin(szFile);
        QCOMPARE(rebuild()->m_lstArithmLib.size(), 7);
        QCOMPARE(pluginIDs(), "order_a ORDER_B order_c order_d KQ_Drawing order_0 ORDER_B");

        ArithmMgr &cMgr = *ArithmMgr::getInstance();
        QCOMPARE(cMgr.getArithmNames("One"), QList<QString>({"N1", "N3", "N2"}));
        QCOMPARE(cMgr.getArithm("One", "N1"), "order_a");
        QCOMPARE(cMgr.getArithm("order_b"), nullptr);
        QVERIFY(!cMgr.getArithm("ORDER_B")->IsExtLib());
        QVERIFY(cMgr.getArithm("order_0")->IsExtLib());

        QCOMPARE(cMgr.getArithm("KQ_Drawing"), ArithmFactory::getInstance()->getArithms()->at(1).m_pcArithm);
    }

    void skipsWhatCannotBeLoaded_data()
    {
        const QByteArray achGood = m_cHere.named();
        QTest::addColumn<QByteArray>("achFile");
        row("text", QByteArray("#!/bin/sh\necho not a library\n"));
        row("zeros at the end", achGood.left(4096).leftJustified(achGood.size(), '\0'));
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

    /// The host's timers may remove the task whose use shows what can't be loaded.
    void boxInTheMiddle()
    {
        m_cHere.write("baseArithm/broken.so", "text");
        for (const auto fnUse :
             {+[](TaskInfo &cTask) { cTask.startTask(); }, +[](TaskInfo &cTask) { cTask.modifyOption(); },
              +[](TaskInfo &cTask) { cTask.showConfigWindow(0); },
              +[](TaskInfo &cTask) { cTask.showContextmenu(QPoint()); }}) {
            QTableWidget cTable(1, 3);
            cTable.setItem(0, 0, new QTableWidgetItem);
            cTable.selectRow(0);
            QPointer<TaskInfo> pcTask = new TaskInfo(QString(), nullptr);
            pcTask->addTaskFlowListWidget(&cTable);
            pcTask->getTaskItem().append(TaskItem());
            pcTask->getTaskItem()[0].m_strArithmID = "KQ_MemoryDisk";
            forget(ArithmFactory::s_pcAF);
            const DialogUser cUser({[&](QWidget &) { delete pcTask; }, DialogUser::type(Qt::Key_Return)});
            fnUse(*pcTask);
            QVERIFY(!pcTask);
        }
    }

    /// What is no file and a library that is no plug-in are passed over without
    /// a word. The library stays loaded: its code may have begun to run.
    void passesOverInSilence()
    {
        const QString strLibrary = "baseArithm/lacks_execute.so";
        m_cHere.write(strLibrary, m_cHere.namedWithout("execute"));
        QCOMPARE(mkfifo(qPrintable(m_cHere.path("baseArithm/fifo.so")), 0600), 0);
        const Warnings cWarnings;
        const DialogUser cUser({});
        QCOMPARE(rebuild()->m_lstArithmLib.size(), 0);
        QCOMPARE(pluginIDs(), "");
        QVERIFY(cWarnings.taken().isEmpty());
        QVERIFY(dlopen(qPrintable(m_cHere.path(strLibrary)), RTLD_LAZY | RTLD_NOLOAD));
    }

    void executes_data()
    {
        QTest::addColumn<fnExecute>("fnDo");
        QTest::addColumn<QString>("strResult");
        QTest::addColumn<bool>("bLogged");
        row("null", fnExecute([](auto...) -> char * { return nullptr; }), "", false);
        static char s_szBad[] = "A\xff\x42\xc3";
        row("bad bytes", fnExecute([](auto...) { return s_szBad; }), "A\uFFFDB\uFFFD", false);
        row("throws", fnExecute([](auto...) -> char * { throw std::runtime_error("no light"); }), "no light",
            true);
        row("throws int", fnExecute([](auto...) -> char * { throw 5; }), "unknown exception", true);
        const fnExecute fnOverwrite = [](char *pchConfig, auto) {
            ++pchConfig[0];
            return pchConfig;
        };
        row("overwrites a long text", fnOverwrite, "m" + LONG.mid(1), false);
    }

    void executes()
    {
        QFETCH(fnExecute, fnDo);
        QFETCH(QString, strResult);
        QFETCH(bool, bLogged);
        static fnExecute s_fnDo;
        s_fnDo = fnDo;
        Arithm cArithm(
            false, [] { return "made"; },
            [](char *pchConfig, auto, bool bFlag) { return bFlag ? s_fnDo(pchConfig, nullptr) : nullptr; },
            fnDo);
        const Warnings cWarnings;
        QString strConfig = LONG;
        const QByteArray achConfig = LONG.toUtf8();
        for (int i = 0; i < 2; ++i) // the same text
            QCOMPARE(cArithm.execute(strConfig, nullptr), strResult);
        QCOMPARE(cArithm.executeUtf8(achConfig, nullptr), strResult);
        QCOMPARE(cWarnings.taken().size(), bLogged ? 3 : 0);
        // The window gives the same, but no text of an exception: its result is a configuration.
        QCOMPARE(cArithm.showConfigWindow(LONG, nullptr), bLogged ? QString() : strResult);
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
