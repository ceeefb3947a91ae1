// The windows that plug-ins get from their tables of settings, used as a person uses them.

#include <atomic>
#include <condition_variable>
#include <mutex>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include "arithmparammgr.h"
#include "sdk/description.h"
#include "sdk/settings.h"
#include "sdk/window/pictureview.h"
#include "sdk/window/settingswindow.h"
#include "sdk/window/showsettings.h"
#include "tidy.h"

namespace
{
using Plugin::Kind;

enum class Method { Fixed, Other };
constexpr Plugin::Option METHODS[] = {{"Fixed", {"固定", "Fixed"}}, {"Other", {"其他", "Other"}}};

constexpr Plugin::PictureInput INPUT =
    Plugin::PictureInput("InputID", {"输入图像", "Input"}, Kind::Gray8).orKind(Kind::DIB, "InputType");
constexpr Plugin::Choice<Method> CHOSEN("Method", {"方法", "Method"}, METHODS);
constexpr Plugin::Integer LEVEL = Plugin::Integer("Level", {"阈值", "Level"}, 127)
                                      .range(0, 255)
                                      .when(CHOSEN, Method::Fixed)
                                      .help({"阈值的帮助", "Help for the level"});
constexpr Plugin::Integer BLOCK = Plugin::Integer("Block", {"窗口", "Block"}, 5).range(1, 99).odd();
constexpr auto LARGEST = Plugin::Integer("Largest", {"最大", "Largest"}, 0x7fffffff).unit({"像素", "pixels"});
constexpr Plugin::Real SIGMA("Sigma", {"标准差", "Sigma"}, 0.5, 0, 10);
constexpr Plugin::Flag PRINT("Print", {"打印", "Print"});
constexpr Plugin::Text LABEL("Label", {"标签", "Label"});
constexpr Plugin::Command COMMAND("When", {"动作", "Action"});
constexpr Plugin::Colour COLOUR("Colour", {"颜色", "Colour"}, "#ff0000");
constexpr Plugin::ColourRange RANGE("Range", {"颜色范围", "Range"});
constexpr Plugin::Region REGION("Region", {"区域", "Region"});
constexpr Plugin::PictureOutput OUTPUT("OutputID", {"输出图像", "Output"}, INPUT, "结果", "A result");
constexpr Plugin::ListOutput<Kind::Strings> STRINGS =
    Plugin::ListOutput<Kind::Strings>("StringsID", {"文字", "Texts"}, "数", "A count").prefix("Strings");
constexpr Plugin::Setting SETTINGS[] = {INPUT, CHOSEN,  LEVEL,  BLOCK, LARGEST, SIGMA,  PRINT,
                                        LABEL, COMMAND, COLOUR, RANGE, REGION,  OUTPUT, STRINGS};

/// Lets a test hold the step while it computes.
struct Gate {
    std::mutex m_cMutex;
    std::condition_variable m_cChanged;
    bool m_bShut = false;
    int m_nEntered = 0;
    int m_nLeft = 0;

