#ifndef SAVING_H
#define SAVING_H

#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

/// The built-in algorithm that writes one picture to a file each time its step runs: a picture of
/// the store, or what waits to be drawn in a view (which is thereby taken out of the view).
///
/// Config string: <BasePath> directory, made if only its last level is missing; <StringID> name
/// text, or ID of a string list if <IsStringID> is 1; <Separator>; <Identity> 0 time, 1 running
/// number, else none; <Format> 0 JPEG, 1 PNG, 2 BMP; <Exg> 1: identity before name; <Wnd> 0 to 3 a
/// view, 4 the picture <PicID> of kind <PicType>, "RGB" or "Gray".
///
/// A saved colour picture has its first and third bytes exchanged in the store afterwards.
///
/// Errors: none is reported; the log (oculinex.file) tells.
/// Threads: any number of task threads at once.
class OCULINEXQTSTANDALONE_EXPORT Saving
{
public:
    static const char *getID();
    static QString getName();
    static QString getClass();
    static char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool bFlag);
    static char *execute(char *pchConfig, ArithmParamMgr *pcAPM);
    static char *transConfigStr(QString &strText);

    static const char *s_ID;     ///< "KQ_Saving"
    static char *s_pchConfigStr; ///< also takes the stored name, which its length thereby limits
    static int s_nBuffLen;
};

#endif
