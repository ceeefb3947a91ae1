#ifndef TEXTBUFFER_H
#define TEXTBUFFER_H

#include <QByteArray>
#include <QMutex>
#include <QString>

/// Buffers for texts that are handed out as char*: at least 1024 bytes, always longer than the
/// text, grown by half again as often as needed and never shrunk.
namespace TextBuffer
{
constexpr int INITIAL_LENGTH = 1024;

/// A buffer of INITIAL_LENGTH bytes that holds the empty text.
char *create();

/// The empty text that steps without a message hand out, one for the process.
char *blank();

/// Copies the bytes and a terminating zero into the buffer, growing it first where needed. Where
/// memory is short, the text is cut to what fits.
void store(const QByteArray &achText, char *&pchBuffer, int &nBuffLen);

/// The same for the text as UTF-8, under a lock, for a buffer that several task threads write.
/// Returns the bytes themselves, which belong to the calling thread and are valid until the thread's
/// next call of this function for the same buffer.
char *storeShared(const QString &strText, char *&pchBuffer, int &nBuffLen, QMutex &cMutex);
} // namespace TextBuffer

#endif
