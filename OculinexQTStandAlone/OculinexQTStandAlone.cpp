#include "OculinexQTStandAlone.h"

#include "OculinexQTStandAloneInQt.h"
#include "singleton.h"

OculinexQtStandAlone *OculinexQtStandAlone::s_pcThis = nullptr;
QMutex OculinexQtStandAlone::s_cMtx;

OculinexQtStandAlone *OculinexQtStandAlone::getInstance()
{
    return singleton(s_pcThis, s_cMtx);
}

char *OculinexQtStandAlone::openTasksFile(char *szTaskFilePath)
{
    return ::openTasksFile(szTaskFilePath);
}

char *OculinexQtStandAlone::saveTasksFile(char *szTaskFilePath)
{
    return ::saveTasksFile(szTaskFilePath);
}

int OculinexQtStandAlone::getErrMsg(char *szBuff, int nBuffLen)
{
    return ::getErrMsg(szBuff, nBuffLen);
}

int OculinexQtStandAlone::getOutputMsg(char *szBuff, int nBuffLen)
{
    return ::getOutputMsg(szBuff, nBuffLen);
}

void OculinexQtStandAlone::startAllTasks()
{
    ::startAllTasks();
}

void OculinexQtStandAlone::stopAllTasks()
{
    ::stopAllTasks();
}

void OculinexQtStandAlone::startTask(int nPos)
{
    ::startTask(nPos);
}

void OculinexQtStandAlone::stopTask(int nPos)
{
    ::stopTask(nPos);
}

void OculinexQtStandAlone::runAllTasksOnce()
{
    ::runAllTasksOnce();
}

void OculinexQtStandAlone::runTaskOnce(int nPos)
{
    ::runTaskOnce(nPos);
}

bool OculinexQtStandAlone::IsTaskRunning(bool &bRunning, int nPos)
{
    return ::IsTaskRunning(bRunning, nPos);
}

char *OculinexQtStandAlone::showConfigWindow(int nTaskPos, int nArithmPos)
{
    return ::showConfigWindow(nTaskPos, nArithmPos);
}

char *OculinexQtStandAlone::selectDataSource(int nTaskPos)
{
    return ::selectDataSource(nTaskPos);
}

void OculinexQtStandAlone::useDrawingWindow(int nPos, int nWidth, int nHeight)
{
    ::useDrawingWindow(nPos, nWidth, nHeight);
}

int OculinexQtStandAlone::getDrawingWindow(int nPos, unsigned char *puchDIB, int nWidth, int nHeight)
{
    return ::getDrawingWindow(nPos, puchDIB, nWidth, nHeight);
}
