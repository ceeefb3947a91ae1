#include "arithmparammgr.h"

#include "fixtures/limit.h"
#include "fixtures/together.h"

#include <QSet>
#include <QtTest>

#include <climits>
#include <fcntl.h>
#include <functional>
#include <malloc.h>
#include <sched.h>
#include <thread>
#include <unistd.h>

namespace
{
/// One kind of parameter in a store, whatever its type.
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

template <class Param, class Pixel>
void checkPicture(Pixel *(Param::*get)() const, int nBits)
{
    Param cParam;
    const auto pixels = [&] { return reinterpret_cast<uchar *>((cParam.*get)()); };
    const auto resize = [&](QSize cSize) {
        cParam.resize(cSize.width(), cSize.height());
        return QSize(cParam.getWidth(), cParam.getHeight());
    };
    mallopt(M_PERTURB, 0xA5);
    resize({1, 1});
    // What may become pixels with the next size, too.
    QVERIFY(
        std::all_of(pixels(), pixels() + malloc_usable_size(pixels()), [](uchar uch) { return uch == 0; }));
    mallopt(M_PERTURB, 0);
    // Sizes of which the bytes, also those of a row, exceed an int or come to few in 32 or 64 bits.
    for (QSize cBad : {QSize(0, 5), QSize(-5, 5), QSize(46341, 46341), QSize(65536, 65536),
                       QSize(0x40000001, 8), QSize(2, INT_MAX), QSize(INT_MAX, 2), QSize(INT_MAX, INT_MAX)}) {
        QCOMPARE(resize({2, 2}), QSize(2, 2));
        QCOMPARE(resize(cBad), QSize(0, 0));
        QVERIFY(!pixels());
    }
    for (QSize cSize : {QSize(1, 1), QSize(5, 7), QSize(1919, 1080)}) {
        QCOMPARE(resize(cSize), cSize);
        const int nRow = nBits == 24 ? (cSize.width() * 3 + 3) / 4 * 4 : cSize.width() * nBits / 8;
        const size_t nBytes = size_t(nRow) * size_t(cSize.height());
        QVERIFY(malloc_usable_size(pixels()) >= nBytes);
        QCOMPARE(reinterpret_cast<quintptr>(pixels()) % 64, quintptr(0));
        if (cSize.width() > 100) // a new buffer for sure
            QVERIFY(std::all_of(pixels(), pixels() + nBytes, [](uchar uch) { return uch == 0; }));
        memset(pixels(), 0xA5, nBytes);
    }
    uchar *const puchKept = pixels();
    for (QSize cSize : {QSize(10, 10), QSize(1080, 1919)}) {
        QCOMPARE(resize(cSize), cSize);
        QCOMPARE(pixels(), puchKept);
    }
    if (!SANITIZED) {
        const Limit cLimit(RLIMIT_AS, rlim_t(1) << 28);
        QCOMPARE(resize({25000, 25000}), QSize(0, 0));
        QVERIFY(!pixels());
    }
}

/// What holds for a list of any kind of elements, which compare by their bytes.
template <class Param, class Add, class Get, class Set, class Item>
void checkList(int (Param::*num)() const, Add add, Get get, Set set, void (Param::*clear)(), Item cFirst,
               Item cSecond)
{
    Param cParam; // not a store's
    const auto fnBytes = [](const Item &cItem) {
        return QByteArray(reinterpret_cast<const char *>(&cItem), int(sizeof cItem));
    };
    Item cOut{};
    (cParam.*add)(cFirst);
    (cParam.*add)(cFirst);
    QVERIFY((cParam.*set)(cSecond, 1) != 0);
    QCOMPARE((cParam.*num)(), 2);
    QVERIFY((cParam.*get)(cOut, 0) != 0 && fnBytes(cOut) == fnBytes(cFirst));
    QVERIFY((cParam.*get)(cOut, 1) != 0 && fnBytes(cOut) == fnBytes(cSecond));
    for (int nBad : {-1, 2, INT_MAX, INT_MIN}) {
        QCOMPARE((cParam.*get)(cOut, nBad), 0);
        QCOMPARE((cParam.*set)(cFirst, nBad), 0);
    }
    (cParam.*clear)();
    QCOMPARE((cParam.*num)(), 0);
}
} // namespace