    void pass()
    {
        std::unique_lock cLock(m_cMutex);
        ++m_nEntered;
        m_cChanged.wait(cLock, [this] { return !m_bShut; });
        ++m_nLeft;
    }
    void shut(bool bShut)
    {
        const std::lock_guard cLock(m_cMutex);
        m_bShut = bShut;
        m_cChanged.notify_all();
    }
    int entered()
    {
        const std::lock_guard cLock(m_cMutex);
        return m_nEntered;
    }
    int left()
    {
        const std::lock_guard cLock(m_cMutex);
        return m_nLeft;
    }
};
Gate s_cGate;

/// Sets the grey output to the level; a label "fail" makes it fail.
std::string runStep(const char *szConfig, ArithmParamMgr &cStore)
{
    s_cGate.pass();
    const Plugin::Settings cSettings(szConfig);
    if (cSettings[LABEL] == "fail")
        throw Plugin::Error("The step failed.");
    const int nLevel = cSettings[LEVEL];
    if (cSettings.kind(INPUT) == Kind::Gray8) {
        const ParamGray8 &cInput = *cStore.getParamGray8(cSettings.id(INPUT));
        ParamGray8 &cOutput = *cStore.getParamGray8(cSettings.id(OUTPUT));
        cOutput.resize(cInput.getWidth(), cInput.getHeight());
        std::fill_n(cOutput.getGray8(), cInput.getWidth() * cInput.getHeight(),
                    static_cast<unsigned char>(nLevel));
    }
    cStore.getParamStrings(cSettings.id(STRINGS))->setStrings({QString::number(nLevel) + " things"});
    return "<CMD>print:done</CMD>";
}

constexpr Plugin::PluginDescription STEP{{"OCX_Test", "检测", "测试", {"测试步骤", "A step to test with"}},
                                         SETTINGS,
                                         std::size(SETTINGS),
                                         runStep};

constexpr Plugin::Setting SOURCE_SETTINGS[] = {Plugin::Directory("Path", {"目录", "Folder"}),
                                               Plugin::Real("Fps", {"帧率", "Rate"}, 0, 0, 100)};
constexpr Plugin::PluginDescription SOURCE{
    {"Test Source", "", "Test Source", {"", ""}}, SOURCE_SETTINGS, std::size(SOURCE_SETTINGS), nullptr};

template <typename Widget>
Widget *widget(QWidget *pcWindow, const char *szName)
{
    auto *pcWidget = pcWindow->findChild<Widget *>(szName);
    if (!pcWidget)
        qFatal("There is no %s.", szName);
    return pcWidget;
}

void click(QWidget *pcWindow, const char *szButton)
{
    QTest::mouseClick(widget<QAbstractButton>(pcWindow, szButton), Qt::LeftButton);
}

void type(QWidget *pcWindow, const char *szName, const QString &strText)
{
    QWidget *const pcWidget = widget<QWidget>(pcWindow, szName);
    QTest::keyClick(pcWidget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(pcWidget, strText);
}

void drag(Plugin::PictureView *pcView, const QPoint &cFrom, const QPoint &cTo)
{
    QTest::mousePress(pcView, Qt::LeftButton, Qt::NoModifier, pcView->toWidget(cFrom));
    QTest::mouseMove(pcView, pcView->toWidget(cTo));
    QTest::mouseRelease(pcView, Qt::LeftButton, Qt::NoModifier, pcView->toWidget(cTo));
}

/// Shows the window modally, as a task does, and lets fnUse work in it.
template <typename Use>
QString show(const Plugin::PluginDescription &cPlugin, const QString &strConfig, ArithmParamMgr *pcStore,
             Use fnUse)
{
    QTimer::singleShot(0, qApp, [=] {
        auto *pcWindow = qobject_cast<Plugin::SettingsWindow *>(QApplication::activeModalWidget());
        QVERIFY(pcWindow);
        fnUse(pcWindow);
        if (pcWindow->isVisible()) {
            pcWindow->reject();
            QFAIL("The window is still open.");
        }
    });
    return Plugin::showSettings(cPlugin, strConfig, pcStore);
}

/// Nothing is cut off or overlaps, and the font has every character.
const QString WHOLE = QStringLiteral(
    "<InputID>3</InputID><InputType>Gray8</InputType><Method>Fixed</Method><Level>40</Level><Block>7</Block>"
    "<Largest>2147483647</Largest><Sigma>0.125</Sigma><Print>1</Print><Label>24 a &lt; b</Label>"
    "<When>skip:-2</When><Colour>#102030</Colour><Range>170,20,30,10,255,255</Range>"
    "<Region>1,2,3,4</Region><OutputID>9</OutputID><Name>名</Name><StringsID>1</StringsID>"
    "<StringsDescribe>several</StringsDescribe>");
} // namespace

class TstSdkWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void editsGiveBackWhatTheyGot();
    void newStepIsFilledByHand();
    void cancelLeavesTheStoreAlone();
    void missingInputStays();
    void otherKindReplacesTheOutput();
    void refusesWhatCannotBeUsed_data();
    void refusesWhatCannotBeUsed();
    void picksInThePicture();
    void previewShowsTheNewestSetting();
    void previewTellsFailures();
    void closesWhileThePreviewComputes();
    void sourceWindow();
    void keysGoDownTheWindow();
    void limitHasNoUnit();

private:
    ArithmParamMgr *store() { return m_pcStore.get(); }
    std::unique_ptr<ArithmParamMgr> m_pcStore;
};

