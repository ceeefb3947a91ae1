#include "fixtures/failingheap.h"

#include <QtTest>

#include <algorithm>
#include <limits>
#include <memory>

#include "DataSource/MemoryDiskCallBack/memorydiskcallback.h"
#include "DataSource/datasource.h"
#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"
#include "fixtures/together.h"

namespace
{
/// Buffers, idle, prepared and processing ones: of colour pictures, then of grey ones.
QVector<int> counts(MemoryDisk &c)
{
    return {c.getDIBBuffNum(),   c.getDIBIdleNum(),   c.getDIBPreparedNum(),   c.getDIBProcessingNum(),
            c.getGray8BuffNum(), c.getGray8IdleNum(), c.getGray8PreparedNum(), c.getGray8ProcessingNum()};
}

const QVector<int> UNTOUCHED = {6, 6, 0, 0, 6, 6, 0, 0};

QByteArray execute(QByteArray achConfig, ArithmParamMgr *pcAPM)
{
    return MemoryDisk::execute(achConfig.data(), pcAPM);
}

QByteArray writerConfig(int nDisk, int nID, const char *szType)
{
    return QString("<MemDisk>%1</MemDisk><InputID>%2</InputID><InputType>%3</InputType>")
        .arg(QString::number(nDisk), QString::number(nID), szType)
        .toUtf8();
}

std::atomic<int> gnNextInstance{1}; // an instance belongs to one thread

/// Producers that number their pictures, and sources that come and go and note what they get; where
/// bEmptied, the producers empty the memory disk now and then. Returns what was wrong.
QString traffic(bool bEmptied)
{
    constexpr int PRODUCERS = 3;
    constexpr int CONSUMERS = 2;
    constexpr int PICTURES = 10000; // of each producer
    constexpr int WIDTH = 256;      // bytes
    MemoryDisk &cDisk = *MemoryDisk::getInstance(2);
    std::atomic<int> nFaults{0};
    std::atomic<int> nProducing{PRODUCERS};
    int anLast[CONSUMERS][PRODUCERS] = {};  // each consumer gets a producer's pictures in order,
    std::atomic<int> anSum[PRODUCERS] = {}; // and all together get each once
    const auto add = [&](int nProducer, int nNumber) {
        const int nHeight = 1 + nNumber % 4;
        QVector<int> lstPicture(WIDTH * nHeight / 4, nNumber);
        lstPicture[0] = nProducer;
        QElapsedTimer cWaited;
        cWaited.start();
        while (!cDisk.addGray8(reinterpret_cast<unsigned char *>(lstPicture.data()), WIDTH, nHeight))
            nFaults += cWaited.restart() < 999; // nobody took a picture for so long, or one is lost
        for (int nCount : counts(cDisk))
            nFaults += nCount < 0 || nCount > 6;
    };
    const auto produce = [&](int nProducer) {
        for (int nNumber = 1; nNumber <= PICTURES; ++nNumber) {
            add(nProducer, nNumber);
            if (bEmptied && nNumber % 4 == 0)
                cDisk.emptyGray8Prepared();
        }
        if (--nProducing == 0)
            for (int nConsumer = 0; nConsumer < CONSUMERS; ++nConsumer)
                add(PRODUCERS, 1); // sends one home
    };
    const auto consume = [&](int nConsumer) {
        for (bool bLast = false; !bLast;) {
            const int nInstance = gnNextInstance++;
            int nWidth = 0;
            int nHeight = 0;
            const int *pnPixels = nullptr;
            while (!pnPixels)
                pnPixels = reinterpret_cast<int *>(
                    MemoryDiskCallBack2::MemoryDiskRequestPicture(nInstance, "Gray8", &nWidth, &nHeight));
            const int nInts = WIDTH * nHeight / 4;
            nFaults += std::any_of(pnPixels + 2, pnPixels + nInts, [&](int n) { return n != pnPixels[1]; });
            bLast = pnPixels[0] == PRODUCERS;
            if (!bLast) {
                nFaults += pnPixels[1] <= std::exchange(anLast[nConsumer][pnPixels[0]], pnPixels[1]);
                anSum[pnPixels[0]] += pnPixels[1];
            }
            MemoryDiskCallBack2::MemoryDiskReleasePicture(nInstance);
            MemoryDiskCallBack2::MemoryDiskRemoveInstance(nInstance);
        }
    };
    together(PRODUCERS + CONSUMERS,
             [&](int nThread) { nThread < PRODUCERS ? produce(nThread) : consume(nThread - PRODUCERS); });

    for (const std::atomic<int> &nSum : anSum)
        nFaults += !bEmptied && nSum != PICTURES * (PICTURES + 1) / 2;
    if (nFaults > 0 || counts(cDisk) != UNTOUCHED)
        return QString("%1 lost, torn or out of order, or the counts are wrong").arg(nFaults.load());
    return QString();
}
} // namespace

