#ifndef RESOURCES_H
#define RESOURCES_H

#include <QtGlobal>

/// What the process holds at a moment.
struct Resources {
    qint64 m_nPssKb = 0;  ///< memory, shared pages by this process's share in them
    qint64 m_nHeapKb = 0; ///< the part of it that belongs to no file
    int m_nDescriptors = 0;
    int m_nThreads = 0;

    static Resources now();
};

#endif
