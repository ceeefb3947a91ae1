// Pictures on their way from task to task through a memory disk, with everything as a device runs it.

#include "countedheap.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <QtTest>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "arithmparammgr.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr int WIDTH = 641; // rows are padded
constexpr int HEIGHT = 40;
constexpr size_t COLOUR_BYTES = ((WIDTH + 1) * 3 & ~3) * size_t(HEIGHT);
constexpr size_t GREY_BYTES = size_t(WIDTH) * HEIGHT;
constexpr int PICTURES = 300;
constexpr int WARM_UP = 50; // by then every buffer of the disk has its size

std::atomic<int> s_nGiven{0};
std::atomic<int> s_nLargeAfterWarmUp{0};
std::mutex s_cMutex;
std::map<const ArithmParamMgr *, std::vector<int>> s_mapReceived; // numbers of pictures by consumer
int s_nBroken = 0;

/// Every byte of a picture follows from its number.
void paint(unsigned char *puchPixels, size_t nBytes, int nNumber)
{
    for (size_t i = 0; i < nBytes; ++i)
        puchPixels[i] = static_cast<unsigned char>(i * 31 + static_cast<size_t>(nNumber) * 7);
    memcpy(puchPixels, &nNumber, sizeof nNumber);
}

unsigned char *requestPicture(int, const char *szType, int *pnWidth, int *pnHeight)
{
    static std::vector<unsigned char> s_auchPicture(COLOUR_BYTES);
    if (s_nGiven >= PICTURES) {
        QThread::msleep(5);
        return nullptr;
    }
    paint(s_auchPicture.data(), strcmp(szType, "RGB") == 0 ? COLOUR_BYTES : GREY_BYTES, s_nGiven++);
    *pnWidth = WIDTH;
    *pnHeight = HEIGHT;
    return s_auchPicture.data();
}

/// Looks at the picture of ID 1, whose kind is its config text.
char *receive(char *pchConfig, ArithmParamMgr *pcAPM)
{
    static char s_szBlank[1] = "";
    static std::vector<unsigned char> s_auchExpected(COLOUR_BYTES);
    const bool bColour = strcmp(pchConfig, "RGB") == 0;
    const size_t nBytes = bColour ? COLOUR_BYTES : GREY_BYTES;
    const unsigned char *puchPixels =
        bColour ? pcAPM->getParamDIB(1)->getDIB() : pcAPM->getParamGray8(1)->getGray8();
    int nNumber = -1;
    memcpy(&nNumber, puchPixels, sizeof nNumber);

    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    paint(s_auchExpected.data(), nBytes, nNumber);
    s_nBroken += memcmp(puchPixels, s_auchExpected.data(), nBytes) != 0;
    std::vector<int> &lstReceived = s_mapReceived[pcAPM];
    lstReceived.reserve(PICTURES);
    lstReceived.push_back(nNumber);
    if (nNumber == WARM_UP)
        CountedHeap::s_nLarge = 0;
    s_nLargeAfterWarmUp = CountedHeap::s_nLarge.load();
    return s_szBlank;
}

std::unique_ptr<TaskInfo> task(const char *szSource, const char *szType, const char *szArithmID,
                               const QString &strConfig)
{
    auto pcTask = std::make_unique<TaskInfo>(QLatin1String(szSource), nullptr);
    pcTask->m_pcDS = DataSource::getInstance()->createDataSourceFromConfigString(
        pcTask->m_pcAPM,
        QStringLiteral("<DSName>%1</DSName><OutputType>%2</OutputType><OutputID>1</OutputID>")
            .arg(QLatin1String(szSource), QLatin1String(szType)));
    TaskItem cItem;
    cItem.m_strArithmID = QLatin1String(szArithmID);
    cItem.m_strOptionStr = strConfig;
    pcTask->m_lstArithm.append(cItem);
    return pcTask;
}

size_t received()
{
    const std::lock_guard<std::mutex> cGuard(s_cMutex);
    size_t nSum = 0;
    for (const auto &cConsumer : s_mapReceived)
        nSum += cConsumer.second.size();
    return nSum;
}
} // namespace

class TestHandover : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const auto fnNothing = [](int) {};
        auto *pcKind = new DataSource::DataSourceInfo;
        pcKind->m_fnRequestPicture = requestPicture;
        pcKind->m_fnReleasePicture = fnNothing;
        pcKind->m_fnSetConfig = [](int, char *) {};
        pcKind->m_fnStart = pcKind->m_fnStop = pcKind->m_fnRemoveInstance = fnNothing;
        DataSource::getInstance()->m_mapDataSourceInfo.insert(QStringLiteral("Numbered"), pcKind);
        ArithmFactory::getInstance()->getArithms()->append(
            {QStringLiteral("测试"), QStringLiteral("收"),
             new Arithm(
                 false, [] { return "receive"; }, nullptr, receive)});
    }

    void eachPictureArrivesOnceAndWhole_data()
    {
        QTest::addColumn<QByteArray>("achType");
        QTest::addColumn<int>("nConsumers");
        QTest::newRow("colour") << QByteArray("RGB") << 1;
        QTest::newRow("grey") << QByteArray("Gray8") << 1;
        QTest::newRow("two consumers") << QByteArray("RGB") << 2;
    }
    void eachPictureArrivesOnceAndWhole()
    {
        QFETCH(QByteArray, achType);
        QFETCH(int, nConsumers);
        s_nGiven = 0;
        s_nBroken = 0;
        s_mapReceived.clear();

        std::vector<std::unique_ptr<TaskInfo>> lstTasks;
        for (int i = 0; i < nConsumers; ++i)
            lstTasks.push_back(task("Memory Disk 4", achType, "receive", QLatin1String(achType)));
        lstTasks.push_back(
            task("Numbered", achType, "KQ_MemoryDisk",
                 QStringLiteral("<MemDisk>4</MemDisk><InputID>1</InputID><InputType>%1</InputType>")
                     .arg(QLatin1String(achType))));
        for (const auto &pcTask : lstTasks)
            pcTask->startTask();
        QTRY_COMPARE_WITH_TIMEOUT(received(), size_t(PICTURES), 30000);
        for (const auto &pcTask : lstTasks)
            pcTask->stopTask();

        QCOMPARE(s_nBroken, 0);
        std::vector<int> lstAll;
        for (const auto &cConsumer : s_mapReceived) {
            QVERIFY(std::is_sorted(cConsumer.second.begin(), cConsumer.second.end()));
            lstAll.insert(lstAll.end(), cConsumer.second.begin(), cConsumer.second.end());
        }
        std::sort(lstAll.begin(), lstAll.end());
        for (int i = 0; i < PICTURES; ++i)
            QCOMPARE(lstAll[static_cast<size_t>(i)], i);
        // Nothing large is allocated for a picture once the buffers have their size.
        QCOMPARE(s_nLargeAfterWarmUp.load(), 0);
    }

    void largeBlocksAreCounted()
    {
        if (!CountedHeap::COUNTS)
            QSKIP("The sanitizers keep the heap.");
        const int nBefore = CountedHeap::s_nLarge;
        ParamGray8 cPicture;
        cPicture.resize(100, 100);
        const std::unique_ptr<char[]> pcBlock(new char[CountedHeap::LARGE]);
        QCOMPARE(CountedHeap::s_nLarge - nBefore, 2);
    }
};

QTEST_GUILESS_MAIN(TestHandover)
#include "tst_handover.moc"
