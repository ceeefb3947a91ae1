#include <array>
#include <atomic>
#include <thread>

#include <QtTest>

#include "arithmparammgr.h"
#include "sdk/algorithm.h"
#include "sdk/datasource.h"

namespace
{
enum Method { FIRST, SECOND };
constexpr Plugin::Option METHODS[] = {{"First", {"一", "First"}}, {"Second", {"二", "Second"}}};

/// An algorithm with a setting of each kind, as an author writes one.
class Probe
{
public:
    static constexpr Plugin::About ABOUT{"T_Probe", "Test", "Probe", {}};
    static constexpr auto INPUT =
        Plugin::PictureInput("InputID", {}, Plugin::Kind::Gray8).orKind(Plugin::Kind::DIB, "InputType");
    static constexpr Plugin::PictureOutput OUTPUT{"OutputID", {}, INPUT, "输出", "Output"};
    static constexpr auto POINTS =
        Plugin::ListOutput<Plugin::Kind::Points>("PointsID", {}, "点", "Points").prefix("Points");
    static constexpr Plugin::Choice<Method> METHOD{"Method", {}, METHODS};
    static constexpr auto LEVEL = Plugin::Integer("Level", {}, 5).range(-3, 255).when(METHOD, FIRST);
    static constexpr auto SIZE = Plugin::Integer("Size", {}, 3).range(1, 9).odd();
    static constexpr Plugin::Real SIGMA{"Sigma", {}, 0.5, 0, 2};
    static constexpr Plugin::Flag PRINT{"Print", {}};
    static constexpr Plugin::Text LABEL{"Label", {}, "things"};
    static constexpr Plugin::Command COMMAND{"Command", {}};
    static constexpr Plugin::Colour COLOUR{"Colour", {}, "#0000ff"};
    static constexpr Plugin::ColourRange RANGE{"Range", {}};
    static constexpr Plugin::Region REGION{"Region", {}};
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, POINTS,  METHOD, LEVEL, SIZE,  SIGMA,
                                                   PRINT, LABEL,  COMMAND, COLOUR, RANGE, REGION};

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

constexpr Plugin::Setting RESERVED[] = {Plugin::Integer("config", {}, 1)};
static_assert(Plugin::usesReservedTag(RESERVED, 1, false), "The compiler finds it as well.");
const QByteArray IDS = "<InputID>1</InputID><OutputID>2</OutputID><PointsID>3</PointsID>";
} // namespace

OCULINEX_ALGORITHM(Probe)
OCULINEX_DATA_SOURCE(ProbeSource)

static QString runProbe(ArithmParamMgr &cStore, QByteArray strConfig)
{
    return QString::fromUtf8(execute(strConfig.data(), &cStore));
}

using Settings = QVector<Plugin::Setting>;
Q_DECLARE_METATYPE(Settings)

class TestSdk : public QObject
{
    Q_OBJECT

private slots:
    void refusesTables_data()
    {
        QTest::addColumn<Settings>("lstSetting");
        QTest::addColumn<QString>("strUse"); // what it may be a table of
        const auto number = [](const char *szTag) { return Plugin::Integer(szTag, {}, 1); };
        const auto row = [](const char *szName, const Settings &lstSetting, const char *szUse = "") {
            QTest::newRow(szName) << lstSetting << szUse;
        };
        for (const char *szTag :
             {"DSName", "outputname", "OutputDescribe", "OutputType", "Config", "View", "cmd"})
            row(szTag, {number("Size"), number(szTag)});
        row("OutputID", {number("OutputID")}, "algorithm");
        row("none", {}, "algorithm source");
        row("twice", {number("Size"), number("SIZE")});
        row("no tag", {number("")});
        row("blank in a tag", {number("a b")});
        row("begins outside", {number("a").range(2, 3)});
        row("begins even", {Plugin::Integer("a", {}, 2).odd()});
        row("output", {Probe::POINTS}, "algorithm");
        row("name of an output", {Probe::POINTS, number("PointsName")});
        row("reserved name of an output",
            {Plugin::ListOutput<Plugin::Kind::Bools>("A", {}, "", "").prefix("Output")});
        row("a shared type", {Probe::INPUT, Probe::OUTPUT}, "algorithm");
        row("choice elsewhere", {Probe::LEVEL});
        row("choice here", {Probe::METHOD, Probe::LEVEL}, "algorithm source");
    }
    void refusesTables()
    {
        QFETCH(Settings, lstSetting);
        const auto fnTaken = [&](bool bSource) {
            const Plugin::Setting *pc = lstSetting.constData();
            const auto n = static_cast<size_t>(lstSetting.size());
            return !Plugin::usesReservedTag(pc, n, bSource) && Plugin::hasProperTags(pc, n) &&
                   Plugin::hasProperValues(pc, n) && !(bSource && Plugin::hasParameters(pc, n));
        };
        QTEST(QString(fnTaken(false) ? "algorithm" : "") + (fnTaken(true) ? " source" : ""), "strUse");
    }

