// What holds for every plug-in: its window gives back what it got, and nothing that it is given makes it
// crash, hang or speak of its insides.

#include <algorithm>
#include <functional>

#include <QDir>
#include <QHash>
#include <QMap>
#include <QRegularExpression>

#include <opencv2/imgproc.hpp>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "dialoguser.h"
#include "fixtures/row.h"
#include "fixtures/together.h"
#include "pluginfixture.h"
#include "plugintables/plugintable.h"
#include "tidy.h"

Q_DECLARE_METATYPE(PluginTable)

// All plug-ins that stand beside the executable, driven by nothing but the tables that they export.
namespace
{
using Plugin::Kind;
using Plugin::SettingKind;
/// Values by tag. What is not there has its initial value, and ID 1 or 2 for what is read or written.
using Values = QHash<QString, QString>;

QList<PluginTable> algorithms()
{
    QList<PluginTable> lstTable;
    for (const auto &cInfo : qAsConst(*ArithmFactory::getInstance()->getArithms()))
        lstTable << algorithmTable(fileOfFunction(cInfo.m_pcArithm->m_fnExecute));
    lstTable.erase(std::remove_if(lstTable.begin(), lstTable.end(), std::mem_fn(&PluginTable::isNull)),
                   lstTable.end()); // built in
    return lstTable;
}

QList<PluginTable> dataSources()
{
    QList<PluginTable> lstTable;
    for (const auto *pcInfo : qAsConst(DataSource::getInstance()->m_mapDataSourceInfo)) {
        const PluginTable cTable = dataSourceTable(fileOfFunction(pcInfo->m_fnRequestPicture));
        if (!cTable.isNull())
            lstTable << cTable;
    }
    return lstTable;
}

QString config(const PluginTable &cTable, const Values &hashValue)
{
    QString strConfig;
    const auto fnAdd = [&](const QString &strTag, const QString &strInitial) {
        strConfig += QStringLiteral("<%1>%2</%1>").arg(strTag, hashValue.value(strTag, strInitial));
    };
    for (const PluginSetting &cSetting : cTable.m_lstSetting) {
        const QString strInitial = cSetting.isInput()                           ? QStringLiteral("1")
                                   : cSetting.isOutput()                        ? QStringLiteral("2")
                                   : cSetting.m_eKind == SettingKind::Directory ? OCULINEX_SOURCE_DIR
                                       "/examples/pictures"
                                   : cSetting.m_strFilter.contains(QLatin1String("png"))
                                       ? OCULINEX_SOURCE_DIR "/plugins/baseArithm/TemplateMatch/lamp.png"
                                       : cSetting.m_strInitial;
        fnAdd(cSetting.m_strTag, strInitial);
        if (cSetting.isInput() && hashValue.contains(cSetting.m_strTypeTag))
            fnAdd(cSetting.m_strTypeTag, {});
    }
    return strConfig;
}

/// The values with which a setting counts.
Values inForce(const PluginSetting &cSetting)
{
    return cSetting.m_strWhenTag.isEmpty() ? Values()
                                           : Values{{cSetting.m_strWhenTag, cSetting.m_lstWhenValue.first()}};
}

/// Everything that a plug-in may read, under ID 1; the picture in each kind.
std::unique_ptr<ArithmParamMgr> filledStore(const cv::Mat &cGrey)
{
    auto pcStore = std::make_unique<ArithmParamMgr>();
    if (!cGrey.empty()) {
        cv::Mat cColour;
        cv::cvtColor(cGrey, cColour, cv::COLOR_GRAY2BGR);
        put(pcStore->getParamDIB(1), cColour);
        put(pcStore->getParamGray8(1), cGrey);
        pcStore->getParamGray16(1)->resize(cGrey.cols, cGrey.rows);
    }
    pcStore->getParamPoints(1)->setPoints({{3, 4}});
    pcStore->getParamLines(1)->setLines({{0, 0, 9, 9}});
    pcStore->getParamPolys(1)->setPolys({{{{1, 1}, {9, 1}, {9, 9}}}});
    pcStore->getParamAreas(1)->setAreas({{4, {1, 2, 1, 2}, 1, 1}});
    pcStore->getParamStrings(1)->setStrings({"24 coins"});
    pcStore->getParamDoubles(1)->addDouble(2.5);
    return pcStore;
}

/// Nothing, or commands.
bool isGood(const QString &strResult)
{
    return strResult.isEmpty() || strResult.startsWith("<CMD>");
}

/// Leaves the results of every algorithm in the store, most of them under ID 2; returns the errors.
QStringList runAll(ArithmParamMgr &cStore)
{
    QStringList lstResult;
    for (const PluginTable &cTable : algorithms())
        lstResult << runPlugin(cTable.m_strID, config(cTable, {}), &cStore);
    lstResult.erase(std::remove_if(lstResult.begin(), lstResult.end(), isGood), lstResult.end());
    return lstResult;
}

cv::Mat noise(cv::Size cSize)
{
    cv::Mat cPicture(cSize, CV_8UC1);
    if (!cPicture.empty())
        cv::randu(cPicture, 0, 256);
    return cPicture;
}

/// What an algorithm or a data source says to a configuration.
QString told(const PluginTable &cTable, const QString &strConfig, ArithmParamMgr *pcStore)
{
    if (ArithmFactory::getInstance()->getArithm(cTable.m_strID))
        return runPlugin(cTable.m_strID, strConfig, pcStore);
    const std::unique_ptr<DataSource::DataSourceInstance> pcSource(
        DataSource::getInstance()->m_mapDataSourceInfo[cTable.m_strID]->newInstance(strConfig, pcStore));
    pcSource->setDataType("RGB");
    pcSource->setDataID(1);
    pcSource->start();
    pcSource->execute();
    QString strResult = pcSource->getLastError();
    pcSource->stop();
    return strResult;
}

/// Nothing, commands, or a sentence of the plug-in's own.
bool isProper(const QString &strResult)
{
    static const QRegularExpression s_cSentence("^(<CMD>.*</CMD>|[^\n]*\\.)?$");
    return s_cSentence.match(strResult).hasMatch() && !strResult.contains("OpenCV") &&
           !strResult.contains("Assertion");
}

/// The initial values, all numbers at either end, and each option of each choice.
QList<Values> variants(const PluginTable &cTable)
{
    QList<Values> lstValues{{}, {}, {}};
    for (const PluginSetting &cSetting : cTable.m_lstSetting) {
        if (cSetting.m_eKind == SettingKind::Integer || cSetting.m_eKind == SettingKind::Real) {
            lstValues[1][cSetting.m_strTag] = QString::number(cSetting.m_dMin, 'g', 15);
            lstValues[2][cSetting.m_strTag] = QString::number(cSetting.m_dMax, 'g', 15);
        }
        for (const PluginOption &cOption : cSetting.m_lstOption) {
            lstValues << inForce(cSetting);
            lstValues.last()[cSetting.m_strTag] = cOption.m_strValue;
        }
        for (const Kind eKind : cSetting.m_lstKind)
            if (cSetting.isInput() && !cSetting.m_strTypeTag.isEmpty())
                lstValues << Values{{cSetting.m_strTypeTag, Plugin::kindName(eKind)}};
    }
    return lstValues;
}

/// Values that are none of the setting's.
QStringList nonsense(const PluginSetting &cSetting)
{
    const QString strNoNumber = "abc 12x nan inf -inf 1e999 99999999999999999999 - \u4e09 1,5 0x10";
    const QMap<SettingKind, QString> mapNonsense{
        {SettingKind::Integer, strNoNumber},
        {SettingKind::Real, strNoNumber},
        {SettingKind::Input, strNoNumber + " -1 2.5"},
        {SettingKind::Output, strNoNumber + " -1 2.5"},
        {SettingKind::Flag, strNoNumber + " -1 2"},
        {SettingKind::Choice, "0 Nonsense -1"},
        {SettingKind::Command, "jump:1 skip:far skip: stop 99999999999999999999"},
        {SettingKind::Colour, "red #12345 #gg0000"},
        {SettingKind::ColourRange,
         "abc 1,2,3 0,0,0,180,255,255 0,0,0,10,256,255 -1,0,0,10,255,255 0,0,0,1,1,1,1"},
        {SettingKind::Region, "abc 1,2,3 1,2,0,4 1,2,3,-4 1,2,3,99999999999999999999 1,2,3,4,5"}};
    QStringList lstValue = mapNonsense.value(cSetting.m_eKind).split(' ', Qt::SkipEmptyParts);
    if (cSetting.m_eKind == SettingKind::Integer || cSetting.m_eKind == SettingKind::Real)
        lstValue << QString::number(cSetting.m_dMin - 1, 'g', 15)
                 << QString::number(cSetting.m_dMax + 1, 'g', 15);
    if (cSetting.m_bOdd)
        lstValue << QString::number(cSetting.m_dMin + 1, 'g', 15);
    return lstValue;
}

} // namespace

