#include "arithmMgr/arithms.h"
