#include "memorydiskdock.h"

#include "MemoryDisk/dlgmemorydiskstatus.h"

MemoryDiskDock::MemoryDiskDock(QWidget *pcParent) : QDockWidget(tr("Memory disks"), pcParent)
{
    setObjectName(QStringLiteral("memoryDisks"));
    auto *const pcStatus = new DlgMemoryDiskStatus(this);
    pcStatus->setWindowFlags(Qt::Widget);
    setWidget(pcStatus);
    // The escape key closes a dialog, but not what stands in a dock.
    connect(pcStatus, &QDialog::finished, pcStatus, &QWidget::show);
}
