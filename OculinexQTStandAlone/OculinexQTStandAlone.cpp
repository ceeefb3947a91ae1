#include "OculinexQTStandAlone.h"
