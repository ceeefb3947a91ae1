#include "arithmMgr/arithmregister.h"
