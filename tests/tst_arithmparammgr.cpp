#include "arithmparammgr.h"

#include "qguard.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <atomic>
#include <climits>
#include <functional>
#include <malloc.h>
#include <sys/resource.h>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#else
#define SANITIZED 0
#endif

namespace
{
// A picture of any kind, by plain numbers.
struct Picture {
    std::function<void(int, int)> resize;
    std::function<QSize()> size;
    std::function<uchar *()> pixels;
};

template <class Param, class Pixel>
Picture pictureOf(Param &cParam, Pixel *(Param::*get)() const)
{
    return {[&cParam](int nWidth, int nHeight) { cParam.resize(nWidth, nHeight); },
            [&cParam] { return QSize(cParam.getWidth(), cParam.getHeight()); },
            [&cParam, get] { return reinterpret_cast<uchar *>((cParam.*get)()); }};
}

// One kind of parameter in a store, whatever its type.
struct KindOf {
    ArithmParamMgr::Kind m_eKind;
    std::function<ArithmParam *(ArithmParamMgr &, int)> get;
    std::function<QList<int>(ArithmParamMgr &)> ids;
    std::function<void(ArithmParamMgr &, int)> remove;
};

#define KIND(NAME)                                                                                           \
    {                                                                                                        \
        ArithmParamMgr::Kind::NAME, [](ArithmParamMgr &c, int nID) { return c.getParam##NAME(nID); },        \
            [](ArithmParamMgr &c) { return c.requestParam##NAME##Map()->keys(); },                           \
            [](ArithmParamMgr &c, int nID) { c.removeParam##NAME(nID); }                                     \
    }

const std::vector<KindOf> &allKinds()
{
    static const std::vector<KindOf> s_kinds{KIND(DIB),   KIND(Gray8),   KIND(Gray16), KIND(Points),
                                             KIND(Lines), KIND(Polys),   KIND(Areas),  KIND(Strings),
                                             KIND(Longs), KIND(Doubles), KIND(Bools)};
    return s_kinds;
}

template <class Item>
bool same(const Item &cLeft, const Item &cRight)
{
    if constexpr (std::is_arithmetic_v<Item>)
        return cLeft == cRight;
    else
        return memcmp(&cLeft, &cRight, sizeof cLeft) == 0;
}

void runTogether(int nThreads, const std::function<void()> &fnWork)
{
    std::vector<std::thread> acThreads(static_cast<size_t>(nThreads));
    for (std::thread &cThread : acThreads)
        cThread = std::thread(fnWork);
    for (std::thread &cThread : acThreads)
        cThread.join();
}

// What holds for a list of any kind of elements.
template <class Param, class Add, class Get, class Set, class Item>
void checkList(int (Param::*num)() const, Add add, Get get, Set set, void (Param::*clear)(), Item cFirst,
               Item cSecond)
{
    Param cParam; // not a store's
    Item cOut{};
    QCOMPARE((cParam.*get)(cOut, 0), 0);
    (cParam.*add)(cFirst);
    (cParam.*add)(cFirst);
    QVERIFY((cParam.*set)(cSecond, 1) != 0);
    QCOMPARE((cParam.*num)(), 2);
    QVERIFY((cParam.*get)(cOut, 0) != 0 && same(cOut, cFirst));
    QVERIFY((cParam.*get)(cOut, 1) != 0 && same(cOut, cSecond));
    for (int nBad : {-1, 2, INT_MAX, INT_MIN}) {
        QCOMPARE((cParam.*get)(cOut, nBad), 0);
        QCOMPARE((cParam.*set)(cFirst, nBad), 0);
    }
    (cParam.*clear)();
    QCOMPARE((cParam.*num)(), 0);
    (cParam.*add)(cSecond);
    QCOMPARE((cParam.*num)(), 1);
}
} // namespace

class TestArithmParamMgr : public QObject
{
    Q_OBJECT

private slots:
    void pictureSizes_data();
    void pictureSizes();
    void refusedAllocation();
    void keptBuffer();
    void eachKindHasItsOwnMap();
    void freshIDs();
    void freshIDsAtTheTop();
    void lists();
    void polygons();
    void snapshotsKeepTheirItems();
    void getString_data();
    void getString();
    void snapshotsWhileATaskWrites();
    void resourcesAreCounted();
    void waitingForAResource();
    void sharedVariables();
};

void TestArithmParamMgr::pictureSizes_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("empty");
    QTest::newRow("one pixel") << 1 << 1 << false;
    QTest::newRow("rows end at 4 bytes") << 4 << 3 << false;
    QTest::newRow("padded rows") << 5 << 7 << false;
    QTest::newRow("camera") << 1920 << 1080 << false;
    QTest::newRow("no width") << 0 << 5 << true;
    QTest::newRow("negative width") << -5 << 5 << true;
    QTest::newRow("bytes just overflow an int") << 46341 << 46341 << true;
    QTest::newRow("bytes wrap to 0") << 65536 << 65536 << true;
    QTest::newRow("bytes wrap to few") << 0x40000001 << 8 << true;
    QTest::newRow("narrow and high") << 2 << INT_MAX << true;
    QTest::newRow("low and wide") << INT_MAX << 2 << true;
    QTest::newRow("largest") << INT_MAX << INT_MAX << true;
}

void TestArithmParamMgr::pictureSizes()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, empty);
    ParamDIB cDIB;
    ParamGray8 cGray8;
    ParamGray16 cGray16;
    const std::pair<Picture, int> aKinds[] = {{pictureOf(cDIB, &ParamDIB::getDIB), 24},
                                              {pictureOf(cGray8, &ParamGray8::getGray8), 8},
                                              {pictureOf(cGray16, &ParamGray16::getGray16), 16}};
    for (const auto &[cPicture, nBits] : aKinds) {
        QCOMPARE(cPicture.size(), QSize(0, 0));
        cPicture.resize(2, 2);
        QVERIFY(cPicture.pixels() != nullptr);
        cPicture.resize(width, height);
        if (empty) {
            QCOMPARE(cPicture.size(), QSize(0, 0));
            QVERIFY(cPicture.pixels() == nullptr);
        }
        // A refused size does not spoil the picture.
        const QSize cSize = empty ? QSize(3, 2) : QSize(width, height);
        cPicture.resize(cSize.width(), cSize.height());
        QCOMPARE(cPicture.size(), cSize);
        const int nRow = nBits == 24 ? (cSize.width() * 3 + 3) / 4 * 4 : cSize.width() * nBits / 8;
        const size_t nBytes = size_t(nRow) * size_t(cSize.height());
        uchar *const pPixels = cPicture.pixels();
        QVERIFY(malloc_usable_size(pPixels) >= nBytes);
        QCOMPARE(reinterpret_cast<quintptr>(pPixels) % 64, quintptr(0));
        if (cSize.width() > 100)
            QVERIFY(std::all_of(pPixels, pPixels + nBytes, [](uchar uch) { return uch == 0; }));
        memset(pPixels, 0xA5, nBytes);
    }
}

