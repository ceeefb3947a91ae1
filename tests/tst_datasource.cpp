// The registry of data sources, and the hand-over of pictures into a task's store.

#include <functional>
#include <limits>

#include <QtTest>

#include "DataSource/datasource.h"
#include "arithmparammgr.h"
#include "fixtures/neighbourhood.h"
#include "fixtures/row.h"
#include "fixtures/together.h"

namespace
{
using Instance = DataSource::DataSourceInstance;

DataSource *rebuild()
{
    forget(DataSource::s_pcThis);
    return DataSource::getInstance();
}

QStringList pluginNames()
{
    QStringList lstNames;
    for (const QString &strName : DataSource::getInstance()->m_mapDataSourceInfo.keys())
        if (!strName.startsWith(QLatin1String("Memory Disk ")))
            lstNames.append(strName);
    return lstNames;
}

/// A kind in this process that delivers what a test puts here and notes each call.
namespace Fake
{
QStringList s_lstCalls;
std::function<unsigned char *(int &nWidth, int &nHeight)> s_fnPicture;
QByteArray s_achFailing; ///< the functions that throw

void note(const char *szFunction, const QString &strDetail = QString())
{
    s_lstCalls.append(QString::fromLatin1(szFunction) + strDetail);
    if (s_achFailing.split(' ').contains(szFunction))
        throw std::runtime_error("fake failure");
}

unsigned char *request(int, const char *szType, int *pnWidth, int *pnHeight)
{
    note("request", QStringLiteral(" ") + QLatin1String(szType));
    return s_fnPicture(*pnWidth, *pnHeight);
}

char *text(const char *szFunction)
{
    note(szFunction);
    static char s_achText[] = "bad \xff text";
    return s_achText;
}

DataSource::DataSourceInfo *kind()
{
    static DataSource::DataSourceInfo s_cInfo;
    s_cInfo.m_fnRequestPicture = request;
    s_cInfo.m_fnReleasePicture = [](int) { note("release"); };
    s_cInfo.m_fnShowConfigDlg = [](char *pchConfig, bool bFlag) {
        memset(pchConfig, '#', strlen(pchConfig));
        return bFlag ? text("show") : nullptr;
    };
    s_cInfo.m_fnSetConfig = [](int, char *pchConfig) {
        note("config", QStringLiteral(" ") + QString::fromUtf8(pchConfig));
    };
    s_cInfo.m_fnStart = [](int) { note("start"); };
    s_cInfo.m_fnStop = [](int) { note("stop"); };
    s_cInfo.m_fnRemoveInstance = [](int) { note("remove"); };
    s_cInfo.m_fnGetLastError = [](int) { return text("error"); };
    return &s_cInfo;
}
} // namespace Fake
} // namespace

