#include "textbuffer.h"

#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <utility>

#include <pthread.h>

#include "qguard.h"

namespace
{
int grownLength(int nBuffLen, int nTextLen)
{
    qint64 nLength = nBuffLen;
    while (nTextLen >= nLength) {
        nLength = nLength * 3 / 2;
        // A length of 0 or 1 (a host may write the boundary buffer's length) would never grow.
        if (nLength < 2)
            nLength = TextBuffer::INITIAL_LENGTH;
    }
    return static_cast<int>(qMin<qint64>(nLength, std::numeric_limits<int>::max()));
}

/// What the calling thread was handed last out of each buffer.
using Copies = std::map<char **, QByteArray>;

/// No thread_local: the C library ends a process that lacks memory when a thread makes one with a
/// destructor.
Copies &threadsCopies()
{
    static const pthread_key_t s_nKey = [] {
        pthread_key_t nKey{};
        if (pthread_key_create(&nKey, [](void *pvCopies) { delete static_cast<Copies *>(pvCopies); }) != 0)
            throw std::bad_alloc();
        return nKey;
    }();
    if (auto *pmapCopies = static_cast<Copies *>(pthread_getspecific(s_nKey)))
        return *pmapCopies;
    auto pmapNew = std::make_unique<Copies>();
    if (pthread_setspecific(s_nKey, pmapNew.get()) != 0)
        throw std::bad_alloc();
    return *pmapNew.release();
}
} // namespace

char *TextBuffer::create()
{
    return new char[INITIAL_LENGTH]();
}

char *TextBuffer::blank()
{
    static char s_szBlank[1] = "";
    return s_szBlank;
}

void TextBuffer::store(const QByteArray &achText, char *&pchBuffer, int &nBuffLen)
{
    if (!pchBuffer) // a host can reach the boundary buffer
        nBuffLen = 0;
    const int nGrown = grownLength(nBuffLen, achText.size());
    if (nGrown > nBuffLen) {
        if (char *pchGrown = new (std::nothrow) char[static_cast<size_t>(nGrown)]) {
            delete[] pchBuffer;
            pchBuffer = pchGrown;
            nBuffLen = nGrown;
        }
    }
    const int nCopied = qMin(achText.size(), nBuffLen - 1);
    memcpy(pchBuffer, achText.constData(), static_cast<size_t>(nCopied));
    pchBuffer[nCopied] = '\0';
}

char *TextBuffer::storeShared(const QString &strText, char *&pchBuffer, int &nBuffLen, QMutex &cMutex)
{
    // An empty QByteArray that was converted or is written to allocates for its zero.
    QByteArray achText = strText.isEmpty() ? QByteArray() : strText.toUtf8();
    {
        QGuard cGuard(cMutex);
        store(achText, pchBuffer, nBuffLen);
    }
    if (achText.isEmpty())
        return blank();
    QByteArray &achCopy = threadsCopies()[&pchBuffer];
    achCopy = std::move(achText);
    return achCopy.data();
}