class TestEveryPlugin : public QObject
{
    Q_OBJECT

private slots:
    void window_data() { rows(algorithms() + dataSources()); }

    /// On a store with real results.
    void window()
    {
        QFETCH(PluginTable, cTable);
        const QString strID = cTable.m_strID;
        const auto pcStore = filledStore(photograph("coins.png"));
        QCOMPARE(runAll(*pcStore), QStringList());
        Arithm *const pcArithm = ArithmFactory::getInstance()->getArithm(strID);
        const auto fnShow = [&](const QString &strConfig, const char *szButton) {
            QString strFault;
            const DialogUser cUser({[&](QWidget &cTop) {
                strFault = Tidy::fault(&cTop);
                DialogUser::click(cTop, szButton);
            }});
            const QString strEdited =
                pcArithm ? pcArithm->showConfigWindow(strConfig, pcStore.get())
                         : DataSource::getInstance()->m_mapDataSourceInfo[strID]->showConfigWindow(strConfig);
            return strFault.isEmpty() ? strEdited : "The window is untidy: " + strFault;
        };
        QString strConfig;
        for (const QString &strGiven : {QString(), config(cTable, {})}) {
            strConfig = fnShow(strGiven, "btnOK");
            QVERIFY2(strConfig.startsWith('<'), qPrintable(strConfig));
        }
        if (pcArithm) {
            const QString strResult = runPlugin(strID, strConfig, pcStore.get());
            QVERIFY2(isGood(strResult), qPrintable(strResult));
        }
        QCOMPARE(fnShow(strConfig, "btnOK"), strConfig);
        QCOMPARE(fnShow(strConfig, "btnCancel"), pcArithm ? QString() : strConfig);
    }

