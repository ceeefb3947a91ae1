// The dialogs of the saving and the loading step, in a user's hands.

#include <QtTest>

#include <QFileDialog>
#include <QTemporaryDir>

#include "LoadFile/dlgloadfile.h"
#include "LoadFile/loading.h"
#include "SaveFile/dlgsavefile.h"
#include "SaveFile/saving.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "dialoguser.h"
#include "taskMgr/taskMgr.h"

namespace
{
const auto save = configure<Saving>;
const auto load = configure<Loading>;

/// Chooses in a file dialog; no path closes it.
DialogUser::Act browse(const QString &strPath)
{
    return [strPath](QWidget &cTop) {
        auto *pcDialog = qobject_cast<QFileDialog *>(&cTop);
        if (strPath.isEmpty())
            return pcDialog->close(), void();
        pcDialog->findChild<QLineEdit *>("fileNameEdit")->setText(strPath);
        static_cast<QDialog *>(pcDialog)->accept();
    };
}

/// The pictures of a store as texts, "colour 3 name description|grey …".
QString pictures(ArithmParamMgr &cStore)
{
    QStringList lstText;
    for (const ArithmParamMgr::Entry &cEntry : cStore.snapshot())
        lstText.append(QString("%1 %2 %3 %4")
                           .arg(cEntry.m_eKind == ArithmParamMgr::Kind::DIB ? "colour" : "grey")
                           .arg(cEntry.m_nID)
                           .arg(cEntry.m_strName, cEntry.m_strDescribe));
    return lstText.join('|');
}

const DialogUser::Act OK = DialogUser::press("btnOK");
const DialogUser::Act CANCEL = DialogUser::press("btnCancel");
const DialogUser::Act BROWSE = DialogUser::press("btnBrowser");
} // namespace

class TestDlgImageFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_cDir;

    QString path(const QString &strName) const { return m_cDir.filePath(strName); }
    QString loading(const char *szFile, int nType, int nID) const
    {
        return QString("<FilePath>%1</FilePath><OutputName>图</OutputName><Describe>描述</Describe>"
                       "<BeGray>%2</BeGray><PicType>%2</PicType><PicID>%3</PicID>")
            .arg(path(szFile))
            .arg(nType)
            .arg(nID);
    }

