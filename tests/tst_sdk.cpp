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

struct ReservedTag {
    static constexpr Plugin::Setting SETTINGS[] = {Plugin::Integer("config", {}, 1)};
};
} // namespace

OCULINEX_ALGORITHM(Probe)
OCULINEX_DATA_SOURCE(ProbeSource)

using Settings = QVector<Plugin::Setting>;
Q_DECLARE_METATYPE(Settings)

class TestSdk : public QObject
{
    Q_OBJECT

private slots:
    void refusesTables_data();
    void refusesTables();
    void takesValues_data();
    void takesValues();
    void readsTyped();
    void runsSteps();
    void reportsFailures_data();
    void reportsFailures();
    void keepsBuffers();
    void runsInSeveralThreads();
    void deliversPictures();
    void leavesConfigsOfCancelledWindows();
};

void TestSdk::refusesTables_data()
{
    QTest::addColumn<Settings>("lstSetting");
    QTest::addColumn<bool>("bAlgorithm"); // whether it may be an algorithm's
    QTest::addColumn<bool>("bSource");
    const auto number = [](const char *szTag) { return Plugin::Integer(szTag, {}, 1); };
    for (const char *szTag :
         {"DSName", "outputname", "OutputDescribe", "OutputType", "Config", "View", "cmd"})
        QTest::newRow(szTag) << Settings{number("Size"), number(szTag)} << false << false;
    QTest::newRow("OutputID") << Settings{number("OutputID")} << true << false;
    QTest::newRow("none") << Settings{} << true << true;
    QTest::newRow("plain") << Settings{number("Size"), number("Level")} << true << true;
    QTest::newRow("twice") << Settings{number("Size"), number("SIZE")} << false << false;
    QTest::newRow("no tag") << Settings{number("")} << false << false;
    QTest::newRow("blank in a tag") << Settings{number("a b")} << false << false;
    QTest::newRow("begins outside") << Settings{number("a").range(2, 3)} << false << false;
    QTest::newRow("begins even") << Settings{Plugin::Integer("a", {}, 2).odd()} << false << false;
    QTest::newRow("output") << Settings{Probe::POINTS} << true << false;
    QTest::newRow("name of an output") << Settings{Probe::POINTS, number("PointsName")} << false << false;
    QTest::newRow("reserved name of an output")
        << Settings{Plugin::ListOutput<Plugin::Kind::Bools>("A", {}, "", "").prefix("Output")} << false
        << false;
    QTest::newRow("a shared type") << Settings{Probe::INPUT, Probe::OUTPUT} << true << false;
    QTest::newRow("choice elsewhere") << Settings{Probe::LEVEL} << false << false;
    QTest::newRow("choice here") << Settings{Probe::METHOD, Probe::LEVEL} << true << true;
}

void TestSdk::refusesTables()
{
    QFETCH(Settings, lstSetting);
    const auto fnTaken = [&](bool bSource) {
        const Plugin::Setting *pc = lstSetting.constData();
        const auto n = static_cast<size_t>(lstSetting.size());
        return !Plugin::usesReservedTag(pc, n, bSource) && Plugin::hasProperTags(pc, n) &&
               Plugin::hasProperValues(pc, n) && !(bSource && Plugin::hasParameters(pc, n));
    };
    QTEST(fnTaken(false), "bAlgorithm");
    QTEST(fnTaken(true), "bSource");
    static_assert(Plugin::usesReservedTag(ReservedTag::SETTINGS, 1, false), "The compiler finds it as well.");
}

