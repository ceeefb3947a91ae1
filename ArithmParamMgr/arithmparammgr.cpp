#include "arithmparammgr.h"

char gszErrVerMsg[33] = "ArithmParamMgr version mismatch.";
