#ifndef ARITHMS_H
#define ARITHMS_H

#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

/// The functions that make an algorithm. All texts are UTF-8 and zero-terminated; the algorithm
/// owns what it returns and the caller copies it at once. They may be called from several task
/// threads at once.
using fnGetID = const char *(*)();
using fnShowConfigWindow = char *(*)(char *pchConfig, ArithmParamMgr *pcAPM, bool bFlag);
using fnExecute = char *(*)(char *pchConfig, ArithmParamMgr *pcAPM);

/// One callable algorithm, built in or from a plug-in. Made by the registry, lives as long as the
/// process.
///
/// Errors: a null function pointer, a null result and an exception that leaves the function give
/// the empty text, except that execute() gives the exception's text. Bytes that are not UTF-8
/// become U+FFFD.
class OCULINEXQTSTANDALONE_EXPORT Arithm
{
public:
    Arithm(bool bExtLib, fnGetID fnID, fnShowConfigWindow fnWindow, fnExecute fnExec);

    QString getID();
    /// Opens the algorithm's configuration window (GUI thread) and returns the new configuration,
    /// empty when cancelled.
    QString showConfigWindow(QString strConfig, ArithmParamMgr *pcAPM);
    /// Runs the algorithm once on the store and returns its result text.
    QString execute(QString &strConfig, ArithmParamMgr *pcAPM);
    /// Runs it with a configuration that is UTF-8 already.
    QString executeUtf8(const QByteArray &achConfig, ArithmParamMgr *pcAPM);
    bool IsExtLib(); ///< true when the algorithm comes from the extension folder

    fnGetID m_fnGetID;
    fnShowConfigWindow m_fnShowConfigWindow;
    fnExecute m_fnExecute;
    bool m_bExtLib;
};

#endif