void TestSdk::takesValues_data()
{
    QTest::addColumn<Settings>("lstSetting"); // one
    QTest::addColumn<QByteArray>("strValue");
    QTest::addColumn<bool>("bTaken");
    const auto row = [](const Plugin::Setting &cSetting, const char *szValue, bool bTaken) {
        QTest::addRow("%s %s", cSetting.m_szTag, szValue)
            << Settings{cSetting} << QByteArray(szValue) << bTaken;
    };
    for (const char *szGood : {"-3", "+255", " 7 ", ""})
        row(Probe::LEVEL, szGood, true);
    for (const char *szBad : {"-4", "256", "1.5", "0x1", "99999999999", "a"})
        row(Probe::LEVEL, szBad, false);
    row(Probe::SIZE, "4", false);
    for (const char *szBad : {"nan", "inf", "2.1", "1,5"})
        row(Probe::SIGMA, szBad, false);
    row(Probe::SIGMA, "1e-1", true);
    row(Probe::METHOD, "second", true);
    row(Probe::METHOD, "third", false);
    row(Probe::PRINT, "2", false);
    for (const char *szGood : {"a < b > c", "<-5", "< Name>", "ERR:", "中文<", "<>", "a</b"})
        row(Probe::LABEL, szGood, true);
    for (const char *szBad : {"<b>", "x</Label>", "<-TaskName->", "</=TaskInfo=>", "<<CMD>"})
        row(Probe::LABEL, szBad, false);
    for (const char *szGood : {"SKIP: 2", "stop:", "print:a:b"})
        row(Probe::COMMAND, szGood, true);
    for (const char *szBad : {"skip:x", "stop", "jump:1", "print:<CMD>"})
        row(Probe::COMMAND, szBad, false);
    row(Probe::COLOUR, "#Ff8000", true);
    for (const char *szBad : {"#ff80", "ff80000", "#ff80zz", "#-f8000"})
        row(Probe::COLOUR, szBad, false);
    row(Probe::RANGE, "170,0,0, 10,255,255", true);
    for (const char *szBad : {"1,2,3", "180,0,0,0,0,0", "0,0,0,0,256,0", "0,0,0,0,0,0,0", "0,0,0,0,0,"})
        row(Probe::RANGE, szBad, false);
    row(Probe::REGION, "-5,0,10,10", true);
    for (const char *szBad : {"0,0,0,5", "1,2,3", "1,2,3,-4"})
        row(Probe::REGION, szBad, false);
    row(Probe::INPUT, "0", true);
    for (const char *szBad : {"-1", "", "x"})
        row(Probe::INPUT, szBad, false);
}

void TestSdk::takesValues()
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

void TestSdk::readsTyped()
{
    const Plugin::Settings cNone("");
    QCOMPARE(cNone[Probe::LEVEL], 5);
    QCOMPARE(cNone[Probe::SIGMA], 0.5);
    QCOMPARE(cNone[Probe::METHOD], FIRST);
    QCOMPARE(cNone[Probe::LABEL], std::string_view("things"));
    QCOMPARE(int(cNone[Probe::COLOUR].m_nBlue), 255);
    QCOMPARE(cNone[Probe::RANGE].m_anHigh[0], 179);
    QCOMPARE(cNone[Probe::REGION].m_nWidth, 0);
    const Plugin::Settings cGiven(
        "<method>SECOND</Method><Colour>#010203</Colour><Range>170,1,2,10,3,4</Range>"
        "<Region>-1,2,3,4</Region><Command>skip:2</Command><InputType>rgb</InputType>");
    QCOMPARE(cGiven[Probe::METHOD], SECOND);
    QCOMPARE(int(cGiven[Probe::COLOUR].m_nRed), 1);
    QCOMPARE(int(cGiven[Probe::COLOUR].m_nBlue), 3);
    QCOMPARE(cGiven[Probe::RANGE].m_anLow[0], 170);
    QCOMPARE(cGiven[Probe::RANGE].m_anHigh[2], 4);
    QCOMPARE(cGiven[Probe::REGION].m_nX, -1);
    QCOMPARE(cGiven[Probe::REGION].m_nHeight, 4);
    QCOMPARE(cGiven[Probe::COMMAND], std::string("<CMD>skip:2</CMD>"));
    QVERIFY(cGiven.kind(Probe::OUTPUT) == Plugin::Kind::DIB);
}

namespace
{
QString runProbe(ArithmParamMgr &cStore, QByteArray strConfig)
{
    return QString::fromUtf8(execute(strConfig.data(), &cStore));
}
} // namespace

