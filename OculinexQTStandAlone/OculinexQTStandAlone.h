#ifndef OCULINEXQTSTANDALONE_H
#define OCULINEXQTSTANDALONE_H

#include <QMutex>

#include "oculinexqtstandalone_export.h"

/// The library as an object: each method calls the exported function of the same name (see
/// OculinexQTStandAloneInQt.h, where texts, results and threads are described). For hosts that
/// would rather not have the functions' short names in scope.
class OCULINEXQTSTANDALONE_EXPORT OculinexQtStandAlone
{
public:
    static OculinexQtStandAlone *getInstance();

    char *openTasksFile(char *szTaskFilePath);
    char *saveTasksFile(char *szTaskFilePath);
    int getErrMsg(char *szBuff, int nBuffLen);
    int getOutputMsg(char *szBuff, int nBuffLen);
    void startAllTasks();
    void stopAllTasks();
    void startTask(int nPos);
    void stopTask(int nPos);
    void runAllTasksOnce();
    void runTaskOnce(int nPos);
    bool IsTaskRunning(bool &bRunning, int nPos);
    char *showConfigWindow(int nTaskPos, int nArithmPos);
    char *selectDataSource(int nTaskPos);
    void useDrawingWindow(int nPos, int nWidth, int nHeight);
    int getDrawingWindow(int nPos, unsigned char *puchDIB, int nWidth, int nHeight);

    static OculinexQtStandAlone *s_pcThis;
    static QMutex s_cMtx;
};

#endif
