#include <QtTest>

#include "arithmparammgr.h"
#include "sdk/algorithm.h"
#include "sdk/datasource.h"

namespace
{
/// An algorithm as an author writes one.
class Probe
{
public:
    static constexpr Plugin::About ABOUT{"T_Probe", "Test", "Probe", {}};
    static constexpr auto INPUT =
        Plugin::PictureInput("InputID", {}, Plugin::Kind::Gray8).orKind(Plugin::Kind::DIB, "InputType");
    static constexpr Plugin::PictureOutput OUTPUT{"OutputID", {}, INPUT, "输出", "Output"};
    static constexpr auto POINTS =
        Plugin::ListOutput<Plugin::Kind::Points>("PointsID", {}, "点", "Points").prefix("Points");
    static constexpr auto LEVEL = Plugin::Integer("Level", {}, 5).range(-3, 255);
    static constexpr Plugin::Flag PRINT{"Print", {}};
    static constexpr Plugin::Text LABEL{"Label", {}, "things"};
    static constexpr Plugin::Command COMMAND{"Command", {}};
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, POINTS, LEVEL, PRINT, LABEL, COMMAND};

    std::string execute(const Plugin::Step &cStep)
    {
        const Plugin::Picture cInput = cStep[INPUT];
        const Plugin::Picture cOutput = cStep.resized(OUTPUT, cInput.m_nWidth, cInput.m_nHeight);
        const int nLevel = cStep[LEVEL];
        for (size_t n = 0; n < cInput.m_nRowLength * static_cast<size_t>(cInput.m_nHeight); ++n)
            cOutput.m_puchPixels[n] = static_cast<unsigned char>(cInput.m_puchPixels[n] + nLevel);
        cStep.write(POINTS, {{cInput.m_nWidth, cInput.m_nHeight}});
        if (cStep[PRINT])
            throw 7;
        return cStep[COMMAND] + Plugin::printed(cStep[LABEL]);
    }
};

/// Delivers rows that are longer than their pixels.
class ProbeSource : public Plugin::Source
{
public:
    static constexpr Plugin::About ABOUT{"Probe", "", "Probe", {}};
    static constexpr auto WIDTH = Plugin::Integer("Width", {}, 3).range(1, 100);
    static constexpr Plugin::Setting SETTINGS[] = {WIDTH};

protected:
    void configure(const Plugin::Settings &cSettings) override { m_nWidth = cSettings[WIDTH]; }
    Plugin::Picture request(Plugin::Kind eKind) override
    {
        if (m_nWidth == 99)
            throw Plugin::Error("The camera is gone.");
        if (m_nWidth == 98)
            return {};
        for (size_t n = 0; n < sizeof m_achPixels; ++n)
            m_achPixels[n] = static_cast<unsigned char>(n);
        return {m_achPixels, m_nWidth, 2, 400, eKind};
    }

private:
    int m_nWidth = 0;
    unsigned char m_achPixels[800];
};

/// Whether a table with that tag can't be built.
constexpr bool isReserved(const char *szTag, bool bSource)
{
    const Plugin::Setting acSetting[] = {Plugin::Integer("Size", {}, 1), Plugin::Integer(szTag, {}, 1)};
    return Plugin::usesReservedTag(acSetting, 2, bSource);
}
static_assert(isReserved("outputname", false) && isReserved("OutputID", true) &&
              !isReserved("OutputID", false));

constexpr auto &isText = Plugin::hasProperText;
static_assert(isText(Plugin::Text("T", {}, "a<b")) && !isText(Plugin::Text("T", {}, "a<b>")) &&
              !isText(Plugin::Command("C", {}, "jump:3")) && !isText(Plugin::Colour("C", {}, "#ff80ag")) &&
              !isText(Plugin::ColourRange("C", {}, "180,0,0,10,255,255")) &&
              !isText(Plugin::Region("R", {}, "1,2,0,4")));

const QByteArray IDS = "<InputID>1</InputID><OutputID>2</OutputID><PointsID>3</PointsID>";
} // namespace

OCULINEX_ALGORITHM(Probe)
OCULINEX_DATA_SOURCE(ProbeSource)