void TestSdk::runsSteps()
{
    ArithmParamMgr cStore;
    cStore.getParamDIB(1)->resize(3, 2);
    memset(cStore.getParamDIB(1)->getDIB(), 10, 24);
    QCOMPARE(runProbe(cStore, "<InputID>1</InputID><InputType>RGB</InputType><OutputID>2</OutputID>"
                              "<PointsID>3</PointsID><PointsName>Ecken</PointsName><Describe>d</Describe>"),
             QString("<CMD>print:things</CMD>"));
    QCOMPARE(cStore.getParamDIB(2)->getName(), QString("输出"));
    QCOMPARE(cStore.getParamDIB(2)->getDescribe(), QString("d"));
    QCOMPARE(int(cStore.getParamDIB(2)->getDIB()[23]), 15);
    QCOMPARE(cStore.getParamPoints(3)->getName(), QString("Ecken"));
    QCOMPARE(cStore.getParamPoints(3)->getPointNum(), 1);
}

void TestSdk::reportsFailures_data()
{
    QTest::addColumn<QByteArray>("strConfig");
    QTest::addColumn<QString>("strError");
    const QByteArray strIDs = "<InputID>1</InputID><OutputID>2</OutputID><PointsID>3</PointsID>";
    QTest::newRow("empty picture") << QByteArray("<InputID>3</InputID>") << "Input picture 3 is empty.";
    QTest::newRow("no input") << QByteArray() << "Setting InputID is missing.";
    QTest::newRow("no output") << QByteArray("<InputID>1</InputID>") << "Setting OutputID is missing.";
    QTest::newRow("unknown type") << strIDs + "<InputType>Gray16</InputType>"
                                  << "Setting InputType is \"Gray16\", wanted is one of Gray8, RGB.";
    QTest::newRow("no exception of the library") << strIDs + "<Print>1</Print>"
                                                 << "Something unknown went wrong.";
}

void TestSdk::reportsFailures()
{
    QFETCH(QByteArray, strConfig);
    ArithmParamMgr cStore;
    cStore.getParamGray8(1)->resize(2, 2);
    QTEST(runProbe(cStore, strConfig), "strError");
}

void TestSdk::keepsBuffers()
{
    ArithmParamMgr cStore;
    cStore.getParamGray8(1)->resize(64, 64);
    char achConfig[] = "<InputID>1</InputID><OutputID>2</OutputID><PointsID>3</PointsID>";
    const char *szText = execute(achConfig, &cStore);
    const unsigned char *puchPixels = cStore.getParamGray8(2)->getGray8();
    QBENCHMARK
    {
        QCOMPARE(static_cast<const char *>(execute(achConfig, &cStore)), szText);
    }
    QCOMPARE(static_cast<const unsigned char *>(cStore.getParamGray8(2)->getGray8()), puchPixels);
}

void TestSdk::runsInSeveralThreads()
{
    std::array<std::thread, 4> acThread;
    std::atomic<int> nRight{0};
    for (size_t n = 0; n < acThread.size(); ++n)
        acThread[n] = std::thread([n, &nRight] {
            ArithmParamMgr cStore;
            cStore.getParamGray8(1)->resize(9, 9);
            QByteArray strConfig = "<InputID>1</InputID><OutputID>2</OutputID><PointsID>3</PointsID><Label>" +
                                   QByteArray::number(qulonglong(n)) + "</Label>";
            for (int nRun = 0; nRun < 500; ++nRun) {
                const char *szText = execute(strConfig.data(), &cStore);
                nRight += szText == "<CMD>print:" + QByteArray::number(qulonglong(n)) + "</CMD>";
            }
        });
    for (std::thread &cThread : acThread)
        cThread.join();
    QCOMPARE(nRight.load(), 2000);
}

void TestSdk::deliversPictures()
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
    QCOMPARE(getLastError(1), "");
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

void TestSdk::leavesConfigsOfCancelledWindows()
{
    // Without an application there is no window, which counts as cancelled.
    ArithmParamMgr cStore;
    char achConfig[] = "<Level>7</Level>";
    QCOMPARE(showConfigWindow(achConfig, &cStore, true), "");
    QCOMPARE(showConfigDlg(achConfig, true), achConfig);
    QCOMPARE(showConfigDlg(nullptr, true), "");
}

QTEST_APPLESS_MAIN(TestSdk)
#include "tst_sdk.moc"
