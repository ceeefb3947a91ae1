// A minimal host: runs the tasks of a file for some seconds and prints what they say.
//
//   host TASKS_FILE [SECONDS]

#include <cstdio>

#include <QCoreApplication>
#include <QTimer>

#include <OculinexQTStandAlone.h>

int main(int argc, char *argv[])
{
    QCoreApplication cApp(argc, argv);
    if (argc < 2) {
        fprintf(stderr, "usage: %s TASKS_FILE [SECONDS]\n", argv[0]);
        return 2;
    }
    OculinexQtStandAlone *pcLib = OculinexQtStandAlone::getInstance();
    const char *szError = pcLib->openTasksFile(argv[1]);
    if (*szError != '\0') {
        fprintf(stderr, "%s: %s\n", argv[1], szError);
        return 2;
    }

    // The queues keep ten messages each, so they are emptied often.
    QTimer cPoll;
    QObject::connect(&cPoll, &QTimer::timeout, [pcLib] {
        char szText[1024] = "";
        while (pcLib->getOutputMsg(szText, sizeof szText) >= 0)
            puts(szText);
        while (pcLib->getErrMsg(szText, sizeof szText) >= 0)
            fprintf(stderr, "error: %s\n", szText);
    });
    cPoll.start(20);

    pcLib->startAllTasks();
    QTimer::singleShot(argc > 2 ? atoi(argv[2]) * 1000 : 5000, &cApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    pcLib->stopAllTasks();
    return 0;
}
