#include <QtTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <future>
#include <limits>
#include <memory>
#include <numeric>
#include <thread>

#include <sys/resource.h>

#include "DataSource/MemoryDiskCallBack/memorydiskcallback.h"
#include "DataSource/datasource.h"
#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED
#endif

namespace
{
/// The functions of a memory disk for one kind of picture.
template <class Record>
struct Kind {
    const char *m_szType;
    bool (MemoryDisk::*m_fnAdd)(unsigned char *, int, int);
    Record *(MemoryDisk::*m_fnRequest)();
    void (MemoryDisk::*m_fnRelease)(Record *);
    void (MemoryDisk::*m_fnEmpty)();
    std::array<int (MemoryDisk::*)(), 4> m_afnCounts; ///< buffers, idle, prepared, processing
    unsigned char *(Record::*m_fnPixels)() const;
    int m_nRowLengthOf5; ///< bytes of a row of 5 pixels

    QVector<int> counts(MemoryDisk &cDisk) const
    {
        QVector<int> lstCounts;
        for (auto fnCount : m_afnCounts)
            lstCounts.append((cDisk.*fnCount)());
        return lstCounts;
    }
};

using Disk = MemoryDisk;
const Kind<Disk::DIB> COLOUR = {
    "RGB",
    &Disk::addDIB,
    &Disk::requestDIB,
    &Disk::releaseDIB,
    &Disk::emptyDIBPrepared,
    {&Disk::getDIBBuffNum, &Disk::getDIBIdleNum, &Disk::getDIBPreparedNum, &Disk::getDIBProcessingNum},
    &Disk::DIB::getDIB,
    16};
const Kind<Disk::Gray8> GREY = {"Gray8",
                                &Disk::addGray8,
                                &Disk::requestGray8,
                                &Disk::releaseGray8,
                                &Disk::emptyGray8Prepared,
                                {&Disk::getGray8BuffNum, &Disk::getGray8IdleNum, &Disk::getGray8PreparedNum,
                                 &Disk::getGray8ProcessingNum},
                                &Disk::Gray8::getGray8,
                                5};

const QVector<int> UNTOUCHED = {6, 6, 0, 0};

struct StoreDeleter {
    void operator()(ArithmParamMgr *pcAPM) const { ArithmParamMgr::deleteInstance(pcAPM); }
};
using Store = std::unique_ptr<ArithmParamMgr, StoreDeleter>;

QByteArray execute(QByteArray achConfig, ArithmParamMgr *pcAPM)
{
    return MemoryDisk::execute(achConfig.data(), pcAPM);
}

QByteArray writerConfig(int nDisk, int nID, const char *szType)
{
    return QStringLiteral("<MemDisk>%1</MemDisk><InputID>%2</InputID><InputType>%3</InputType>")
        .arg(nDisk)
        .arg(nID)
        .arg(QLatin1String(szType))
        .toUtf8();
}

QElapsedTimer started()
{
    QElapsedTimer cTimer;
    cTimer.start();
    return cTimer;
}

/// Six pictures of nHeight rows, each full of a letter of its own, through the memory disk.
template <class Record>
void checkRound(const Kind<Record> &cKind, MemoryDisk &cDisk, int nHeight, int nBuffLen)
{
    const auto picture = [&](int nPicture) {
        QByteArray achPicture(cKind.m_nRowLengthOf5 * nHeight, static_cast<char>('A' + nPicture));
        achPicture[achPicture.size() - 1] = '!'; // of a colour row the padding, which is copied too
        return achPicture;
    };
    for (int nPicture = 0; nPicture < 6; ++nPicture) {
        QByteArray achPicture = picture(nPicture);
        QVERIFY((cDisk.*cKind.m_fnAdd)(reinterpret_cast<unsigned char *>(achPicture.data()), 5, nHeight));
    }
    QCOMPARE(cKind.counts(cDisk), QVector<int>({6, 0, 6, 0}));
    QVector<Record *> lstRecords;
    for (int nPicture = 0; nPicture < 6; ++nPicture) {
        Record *pcRecord = (cDisk.*cKind.m_fnRequest)();
        lstRecords.append(pcRecord);
        const QByteArray achWanted = picture(nPicture);
        const auto *pchPixels = reinterpret_cast<char *>((pcRecord->*cKind.m_fnPixels)());
        QCOMPARE(QByteArray(pchPixels, achWanted.size()), achWanted);
        QCOMPARE(pcRecord->getWidth(), 5);
        QCOMPARE(pcRecord->getHeight(), nHeight);
        QCOMPARE(pcRecord->m_nBuffLen, nBuffLen);
    }
    QCOMPARE(cKind.counts(cDisk), QVector<int>({6, 0, 0, 6}));
    for (Record *pcRecord : lstRecords)
        (cDisk.*cKind.m_fnRelease)(pcRecord);
    QCOMPARE(cKind.counts(cDisk), UNTOUCHED);
}

template <class Record>
void checkOrderAndBuffers(const Kind<Record> &cKind)
{
    MemoryDisk cDisk;
    checkRound(cKind, cDisk, 9, cKind.m_nRowLengthOf5 * 9);
    checkRound(cKind, cDisk, 2, cKind.m_nRowLengthOf5 * 9); // smaller pictures keep the buffers
    unsigned char uchPixel[4] = {};
    QVERIFY((cDisk.*cKind.m_fnAdd)(uchPixel, 1, 1)); // goes with the memory disk
}

/// An add that is refused at once and leaves the memory disk as it was.
void checkRefused(unsigned char *puchData, int nWidth, int nHeight)
{
    MemoryDisk cDisk;
    QVERIFY(!cDisk.addDIB(puchData, nWidth, nHeight));
    QVERIFY(!cDisk.addGray8(puchData, nWidth, nHeight));
    QCOMPARE(COLOUR.counts(cDisk), UNTOUCHED);
    QCOMPARE(GREY.counts(cDisk), UNTOUCHED);
}

template <class Record>
void checkEmptying(const Kind<Record> &cKind)
{
    MemoryDisk cDisk;
    unsigned char auchPicture[4] = {};
    std::atomic<bool> bStop{false};
    std::thread cEmptier([&] {
        while (!bStop)
            (cDisk.*cKind.m_fnEmpty)();
    });
    // Takes the picture while the other thread, which has counted it already, is about to.
    std::thread cConsumer([&] {
        while (!bStop)
            (cDisk.*cKind.m_fnRelease)((cDisk.*cKind.m_fnRequest)());
    });
    int nAdded = 0;
    while (nAdded < 20000 && (cDisk.*cKind.m_fnAdd)(auchPicture, 1, 1))
        ++nAdded;
    bStop = true;
    cEmptier.join();
    (cDisk.*cKind.m_fnAdd)(auchPicture, 1, 1); // wakes the consumer
    cConsumer.join();
    (cDisk.*cKind.m_fnEmpty)();
    QCOMPARE(cKind.counts(cDisk), UNTOUCHED);
    QCOMPARE(nAdded, 20000);
}

std::atomic<int> gnNextInstance{1}; // an instance belongs to one thread

/// Producers whose pictures are full of their number, and sources that come and go and note what
/// they get, for 1500 ms. Returns what was wrong.
template <class Record>
QString traffic(const Kind<Record> &cKind)
{
    constexpr int PRODUCERS = 3;
    constexpr int CONSUMERS = 2;
    constexpr int WIDTH = 256; // without padding in either kind
    MemoryDisk &cDisk = *MemoryDisk::getInstance(2);
    std::atomic<bool> bStop{false};
    std::atomic<int> nFaults{0};
    std::array<int, PRODUCERS> anSent = {};
    std::array<std::array<QVector<int>, CONSUMERS>, PRODUCERS> aalstReceived;
    const auto send = [&](int nProducer, int nNumber, int nHeight) {
        QVector<int> lstPicture(WIDTH * nHeight, nNumber);
        lstPicture[0] = nProducer;
        while (!(cDisk.*cKind.m_fnAdd)(reinterpret_cast<unsigned char *>(lstPicture.data()), WIDTH, nHeight))
            ;
    };
    const auto consume = [&](int nConsumer) {
        for (int nProducer = 0; nProducer >= 0;) {
            const int nInstance = gnNextInstance++;
            int nWidth = 0;
            int nHeight = 0;
            const auto *pnPixels = reinterpret_cast<int *>(
                MemoryDiskCallBack2::MemoryDiskRequestPicture(nInstance, cKind.m_szType, &nWidth, &nHeight));
            if (!pnPixels)
                continue;
            nProducer = pnPixels[0];
            const int nInts = WIDTH * (cKind.m_nRowLengthOf5 / 5) * nHeight / 4;
            nFaults += std::any_of(pnPixels + 2, pnPixels + nInts, [&](int n) { return n != pnPixels[1]; });
            if (nProducer >= 0)
                aalstReceived[static_cast<size_t>(nProducer)][static_cast<size_t>(nConsumer)].append(
                    pnPixels[1]);
            MemoryDiskCallBack2::MemoryDiskReleasePicture(nInstance);
            MemoryDiskCallBack2::MemoryDiskRemoveInstance(nInstance);
        }
    };
    std::array<std::thread, PRODUCERS> acProducers;
    std::array<std::thread, CONSUMERS> acConsumers;
    for (int nProducer = 0; nProducer < PRODUCERS; ++nProducer) {
        acProducers[static_cast<size_t>(nProducer)] = std::thread([&, nProducer] {
            for (int &nSent = anSent[static_cast<size_t>(nProducer)]; !bStop; ++nSent)
                send(nProducer, nSent, 1 + nSent % 4);
        });
    }
    for (int nConsumer = 0; nConsumer < CONSUMERS; ++nConsumer)
        acConsumers[static_cast<size_t>(nConsumer)] = std::thread(consume, nConsumer);
    for (QElapsedTimer cTimer = started(); cTimer.elapsed() < 1500;) {
        for (int nCount : cKind.counts(cDisk))
            nFaults += nCount < 0 || nCount > 6;
    }
    bStop = true;
    for (std::thread &cProducer : acProducers)
        cProducer.join();
    for (int nConsumer = 0; nConsumer < CONSUMERS; ++nConsumer)
        send(-1, 0, 1);
    for (std::thread &cConsumer : acConsumers)
        cConsumer.join();

    for (size_t nProducer = 0; nProducer < PRODUCERS; ++nProducer) {
        QVector<int> lstAll;
        for (const QVector<int> &lstReceived : aalstReceived[nProducer]) {
            nFaults += !std::is_sorted(lstReceived.begin(), lstReceived.end());
            lstAll += lstReceived;
        }
        std::sort(lstAll.begin(), lstAll.end());
        QVector<int> lstSent(anSent[nProducer]);
        std::iota(lstSent.begin(), lstSent.end(), 0);
        if (lstAll != lstSent || lstSent.isEmpty())
            return QStringLiteral("%1 sent, %2 received").arg(lstSent.size()).arg(lstAll.size());
    }
    if (nFaults > 0 || cKind.counts(cDisk) != UNTOUCHED)
        return QStringLiteral("%1 torn or out of order, or the counts are wrong").arg(nFaults.load());
    return QString();
}
} // namespace