class TestArithmParamMgr : public QObject
{
    Q_OBJECT

private slots:
    void pictures()
    {
        checkPicture(&ParamDIB::getDIB, 24);
        checkPicture(&ParamGray8::getGray8, 8);
        checkPicture(&ParamGray16::getGray16, 16);
    }

    void readingANumberCallsNothing()
    {
        // A helper that shares its name with a system call loses to it where its argument is an int.
        int nFile = -1;
        std::thread([&nFile] {
            ParamGray8 cPicture(CLONE_FILES);
            cPicture.resize(CLONE_FILES, 1);
            if (cPicture.getWidth() + cPicture.getID() == 2 * CLONE_FILES)
                nFile = open("/dev/null", O_RDONLY | O_CLOEXEC);
        }).join();
        QVERIFY2(fcntl(nFile, F_GETFD) != -1, "the thread has files of its own");
        close(nFile);
    }

    void eachKindHasItsOwnMap()
    {
        ArithmParamMgr cAPM;
        for (const KindOf &cKind : allKinds()) {
            ArithmParam *const pcParam = cKind.get(cAPM, 5);
            pcParam->setName("name");
            QCOMPARE(cKind.get(cAPM, 5), pcParam);
            for (int nID : {INT_MAX, 0, -2, INT_MIN})
                QCOMPARE(cKind.get(cAPM, nID)->getID(), nID);
            QCOMPARE(cKind.ids(cAPM), QList<int>({INT_MIN, -2, 0, 5, INT_MAX}));
            for (int nID : {INT_MAX, 0, -2, INT_MIN, 77})
                cKind.remove(cAPM, nID);
        }
        cAPM.getParamGray8(5)->resize(3, 2);
        cAPM.getParamPoints(5)->addPoint({1, 2});
        size_t nKind = 0;
        for (const ArithmParamMgr::Entry &cEntry : cAPM.snapshot()) {
            QCOMPARE(cEntry.m_eKind, allKinds().at(nKind++).m_eKind);
            QCOMPARE(cEntry.m_nID, 5);
            QCOMPARE(cEntry.m_strName, "name");
            const bool bGray8 = cEntry.m_eKind == ArithmParamMgr::Kind::Gray8;
            QCOMPARE(QSize(cEntry.m_nWidth, cEntry.m_nHeight), bGray8 ? QSize(3, 2) : QSize(0, 0));
            QCOMPARE(cEntry.m_nCount, cEntry.m_eKind == ArithmParamMgr::Kind::Points ? 1 : 0);
        }
        QCOMPARE(nKind, allKinds().size());
        cAPM.clean();
        QVERIFY(cAPM.snapshotPolys(5).isEmpty()); // and creates nothing
        for (const KindOf &cKind : allKinds())
            QVERIFY(cKind.ids(cAPM).isEmpty());
    }

    /// Whatever a task does to its store, a fresh ID is at least 1, unused, and was never handed out.
    void freshIDs()
    {
        for (const KindOf &cKind : allKinds()) {
            for (int nTop : {40, INT_MAX - 1, INT_MAX}) {
                ArithmParamMgr cAPM;
                QSet<int> setTaken{2, nTop};
                for (int i = 0; i < 30; ++i) {
                    if (i % 10 == 0) {
                        cAPM.clean();
                        cKind.get(cAPM, 2);
                        cKind.get(cAPM, nTop);
                    }
                    const int nFresh = cKind.get(cAPM, -1)->getID();
                    QVERIFY(nFresh >= 1 && !setTaken.contains(nFresh));
                    QVERIFY(nTop != 40 || nFresh == 41 + i); // no gaps where none is needed
                    setTaken.insert(nFresh);
                    if (i % 3 == 0)
                        cKind.remove(cAPM, nFresh);
                }
            }
        }
    }

    void lists()
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

    void polygons()
    {
        ParamPolys cPolys;
        cPolys.setPolys({{{{1, 2}, {3, 4}}}, {}});
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
        for (const int nBad : {-1, 2})
            QCOMPARE(cPolys.getPolyVertNum(nBad) + cPolys.addPolyVert(cPoint, nBad), 0);
    }

