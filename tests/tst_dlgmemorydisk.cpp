// The dialogs of the memory disks, in a user's hands.

#include <QtTest>

#include <QComboBox>
#include <QProgressBar>
#include <QTableWidget>

#include "MemoryDisk/dlgmemorydiskstatus.h"
#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"
#include "dialoguser.h"

namespace
{
/// Double-clicks a row.
void choose(QWidget &cDialog, const QString &strTable, int nRow)
{
    DialogUser::choose(strTable, nRow)(cDialog);
    auto *pcTable = cDialog.findChild<QTableWidget *>(strTable);
    QTest::mouseDClick(pcTable->viewport(), Qt::LeftButton, Qt::NoModifier,
                       pcTable->visualItemRect(pcTable->item(nRow, 1)).center());
}

DialogUser::Act look(QString &strShown)
{
    return DialogUser::look(strShown, "edtName edtType cmbMemDisk");
}

struct Store : ArithmParamMgr {
    Store()
    {
        getParamDIB(7)->setName("彩色七");
        getParamDIB(3)->setName("彩色三");
        getParamGray8(7)->setName("灰度七");
        getParamGray8(0);
        getParamGray16(8);
    }
};

const DialogUser::Act OK = DialogUser::press("btnOK");
const DialogUser::Act CANCEL = DialogUser::press("btnCancel");
} // namespace

class TestDlgMemoryDisk : public QObject
{
    Q_OBJECT

private slots:
    void makesTheConfig()
    {
        for (const QString strType : {"RGB", "Gray8"}) {
            Store cStore;
            QString strSeen;
            QString strBox;
            const auto fnChoose = [&](QWidget &cDialog) {
                choose(cDialog, "tbl" + strType, 1);
                cDialog.findChild<QComboBox *>("cmbMemDisk")->setCurrentIndex(2);
            };
            const QString strConfig = configure<MemoryDisk>(
                "", &cStore, {OK, DialogUser::read(strBox), fnChoose, look(strSeen), OK});
            QCOMPARE(strConfig,
                     "<MemDisk>2</MemDisk><InputID>7</InputID><InputType>" + strType + "</InputType>");
            QCOMPARE(strBox, "警告: 未选择输入变量. 1\n");

            // Opened again it shows what it made, but for the memory disk, and forgets the type.
            QCOMPARE(configure<MemoryDisk>(strConfig, &cStore, {look(strSeen), OK}),
                     "<MemDisk>0</MemDisk><InputID>7</InputID><InputType></InputType>");
            QCOMPARE(
                strSeen,
                QString("%1|%2|内存盘2|%1|%2|内存盘0|").arg(strType == "RGB" ? "彩色七" : "灰度七", strType));
        }
    }

    void storeDiesMeanwhile()
    {
        auto *pcStore = new Store;
        const auto fnDelete = [&](QWidget &cDialog) {
            delete pcStore;
            choose(cDialog, "tblGray8", 1);
        };
        QCOMPARE(configure<MemoryDisk>("", pcStore, {fnDelete, OK}),
                 "<MemDisk>0</MemDisk><InputID>7</InputID><InputType>Gray8</InputType>");
    }

    void status()
    {
        MemoryDisk &cDisk = *MemoryDisk::getInstance(1);
        unsigned char auchPicture[8] = {};
        for (int nPicture = 0; nPicture < 4; ++nPicture) {
            QVERIFY(cDisk.addDIB(auchPicture, 1, 1));
            QVERIFY(MemoryDisk::getInstance(5)->addGray8(auchPicture, 1, 1));
        }
        QVERIFY(cDisk.addGray8(auchPicture, 1, 1));
        MemoryDisk::DIB *pcRecord = cDisk.requestDIB();

        DlgMemoryDiskStatus cDialog(nullptr);
        cDialog.show();
        const auto bars = [&] {
            QStringList lstText;
            for (const char *szBar : {"pbWaiting0", "pbProcessing0", "pbWaiting1", "pbProcessing1",
                                      "pbWaiting2", "pbProcessing2"}) {
                const auto *pcBar = cDialog.findChild<QProgressBar *>(szBar);
                lstText.append(pcBar->text() + '/' + QString::number(pcBar->maximum()));
            }
            return lstText.join(' ');
        };
        const auto tick = [&] { QMetaObject::invokeMethod(&cDialog, "OnTimer"); };
        QCOMPARE(bars(), "0/6 0/6 0/6 0/6 0/6 0/6");
        QTRY_COMPARE(bars(), "0/6 0/6 3/6 1/6 0/6 0/6");

        DialogUser::set("cmbDataType1=1 cmbMemDisk2=1")(cDialog);
        tick();
        QCOMPARE(bars(), "0/6 0/6 1/6 0/6 3/6 1/6");
        DialogUser::click(cDialog, "btnClear2");
        tick();
        QCOMPARE(bars(), "0/6 0/6 1/6 0/6 0/6 1/6");
        DialogUser::click(cDialog, "btnClear1");
        QCOMPARE(cDisk.getGray8IdleNum(), 6);
        cDisk.releaseDIB(pcRecord);
    }
};

QTEST_MAIN(TestDlgMemoryDisk)
#include "tst_dlgmemorydisk.moc"
