// What a host uses has exactly these types.

#include <cstdio>
#include <cstring>
#include <type_traits>

#include <DataSource/MemoryDiskCallBack/memorydiskcallback.h>
#include <DataSource/datasource.h>
#include <OculinexQTStandAloneInQt.h>
#include <arithmMgr/arithmmgr.h>
#include <arithmMgr/arithmregister.h>
#include <arithmparammgr.h>
#include <taskMgr/taskMgr.h>

// Linking shows that each is exported, under its type.
char *(*g_afnText[])(QString) = {transConfigStr};
void (*g_afnMessage[])(QString) = {FuncHaveErrorMessage, FuncHavePrintMessage};
int (*g_afnTake[])(char *, int) = {getErrMsg, getOutputMsg};
char *(*g_afnFile[])(char *) = {openTasksFile, saveTasksFile};
void (*g_afnAll[])() = {init, startAllTasks, stopAllTasks, runAllTasksOnce};
void (*g_afnTask[])(int) = {startTask, stopTask, runTaskOnce};
bool (*g_afnAsk[])(bool &, int) = {IsTaskRunning};
char *(*g_afnSource[])(int) = {selectDataSource};
char *(*g_afnWindow[])(int, int) = {showConfigWindow};
void (*g_afnUseView[])(int, int, int) = {useDrawingWindow};
int (*g_afnGetView[])(int, unsigned char *, int, int) = {getDrawingWindow};
int *g_apnNumber[] = {&gMaxMsgNum, &gnBuffLenForStandAlone};
char **g_apchText[] = {&gpchConfigStrForStandAlone};
QList<QString> *g_aplstMessage[] = {&glstErrMsg, &glstOutputMsg};
QMutex *g_apcMutex[] = {&gMtxErr, &gMtxOutput};
bool *g_apbInited[] = {&gbInited};
char (*g_apszBlank[])[1] = {&gszBlank};
char (*g_apszVersion[])[33] = {&gszErrVerMsg};

template <typename Actual, typename Expected>
constexpr bool same = std::is_same_v<Actual, Expected>;
using Store = ArithmParamMgr;
static_assert(std::is_constructible_v<Arithm, bool, fnGetID, fnShowConfigWindow, fnExecute>);
static_assert(!std::is_polymorphic_v<Arithm>);
static_assert(same<decltype(&Arithm::getID), QString (Arithm::*)()>);
static_assert(same<decltype(&Arithm::showConfigWindow), QString (Arithm::*)(QString, Store *)>);
static_assert(same<decltype(&Arithm::execute), QString (Arithm::*)(QString &, Store *)>);
static_assert(std::is_copy_constructible_v<ArithmFactory::ArithmInfo>);
static_assert(same<decltype(ArithmFactory().getArithms()), QList<ArithmFactory::ArithmInfo> *>);
static_assert(same<decltype(ArithmMgr().getArithm(QString())), Arithm *>);
static_assert(same<decltype(ArithmMgr().getArithm(QString(), QString())), QString>);
static_assert(same<decltype(&MemoryDiskCallBack0::MemoryDiskRequestPicture), fnRequestPicture>);
static_assert(same<decltype(&MemoryDiskCallBack5::MemoryDiskReleasePicture), fnReleasePicture>);
static_assert(same<decltype(&MemoryDisk::addDIB), bool (MemoryDisk::*)(unsigned char *, int, int)>);
static_assert(same<decltype(&MemoryDisk::requestGray8), MemoryDisk::Gray8 *(MemoryDisk::*)()>);
static_assert(same<decltype(MemoryDisk::m_pcDIBIdleSemaphore), QSemaphore *>);
static_assert(same<decltype(&MemoryDisk::getID), fnGetID>);
static_assert(same<decltype(&MemoryDisk::showConfigWindow), fnShowConfigWindow>);
static_assert(same<decltype(&MemoryDisk::execute), fnExecute>);
static_assert(same<decltype(&MemoryDisk::transConfigStr), char *(*)(QString &)>);
using Source = DataSource::DataSourceInstance;
static_assert(
    same<decltype(&DataSource::createDataSourceFromConfigString), Source *(DataSource::*)(Store *, QString)>);
static_assert(same<decltype(&DataSource::newDataSource), Source *(DataSource::*)(Store *, QString &)>);
static_assert(same<decltype(DataSource::m_mapDataSourceInfo), QMap<QString, DataSource::DataSourceInfo *>>);
static_assert(sizeof(DataSource::DataSourceInfo) == 8 * sizeof(fnStart)); // a table of functions

int main()
{
    if (gMaxMsgNum != 10 || gnBuffLenForStandAlone != 1024 || gbInited ||
        gpchConfigStrForStandAlone == nullptr ||
        strcmp(gszErrVerMsg, "ArithmParamMgr version mismatch.") != 0) {
        puts("a global does not start as it should");
        return 1;
    }
    ArithmParamMgr *pcAPM = ArithmParamMgr::newInstance();
    ArithmParamMgr::deleteInstance(pcAPM);
    char achMissing[] = "missing.tasks";
    return *openTasksFile(achMissing) != '\0' && gbInited ? 0 : 1;
}
