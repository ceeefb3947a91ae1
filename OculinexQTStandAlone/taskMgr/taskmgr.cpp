#include "taskMgr/taskMgr.h"

#include <memory>
#include <vector>

#include <QComboBox>
#include <QMenu>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"
#include "framedbody.h"
#include "globalfunction.h"
#include "qguard.h"
#include "taskMgr/blockreader.h"
#include "taskMgr/flowtable.h"
#include "taskMgr/taskhold.h"
#include "taskMgr/taskrecord.h"
#include "taskMgr/taskwidgets.h"

namespace
{
/// A field or a block of the tasks file, by its two markers. Nothing that is destroyed: a host may
/// save its tasks as late as in its own last destructors.
class Field
{
public:
    constexpr Field(QStringView strBegin, QStringView strEnd) : m_strBegin(strBegin), m_strEnd(strEnd) {}

    QString take(QString &strText) const { return FramedBody::take(strText, m_strBegin, m_strEnd); }
    BlockReader blocks(const QString &strText) const { return {strText, m_strBegin, m_strEnd}; }

    void appendTo(QString &strText, const QString &strValue) const
    {
        append(strText, m_strBegin);
        strText += strValue;
        endIn(strText);
    }
    void appendLinesTo(QString &strText, const QString &strValue) const
    {
        beginIn(strText);
        strText += strValue;
        strText += QLatin1Char('\n');
        endIn(strText);
    }
    void beginIn(QString &strText) const
    {
        append(strText, m_strBegin);
        strText += QLatin1Char('\n');
    }
    void endIn(QString &strText) const
    {
        append(strText, m_strEnd);
        strText += QLatin1Char('\n');
    }

private:
    static void append(QString &strText, QStringView strMarker)
    {
        strText.append(strMarker.data(), static_cast<int>(strMarker.size()));
    }

    const QStringView m_strBegin;
    const QStringView m_strEnd;
};

constexpr Field s_cTask(u"<=TaskInfo=>", u"</=TaskInfo=>");
constexpr Field s_cName(u"<-TaskName->", u"</-TaskName->");
constexpr Field s_cKernel(u"<-Kernel->", u"</-Kernel->");
constexpr Field s_cView(u"<-View->", u"</-View->");
constexpr Field s_cDataSource(u"<-DataSource->", u"</-DataSource->");
constexpr Field s_cItem(u"<-TaskItem->", u"</-TaskItem->");
constexpr Field s_cMaxExeTimes(u"<-MaxExeTimes->", u"</-MaxExeTimes->");
constexpr Field s_cArithmID(u"<-ArithmID->", u"</-ArithmID->");
constexpr Field s_cOptionStr(u"<-OptionStr->", u"</-OptionStr->");
constexpr Field s_cClassName(u"<-ClassName->", u"</-ClassName->");
constexpr Field s_cArithmName(u"<-ArithmName->", u"</-ArithmName->");
constexpr Field s_cDescribe(u"<-Describe->", u"</-Describe->");

void appendItem(QString &strText, const TaskItem &cItem)
{
    s_cItem.beginIn(strText);
    s_cMaxExeTimes.appendTo(strText, QString::number(cItem.m_nMaxExeTimes));
    s_cArithmID.appendTo(strText, cItem.m_strArithmID);
    QString strOptionStr = cItem.m_strOptionStr;
    GlobalFunction::trimString(strOptionStr);
    s_cOptionStr.appendLinesTo(strText, strOptionStr);
    s_cClassName.appendTo(strText, cItem.m_strClassName);
    s_cArithmName.appendTo(strText, cItem.m_strArithmName);
    s_cDescribe.appendTo(strText, cItem.m_strDescribe);
    s_cItem.endIn(strText);
}

TaskItem readItem(QString strText)
{
    TaskItem cItem;
    cItem.m_nMaxExeTimes = s_cMaxExeTimes.take(strText).toInt();
    cItem.m_strArithmID = s_cArithmID.take(strText);
    cItem.m_strOptionStr = s_cOptionStr.take(strText);
    cItem.m_strClassName = s_cClassName.take(strText);
    cItem.m_strArithmName = s_cArithmName.take(strText);
    cItem.m_strDescribe = s_cDescribe.take(strText);
    return cItem;
}

void setCurrentIndex(QObject *pcCombo, int nIndex)
{
    inWidgetThread<QComboBox>(pcCombo, [nIndex](QComboBox *pcBox) { pcBox->setCurrentIndex(nIndex); });
}
} // namespace

