#ifndef STAMPTASK_H
#define STAMPTASK_H

#include <atomic>
#include <cstring>
#include <thread>

#include <QSize>

#include "arithmMgr/arithmregister.h"
#include "arithmMgr/arithms.h"
#include "arithmparammgr.h"
#include "taskfixture.h"

/// Tasks whose drawings tell which run they come from. A step stamps two pictures with the number of
/// its run: a colour one whose right half is black, and a grey one whose left half is transparent,
/// which is drawn over it. Only a view that shows one whole run has the same number on both sides.
namespace Stamp
{
constexpr int LEVELS = 250;
inline char s_chEmpty = 0; ///< the result of each step

/// Config: "width,height".
inline char *stamp(char *pchConfig, ArithmParamMgr *pcStore)
{
    const QStringList lstSize = QString::fromUtf8(pchConfig).split(',');
    const int nWidth = lstSize[0].toInt();
    const int nHeight = lstSize[1].toInt();
    ParamDIB &cColour = *pcStore->getParamDIB(1);
    ParamGray8 &cGrey = *pcStore->getParamGray8(2);
    cColour.resize(nWidth, nHeight);
    cGrey.resize(nWidth, nHeight);
    static std::atomic<int> s_nRun{0};
    const int nLevel = 1 + s_nRun++ % LEVELS;
    const size_t nHalf = static_cast<size_t>(nWidth) / 2;
    const size_t nRow = static_cast<size_t>((nWidth + 1) * 3 & ~3);
    // The other halves are as they were made: 0.
    for (size_t nY = 0; nY < static_cast<size_t>(nHeight); ++nY) {
        memset(cColour.getDIB() + nY * nRow, nLevel, nHalf * 3);
        memset(cGrey.getGray8() + nY * static_cast<size_t>(nWidth) + nHalf, nLevel,
               static_cast<size_t>(nWidth) - nHalf);
    }
    return &s_chEmpty;
}

inline char *sleep(char *pchConfig, ArithmParamMgr *)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(atoi(pchConfig)));
    return &s_chEmpty;
}

/// Steps that stamp pictures of that size, draw one, wait, draw the other, and wait again.
inline QList<TaskItem> steps(const QSize &cSize, int nBetweenMs, int nAfterMs)
{
    [[maybe_unused]] static const bool s_bRegistered = [] {
        auto *pcArithms = ArithmFactory::getInstance()->getArithms();
        pcArithms->append({"测试", "stamp",
                           new Arithm(
                               false, [] { return "stamp"; }, nullptr, stamp)});
        pcArithms->append({"测试", "sleep",
                           new Arithm(
                               false, [] { return "sleep"; }, nullptr, sleep)});
        return true;
    }();
    const QString strColour =
        "<DataType>0</DataType><DataID>1</DataID><Config><Scale>3</Scale><Pos>0</Pos></Config>";
    const QString strGrey =
        "<DataType>1</DataType><DataID>2</DataID><Config><Scale>3</Scale><Pos>0</Pos><DrawMode><Val>1</Val>"
        "<Lapped>0</Lapped></DrawMode></Config>";
    return {Fake::step(QStringLiteral("%1,%2").arg(cSize.width()).arg(cSize.height()), -1, "stamp"),
            Fake::step(strColour, -1, "KQ_Drawing"), Fake::step(QString::number(nBetweenMs), -1, "sleep"),
            Fake::step(strGrey, -1, "KQ_Drawing"), Fake::step(QString::number(nAfterMs), -1, "sleep")};
}

inline TaskInfo *newTask(const QSize &cSize, int nBetweenMs, int nAfterMs)
{
    auto *const pcTask = new Fake::Task;
    pcTask->m_lstArithm = steps(cSize, nBetweenMs, nAfterMs);
    return pcTask;
}
} // namespace Stamp

#endif