void TstSdkWindow::init()
{
    m_pcStore = std::make_unique<ArithmParamMgr>();
    ParamGray8 &cGray = *m_pcStore->getParamGray8(3);
    cGray.setName("灰度图");
    cGray.setDescribe("Grey picture");
    cGray.resize(40, 30);
    std::fill_n(cGray.getGray8(), 40 * 30, static_cast<unsigned char>(7));
    ParamDIB &cColour = *m_pcStore->getParamDIB(5);
    cColour.resize(40, 30);
    for (int nPixel = 0; nPixel < 40 * 30; ++nPixel) {
        unsigned char *const puchPixel = cColour.getDIB() + 3 * nPixel;
        puchPixel[0] = nPixel % 40 < 20 ? 0 : 200; // blue at the right,
        puchPixel[1] = 0;
        puchPixel[2] = nPixel % 40 < 20 ? 200 : 0; // red at the left
    }
}

void TstSdkWindow::editsGiveBackWhatTheyGot()
{
    const auto fnOK = [](QDialog *pcWindow) { click(pcWindow, "btnOK"); };
    QCOMPARE(show(STEP, WHOLE, store(), fnOK), WHOLE);
    // The outputs exist and are named before the first run, under the IDs that they had.
    QCOMPARE(store()->requestParamGray8Map()->keys(), (QList<int>{3, 9}));
    QCOMPARE(store()->getParamGray8(9)->getName(), QStringLiteral("名"));
    QCOMPARE(store()->getParamGray8(9)->getDescribe(), QStringLiteral("A result"));
    QCOMPARE(store()->getParamStrings(1)->getDescribe(), QStringLiteral("several"));
}

void TstSdkWindow::newStepIsFilledByHand()
{
    const QString strConfig = show(STEP, QString(), store(), [](QDialog *pcWindow) {
        QCOMPARE(widget<QComboBox>(pcWindow, "InputID")->currentText(),
                 QStringLiteral("3  Gray8  灰度图  Grey picture"));
        type(pcWindow, "Level", "200");
        QCOMPARE(widget<QSlider>(pcWindow, "LevelSlider")->value(), 200);
        QTest::keyClick(widget<QSlider>(pcWindow, "LevelSlider"), Qt::Key_Right);
        type(pcWindow, "Block", "8"); // even: the next odd number counts
        QTest::keyClick(widget<QSlider>(pcWindow, "SigmaSlider"), Qt::Key_Right);
        type(pcWindow, "Largest", "1000");
        QTest::keyClick(widget<QWidget>(pcWindow, "Print"), Qt::Key_Space);
        type(pcWindow, "Label", " coins ");
        QTest::keyClick(widget<QWidget>(pcWindow, "When"), Qt::Key_Down);
        QTest::keyClick(widget<QWidget>(pcWindow, "When"), Qt::Key_Down);
        type(pcWindow, "WhenArgument", "no coin");
        QVERIFY(widget<QSpinBox>(pcWindow, "Level")->isEnabled());
        QTest::keyClick(widget<QWidget>(pcWindow, "Method"), Qt::Key_Down);
        QVERIFY(!widget<QSpinBox>(pcWindow, "Level")->isEnabled());
        QTest::keyClick(widget<QWidget>(pcWindow, "btnOK"), Qt::Key_Return);
    });
    QCOMPARE(strConfig,
             QStringLiteral("<InputID>3</InputID><InputType>Gray8</InputType><Method>Other</Method>"
                            "<Level>201</Level><Block>9</Block><Largest>1000</Largest><Sigma>0.6</Sigma>"
                            "<Print>1</Print><Label>coins</Label><When>stop:no coin</When>"
                            "<Colour>#ff0000</Colour><Range>0,0,0,179,255,255</Range><Region></Region>"
                            "<OutputID>4</OutputID><StringsID>1</StringsID>"));
    QCOMPARE(store()->getParamGray8(4)->getName(), QStringLiteral("结果"));
    QCOMPARE(store()->getParamStrings(1)->getName(), QStringLiteral("数"));
}

