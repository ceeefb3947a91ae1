// Result texts of steps: a flow does what the command protocol says, told here in the plainest way.
// An input is result texts that end with a backslash and another character, from its begin on, and
// numbers from its end on.

#include <fuzzer/FuzzedDataProvider.h>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "fuzzing.h"
#include "globalfunction.h"
#include "taskMgr/taskMgr.h"

namespace
{
/// What is seen of a flow from outside.
struct Seen {
    QStringList m_lstSaid; ///< executed steps, printed texts, errors
};

Seen *s_pcSeen = nullptr; ///< where the task under test reports to
QList<QByteArray> s_lstResults;
int s_nExecutions = 0; ///< of one run; a run ends after so many

/// The next result text. Jumps could go round for ever, so that a run is stopped at last.
QByteArray nextResult()
{
    constexpr int MAX_EXECUTIONS = 60;
    if (++s_nExecutions > MAX_EXECUTIONS || s_lstResults.isEmpty())
        return s_nExecutions > MAX_EXECUTIONS ? "<CMD>stop:enough</CMD>" : "";
    return s_lstResults[s_nExecutions % s_lstResults.size()];
}

char *execute(char *pchConfig, ArithmParamMgr *)
{
    static QByteArray s_achResult;
    s_pcSeen->m_lstSaid.append(QStringLiteral("step ") + QLatin1String(pchConfig));
    s_achResult = nextResult();
    return s_achResult.data();
}

void onPrint(QString strText)
{
    s_pcSeen->m_lstSaid.append(QStringLiteral("print ") + strText);
}

void onError(QString strText)
{
    s_pcSeen->m_lstSaid.append(QStringLiteral("error ") + strText);
}

unsigned char *requestPicture(int, const char *, int *pnWidth, int *pnHeight)
{
    static unsigned char s_uchPixel = 0;
    *pnWidth = *pnHeight = 1;
    return &s_uchPixel;
}

DataSource::DataSourceInstance *newSource(ArithmParamMgr *pcStore)
{
    DataSource::DataSourceInfo cInfo;
    cInfo.m_fnRequestPicture = requestPicture;
    cInfo.m_fnReleasePicture = [](int) {};
    auto *pcSource = cInfo.newInstance(QString(), pcStore);
    pcSource->setDataType(QStringLiteral("Gray8"));
    pcSource->setDataID(1);
    return pcSource;
}

/// The same flow, run by the letter of the protocol.
class Model
{
public:
    Model(const QList<TaskItem> &lstFlow, Seen &cSeen) : m_lstFlow(lstFlow), m_cSeen(cSeen) {}

    bool runOnce(QString &strMsg, bool bSingle, int nLastStep)
    {
        const bool bGood = runSteps(strMsg, nLastStep < 0 ? m_lstFlow.size() - 1 : nLastStep);
        if (bSingle)
            resetCounts();
        return bGood;
    }
    void runTaskOnce()
    {
        resetCounts();
        QString strMsg;
        runOnce(strMsg, false, -1);
        report(strMsg);
        strMsg.clear();
        for (const TaskItem &cItem : qAsConst(m_lstFlow)) {
            if (cItem.m_nMaxExeTimes != TaskItem::CLEAN_UP_TIMES)
                continue;
            QString strResult;
            if (!call(cItem, strResult)) {
                strMsg = unknown(cItem);
            } else {
                obey(strResult, nullptr);
                if (!strResult.isEmpty())
                    strMsg = "Arithm \"" + cItem.m_strArithmName + "\" error, message:" + strResult;
            }
            if (!strMsg.isEmpty())
                break;
        }
        report(strMsg);
    }

