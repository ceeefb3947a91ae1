#include <QtTest>

#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include "DataSource/datasource.h"
#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"

namespace
{
template <class RecordType>
struct Kind {
    using Record = RecordType;
    const char *m_szType;
    bool (MemoryDisk::*m_fnAdd)(unsigned char *, int, int);
    Record *(MemoryDisk::*m_fnRequest)();
    void (MemoryDisk::*m_fnRelease)(Record *);
    void (MemoryDisk::*m_fnEmpty)();
    int (MemoryDisk::*m_afnNum[4])(); ///< buffers, idle, prepared, processing
    unsigned char *(Record::*m_fnPixels)() const;
    int m_nRowLengthOf5; ///< bytes of a row of 5 pixels

    QVector<int> counts(MemoryDisk &cDisk) const
    {
        QVector<int> lstCounts;
        for (auto fnNum : m_afnNum)
            lstCounts.append((cDisk.*fnNum)());
        return lstCounts;
    }
};

const Kind<MemoryDisk::DIB> COLOUR = {"RGB",
                                      &MemoryDisk::addDIB,
                                      &MemoryDisk::requestDIB,
                                      &MemoryDisk::releaseDIB,
                                      &MemoryDisk::emptyDIBPrepared,
                                      {&MemoryDisk::getDIBBuffNum, &MemoryDisk::getDIBIdleNum,
                                       &MemoryDisk::getDIBPreparedNum, &MemoryDisk::getDIBProcessingNum},
                                      &MemoryDisk::DIB::getDIB,
                                      16};
const Kind<MemoryDisk::Gray8> GREY = {"Gray8",
                                      &MemoryDisk::addGray8,
                                      &MemoryDisk::requestGray8,
                                      &MemoryDisk::releaseGray8,
                                      &MemoryDisk::emptyGray8Prepared,
                                      {&MemoryDisk::getGray8BuffNum, &MemoryDisk::getGray8IdleNum,
                                       &MemoryDisk::getGray8PreparedNum, &MemoryDisk::getGray8ProcessingNum},
                                      &MemoryDisk::Gray8::getGray8,
                                      5};

const QVector<int> UNTOUCHED = {6, 6, 0, 0};
constexpr int WIDTH = 5;

struct StoreDeleter {
    void operator()(ArithmParamMgr *pcAPM) const { ArithmParamMgr::deleteInstance(pcAPM); }
};
using Store = std::unique_ptr<ArithmParamMgr, StoreDeleter>;
using Source = std::unique_ptr<DataSource::DataSourceInstance>;

Source source(ArithmParamMgr *pcAPM, int nDisk, const char *szType, int nID)
{
    return Source(DataSource::getInstance()->createDataSourceFromConfigString(
        pcAPM, QStringLiteral("<DSName>Memory Disk %1</DSName><OutputName>part</OutputName><OutputType>%2"
                              "</OutputType><OutputID>%3</OutputID>")
                   .arg(nDisk)
                   .arg(QLatin1String(szType))
                   .arg(nID)));
}

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

template <class Record>
void checkOrderAndBuffers(const Kind<Record> &cKind)
{
    MemoryDisk cDisk;
    const auto fill = [&](int nHeight, char chFirst) {
        for (char chPixel = chFirst; chPixel < chFirst + 6; ++chPixel) {
            QByteArray achPicture(cKind.m_nRowLengthOf5 * nHeight, chPixel);
            achPicture[achPicture.size() - 1] = '!'; // the last byte, padding of a colour row, is copied too
            QVERIFY(
                (cDisk.*cKind.m_fnAdd)(reinterpret_cast<unsigned char *>(achPicture.data()), WIDTH, nHeight));
        }
        QCOMPARE(cKind.counts(cDisk), QVector<int>({6, 0, 6, 0}));
    };
    const auto drain = [&](int nHeight, char chFirst, int nBuffLen) {
        std::vector<Record *> vecRecords;
        for (char chPixel = chFirst; chPixel < chFirst + 6; ++chPixel) {
            Record *pcRecord = (cDisk.*cKind.m_fnRequest)();
            QVERIFY(pcRecord);
            vecRecords.push_back(pcRecord);
            QByteArray achWanted(cKind.m_nRowLengthOf5 * nHeight, chPixel);
            achWanted[achWanted.size() - 1] = '!';
            QCOMPARE(QByteArray(reinterpret_cast<char *>((pcRecord->*cKind.m_fnPixels)()), achWanted.size()),
                     achWanted);
            QCOMPARE(pcRecord->getWidth(), WIDTH);
            QCOMPARE(pcRecord->getHeight(), nHeight);
            QCOMPARE(pcRecord->m_nBuffLen, nBuffLen);
        }
        QCOMPARE(cKind.counts(cDisk), QVector<int>({6, 0, 0, 6}));
        for (Record *pcRecord : vecRecords)
            (cDisk.*cKind.m_fnRelease)(pcRecord);
        QCOMPARE(cKind.counts(cDisk), UNTOUCHED);
    };
    const int nLarge = cKind.m_nRowLengthOf5 * 9;
    fill(9, 'A');
    drain(9, 'A', nLarge);
    fill(2, 'K'); // smaller pictures keep the buffers
    drain(2, 'K', nLarge);
    fill(10, 'a'); // what is still prepared goes with the memory disk
}

template <class Record>
void checkRefused(const Kind<Record> &cKind, int nWidth, int nHeight, bool bData)
{
    MemoryDisk cDisk;
    unsigned char uchPixel = 0;
    QVERIFY(!(cDisk.*cKind.m_fnAdd)(bData ? &uchPixel : nullptr, nWidth, nHeight));
    QCOMPARE(cKind.counts(cDisk), UNTOUCHED);
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
    for (int nPicture = 0; nPicture < 20000; ++nPicture)
        QVERIFY((cDisk.*cKind.m_fnAdd)(auchPicture, 1, 1));
    bStop = true;
    cEmptier.join();
    (cDisk.*cKind.m_fnAdd)(auchPicture, 1, 1); // wakes the consumer
    cConsumer.join();
    (cDisk.*cKind.m_fnEmpty)();
    QCOMPARE(cKind.counts(cDisk), UNTOUCHED);
}

constexpr int PRODUCERS = 3;
constexpr int CONSUMERS = 2;

/// Producers whose pictures consist of their number, consumers that note what they get.
template <class Record>
class Traffic
{
public:
    explicit Traffic(const Kind<Record> &cKind) : m_cKind(cKind)
    {
        for (int nProducer = 0; nProducer < PRODUCERS; ++nProducer)
            m_vecProducers.emplace_back([this, nProducer] { produce(nProducer); });
        for (int nConsumer = 0; nConsumer < CONSUMERS; ++nConsumer)
            m_vecConsumers.emplace_back([this] { consume(); });
    }

