#include "tasks.h"

#include <vector>

#include <QThread>

#include <MemoryDisk/memorydisk.h>
#include <OculinexQTStandAloneInQt.h>

namespace
{
struct Disk {
    int m_nDisk;
    std::vector<int> m_vWriters;
    std::vector<int> m_vReaders;
};
const Disk DISKS[] = {{0, {Tasks::COLOUR_CAMERA}, {Tasks::INSPECT}},
                      {1, {Tasks::GREY_CAMERA}, {Tasks::MEASURE}},
                      {2, {Tasks::INSPECT}, {Tasks::ARCHIVE, Tasks::SECOND_LOOK}}};

bool isRunning(int nTask)
{
    bool bRunning = false;
    return IsTaskRunning(bRunning, nTask) && bRunning;
}

/// Whether a disk whose writers are at rest is empty and its readers wait for more.
bool isWorkedOff(const Disk &cDisk)
{
    MemoryDisk *pcDisk = MemoryDisk::getInstance(cDisk.m_nDisk);
    if (pcDisk->getDIBIdleNum() < pcDisk->getDIBBuffNum() ||
        pcDisk->getGray8IdleNum() < pcDisk->getGray8BuffNum())
        return false;
    for (const int nTask : cDisk.m_vReaders) {
        TaskStatus cStatus;
        if (!isRunning(nTask) || !getTaskStatus(nTask, cStatus) || cStatus.m_nRuns < cStatus.m_nPictures)
            return false;
    }
    return true;
}
} // namespace

Tasks::Tasks()
{
    enableTaskStatus(true);
    startAllTasks();
}

void Tasks::start(int nTask)
{
    m_acBefore[static_cast<size_t>(nTask)] = figures(nTask);
    m_abStopped[static_cast<size_t>(nTask)] = false;
    startTask(nTask);
    ++m_nStarts;
}

void Tasks::stop(int nTask)
{
    m_abStopped[static_cast<size_t>(nTask)] = true;
    stopTask(nTask);
}

void Tasks::revive()
{
    for (int nTask = 0; nTask < COUNT; ++nTask)
        if (!m_abStopped[static_cast<size_t>(nTask)] && !isRunning(nTask)) {
            start(nTask);
            ++m_nRevived;
        }
}

void Tasks::pause()
{
    stop(COLOUR_CAMERA);
    stop(GREY_CAMERA);
    for (const Disk &cDisk : DISKS)
        while (!isWorkedOff(cDisk)) {
            revive();
            QThread::msleep(1);
        }
}

void Tasks::resume()
{
    start(COLOUR_CAMERA);
    start(GREY_CAMERA);
}

Tasks::Figures Tasks::figures(int nTask) const
{
    Figures cFigures = m_acBefore[static_cast<size_t>(nTask)];
    TaskStatus cStatus;
    if (getTaskStatus(nTask, cStatus) && !cStatus.m_lstStep.isEmpty()) {
        const StepStatus &cFirst = cStatus.m_lstStep.first();
        cFigures.m_nPictures += cStatus.m_nPictures;
        cFigures.m_nFirst += cFirst.m_nExecutions;
        cFigures.m_nWorstMs = qMax(cFigures.m_nWorstMs, cFirst.m_nWorstNs / 1000000);
    }
    return cFigures;
}

QStringList Tasks::account(qint64 &nLost) const
{
    nLost = 0;
    QStringList lstLines;
    for (const Disk &cDisk : DISKS) {
        qint64 nIn = 0;
        qint64 nOut = 0;
        qint64 nWorstMs = 0;
        for (const int nTask : cDisk.m_vWriters) {
            nIn += figures(nTask).m_nFirst;
            nWorstMs = qMax(nWorstMs, figures(nTask).m_nWorstMs);
        }
        for (const int nTask : cDisk.m_vReaders)
            nOut += figures(nTask).m_nPictures;
        nLost += qAbs(nIn - nOut);
        lstLines.append(
            QStringLiteral("memory disk %1: %2 pictures in, %3 out, longest wait for a free buffer %4 ms")
                .arg(cDisk.m_nDisk)
                .arg(nIn)
                .arg(nOut)
                .arg(nWorstMs));
    }
    return lstLines;
}
