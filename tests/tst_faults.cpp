#include "fixtures/failingheap.h"

#include <climits>
#include <map>
#include <memory>

#include <dlfcn.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "Drawing/drawing.h"
#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmparammgr.h"
#include "taskMgr/taskMgr.h"

namespace
{
struct ThreadBody {
    void *(*m_fnBody)(void *);
    void *m_pvArgument;
};

void *runKnownThread(void *pvBody)
{
    const std::unique_ptr<ThreadBody> pcBody(static_cast<ThreadBody *>(pvBody));
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable(); // an event that Qt can't queue keeps such a record
    QThread::currentThread();
    __lsan_enable();
#else
    QThread::currentThread();
#endif
    return pcBody->m_fnBody(pcBody->m_pvArgument);
}
} // namespace

/// Stands before the system's function: Qt, which does not survive a lack of memory while it makes its
/// record of a thread, has made it before the thread runs.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t *pnThread,
                                                                     const pthread_attr_t *pcAttributes,
                                                                     void *(*fnBody)(void *),
                                                                     void *pvArgument)
{
    static const auto s_fnNext =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return s_fnNext(pnThread, pcAttributes, runKnownThread,
                    std::make_unique<ThreadBody>(ThreadBody{fnBody, pvArgument}).release());
}

namespace
{
constexpr int SIDE = 40; // pixels

/// What a run leaves behind.
struct Outcome {
    QStringList m_lstErrors;
    QStringList m_lstPrinted;
    std::map<QString, QByteArray> m_mapFiles;
    QByteArray m_achView; ///< what the host sees
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

QString drawing(int nType, const QString &strConfig)
{
    return step("KQ_Drawing",
                tag("DataType", QString::number(nType)) + tag("DataID", "1") + tag("Config", strConfig));
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
        QImage cPicture(SIDE, SIDE, QImage::Format_RGB888);
        cPicture.fill(QColor(10, 200, 30));
        QVERIFY(cPicture.save(m_cIn.filePath("in.png")));
        QVERIFY(cPicture.save(m_cIn.filePath("in.jpg")));
        useDrawingWindow(0, 64, 48);
        useDrawingWindow(3, 64, 48);
        for (bool bThread : {false, true}) // what is made once in a process
            m_cGood = whole(bThread);
        QCOMPARE(m_cGood.m_lstErrors, QStringList());
        QCOMPARE(m_cGood.m_lstPrinted, QStringList({"seen", "stopped", "bye"}));
        QCOMPARE(m_cGood.m_mapFiles.size(), size_t(3));
        QVERIFY(m_cGood.m_achView.count('\0') < m_cGood.m_achView.size());
    }
    void cleanupTestCase() { TaskMgr::deleteThis(); }

    void allocations_data()
    {
        QTest::addColumn<bool>("bThread");
        QTest::addColumn<int>("nMore"); // that fail after the first
        QTest::newRow("the caller's thread, one") << false << 0;
        QTest::newRow("the caller's thread, five") << false << 4;
        QTest::newRow("the task's thread, one") << true << 0;
        QTest::newRow("the task's thread, five") << true << 4;
    }

    void allocations()
    {
        QFETCH(bool, bThread);
        QFETCH(int, nMore);
        int nErrors = 0;
        int nSkipped = 0;
        int nUnseen = 0;
        const int nFrom = qMax(1, qEnvironmentVariableIntValue("OCULINEX_FAULT_FROM"));
        for (int nFirst = nFrom;; ++nFirst) {
            const QByteArray achWhich = "allocation " + QByteArray::number(nFirst);
            if (qEnvironmentVariableIsSet("OCULINEX_FAULT_TRACE"))
                fprintf(stderr, "-- %s\n", achWhich.constData());
            prepare();
            int nRefused = 0;
            {
                const FailingHeap::Fault cFault(nFirst, nFirst + nMore);
                run(bThread);
                nRefused = cFault.refused();
            }
            const Outcome cFaulty = taken();
            if (nRefused == 0)
                break;
            QVERIFY2(cFaulty.m_lstErrors.size() <= 1, achWhich);
            for (const QString &strError : cFaulty.m_lstErrors)
                QVERIFY2(strError.contains("bad_alloc"), achWhich + ": " + strError.toUtf8());
            for (const auto &[strFile, achFile] : cFaulty.m_mapFiles)
                QVERIFY2(strFile == "view.png" ? !QImage::fromData(achFile).isNull()
                                               : achFile == m_cGood.m_mapFiles.at(strFile),
                         achWhich + " breaks " + strFile.toUtf8());
            ++(!cFaulty.m_lstErrors.isEmpty() ? nErrors
               : cFaulty.m_mapFiles != m_cGood.m_mapFiles || cFaulty.m_achView != m_cGood.m_achView
                   ? nSkipped
                   : nUnseen);
            // The same task runs again as if nothing had been.
            cool();
            run(bThread);
            const Outcome cAgain = taken();
            QVERIFY2(cAgain.m_lstErrors.isEmpty() && cAgain.m_lstPrinted == m_cGood.m_lstPrinted, achWhich);
            QVERIFY2(cAgain.m_mapFiles == m_cGood.m_mapFiles && cAgain.m_achView == m_cGood.m_achView,
                     achWhich);
            for (int nDisk : {0, 1}) {
                QCOMPARE(MemoryDisk::getInstance(nDisk)->getDIBIdleNum(), MemoryDisk::DISK_NUM);
                QCOMPARE(MemoryDisk::getInstance(nDisk)->getGray8IdleNum(), MemoryDisk::DISK_NUM);
            }
        }
        QVERIFY(nErrors > 50 && nSkipped > 3);
        qInfo("%d allocations failed: %d runs ended with an error text, %d skipped a picture, %d went on",
              nErrors + nSkipped + nUnseen, nErrors, nSkipped, nUnseen);
    }

