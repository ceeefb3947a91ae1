#include "sdk/source.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "sdk/guard.h"

void Plugin::Source::applyConfig(const Settings &cSettings)
{
    const std::lock_guard cCall(m_cCall);
    std::string strReason;
    guarded([&] { configure(cSettings); }, [&](const std::string &strWhy) { strReason = strWhy; });
    const std::lock_guard cLock(m_cErrorMutex);
    m_strConfigError = std::move(strReason);
    m_strError.clear();
}

void Plugin::Source::begin()
{
    const std::lock_guard cCall(m_cCall);
    setError({});
    start();
}

void Plugin::Source::end()
{
    const std::lock_guard cCall(m_cCall);
    stop();
}

Plugin::Picture Plugin::Source::deliver(std::string_view strType)
{
    const Clock::time_point cDeadline = Clock::now() + IDLE_WAIT;
    Picture cPicture;
    if (strType == kindName(Kind::DIB) || strType == kindName(Kind::Gray8))
        guarded([&] { cPicture = next(strType == kindName(Kind::DIB) ? Kind::DIB : Kind::Gray8); },
                [&](const std::string &strReason) { setError(strReason); });
    if (!cPicture.m_puchPixels)
        std::this_thread::sleep_until(cDeadline);
    return cPicture;
}

Plugin::Picture Plugin::Source::next(Kind eKind)
{
    const std::lock_guard cCall(m_cCall);
    Picture cPicture = request(eKind);
    if (!cPicture.m_puchPixels)
        return {};
    if (cPicture.m_eKind != eKind || cPicture.m_nWidth < 1 || cPicture.m_nHeight < 1)
        throw Error(std::string("What was delivered is no ") + kindName(eKind) + " picture.");
    const size_t nRowLength = rowLength(eKind, cPicture.m_nWidth);
    if (cPicture.m_nRowLength == nRowLength)
        return cPicture;

    m_achPacked.resize(nRowLength * static_cast<size_t>(cPicture.m_nHeight));
    for (int nRow = 0; nRow < cPicture.m_nHeight; ++nRow) {
        const size_t n = static_cast<size_t>(nRow);
        memcpy(m_achPacked.data() + n * nRowLength, cPicture.m_puchPixels + n * cPicture.m_nRowLength,
               std::min(nRowLength, cPicture.m_nRowLength));
    }
    cPicture.m_puchPixels = m_achPacked.data();
    cPicture.m_nRowLength = nRowLength;
    return cPicture;
}

void Plugin::Source::sleepUntil(Clock::time_point cUntil)
{
    m_cCall.unlock();
    std::this_thread::sleep_until(cUntil);
    m_cCall.lock();
}

std::string Plugin::Source::lastError()
{
    const std::lock_guard cLock(m_cErrorMutex);
    return m_strConfigError.empty() ? m_strError : m_strConfigError;
}

void Plugin::Source::setError(std::string strReason)
{
    const std::lock_guard cLock(m_cErrorMutex);
    m_strError = std::move(strReason);
}