TaskInfo::TaskInfo(QString strName, void (*fnHaveErrorMessage)(QString))
    : m_strName(strName), m_pcAPM(ArithmParamMgr::newInstance()), m_fnHaveErrorMessage(fnHaveErrorMessage)
{
    std::unique_ptr<ArithmParamMgr, void (*)(ArithmParamMgr *)> pcStore(m_pcAPM,
                                                                        ArithmParamMgr::deleteInstance);
    connect(this, &TaskInfo::threadFinished, this, &TaskInfo::threadFinishedArrived);
    createTaskRecord(this);
    static_cast<void>(pcStore.release()); // no destructor runs unless the constructor ends
}

TaskInfo::~TaskInfo()
{
    stopForDestruction(this);
    disconnectEvents();
    if (m_pcMenu && !TaskRecord::of(this)->m_bMenuHeld) // else it goes when its action is done
        m_pcMenu->deleteLater();                        // Qt may be in the midst of showing it
    delete m_pcDS;
    Drawing::disarm(m_pcAPM);
    ArithmParamMgr::deleteInstance(m_pcAPM);
    forgetTaskRecord(this);
}

QString TaskInfo::getName()
{
    return m_strName;
}

QList<TaskItem> &TaskInfo::getTaskItem()
{
    return m_lstArithm;
}

bool TaskInfo::IsRunning() const
{
    return m_bRunning;
}

void TaskInfo::setMssageCallBack(void (*fnHaveErrorMessage)(QString))
{
    m_fnHaveErrorMessage = fnHaveErrorMessage;
}

void TaskInfo::setPrintCallBack(void (*fnHavePrintMessage)(QString))
{
    m_fnHavePrintMessage = fnHavePrintMessage;
}

QString TaskInfo::toString()
{
    QString strText;
    s_cName.appendTo(strText, m_strName);
    s_cKernel.appendTo(strText, QString::number(m_nWhichKernel));
    s_cView.appendTo(strText, QString::number(m_nWhichView));
    if (m_pcDS) {
        GlobalFunction::trimString(m_strDataSourceConfigString);
        s_cDataSource.appendLinesTo(strText, m_strDataSourceConfigString);
    }
    for (const TaskItem &cItem : qAsConst(m_lstArithm))
        appendItem(strText, cItem);
    return strText;
}

void TaskInfo::fromString(QString strTask)
{
    const CallersRun cCallersRun(*this);
    m_strName = s_cName.take(strTask);
    m_nWhichKernel = s_cKernel.take(strTask).toInt();
    m_nWhichView = s_cView.take(strTask).toInt();
    // The combo boxes may answer by setting the values to an index that they have.
    setCurrentIndex(m_pcThreadSelect, m_nWhichKernel);
    setCurrentIndex(m_pcViewSelect, m_nWhichView);

    m_strDataSourceConfigString = s_cDataSource.take(strTask);
    if (!m_strDataSourceConfigString.isEmpty()) {
        delete std::exchange(m_pcDS, nullptr);
        m_pcDS =
            DataSource::getInstance()->createDataSourceFromConfigString(m_pcAPM, m_strDataSourceConfigString);
    }

    BlockReader cItems = s_cItem.blocks(strTask);
    for (QStringView strItem = cItems.next(); !strItem.isEmpty(); strItem = cItems.next()) {
        m_lstArithm.append(readItem(strItem.toString()));
        insertFlowRow(m_pcTaskFlow, -1, m_lstArithm.constLast());
    }
}

TaskMgr *TaskMgr::s_pcInstance = nullptr;
QMutex TaskMgr::s_cMutex;

