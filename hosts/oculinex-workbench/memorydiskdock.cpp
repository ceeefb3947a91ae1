#include "memorydiskdock.h"

#include <QScrollArea>

#include "MemoryDisk/dlgmemorydiskstatus.h"

MemoryDiskDock::MemoryDiskDock(QWidget *pcParent) : QDockWidget(tr("Memory disks"), pcParent)
{
    setObjectName(QStringLiteral("memoryDisks"));
    auto *const pcStatus = new DlgMemoryDiskStatus(this);
    pcStatus->setWindowFlags(Qt::Widget);
    auto *const pcScroll = new QScrollArea; // it is wide, and would take the log's place
    pcScroll->setFrameShape(QFrame::NoFrame);
    pcScroll->setWidgetResizable(true);
    pcScroll->setWidget(pcStatus);
    setWidget(pcScroll);
    // The escape key closes a dialog, but not what stands in a dock.
    connect(pcStatus, &QDialog::finished, pcStatus, &QWidget::show);
}
