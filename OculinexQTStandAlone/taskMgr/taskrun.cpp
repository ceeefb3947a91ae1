#include "taskMgr/taskMgr.h"
