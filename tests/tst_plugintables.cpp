// What the shipped plug-ins tell hosts about their settings.

#include <QtTest>

#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithmregister.h"
#include "plugintables/plugintable.h"

using Plugin::Kind;
using Plugin::SettingKind;

class TestPluginTables : public QObject
{
    Q_OBJECT

private slots:
    void everyAlgorithm();
    void settings();
    void noTable();

private:
    static PluginTable table(const QString &strID)
    {
        return algorithmTable(fileOfFunction(ArithmMgr::getInstance()->getArithm(strID)->m_fnExecute));
    }
    static PluginSetting setting(const PluginTable &cTable, const QString &strTag)
    {
        for (const PluginSetting &cSetting : cTable.m_lstSetting)
            if (cSetting.m_strTag == strTag)
                return cSetting;
        return {};
    }
};

void TestPluginTables::everyAlgorithm()
{
    int nTables = 0;
    for (const ArithmFactory::ArithmInfo &cInfo : qAsConst(*ArithmFactory::getInstance()->getArithms())) {
        const QString strFile = fileOfFunction(cInfo.m_pcArithm->m_fnExecute);
        const PluginTable cTable = algorithmTable(strFile);
        if (!strFile.endsWith(".so"))
            continue; // built in
        ++nTables;
        QCOMPARE(cTable.m_strID, cInfo.m_pcArithm->getID());
        QCOMPARE(cTable.m_strClass, cInfo.m_strClass);
        QCOMPARE(cTable.m_strName, cInfo.m_strName);
        QVERIFY2(!cTable.m_cHelp.m_strChinese.isEmpty() && !cTable.m_cHelp.m_strEnglish.isEmpty(),
                 qPrintable(strFile));
        for (const PluginSetting &cSetting : cTable.m_lstSetting)
            QVERIFY2(!cSetting.m_cCaption.m_strChinese.isEmpty() &&
                         (cSetting.isInput() || cSetting.isOutput()) == !cSetting.m_lstKind.isEmpty(),
                     qPrintable(strFile + ' ' + cSetting.m_strTag));
    }
    QVERIFY(nTables >= 4);
}

void TestPluginTables::settings()
{
    const PluginTable cBlur = table("OCX_Blur");
    const PluginSetting cInput = setting(cBlur, "InputID");
    QVERIFY(cInput.isInput());
    QCOMPARE(cInput.m_lstKind, (QList<Kind>{Kind::Gray8, Kind::DIB}));
    QCOMPARE(cInput.m_strTypeTag, QString("InputType"));
    const PluginSetting cOutput = setting(cBlur, "OutputID");
    QVERIFY(cOutput.isOutput());
    QCOMPARE(cOutput.m_lstKind, cInput.m_lstKind);
    QCOMPARE(cOutput.m_strName, QString("平滑图"));

    const PluginSetting cSize = setting(cBlur, "Size");
    QCOMPARE(cSize.m_eKind, SettingKind::Integer);
    QVERIFY(cSize.m_bOdd);
    QCOMPARE(cSize.m_dMin, 1.0);
    QCOMPARE(cSize.m_dMax, 255.0);
    QCOMPARE(cSize.m_strInitial, QString("5"));
    const PluginSetting cSigma = setting(cBlur, "Sigma");
    QCOMPARE(cSigma.m_eKind, SettingKind::Real);
    QCOMPARE(cSigma.m_cUnit.m_strEnglish, QString("pixels"));

    const PluginSetting cMethod = setting(cBlur, "Method");
    QCOMPARE(cMethod.m_eKind, SettingKind::Choice);
    QCOMPARE(cMethod.m_strInitial, QString("Gaussian"));
    QCOMPARE(cMethod.m_lstOption.size(), 3);
    QCOMPARE(cMethod.m_lstOption[2].m_strValue, QString("Median"));
    QVERIFY(!cMethod.m_lstOption[2].m_cCaption.m_strChinese.isEmpty());

    const PluginSetting cBlock = setting(table("OCX_Threshold"), "Block");
    QCOMPARE(cBlock.m_strWhenTag, QString("Method"));
    QCOMPARE(cBlock.m_lstWhenValue, QStringList{"Adaptive"});
    QCOMPARE(setting(table("OCX_Compare"), "UpperLimit").m_lstWhenValue, (QStringList{"Between", "Outside"}));
    QCOMPARE(setting(table("OCX_Blobs"), "AreasID").m_strPrefix, QString("Areas"));
    QCOMPARE(setting(table("OCX_Blobs"), "Label").m_strInitial, QString("objects"));
}

void TestPluginTables::noTable()
{
    QVERIFY(table("KQ_Drawing").isNull());
    QVERIFY(algorithmTable("").isNull());
    QVERIFY(algorithmTable("/no/such.so").isNull());
    QVERIFY(dataSourceTable(OCULINEX_BINARY_DIR "/bin/DataSource/PictureFolder.so").isNull()); // not loaded
}

QTEST_GUILESS_MAIN(TestPluginTables)
#include "tst_plugintables.moc"
