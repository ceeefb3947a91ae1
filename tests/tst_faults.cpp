#include "fixtures/failingheap.h"

#include <climits>
#include <map>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "Drawing/drawing.h"
#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmMgr/arithmregister.h"
#include "arithmparammgr.h"
#include "fixtures/madethreads.h"
#include "fixtures/neighbourhood.h"
#include "globalfunction.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr int SIDE = 40; // pixels

/// What a run leaves behind.
struct Outcome {
    QStringList m_lstErrors;
    QStringList m_lstPrinted;
    std::map<QString, QByteArray> m_mapFiles;
    QByteArray m_achView; ///< what the host sees

    bool operator==(const Outcome &cOther) const
    {
        return m_lstErrors == cOther.m_lstErrors && m_lstPrinted == cOther.m_lstPrinted &&
               m_mapFiles == cOther.m_mapFiles && m_achView == cOther.m_achView;
    }
};

QStringList taken(int (*fnTake)(char *, int))
{
    QStringList lstTexts;
    char achText[1000] = "";
    while (fnTake(achText, sizeof achText) >= 0)
        lstTexts.append(QString::fromUtf8(achText));
    return lstTexts;
}

QString tag(const char *szTag, const QString &strValue)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(szTag), strValue);
}

QString step(const char *szID, const QString &strConfig, int nLimit = -1)
{
    return tag("-TaskItem-", tag("-MaxExeTimes-", QString::number(nLimit)) + tag("-ArithmID-", szID) +
                                 tag("-OptionStr-", strConfig) + tag("-ArithmName-", szID));
}

QString drawing(int nType, const QString &strConfig, int nID = 1)
{
    return step("KQ_Drawing", tag("DataType", QString::number(nType)) + tag("DataID", QString::number(nID)) +
                                  tag("Config", strConfig));
}

/// Qt, which does not survive a lack of memory while it makes its record of a thread, has made it
/// before the thread runs.
void makeQtsRecord()
{
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable(); // an event that Qt can't queue keeps such a record
    QThread::currentThread();
    __lsan_enable();
#else
    QThread::currentThread();
#endif
}

/// Calls fnRun() again and again, each time with another allocation that fails, alone or with as many
/// after it as lstMore says, until none is left; fnPrepare() before and fnCheck(which) after each. How
/// many there are.
template <typename Prepare, typename Run, typename Check>
int failEach(std::initializer_list<int> lstMore, const Prepare &fnPrepare, const Run &fnRun,
             const Check &fnCheck)
{
    int nFirst = 0;
    for (const int nMore : lstMore)
        for (nFirst = 1;; ++nFirst) {
            const QByteArray achWhich =
                "allocation " + QByteArray::number(nFirst) + " and " + QByteArray::number(nMore) + " more";
            fnPrepare();
            {
                const FailingHeap::Fault cFault(nFirst, nMore < INT_MAX ? nFirst + nMore : INT_MAX);
                fnRun();
                if (cFault.refused() == 0)
                    break;
            }
            fnCheck(achWhich);
            if (QTest::currentTestFailed())
                return 0;
        }
    return nFirst - 1;
}

QByteArray tasksText()
{
    return TaskMgr::getInstance()->toString().toUtf8();
}

/// Frees the buffers of a memory disk, so that the next pictures need new ones.
template <typename Record>
void freeBuffers(const QList<Record *> &lstRecords, unsigned char *Record::*pPixels)
{
    for (Record *pcRecord : lstRecords) {
        std::free(std::exchange(pcRecord->*pPixels, nullptr));
        pcRecord->m_nBuffLen = 0;
    }
}
} // namespace

