#include "OculinexQTStandAloneInQt.h"