void TestArithmParamMgr::refusedAllocation()
{
    if (SANITIZED)
        QSKIP("a sanitizer ends the program when memory is refused");
    rlimit cOld{};
    QCOMPARE(getrlimit(RLIMIT_AS, &cOld), 0);
    const rlimit cTight{rlim_t(1) << 30, cOld.rlim_max};
    ParamDIB cDIB;
    cDIB.resize(100, 100);
    QCOMPARE(setrlimit(RLIMIT_AS, &cTight), 0);
    cDIB.resize(25000, 25000);
    QCOMPARE(setrlimit(RLIMIT_AS, &cOld), 0);
    QVERIFY(cDIB.getDIB() == nullptr);
    QCOMPARE(cDIB.getWidth(), 0);
    QCOMPARE(cDIB.getHeight(), 0);
}

void TestArithmParamMgr::keptBuffer()
{
    ParamDIB cDIB;
    cDIB.resize(640, 480);
    uchar *const pPixels = cDIB.getDIB();
    pPixels[0] = 7;
    for (QSize cSize : {QSize(640, 480), QSize(10, 10), QSize(480, 640), QSize(639, 480)}) {
        cDIB.resize(cSize.width(), cSize.height());
        QCOMPARE(cDIB.getDIB(), pPixels);
        QCOMPARE(QSize(cDIB.getWidth(), cDIB.getHeight()), cSize);
    }
    // A larger buffer is new, and 0 again.
    cDIB.resize(1280, 960);
    QCOMPARE(cDIB.getDIB()[0], uchar(0));
}