    void takesValues_data()
    {
        QTest::addColumn<Settings>("lstSetting"); // one
        QTest::addColumn<QByteArray>("strValue");
        QTest::addColumn<bool>("bTaken");
        using Values = std::initializer_list<const char *>;
        const auto rows = [](const Plugin::Setting &cSetting, Values lstGood, Values lstBad) {
            for (const Values &lstValue : {lstGood, lstBad})
                for (const char *szValue : lstValue)
                    QTest::addRow("%s %s", cSetting.m_szTag, szValue)
                        << Settings{cSetting} << QByteArray(szValue) << (lstValue.begin() == lstGood.begin());
        };
        rows(Probe::LEVEL, {"-3", "+255", " 7 ", ""}, {"-4", "256", "1.5", "0x1", "99999999999", "a"});
        rows(Probe::SIZE, {}, {"4"});
        rows(Probe::SIGMA, {"1e-1"}, {"nan", "inf", "2.1", "1,5"});
        rows(Probe::METHOD, {"second"}, {"third"});
        rows(Probe::PRINT, {}, {"2"});
        rows(Probe::LABEL, {"a < b > c", "<-5", "< Name>", "ERR:", "中文<", "<>", "a</b"},
             {"<b>", "x</Label>", "<-TaskName->", "</=TaskInfo=>", "<<CMD>"});
        rows(Probe::COMMAND, {"SKIP: 2", "stop:", "print:a:b"}, {"skip:x", "stop", "jump:1", "print:<CMD>"});
        rows(Probe::COLOUR, {"#Ff8000"}, {"#ff80", "ff80000", "#ff80zz", "#-f8000"});
        rows(Probe::RANGE, {"170,0,0, 10,255,255"},
             {"1,2,3", "180,0,0,0,0,0", "0,0,0,0,256,0", "0,0,0,0,0,0,0", "0,0,0,0,0,"});
        rows(Probe::REGION, {"-5,0,10,10"}, {"0,0,0,5", "1,2,3", "1,2,3,-4"});
        rows(Probe::INPUT, {"0"}, {"-1", "", "x"});
    }
    void takesValues()
    {
        QFETCH(Settings, lstSetting);
        QFETCH(QByteArray, strValue);
        QFETCH(bool, bTaken);
        const std::string strReason = Plugin::whyRefused(lstSetting.first(), strValue.toStdString());
        QCOMPARE(strReason.empty(), bTaken);
        if (!bTaken) {
            QVERIFY2(strReason.find(lstSetting.first().m_szTag) != std::string::npos, strReason.c_str());
            return;
        }
        // What is taken comes back, whatever stands around it.
        std::string strConfig = "<Other>1</Other>";
        Plugin::appendValue(strConfig, lstSetting.first().m_szTag, strValue.toStdString());
        Plugin::appendValue(strConfig, "After", "</");
        QCOMPARE(Plugin::toQString(Plugin::Settings(strConfig).value(lstSetting.first().m_szTag)),
                 QString::fromUtf8(strValue).trimmed());
    }