private slots:
    void initTestCase()
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        QVERIFY(QImage(4, 3, QImage::Format_RGB888).save(path("图.png")));
    }

    void savesWhatIsSet_data()
    {
        addRows(R"(
case          set                                                     config
as it opens   edtBasePath=/d                                          <BasePath>/d</BasePath><IsStringID>0</IsStringID><Separator>-</Separator><Identity>0</Identity><Format>0</Format><Exg>0</Exg><Wnd>0</Wnd>
name          edtBasePath=/d edtStringID=图 cmbIdentity=1 cmbFormat=1  <BasePath>/d</BasePath><StringID>图</StringID><IsStringID>0</IsStringID><Separator>-</Separator><Identity>1</Identity><Format>1</Format><Exg>0</Exg><Wnd>0</Wnd>
stored name   edtBasePath=/d edtStringID=5 chkIsStringID=1 edtSeparator=_ cmbIdentity=2 cmbFormat=2 cbExchange=1  <BasePath>/d</BasePath><StringID>5</StringID><IsStringID>1</IsStringID><Separator>_</Separator><Identity>2</Identity><Format>2</Format><Exg>1</Exg><Wnd>0</Wnd>
picture       edtBasePath=/d edtSeparator= cmbWnd=4 edtPicType=Gray edtSelectedPicID=4  <BasePath>/d</BasePath><IsStringID>0</IsStringID><Identity>0</Identity><Format>0</Format><Exg>0</Exg><Wnd>4</Wnd><PicType>Gray</PicType><PicID>4</PicID>
)");
    }
    void savesWhatIsSet()
    {
        QFETCH(QString, set);
        QFETCH(QString, config);
        ArithmParamMgr cStore;
        QString strBox;
        const auto fnSet = DialogUser::set(set);
        QCOMPARE(save(QString(), &cStore, {OK, DialogUser::read(strBox), fnSet, OK}), config);
        QCOMPARE(strBox, "警告: 未选中基本路径. 1\n");
        QCOMPARE(save(config, &cStore, {DialogUser::type(Qt::Key_Return)}), config);
        QCOMPARE(save(config, &cStore, {fnSet, CANCEL}), QString());
    }

    void savesAPictureOfTheStore()
    {
        ArithmParamMgr cStore;
        cStore.getParamDIB(6);
        cStore.getParamGray8(9);
        cStore.getParamGray8(4);
        QString strBox;
        QString strShown;
        const auto fnLook = DialogUser::look(strShown, "edtPicType edtSelectedPicID");
        const auto fnSelect = DialogUser::press("btnSelectPic");
        const auto fnRead = DialogUser::read(strBox);
        // Without an ID it is refused, and so it is with nothing selected.
        std::list<DialogUser::Act> lstAct{
            DialogUser::set("edtBasePath=/d cmbWnd=4"), OK, fnRead, fnSelect, OK, fnLook, OK, fnRead};
        for (const auto &[szTable, nRow, fnLeave] :
             {std::tuple("tblGray8", 0, OK), {"tblGray8", 1, CANCEL}, {"tblRGB", 0, OK}})
            lstAct.insert(lstAct.end(), {fnSelect, DialogUser::choose(szTable, nRow), fnLeave, fnLook});
        lstAct.push_back(OK);
        const QString strConfig = save(QString(), &cStore, lstAct);
        QCOMPARE(strShown, "RGB|-1|Gray|4|Gray|4|RGB|6|");
        QCOMPARE(strBox, "警告: 错误的图像ID. 1\n警告: 错误的图像ID. 1\n");
        QVERIFY(strConfig.endsWith("<Wnd>4</Wnd><PicType>RGB</PicType><PicID>6</PicID>"));
    }

    void goesMeanwhile()
    {
        ArithmParamMgr cStore;
        for (const char *szButton : {"btnSelectPic", "btnBrowser", "btnOK"}) // a dialog, a file's and a box
            ::goesMeanwhile(new DlgSaveFile("<Wnd>4</Wnd>", &cStore, new QWidget), szButton);
        ::goesMeanwhile(new DlgLoadFile(QString(), &cStore, new QWidget), "btnBrowser");
    }

    void showsTheStringsAndBrowses()
    {
        ArithmParamMgr cStore;
        cStore.getParamStrings(12)->setName("批号");
        cStore.getParamStrings(12)->setStrings({"一", "二"});
        cStore.getParamStrings(5)->setDescribe("描述"); // is not shown
        QString strShown;
        const auto fnLook = [&](QWidget &cDialog) {
            const auto *pcTable = cDialog.findChild<QTableWidget *>();
            for (int nCell = 0; nCell < 2 * 3; ++nCell)
                strShown += pcTable->item(nCell / 3, nCell % 3)->text() + '|';
        };
        QCOMPARE(save("<BasePath>/d</BasePath>", &cStore,
                      {fnLook, BROWSE, browse(m_cDir.path()), BROWSE, browse(QString()),
                       DialogUser::look(strShown, "edtBasePath"), CANCEL}),
                 QString());
        QCOMPARE(strShown, "|5||批号|12|一|" + m_cDir.path() + '|');
    }

    void makesTheOutputOfALoad()
    {
        ArithmParamMgr cStore;
        QString strBox;
        const auto fnRead = DialogUser::read(strBox);
        QString strConfig = load(QString(), &cStore,
                                 {OK, fnRead, BROWSE, browse(path("图.png")), OK, fnRead,
                                  DialogUser::set("edtOutputName=图 edtPicDescribe=描述"), OK});
        QCOMPARE(strConfig, loading("图.png", 0, 1));
        QCOMPARE(strBox, "警告: 未选中图片. 1\n警告: 未定义输出名称. 1\n");
        QCOMPARE(pictures(cStore), "colour 1 图 描述");

        QCOMPARE(load(strConfig, &cStore, {DialogUser::type(Qt::Key_Return)}), strConfig);
        QCOMPARE(pictures(cStore), "colour 1 图 描述");

        // Another kind is another picture, under an ID that stands apart from those of its own kind.
        cStore.getParamGray8(8);
        strConfig = load(strConfig, &cStore, {DialogUser::set("rbGray=1"), OK});
        QCOMPARE(strConfig, loading("图.png", 1, 9));
        QCOMPARE(pictures(cStore), "grey 8  |grey 9 图 描述");
        QCOMPARE(load(strConfig, &cStore, {DialogUser::set("rbRGB=1"), OK}), loading("图.png", 0, 2));
        QCOMPARE(pictures(cStore), "colour 2 图 描述|grey 8  ");
    }

    /// What the step could not read, though Qt can, is refused, also when the dialog opens with it.
    void refusesFiles()
    {
        QFile cFile(path("drawing.svg"));
        QVERIFY(cFile.open(QIODevice::WriteOnly));
        cFile.write("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
        cFile.close();
        ArithmParamMgr cStore;
        QString strBox;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot load .*"));
        const auto fnRead = DialogUser::read(strBox);
        QCOMPARE(load(loading("drawing.svg", 0, 3), &cStore, {fnRead, OK, fnRead, CANCEL}), QString());
        QCOMPARE(strBox, "警告: 不支持的文件格式. 1\n警告: 未选中图片. 1\n");
        QCOMPARE(pictures(cStore), QString());
    }

    /// The host may start the task while the dialog is open: its steps have the picture in hand.
    void taskIsStartedMeanwhile()
    {
        TaskInfo cTask("t", nullptr);
        cTask.fromString("<-TaskItem-><-MaxExeTimes->-1</-MaxExeTimes-><-ArithmID->KQ_Loading</-ArithmID->"
                         "<-OptionStr->" +
                         loading("图.png", 0, 1) + "</-OptionStr-></-TaskItem->");
        const ParamDIB *pcPicture = cTask.m_pcAPM->getParamDIB(1);
        DialogUser cUser({[&](QWidget &) { cTask.m_bRunning = true; }, DialogUser::set("rbGray=1"), OK});
        cTask.showConfigWindow(0);
        cTask.m_bRunning = false;
        QCOMPARE(cTask.m_pcAPM->requestParamDIBMap()->value(1), pcPicture);
        QCOMPARE(cTask.m_lstArithm.at(0).m_strOptionStr, loading("图.png", 0, 1));
    }
};

QTEST_MAIN(TestDlgImageFiles)
#include "tst_dlgimagefiles.moc"
