#include <QTextCodec>
#include <QtTest>

#include "Drawing/drawing.h"
#include "LoadFile/loading.h"
#include "MemoryDisk/memorydisk.h"
#include "OculinexQTStandAloneInQt.h"
#include "SaveFile/saving.h"
#include "datatable.h"
#include "globalfunction.h"

/// Tagged text, and the buffer in which texts leave the library.
class TestText : public QObject
{
    Q_OBJECT

private slots:
    void body_data()
    {
        addRows(R"(
case               text                     begin  end   body   rest
other case         lead<X>v</X>             <x>    </x>  v      lead
no end             a<X>b                    <X>    </X>  -      a<X>b
stray end first    </X><X>v</X>             <X>    </X>  -      </X><X>v</X>
no nesting         <X>a<X>b</X>c</X>        <X>    </X>  a<X>b  c</X>
empty markers      a<X>v</X>                -      -     -      a<X>v</X>
)");
        QTest::newRow("blanks stay, letters fold") << QString("<K>\n v </K>") << QString("<\u212a>")
                                                   << QString("</\u212a>") << QString("\n v ") << QString();
    }

    void body()
    {
        QFETCH(QString, text);
        QFETCH(QString, begin);
        QFETCH(QString, end);
        QTEST(GlobalFunction::getBody(text, begin, end), "body");
        QTEST(GlobalFunction::getAndRemoveBody(text, begin, end), "body");
        QTEST(text, "rest");
    }

    void trim()
    {
        QString strText = "\r\n \tin ner \u00a0\n";
        GlobalFunction::trimString(strText);
        QCOMPARE(strText, QString("\tin ner \u00a0"));
    }

    void bufferGrows()
    {
        for (const int nText : {1023, 1024, 2000, 3}) {
            const QByteArray achText(nText, 'x');
            QCOMPARE(QByteArray(transConfigStr(QString::fromLatin1(achText))), achText);
        }
        QCOMPARE(transConfigStr(QString()), gpchConfigStrForStandAlone);
    }

    /// Texts leave in the encoding of the locale; the built-in algorithms' texts are always UTF-8.
    void localEncoding()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const auto fnBack = qScopeGuard([] { QTextCodec::setCodecForLocale(nullptr); });
        QCOMPARE(QByteArray(transConfigStr("é中")), QByteArray("\xe9?"));
        QString strText = "é";
        for (const auto fnText : {MemoryDisk::transConfigStr, Drawing::transConfigStr, Saving::transConfigStr,
                                  Loading::transConfigStr})
            QCOMPARE(QByteArray(fnText(strText)), QByteArray("\xc3\xa9"));
        char achText[8] = {};
        FuncHaveErrorMessage(strText);
        QCOMPARE(getErrMsg(achText, sizeof achText), 0);
        QCOMPARE(QByteArray(achText), QByteArray("\xe9"));
    }
};

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
