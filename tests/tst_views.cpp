#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <QImage>

#include "Drawing/drawingregistry.h"
#include "OculinexQTStandAlone.h"
#include "OculinexQTStandAloneInQt.h"
#include "arithmparammgr.h"
#include "globalfunction.h"
#include "taskMgr/taskMgr.h"
#include "viewhold.h"

namespace
{
constexpr int WIDTH = 7;
constexpr int HEIGHT = 2;
constexpr size_t USED_BYTES = size_t{3} * WIDTH;
constexpr size_t ROW_BYTES = 24; // with 3 of padding
constexpr size_t BYTES = ROW_BYTES * HEIGHT;
using Buffer = std::vector<unsigned char>;

GlobalFunction &views()
{
    return *GlobalFunction::getInstance();
}

/// Runs a drawing step that queues parameter 1, by default the points.
void drawStep(int nView, ArithmParamMgr *pcAPM, int nType = 3, const char *szConfig = "<Color>255</Color>")
{
    QByteArray achConfig = "<View>" + QByteArray::number(nView) + "</View><DataType>" +
                           QByteArray::number(nType) + "</DataType><DataID>1</DataID><Config>" + szConfig +
                           "</Config>";
    QCOMPARE(Drawing::execute(achConfig.data(), pcAPM), "");
}

int read(int nView, Buffer &achBuffer)
{
    achBuffer.assign(BYTES, 0xAB);
    return getDrawingWindow(nView, achBuffer.data(), WIDTH, HEIGHT);
}

bool isUntouched(const Buffer &achBuffer)
{
    return achBuffer == Buffer(achBuffer.size(), 0xAB);
}

/// Tells that it is destroyed.
class Probe : public Drawing::PointsDrawingOpt
{
public:
    explicit Probe(int nID) : PointsDrawingOpt(nID) {}
    ~Probe() override { s_lstDestroyed.append(m_nDataID); }

    inline static QVector<int> s_lstDestroyed;
};
} // namespace