    QVector<int> counts() { return m_cKind.counts(m_cDisk); }

    void finish()
    {
        m_bStop = true;
        for (std::thread &cProducer : m_vecProducers)
            cProducer.join();
        for (int nConsumer = 0; nConsumer < CONSUMERS; ++nConsumer)
            send(-1, 0, 1);
        for (std::thread &cConsumer : m_vecConsumers)
            cConsumer.join();
    }

    const Kind<Record> &m_cKind;
    MemoryDisk m_cDisk;
    std::atomic<bool> m_bStop{false};
    std::atomic<int> m_nTorn{0};
    std::atomic<int> m_nUnordered{0};
    int m_anSent[PRODUCERS] = {};
    std::map<int, int> m_amapReceived[PRODUCERS]; ///< how often each number came, under m_cMutex
    std::mutex m_cMutex;

private:
    static constexpr int PIXELS = 256; ///< a row of so many pixels has no padding

    void send(int nProducer, int nNumber, int nHeight)
    {
        std::vector<int> vecPicture(PIXELS * 3, nNumber);
        vecPicture[0] = nProducer;
        while (!(m_cDisk.*m_cKind.m_fnAdd)(reinterpret_cast<unsigned char *>(vecPicture.data()), PIXELS,
                                           nHeight))
            ;
    }

