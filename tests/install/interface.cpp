// The exported functions and globals have exactly these types; and a host's own functions of the
// same names as the library's do not get in its way.

#include <cstdio>
#include <cstring>
#include <type_traits>

#include <OculinexQTStandAloneInQt.h>
#include <arithmparammgr.h>
#include <taskMgr/taskMgr.h>

template <typename Actual, typename Expected>
constexpr bool same = std::is_same_v<Actual, Expected>;

static_assert(same<decltype(&transConfigStr), char *(*)(QString)>);
static_assert(same<decltype(&FuncHaveErrorMessage), void (*)(QString)>);
static_assert(same<decltype(&FuncHavePrintMessage), void (*)(QString)>);
static_assert(same<decltype(&getErrMsg), int (*)(char *, int)>);
static_assert(same<decltype(&getOutputMsg), int (*)(char *, int)>);
static_assert(same<decltype(&init), void (*)()>);
static_assert(same<decltype(&openTasksFile), char *(*)(char *)>);
static_assert(same<decltype(&saveTasksFile), char *(*)(char *)>);
static_assert(same<decltype(&startAllTasks), void (*)()>);
static_assert(same<decltype(&stopAllTasks), void (*)()>);
static_assert(same<decltype(&startTask), void (*)(int)>);
static_assert(same<decltype(&stopTask), void (*)(int)>);
static_assert(same<decltype(&runAllTasksOnce), void (*)()>);
static_assert(same<decltype(&runTaskOnce), void (*)(int)>);
static_assert(same<decltype(&IsTaskRunning), bool (*)(bool &, int)>);
static_assert(same<decltype(gMaxMsgNum), int>);
static_assert(same<decltype(gnBuffLenForStandAlone), int>);
static_assert(same<decltype(gpchConfigStrForStandAlone), char *>);
static_assert(same<decltype(glstErrMsg), QList<QString>>);
static_assert(same<decltype(glstOutputMsg), QList<QString>>);
static_assert(same<decltype(gMtxErr), QMutex>);
static_assert(same<decltype(gMtxOutput), QMutex>);
static_assert(same<decltype(gbInited), bool>);
static_assert(same<decltype(gszBlank), char[1]>);
static_assert(same<decltype(gszErrVerMsg), char[33]>);

int main()
{
    if (gMaxMsgNum != 10 || gnBuffLenForStandAlone != 1024 || gbInited ||
        gpchConfigStrForStandAlone == nullptr ||
        strcmp(gszErrVerMsg, "ArithmParamMgr version mismatch.") != 0) {
        puts("a global does not start as it should");
        return 1;
    }
    ArithmParamMgr *pcAPM = ArithmParamMgr::newInstance();
    pcAPM->getParamDIB(1)->resize(5, 2);
    const bool bSized = pcAPM->getParamDIB(1)->getWidth() == 5;
    ArithmParamMgr::deleteInstance(pcAPM);
    char achMissing[] = "missing.tasks";
    return bSized && strcmp(openTasksFile(achMissing), "open file failed.") == 0 && gbInited ? 0 : 1;
}