namespace
{
/// Guards the map of the one manager, and what is read of a task that stands in it.
QMutex s_cMapMutex;
} // namespace

TaskMgr::TaskMgr() = default;

TaskMgr::~TaskMgr()
{
    clear();
}

TaskMgr *TaskMgr::getInstance()
{
    QGuard cGuard(s_cMutex);
    if (!s_pcInstance)
        s_pcInstance = new TaskMgr;
    return s_pcInstance;
}

void TaskMgr::deleteThis()
{
    TaskMgr *pcManager = nullptr;
    {
        QGuard cGuard(s_cMutex);
        std::swap(pcManager, s_pcInstance);
    }
    // Outside the lock: a task's last messages may lead to getInstance() on the task's thread.
    delete pcManager;
}

void TaskMgr::setMssageCallBack(void (*fnHaveErrorMessage)(QString))
{
    m_fnHaveErrorMessage = fnHaveErrorMessage;
}

void TaskMgr::setPrintCallBack(void (*fnHavePrintMessage)(QString))
{
    m_fnHavePrintMessage = fnHavePrintMessage;
}

void TaskMgr::addTask(TaskInfo *pcTask, int nPos)
{
    if (pcTask) {
        pcTask->setMssageCallBack(m_fnHaveErrorMessage);
        pcTask->setPrintCallBack(m_fnHavePrintMessage);
    }
    QGuard cGuard(s_cMapMutex);
    m_mapTask.insert(nPos, pcTask);
}

TaskInfo *TaskMgr::getTask(int nPos)
{
    QGuard cGuard(s_cMapMutex);
    return m_mapTask.value(nPos);
}

int TaskMgr::getTaskNum()
{
    QGuard cGuard(s_cMapMutex);
    return m_mapTask.size();
}

void TaskMgr::removeTask(int nPos)
{
    TaskInfo *pcTask = nullptr;
    {
        QGuard cGuard(s_cMapMutex);
        pcTask = m_mapTask.take(nPos);
    }
    TaskHold::destroy(pcTask);
}

void TaskMgr::clear()
{
    QMap<int, TaskInfo *> mapTask;
    {
        QGuard cGuard(s_cMapMutex);
        mapTask.swap(m_mapTask);
    }
    for (TaskInfo *pcTask : qAsConst(mapTask))
        TaskHold::destroy(pcTask);
}

QString TaskMgr::toString()
{
    QString strText;
    for (TaskInfo *pcTask : qAsConst(m_mapTask)) {
        if (pcTask)
            s_cTask.appendLinesTo(strText, pcTask->toString());
    }
    return strText;
}

void TaskMgr::fromString(QString strTasks)
{
    clear();
    std::vector<std::unique_ptr<TaskInfo>> vTask;
    BlockReader cTasks = s_cTask.blocks(strTasks);
    for (QStringView strTask = cTasks.next(); !strTask.isEmpty(); strTask = cTasks.next()) {
        vTask.push_back(std::make_unique<TaskInfo>(QString(), m_fnHaveErrorMessage));
        vTask.back()->fromString(strTask.toString());
    }
    // Their sources may let events through while they are made, and the host open another file.
    clear();
    try {
        for (size_t nPos = 0; nPos < vTask.size(); ++nPos) {
            addTask(vTask[nPos].get(), static_cast<int>(nPos));
            static_cast<void>(vTask[nPos].release());
        }
    } catch (...) {
        clear(); // none rather than some of them
        throw;
    }
}

bool TaskMgr::isTaskRunning(int nPos, bool &bRunning)
{
    QGuard cGuard(s_cMapMutex);
    const TaskInfo *pcTask = m_mapTask.value(nPos);
    bRunning = pcTask && pcTask->IsRunning();
    return pcTask != nullptr;
}

bool TaskMgr::getTaskStatus(int nPos, TaskStatus &cStatus)
{
    QGuard cGuard(s_cMapMutex);
    const TaskInfo *pcTask = m_mapTask.value(nPos);
    if (pcTask)
        cStatus = pcTask->getStatus();
    return pcTask != nullptr;
}
