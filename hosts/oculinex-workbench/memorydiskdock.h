#ifndef MEMORYDISKDOCK_H
#define MEMORYDISKDOCK_H

#include <QDockWidget>

/// The library's monitor of the memory disks, as a dock of the window.
class MemoryDiskDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit MemoryDiskDock(QWidget *pcParent = nullptr);
};

#endif