/// Each allocation of a run fails once, alone and with those after it.
class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!FailingHeap::WORKS)
            QSKIP("the thread sanitizer has a heap of its own");
        MadeThreads::s_fnInside = makeQtsRecord;
        QImage cPicture(SIDE, SIDE, QImage::Format_RGB888);
        cPicture.fill(QColor(10, 200, 30));
        for (const char *szFile : {"in.png", "in.jpg", "in.bmp"})
            QVERIFY(cPicture.save(m_cIn.filePath(szFile)));
        enableTaskStatus(true);
        useDrawingWindow(0, 64, 48);
        useDrawingWindow(3, 64, 48);
        for (bool bThread : {false, true}) { // what is made once in a process, too
            prepare(bThread);
            run(bThread);
            const Outcome &cGood = m_acGood[bThread] = taken();
            QCOMPARE(cGood.m_lstErrors, QStringList());
            QCOMPARE(cGood.m_lstPrinted, QStringList({"seen", "stopped", "bye"}));
            QCOMPARE(cGood.m_mapFiles.size(), size_t(3));
            QVERIFY(cGood.m_achView.count('\0') < cGood.m_achView.size());
        }
    }
    void cleanupTestCase() { TaskMgr::deleteThis(); }

    void runs_data()
    {
        QTest::addColumn<bool>("bThread");
        QTest::newRow("the caller's thread") << false;
        QTest::newRow("the task's thread") << true;
    }

    void runs()
    {
        QFETCH(bool, bThread);
        const Outcome &cGood = m_acGood[bThread];
        int nRuns = 0;
        int nErrors = 0;
        int nSkipped = 0; // pictures
        const auto fnCheck = [&](const QByteArray &achWhich) {
            const Outcome cFaulty = taken();
            m_pcTask->m_pcAPM->snapshot(); // meets each parameter that is in the store
            QVERIFY2(cFaulty.m_lstErrors.size() <= 1, achWhich);
            for (const QString &strError : cFaulty.m_lstErrors)
                QVERIFY2(strError.contains("bad_alloc"), achWhich + ": " + strError.toUtf8());
            for (const auto &[strFile, achFile] : cFaulty.m_mapFiles)
                QVERIFY2(strFile == "view.png" ? !QImage::fromData(achFile).isNull()
                                               : achFile == cGood.m_mapFiles.at(strFile),
                         achWhich + " breaks " + strFile.toUtf8());
            ++nRuns;
            nErrors += !cFaulty.m_lstErrors.isEmpty();
            nSkipped += cFaulty.m_lstErrors.isEmpty() && !(cFaulty == cGood);
            // The same task runs again as if nothing had been.
            cool();
            run(bThread);
            QVERIFY2(taken() == cGood, achWhich);
            for (int nDisk : {0, 1}) {
                QCOMPARE(MemoryDisk::getInstance(nDisk)->getDIBIdleNum(), MemoryDisk::DISK_NUM);
                QCOMPARE(MemoryDisk::getInstance(nDisk)->getGray8IdleNum(), MemoryDisk::DISK_NUM);
            }
        };
        const int nFailed = failEach(
            {0, 4}, [&] { prepare(bThread); }, [&] { run(bThread); }, fnCheck);
        QVERIFY(nErrors > 50 && nSkipped > 3);
        qInfo("%d allocations, %d runs: %d ended with an error text, %d skipped a picture, %d went on",
              nFailed, nRuns, nErrors, nSkipped, nRuns - nErrors - nSkipped);
    }

    /// Opening gives the new tasks or, with a text, the old ones or none; what is saved is always whole.
    void tasksFile()
    {
        prepare();
        const QByteArray achNew = tasksText();
        QByteArray achFile = m_cIn.filePath("a.tasks").toUtf8();
        QByteArray achCopy = m_cIn.filePath("b.tasks").toUtf8();
        char *szOpened = saveTasksFile(achFile.data());
        char *szSaved = saveTasksFile(achCopy.data());
        QByteArray achOld;
        const auto fnPrepare = [&] {
            TaskMgr::getInstance()->fromString("<=TaskInfo=><-TaskName->held</-TaskName-></=TaskInfo=>");
            achOld = tasksText();
        };
        const auto fnCall = [&] {
            szOpened = openTasksFile(achFile.data());
            szSaved = saveTasksFile(achCopy.data());
        };
        const int nFailed = failEach({0, 4, INT_MAX}, fnPrepare, fnCall, [&](const QByteArray &achWhich) {
            const QByteArray achNow = tasksText();
            QVERIFY2(*szOpened ? achNow == achOld || achNow.isEmpty() : achNow == achNew, achWhich);
            QFile cCopy(achCopy);
            QVERIFY2(cCopy.open(QIODevice::ReadOnly) && cCopy.readAll() == (*szSaved ? achNew : achNow),
                     achWhich);
            fnCall();
            QVERIFY2(*szOpened == '\0' && *szSaved == '\0' && tasksText() == achNew, achWhich);
        });
        QVERIFY(nFailed > 70);
        qInfo("%d allocations", nFailed);
    }

    /// Each is made whole or not at all, and then by the next who asks.
    void registries()
    {
        const auto fnNames = [] {
            QStringList lstNames(DataSource::getInstance()->m_mapDataSourceInfo.keys());
            for (const ArithmFactory::ArithmInfo &cInfo : *ArithmFactory::getInstance()->getArithms())
                lstNames += {cInfo.m_strClass, cInfo.m_strName, cInfo.m_pcArithm->getID()};
            return lstNames;
        };
        const QStringList lstWhole = fnNames();
        const auto fnMake = [] {
            try {
                DataSource::getInstance();
                ArithmFactory::getInstance();
            } catch (const std::bad_alloc &) { // NOLINT(bugprone-empty-catch): one of the two outcomes
            }
        };
        const auto fnForget = [] {
            forget(DataSource::s_pcThis);
            forget(ArithmFactory::s_pcAF);
        };
        const int nFailed = failEach({0, 4, INT_MAX}, fnForget, fnMake, [&](const QByteArray &achWhich) {
            QVERIFY2(fnNames() == lstWhole, achWhich);
        });
        QVERIFY(nFailed > 100);
        qInfo("%d allocations", nFailed);
    }

    /// No exception of the library meets a host that asks for little.
    void smallCalls()
    {
        char achText[10] = "";
        FuncHaveErrorMessage("kept");
        {
            const FailingHeap::Fault cFault(1, INT_MAX);
            QCOMPARE(getErrMsg(achText, sizeof achText), -1);
            useDrawingWindow(2, 8, 8);
            QVERIFY(cFault.refused() >= 2);
        }
        QCOMPARE(getErrMsg(achText, sizeof achText), 0);
        QCOMPARE(achText, "kept");
        QVERIFY(!GlobalFunction::getInstance()->requestViewDrawOption(2));
    }

