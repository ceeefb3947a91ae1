#include "arithmparammgr.h"

#include "fixtures/together.h"

#include <QSet>
#include <QtTest>

#include <climits>
#include <malloc.h>
#include <thread>

namespace
{
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
        memset(pixels(), 0xA5, nBytes);
    }
    uchar *const puchKept = pixels();
    QCOMPARE(resize({1080, 1919}), QSize(1080, 1919));
    QCOMPARE(pixels(), puchKept);
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

    void keepsParametersByID()
    {
        ArithmParamMgr cAPM;
        ParamPoints *const pcPoints = cAPM.getParamPoints(5);
        QCOMPARE(cAPM.getParamPoints(5), pcPoints);
        for (int nID : {INT_MAX, 0, -2, INT_MIN})
            QCOMPARE(cAPM.getParamPoints(nID)->getID(), nID);
        QCOMPARE(cAPM.requestParamPointsMap()->keys(), QList<int>({INT_MIN, -2, 0, 5, INT_MAX}));
        for (int nID : {INT_MAX, 0, -2, INT_MIN, 77})
            cAPM.removeParamPoints(nID);
        cAPM.clean();
        QVERIFY(cAPM.snapshotPolys(5).isEmpty()); // and creates nothing
        QVERIFY(cAPM.snapshot().isEmpty());
    }

    /// Whatever a task does to its store, a fresh ID is at least 1, unused, and was never handed out.
    void freshIDs()
    {
        for (int nTop : {40, INT_MAX - 1, INT_MAX}) {
            ArithmParamMgr cAPM;
            QSet<int> setTaken{2, nTop};
            for (int i = 0; i < 30; ++i) {
                if (i % 10 == 0) {
                    cAPM.clean();
                    cAPM.getParamLongs(2);
                    cAPM.getParamLongs(nTop);
                }
                const int nFresh = cAPM.getParamLongs(-1)->getID();
                QVERIFY(nFresh >= 1 && !setTaken.contains(nFresh));
                setTaken.insert(nFresh);
                if (i % 3 == 0)
                    cAPM.removeParamLongs(nFresh);
            }
        }
    }

    void lists()
    {
        ParamLongs cLongs; // not a store's
        cLongs.addLong(LONG_MIN);
        cLongs.addLong(5);
        QVERIFY(cLongs.setLong(LONG_MAX, 1) != 0);
        QCOMPARE(cLongs.getLongNum(), 2);
        long nOut = 0;
        for (int nBad : {-1, 2, INT_MAX, INT_MIN})
            QCOMPARE(cLongs.getLong(nOut, nBad) + cLongs.setLong(5, nBad), 0);
        QVERIFY(cLongs.getLong(nOut, 1) != 0);
        QCOMPARE(nOut, LONG_MAX);
        QCOMPARE(cLongs.getLongs(), QList<long>({LONG_MIN, LONG_MAX}));
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
                cAPM.getParamPoints(1)->setName(QString::number(i));
                cAPM.getParamPoints(1)->setPoints({{i, i}, {i, i}});
                cAPM.getParamPoints(1)->addPoint({i, i});
                cAPM.getParamPolys(1)->addPoly({{{i, i}}});
                cAPM.getParamPolys(1)->addPolyVert({i, i}, 0);
                if (i % 20 == 0)
                    cAPM.removeParamPolys(1);
                if (i % 50 == 0)
                    cAPM.clean();
            }
            bDone = true;
        };
        const auto fnRead = [&] {
            while (!bDone) {
                const QList<ParamPoints::Point> lstPoints = cAPM.snapshotPoints(1);
                for (const ParamPoints::Point &c : lstPoints)
                    nTorn += c.x == 0 || c.x != c.y || c.x != lstPoints[0].x || lstPoints.size() < 2;
                for (const ParamPolys::Poly &cPoly : cAPM.snapshotPolys(1))
                    for (const ParamPolys::Point &c : cPoly.verts)
                        nTorn += c.x == 0 || c.x != c.y;
                cAPM.snapshot();
                nSeen += !lstPoints.isEmpty();
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
    }

    void sharedVariables()
    {
        ArithmParamMgr::setInt64(255, LLONG_MAX);
        QCOMPARE(ArithmParamMgr::getInt64(255), LLONG_MAX);
        for (int nBad : {-1, 256, INT_MAX}) {
            ArithmParamMgr::setInt64(nBad, 5);
            QCOMPARE(ArithmParamMgr::getInt64(nBad), 0LL);
            QCOMPARE(ArithmParamMgr::requestResource(nBad) + ArithmParamMgr::releaseResource(nBad), 0);
        }
    }
};

QTEST_APPLESS_MAIN(TestArithmParamMgr)
#include "tst_arithmparammgr.moc"
