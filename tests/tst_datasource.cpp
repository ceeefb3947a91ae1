// The registry of data sources, and the hand-over of pictures into a task's store.

#include <limits>
#include <numeric>

#include <QtTest>

#include "DataSource/datasource.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "fixtures/neighbourhood.h"
#include "fixtures/row.h"

namespace
{
using Instance = DataSource::DataSourceInstance;

DataSource *rebuild()
{
    forget(DataSource::s_pcThis);
    return DataSource::getInstance();
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
    note("request", QString(" ") + szType);
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
        note("config", QString(" ") + QString::fromUtf8(pchConfig));
    };
    s_cInfo.m_fnStart = [](int) { note("start"); };
    s_cInfo.m_fnStop = [](int) { note("stop"); };
    s_cInfo.m_fnRemoveInstance = [](int) { note("remove"); };
    s_cInfo.m_fnGetLastError = [](int) { return text("error"); };
    return &s_cInfo;
}
} // namespace Fake

std::unique_ptr<Instance> fake(ArithmParamMgr *pcStore, const QString &strType = "RGB")
{
    std::unique_ptr<Instance> pcInstance(Fake::kind()->newInstance("first", pcStore));
    pcInstance->setDataType(strType);
    pcInstance->setDataID(1);
    return pcInstance;
}
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
        for (const char *szFile : {"one-1.so", "two-1.SO", "throw-1.so"})
            m_cHere.plugin(QString("DataSource/") + szFile);
        m_cHere.write("DataSource/cut.so", m_cHere.named().left(5000));
        for (const char *szSymbol : {"getDataSourceName", "requestPicture", "releasePicture", "showConfigDlg",
                                     "setConfig", "start", "stop", "removeInstance", "getLastError"})
            m_cHere.write(QString("DataSource/lacks %1.so").arg(szSymbol), m_cHere.namedWithout(szSymbol));

        const Warnings cWarnings;
        const DataSource &cSources = *rebuild();
        QCOMPARE(
            QStringList(cSources.m_mapDataSourceInfo.keys()).join(','),
            ",Memory Disk 0,Memory Disk 1,Memory Disk 2,Memory Disk 3,Memory Disk 4,Memory Disk 5,one,two");
        QCOMPARE(cSources.m_lstArithmLib.size(), 3);
        QCOMPARE(cWarnings.taken().size(), 1); // the name that throws
    }

    void readsConfigStrings_data()
    {
        // What is in the store then: kind, ID, name and description.
        addRows(R"(
case          type    ID           made
colour        RGB     1            0 1 名D
grey          Gray8   7            1 7 名D
lower case    rgb     4            -
least ID      RGB     0            -
)");
    }

    void readsConfigStrings()
    {
        QFETCH(QString, type);
        QFETCH(QString, ID);
        DataSource &cSources = *rebuild();
        cSources.m_mapDataSourceInfo.insert("Fake", Fake::kind());
        ArithmParamMgr cStore;
        const auto fnCreate = [&](const char *szKind) {
            const QString strConfig =
                "<DSName>%1</DSName><OutputName>名</OutputName><OutputDescribe>D</OutputDescribe>"
                "<OutputType>%2</OutputType><OutputID>%3</OutputID><Config><Own>é</Own></Config>";
            return std::unique_ptr<Instance>(
                cSources.createDataSourceFromConfigString(&cStore, strConfig.arg(szKind, type, ID)));
        };
        QVERIFY(!fnCreate("fake"));
        const auto pcInstance = fnCreate("Fake");
        cSources.m_mapDataSourceInfo.remove("Fake");

        QCOMPARE(Fake::s_lstCalls, QStringList("config <Own>é</Own>"));
        QCOMPARE(pcInstance->getDataID(), ID.toInt());
        QString strMade;
        for (const ArithmParamMgr::Entry &cEntry : cStore.snapshot())
            strMade += QString("%1 %2 ").arg(static_cast<int>(cEntry.m_eKind)).arg(cEntry.m_nID) +
                       cEntry.m_strName + cEntry.m_strDescribe;
        QTEST(strMade, "made");
    }

    void handsOver_data()
    {
        constexpr int MAX = std::numeric_limits<int>::max();
        QTest::addColumn<QString>("strType");
        QTest::addColumn<QSize>("cSize");
        QTest::addColumn<int>("nBytes"); // copied; 0 when the picture of before stays, -1 when it is emptied
        row("colour", "RGB", QSize(3, 2), 24);
        row("grey", "Gray8", QSize(3, 2), 6);
        row("negative", "RGB", QSize(-3, -2), 0);
        row("overflowing size", "RGB", QSize(MAX, MAX), -1);
        row("0 bytes in 32 bits", "Gray8", QSize(65536, 65536), -1);
    }

    void handsOver()
    {
        QFETCH(QString, strType);
        QFETCH(QSize, cSize);
        QFETCH(int, nBytes);
        ArithmParamMgr cStore;
        const bool bColour = strType == "RGB";
        bColour ? cStore.getParamDIB(1)->resize(8, 1) : cStore.getParamGray8(1)->resize(8, 1);
        const auto pcInstance = fake(&cStore, strType);

        // Exactly the bytes of the picture, so that a sanitizer sees a byte too many.
        std::vector<unsigned char> vPixels(static_cast<size_t>(qMax(nBytes, 1)));
        std::iota(vPixels.begin(), vPixels.end(), static_cast<unsigned char>(1));
        Fake::s_fnPicture = [&](int &nWidth, int &nHeight) {
            nWidth = cSize.width();
            nHeight = cSize.height();
            return vPixels.data();
        };
        QCOMPARE(pcInstance->execute(), nBytes > 0);
        QCOMPARE(Fake::s_lstCalls, QStringList({"config first", "request " + strType, "release"}));
        const ArithmParamMgr::Entry cStored = cStore.snapshot().constFirst();
        QCOMPARE(QSize(cStored.m_nWidth, cStored.m_nHeight), nBytes > 0   ? cSize
                                                             : nBytes < 0 ? QSize(0, 0)
                                                                          : QSize(8, 1));
        const unsigned char *puchStored =
            bColour ? cStore.getParamDIB(1)->getDIB() : cStore.getParamGray8(1)->getGray8();
        QVERIFY(nBytes <= 0 || memcmp(puchStored, vPixels.data(), vPixels.size()) == 0);
    }

    /// Each function of a kind is called, and told of once when it throws, which harms nobody.
    void callsTheKind_data()
    {
        QTest::addColumn<QByteArray>("achFailing");
        for (const char *szFunctions : {"none", "request", "release", "show", "config", "start", "stop",
                                        "error", "remove", "request release"})
            row(szFunctions, QByteArray(szFunctions));
    }

    void callsTheKind()
    {
        QFETCH(QByteArray, achFailing);
        const Warnings cWarnings;
        const QString strText = "bad \uFFFD text";
        ArithmParamMgr cStore;
        Fake::s_achFailing = achFailing;
        unsigned char achPixels[4] = {1, 2, 3, 4};
        Fake::s_fnPicture = [&](int &nWidth, int &nHeight) {
            nWidth = nHeight = 1;
            return achPixels;
        };
        auto pcInstance = fake(&cStore);
        for (int i = 0; i < 3; ++i) {
            Fake::s_lstCalls.clear();
            pcInstance->start();
            QCOMPARE(pcInstance->execute(), !achFailing.contains("request"));
            pcInstance->stop();
            QCOMPARE(pcInstance->getLastError(), achFailing == "error" ? QString() : strText);
            pcInstance->showConfigWindow(); // its text becomes the configuration
            QCOMPARE(pcInstance->getConfigString(), achFailing == "show" ? QString() : strText);
        }
        pcInstance.reset();
        QCOMPARE(Fake::s_lstCalls.join(','), "start,request RGB,release,stop,error,show,config " +
                                                 (achFailing == "show" ? QString() : strText) + ",remove");
        QCOMPARE(cWarnings.taken().filter("fake failure").size(),
                 achFailing == "none" ? 0 : achFailing.split(' ').size());
    }

private:
    Neighbourhood m_cHere;
};

QTEST_MAIN(TestDataSource)
#include "tst_datasource.moc"