    /// The lists of a memory disk never grow, so that no record can be lost on its way.
    void recordsOnTheirWay()
    {
        MemoryDisk cDisk;
        const FailingHeap::Fault cFault(1, INT_MAX);
        for (int nTime = 0; nTime < 100; ++nTime) {
            for (int nPicture = 0; nPicture <= nTime % MemoryDisk::DISK_NUM; ++nPicture)
                cDisk.addGray8(nullptr, 0, 0);
            while (cDisk.getGray8PreparedNum() > 0)
                cDisk.releaseGray8(cDisk.requestGray8());
        }
        QCOMPARE(cDisk.getGray8IdleNum(), MemoryDisk::DISK_NUM);
    }

private:
    /// A task as new, with nothing in reserve.
    void prepare()
    {
        const QString strSource = tag("DSName", "Memory Disk 0") + tag("OutputName", "camera") +
                                  tag("OutputType", "Gray8") + tag("OutputID", "1");
        const QString strSave = tag("BasePath", m_cOut.path()) + tag("Identity", "2");
        const QString strLoad =
            tag("FilePath", m_cIn.filePath("in.%1")) + tag("BeGray", "%2") + tag("OutputName", "loaded");
        const QString strHandOver = tag("MemDisk", "1") + tag("InputType", "%1") + tag("InputID", "1");
        const QString strOverlay = tag("DrawMode", tag("Val", "2") + tag("Mask", "1,2")) + tag("Scale", "3");
        TaskMgr::getInstance()->fromString(tag(
            "=TaskInfo=",
            tag("-TaskName-", "faulty") + tag("-DataSource-", strSource) +
                step("KQ_Loading", strLoad.arg("png", "0") + tag("PicID", "1")) +
                step("KQ_Loading", strLoad.arg("jpg", "1") + tag("PicID", "2")) +
                step("KQ_MemoryDisk", strHandOver.arg("RGB")) +
                step("KQ_MemoryDisk", strHandOver.arg("Gray8")) +
                step("probe", tag("Trace", "1") + tag("Text", "drawn.far.beyond")) +
                drawing(0, tag("Scale", "3")) + drawing(3, tag("Size", "3") + tag("Color", "-65536")) +
                step("KQ_Saving", strSave + tag("StringID", "view") + tag("Format", "1") + tag("Wnd", "0")) +
                drawing(0, tag("Scale", "3")) + drawing(1, strOverlay) + drawing(3, tag("Size", "3")) +
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
        std::vector<unsigned char> vPixels(SIDE * SIDE, 90);
        for (int nPicture = 0; nPicture < MemoryDisk::DISK_NUM; ++nPicture) // some may be skipped
            MemoryDisk::getInstance(0)->addGray8(vPixels.data(), SIDE, SIDE);
    }

    /// One run, and what the host then sees.
    void run(bool bThread)
    {
        if (bThread) {
            std::atomic<bool> bFinished{false};
            const auto hConnection = connect(m_pcTask, &TaskInfo::threadFinished, [&] { bFinished = true; });
            startTask(0);
            while (!bFinished)
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

    Outcome whole(bool bThread)
    {
        prepare();
        run(bThread);
        return taken();
    }

    const QTemporaryDir m_cIn;
    const QTemporaryDir m_cOut;
    QImage m_cView{64, 48, QImage::Format_RGB888};
    TaskInfo *m_pcTask = nullptr;
    Outcome m_cGood;
};

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