void TstSdkWindow::cancelLeavesTheStoreAlone()
{
    for (const bool bKey : {false, true}) {
        const QString strConfig = show(STEP, QString(), store(), [=](QDialog *pcWindow) {
            type(pcWindow, "Level", "9");
            QTRY_COMPARE(widget<Plugin::PictureView>(pcWindow, "view")->picture().pixel(0, 0), qRgb(9, 9, 9));
            if (bKey)
                QTest::keyClick(pcWindow, Qt::Key_Escape);
            else
                click(pcWindow, "btnCancel");
        });
        QVERIFY(strConfig.isEmpty());
        QCOMPARE(store()->snapshot().size(), 2);
        QCOMPARE(int(*store()->getParamGray8(3)->getGray8()), 7);
    }
}

void TstSdkWindow::missingInputStays()
{
    QString strGone = WHOLE;
    strGone.replace("<InputID>3<", "<InputID>77<");
    const auto fnOK = [](QDialog *pcWindow) {
        QVERIFY(widget<QComboBox>(pcWindow, "InputID")->currentText().startsWith("77  (不存在"));
        click(pcWindow, "btnOK");
    };
    QCOMPARE(show(STEP, strGone, store(), fnOK), strGone);
    QVERIFY(!store()->requestParamGray8Map()->contains(77));
}

void TstSdkWindow::otherKindReplacesTheOutput()
{
    store()->getParamGray8(9);
    const auto fnColour = [](QDialog *pcWindow) {
        QComboBox *const pcInput = widget<QComboBox>(pcWindow, "InputID");
        QTest::keyClick(pcInput, pcInput->currentIndex() == 0 ? Qt::Key_Down : Qt::Key_Up);
        click(pcWindow, "btnOK");
    };
    const QString strColour = show(STEP, WHOLE, store(), fnColour);
    QVERIFY2(strColour.startsWith("<InputID>5</InputID><InputType>RGB</InputType>"), qPrintable(strColour));
    QVERIFY2(strColour.contains("<OutputID>6</OutputID>"), qPrintable(strColour));
    QVERIFY(!store()->requestParamGray8Map()->contains(9));
    QCOMPARE(store()->getParamDIB(6)->getName(), QStringLiteral("名"));

    // A step that works in place leaves its input, which is another's.
    QString strInPlace = WHOLE;
    strInPlace.replace("<OutputID>9<", "<OutputID>3<");
    show(STEP, strInPlace, store(), fnColour);
    QVERIFY(store()->requestParamGray8Map()->contains(3));
}

void TstSdkWindow::refusesWhatCannotBeUsed_data()
{
    QTest::addColumn<QString>("strConfig");
    QTest::addColumn<QByteArray>("achWidget");
    QTest::addColumn<QString>("strTyped");
    QTest::newRow("tasks-file marker") << WHOLE << QByteArray("Label") << "<-TaskItem->";
    QTest::newRow("end tag") << WHOLE << QByteArray("Label") << "x</Level>";
    QTest::newRow("tag in a command") << WHOLE << QByteArray("WhenArgument") << "<CMD>";
    QTest::newRow("tag in a name") << WHOLE << QByteArray("Name") << "<Name>";
    QTest::newRow("skip by a word") << WHOLE << QByteArray("WhenArgument") << "many";
    QTest::newRow("no colour") << WHOLE << QByteArray("Colour") << "red";
}