void TestArithmParamMgr::eachKindHasItsOwnMap()
{
    ArithmParamMgr *const pcAPM = ArithmParamMgr::newInstance();
    for (const KindOf &cKind : allKinds()) {
        ArithmParam *const pcParam = cKind.get(*pcAPM, 5);
        QCOMPARE(pcParam->getID(), 5);
        QVERIFY(pcParam->getName().isEmpty());
        pcParam->setName(QStringLiteral("name"));
        pcParam->setDescribe(QStringLiteral("text"));
        QCOMPARE(cKind.get(*pcAPM, 5), pcParam);
        for (int nID : {INT_MAX, 0, -2, INT_MIN})
            QCOMPARE(cKind.get(*pcAPM, nID)->getID(), nID);
        QCOMPARE(cKind.ids(*pcAPM), QList<int>({INT_MIN, -2, 0, 5, INT_MAX}));
        for (int nID : {INT_MAX, 0, -2, INT_MIN, 77})
            cKind.remove(*pcAPM, nID);
    }
    pcAPM->getParamGray8(5)->resize(3, 2);
    pcAPM->getParamPoints(5)->addPoint({1, 2});

    const QList<ArithmParamMgr::Entry> lstEntries = pcAPM->snapshot();
    QCOMPARE(size_t(lstEntries.size()), allKinds().size());
    for (int i = 0; i < lstEntries.size(); ++i) {
        const ArithmParamMgr::Entry &cEntry = lstEntries.at(i);
        const KindOf &cKind = allKinds()[size_t(i)];
        QCOMPARE(cEntry.m_eKind, cKind.m_eKind);
        QCOMPARE(cEntry.m_nID, 5);
        QCOMPARE(cEntry.m_strName, QStringLiteral("name"));
        QCOMPARE(cEntry.m_strDescribe, QStringLiteral("text"));
        const bool bGray8 = cKind.m_eKind == ArithmParamMgr::Kind::Gray8;
        QCOMPARE(QSize(cEntry.m_nWidth, cEntry.m_nHeight), bGray8 ? QSize(3, 2) : QSize(0, 0));
        QCOMPARE(cEntry.m_nCount, cKind.m_eKind == ArithmParamMgr::Kind::Points ? 1 : 0);
        cKind.remove(*pcAPM, 5);
        QCOMPARE(pcAPM->snapshot().size(), lstEntries.size() - i - 1);
    }
    for (const KindOf &cKind : allKinds())
        cKind.get(*pcAPM, 9);
    pcAPM->clean();
    for (const KindOf &cKind : allKinds())
        QVERIFY(cKind.ids(*pcAPM).isEmpty());
    QCOMPARE(pcAPM->getParamPoints(5)->getPointNum(), 0);
    ArithmParamMgr::deleteInstance(pcAPM);
    ArithmParamMgr::deleteInstance(nullptr);
}

// Whatever a task does to its store, a fresh ID is at least 1, unused, and was never handed out.
void TestArithmParamMgr::freshIDs()
{
    QRandomGenerator cRandom(4711);
    ArithmParamMgr cAPM;
    for (const KindOf &cKind : allKinds()) {
        QSet<int> setHandedOut;
        for (int i = 0; i < 500; ++i) {
            const int nID = cRandom.bounded(600);
            switch (cRandom.bounded(i % 100 == 0 ? 5 : 4)) {
            case 0:
                cKind.get(cAPM, nID);
                break;
            case 1:
                cKind.remove(cAPM, nID);
                break;
            case 4:
                cAPM.clean();
                cKind.get(cAPM, INT_MAX);
                break;
            default: {
                const QList<int> lstUsed = cKind.ids(cAPM);
                const int nFresh = cKind.get(cAPM, -1)->getID();
                QVERIFY(nFresh >= 1 && !lstUsed.contains(nFresh) && !setHandedOut.contains(nFresh));
                setHandedOut.insert(nFresh);
                if (cRandom.bounded(2) == 0)
                    cKind.remove(cAPM, nFresh);
            }
            }
        }
        ArithmParamMgr cOther; // starts anew
        QCOMPARE(cKind.get(cOther, -1)->getID(), 1);
        cKind.get(cOther, 40);
        QCOMPARE(cKind.get(cOther, -1)->getID(), 41);
    }
}