    void readsTyped()
    {
        const Plugin::Settings cNone("");
        QCOMPARE(cNone[Probe::LEVEL], 5);
        QCOMPARE(cNone[Probe::SIGMA], 0.5);
        QCOMPARE(cNone[Probe::METHOD], FIRST);
        QCOMPARE(int(cNone[Probe::COLOUR].m_nBlue), 255);
        QCOMPARE(cNone[Probe::RANGE].m_anHigh[0], 179);
        QCOMPARE(cNone[Probe::REGION].m_nWidth, 0);
        const Plugin::Settings cGiven(
            "<method>SECOND</Method><Colour>#010203</Colour><Range>170,1,2,10,3,4</Range>"
            "<Region>-1,2,3,4</Region><Command>skip:2</Command><InputType>rgb</InputType>");
        QCOMPARE(cGiven[Probe::METHOD], SECOND);
        QCOMPARE(int(cGiven[Probe::COLOUR].m_nRed), 1);
        QCOMPARE(cGiven[Probe::RANGE].m_anHigh[2], 4);
        QCOMPARE(cGiven[Probe::REGION].m_nX, -1);
        QCOMPARE(cGiven[Probe::COMMAND], std::string("<CMD>skip:2</CMD>"));
        QVERIFY(cGiven.kind(Probe::OUTPUT) == Plugin::Kind::DIB);
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
    }

    void reportsFailures()
    {
        ArithmParamMgr cStore;
        cStore.getParamGray8(1)->resize(2, 2);
        QCOMPARE(runProbe(cStore, "<InputID>1</InputID>"), QString("Setting OutputID is missing."));
        QCOMPARE(runProbe(cStore, IDS + "<InputType>Gray16</InputType>"),
                 QString("Setting InputType is \"Gray16\", wanted is one of Gray8, RGB."));
        QCOMPARE(runProbe(cStore, IDS + "<Print>1</Print>"), QString("Something unknown went wrong."));
    }

    void runsInSeveralThreads()
    {
        std::array<std::thread, 4> acThread;
        std::atomic<int> nRight{0};
        for (size_t n = 0; n < acThread.size(); ++n)
            acThread[n] = std::thread([n, &nRight] {
                ArithmParamMgr cStore;
                cStore.getParamGray8(1)->resize(9, 9);
                const QByteArray strNumber = QByteArray::number(qulonglong(n));
                for (int nRun = 0; nRun < 500; ++nRun)
                    nRight += runProbe(cStore, IDS + "<Label>" + strNumber + "</Label>") ==
                              "<CMD>print:" + strNumber + "</CMD>";
            });
        for (std::thread &cThread : acThread)
            cThread.join();
        QCOMPARE(nRight.load(), 2000);
    }

    void deliversPictures()
    {
        const auto fnConfigure = [](const char *szConfig) { setConfig(1, QByteArray(szConfig).data()); };
        int nWidth = -1;
        int nHeight = -1;
        QVERIFY(!requestPicture(1, "Gray8", &nWidth, &nHeight)); // no such instance
        fnConfigure("");
        const unsigned char *puch = requestPicture(1, "RGB", &nWidth, &nHeight);
        QVERIFY(puch);
        QCOMPARE(nWidth, 3);
        QCOMPARE(nHeight, 2);
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

    void leavesConfigsOfCancelledWindows()
    {
        // Without an application there is no window, which counts as cancelled.
        ArithmParamMgr cStore;
        char achConfig[] = "<Level>7</Level>";
        QCOMPARE(showConfigWindow(achConfig, &cStore, true), "");
        QCOMPARE(showConfigDlg(achConfig, true), achConfig);
        QCOMPARE(showConfigDlg(nullptr, true), "");
    }
};

QTEST_APPLESS_MAIN(TestSdk)
#include "tst_sdk.moc"
