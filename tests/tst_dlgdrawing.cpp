// The dialog of the drawing step, in a user's hands.

#include <thread>

#include <QtTest>

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QPushButton>

#include "Drawing/dlgdrawingconfig.h"
#include "Drawing/drawing.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "dialoguser.h"

namespace
{
const QStringList TABLES = {"tblRGB",   "tblGray8", "tblGray16", "tblPoints",
                            "tblLines", "tblPolys", "tblAreas",  "tblStrings"};

/// Parameters 0, 3 and 7 of each kind, in the rows 0 to 2.
struct Store : ArithmParamMgr {
    Store()
    {
        for (const int nID : {7, 0, 3}) {
            ArithmParam *const apcParam[] = {getParamDIB(nID),    getParamGray8(nID),  getParamGray16(nID),
                                             getParamPoints(nID), getParamLines(nID),  getParamPolys(nID),
                                             getParamAreas(nID),  getParamStrings(nID)};
            for (int nType = 0; nType < TABLES.size(); ++nType) {
                apcParam[nType]->setName(TABLES[nType] + QString::number(nID));
                apcParam[nType]->setDescribe("描述" + TABLES[nType]);
            }
        }
    }
};

const auto edit = configure<Drawing>;

QString config(int nType, int nID, const QString &strSettings)
{
    return QString("<DataType>%1</DataType><DataID>%2</DataID><Config>%3</Config>")
        .arg(QString::number(nType), QString::number(nID), strSettings);
}

DialogUser::Act look(QString &strShown)
{
    return DialogUser::look(strShown, "tabDataType cbDataType edtName edtDescribe");
}

DialogUser::Act pick(const QString &strColour)
{
    return [strColour](QWidget &cTop) {
        auto *pcDialog = qobject_cast<QColorDialog *>(&cTop);
        pcDialog->setCurrentColor(QColor(strColour));
        pcDialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    };
}

const DialogUser::Act SELECT = DialogUser::press("btnSelectElement");
const DialogUser::Act OK = DialogUser::press("btnOK");
const DialogUser::Act CANCEL = DialogUser::press("btnCancel");
} // namespace

class TestDlgDrawing : public QObject
{
    Q_OBJECT

private slots:
    void makesTheConfig_data()
    {
        addRows(R"(
kind            type  set                                                           colour                  settings
colour          0     cbScaleModeRGB=3 cbPosRGB=1                                   -                       <Scale>3</Scale><Pos>1</Pos>
grey overlay    1     rbDrawModeLappedGray8=1 cbLappedTypeGray8=1 cbScaleModeGray8=2 cbPosGray8=1  -  <Scale>2</Scale><Pos>1</Pos><DrawMode><Lapped>1</Lapped><Val>1</Val></DrawMode>
grey mask       1     rbDrawModeMaskGray8=1 cbMaskValGray8=1 cbMaskColorGray8=2     -                       <Scale>0</Scale><Pos>0</Pos><DrawMode><Mask>1,2</Mask><Val>2</Val></DrawMode>
16 bit          2     cbScaleModeGray16=1 cbPosGray16=1                             -                       <Scale>1</Scale><Pos>1</Pos><DrawMode><Val>0</Val></DrawMode>
points          3     cbSizePoints=2                                                btnColorPoints=#ff0000  <Size>2</Size><Color>-65536</Color>
lines           4     cbSizeLines=8 cbDspLengthLines=1                              btnColorLines=#00ff80   <Size>8</Size><DspLen>1</DspLen><Color>-16711808</Color>
polygons        5     cbSizePolys=3 cbDspAreaPolys=1                                btnColorPolys=#0000ff   <BorderSize>3</BorderSize><BorderColor>-16776961</BorderColor><DspArea>1</DspArea>
areas           6     cbDspAreaAreas=1                                              btnColorAreas=#ffffff   <DspArea>1</DspArea><Color>-1</Color>
strings         7     edtPosX=-4 edtPosY=x edtFontSize=2                            btnColorStrings=#010203  <Color>-16711165</Color><Pos>-4,0</Pos><FontSize>5</FontSize>
)");
    }
    void makesTheConfig()
    {
        QFETCH(QString, type);
        QFETCH(QString, set);
        QFETCH(QString, colour);
        QFETCH(QString, settings);
        const int nType = type.toInt();
        Store cStore;
        std::list<DialogUser::Act> lstAct = {DialogUser::choose(TABLES[nType], 2), DialogUser::set(set)};
        const QByteArray achButton = colour.section('=', 0, 0).toUtf8();
        if (!colour.isEmpty())
            lstAct.insert(lstAct.end(), {DialogUser::press(achButton), pick(colour.section('=', 1))});
        lstAct.insert(lstAct.end(), {SELECT, DialogUser::type(Qt::Key_Return)});
        const QString strConfig = edit(QString(), &cStore, lstAct);
        QCOMPARE(strConfig, config(nType, 7, settings));

        // Opened again it shows what it made, and makes it again out of what it shows.
        QString strShown;
        QCOMPARE(edit(strConfig, &cStore, {look(strShown), OK}), strConfig);
        QCOMPARE(strShown, QString("%1|%1|%2|描述tbl%1|").arg(TABLES[nType].mid(3), TABLES[nType] + '7'));
        QCOMPARE(edit(strConfig, &cStore, {SELECT, OK}), strConfig);
    }

    void takesWhatWasSelectedLast()
    {
        Store cStore;
        QString strBoxes;
        const auto fnRead = DialogUser::read(strBoxes);
        const QString strConfig =
            edit(QString(), &cStore,
                 {OK, fnRead, DialogUser::choose("tblPoints", 1), SELECT, DialogUser::choose("tblRGB", 1),
                  DialogUser::set("cbScaleModeRGB=1"), SELECT, DialogUser::set("cbScaleModeRGB=3"),
                  DialogUser::choose("tblGray8", 2), OK});
        QCOMPARE(strConfig, config(0, 3, "<Scale>1</Scale><Pos>0</Pos>"));
        QCOMPARE(edit(strConfig, &cStore, {DialogUser::choose("tblLines", 0), SELECT, OK, fnRead}),
                 QString());
        QCOMPARE(strBoxes, "警告: 未选中绘制对象. 1\n警告: 所选择的数据对象不存在! 1\n");
    }

    void goesMeanwhile()
    {
        Store cStore;
        for (const char *szButton : {"btnOK", "btnColorLines"})
            ::goesMeanwhile(new DlgDrawingConfig(config(4, 0, QString()), &cStore, new QWidget), szButton);
    }

    /// The store may die while the dialog is open, and nothing opens where no window can.
    void survives()
    {
        auto *pcStore = new Store;
        const auto fnDelete = [&](QWidget &) { delete pcStore; };
        QCOMPARE(edit(QString(), pcStore, {fnDelete, DialogUser::choose("tblAreas", 2), SELECT, OK}),
                 config(6, 7, "<DspArea>0</DspArea><Color>-16777216</Color>"));
        QCOMPARE(edit(config(3, 3, "x"), nullptr, {SELECT, CANCEL}), QString());
        edit(config(9, 3, "x"), nullptr, {SELECT, CANCEL}); // no such type

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("DlgDrawingConfig opens only"));
        std::thread([] { Drawing::showConfigWindow(nullptr, nullptr, true); }).join();
    }
};

QTEST_MAIN(TestDlgDrawing)
#include "tst_dlgdrawing.moc"