void TestArithmParamMgr::freshIDsAtTheTop()
{
    for (int nTop : {INT_MAX, INT_MAX - 1}) {
        ArithmParamMgr cAPM;
        cAPM.getParamPoints(nTop);
        const int nFirst = cAPM.getParamPoints(-1)->getID();
        const int nSecond = cAPM.getParamPoints(-1)->getID();
        QVERIFY(nFirst >= 1 && nSecond >= 1 && nFirst != nSecond && nFirst != nTop && nSecond != nTop);
        cAPM.clean();
        const int nThird = cAPM.getParamPoints(-1)->getID();
        QVERIFY(nThird >= 1 && nThird != nFirst && nThird != nSecond);
    }
}

void TestArithmParamMgr::lists()
{
    checkList(&ParamPoints::getPointNum, &ParamPoints::addPoint, &ParamPoints::getPoint,
              &ParamPoints::setPoint, &ParamPoints::clearPoints, ParamPoints::Point{1, -2},
              ParamPoints::Point{INT_MAX, INT_MIN});
    checkList(&ParamLines::getLineNum, &ParamLines::addLine, &ParamLines::getLine, &ParamLines::setLine,
              &ParamLines::clearLines, ParamLines::Line{1, 2, 3, 4}, ParamLines::Line{5, 6, 7, 8});
    checkList(&ParamAreas::getAreaNum, &ParamAreas::addArea, &ParamAreas::getArea, &ParamAreas::setArea,
              &ParamAreas::clearAreas, ParamAreas::Area{9, {1, 2, 3, 4}, 5, 6}, ParamAreas::Area{});
    checkList(&ParamLongs::getLongNum, &ParamLongs::addLong, &ParamLongs::getLong, &ParamLongs::setLong,
              &ParamLongs::clearLongs, LONG_MAX, LONG_MIN);
    checkList(&ParamDoubles::getDoubleNum, &ParamDoubles::addDouble, &ParamDoubles::getDouble,
              &ParamDoubles::setDouble, &ParamDoubles::clearDoubles, 0.1, -1e300);
    checkList(&ParamBools::getBoolNum, &ParamBools::addBool, &ParamBools::getBool, &ParamBools::setBool,
              &ParamBools::clearBools, true, false);
}

void TestArithmParamMgr::polygons()
{
    ParamPolys cPolys;
    cPolys.addPoly({{{1, 2}, {3, 4}}});
    cPolys.addPoly({});
    QVERIFY(cPolys.addPolyVert({5, 6}, 1) != 0);
    QVERIFY(cPolys.setPolyVert({7, 8}, 0, 1) != 0);
    ParamPolys::Point cPoint{};
    QVERIFY(cPolys.getPolyVert(cPoint, 0, 1) != 0);
    QCOMPARE(QPoint(cPoint.x, cPoint.y), QPoint(7, 8));
    QCOMPARE(cPolys.getPolyVertNum(1), 1);
    for (auto [nPoly, nVert] : {std::pair(-1, 0), {2, 0}, {0, -1}, {0, 2}, {1, 1}, {INT_MAX, INT_MAX}}) {
        QCOMPARE(cPolys.getPolyVert(cPoint, nPoly, nVert), 0);
        QCOMPARE(cPolys.setPolyVert(cPoint, nPoly, nVert), 0);
    }
    for (int nPoly : {-1, 2}) {
        QCOMPARE(cPolys.getPolyVertNum(nPoly), 0);
        QCOMPARE(cPolys.addPolyVert(cPoint, nPoly), 0);
    }
}

