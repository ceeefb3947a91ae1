// The dialogs of the memory disks, in a user's hands.

#include <thread>

#include <QtTest>

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QTabWidget>
#include <QTableWidget>

#include "MemoryDisk/dlgmemorydiskstatus.h"
#include "MemoryDisk/memorydisk.h"
#include "arithmparammgr.h"
#include "datatable.h"
#include "dialoguser.h"

namespace
{
QString configure(const char *szConfig, ArithmParamMgr *pcAPM)
{
    return QString::fromUtf8(MemoryDisk::showConfigWindow(QByteArray(szConfig).data(), pcAPM, true));
}

void choose(QWidget &cDialog, const QString &strTable, int nRow)
{
    auto *pcTable = cDialog.findChild<QTableWidget *>(strTable);
    cDialog.findChild<QTabWidget *>("tabDataInput")->setCurrentWidget(pcTable->parentWidget());
    DialogUser::doubleClick(pcTable, nRow);
}

DialogUser::Act look(QString &strShown)
{
    return DialogUser::look(strShown, "edtName edtType cmbMemDisk");
}

void describe(ArithmParam *pcParam, const char *szName, const char *szDescribe)
{
    pcParam->setName(szName);
    pcParam->setDescribe(szDescribe);
}

struct Store : ArithmParamMgr {
    Store()
    {
        describe(getParamDIB(7), "彩色七", "相机");
        describe(getParamDIB(3), "彩色三", "");
        describe(getParamGray8(7), "灰度七", "阈值之后");
        describe(getParamGray8(0), "零", "");
        describe(getParamGray16(8), "十六位", "");
    }
};
} // namespace

class TestDlgMemoryDisk : public QObject
{
    Q_OBJECT

private slots:
    void offersThePictures()
    {
        Store cStore;
        QString strSeen;
        int nWidth = 0;
        const QString strLong(99, 'W');
        cStore.getParamDIB(3)->setDescribe(strLong);
        DialogUser cUser({[&](QWidget &cDialog) {
                              strSeen += cDialog.windowTitle();
                              nWidth = cDialog.findChild<QTableWidget *>("tblRGB")->columnWidth(1);
                              for (const char *szTable : {"tblRGB", "tblGray8"}) {
                                  auto *pcTable = cDialog.findChild<QTableWidget *>(szTable);
                                  for (int nRow = -1; nRow < pcTable->rowCount(); ++nRow)
                                      for (int nColumn = 0; nColumn < 2; ++nColumn)
                                          strSeen += '|' + (nRow < 0 ? pcTable->horizontalHeaderItem(nColumn)
                                                                     : pcTable->item(nRow, nColumn))
                                                               ->text();
                                  QTest::mouseClick(pcTable->viewport(), Qt::LeftButton, Qt::NoModifier,
                                                    pcTable->visualItemRect(pcTable->item(1, 1)).center());
                              }
                          },
                          DialogUser::press("btnCancel")});
        QCOMPARE(configure("<InputID>7</InputID>", &cStore), "");
        QCOMPARE(strSeen,
                 "写内存盘配置|名称|描述|彩色三|" + strLong + "|彩色七|相机|名称|描述|零||灰度七|阈值之后");
        QVERIFY(nWidth > QApplication::fontMetrics().horizontalAdvance(strLong)); // all can be read
    }

