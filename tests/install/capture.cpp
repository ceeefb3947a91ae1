// A host whose own functions have the names that the library calls inside itself.

#include <cstdlib>

#include <OculinexQTStandAlone.h>

void init()
{
    exit(3);
}
extern "C" void start(int /*nInstanceID*/)
{
    exit(4);
}

int main(int /*argc*/, char *argv[])
{
    OculinexQtStandAlone *pcLib = OculinexQtStandAlone::getInstance();
    if (*pcLib->openTasksFile(argv[1]) != '\0')
        return 1;
    pcLib->runAllTasksOnce();
}
