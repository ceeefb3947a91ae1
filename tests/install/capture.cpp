// A host whose own functions have the names that the library calls inside itself.

#include <cstdio>
#include <cstdlib>

#include <OculinexQTStandAlone.h>

static void captured(const char *szName)
{
    printf("the library called the host's %s()\n", szName);
    exit(1);
}

void init();
void startTask(int nPos);
extern "C" void start(int nInstanceID);

void init()
{
    captured("init");
}
void startTask(int /*nPos*/)
{
    captured("startTask");
}
void start(int /*nInstanceID*/)
{
    captured("start");
}

int main(int argc, char *argv[])
{
    OculinexQtStandAlone *pcLib = OculinexQtStandAlone::getInstance();
    pcLib->startTask(0);
    char achMissing[] = "missing.tasks";
    const bool bRefused = *pcLib->openTasksFile(achMissing) != '\0';
    if (argc > 1 && *pcLib->openTasksFile(argv[1]) != '\0')
        return 1;
    pcLib->runAllTasksOnce();
    return bRefused ? 0 : 1;
}
