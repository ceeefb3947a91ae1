#ifndef DRAWING_H
#define DRAWING_H

#include "oculinexqtstandalone_export.h"

/// The drawing algorithm.
class OCULINEXQTSTANDALONE_EXPORT Drawing
{
public:
    static const char *s_ID; ///< "KQ_Drawing"
    static const char *getID();
};

#endif
