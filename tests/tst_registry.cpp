// The registry of algorithms as a host meets it: folders of good and bad files beside the executable,
// look-ups by several threads, algorithms that misbehave.

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <unistd.h>

#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithmregister.h"
#include "arithmparammgr.h"
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

/// The IDs in registry order, without the built-in algorithms.
QStringList pluginIDs()
{
    QStringList lstIDs;
    for (const ArithmFactory::ArithmInfo &cInfo : *ArithmFactory::getInstance()->getArithms())
        if (cInfo.m_strClass != QStringLiteral("系统"))
            lstIDs.append(cInfo.m_pcArithm->getID());
    return lstIDs;
}

/// Where the last segment, which holds the data, begins in a library.
int lastSegment(const QByteArray &achFile)
{
    ElfW(Ehdr) cHeader;
    memcpy(&cHeader, achFile.constData(), sizeof cHeader);
    quint64 nLast = 0;
    for (size_t i = 0; i < cHeader.e_phnum; ++i) {
        ElfW(Phdr) cSegment;
        memcpy(&cSegment, achFile.constData() + cHeader.e_phoff + i * sizeof cSegment, sizeof cSegment);
        if (cSegment.p_type == PT_LOAD)
            nLast = cSegment.p_offset;
    }
    return static_cast<int>(nLast);
}

bool isMapped(const QString &strPath)
{
    return dlopen(QFile::encodeName(strPath).constData(), RTLD_LAZY | RTLD_NOLOAD) != nullptr;
}

/// Answers each message box that appears with its button, as a user who reads them one by one.
class BoxReader : public QObject
{
public:
    BoxReader()
    {
        connect(&m_cTimer, &QTimer::timeout, this, [this] {
            if (auto *pcBox = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                // A host that polls its tasks looks algorithms up while the box is open.
                ArithmMgr::getInstance()->getArithm(QStringLiteral("no such ID"));
                m_lstTexts.append(pcBox->windowTitle() + QStringLiteral(": ") + pcBox->text());
                pcBox->accept();
            }
        });
        m_cTimer.start(1);
    }

    QStringList m_lstTexts;

private:
    QTimer m_cTimer;
};
} // namespace