class TestMemoryDisk : public QObject
{
    Q_OBJECT

private slots:
    void poolKeepsOrderAndBuffers()
    {
        checkOrderAndBuffers(COLOUR);
        checkOrderAndBuffers(GREY);
    }

    void impossiblePicturesAreRefused()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        unsigned char uchPixel = 0;
        checkRefused(&uchPixel, -1, 1);
        checkRefused(&uchPixel, 1, -1);
        checkRefused(&uchPixel, -1000, -1000);
        checkRefused(&uchPixel, 65536, 65536); // more bytes than an int counts
        checkRefused(&uchPixel, MAX, MAX);     // and than 64 bits count
        checkRefused(nullptr, 1, 1);
#ifndef SANITIZED // which takes more addresses
        rlimit cOld;
        QCOMPARE(getrlimit(RLIMIT_AS, &cOld), 0);
        const rlimit cLow = {1 << 29, cOld.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_AS, &cLow), 0);
        checkRefused(&uchPixel, 25000, 25000);
        QCOMPARE(setrlimit(RLIMIT_AS, &cOld), 0);
#endif
    }

    void emptyingRacesWithConsumer()
    {
        checkEmptying(COLOUR);
        checkEmptying(GREY);
    }

    void everyPictureIsDeliveredOnce()
    {
        auto cColour = std::async(std::launch::async, [] { return traffic(COLOUR); });
        QCOMPARE(traffic(GREY), QString());
        QCOMPARE(cColour.get(), QString());
    }

    /// From one task's store through the writer, the memory disk and the source to another's store.
    void writerToSource_data()
    {
        QTest::addColumn<bool>("bColour");
        QTest::newRow("colour") << true;
        QTest::newRow("grey") << false;
    }
    void writerToSource()
    {
        QFETCH(bool, bColour);
        const char *szType = bColour ? "RGB" : "Gray8";
        const int nSize = bColour ? 12 * 2 : 3 * 2;
        const Store pcFrom(ArithmParamMgr::newInstance());
        const Store pcTo(ArithmParamMgr::newInstance());
        const auto pixels = [&](ArithmParamMgr *pcAPM, int nID) {
            return bColour ? pcAPM->getParamDIB(nID)->getDIB() : pcAPM->getParamGray8(nID)->getGray8();
        };
        const auto counts = [&](int nDisk) {
            MemoryDisk *pcDisk = MemoryDisk::getInstance(nDisk);
            return bColour ? COLOUR.counts(*pcDisk) : GREY.counts(*pcDisk);
        };
        const std::unique_ptr<DataSource::DataSourceInstance> pcSource(
            DataSource::getInstance()->createDataSourceFromConfigString(
                pcTo.get(), QStringLiteral("<DSName>Memory Disk 5</DSName><OutputType>%1</OutputType>"
                                           "<OutputID>7</OutputID>")
                                .arg(QLatin1String(szType))));
        QVERIFY(pcSource);
        QCOMPARE(execute(writerConfig(5, 4, szType), pcFrom.get()), QByteArray()); // still empty: skipped
        QCOMPARE(counts(5), UNTOUCHED);

        if (bColour)
            pcFrom->getParamDIB(4)->resize(3, 2);
        else
            pcFrom->getParamGray8(4)->resize(3, 2);
        QElapsedTimer cTimer = started();
        for (int nPicture = 0; nPicture < 7; ++nPicture) {
            QVERIFY(nPicture == 6 || cTimer.elapsed() < 900);
            memset(pixels(pcFrom.get(), 4), nPicture + 1, static_cast<size_t>(nSize));
            QCOMPARE(execute(writerConfig(5, 4, szType), pcFrom.get()), QByteArray());
        }
        QVERIFY(cTimer.elapsed() >= 999); // the seventh waited and was dropped
        QCOMPARE(counts(5), QVector<int>({6, 0, 6, 0}));

        for (int nPicture = 0; nPicture < 6; ++nPicture) {
            QVERIFY(pcSource->execute());
            QCOMPARE(QByteArray(reinterpret_cast<char *>(pixels(pcTo.get(), 7)), nSize),
                     QByteArray(nSize, static_cast<char>(nPicture + 1)));
        }
        QCOMPARE(counts(5), UNTOUCHED);
        cTimer.start();
        QVERIFY(!pcSource->execute());
        QVERIFY(cTimer.elapsed() >= 999 && cTimer.elapsed() < 5000);
        QCOMPARE(pcSource->getLastError(), QString());
    }

    /// The kinds "Memory Disk 0" to "Memory Disk 5" read the memory disks of their numbers.
    void sourcesReadTheirDisks()
    {
        QCOMPARE(MemoryDisk::getInstance(-3), MemoryDisk::getInstance(0));
        QCOMPARE(MemoryDisk::getInstance(9), MemoryDisk::getInstance(5));
        unsigned char auchPicture[6] = {};
        for (int nDisk = 0; nDisk < 6; ++nDisk)
            QVERIFY(MemoryDisk::getInstance(nDisk)->addGray8(auchPicture, nDisk + 1, 1));
        for (int nDisk = 5; nDisk >= 0; --nDisk) {
            const DataSource::DataSourceInfo &cKind =
                *DataSource::getInstance()->m_mapDataSourceInfo[QStringLiteral("Memory Disk %1").arg(nDisk)];
            int nWidth = 0;
            int nHeight = 0;
            QVERIFY(cKind.m_fnRequestPicture(1000, "Gray8", &nWidth, &nHeight));
            QCOMPARE(nWidth, nDisk + 1);
            cKind.m_fnReleasePicture(1000);
            cKind.m_fnRemoveInstance(1000);
            QCOMPARE(GREY.counts(*MemoryDisk::getInstance(nDisk)), UNTOUCHED);
        }
    }

    /// A type is told by how it begins, instances hold records of their own, and a record that is
    /// requested over is not lost.
    void sourceHoldsOneRecordPerInstance()
    {
        MemoryDisk &cDisk = *MemoryDisk::getInstance(3);
        unsigned char auchPicture[8] = {};
        for (int nWidth = 1; nWidth <= 3; ++nWidth)
            QVERIFY(cDisk.addGray8(auchPicture, nWidth, 2));
        int nWidth = -1;
        int nHeight = -1;
        QVERIFY(!MemoryDiskCallBack3::MemoryDiskRequestPicture(1001, "Gray16", &nWidth, &nHeight));
        QCOMPARE(nWidth, -1);
        QVERIFY(MemoryDiskCallBack3::MemoryDiskRequestPicture(1001, "Gray8 and more", &nWidth, &nHeight));
        QCOMPARE(nWidth, 1);
        QCOMPARE(nHeight, 2);
        QVERIFY(MemoryDiskCallBack3::MemoryDiskRequestPicture(1002, "Gray8", &nWidth, &nHeight));
        QCOMPARE(nWidth, 2);
#ifdef QT_NO_DEBUG // a debug build ends here with an assertion
        QVERIFY(MemoryDiskCallBack3::MemoryDiskRequestPicture(1001, "Gray8", &nWidth, &nHeight));
        QCOMPARE(GREY.counts(cDisk), QVector<int>({6, 4, 0, 2}));
#endif
        MemoryDiskCallBack3::MemoryDiskReleasePicture(1001);
        MemoryDiskCallBack3::MemoryDiskReleasePicture(1001);
        MemoryDiskCallBack3::MemoryDiskReleasePicture(1002);
        MemoryDiskCallBack3::MemoryDiskRemoveInstance(1001);
        MemoryDiskCallBack3::MemoryDiskRemoveInstance(1002);
        QCOMPARE(cDisk.getGray8ProcessingNum(), 0);
        cDisk.emptyGray8Prepared();
        QCOMPARE(GREY.counts(cDisk), UNTOUCHED);
    }

    void writerTellsErrors_data()
    {
        QTest::addColumn<QByteArray>("achConfig");
        QTest::addColumn<QByteArray>("achError");
        QTest::newRow("disk 6") << writerConfig(6, 1, "RGB") << QByteArray("指定的内存盘:\x06 不存在.");
        QTest::newRow("disk -1") << writerConfig(-1, 1, "RGB") << QByteArray("指定的内存盘:\xC3\xBF 不存在.");
        QTest::newRow("disk 300") << writerConfig(300, 1, "RGB") << QByteArray("指定的内存盘:, 不存在.");
        // The raw character is a zero, which ends the text for whoever reads it as a C string.
        QTest::newRow("no disk") << QByteArray() << QByteArray("指定的内存盘:");
        QTest::newRow("no input") << QByteArray("<MemDisk>0</MemDisk><InputID>x</InputID>")
                                  << QByteArray("指定的输入变量不存在.");
        QTest::newRow("type") << writerConfig(0, 1, "rgb") << QByteArray("不支持的输入数据格式:rgb");
    }
    void writerTellsErrors()
    {
        QFETCH(QByteArray, achConfig);
        QFETCH(QByteArray, achError);
        const Store pcAPM(ArithmParamMgr::newInstance());
        QCOMPARE(execute(achConfig, pcAPM.get()), achError);
    }

    /// A process may end while its tasks' threads are inside the memory disks and the sources.
    void processEndsUnderTraffic()
    {
        QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(), {QStringLiteral("end")}), 0);
    }
};