    void produce(int nProducer)
    {
        int &nSent = m_anSent[nProducer];
        for (; !m_bStop; ++nSent)
            send(nProducer, nSent, 1 + nSent % 4);
    }

    void consume()
    {
        int anNext[PRODUCERS] = {};
        for (;;) {
            Record *pcRecord = (m_cDisk.*m_cKind.m_fnRequest)();
            if (!pcRecord)
                continue;
            const auto *pnPixels = reinterpret_cast<const int *>((pcRecord->*m_cKind.m_fnPixels)());
            const int nProducer = pnPixels[0];
            const int nNumber = pnPixels[1];
            const int nInts = m_cKind.m_nRowLengthOf5 / 5 * PIXELS / 4 * pcRecord->getHeight();
            for (int nInt = 2; nInt < nInts; ++nInt)
                m_nTorn += pnPixels[nInt] != nNumber;
            (m_cDisk.*m_cKind.m_fnRelease)(pcRecord);
            if (nProducer < 0)
                return;
            m_nUnordered += nNumber < anNext[nProducer];
            anNext[nProducer] = nNumber + 1;
            const std::lock_guard<std::mutex> cGuard(m_cMutex);
            ++m_amapReceived[nProducer][nNumber];
        }
    }

    std::vector<std::thread> m_vecProducers;
    std::vector<std::thread> m_vecConsumers;
};

template <class Record>
void checkTraffic(Traffic<Record> &cTraffic)
{
    QCOMPARE(cTraffic.m_nTorn.load(), 0);
    QCOMPARE(cTraffic.m_nUnordered.load(), 0);
    QCOMPARE(cTraffic.counts(), UNTOUCHED);
    for (int nProducer = 0; nProducer < PRODUCERS; ++nProducer) {
        const std::map<int, int> &mapReceived = cTraffic.m_amapReceived[nProducer];
        QVERIFY(cTraffic.m_anSent[nProducer] > 0);
        QCOMPARE(static_cast<int>(mapReceived.size()), cTraffic.m_anSent[nProducer]);
        for (const auto &[nNumber, nTimes] : mapReceived)
            QVERIFY2(nTimes == 1,
                     qPrintable(QStringLiteral("picture %1 came %2 times").arg(nNumber).arg(nTimes)));
    }
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

    void impossiblePicturesAreRefused_data()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        QTest::addColumn<int>("nWidth");
        QTest::addColumn<int>("nHeight");
        QTest::addColumn<bool>("bData");
        QTest::newRow("negative width") << -1 << 1 << true;
        QTest::newRow("negative height") << 1 << -1 << true;
        QTest::newRow("both negative") << -1000 << -1000 << true;
        QTest::newRow("more bytes than an int counts") << 65536 << 65536 << true;
        QTest::newRow("more bytes than 64 bits count") << MAX << MAX << true;
        QTest::newRow("no pixels") << 1 << 1 << false;
    }
    void impossiblePicturesAreRefused()
    {
        QFETCH(int, nWidth);
        QFETCH(int, nHeight);
        QFETCH(bool, bData);
        checkRefused(COLOUR, nWidth, nHeight, bData);
        checkRefused(GREY, nWidth, nHeight, bData);
    }