    void makesTheConfig_data()
    {
        addRows("row     strTable  strShown              strType\n"
                "colour  tblRGB    彩色七|RGB|内存盘2|    RGB\n"
                "grey    tblGray8  灰度七|Gray8|内存盘2|  Gray8");
    }
    void makesTheConfig()
    {
        QFETCH(QString, strTable);
        QFETCH(QString, strShown);
        QFETCH(QString, strType);
        Store cStore;
        QString strSeen;
        QString strBox;
        DialogUser cFirst({DialogUser::press("btnOK"), DialogUser::read(strBox),
                           [&](QWidget &cDialog) {
                               choose(cDialog, strTable, 1);
                               cDialog.findChild<QComboBox *>("cmbMemDisk")->setCurrentIndex(2);
                           },
                           look(strSeen), DialogUser::press("btnOK")});
        const QString strConfig = configure("", &cStore);
        QCOMPARE(strConfig, "<MemDisk>2</MemDisk><InputID>7</InputID><InputType>" + strType + "</InputType>");
        QCOMPARE(strSeen, strShown);
        QCOMPARE(strBox, "警告: 未选择输入变量. 1\n");

        // Opened again it shows what it made, but for the memory disk, and forgets the type.
        strSeen.clear();
        DialogUser cAgain({look(strSeen), DialogUser::press("btnOK")});
        QCOMPARE(configure(strConfig.toUtf8(), &cStore),
                 "<MemDisk>0</MemDisk><InputID>7</InputID><InputType></InputType>");
        QCOMPARE(strSeen, strShown.replace("内存盘2", "内存盘0"));

        // The type is shown also where no picture was named.
        strSeen.clear();
        DialogUser cNameless({look(strSeen), DialogUser::press("btnCancel")});
        configure("<InputID></InputID><InputType>Gray8</InputType>", &cStore);
        QCOMPARE(strSeen, "|Gray8|内存盘0|");
    }

    /// Nobody but the dialog may need what is gone, and nothing opens where no window can.
    void survives()
    {
        auto *pcStore = new Store;
        DialogUser cUser({[&](QWidget &cDialog) {
            delete pcStore;
            choose(cDialog, "tblGray8", 1);
            DialogUser::click(cDialog, "btnOK");
        }});
        QCOMPARE(configure("", pcStore),
                 "<MemDisk>0</MemDisk><InputID>7</InputID><InputType>Gray8</InputType>");

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("DlgMemoryDiskConfig opens only"));
        std::thread([] { configure("", nullptr); }).join();
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
        const auto combo = [&](const char *szName) { return cDialog.findChild<QComboBox *>(szName); };
        const auto bars = [&] {
            QStringList lstText;
            for (const char *szBar : {"pbWaiting0", "pbProcessing0", "pbWaiting1", "pbProcessing1",
                                      "pbWaiting2", "pbProcessing2"}) {
                const auto *pcBar = cDialog.findChild<QProgressBar *>(szBar);
                lstText.append(pcBar->text() + '/' + QString::number(pcBar->maximum()));
            }
            return lstText.join(' ');
        };
        QTimer *pcTimer = cDialog.findChild<QTimer *>();
        const auto tick = [&] { QMetaObject::invokeMethod(&cDialog, "OnTimer"); };
        QCOMPARE(bars(), "0/6 0/6 0/6 0/6 0/6 0/6");
        QTRY_COMPARE(bars(), "0/6 0/6 3/6 1/6 0/6 0/6");

        combo("cmbDataType1")->setCurrentText("Gray8");
        combo("cmbMemDisk2")->setCurrentText("MD1");
        tick();
        QCOMPARE(bars(), "0/6 0/6 1/6 0/6 3/6 1/6");
        DialogUser::click(cDialog, "btnClear2");
        tick();
        QCOMPARE(bars(), "0/6 0/6 1/6 0/6 0/6 1/6");
        DialogUser::click(cDialog, "btnClear1");
        QCOMPARE(cDisk.getGray8IdleNum(), 6);
        cDisk.releaseDIB(pcRecord);

        // A group that shows none empties the last memory disk.
        combo("cmbDataType0")->setCurrentText("Gray8");
        combo("cmbMemDisk0")->setCurrentText("无");
        QVERIFY(!combo("cmbDataType0")->isEnabled());
        tick();
        QCOMPARE(bars(), "0/6 0/6 0/6 0/6 0/6 0/6");
        DialogUser::click(cDialog, "btnClear0");
        QCOMPARE(MemoryDisk::getInstance(5)->getGray8IdleNum(), 6);

        combo("cmbInteval")->setCurrentIndex(0); // not connected
        QCOMPARE(pcTimer->interval(), 1000);
        QMetaObject::invokeMethod(&cDialog, "on_comboBox_currentIndexChanged", Q_ARG(int, 2));
        QCOMPARE(pcTimer->interval(), 300);
    }
};

QTEST_MAIN(TestDlgMemoryDisk)
#include "tst_dlgmemorydisk.moc"