    QList<TaskItem> m_lstFlow;

private:
    static QString unknown(const TaskItem &cItem)
    {
        return "Arithm\"" + cItem.m_strArithmName + "\"is not existed.";
    }
    void report(const QString &strMsg)
    {
        if (!strMsg.isEmpty())
            m_cSeen.m_lstSaid.append("error " + strMsg);
    }
    void resetCounts()
    {
        for (TaskItem &cItem : m_lstFlow)
            cItem.m_nExeTimes = 0;
    }
    bool call(const TaskItem &cItem, QString &strResult)
    {
        if (cItem.m_strArithmID != QLatin1String("fuzzed"))
            return false;
        m_cSeen.m_lstSaid.append("step " + cItem.m_strOptionStr);
        strResult = QString::fromUtf8(nextResult().constData());
        return true;
    }
    /// False on "stop:".
    bool obey(QString &strResult, qint64 *pnStep)
    {
        while (strResult.size() > 4 || m_bTaken) {
            const QString strBody = GlobalFunction::getAndRemoveBody(strResult, "<CMD>", "</CMD>");
            m_bTaken = true; // what is left may be as short as it likes
            bool bNumber = false;
            if (strBody.startsWith("print:", Qt::CaseInsensitive)) {
                m_cSeen.m_lstSaid.append("print " + strBody.mid(6));
            } else if (pnStep && strBody.startsWith("skip:", Qt::CaseInsensitive)) {
                const int nSkip = strBody.mid(5).toInt(&bNumber);
                *pnStep += bNumber ? qint64{nSkip} - 1 : 0;
            } else if (pnStep && strBody.startsWith("stop:", Qt::CaseInsensitive)) {
                m_cSeen.m_lstSaid.append("print " + strBody.mid(5));
                m_bTaken = false;
                return false;
            } else {
                break;
            }
        }
        m_bTaken = false;
        return true;
    }
    bool runSteps(QString &strMsg, qint64 nLast)
    {
        for (qint64 nStep = 0; nStep <= nLast; ++nStep) {
            nStep = qMax<qint64>(nStep, 0);
            if (nStep >= m_lstFlow.size())
                break;
            TaskItem &cItem = m_lstFlow[static_cast<int>(nStep)];
            if (cItem.m_nMaxExeTimes == TaskItem::CLEAN_UP_TIMES ||
                (cItem.m_nMaxExeTimes >= 0 && cItem.m_nExeTimes >= cItem.m_nMaxExeTimes))
                continue;
            QString strResult;
            if (!call(cItem, strResult)) {
                strMsg = unknown(cItem);
                return false;
            }
            if (strResult.size() > 4)
                strMsg.clear();
            if (!obey(strResult, &nStep))
                return false;
            if (!strResult.isEmpty()) {
                strMsg = QStringLiteral("算法\"") + cItem.m_strArithmName +
                         QStringLiteral("\"出错, 错误信息:") + strResult;
                return false;
            }
            ++cItem.m_nExeTimes;
        }
        return true;
    }

    Seen &m_cSeen;
    bool m_bTaken = false;
};

QString counts(const QList<TaskItem> &lstFlow)
{
    QStringList lstCounts;
    for (const TaskItem &cItem : lstFlow)
        lstCounts.append(QString::number(cItem.m_nExeTimes));
    return lstCounts.join(',');
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    constexpr int MAX_STEPS = 6;
    constexpr size_t MAX_RESULT = 200;
    static const bool s_bRegistered = [] {
        static Arithm s_cAlgorithm(
            false, [] { return "fuzzed"; }, nullptr, execute);
        ArithmFactory::getInstance()->getArithms()->append({QString(), QString(), &s_cAlgorithm});
        return true;
    }();
    Q_UNUSED(s_bRegistered)

    FuzzedDataProvider cData(puchData, nSize);
    s_lstResults.clear();
    for (int nResults = cData.ConsumeIntegralInRange<int>(0, 5); nResults > 0; --nResults)
        s_lstResults.append(QByteArray::fromStdString(cData.ConsumeRandomLengthString(MAX_RESULT)));

    TaskInfo cTask(QStringLiteral("fuzzed"), onError);
    cTask.setPrintCallBack(onPrint);
    cTask.m_pcDS = newSource(cTask.m_pcAPM);
    for (int nSteps = cData.ConsumeIntegralInRange<int>(0, MAX_STEPS); nSteps > 0; --nSteps) {
        TaskItem cItem;
        cItem.m_nMaxExeTimes = cData.PickValueInArray({-1, -1, -1, 0, 1, 2, int{TaskItem::CLEAN_UP_TIMES}});
        cItem.m_strArithmID = cData.ConsumeIntegralInRange<int>(0, 15) ? "fuzzed" : "unknown";
        cItem.m_strOptionStr = cItem.m_strArithmName = QString::number(nSteps);
        cTask.m_lstArithm.append(cItem);
    }

    Seen cIs;
    Seen cShallBe;
    Model cModel(cTask.m_lstArithm, cShallBe);
    s_pcSeen = &cIs;
    for (int nRuns = cData.ConsumeIntegralInRange<int>(1, 3); nRuns > 0; --nRuns) {
        const bool bSingle = cData.ConsumeBool();
        const int nLastStep = cData.ConsumeIntegralInRange<int>(-2, MAX_STEPS + 1);
        QString strIs;
        QString strShallBe;
        s_nExecutions = 0;
        const bool bIs = cTask.runOnce(strIs, bSingle, nLastStep, -1);
        s_nExecutions = 0;
        const bool bShallBe = cModel.runOnce(strShallBe, bSingle, nLastStep);
        Fuzzing::requireEqual(strIs, strShallBe, "the error of a run");
        Fuzzing::require(bIs == bShallBe, "whether a run is good");
    }
    s_nExecutions = 0;
    cTask.runTaskOnce();
    s_nExecutions = 0;
    cModel.runTaskOnce();
    Fuzzing::requireEqual(cIs.m_lstSaid.join('\n'), cShallBe.m_lstSaid.join('\n'), "what a flow does");
    Fuzzing::requireEqual(counts(cTask.m_lstArithm), counts(cModel.m_lstFlow), "the steps' counts");
    return 0;
}