    void pictureWithoutMemoryIsRefused()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("the sanitizers reserve more addresses than a limit leaves");
#endif
        rlimit cOld;
        QCOMPARE(getrlimit(RLIMIT_AS, &cOld), 0);
        const rlimit cLow = {1 << 30, cOld.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_AS, &cLow), 0);
        checkRefused(COLOUR, 20000, 30000, true);
        checkRefused(GREY, 40000, 40000, true);
        QCOMPARE(setrlimit(RLIMIT_AS, &cOld), 0);
    }

    void emptyingRacesWithConsumer()
    {
        checkEmptying(COLOUR);
        checkEmptying(GREY);
    }

    void everyPictureIsDeliveredOnce()
    {
        Traffic<MemoryDisk::DIB> cColour(COLOUR);
        Traffic<MemoryDisk::Gray8> cGrey(GREY);
        for (QElapsedTimer cTimer = started(); cTimer.elapsed() < 1500;) {
            for (int nCount : cColour.counts() + cGrey.counts())
                QVERIFY(nCount >= 0 && nCount <= 6);
        }
        cColour.finish();
        cGrey.finish();
        checkTraffic(cColour);
        checkTraffic(cGrey);
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
        const Source pcSource = source(pcTo.get(), 5, szType, 7);
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
        QCOMPARE(MemoryDisk::getInstance(9), MemoryDisk::getInstance(5));
        QCOMPARE(counts(-1), UNTOUCHED);

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

    /// A type is told by how it begins, instances hold records of their own, and a record that is
    /// requested over is not lost.
    void sourceHoldsOneRecordPerInstance()
    {
        const DataSource::DataSourceInfo *pcKind =
            DataSource::getInstance()->m_mapDataSourceInfo.value(QStringLiteral("Memory Disk 3"));
        QVERIFY(pcKind);
        MemoryDisk &cDisk = *MemoryDisk::getInstance(3);
        unsigned char auchPicture[8] = {};
        for (int nWidth = 1; nWidth <= 3; ++nWidth)
            QVERIFY(cDisk.addGray8(auchPicture, nWidth, 2));
        int nWidth = -1;
        int nHeight = -1;
        QVERIFY(!pcKind->m_fnRequestPicture(1001, "Gray16", &nWidth, &nHeight));
        QCOMPARE(nWidth, -1);
        QVERIFY(pcKind->m_fnRequestPicture(1001, "Gray8 and more", &nWidth, &nHeight));
        QCOMPARE(nWidth, 1);
        QCOMPARE(nHeight, 2);
        QVERIFY(pcKind->m_fnRequestPicture(1002, "Gray8", &nWidth, &nHeight));
        QCOMPARE(nWidth, 2);
#ifdef QT_NO_DEBUG // a debug build ends here with an assertion
        QVERIFY(pcKind->m_fnRequestPicture(1001, "Gray8", &nWidth, &nHeight));
        QCOMPARE(GREY.counts(cDisk), QVector<int>({6, 4, 0, 2}));
#endif
        pcKind->m_fnReleasePicture(1001);
        pcKind->m_fnReleasePicture(1001);
        pcKind->m_fnReleasePicture(1002);
        pcKind->m_fnRemoveInstance(1001);
        pcKind->m_fnRemoveInstance(1002);
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
        for (int nTime = 0; nTime < 10; ++nTime)
            QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(), {QStringLiteral("end")}), 0);
    }

private:
    static QElapsedTimer started()
    {
        QElapsedTimer cTimer;
        cTimer.start();
        return cTimer;
    }
};

namespace
{
/// Leaves main() while threads write, read and release.
int endUnderTraffic()
{
    static std::atomic<int> s_nPictures{0};
    const DataSource::DataSourceInfo *pcKind =
        DataSource::getInstance()->m_mapDataSourceInfo.value(QStringLiteral("Memory Disk 0"));
    std::thread([] {
        unsigned char auchPicture[4] = {};
        for (;;)
            MemoryDisk::getInstance(0)->addDIB(auchPicture, 1, 1);
    }).detach();
    for (int nInstance = 0; nInstance < 2; ++nInstance) {
        std::thread([pcKind, nInstance] {
            for (int nWidth = 0, nHeight = 0;; ++s_nPictures) {
                pcKind->m_fnRequestPicture(nInstance, "RGB", &nWidth, &nHeight);
                pcKind->m_fnReleasePicture(nInstance);
            }
        }).detach();
    }
    while (s_nPictures < 1000)
        std::this_thread::yield();
    return 0;
}
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