private:
    /// A task as new, with nothing in reserve. Its camera is a colour or a grey one, since a run has one
    /// source.
    void prepare(bool bColour = false)
    {
        const QString strSource = tag("DSName", "Memory Disk 0") + tag("OutputName", "camera") +
                                  tag("OutputType", bColour ? "RGB" : "Gray8") + tag("OutputID", "3");
        const QString strSave = tag("BasePath", m_cOut.path()) + tag("Identity", "2");
        const QString strLoad =
            tag("FilePath", m_cIn.filePath("in.%1")) + tag("BeGray", "%2") + tag("OutputName", "loaded");
        const QString strHandOver = tag("MemDisk", "1") + tag("InputType", "%1") + tag("InputID", "1");
        const QString strOverlay = tag("DrawMode", tag("Val", "2") + tag("Mask", "1,2")) + tag("Scale", "3");
        TaskMgr::getInstance()->fromString(tag(
            "=TaskInfo=",
            tag("-TaskName-", "faulty") + tag("-DataSource-", strSource) +
                step("KQ_Loading", strLoad.arg("png", "0") + tag("PicID", "1")) +
                step("KQ_Loading", strLoad.arg("jpg", "1") + tag("PicID", "1")) +
                step("KQ_Loading", strLoad.arg("bmp", "0") + tag("PicID", "2")) +
                step("KQ_MemoryDisk", strHandOver.arg("RGB")) +
                step("KQ_MemoryDisk", strHandOver.arg("Gray8")) +
                step("probe", tag("Trace", "1") + tag("Text", "drawn.far.beyond")) +
                drawing(0, tag("Scale", "1")) + drawing(bColour ? 0 : 1, tag("Scale", "2"), 3) +
                drawing(3, tag("Size", "3") + tag("Color", "-65536")) +
                step("KQ_Saving", strSave + tag("StringID", "view") + tag("Format", "1") + tag("Wnd", "0")) +
                drawing(1, strOverlay) + drawing(2, tag("Scale", "2")) + drawing(3, tag("Size", "0")) +
                drawing(4, tag("Size", "2") + tag("DspLen", "1")) + drawing(5, tag("BorderSize", "2")) +
                drawing(6, tag("DspArea", "1")) + drawing(7, tag("Pos", "5,5")) +
                step("KQ_Saving", strSave + tag("StringID", "1") + tag("IsStringID", "1") +
                                      tag("Format", "2") + tag("Wnd", "4") + tag("PicType", "Gray") +
                                      tag("PicID", "1")) +
                step("KQ_Saving", strSave + tag("StringID", "colour") + tag("Format", "0") + tag("Wnd", "4") +
                                      tag("PicType", "RGB") + tag("PicID", "1")) +
                step("probe", tag("Result", "<CMD>print:seen</CMD><CMD>skip:2</CMD>")) +
                step("probe", tag("Result", "never met")) +
                step("probe", tag("Result", "<CMD>stop:stopped</CMD>")) +
                step("probe", tag("Result", "<CMD>print:bye</CMD>"), TaskItem::CLEAN_UP_TIMES)));
        cool();
    }

    /// Nothing is in reserve, and a picture waits for the task.
    void cool()
    {
        taken();
        m_pcTask = TaskMgr::getInstance()->getTask(0);
        ArithmParamMgr &cStore = *m_pcTask->m_pcAPM;
        cStore.clean();
        cStore.getParamGray16(1)->resize(8, 8);
        cStore.getParamPoints(1)->addPoint({5, 5});
        cStore.getParamLines(1)->addLine({1, 1, 30, 20});
        cStore.getParamPolys(1)->addPoly({{{1, 1}, {30, 1}, {30, 20}}});
        cStore.getParamAreas(1)->addArea({});
        for (const QFileInfo &cFile : QDir(m_cOut.path()).entryInfoList(QDir::Files))
            QFile::remove(cFile.filePath());
        for (int nDisk : {0, 1}) {
            MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
            pcDisk->emptyDIBPrepared();
            pcDisk->emptyGray8Prepared();
            freeBuffers(pcDisk->m_lstDIBIdle, &MemoryDisk::DIB::m_puchDIB);
            freeBuffers(pcDisk->m_lstGray8Idle, &MemoryDisk::Gray8::m_puchGray8);
        }
        std::vector<std::unique_ptr<Drawing::DrawingOpt>> vSmall; // they take the place of kept buffers
        unsigned char uchPixel = 0;
        for (int nSmall = 0; nSmall < 8; ++nSmall)
            vSmall.push_back(std::make_unique<Drawing::Gray8DrawingOpt>(1, &uchPixel, 1, 1));
        std::vector<unsigned char> vPixels(SIDE * (SIDE + 1) * 3, 90);
        for (int nPicture = 0; nPicture < MemoryDisk::DISK_NUM; ++nPicture) { // some may be skipped
            MemoryDisk::getInstance(0)->addDIB(vPixels.data(), SIDE, SIDE);
            MemoryDisk::getInstance(0)->addGray8(vPixels.data(), SIDE, SIDE);
        }
    }

    /// One run, and what the host then sees.
    void run(bool bThread)
    {
        if (bThread) {
            std::atomic<bool> bFinished{false};
            const auto hConnection = connect(m_pcTask, &TaskInfo::threadFinished, [&] { bFinished = true; });
            const QList<TaskItem> lstShared = m_pcTask->m_lstArithm; // the task makes itself a copy
            startTask(0);
            while (m_pcTask->m_hThread != 0 && !bFinished)
                QThread::yieldCurrentThread();
            disconnect(hConnection);
        } else {
            runTaskOnce(0);
        }
        m_cView.fill(0);
        while (getDrawingWindow(0, m_cView.bits(), m_cView.width(), m_cView.height()) == 1) {
        }
    }

    Outcome taken()
    {
        QCoreApplication::processEvents(); // the message of the task's thread
        Outcome cOutcome{::taken(getErrMsg), ::taken(getOutputMsg), {}, {}};
        for (const QFileInfo &cFile : QDir(m_cOut.path()).entryInfoList(QDir::Files)) {
            QFile cSaved(cFile.filePath());
            cSaved.open(QIODevice::ReadOnly);
            cOutcome.m_mapFiles[cFile.fileName()] = cSaved.readAll();
        }
        cOutcome.m_achView =
            QByteArray(reinterpret_cast<const char *>(m_cView.constBits()), int(m_cView.sizeInBytes()));
        for (int nDisk : {0, 1}) {
            MemoryDisk::getInstance(nDisk)->emptyDIBPrepared();
            MemoryDisk::getInstance(nDisk)->emptyGray8Prepared();
        }
        return cOutcome;
    }

    const QTemporaryDir m_cIn;
    const QTemporaryDir m_cOut;
    QImage m_cView{64, 48, QImage::Format_RGB888};
    TaskInfo *m_pcTask = nullptr;
    Outcome m_acGood[2]; ///< on the caller's thread and on its own
};

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
