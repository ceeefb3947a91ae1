#include <QTemporaryDir>
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
overlapping        xaby                     ab     b     -      xy
one marker         a|b|c                    |      |     -      a|b|c
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
        const std::pair<const char *, const char *> acCases[] = {
            {"\r\n  in ner \n", "in ner"}, {"\f\tin\u00a0", "\f\tin\u00a0"}, {" \n\r ", ""}};
        for (const auto &[szText, szTrimmed] : acCases) {
            QString strText = QString::fromUtf8(szText);
            GlobalFunction::trimString(strText);
            QCOMPARE(strText, QString::fromUtf8(szTrimmed));
        }
    }

    void bufferGrows()
    {
        const QPair<int, int> acSizes[] = {{1023, 1024}, {1024, 1536}, {2000, 2304}, {3, 2304}};
        for (const auto &[nText, nBuffer] : acSizes) {
            const QByteArray achText(nText, 'x');
            QCOMPARE(QByteArray(transConfigStr(QString::fromLatin1(achText))), achText);
            QCOMPARE(gnBuffLenForStandAlone, nBuffer);
            QCOMPARE(transConfigStr(QString()), gpchConfigStrForStandAlone);
        }
    }

    /// Texts leave and paths come in the encoding of the locale, but the path to save to in UTF-8; the
    /// built-in algorithms' texts are always UTF-8.
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

        const QTemporaryDir cDir;
        QByteArray achSave = QFile::encodeName(cDir.path()) + "/\xc3\xa9";
        QByteArray achOpen = QFile::encodeName(cDir.path()) + "/\xe9";
        QCOMPARE(QByteArray(saveTasksFile(achSave.data())), QByteArray());
        QCOMPARE(QByteArray(openTasksFile(achOpen.data())), QByteArray());
        QCOMPARE(QByteArray(openTasksFile(achSave.data())), QByteArray("open file failed."));
    }
};

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
