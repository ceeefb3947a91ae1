#include "Drawing/drawing.h"

const char *Drawing::s_ID = "KQ_Drawing";

const char *Drawing::getID()
{
    return s_ID;
}