void TstSdkWindow::refusesWhatCannotBeUsed()
{
    QFETCH(QString, strConfig);
    QFETCH(QByteArray, achWidget);
    QFETCH(QString, strTyped);
    show(STEP, strConfig, store(), [&](QDialog *pcWindow) {
        type(pcWindow, achWidget, strTyped);
        QString strTitle;
        QTimer::singleShot(0, pcWindow, [&] {
            auto *pcBox = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(pcBox);
            strTitle = pcBox->windowTitle();
            pcBox->accept();
        });
        click(pcWindow, "btnOK");
        QCOMPARE(strTitle, QStringLiteral("警告"));
        QVERIFY(pcWindow->isVisible());
        click(pcWindow, "btnCancel");
    });
    QCOMPARE(store()->snapshot().size(), 2);
}

void TstSdkWindow::picksInThePicture()
{
    QString strColour = WHOLE;
    strColour.replace("<InputID>3<", "<InputID>5<").replace("Gray8", "RGB");
    const QString strPicked = show(STEP, strColour, store(), [](QDialog *pcWindow) {
        auto *const pcView = widget<Plugin::PictureView>(pcWindow, "view");
        click(pcWindow, "RegionPick");
        QVERIFY(pcView->isPicking());
        drag(pcView, {30, 20}, {21, 5});
        QVERIFY(!pcView->isPicking());
        click(pcWindow, "ColourPick");
        drag(pcView, {2, 2}, {2, 2});
        click(pcWindow, "RangePick");
        click(pcWindow, "ColourPick"); // picks for one setting at a time
        click(pcWindow, "RangePick");
        drag(pcView, {-50, 3}, {10, 8}); // from outside the picture
        click(pcWindow, "btnOK");
    });
    QVERIFY2(strPicked.contains("<Region>21,5,10,16</Region>"), qPrintable(strPicked));
    QVERIFY2(strPicked.contains("<Colour>#c80000</Colour>"), qPrintable(strPicked));
    // Red lies where the circle of hues begins and ends.
    QVERIFY2(strPicked.contains("<Range>175,235,180,5,255,220</Range>"), qPrintable(strPicked));
}

void TstSdkWindow::previewShowsTheNewestSetting()
{
    show(STEP, WHOLE, store(), [](QDialog *pcWindow) {
        auto *const pcView = widget<Plugin::PictureView>(pcWindow, "view");
        QLabel *const pcResult = widget<QLabel>(pcWindow, "lblResult");
        QTRY_COMPARE(pcView->picture().pixel(0, 0), qRgb(40, 40, 40));
        QVERIFY2(pcResult->text().contains("ms\n40 things\nprint:done"), qPrintable(pcResult->text()));

        // While one is computed, many settings come and the window answers; all but the last are
        // passed over.
        s_cGate.shut(true);
        const int nBefore = s_cGate.entered();
        QSlider *const pcSlider = widget<QSlider>(pcWindow, "LevelSlider");
        QTest::keyClick(pcSlider, Qt::Key_Right);
        QTRY_COMPARE(s_cGate.entered(), nBefore + 1);
        for (int nStep = 0; nStep < 20; ++nStep)
            QTest::keyClick(pcSlider, Qt::Key_Right);
        QTRY_VERIFY(pcResult->text().contains("计算中"));
        s_cGate.shut(false);
        QTRY_COMPARE(pcView->picture().pixel(0, 0), qRgb(61, 61, 61));
        QCOMPARE(s_cGate.entered(), nBefore + 2);

        // The input beside the result.
        QTest::keyClick(widget<QComboBox>(pcWindow, "cmbShown"), Qt::Key_Down);
        QTRY_COMPARE(pcView->picture().pixel(0, 0), qRgb(7, 7, 7));
        click(pcWindow, "btnCancel");
    });
}