namespace
{
std::atomic<int> gnPictures{-1};

/// Leaves main() while threads write, read and release.
int endUnderTraffic()
{
    gnPictures = 0;
    std::thread([] {
        unsigned char auchPicture[4] = {};
        for (;;)
            MemoryDisk::getInstance(0)->addDIB(auchPicture, 1, 1);
    }).detach();
    std::thread([] {
        for (int nWidth = 0, nHeight = 0;;) {
            if (MemoryDiskCallBack0::MemoryDiskRequestPicture(1, "RGB", &nWidth, &nHeight))
                ++gnPictures;
            MemoryDiskCallBack0::MemoryDiskReleasePicture(1);
        }
    }).detach();
    while (gnPictures < 1000)
        std::this_thread::yield();
    return 0;
}

#ifndef SANITIZED // whose run-time library is not ready before the other libraries
/// The pictures must flow on while the process ends.
void flowOn(int, void *)
{
    const int nGoal = gnPictures + 1000;
    const QElapsedTimer cTimer = started();
    while (gnPictures >= 0 && gnPictures < nGoal) {
        if (cTimer.elapsed() > 10000)
            std::_Exit(1);
        std::this_thread::yield();
    }
}

// What is registered before any library is initialised is called behind the destructors of them all.
[[gnu::used, gnu::section(".preinit_array")]] void (*gfnCalledLast)() = [] { on_exit(flowOn, nullptr); };
#endif
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication cApp(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "end") == 0)
        return endUnderTraffic();
    TestMemoryDisk cTest;
    return QTest::qExec(&cTest, argc, argv);
}

#include "tst_memorydisk.moc"