    void oddPictures_data() { rows(algorithms()); }
    void oddPictures()
    {
        QFETCH(PluginTable, cTable);
        const cv::Size acSize[] = {{0, 0}, {1, 1}, {5, 3}, {3, 5}, {1, 500}, {97, 64}};
        for (const cv::Size cSize : acSize)
            for (const Values &hashValue : variants(cTable))
                for (const bool bPlain : {false, true}) {
                    const cv::Mat cPicture = bPlain ? cv::Mat(cSize, CV_8UC1, cv::Scalar(255)) : noise(cSize);
                    const QString strConfig = config(cTable, hashValue);
                    const QString strResult = told(cTable, strConfig, filledStore(cPicture).get());
                    QVERIFY2(isProper(strResult), qPrintable(strConfig + '\n' + strResult));
                }
        const cv::Mat cLarge = noise({4096, 3000});
        const QString strResult = told(cTable, config(cTable, {}), filledStore(cLarge).get());
        QVERIFY2(isProper(strResult), qPrintable(strResult));
    }

    /// Values that are none, and inputs that are not there or of a kind that the plug-in does not read.
    void badSettings_data() { rows(algorithms() + dataSources()); }
    void badSettings()
    {
        QFETCH(PluginTable, cTable);
        const auto pcStore = filledStore(noise({97, 64}));
        for (const PluginSetting &cSetting : cTable.m_lstSetting) {
            Values hashValue = inForce(cSetting);
            const QStringList lstNonsense = nonsense(cSetting);
            // What may pass for a value is looked at only by what comes of it.
            for (const QString &strValue :
                 lstNonsense +
                     QStringList{"", " ", "abc", "/", "-7,-7,3,3", "99999,0,2147483647,2147483647", "<b>"}) {
                hashValue[cSetting.m_strTag] = strValue;
                const QString strResult = told(cTable, config(cTable, hashValue), pcStore.get());
                const QString strComplaint =
                    "Setting " + cSetting.m_strTag + " is \"" + strValue + "\", wanted is ";
                QVERIFY2(isProper(strResult) &&
                             (strResult.startsWith(strComplaint) || !lstNonsense.contains(strValue)),
                         qPrintable(cSetting.m_strTag + " = " + strValue + '\n' + strResult));
            }
            for (const Kind eKind : cSetting.isInput() ? cSetting.m_lstKind : QList<Kind>()) {
                hashValue[cSetting.m_strTag] = "77";
                if (!cSetting.m_strTypeTag.isEmpty())
                    hashValue[cSetting.m_strTypeTag] = Plugin::kindName(eKind);
                const QString strResult = told(cTable, config(cTable, hashValue), pcStore.get());
                QVERIFY2(isProper(strResult) && strResult.startsWith("Input ") && strResult.contains(" 77 "),
                         qPrintable(strResult));
            }
        }
    }

    /// Tasks that run at once share no buffer of a plug-in.
    void inFourTasks()
    {
        const QList<PluginTable> lstSource = dataSources();
        std::atomic<int> nFaults{0};
        together(4, [&](int) {
            for (int nRun = 0; nRun < 2; ++nRun) {
                const auto pcStore = filledStore(photograph("coins.png"));
                nFaults += runAll(*pcStore).size();
                for (const PluginTable &cTable : lstSource)
                    nFaults += !told(cTable, config(cTable, {}), pcStore.get()).isEmpty();
            }
        });
        QVERIFY(!lstSource.isEmpty());
        // None was left out since it could not be loaded.
        const QDir cSources(OCULINEX_SOURCE_DIR "/plugins/baseArithm");
        QCOMPARE(algorithms().size(), cSources.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
        QCOMPARE(nFaults.load(), 0);
    }

private:
    static void rows(const QList<PluginTable> &lstTable)
    {
        QTest::addColumn<PluginTable>("cTable");
        for (const PluginTable &cTable : lstTable)
            row(qPrintable(cTable.m_strID), cTable);
    }
};

QTEST_MAIN(TestEveryPlugin)
#include "tst_everyplugin.moc"
