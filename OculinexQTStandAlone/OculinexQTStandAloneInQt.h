#ifndef OCULINEXQTSTANDALONEINQT_H
#define OCULINEXQTSTANDALONEINQT_H

/// @file
/// The functions that a host calls.
///
/// Texts that are handed out are in the local 8-bit encoding and belong to the library; each is
/// valid until the next call that returns a text. The empty text means success.
///
/// Threads: one thread controls (open, save, start, stop, run once). getErrMsg, getOutputMsg,
/// IsTaskRunning, getTaskStatus and getDrawingWindow may be called by any thread. The first call of all comes
/// before the host starts threads of its own. The controlling thread needs an event loop for the messages of
/// failed tasks to arrive.

#include <QList>
#include <QMutex>
#include <QString>

#include "oculinexqtstandalone_export.h"
#include "qguard.h"
#include "taskMgr/taskstatus.h"

extern OCULINEXQTSTANDALONE_EXPORT int gMaxMsgNum;                   ///< capacity of each queue, 10
extern OCULINEXQTSTANDALONE_EXPORT int gnBuffLenForStandAlone;       ///< length of the text buffer
extern OCULINEXQTSTANDALONE_EXPORT char *gpchConfigStrForStandAlone; ///< the text buffer
extern OCULINEXQTSTANDALONE_EXPORT QList<QString> glstErrMsg;        ///< errors, oldest first
extern OCULINEXQTSTANDALONE_EXPORT QList<QString> glstOutputMsg;     ///< printed texts, oldest first
extern OCULINEXQTSTANDALONE_EXPORT QMutex gMtxErr;                   ///< guards glstErrMsg
extern OCULINEXQTSTANDALONE_EXPORT QMutex gMtxOutput;                ///< guards glstOutputMsg
extern OCULINEXQTSTANDALONE_EXPORT bool gbInited;                    ///< set once init() has run
extern OCULINEXQTSTANDALONE_EXPORT char gszBlank[1];                 ///< the empty result text
extern OCULINEXQTSTANDALONE_EXPORT char gszErrVerMsg[33];            ///< "ArithmParamMgr version mismatch."

OCULINEXQTSTANDALONE_EXPORT char *transConfigStr(QString strConfigStr);
/// Append a message to its queue; dropped when the queue is full.
OCULINEXQTSTANDALONE_EXPORT void FuncHaveErrorMessage(QString str);
OCULINEXQTSTANDALONE_EXPORT void FuncHavePrintMessage(QString str);
/// Take the oldest message: -1 when there is none, 1 when more are waiting, else 0. At most
/// nBuffLen - 1 bytes and a terminating zero are written, the rest is lost; an empty message, or a
/// length below 2, writes nothing at all.
OCULINEXQTSTANDALONE_EXPORT int getErrMsg(char *szBuff, int nBuffLen);
OCULINEXQTSTANDALONE_EXPORT int getOutputMsg(char *szBuff, int nBuffLen);
/// Connects the tasks' messages to the queues, once. Every function below calls it first.
OCULINEXQTSTANDALONE_EXPORT void init();
/// Path in the local 8-bit encoding; "" or "open file failed.".
OCULINEXQTSTANDALONE_EXPORT char *openTasksFile(char *szTaskFilePath);
/// Path in UTF-8; "" or "save file failed.".
OCULINEXQTSTANDALONE_EXPORT char *saveTasksFile(char *szTaskFilePath);
OCULINEXQTSTANDALONE_EXPORT void startAllTasks();
OCULINEXQTSTANDALONE_EXPORT void stopAllTasks();
OCULINEXQTSTANDALONE_EXPORT void startTask(int nPos);
OCULINEXQTSTANDALONE_EXPORT void stopTask(int nPos);
OCULINEXQTSTANDALONE_EXPORT void runAllTasksOnce();
OCULINEXQTSTANDALONE_EXPORT void runTaskOnce(int nPos);
/// False for a position without a task.
OCULINEXQTSTANDALONE_EXPORT bool IsTaskRunning(bool &bRunning, int nPos);
/// Opens the configuration window of a step (GUI thread); "" or the reason why it can't be opened.
/// What goes wrong with the step itself arrives as an error message.
OCULINEXQTSTANDALONE_EXPORT char *showConfigWindow(int nTaskPos, int nArithmPos);
/// Lets the user choose the task's data source (GUI thread); "" or the reason why that can't be.
OCULINEXQTSTANDALONE_EXPORT char *selectDataSource(int nTaskPos);
/// Makes view 0 to 3, or gives it another size (1 or more each way); what is queued stays. Other
/// arguments are ignored. Until then, drawing steps into that view draw nothing.
OCULINEXQTSTANDALONE_EXPORT void useDrawingWindow(int nPos, int nWidth, int nHeight);
/// Takes the oldest drawing object of view 0, 1 or 2 and paints it over what the host's buffer holds:
/// red, green, blue, rows from the top down, each padded to a multiple of 4 bytes; nWidth and
/// nHeight from 1 to 10000. 1 when more objects wait, 0 when that was the last, -1 when there was
/// none (nothing is painted) or an argument is bad. Call it on one buffer until it returns 0 or -1.
OCULINEXQTSTANDALONE_EXPORT int getDrawingWindow(int nPos, unsigned char *puchDIB, int nWidth, int nHeight);

/// Switches the collection of status figures on or off (off at first).
OCULINEXQTSTANDALONE_EXPORT void enableTaskStatus(bool bEnabled);
/// The figures of one task; false for a position without a task.
OCULINEXQTSTANDALONE_EXPORT bool getTaskStatus(int nPos, TaskStatus &cStatus);

#endif
