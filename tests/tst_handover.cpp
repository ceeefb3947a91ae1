// Pictures on their way from task to task through a memory disk, with everything as a device runs it.

#include "fixtures/failingheap.h"

#include <cstring>
#include <numeric>
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
constexpr size_t BYTES = ((WIDTH + 1) * 3 & ~3) * size_t(HEIGHT);
constexpr int PICTURES = 300;
constexpr int WARM_UP = 50; // by then every buffer of the disk has its size

std::atomic<int> s_nReceived{0};
// What the receiving task finds.
std::vector<int> s_vNumbers;
bool s_bBroken = false;
int s_nLargeInWarmUp = 0;
int s_nLargeAfterWarmUp = 0;

/// A picture of which every byte follows from its number.
unsigned char *paint(std::vector<unsigned char> &vPixels, int nNumber)
{
    vPixels.resize(BYTES);
    for (size_t i = 0; i < BYTES; ++i)
        vPixels[i] = static_cast<unsigned char>(i * 31 + static_cast<size_t>(nNumber) * 7);
    memcpy(vPixels.data(), &nNumber, sizeof nNumber);
    return vPixels.data();
}

unsigned char *requestPicture(int, const char *, int *pnWidth, int *pnHeight)
{
    static std::vector<unsigned char> s_vPixels;
    static int s_nGiven = 0;
    if (s_nGiven >= PICTURES) {
        QThread::msleep(5);
        return nullptr;
    }
    *pnWidth = WIDTH;
    *pnHeight = HEIGHT;
    return paint(s_vPixels, s_nGiven++);
}

char *receive(char *, ArithmParamMgr *pcAPM)
{
    static char s_szBlank[1] = "";
    static std::vector<unsigned char> s_vExpected;
    const unsigned char *puchPixels = pcAPM->getParamDIB(1)->getDIB();
    int nNumber = -1;
    memcpy(&nNumber, puchPixels, sizeof nNumber);
    s_vNumbers.push_back(nNumber);
    s_bBroken |= memcmp(puchPixels, paint(s_vExpected, nNumber), BYTES) != 0;
    if (nNumber == WARM_UP)
        s_nLargeInWarmUp = __atomic_exchange_n(&FailingHeap::s_nLarge, 0, __ATOMIC_RELAXED);
    s_nLargeAfterWarmUp = __atomic_load_n(&FailingHeap::s_nLarge, __ATOMIC_RELAXED);
    ++s_nReceived;
    return s_szBlank;
}

/// Fetches colour pictures and has one step.
class Task : public TaskInfo
{
public:
    Task(const QString &strSource, const QString &strArithmID, const QString &strConfig)
        : TaskInfo(strSource, nullptr)
    {
        m_pcDS = DataSource::getInstance()->createDataSourceFromConfigString(
            m_pcAPM, "<DSName>" + strSource + "</DSName><OutputType>RGB</OutputType><OutputID>1</OutputID>");
        TaskItem cItem;
        cItem.m_strArithmID = strArithmID;
        cItem.m_strOptionStr = strConfig;
        m_lstArithm.append(cItem);
    }
};
} // namespace

class TestHandover : public QObject
{
    Q_OBJECT

private slots:
    void eachPictureArrivesOnceAndWhole()
    {
        const auto fnNothing = [](int) {};
        auto *pcKind = new DataSource::DataSourceInfo;
        pcKind->m_fnRequestPicture = requestPicture;
        pcKind->m_fnReleasePicture = fnNothing;
        pcKind->m_fnSetConfig = [](int, char *) {};
        pcKind->m_fnStart = pcKind->m_fnStop = pcKind->m_fnRemoveInstance = fnNothing;
        DataSource::getInstance()->m_mapDataSourceInfo.insert("Numbered", pcKind);
        Arithm cReceive(
            false, [] { return "receive"; }, nullptr, receive);
        ArithmFactory::getInstance()->m_mapArithm.insert("receive", &cReceive);
        s_vNumbers.reserve(PICTURES);

        Task cTo("Memory Disk 4", "receive", "");
        Task cFrom("Numbered", "KQ_MemoryDisk",
                   "<MemDisk>4</MemDisk><InputID>1</InputID><InputType>RGB</InputType>");
        cTo.startTask();
        cFrom.startTask();
        QTRY_COMPARE_WITH_TIMEOUT(s_nReceived.load(), PICTURES, 30000);
        cFrom.stopTask();
        cTo.stopTask();

        QVERIFY(!s_bBroken);
        std::vector<int> vGiven(PICTURES);
        std::iota(vGiven.begin(), vGiven.end(), 0);
        QVERIFY(s_vNumbers == vGiven);
        // Nothing large is allocated for a picture once the buffers have their size.
        QVERIFY(s_nLargeInWarmUp > 0 || !FailingHeap::WORKS);
        QCOMPARE(s_nLargeAfterWarmUp, 0);
    }
};

QTEST_GUILESS_MAIN(TestHandover)
#include "tst_handover.moc"