    void stringsAreBytesOfUtf8()
    {
        const QString strZero = QString::fromLatin1("a\0b", 3);
        const QString strArea = QString("面积 5");
        ParamStrings cStrings;
        cStrings.setStrings({strZero, strArea});
        QCOMPARE(cStrings.getStringLen(1), 8);
        for (const QString &strText : {strZero, strArea}) {
            const QByteArray achText = strText.toUtf8();
            for (int nRoom : {-1, 0, 2, 4, 1000}) { // 4 cuts a character
                const QByteArray achCopied = achText.left(qMax(nRoom, 0));
                QByteArray achBuffer(1000, '~');
                QCOMPARE(cStrings.getString(achBuffer.data(), nRoom, strText == strArea), achCopied.size());
                QCOMPARE(achBuffer, achCopied.leftJustified(1000, '~')); // and no terminator
            }
        }
        char achBuffer[10];
        for (int nBad : {-1, 2, INT_MAX}) {
            QCOMPARE(cStrings.getStringLen(nBad) + cStrings.getString(achBuffer, 10, nBad), 0);
            QCOMPARE(cStrings.setString(strArea, nBad), 0);
        }
        QCOMPARE(cStrings.getString(nullptr, 10, 1), 0);
    }

    void snapshotsWhileATaskWrites()
    {
        ArithmParamMgr cAPM;
        std::atomic_bool bDone{false};
        std::atomic_int nTorn{0};
        std::atomic_int nSeen{0};
        const auto fnWrite = [&] {
            for (int i = 1; i < 5000 || nSeen < 5000; ++i) {
                ParamPoints *pcPoints = cAPM.getParamPoints(1);
                pcPoints->setName(QString::number(i));
                pcPoints->addPoint({i, i});
                cAPM.getParamStrings(1)->setStrings({QString::number(i), QString::number(i)});
                cAPM.getParamPolys(1)->addPoly({{{i, i}}});
                cAPM.getParamPolys(1)->addPolyVert({i, i}, 0);
                if (i % 7 == 0)
                    pcPoints->clearPoints();
                if (i % 20 == 0)
                    cAPM.removeParamPolys(1);
                if (i % 50 == 0)
                    cAPM.clean();
            }
            bDone = true;
        };
        const auto fnLook = [&](const auto &lstPoints) {
            for (const auto &cPoint : lstPoints)
                nTorn += cPoint.x != cPoint.y || cPoint.x == 0;
        };
        const auto fnRead = [&] {
            while (!bDone) {
                fnLook(cAPM.snapshotPoints(1));
                for (const ParamPolys::Poly &cPoly : cAPM.snapshotPolys(1))
                    fnLook(cPoly.verts);
                const QList<QString> lstStrings = cAPM.snapshotStrings(1);
                nTorn += !lstStrings.isEmpty() && (lstStrings.size() != 2 || lstStrings[0] != lstStrings[1]);
                cAPM.snapshot();
                nSeen += !lstStrings.isEmpty();
            }
        };
        together(3, [&](int nThread) { nThread == 0 ? fnWrite() : fnRead(); });
        QCOMPARE(nTorn.load(), 0);
    }

    void resourcesAreCounted()
    {
        constexpr int RESOURCE = 3;
        constexpr int MAX = 3;
        ArithmParamMgr::s_acResource[RESOURCE].setMaxCount(MAX);
        std::atomic_int nHeld{0};
        std::atomic_int nTooMany{0};
        together(8, [&](int) { // a lost wake-up never returns
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
        for (int nBad : {-1, 10, INT_MAX})
            QCOMPARE(ArithmParamMgr::requestResource(nBad) + ArithmParamMgr::releaseResource(nBad), 0);
    }

    void sharedVariables()
    {
        ArithmParamMgr::setInt64(255, LLONG_MAX);
        QCOMPARE(ArithmParamMgr::getInt64(255), LLONG_MAX);
        for (int nBad : {-1, 256, INT_MAX}) {
            ArithmParamMgr::setInt64(nBad, 5);
            QCOMPARE(ArithmParamMgr::getInt64(nBad), 0LL);
        }
    }
};

QTEST_APPLESS_MAIN(TestArithmParamMgr)
#include "tst_arithmparammgr.moc"