void TstSdkWindow::previewTellsFailures()
{
    show(STEP, WHOLE, store(), [](QDialog *pcWindow) {
        QLabel *const pcResult = widget<QLabel>(pcWindow, "lblResult");
        type(pcWindow, "Label", "fail");
        QTRY_VERIFY(pcResult->text().contains("The step failed."));
        type(pcWindow, "Label", "<x>"); // is told before it is computed
        QTRY_VERIFY(pcResult->text().contains("holds a tag"));
        type(pcWindow, "Label", "fine");
        QTRY_VERIFY(pcResult->text().contains("done"));
        click(pcWindow, "btnCancel");
    });
}

void TstSdkWindow::closesWhileThePreviewComputes()
{
    s_cGate.shut(true);
    const int nBefore = s_cGate.entered();
    const int nLeft = s_cGate.left();
    const auto fnThreads = [] { return QDir("/proc/self/task").entryList(QDir::Dirs).size(); };
    int nThreads = 0;
    const QString strConfig = show(STEP, WHOLE, store(), [&, nBefore](QDialog *pcWindow) {
        QTRY_COMPARE(s_cGate.entered(), nBefore + 1);
        nThreads = fnThreads();
        click(pcWindow, "btnOK");
    });
    QCOMPARE(strConfig, WHOLE);
    // The computation has data of its own.
    m_pcStore.reset();
    s_cGate.shut(false);
    QTRY_COMPARE(s_cGate.left(), nLeft + 1);
    QTRY_VERIFY(fnThreads() < nThreads);
}

void TstSdkWindow::sourceWindow()
{
    QCOMPARE(show(SOURCE, QString(), nullptr,
                  [](QDialog *pcWindow) {
                      QVERIFY(!pcWindow->findChild<QWidget *>("view"));
                      type(pcWindow, "Path", "/some/folder");
                      type(pcWindow, "Fps", "2.5");
                      click(pcWindow, "btnOK");
                  }),
             QStringLiteral("<Path>/some/folder</Path><Fps>2.5</Fps>"));
    QVERIFY(show(SOURCE, "<Path>a</Path>", nullptr, [](QDialog *pcWindow) {
                click(pcWindow, "btnCancel");
            }).isNull());
}

void TstSdkWindow::keysGoDownTheWindow()
{
    show(STEP, WHOLE, store(), [](QDialog *pcWindow) {
        const QWidget *const pcFirst = widget<QWidget>(pcWindow, "InputID");
        int nLast = 0;
        for (const char *szName : {"Method", "LevelSlider", "Label", "Region", "Name", "btnOK"}) {
            const QWidget *const pcWidget = widget<QWidget>(pcWindow, szName);
            int nTabs = 0;
            for (const QWidget *pcNext = pcFirst; pcNext != pcWidget; pcNext = pcNext->nextInFocusChain())
                QVERIFY(++nTabs < 300);
            QVERIFY2(nTabs > nLast, szName);
            nLast = nTabs;
        }
        widget<QWidget>(pcWindow, "Level")->setFocus();
        QTRY_VERIFY(widget<QLabel>(pcWindow, "lblHelp")->text().contains("Help for the level"));
        QCOMPARE(Tidy::fault(pcWindow), QString());
        click(pcWindow, "btnCancel");
    });
}

void TstSdkWindow::limitHasNoUnit()
{
    const QString strConfig = show(STEP, {}, store(), [](QDialog *pcWindow) {
        auto *pcBox = widget<QSpinBox>(pcWindow, "Largest");
        QCOMPARE(pcBox->text(), QStringLiteral("不限 no limit"));
        pcBox->setFocus();
        pcBox->selectAll();
        QTest::keyClicks(pcBox, "57");
        QCOMPARE(pcBox->text(), QStringLiteral("57 像素 pixels"));
        click(pcWindow, "btnOK");
    });
    QVERIFY2(strConfig.contains("<Largest>57</Largest>"), qPrintable(strConfig));
}

QTEST_MAIN(TstSdkWindow)
#include "tst_sdkwindow.moc"
