#ifndef GUARDEDCALL_H
#define GUARDEDCALL_H

#include <cxxabi.h>

#include <cstring>
#include <exception>
#include <new>

#include <QString>

/// Calls into code that is not the library's own (private header).

/// The text that a plug-in handed out: UTF-8 with bad bytes as U+FFFD, null as the empty text.
inline QString textFromPlugin(const char *szText)
{
    // A QString holds less than 2^30 characters; what is longer is cut.
    constexpr size_t MAX_LENGTH = (size_t(1) << 30) - 64;
    // The usual result of a step is empty and shall cost nothing: a QString made of no characters allocates.
    return szText && *szText ? QString::fromUtf8(szText, static_cast<int>(strnlen(szText, MAX_LENGTH)))
                             : QString();
}

/// The text of an exception; needs no memory where that is what was missing.
inline QString textOf(const std::exception &cError)
{
    try {
        return textFromPlugin(cError.what());
    } catch (const std::bad_alloc &) {
        return QStringLiteral("std::bad_alloc");
    }
}

/// Calls what is left out where memory is short, such as a line of the log. Whether it was done.
template <typename Call>
bool callIfMemoryAllows(const Call &fnCall)
{
    try {
        fnCall();
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

/// The result of fnCall(). When an exception leaves it, its text goes to fnFailed(const QString &)
/// and that function's result is returned instead. The unwinding of a thread that is cancelled or
/// exits is passed on (no object stands behind the reference to it, which the sanitizer would mind).
template <typename Call, typename Failed>
__attribute__((no_sanitize("undefined"))) auto guardedCall(const Call &fnCall, const Failed &fnFailed)
    -> decltype(fnCall())
{
    try {
        return fnCall();
    } catch (const abi::__forced_unwind &) {
        throw;
    } catch (const std::exception &cError) {
        return fnFailed(textOf(cError));
    } catch (...) {
        return fnFailed(QStringLiteral("unknown exception"));
    }
}

#endif
