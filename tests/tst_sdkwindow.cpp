// The windows that plug-ins get from their tables of settings, used as a person uses them.

#include <atomic>
#include <thread>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include "arithmparammgr.h"
#include "dialoguser.h"
#include "sdk/description.h"
#include "sdk/settings.h"
#include "sdk/window/pictureview.h"
#include "sdk/window/settingswindow.h"
#include "sdk/window/showsettings.h"

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
constexpr Plugin::Setting SETTINGS[] = {INPUT,   CHOSEN, LEVEL, BLOCK,  SIGMA,  PRINT,  LABEL,
                                        COMMAND, COLOUR, RANGE, REGION, OUTPUT, STRINGS};

// A test can hold the step while it computes.
std::atomic<bool> s_bHeld{false};
std::atomic<int> s_nEntered{0};
std::atomic<int> s_nLeft{0};

/// Sets the grey output to the level; a label "fail" makes it fail.
std::string runStep(const char *szConfig, ArithmParamMgr &cStore)
{
    ++s_nEntered;
    while (s_bHeld)
        std::this_thread::yield();
    ++s_nLeft;
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

template <typename Widget>
Widget &widget(QWidget &cWindow, const char *szName)
{
    return *cWindow.findChild<Widget *>(szName);
}

void press(QWidget &cWindow, const char *szName, Qt::Key eKey, int nTimes = 1)
{
    for (int nTime = 0; nTime < nTimes; ++nTime)
        QTest::keyClick(&widget<QWidget>(cWindow, szName), eKey);
}

void type(QWidget &cWindow, const char *szName, const QString &strText)
{
    QTest::keyClick(&widget<QWidget>(cWindow, szName), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&widget<QWidget>(cWindow, szName), strText);
}

void drag(Plugin::PictureView &cView, const QPoint &cFrom, const QPoint &cTo)
{
    QTest::mousePress(&cView, Qt::LeftButton, Qt::NoModifier, cView.toWidget(cFrom));
    QTest::mouseMove(&cView, cView.toWidget(cTo));
    QTest::mouseRelease(&cView, Qt::LeftButton, Qt::NoModifier, cView.toWidget(cTo));
}

QRgb shown(QWidget &cWindow)
{
    return widget<Plugin::PictureView>(cWindow, "view").picture().pixel(0, 0);
}

int threads()
{
    return QDir("/proc/self/task").entryList(QDir::Dirs).size();
}

constexpr const char *OK = "btnOK";
constexpr const char *CANCEL = "btnCancel";

/// Shows the window modally, as a task does, uses it, and leaves it by a button.
QString show(const QString &strConfig, ArithmParamMgr *pcStore, const char *szButton,
             const DialogUser::Act &fnUse)
{
    QTimer::singleShot(0, qApp, [&] {
        QWidget *const pcWindow = QApplication::activeModalWidget();
        QVERIFY(pcWindow);
        fnUse(*pcWindow);
        DialogUser::click(*pcWindow, szButton);
        if (pcWindow->isVisible()) {
            pcWindow->close();
            QFAIL("The window is still open.");
        }
    });
    return Plugin::showSettings(STEP, strConfig, pcStore);
}

const QString WHOLE = QStringLiteral(
    "<InputID>3</InputID><InputType>Gray8</InputType><Method>Fixed</Method><Level>40</Level><Block>7</Block>"
    "<Sigma>0.125</Sigma><Print>1</Print><Label>24 a &lt; b</Label>"
    "<When>skip:-2</When><Colour>#102030</Colour><Range>170,20,30,10,255,255</Range>"
    "<Region>1,2,3,4</Region><OutputID>9</OutputID><Name>名</Name><StringsID>1</StringsID>"
    "<StringsDescribe>several</StringsDescribe>");
} // namespace

class TstSdkWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_pcStore = std::make_unique<ArithmParamMgr>();
        ParamGray8 &cGray = *m_pcStore->getParamGray8(3);
        cGray.resize(40, 30);
        std::fill_n(cGray.getGray8(), 40 * 30, static_cast<unsigned char>(7));
        ParamDIB &cColour = *m_pcStore->getParamDIB(5);
        cColour.resize(40, 30);
        for (int nPixel = 0; nPixel < 40 * 30; ++nPixel) // red at the left, blue at the right
            std::copy_n(nPixel % 40 < 20 ? "\0\0\xc8" : "\xc8\0\0", 3, cColour.getDIB() + 3 * nPixel);
    }

    void newStepIsFilledByHand()
    {
        store()->getParamGray8(1); // older than the one that is proposed
        const auto fnFill = [](QWidget &cWindow) {
            type(cWindow, "Level", "200");
            QCOMPARE(widget<QSlider>(cWindow, "LevelSlider").value(), 200);
            press(cWindow, "LevelSlider", Qt::Key_Right);
            type(cWindow, "Block", "8"); // even: the next odd number counts
            press(cWindow, "SigmaSlider", Qt::Key_Right);
            press(cWindow, "Print", Qt::Key_Space);
            type(cWindow, "Label", " coins ");
            press(cWindow, "When", Qt::Key_Down, 2);
            type(cWindow, "WhenArgument", "no coin");
            QVERIFY(widget<QSpinBox>(cWindow, "Level").isEnabled());
            press(cWindow, "Method", Qt::Key_Down);
            QVERIFY(!widget<QSpinBox>(cWindow, "Level").isEnabled());
        };
        QCOMPARE(show(QString(), store(), OK, fnFill),
                 QStringLiteral("<InputID>3</InputID><InputType>Gray8</InputType><Method>Other</Method>"
                                "<Level>201</Level><Block>9</Block><Sigma>0.6</Sigma>"
                                "<Print>1</Print><Label>coins</Label><When>stop:no coin</When>"
                                "<Colour>#ff0000</Colour><Range>0,0,0,179,255,255</Range><Region></Region>"
                                "<OutputID>4</OutputID><StringsID>1</StringsID>"));
        QCOMPARE(store()->getParamGray8(4)->getName(), QStringLiteral("结果"));
        QCOMPARE(store()->getParamStrings(1)->getName(), QStringLiteral("数"));
    }

    void missingInputStays()
    {
        const QString strGone = QString(WHOLE).replace("<InputID>3<", "<InputID>77<");
        const auto fnLook = [](QWidget &cWindow) {
            QVERIFY(widget<QComboBox>(cWindow, "InputID").currentText().startsWith("77  (不存在"));
        };
        QCOMPARE(show(strGone, store(), OK, fnLook), strGone);
        QVERIFY(!store()->requestParamGray8Map()->contains(77));
    }

    void otherKindReplacesTheOutput()
    {
        store()->getParamGray8(9);
        const auto fnColour = [](QWidget &cWindow) {
            const bool bFirst = widget<QComboBox>(cWindow, "InputID").currentIndex() == 0;
            press(cWindow, "InputID", bFirst ? Qt::Key_Down : Qt::Key_Up);
        };
        const QString strColour = show(WHOLE, store(), OK, fnColour);
        QVERIFY2(strColour.startsWith("<InputID>5</InputID><InputType>RGB<"), qPrintable(strColour));
        QVERIFY2(strColour.contains("<OutputID>6</OutputID>"), qPrintable(strColour));
        QVERIFY(!store()->requestParamGray8Map()->contains(9));
        QCOMPARE(store()->getParamDIB(6)->getName(), QStringLiteral("名"));

        // A step that works in place leaves its input, which is another's.
        show(QString(WHOLE).replace("<OutputID>9<", "<OutputID>3<"), store(), OK, fnColour);
        QVERIFY(store()->requestParamGray8Map()->contains(3));
    }

    void refusesWhatCannotBeUsed()
    {
        QString strBox;
        const auto fnType = [&](QWidget &cWindow) {
            type(cWindow, "Label", "x</Level>");
            const DialogUser cUser({DialogUser::read(strBox)});
            DialogUser::click(cWindow, OK);
            QVERIFY(cUser.isContent() && cWindow.isVisible());
        };
        QCOMPARE(show(WHOLE, store(), CANCEL, fnType), QString());
        QVERIFY2(strBox.startsWith("警告 Warning: "), qPrintable(strBox));
        QCOMPARE(store()->snapshot().size(), 2);
    }

    void picksInThePicture()
    {
        const auto fnPick = [](QWidget &cWindow) {
            auto &cView = widget<Plugin::PictureView>(cWindow, "view");
            DialogUser::click(cWindow, "RegionPick");
            QVERIFY(cView.isPicking());
            drag(cView, {30, 20}, {21, 5});
            QVERIFY(!cView.isPicking());
            DialogUser::click(cWindow, "ColourPick");
            drag(cView, {2, 2}, {2, 2});
            DialogUser::click(cWindow, "RangePick");
            drag(cView, {-50, 3}, {10, 8}); // from outside the picture
        };
        const QString strColour =
            QString(WHOLE).replace("<InputID>3<", "<InputID>5<").replace("Gray8", "RGB");
        const QString strPicked = show(strColour, store(), OK, fnPick);
        // Red lies where the circle of hues begins and ends.
        for (const char *szWanted : {"<Region>21,5,10,16</Region>", "<Colour>#c80000</Colour>",
                                     "<Range>175,235,180,5,255,220</Range>"})
            QVERIFY2(strPicked.contains(szWanted), qPrintable(strPicked));
    }

    void previewShowsTheNewestSetting()
    {
        const int nThreads = threads();
        const auto fnUse = [](QWidget &cWindow) {
            const QLabel &cResult = widget<QLabel>(cWindow, "lblResult");
            QTRY_COMPARE(shown(cWindow), qRgb(40, 40, 40));
            QVERIFY2(cResult.text().contains("ms\n40 things\nprint:done"), qPrintable(cResult.text()));

            // While one is computed, many settings come and the window answers; all but the last are
            // passed over.
            s_bHeld = true;
            const int nBefore = s_nEntered;
            press(cWindow, "LevelSlider", Qt::Key_Right);
            QTRY_COMPARE(s_nEntered.load(), nBefore + 1);
            press(cWindow, "LevelSlider", Qt::Key_Right, 20);
            QTRY_VERIFY(cResult.text().contains("计算中"));
            s_bHeld = false;
            QTRY_COMPARE(shown(cWindow), qRgb(61, 61, 61));
            QCOMPARE(s_nEntered.load(), nBefore + 2);

            // The input beside the result.
            press(cWindow, "cmbShown", Qt::Key_Down);
            QTRY_COMPARE(shown(cWindow), qRgb(7, 7, 7));
            type(cWindow, "Label", "fail");
            QTRY_VERIFY(cResult.text().contains("The step failed."));
        };
        QCOMPARE(show(WHOLE, store(), CANCEL, fnUse), QString());
        QTRY_VERIFY(threads() <= nThreads);
    }

    void closesWhileThePreviewComputes()
    {
        s_bHeld = true;
        const int nBefore = s_nEntered;
        const int nLeft = s_nLeft;
        int nThreads = 0;
        const auto fnWait = [&](QWidget &) {
            QTRY_COMPARE(s_nEntered.load(), nBefore + 1);
            nThreads = threads();
        };
        QCOMPARE(show(WHOLE, store(), OK, fnWait), WHOLE);
        // The computation has data of its own.
        m_pcStore.reset();
        s_bHeld = false;
        QTRY_COMPARE(s_nLeft.load(), nLeft + 1);
        QTRY_VERIFY(threads() < nThreads);
    }

private:
    ArithmParamMgr *store() { return m_pcStore.get(); }
    std::unique_ptr<ArithmParamMgr> m_pcStore;
};

QTEST_MAIN(TstSdkWindow)
#include "tst_sdkwindow.moc"