class TestMemoryDisk : public QObject
{
    Q_OBJECT

private slots:
    void smallerPicturesKeepTheBuffers()
    {
        MemoryDisk cDisk;
        unsigned char auchPicture[45] = {};
        for (int nHeight : {9, 2}) {
            MemoryDisk::Gray8 *apcRecords[6];
            for (auto *&pcRecord : apcRecords) {
                QVERIFY(cDisk.addGray8(auchPicture, 5, nHeight));
                pcRecord = cDisk.requestGray8();
                QCOMPARE(pcRecord->m_nBuffLen, 45);
                // Copies to and from the middle of a cache line take up to a tenth longer.
                QCOMPARE(reinterpret_cast<quintptr>(pcRecord->getGray8()) % 64, quintptr(0));
            }
            QCOMPARE(counts(cDisk).mid(4), QVector<int>({6, 0, 0, 6}));
            for (auto *pcRecord : apcRecords)
                cDisk.releaseGray8(pcRecord);
        }
        cDisk.releaseGray8(nullptr); // a consumer was quicker than who empties the disk
        QCOMPARE(counts(cDisk), UNTOUCHED);
        QVERIFY(cDisk.addGray8(auchPicture, 1, 1)); // goes with the memory disk
    }

    void impossiblePicturesAreRefused()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        unsigned char uchPixel = 0;
        MemoryDisk cDisk;
        const auto refused = [&](unsigned char *puchData, int nWidth, int nHeight) {
            return !cDisk.addDIB(puchData, nWidth, nHeight) && !cDisk.addGray8(puchData, nWidth, nHeight) &&
                   counts(cDisk) == UNTOUCHED;
        };
        QVERIFY(refused(nullptr, 1, 1));
        QVERIFY(refused(&uchPixel, -1000, -1000));
        QVERIFY(refused(&uchPixel, 65536, 65536)); // more bytes than an int counts
        QVERIFY(refused(&uchPixel, MAX, MAX));     // and than 64 bits count
    }

    void everyPictureIsDeliveredOnce() { QCOMPARE(traffic(false), QString()); }
    void emptiedMeanwhile() { QCOMPARE(traffic(true), QString()); }

    /// From one task's store through the writer, the memory disk and the source to another's store.
    void writerToSource()
    {
        ArithmParamMgr cFrom;
        ArithmParamMgr cTo;
        MemoryDisk &cDisk = *MemoryDisk::getInstance(5);
        const QByteArray achWriter = writerConfig(5, 4, "Gray8");
        constexpr int BYTES = 300 * 200;
        const std::unique_ptr<DataSource::DataSourceInstance> pcSource(
            DataSource::getInstance()->createDataSourceFromConfigString(
                &cTo, "<DSName>Memory Disk 5</DSName><OutputType>Gray8</OutputType><OutputID>7</OutputID>"));
        QCOMPARE(execute(achWriter, &cFrom), QByteArray()); // still empty: skipped
        QCOMPARE(counts(cDisk), UNTOUCHED);

        cFrom.getParamGray8(4)->resize(300, 200);
        QElapsedTimer cTimer;
        cTimer.start();
        for (int nPicture = 0; nPicture < 7; ++nPicture) {
            QVERIFY(nPicture == 6 || cTimer.elapsed() < 900);
            memset(cFrom.getParamGray8(4)->getGray8(), nPicture, BYTES);
            QCOMPARE(execute(achWriter, &cFrom), QByteArray());
        }
        QVERIFY(cTimer.elapsed() >= 999); // the seventh waited and was dropped
        QCOMPARE(counts(cDisk).mid(4), QVector<int>({6, 0, 6, 0}));

        for (int nPicture = 0; nPicture < 6; ++nPicture) {
            QVERIFY(pcSource->execute());
            QCOMPARE(QByteArray(reinterpret_cast<char *>(cTo.getParamGray8(7)->getGray8()), BYTES),
                     QByteArray(BYTES, static_cast<char>(nPicture)));
        }
        // Once the buffers have their size, nothing large is allocated for a picture.
        QVERIFY(__atomic_exchange_n(&FailingHeap::s_nLarge, 0, __ATOMIC_RELAXED) > 6 || !FailingHeap::WORKS);
        QCOMPARE(execute(achWriter, &cFrom), QByteArray());
        QVERIFY(pcSource->execute());
        QCOMPARE(FailingHeap::s_nLarge, 0);
        QCOMPARE(counts(cDisk), UNTOUCHED);
    }

    /// The kinds "Memory Disk 0" to "Memory Disk 5" read the memory disks of their numbers. A type is told
    /// by how it begins.
    void sourcesReadTheirDisks()
    {
        QCOMPARE(MemoryDisk::getInstance(-3), MemoryDisk::getInstance(0));
        QCOMPARE(MemoryDisk::getInstance(9), MemoryDisk::getInstance(5));
        unsigned char auchPicture[6] = {};
        for (int nDisk = 0; nDisk < 6; ++nDisk)
            QVERIFY(MemoryDisk::getInstance(nDisk)->addGray8(auchPicture, nDisk + 1, 1));
        for (int nDisk = 5; nDisk >= 0; --nDisk) {
            const DataSource::DataSourceInfo &cKind =
                *DataSource::getInstance()->m_mapDataSourceInfo[QString("Memory Disk %1").arg(nDisk)];
            int nWidth = -1;
            int nHeight = -1;
            QVERIFY(!cKind.m_fnRequestPicture(1000, "Gray16", &nWidth, &nHeight));
            QCOMPARE(nWidth, -1);
            QVERIFY(cKind.m_fnRequestPicture(1000, "Gray8 and more", &nWidth, &nHeight));
            QCOMPARE(nWidth, nDisk + 1);
            cKind.m_fnReleasePicture(1000);
            cKind.m_fnReleasePicture(1000); // has none
            cKind.m_fnRemoveInstance(1000);
            QCOMPARE(counts(*MemoryDisk::getInstance(nDisk)), UNTOUCHED);
        }
    }

    /// A host may look at the records that are held while an instance waits for its own.
    void heldRecordsAreCopied()
    {
        constexpr int INSTANCE = 1003;
        auto &mapHeld = MemoryDiskCallBack3::s_mapGray8;
        std::thread cConsumer([] {
            int nSize = 0;
            MemoryDiskCallBack3::MemoryDiskRequestPicture(INSTANCE, "Gray8", &nSize, &nSize);
            MemoryDiskCallBack3::MemoryDiskReleasePicture(INSTANCE);
        });
        const bool bWaits = QTest::qWaitFor(
            [&] {
                const std::lock_guard<std::mutex> cGuard(MemoryDiskCallBack3::s_cMutexForMaps);
                const QMap<int, MemoryDisk::Gray8 *> mapSeen = mapHeld;
                mapHeld.remove(-1); // of its own from now on
                return mapSeen.contains(INSTANCE);
            },
            900);
        unsigned char uchPixel = 0;
        MemoryDisk::getInstance(3)->addGray8(&uchPixel, 1, 1);
        cConsumer.join();
        QVERIFY(bWaits);
        QCOMPARE(counts(*MemoryDisk::getInstance(3)), UNTOUCHED);
    }

    void writerTellsErrors()
    {
        const std::pair<QByteArray, QByteArray> aErrors[] = {
            {writerConfig(6, 1, "RGB"), "指定的内存盘:\x06 不存在."},
            {writerConfig(-1, 1, "RGB"), "指定的内存盘:\xC3\xBF 不存在."},
            {"<MemDisk>0</MemDisk><InputID>x</InputID>", "指定的输入变量不存在."}};
        ArithmParamMgr cAPM;
        for (const auto &[achConfig, achError] : aErrors)
            QCOMPARE(execute(achConfig, &cAPM), achError);
    }

    /// A text stays what it is while another task's thread is told something longer or shorter.
    void writerTellsEachThread()
    {
        constexpr int TIMES = 200;
        std::atomic<int> nTold{0};
        std::atomic<int> nWrong{0};
        together(2, [&](int nThread) {
            ArithmParamMgr cAPM;
            const QByteArray achType(nThread == 0 ? 40 : 3000, static_cast<char>('a' + nThread));
            const QByteArray achError = "不支持的输入数据格式:" + achType;
            QByteArray achConfig = writerConfig(0, 1, achType);
            for (int nTime = 1; nTime <= TIMES; ++nTime) {
                const char *szTold = MemoryDisk::execute(achConfig.data(), &cAPM);
                for (++nTold; nTold < 2 * nTime;) // the other one too
                    std::this_thread::yield();
                nWrong += szTold != achError;
            }
        });
        QCOMPARE(nWrong.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestMemoryDisk)
#include "tst_memorydisk.moc"
