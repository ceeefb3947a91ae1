#ifndef DLGMEMORYDISKSTATUS_H
#define DLGMEMORYDISKSTATUS_H

#include <QDialog>

#include "oculinexqtstandalone_export.h"

class QTimer;

namespace Ui
{
class DlgMemoryDiskStatus;
}

/// Shows how many pictures wait in up to three memory disks and how many are with consumers, once a
/// second, and empties their queues on request. It stays on top of the other windows.
///
/// A host makes it on its GUI thread, shows it and owns it.
class OCULINEXQTSTANDALONE_EXPORT DlgMemoryDiskStatus : public QDialog
{
    Q_OBJECT

public:
    explicit DlgMemoryDiskStatus(QWidget *pcParent = nullptr);
    ~DlgMemoryDiskStatus() override;

public Q_SLOTS:
    void OnTimer();
    void on_cmbMemDisk0_currentIndexChanged(int nIndex);
    void on_cmbMemDisk1_currentIndexChanged(int nIndex);
    void on_cmbMemDisk2_currentIndexChanged(int nIndex);
    void on_cmbDataType0_currentIndexChanged(int nIndex);
    void on_cmbDataType1_currentIndexChanged(int nIndex);
    void on_cmbDataType2_currentIndexChanged(int nIndex);
    void on_btnClear0_clicked();
    void on_btnClear1_clicked();
    void on_btnClear2_clicked();
    /// Refreshes every (nIndex + 1) * 100 ms. The selector of the interval has another name, so that
    /// nothing calls this and the interval stays.
    void on_comboBox_currentIndexChanged(int nIndex);

private:
    static constexpr int GROUP_NUM = 3;
    struct Group;

    Group group(int nGroup) const;
    void connectSelectors();
    void selectDisk(int nGroup, int nIndex);
    void empty(int nGroup);

public:
    Ui::DlgMemoryDiskStatus *ui;
    QTimer *m_pcTimer;
    int m_anDataType[GROUP_NUM] = {0, 0, 0}; ///< 0 colour, 1 grey
    int m_anMemDisk[GROUP_NUM] = {0, 1, 2};  ///< 0 to 5, or 6 for none
};

#endif