// What a reader has copied stays as it was.
void TestArithmParamMgr::snapshotsKeepTheirItems()
{
    ArithmParamMgr cAPM;
    ParamPolys *const pcPolys = cAPM.getParamPolys(3);
    pcPolys->setName(QStringLiteral("outline"));
    pcPolys->addPoly({{{1, 2}}});
    QString strName;
    const QList<ParamPolys::Poly> lstPolys = cAPM.snapshotPolys(3, &strName);
    pcPolys->setPolyVert({9, 9}, 0, 0);
    pcPolys->clearPolys();
    cAPM.clean();
    QCOMPARE(strName, QStringLiteral("outline"));
    QCOMPARE(lstPolys.at(0).verts.at(0).x, 1);
    QVERIFY(cAPM.snapshotPolys(3, &strName).isEmpty() && strName.isEmpty());
    QVERIFY(cAPM.snapshot().isEmpty()); // a snapshot creates nothing
}

void TestArithmParamMgr::getString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("copied");
    const QString strArea = QStringLiteral(u"\u9762\u79ef 5");
    QTest::newRow("fits") << "abc" << 1023 << QByteArray("abc");
    QTest::newRow("cut") << "abcdef" << 4 << QByteArray("abcd");
    QTest::newRow("empty") << QString() << 10 << QByteArray();
    QTest::newRow("bytes of UTF-8") << strArea << 100 << QByteArray("\xE9\x9D\xA2\xE7\xA7\xAF 5");
    QTest::newRow("cut inside a character") << strArea << 4 << QByteArray("\xE9\x9D\xA2\xE7");
    QTest::newRow("zero inside") << QString::fromLatin1("a\0b", 3) << 9 << QByteArray("a\0b", 3);
    QTest::newRow("no room") << "abc" << 0 << QByteArray();
    QTest::newRow("negative room") << "abc" << -1 << QByteArray();
}

void TestArithmParamMgr::getString()
{
    QFETCH(QString, text);
    QFETCH(int, length);
    QFETCH(QByteArray, copied);
    ParamStrings cStrings;
    cStrings.addString(QStringLiteral("first"));
    cStrings.addString(QString());
    QVERIFY(cStrings.setString(text, 1) != 0);
    QCOMPARE(cStrings.getStringLen(1), text.toUtf8().size());
    QByteArray baBuffer(1100, '~');
    QCOMPARE(cStrings.getString(baBuffer.data(), length, 1), copied.size());
    QCOMPARE(baBuffer, copied + QByteArray(1100 - copied.size(), '~')); // and no terminator
    for (int nBad : {-1, 2, INT_MAX}) {
        QCOMPARE(cStrings.getStringLen(nBad), 0);
        QCOMPARE(cStrings.getString(baBuffer.data(), 10, nBad), 0);
        QCOMPARE(cStrings.setString(text, nBad), 0);
    }
    QCOMPARE(cStrings.getString(nullptr, 10, 1), 0);
}

void TestArithmParamMgr::snapshotsWhileATaskWrites()
{
    ArithmParamMgr cAPM;
    std::atomic_bool bDone{false};
    std::atomic_int nTorn{0};
    std::atomic_int nSeen{0};
    std::thread cTask([&] {
        for (int i = 1; i < 5000 || nSeen < 5000; ++i) {
            ParamPoints *pcPoints = cAPM.getParamPoints(1);
            pcPoints->setName(QString::number(i));
            pcPoints->addPoint({i, i});
            cAPM.getParamStrings(1)->setStrings({QString::number(i), QString::number(i)});
            ParamPolys *pcPolys = cAPM.getParamPolys(1);
            pcPolys->addPoly({{{i, i}}});
            pcPolys->addPolyVert({i, i}, 0);
            cAPM.getParamGray8(-1)->resize(2 * (i % 50), i % 50);
            if (i % 7 == 0)
                pcPoints->clearPoints();
            if (i % 20 == 0)
                cAPM.removeParamPolys(1);
            if (i % 50 == 0)
                cAPM.clean();
        }
        bDone = true;
    });
    const auto readAll = [&] {
        while (!bDone) {
            for (const ParamPoints::Point &cPoint : cAPM.snapshotPoints(1))
                nTorn += cPoint.x != cPoint.y || cPoint.x == 0;
            for (const ParamPolys::Poly &cPoly : cAPM.snapshotPolys(1))
                for (const ParamPolys::Point &cPoint : cPoly.verts)
                    nTorn += cPoint.x != cPoint.y || cPoint.x == 0;
            const QList<QString> lstStrings = cAPM.snapshotStrings(1);
            nTorn += !lstStrings.isEmpty() && (lstStrings.size() != 2 || lstStrings[0] != lstStrings[1]);
            for (const ArithmParamMgr::Entry &cEntry : cAPM.snapshot())
                nTorn += cEntry.m_nWidth != 2 * cEntry.m_nHeight;
            nSeen += !lstStrings.isEmpty();
        }
    };
    std::thread cReader(readAll);
    readAll();
    cReader.join();
    cTask.join();
    QCOMPARE(nTorn.load(), 0);
    QVERIFY(nSeen > 0);
}

