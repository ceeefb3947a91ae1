#include "arithmMgr/arithmmgr.h"
