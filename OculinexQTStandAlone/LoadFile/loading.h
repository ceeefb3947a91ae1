#ifndef LOADING_H
#define LOADING_H

#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

/// The built-in algorithm that reads an image file into the store each time its step runs, as a
/// colour or a grey picture.
///
/// Config string: <FilePath>, <OutputName>, <Describe>, <BeGray> (1: grey, else colour), <PicType>
/// (the dialog's own), <PicID> (ID of the output picture).
///
/// Colour pictures keep the decoder's order red, green, blue. Grey values of pictures that are not
/// 8-bit indexed are 0.299 b2 + 0.587 b1 + 0.114 b0 of the bytes b0, b1, b2 as they lie in memory,
/// truncated; those of indexed pictures are the indexes.
///
/// Pipes, devices, SVG and pictures too large for the store or for memory are refused.
///
/// Errors: none is reported; the store stays as it is and the log (oculinex.file) tells.
/// Threads: any number of task threads at once.
class OCULINEXQTSTANDALONE_EXPORT Loading
{
public:
    static const char *getID();
    static QString getName();
    static QString getClass();
    static char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool bFlag);
    static char *execute(char *pchConfig, ArithmParamMgr *pcAPM);
    static char *transConfigStr(QString &strText);

    static const char *s_ID; ///< "KQ_Loading"
    static char *s_pchConfigStr;
    static int s_nBuffLen;
};

#endif