class TestDataSource : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cHere.clear();
        Fake::s_lstCalls.clear();
        Fake::s_achFailing.clear();
        Fake::s_fnPicture = [](int &, int &) { return nullptr; };
    }

    /// Good files are registered, all others are passed over without a word.
    void scans()
    {
        for (const char *szFile : {"one-1.so", "two-1.SO", "two-2.so", "three-1.so.1", "four.so/four-1.so",
                                   "throw-1.so", "Memory Disk 0-1.so"})
            m_cHere.plugin(QStringLiteral("DataSource/") + QLatin1String(szFile));
        m_cHere.write(QStringLiteral("DataSource/empty.so"), {});
        m_cHere.write(QStringLiteral("DataSource/cut.so"), m_cHere.named().left(5000));
        m_cHere.write(QStringLiteral("DataSource/import.so"), m_cHere.namedWithout("dladdr"));
        for (const char *szSymbol : {"getDataSourceName", "requestPicture", "releasePicture", "showConfigDlg",
                                     "setConfig", "start", "stop", "removeInstance", "getLastError"})
            m_cHere.write(QStringLiteral("DataSource/lacks %1.so").arg(QLatin1String(szSymbol)),
                          m_cHere.namedWithout(szSymbol));

        const Warnings cWarnings;
        const DataSource &cSources = *rebuild();
        QCOMPARE(pluginNames(), QStringList({QString(), QStringLiteral("one"), QStringLiteral("two")}));
        QCOMPARE(cSources.m_lstArithmLib.size(), 5);
        QCOMPARE(cWarnings.taken().size(), 1); // the name that throws
        // The last of two files of one name stays.
        std::unique_ptr<Instance> pcInstance(
            cSources.m_mapDataSourceInfo[QStringLiteral("two")]->newInstance(QString(), nullptr));
        QCOMPARE(pcInstance->getLastError(), QStringLiteral("2"));
        // The built-in kinds replace a plug-in that takes the name of one of them.
        QStringList lstNames{QString()};
        for (int i = 0; i < 6; ++i)
            lstNames.append(QStringLiteral("Memory Disk %1").arg(i));
        QCOMPARE(QStringList(cSources.m_mapDataSourceInfo.keys()),
                 lstNames + QStringList({QStringLiteral("one"), QStringLiteral("two")}));
        pcInstance.reset(cSources.m_mapDataSourceInfo[lstNames[1]]->newInstance(QString(), nullptr));
        QCOMPARE(pcInstance->getLastError(), QString());
    }

    void answersThePluginBeingRegistered()
    {
        m_cHere.plugin(QStringLiteral("DataSource/count-x-x.so"));
        rebuild();
        QCOMPARE(pluginNames(), QStringList{QStringLiteral("4 0")});
    }

    void keepsCodeOfUnloadedPlugins()
    {
        m_cHere.plugin(QStringLiteral("DataSource/unloaded-code.so"));
        std::unique_ptr<Instance> pcInstance;
        {
            const DataSource cSources;
            QCOMPARE(cSources.m_lstArithmLib.size(), 1);
            pcInstance.reset(
                cSources.m_mapDataSourceInfo[QStringLiteral("unloaded")]->newInstance(QString(), nullptr));
        }
        QCOMPARE(pcInstance->getLastError(), QStringLiteral("code"));
    }

    void readsConfigStrings_data()
    {
        QTest::addColumn<QString>("strType");
        QTest::addColumn<QString>("strID");
        QTest::addColumn<int>("nID");            // the data ID then, 0 when there is none
        QTest::addColumn<QList<int>>("lstMade"); // colour, 8-bit and 16-bit pictures in the store
        row("RGB", "RGB", "1", 1, QList<int>{1, 0, 0});
        row("Gray8", "Gray8", "7", 7, QList<int>{0, 1, 0});
        row("Gray16", "Gray16", "4", 4, QList<int>{0, 0, 1});
        row("lower case", "rgb", "4", 4, QList<int>{0, 0, 0});
        for (const char *szID : {"0", "-3", "", "99999999999"})
            row(qPrintable(QStringLiteral("ID '%1'").arg(QLatin1String(szID))), "RGB", szID, 0,
                QList<int>{0, 0, 0});
    }

    void readsConfigStrings()
    {
        QFETCH(QString, strType);
        QFETCH(QString, strID);
        QFETCH(int, nID);
        QFETCH(QList<int>, lstMade);
        DataSource &cSources = *rebuild();
        cSources.m_mapDataSourceInfo.insert(QStringLiteral("Fake"), Fake::kind());
        ArithmParamMgr cStore;
        const QString strConfig =
            QStringLiteral("<DSName>%1</DSName><OutputName>名</OutputName><OutputDescribe>D</OutputDescribe>"
                           "<OutputType>%2</OutputType><OutputID>%3</OutputID><Config><Own>é</Own></Config>");
        QCOMPARE(cSources.createDataSourceFromConfigString(
                     &cStore, strConfig.arg(QStringLiteral("fake"), strType, strID)),
                 nullptr);
        std::unique_ptr<Instance> pcInstance(cSources.createDataSourceFromConfigString(
            &cStore, strConfig.arg(QStringLiteral("Fake"), strType, strID)));
        cSources.m_mapDataSourceInfo.remove(QStringLiteral("Fake"));

        QVERIFY(pcInstance);
        QCOMPARE(Fake::s_lstCalls, QStringList{QStringLiteral("config <Own>é</Own>")});
        QCOMPARE(pcInstance->getConfigString(), QStringLiteral("<Own>é</Own>"));
        QCOMPARE(pcInstance->getDataID(), nID);
        QCOMPARE(pcInstance->getDataType(), nID ? strType : QString());
        QCOMPARE(QList<int>({cStore.m_mapParamDIB.size(), cStore.m_mapParamGray8.size(),
                             cStore.m_mapParamGray16.size()}),
                 lstMade);
        for (const ArithmParamMgr::Entry &cEntry : cStore.snapshot()) {
            QCOMPARE(cEntry.m_nID, nID);
            QCOMPARE(cEntry.m_strName, QStringLiteral("名"));
            QCOMPARE(cEntry.m_strDescribe, QStringLiteral("D"));
        }
    }

    void handsOver_data()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        QTest::addColumn<QString>("strType");
        QTest::addColumn<int>("nWidth");
        QTest::addColumn<int>("nHeight");
        QTest::addColumn<int>("nBytes"); // copied; 0 when the picture of before stays, -1 when it is emptied
        row("colour", "RGB", 3, 2, 24);
        row("colour, row of 2", "RGB", 2, 3, 24);
        row("grey", "Gray8", 3, 2, 6);
        row("no height", "Gray8", 3, 0, 0);
        row("negative", "RGB", -3, -2, 0);
        row("colour of overflowing size", "RGB", MAX, MAX, -1);
        row("grey of overflowing size", "Gray8", MAX, MAX, -1);
        row("grey that is 0 bytes in 32 bits", "Gray8", 65536, 65536, -1);
    }

    void handsOver()
    {
        QFETCH(QString, strType);
        QFETCH(int, nWidth);
        QFETCH(int, nHeight);
        QFETCH(int, nBytes);
        ArithmParamMgr cStore;
        const bool bColour = strType == QLatin1String("RGB");
        ParamDIB &cDIB = *cStore.getParamDIB(5);
        ParamGray8 &cGray8 = *cStore.getParamGray8(5);
        cDIB.resize(8, 1);
        cGray8.resize(8, 1);
        std::unique_ptr<Instance> pcInstance(Fake::kind()->newInstance(QStringLiteral("own"), &cStore));
        pcInstance->setDataType(strType);
        pcInstance->setDataID(5);
        pcInstance->setNameAndDescribe(QStringLiteral("name"), QStringLiteral("describe"));

        // Exactly the bytes of the picture, so that a sanitizer sees a byte too many.
        std::vector<unsigned char> vPixels(static_cast<size_t>(qMax(nBytes, 1)));
        for (size_t i = 0; i < vPixels.size(); ++i)
            vPixels[i] = static_cast<unsigned char>(i + 1);
        Fake::s_fnPicture = [&](int &nW, int &nH) {
            // The store's picture carries the source's name already, whether or not a picture comes.
            if (cStore.snapshot().value(bColour ? 0 : 1).m_strName != QLatin1String("name"))
                qFatal("not named before the request");
            nW = nWidth;
            nH = nHeight;
            return vPixels.data();
        };
        Fake::s_lstCalls.clear();
        QCOMPARE(pcInstance->execute(), nBytes > 0);
        QCOMPARE(Fake::s_lstCalls,
                 QStringList({QStringLiteral("request ") + strType, QStringLiteral("release")}));

        const ArithmParam &cPicture = bColour ? static_cast<ArithmParam &>(cDIB) : cGray8;
        QCOMPARE(cPicture.getName() + cPicture.getDescribe(), QStringLiteral("namedescribe"));
        const QSize cSize =
            bColour ? QSize(cDIB.getWidth(), cDIB.getHeight()) : QSize(cGray8.getWidth(), cGray8.getHeight());
        QCOMPARE(cSize, nBytes > 0 ? QSize(nWidth, nHeight) : nBytes < 0 ? QSize(0, 0) : QSize(8, 1));
        if (nBytes > 0)
            QVERIFY(memcmp(bColour ? cDIB.getDIB() : cGray8.getGray8(), vPixels.data(), vPixels.size()) == 0);
        // A size without pixels is no picture either.
        if (nBytes > 0) {
            Fake::s_fnPicture = [&](int &nW, int &nH) {
                nW = nH = 2;
                return nullptr;
            };
            QVERIFY(!pcInstance->execute());
            QCOMPARE(bColour ? cDIB.getWidth() : cGray8.getWidth(), nWidth);
        }
    }

    void needsFunctionsAndStore()
    {
        ArithmParamMgr cStore;
        const auto fnCallsNothing = [&](const std::function<void(Instance &)> &fnSpoil) {
            std::unique_ptr<Instance> pcInstance(Fake::kind()->newInstance(QString(), &cStore));
            pcInstance->setDataType(QStringLiteral("RGB"));
            pcInstance->setDataID(1);
            fnSpoil(*pcInstance);
            Fake::s_lstCalls.clear();
            return !pcInstance->execute() && Fake::s_lstCalls.isEmpty() && cStore.snapshot().isEmpty();
        };
        QVERIFY(fnCallsNothing([](Instance &cInstance) { cInstance.m_fnRequestPicture = nullptr; }));
        QVERIFY(fnCallsNothing([](Instance &cInstance) { cInstance.m_fnReleasePicture = nullptr; }));
        QVERIFY(fnCallsNothing([](Instance &cInstance) { cInstance.setArithmParamMgr(nullptr); }));
        QVERIFY(fnCallsNothing([](Instance &cInstance) { cInstance.setDataID(0); }));
        for (const char *szType : {"Gray16", "rgb", ""})
            QVERIFY(fnCallsNothing([=](Instance &cInstance) { cInstance.setDataType(szType); }));
        // An instance without any function.
        Instance cEmpty;
        cEmpty.start();
        cEmpty.stop();
        QCOMPARE(cEmpty.getLastError(), QString());
    }

    /// The window's text becomes the configuration and is passed on; the instance's life ends with
    /// the kind being told.
    void callsTheKind()
    {
        std::unique_ptr<Instance> pcInstance(Fake::kind()->newInstance(QStringLiteral("first"), nullptr));
        const QString strText = QStringLiteral("bad \uFFFD text");
        pcInstance->showConfigWindow();
        QCOMPARE(pcInstance->getConfigString(), strText);
        pcInstance->start();
        pcInstance->stop();
        QCOMPARE(pcInstance->getLastError(), strText);
        pcInstance.reset();
        QCOMPARE(Fake::s_lstCalls,
                 QStringList({QStringLiteral("config first"), QStringLiteral("show"),
                              QStringLiteral("config ") + strText, QStringLiteral("start"),
                              QStringLiteral("stop"), QStringLiteral("error"), QStringLiteral("remove")}));
        QCOMPARE(Fake::kind()->showConfigWindow(QStringLiteral("x")), strText);
    }

    /// An exception in any function of a kind is told once and harms nobody.
    void survivesExceptions_data()
    {
        QTest::addColumn<QByteArray>("achFunction");
        for (const char *szFunction :
             {"request", "release", "show", "config", "start", "stop", "error", "remove", "request release"})
            row(szFunction, QByteArray(szFunction));
    }

    void survivesExceptions()
    {
        QFETCH(QByteArray, achFunction);
        ArithmParamMgr cStore;
        const Warnings cWarnings;
        Fake::s_achFailing = achFunction;
        unsigned char achPixels[4] = {1, 2, 3, 4};
        Fake::s_fnPicture = [&](int &nWidth, int &nHeight) {
            nWidth = nHeight = 1;
            return achPixels;
        };
        std::unique_ptr<Instance> pcInstance(Fake::kind()->newInstance(QStringLiteral("first"), &cStore));
        pcInstance->setDataType(QStringLiteral("RGB"));
        pcInstance->setDataID(1);
        for (int i = 0; i < 3; ++i) {
            pcInstance->start();
            Fake::s_lstCalls.clear();
            QCOMPARE(pcInstance->execute(), !achFunction.contains("request"));
            QCOMPARE(Fake::s_lstCalls,
                     QStringList({QStringLiteral("request RGB"), QStringLiteral("release")}));
            pcInstance->stop();
            QCOMPARE(pcInstance->getLastError().isEmpty(), achFunction == "error");
            pcInstance->showConfigWindow();
            QCOMPARE(pcInstance->getConfigString().isEmpty(), achFunction == "show");
        }
        pcInstance.reset();
        const QStringList lstTexts = cWarnings.taken();
        QCOMPARE(lstTexts.size(), achFunction.split(' ').size());
        for (const QString &strText : lstTexts)
            QVERIFY2(strText.contains(QLatin1String("fake failure")), qPrintable(strText));
    }

    /// Several tasks fetch from one plug-in at once.
    void servesThreadsAtOnce()
    {
        m_cHere.write(QStringLiteral("DataSource/probesource.so"),
                      m_cHere.read(QStringLiteral("DataSource/probesource.so")));
        forget(DataSource::s_pcThis);
        std::atomic<int> nPictures{0};
        together(4, [&](int i) {
            ArithmParamMgr cStore;
            const QString strType = i % 2 ? QStringLiteral("RGB") : QStringLiteral("Gray8");
            std::unique_ptr<Instance> pcInstance(DataSource::getInstance()->createDataSourceFromConfigString(
                &cStore,
                QStringLiteral("<DSName>Probe</DSName><OutputType>%1</OutputType><OutputID>1</OutputID>"
                               "<Config><Width>33</Width><Pictures>50</Pictures></Config>")
                    .arg(strType)));
            pcInstance->start();
            while (pcInstance->execute())
                ++nPictures;
            pcInstance->stop();
            // Byte 2 of the last picture.
            if ((i % 2 ? cStore.getParamDIB(1)->getDIB() : cStore.getParamGray8(1)->getGray8())[2] != 49 + 2)
                nPictures = -1000;
        });
        QCOMPARE(nPictures.load(), 200);
        QCOMPARE(pluginNames(), QStringList{QStringLiteral("Probe")});
    }

private:
    Neighbourhood m_cHere;
};

QTEST_MAIN(TestDataSource)
#include "tst_datasource.moc"
