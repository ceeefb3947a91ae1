#include "labeller.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace
{
const unsigned char *firstZero(const unsigned char *puchPos, const unsigned char *puchEnd)
{
    const void *pvZero = memchr(puchPos, 0, static_cast<size_t>(puchEnd - puchPos));
    return pvZero ? static_cast<const unsigned char *>(pvZero) : puchEnd;
}

const unsigned char *firstNonZero(const unsigned char *puchPos, const unsigned char *puchEnd)
{
    // Most of a picture is background: look at 32 pixels at a time.
    uint64_t anBlock[4];
    for (; puchEnd - puchPos >= static_cast<std::ptrdiff_t>(sizeof anBlock); puchPos += sizeof anBlock) {
        memcpy(anBlock, puchPos, sizeof anBlock);
        if (anBlock[0] | anBlock[1] | anBlock[2] | anBlock[3])
            break;
    }
    return std::find_if(puchPos, puchEnd, [](unsigned char uch) { return uch != 0; });
}
} // namespace

const std::vector<Labeller::Area> &Labeller::find(const cv::Mat &cPicture, bool bDark, bool bCorners)
{
    m_lstArea.clear();
    m_lstParent.clear();
    m_lstRun.clear();
    for (int nRow = 0; nRow < cPicture.rows; ++nRow) {
        m_lstAbove.swap(m_lstRun);
        cutRow(cPicture.ptr(nRow), cPicture.cols, bDark);
        joinRow(nRow, bCorners);
    }

    // An area is its own parent if it has not become part of another.
    size_t nKept = 0;
    for (size_t nArea = 0; nArea < m_lstArea.size(); ++nArea)
        if (m_lstParent[nArea] == static_cast<int>(nArea))
            m_lstArea[nKept++] = m_lstArea[nArea];
    m_lstArea.resize(nKept);
    return m_lstArea;
}

void Labeller::cutRow(const unsigned char *puchRow, int nWidth, bool bDark)
{
    const auto fnBegin = bDark ? firstZero : firstNonZero;
    const auto fnEnd = bDark ? firstNonZero : firstZero;
    const unsigned char *const puchEnd = puchRow + nWidth;
    m_lstRun.clear();
    for (const unsigned char *puchPos = fnBegin(puchRow, puchEnd); puchPos != puchEnd;) {
        const unsigned char *puchStop = fnEnd(puchPos, puchEnd);
        m_lstRun.push_back({static_cast<int>(puchPos - puchRow), static_cast<int>(puchStop - puchRow), -1});
        puchPos = fnBegin(puchStop, puchEnd);
    }
}

void Labeller::joinRow(int nRow, bool bCorners)
{
    const int nReach = bCorners ? 1 : 0;
    size_t nFirstAbove = 0;
    for (Run &cRun : m_lstRun) {
        // Runs above that end left of this one end left of the next ones too.
        while (nFirstAbove < m_lstAbove.size() && m_lstAbove[nFirstAbove].m_nEnd + nReach <= cRun.m_nBegin)
            ++nFirstAbove;
        for (size_t nAbove = nFirstAbove;
             nAbove < m_lstAbove.size() && m_lstAbove[nAbove].m_nBegin < cRun.m_nEnd + nReach; ++nAbove) {
            const int nArea = root(m_lstAbove[nAbove].m_nArea);
            cRun.m_nArea = cRun.m_nArea < 0 ? nArea : merge(cRun.m_nArea, nArea);
        }

        const int nLength = cRun.m_nEnd - cRun.m_nBegin;
        if (cRun.m_nArea < 0) {
            cRun.m_nArea = static_cast<int>(m_lstArea.size());
            m_lstParent.push_back(cRun.m_nArea);
            m_lstArea.push_back({nLength, nRow, nRow, cRun.m_nBegin, cRun.m_nEnd - 1, cRun.m_nBegin, nRow});
            continue;
        }
        Area &cArea = m_lstArea[static_cast<size_t>(cRun.m_nArea)];
        cArea.m_nSize += nLength;
        cArea.m_nBottom = nRow;
        cArea.m_nLeft = std::min(cArea.m_nLeft, cRun.m_nBegin);
        cArea.m_nRight = std::max(cArea.m_nRight, cRun.m_nEnd - 1);
    }
}

int Labeller::root(int nArea)
{
    int *pnParent = m_lstParent.data();
    while (pnParent[nArea] != nArea) {
        pnParent[nArea] = pnParent[pnParent[nArea]];
        nArea = pnParent[nArea];
    }
    return nArea;
}

int Labeller::merge(int nAreaA, int nAreaB)
{
    if (nAreaA == nAreaB)
        return nAreaA;
    // The older area keeps its number, top and seed, which makes the order of the result.
    const int nOld = std::min(nAreaA, nAreaB);
    const int nNew = std::max(nAreaA, nAreaB);
    Area &cOld = m_lstArea[static_cast<size_t>(nOld)];
    const Area &cNew = m_lstArea[static_cast<size_t>(nNew)];
    cOld.m_nSize += cNew.m_nSize;
    cOld.m_nBottom = std::max(cOld.m_nBottom, cNew.m_nBottom);
    cOld.m_nLeft = std::min(cOld.m_nLeft, cNew.m_nLeft);
    cOld.m_nRight = std::max(cOld.m_nRight, cNew.m_nRight);
    m_lstParent[static_cast<size_t>(nNew)] = nOld;
    return nOld;
}