void TestArithmParamMgr::resourcesAreCounted()
{
    constexpr int RESOURCE = 3;
    constexpr int MAX = 3;
    ArithmParamMgr::s_acResource[RESOURCE].setMaxCount(MAX);
    std::atomic_int nHeld{0};
    std::atomic_int nTooMany{0};
    runTogether(8, [&] { // a lost wake-up never returns
        for (int i = 0; i < 500; ++i) {
            ArithmParamMgr::requestResource(RESOURCE);
            nTooMany += ++nHeld > MAX;
            std::this_thread::yield();
            --nHeld;
            ArithmParamMgr::releaseResource(RESOURCE);
        }
    });
    QCOMPARE(nTooMany.load(), 0);

    // Giving back more than was taken does not raise the bound.
    ArithmParamMgr::releaseResource(RESOURCE);
    QCOMPARE(ArithmParamMgr::s_acResource[RESOURCE].m_nCurCount, 0);
    for (int nBad : {-1, 10, INT_MAX}) {
        QCOMPARE(ArithmParamMgr::requestResource(nBad), 0);
        QCOMPARE(ArithmParamMgr::releaseResource(nBad), 0);
    }
}

void TestArithmParamMgr::waitingForAResource()
{
    constexpr int RESOURCE = 9; // at most one at first
    QVERIFY(ArithmParamMgr::requestResource(RESOURCE) != 0);
    std::atomic_bool bGot{false};
    std::thread cWaiter([&] {
        ArithmParamMgr::requestResource(RESOURCE);
        bGot = true;
    });
    // A thread cancelled while it waits leaves the resource usable.
    pthread_t hCancelled{};
    const auto waitForever = [](void *) -> void * {
        ArithmParamMgr::requestResource(RESOURCE);
        return nullptr;
    };
    QCOMPARE(pthread_create(&hCancelled, nullptr, waitForever, nullptr), 0);
    pthread_cancel(hCancelled);
    void *pResult = nullptr;
    pthread_join(hCancelled, &pResult);
    QCOMPARE(pResult, PTHREAD_CANCELED);
    QVERIFY(!bGot);

    ArithmParamMgr::s_acResource[RESOURCE].setMaxCount(2); // lets the waiter in
    cWaiter.join();
    ArithmParamMgr::s_acResource[RESOURCE].setMaxCount(-5); // counts as 1
    ArithmParamMgr::releaseResource(RESOURCE);
    std::thread cNext([] { ArithmParamMgr::requestResource(RESOURCE); });
    ArithmParamMgr::releaseResource(RESOURCE);
    cNext.join();
    ArithmParamMgr::releaseResource(RESOURCE);
}

void TestArithmParamMgr::sharedVariables()
{
    ArithmParamMgr::setInt64(255, LLONG_MIN);
    QCOMPARE(ArithmParamMgr::getInt64(255), LLONG_MIN);
    for (int nBad : {-1, 256, INT_MAX}) {
        ArithmParamMgr::setInt64(nBad, 5);
        QCOMPARE(ArithmParamMgr::getInt64(nBad), 0LL);
    }
    // Plug-ins count together under the variables' own mutex while others read.
    std::atomic_int nMissed{0};
    runTogether(3, [&nMissed] {
        for (int i = 0; i < 1000; ++i) {
            {
                const QGuard cGuard(ArithmParamMgr::s_cMutexForVar);
                ++ArithmParamMgr::s_anShare[0];
            }
            nMissed += ArithmParamMgr::getInt64(0) <= i;
        }
    });
    QCOMPARE(nMissed.load(), 0);
    QCOMPARE(ArithmParamMgr::getInt64(0), 3000LL);
}

QTEST_APPLESS_MAIN(TestArithmParamMgr)
#include "tst_arithmparammgr.moc"
