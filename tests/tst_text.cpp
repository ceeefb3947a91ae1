#include <QtTest>

#include "OculinexQTStandAloneInQt.h"
#include "globalfunction.h"

/// Tagged text, and the buffer in which texts leave the library.
class TestText : public QObject
{
    Q_OBJECT

private slots:
    void body_data();
    void body();
    void trim_data();
    void trim();
    void bufferGrows();
    void bufferSurvivesItsOwner();
};

void TestText::body_data()
{
    QTest::addColumn<QString>("strText");
    QTest::addColumn<QString>("strBegin");
    QTest::addColumn<QString>("strEnd");
    QTest::addColumn<QString>("strBody");
    QTest::addColumn<QString>("strRest");

    const auto fnRow = [](const char *szName, const char *szText, const char *szBody, const char *szRest,
                          const char *szBegin = "<X>", const char *szEnd = "</X>") {
        QTest::newRow(szName) << QString::fromUtf8(szText) << QString(szBegin) << QString(szEnd)
                              << QString::fromUtf8(szBody) << QString::fromUtf8(szRest);
    };
    fnRow("framed", "lead<X> 值 </X>trail", " 值 ", "leadtrail");
    fnRow("other case", "lead<X>v</X>", "v", "lead", "<x>", "</x>");
    fnRow("whole text", "<X>v</X>", "v", "");
    fnRow("nothing between", "a<X></X>b", "", "ab");
    fnRow("no begin", "a</X>b", "", "a</X>b");
    fnRow("no end", "a<X>b", "", "a<X>b");
    fnRow("stray end first", "</X><X>v</X>", "", "</X><X>v</X>");
    fnRow("no nesting", "<X>a<X>b</X>c</X>", "a<X>b", "c</X>");
    fnRow("first of two", "<X>a</X><X>b</X>", "a", "<X>b</X>");
    fnRow("empty markers", "a<X>v</X>", "", "a<X>v</X>", "", "");
    fnRow("one marker", "a|b|c", "", "a|b|c", "|", "|");
    fnRow("overlapping", "xaby", "", "xy", "ab", "b");
    fnRow("empty text", "", "", "");
    fnRow("folded by Unicode", "<K>v</K>", "v", "", "<\u212a>", "</\u212a>");
}

void TestText::body()
{
    QFETCH(QString, strText);
    QFETCH(QString, strBegin);
    QFETCH(QString, strEnd);
    QFETCH(QString, strBody);
    QFETCH(QString, strRest);
    QCOMPARE(GlobalFunction::getBody(strText, strBegin, strEnd), strBody);
    QCOMPARE(GlobalFunction::getAndRemoveBody(strText, strBegin, strEnd), strBody);
    QCOMPARE(strText, strRest);
}

void TestText::trim_data()
{
    QTest::addColumn<QString>("strText");
    QTest::addColumn<QString>("strTrimmed");
    QTest::newRow("blanks") << "\r\n  in ner \n"
                            << "in ner";
    QTest::newRow("tabs stay") << "\tin\t"
                               << "\tin\t";
    QTest::newRow("other spaces stay") << "\f in\u00a0"
                                       << "\f in\u00a0";
    QTest::newRow("only blanks") << " \n\r "
                                 << "";
    QTest::newRow("empty") << ""
                           << "";
}

void TestText::trim()
{
    QFETCH(QString, strText);
    QFETCH(QString, strTrimmed);
    GlobalFunction::trimString(strText);
    QCOMPARE(strText, strTrimmed);
}

void TestText::bufferGrows()
{
    const QPair<int, int> acSizes[] = {{1023, 1024}, {1024, 1536}, {2000, 2304}, {3, 2304}};
    for (const auto &[nText, nBuffer] : acSizes) {
        const QByteArray achText(nText, 'x');
        QCOMPARE(QByteArray(transConfigStr(QString::fromLatin1(achText))), achText);
        QCOMPARE(gnBuffLenForStandAlone, nBuffer);
        QCOMPARE(transConfigStr(QString()), gpchConfigStrForStandAlone);
    }
    QCOMPARE(transConfigStr(QStringLiteral("中文 é")), QStringLiteral("中文 é").toLocal8Bit().constData());
}

/// A host can reach the buffer's length and the buffer.
void TestText::bufferSurvivesItsOwner()
{
    for (const int nLength : {0, 1, -7}) {
        gnBuffLenForStandAlone = nLength;
        QCOMPARE(transConfigStr(QStringLiteral("text")), "text");
        QCOMPARE(gnBuffLenForStandAlone, 1024);
    }
    delete[] std::exchange(gpchConfigStrForStandAlone, nullptr);
    QCOMPARE(transConfigStr(QStringLiteral("text")), "text");
}

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
