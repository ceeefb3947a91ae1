#include "reader.h"

#include <vector>

#include <QThread>

#include <OculinexQTStandAloneInQt.h>

namespace
{
struct Size {
    int m_nWidth;
    int m_nHeight;
};
constexpr Size SIZES[] = {{640, 480}, {1, 1}, {1280, 720}, {321, 200}};
constexpr Size LARGEST = SIZES[2];
constexpr int PERIOD_MS = 20;
constexpr int ROUNDS_ATTENTIVE = 200;
constexpr int ROUNDS_AWAY = 60;

int waiting(const QList<QString> &lstMsg, QMutex &cMutex)
{
    QGuard cGuard(cMutex);
    return lstMsg.size();
}

qint64 drain(int (*fnTake)(char *, int))
{
    char szText[256];
    qint64 nTaken = 0;
    while (fnTake(szText, sizeof szText) >= 0)
        ++nTaken;
    return nTaken;
}
} // namespace

Reader::Reader() : m_cThread([this] { run(); }) {}

Reader::~Reader()
{
    m_bEnd = true;
    m_cThread.join();
}

void Reader::waitForRounds(int nRounds) const
{
    for (const int nUntil = m_nRounds + nRounds; m_nRounds < nUntil;)
        QThread::msleep(PERIOD_MS);
}

void Reader::run()
{
    for (int nRound = 0; !m_bEnd; ++nRound) {
        if (m_bAttentive || nRound % (ROUNDS_ATTENTIVE + ROUNDS_AWAY) < ROUNDS_ATTENTIVE)
            read(nRound);
        m_nRounds = nRound;
        QThread::msleep(PERIOD_MS);
    }
}

void Reader::read(int nRound)
{
    static std::vector<unsigned char> s_auchView(size_t(LARGEST.m_nWidth) * LARGEST.m_nHeight * 3);
    const Size &cSize = SIZES[static_cast<size_t>(nRound) % std::size(SIZES)];
    for (const int nView : {0, 1}) {
        int nMore = 1;
        while (nMore == 1) {
            nMore = getDrawingWindow(nView, s_auchView.data(), cSize.m_nWidth, cSize.m_nHeight);
            m_nDrawings += nMore >= 0;
        }
    }
    m_nMostWaiting =
        qMax(m_nMostWaiting.load(), qMax(waiting(glstErrMsg, gMtxErr), waiting(glstOutputMsg, gMtxOutput)));
    m_nErrors += drain(getErrMsg);
    m_nPrinted += drain(getOutputMsg);
}