/// The views as a host and the tasks use them: queues, exports, life and death of stores, threads.
class TestViews : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        for (int nView = 0; nView < GlobalFunction::VIEW_NUM; ++nView) {
            views().removeView(nView);
            Drawing::resetViewScaleOpt(nView);
        }
        Probe::s_lstDestroyed.clear();
    }

    void checksArguments()
    {
        ArithmParamMgr cStore;
        cStore.getParamPoints(1)->addPoint({0, 0});
        Buffer achBuffer;
        for (const int nView : {-1, 4}) {
            useDrawingWindow(nView, 4, 4);
            QVERIFY(!ViewHold(nView));
            QCOMPARE(read(nView, achBuffer), -1);
        }
        useDrawingWindow(0, 0, 4);
        QVERIFY(!ViewHold(0));
        useDrawingWindow(0, 4, 4);
        drawStep(0, &cStore);
        for (const QSize &c : {QSize(10001, 1), QSize(1, 10001), QSize(0, 1), QSize(1, -5)})
            QCOMPARE(getDrawingWindow(0, achBuffer.data(), c.width(), c.height()), -1);
        QVERIFY(isUntouched(achBuffer));
        QCOMPARE(getDrawingWindow(0, nullptr, 10000, 10000), 0); // no buffer: used up all the same

        // View 3 can be filled, but not read.
        useDrawingWindow(3, 4, 4);
        drawStep(3, &cStore);
        QCOMPARE(read(3, achBuffer), -1);
        QVERIFY(isUntouched(achBuffer));
        QVERIFY(ViewHold(3)->haveDrawingOpt());
    }

    void readsOneObjectACall()
    {
        ArithmParamMgr cStore;
        useDrawingWindow(1, 4, 4);
        // The picture, then the points; the list is read when it is drawn.
        ParamDIB *pcDIB = cStore.getParamDIB(1);
        pcDIB->resize(WIDTH, HEIGHT);
        memset(pcDIB->getDIB(), 0x10, BYTES);
        pcDIB->getDIB()[0] = 0x20; // blue
        drawStep(1, &cStore, 0, "");
        memset(pcDIB->getDIB(), 0x77, BYTES);
        drawStep(1, &cStore);
        drawStep(1, &cStore);
        cStore.getParamPoints(1)->addPoint({WIDTH - 1, HEIGHT - 1});

        Buffer achExpected(BYTES, 0);
        for (size_t y = 0; y < HEIGHT; ++y)
            std::fill_n(&achExpected[ROW_BYTES * y], USED_BYTES, 0x10);
        achExpected[2] = 0x20;
        Buffer achBuffer;
        QCOMPARE(read(1, achBuffer), 1);
        QCOMPARE(achBuffer, achExpected);
        QCOMPARE(getDrawingWindow(1, achBuffer.data(), WIDTH, HEIGHT), 1);
        constexpr size_t LAST_PIXEL = ROW_BYTES + USED_BYTES - 3;
        std::fill_n(&achExpected[LAST_PIXEL], 2, 0);
        achExpected[LAST_PIXEL + 2] = 0xFF;
        QCOMPARE(achBuffer, achExpected);
        QCOMPARE(read(1, achBuffer), 0);
        QCOMPARE(read(1, achBuffer), -1);
        QVERIFY(isUntouched(achBuffer));
    }

    void fullQueueDropsTheOldest()
    {
        useDrawingWindow(2, 4, 4);
        {
            const ViewHold cView(2);
            cView->pushDrawingOpt(nullptr);
            for (int i = 1; i <= 12; ++i)
                cView->pushDrawingOpt(new Probe(i));
            QCOMPARE(Probe::s_lstDestroyed, QVector<int>({1, 2}));
            for (int i = 3; i <= 11; ++i) {
                QVERIFY(cView->haveDrawingOpt());
                QCOMPARE(std::unique_ptr<Drawing::DrawingOpt>(cView->popDrawingOpt())->getDataID(), i);
            }
        }
        Buffer achBuffer;
        QCOMPARE(read(2, achBuffer), 0);
        QCOMPARE(Probe::s_lstDestroyed.last(), 12); // by the library, once drawn
        QVERIFY(!ViewHold(2)->popDrawingOpt());
    }

    void viewsComeAndGo()
    {
        views().resizeViewCanvas(5, 3, 4);
        views().resizeViewCanvas(6, 3, 4);
        GlobalFunction::ViewDrawOption *pcHeld = views().requestViewDrawOption(5);
        QVERIFY(pcHeld);
        QCOMPARE(pcHeld->m_nViewWidth, 3);
        pcHeld->pushDrawingOpt(new Probe(1));
        // A waiter finds the view gone; the holder still has a canvas that can be used.
        std::thread cWaiter([] { QVERIFY(!ViewHold(5)); });
        views().removeView(5);
        QVERIFY(!views().requestViewDrawOption(5));
        pcHeld->pushDrawingOpt(new Probe(2));
        views().releaseViewDrawOption(5, pcHeld);
        cWaiter.join();
        views().addView(5, 1, 2);
        const ViewHold cView(5);
        QVERIFY(!cView->haveDrawingOpt());
        QCOMPARE(cView->m_nViewHeight, 2);

        QCOMPARE(Probe::s_lstDestroyed, QVector<int>({1, 2}));
    }

    void storeDiesBeforeItsDrawings()
    {
        useDrawingWindow(0, 4, 4);
        TaskInfo cLiving(QStringLiteral("living"), nullptr);
        cLiving.m_pcAPM->getParamPoints(1)->addPoint({1, 1});
        auto pcDying = std::make_unique<TaskInfo>(QStringLiteral("dying"), nullptr);
        pcDying->m_pcAPM->getParamPoints(1)->addPoint({0, 0});
        ParamGray8 *pcGrey = pcDying->m_pcAPM->getParamGray8(1);
        pcGrey->resize(1, 1);
        drawStep(0, pcDying->m_pcAPM);                    // taken out, not yet drawn
        drawStep(0, pcDying->m_pcAPM);                    // still queued
        drawStep(0, pcDying->m_pcAPM, 1, "<Pos>1</Pos>"); // owns its pixels
        drawStep(0, cLiving.m_pcAPM);
        std::unique_ptr<Drawing::DrawingOpt> pcTaken;
        {
            const ViewHold cView(0); // a held view, as while it is saved, stops no task from dying
            pcTaken.reset(cView->popDrawingOpt());
            pcDying.reset();
        }

        QImage cTarget(4, 4, QImage::Format_RGB888);
        cTarget.fill(Qt::white);
        const QImage cBefore = cTarget;
        pcTaken->draw(&cTarget, pcTaken->m_pcAPM);
        QCOMPARE(cTarget, cBefore);
        Buffer achBuffer;
        QCOMPARE(read(0, achBuffer), 1);
        QVERIFY(isUntouched(achBuffer));
        QCOMPARE(read(0, achBuffer), 1);
        QCOMPARE(achBuffer, Buffer(BYTES, 0)); // cleared by the grey picture
        QCOMPARE(read(0, achBuffer), 0);
        QCOMPARE(int{achBuffer[ROW_BYTES + 3 + 2]}, 255); // the living task's point
    }

    void dyingStoreWaitsForAReader()
    {
        ArithmParamMgr cStore;
        ArithmParamMgr cOther;
        Drawing::PointsDrawingOpt cQueued(1);
        cQueued.m_pcAPM = &cStore;
        DrawingRegistry::add(&cQueued);
        auto pcReading = std::make_unique<DrawingRegistry::Permit>(&cQueued, &cStore);
        QVERIFY(*pcReading);
        DrawingRegistry::disarm(&cOther); // waits for nobody
        std::atomic<bool> bDisarmed{false};
        std::thread cDying([&] {
            DrawingRegistry::disarm(&cStore);
            bDisarmed = true;
        });
        QTRY_VERIFY(!DrawingRegistry::Permit(&cQueued, &cStore));
        QVERIFY(!QTest::qWaitFor([&bDisarmed] { return bDisarmed.load(); }, 50));
        pcReading.reset();
        cDying.join();
        QVERIFY(DrawingRegistry::Permit(&cQueued, &cOther)); // a caller's own business
        DrawingRegistry::remove(&cQueued);
    }
};

QTEST_GUILESS_MAIN(TestViews)
#include "tst_views.moc"