class TestSdk : public QObject
{
    Q_OBJECT

private slots:
    /// What is taken comes back, whatever stands around it; what would frame other texts is refused.
    void framesTexts()
    {
        for (const char *szText : {"a < b > c", "<-5", "< Name>", "ERR:", "中文<", "<>", "a</b"}) {
            QCOMPARE(Plugin::whyRefused(Probe::LABEL, szText), std::string());
            std::string strConfig = "<Other>1</Other>";
            Plugin::appendValue(strConfig, "Label", szText);
            Plugin::appendValue(strConfig, "After", "</");
            QCOMPARE(Plugin::toQString(Plugin::Settings(strConfig)[Probe::LABEL]), QString(szText));
        }
        for (const char *szText : {"<b>", "x</Label>", "<-TaskName->", "</=TaskInfo=>", "<<CMD>"})
            QVERIFY(!Plugin::whyRefused(Probe::LABEL, szText).empty());
        for (const char *szText : {"skip:x", "skip:2147483648", "stop", "jump:1", "print:<CMD>"})
            QVERIFY(!Plugin::whyRefused(Probe::COMMAND, szText).empty());
    }

    void runsSteps()
    {
        ArithmParamMgr cStore;
        cStore.getParamDIB(1)->resize(3, 2);
        memset(cStore.getParamDIB(1)->getDIB(), 10, 24);
        const QByteArray strConfig =
            IDS + "<InputType>RGB</InputType><PointsName>Ecken</PointsName><Describe>d</Describe>";
        QCOMPARE(runProbe(cStore, strConfig), QString("<CMD>print:things</CMD>"));
        QCOMPARE(cStore.getParamDIB(2)->getName(), QString("输出"));
        QCOMPARE(cStore.getParamDIB(2)->getDescribe(), QString("d"));
        QCOMPARE(int(cStore.getParamDIB(2)->getDIB()[23]), 15);
        QCOMPARE(cStore.getParamPoints(3)->getName(), QString("Ecken"));
        QCOMPARE(cStore.getParamPoints(3)->getPointNum(), 1);
        const unsigned char *puchPixels = cStore.getParamDIB(2)->getDIB();
        runProbe(cStore, strConfig);
        QVERIFY(cStore.getParamDIB(2)->getDIB() == puchPixels); // no new buffer for a picture of that size

        cStore.getParamGray8(1)->resize(2, 2);
        QCOMPARE(runProbe(cStore, IDS + "<InputType>Gray16</InputType>"),
                 QString("Setting InputType is \"Gray16\", wanted is one of Gray8, RGB."));
        QCOMPARE(runProbe(cStore, IDS + "<Print>1</Print>"), QString("Something unknown went wrong."));
    }

    void deliversPictures()
    {
        const auto fnConfigure = [](const char *szConfig) { setConfig(1, QByteArray(szConfig).data()); };
        int nWidth = -1;
        int nHeight = -1;
        QVERIFY(!requestPicture(1, "Gray8", &nWidth, &nHeight)); // no such instance
        fnConfigure("");
        const unsigned char *puch = requestPicture(1, "RGB", &nWidth, &nHeight);
        QVERIFY(puch && nWidth == 3 && nHeight == 2);
        QCOMPARE(int(puch[12]), 400 % 256); // the second row, 12 bytes after the first
        puch = requestPicture(1, "Gray8", &nWidth, &nHeight);
        QCOMPARE(int(puch[3]), 400 % 256);
        QVERIFY(!requestPicture(1, "Gray16", &nWidth, &nHeight));
        QCOMPARE(nWidth, 0);

        fnConfigure("<Width>0</Width>");
        start(1);
        QCOMPARE(getLastError(1), "Setting Width is \"0\", wanted is a whole number from 1 to 100.");
        fnConfigure("<Width>99</Width>");
        QVERIFY(!requestPicture(1, "RGB", &nWidth, &nHeight));
        QCOMPARE(getLastError(1), "The camera is gone.");
        start(1);
        QCOMPARE(getLastError(1), "");

        fnConfigure("<Width>98</Width>");
        QElapsedTimer cTimer;
        cTimer.start();
        QVERIFY(!requestPicture(1, "RGB", &nWidth, &nHeight));
        QVERIFY(cTimer.elapsed() >= 90); // a task without pictures does not spin
        removeInstance(1);
        QCOMPARE(getLastError(1), "");
    }

private:
    static QString runProbe(ArithmParamMgr &cStore, QByteArray achConfig)
    {
        return QString::fromUtf8(execute(achConfig.data(), &cStore));
    }
};

QTEST_APPLESS_MAIN(TestSdk)
#include "tst_sdk.moc"