/// Before the host has an application object.
class TestWithoutApplication : public QObject
{
    Q_OBJECT

private slots:
    void looksBesideTheExecutable()
    {
        const Neighbourhood cHere;
        cHere.plugin(QStringLiteral("baseArithm/bare-C-N.so"));
        cHere.write(QStringLiteral("baseArithm/barebroken.so"), "text");
        const Warnings cWarnings;
        rebuild();
        QCOMPARE(pluginIDs(), QStringList{QStringLiteral("bare")});
        const QStringList lstTexts = cWarnings.taken();
        QCOMPARE(lstTexts.size(), 1);
        QVERIFY2(lstTexts[0].contains(QLatin1String("barebroken.so")), qPrintable(lstTexts[0]));
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
              "baseArithm/order_e-One-N1.so.1", "baseArithm/order_f-One-N1.so.bak",
              "baseArithm/order_g.so/x.so", "order_h-One-N1.so"})
            m_cHere.plugin(QLatin1String(szFile));
        rebuild();
        QCOMPARE(pluginIDs(), QStringList({QStringLiteral("ORDER_A"), QStringLiteral("order_b"),
                                           QStringLiteral("order_c"), QStringLiteral("order_d"),
                                           QStringLiteral("order_0"), QStringLiteral("order_b")}));
        QFile::remove(m_cHere.path(QStringLiteral("order_h-One-N1.so")));

        ArithmMgr &cMgr = *ArithmMgr::getInstance();
        QCOMPARE(ArithmFactory::getInstance()->m_lstArithmLib.size(), 6);
        QCOMPARE(cMgr.getArithmClassNames().mid(1), QList<QString>({"One", "Two"}));
        QCOMPARE(cMgr.getArithmNames(QStringLiteral("One")), QList<QString>({"N1", "N3", "N2"}));
        QCOMPARE(cMgr.getArithm(QStringLiteral("One"), QStringLiteral("N1")), QStringLiteral("ORDER_A"));
        QCOMPARE(cMgr.getArithm(QStringLiteral("One"), QStringLiteral("n1")), QString());
        QCOMPARE(cMgr.getArithm(QStringLiteral("order_a")), nullptr);
        // The base plug-in wins over the extension of the same ID.
        QVERIFY(!cMgr.getArithm(QStringLiteral("order_b"))->IsExtLib());
        QVERIFY(cMgr.getArithm(QStringLiteral("order_0"))->IsExtLib());
    }

    void builtInsComeFirst()
    {
        const QStringList lstIDs{"KQ_MemoryDisk", "KQ_Drawing", "KQ_Saving", "KQ_Loading"};
        for (const QString &strID : lstIDs)
            m_cHere.plugin(QStringLiteral("baseArithm/%1-Taken-Name.so").arg(strID));
        ArithmFactory &cFactory = *rebuild();
        QCOMPARE(pluginIDs().size(), 4);
        for (int i = 0; i < 4; ++i) {
            Arithm *const pcBuiltIn = cFactory.getArithms()->at(i).m_pcArithm;
            QCOMPARE(pcBuiltIn->getID(), lstIDs[i]);
            QCOMPARE(cFactory.getArithm(lstIDs[i]), pcBuiltIn);
        }
    }

    /// A plug-in that looks into the registry while it is registered sees what stands before it.
    void answersThePluginBeingRegistered()
    {
        m_cHere.plugin(QStringLiteral("baseArithm/asks1-count-N.so"));
        m_cHere.plugin(QStringLiteral("baseArithm/asks2-count-N.so"));
        const QList<ArithmFactory::ArithmInfo> lstInfo = *rebuild()->getArithms();
        QCOMPARE(lstInfo.size(), 6);
        QCOMPARE(lstInfo[4].m_strClass, QStringLiteral("4 6"));
        QCOMPARE(lstInfo[5].m_strClass, QStringLiteral("5 6"));
    }

    /// A host adds an algorithm of its own; the first of an ID wins.
    void findsWhatIsAppended()
    {
        m_cHere.plugin(QStringLiteral("baseArithm/plugged-C-N.so"));
        ArithmFactory &cFactory = *rebuild();
        QCOMPARE(cFactory.getArithm(QStringLiteral("appended")), nullptr);
        Arithm *const pcPlugged = cFactory.getArithm(QStringLiteral("plugged"));
        QVERIFY(pcPlugged);
        static Arithm s_cSame(
            false, [] { return "plugged"; }, nullptr, nullptr);
        static Arithm s_cEmpty(true, nullptr, nullptr, nullptr);
        for (Arithm *pcArithm : {&s_cSame, &s_cEmpty})
            cFactory.getArithms()->append({QStringLiteral("C"), QStringLiteral("N2"), pcArithm});
        QCOMPARE(cFactory.getArithm(QStringLiteral("plugged")), pcPlugged);
        QCOMPARE(cFactory.getArithm(QString()), &s_cEmpty);
        QString strConfig = QStringLiteral("config");
        QCOMPARE(s_cEmpty.execute(strConfig, nullptr), QString());
        QCOMPARE(s_cEmpty.showConfigWindow(strConfig, nullptr), QString());
    }

    void skipsWhatCannotBeLoaded_data()
    {
        const QByteArray achGood = m_cHere.named();
        QTest::addColumn<QByteArray>("achFile");
        row("empty", QByteArray());
        row("text", QByteArray("#!/bin/sh\necho not a library\n"));
        row("header", achGood.left(64));
        row("page", achGood.left(4096));
        row("last segment", achGood.left(lastSegment(achGood)));
        row("zeros at the end", achGood.left(4096).leftJustified(achGood.size(), '\0'));
        QByteArray achForeign = achGood;
        achForeign[18] = char(EM_S390);
        row("machine", achForeign);
        row("missing import", m_cHere.namedWithout("dladdr"));
    }

    void skipsWhatCannotBeLoaded()
    {
        QFETCH(QByteArray, achFile);
        const QString strTag =
            QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_'));
        const QString strFile = QStringLiteral("baseArithm/bad_%1-C-N.so").arg(strTag);
        m_cHere.write(strFile, achFile);
        m_cHere.plugin(QStringLiteral("extArithm/after_bad_%1-C-N.so").arg(strTag));
        const QStringList lstGood{QStringLiteral("after_bad_%1").arg(strTag)};

        BoxReader cReader;
        rebuild();
        QCOMPARE(pluginIDs(), lstGood);
        QCOMPARE(cReader.m_lstTexts.size(), 1);
        QVERIFY2(cReader.m_lstTexts[0].startsWith(QLatin1String("Warning: ")) &&
                     cReader.m_lstTexts[0].contains(m_cHere.path(strFile)),
                 qPrintable(cReader.m_lstTexts[0]));

        // Off the GUI thread nobody could answer a box.
        const Warnings cWarnings;
        std::thread(rebuild).join();
        QCOMPARE(pluginIDs(), lstGood);
        QCOMPARE(cWarnings.taken().size(), 1);
        QCOMPARE(cReader.m_lstTexts.size(), 1);
    }

    /// The host's timers may remove the task whose start shows what can't be loaded.
    void boxInTheMiddleOfAStart()
    {
        m_cHere.write(QStringLiteral("baseArithm/broken.so"), "text");
        forget(ArithmFactory::s_pcAF);
        BoxReader cReader;
        QPointer<TaskInfo> pcTask = new TaskInfo(QString(), nullptr);
        QTimer::singleShot(0, [&pcTask] { delete pcTask; });
        pcTask->startTask();
        QVERIFY(!pcTask);
        QCOMPARE(cReader.m_lstTexts.size(), 1);
    }

    /// What is no file, a link into nowhere, and a library that is no plug-in are passed over without
    /// a word. The library stays loaded: its code may have begun to run.
    void passesOverInSilence()
    {
        m_cHere.write(QStringLiteral("baseArithm/directory.so/file"), {});
        const auto path = [&](const char *szName) { return m_cHere.path(QLatin1String(szName)); };
        QVERIFY(QFile::link(QStringLiteral("nowhere.so"), path("baseArithm/dangling.so")));
        QCOMPARE(mkfifo(QFile::encodeName(path("baseArithm/fifo.so")).constData(), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("fifo.so"), path("baseArithm/link.so")));
        QStringList lstFiles;
        for (const char *szSymbol :
             {"getID", "showConfigWindow", "execute", "getArithmClass", "getArithmName"}) {
            lstFiles.append(QStringLiteral("baseArithm/lacks_%1-C-N.so").arg(QLatin1String(szSymbol)));
            m_cHere.write(lstFiles.last(), m_cHere.namedWithout(szSymbol));
        }
        const Warnings cWarnings;
        const BoxReader cReader;
        QCOMPARE(rebuild()->m_lstArithmLib.size(), 0);
        QCOMPARE(pluginIDs(), QStringList());
        QCOMPARE(cReader.m_lstTexts + cWarnings.taken(), QStringList());
        for (const QString &strFile : qAsConst(lstFiles))
            QVERIFY(isMapped(m_cHere.path(strFile)));
    }

    /// Texts about itself that a plug-in gets wrong.
    void takesPoorTexts()
    {
        for (const char *szFile :
             {"1throw-throw-throw.so", "2-null-null.so", "3-bytes-bytes.so", "throw-C-N.so"})
            m_cHere.plugin(QStringLiteral("baseArithm/") + QLatin1String(szFile));
        const Warnings cWarnings;
        const QList<ArithmFactory::ArithmInfo> lstInfo = *rebuild()->getArithms();
        QCOMPARE(pluginIDs(), QStringList({QStringLiteral("1throw"), QStringLiteral("2"), QStringLiteral("3"),
                                           QString()}));
        const QString strBytes = QStringLiteral("a\uFFFD");
        const QList<QString> lstTexts{QString(), QString(), strBytes, QStringLiteral("C")};
        for (int i = 0; i < 3; ++i) {
            const ArithmFactory::ArithmInfo &cInfo = lstInfo[lstInfo.size() - 4 + i];
            QCOMPARE(cInfo.m_strClass, lstTexts[i]);
            QCOMPARE(cInfo.m_strName, lstTexts[i]);
        }
        // The class, the name, and each look at the ID of the last one.
        const QStringList lstWarnings = cWarnings.taken();
        QVERIFY(lstWarnings.size() >= 3);
        QVERIFY2(lstWarnings[0].contains(QLatin1String("thrown")) &&
                     lstWarnings[0].contains(QLatin1String("1throw-throw-throw.so")),
                 qPrintable(lstWarnings[0]));
        // It answers to the empty ID.
        QCOMPARE(ArithmMgr::getInstance()->getArithm(QString()), lstInfo.last().m_pcArithm);
    }

    void executes_data()
    {
        QTest::addColumn<QByteArray>("achConfig");
        QTest::addColumn<QString>("strResult");
        QTest::addColumn<bool>("bLogged");
        row("null", QByteArray("<Null>1</Null>"), QString(), false);
        row("bad bytes", QByteArray("<Hex>41ff42c3</Hex>"), QStringLiteral("A\uFFFDB\uFFFD"), false);
        row("long", QByteArray("<Size>3000000</Size>"), QString(3000000, QLatin1Char('x')), false);
        row("long config", QByteArray(5000, ' ') + "<Result>end</Result>", QStringLiteral("end"), false);
        row("throws", QByteArray("<Throw>no light</Throw>"), QStringLiteral("no light"), true);
        row("throws int", QByteArray("<ThrowInt>5</ThrowInt>"), QStringLiteral("unknown exception"), true);
        row("overwrites", QByteArray("<Overwrite>1</Overwrite><Result>kept</Result>"), QStringLiteral("kept"),
            false);
    }

    void executes()
    {
        QFETCH(QByteArray, achConfig);
        QFETCH(QString, strResult);
        QFETCH(bool, bLogged);
        Arithm &cProbe = probe();
        ArithmParamMgr cStore;
        const Warnings cWarnings;
        QString strConfig = QString::fromUtf8(achConfig);
        const QByteArray achBefore(achConfig.constData(), achConfig.size());
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(cProbe.execute(strConfig, &cStore), strResult);
            QCOMPARE(cProbe.executeUtf8(achConfig, &cStore), strResult);
        }
        QCOMPARE(strConfig, QString::fromUtf8(achBefore));
        QCOMPARE(achConfig, achBefore);
        QCOMPARE(cWarnings.taken().size(), bLogged ? 4 : 0);
        // The window gives the same, but no text of an exception: its result is a configuration.
        QCOMPARE(cProbe.showConfigWindow(QStringLiteral("<Window>%1</Window>").arg(strConfig), &cStore),
                 bLogged ? QString() : strResult);
    }

    /// A thread that is cancelled or exits inside an algorithm unwinds to its end.
    void letsAThreadExit()
    {
        struct Run {
            Arithm *m_pcProbe;
            std::atomic<bool> m_bUnwound{false};
            std::atomic<bool> m_bReturned{false};
        } cRun{&probe()};
        pthread_t hThread;
        QCOMPARE(pthread_create(
                     &hThread, nullptr,
                     [](void *pvRun) -> void * {
                         Run &cMine = *static_cast<Run *>(pvRun);
                         struct Local {
                             ~Local() { m_bUnwound = true; }
                             std::atomic<bool> &m_bUnwound;
                         } cLocal{cMine.m_bUnwound};
                         cMine.m_pcProbe->executeUtf8(QByteArray("<ExitThread>1</ExitThread>"), nullptr);
                         cMine.m_bReturned = true;
                         return nullptr;
                     },
                     &cRun),
                 0);
        QCOMPARE(pthread_join(hThread, nullptr), 0);
        QVERIFY(cRun.m_bUnwound);
        QVERIFY(!cRun.m_bReturned);
    }

    /// Tasks that start together are the first to ask for the registry and for what it caches.
    void servesThreadsAtOnce()
    {
        m_cHere.plugin(QStringLiteral("baseArithm/threads-slow-N.so"));
        forget(ArithmFactory::s_pcAF);
        delete ArithmMgr::s_pcInstance;
        ArithmMgr::s_pcInstance = nullptr;
        constexpr int THREADS = 4;
        ArithmFactory *apcFactories[THREADS] = {};
        together(THREADS, [&](int nThread) {
            ArithmFactory *const pcFactory = ArithmFactory::getInstance();
            if (ArithmMgr::getInstance()->getArithm(QStringLiteral("threads")))
                apcFactories[nThread] = pcFactory;
        });
        for (const ArithmFactory *pcFactory : apcFactories)
            QCOMPARE(pcFactory, ArithmFactory::s_pcAF);
        QCOMPARE(pluginIDs(), QStringList{QStringLiteral("threads")});

        // What was appended later is cached by the look-ups themselves.
        static Arithm s_cLate(
            false, [] { return "late"; }, nullptr, nullptr);
        ArithmFactory::getInstance()->getArithms()->append(
            {QStringLiteral("C"), QStringLiteral("N"), &s_cLate});
        std::atomic<int> nFound{0};
        constexpr int ROUNDS = 50;
        for (int i = 0; i < ROUNDS; ++i) {
            ArithmFactory::getInstance()->m_mapArithm.remove(QStringLiteral("late"));
            together(THREADS, [&](int) {
                nFound += ArithmMgr::getInstance()->getArithm(QStringLiteral("late")) == &s_cLate;
            });
        }
        QCOMPARE(nFound.load(), ROUNDS * THREADS);
    }

    /// A registry that goes unloads its libraries, yet their code stays: a thread may be inside.
    void keepsCodeOfUnloadedPlugins()
    {
        m_cHere.plugin(QStringLiteral("baseArithm/unloaded-C-N.so"));
        static Arithm *s_pcArithm = nullptr;
        {
            auto pcFactory = std::make_unique<ArithmFactory>();
            s_pcArithm = pcFactory->getArithm(QStringLiteral("unloaded"));
            static const auto *s_plstInfo = new QList<ArithmFactory::ArithmInfo>(*pcFactory->getArithms());
            Q_UNUSED(s_plstInfo) // what a registry made is never freed
            QCOMPARE(pcFactory->m_lstArithmLib.size(), 1);
        }
        QVERIFY(isMapped(m_cHere.path(QStringLiteral("baseArithm/unloaded-C-N.so"))));
        QCOMPARE(s_pcArithm->getID(), QStringLiteral("unloaded"));
    }

private:
    Arithm &probe()
    {
        static Arithm *s_pcProbe = nullptr;
        if (!s_pcProbe) {
            m_cHere.write(QStringLiteral("baseArithm/probe.so"),
                          m_cHere.read(QStringLiteral("baseArithm/probe.so")));
            s_pcProbe = rebuild()->getArithm(QStringLiteral("probe"));
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
