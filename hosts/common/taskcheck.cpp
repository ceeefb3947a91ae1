#include "common/taskcheck.h"

#include <QCoreApplication>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

#include "DataSource/datasource.h"
#include "arithmMgr/arithmregister.h"
#include "common/storeaccess.h"
#include "globalfunction.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr int SHOWN_LENGTH = 60; ///< characters of a stray text in a finding

const QRegularExpression &marker()
{
    static const QRegularExpression s_cMarker("</?(-|=)\\w+\\1>");
    return s_cMarker;
}

QString quoted(const QString &strText)
{
    const QString strOneLine = strText.simplified();
    return '\'' + (strOneLine.size() > SHOWN_LENGTH ? strOneLine.left(SHOWN_LENGTH) + "…" : strOneLine) +
           '\'';
}

struct Step {
    int m_nMaxExeTimes = 0;
    QString m_strArithmID;
    QString m_strOptionStr;
};

/// Checks one block after the other; m_cPlace says where it stands.
class Checker
{
    Q_DECLARE_TR_FUNCTIONS(TaskCheck)

public:
    QList<Finding> check(const QString &strTasks);

    int m_nTasks = 0;

private:
    using Written = QMap<ParamKind, QMap<int, int>>; ///< the first step that writes an ID, -1 the source

    void add(const QString &strText);
    QString field(QString &strBlock, const char *szName);
    void checkNumber(const char *szName, const QString &strValue);
    /// Takes the blocks of one name out of the text and hands each to fnBlock.
    template <typename Function>
    void takeBlocks(QString &strText, char chFrame, const char *szName, Function fnBlock);
    void checkRest(const QString &strRest);
    void checkTask(QString strTask);
    void checkSource(const QString &strConfig, Written &mapWritten);
    Step checkStep(QString strStep);
    void checkFlow(const QList<Step> &lstStep, const QStringList &lstArithm, Written mapWritten);
    void checkAccess(const StoreAccess &cAccess, const Written &mapBefore, const Written &mapEver);

    Finding m_cPlace;
    QList<Finding> m_lstFinding;
};

void Checker::add(const QString &strText)
{
    m_cPlace.m_strText = strText;
    m_lstFinding += m_cPlace;
}

QString Checker::field(QString &strBlock, const char *szName)
{
    const QString strBegin = QString("<-%1->").arg(szName);
    QString strValue = GlobalFunction::getAndRemoveBody(strBlock, strBegin, QString("</-%1->").arg(szName));
    const QRegularExpressionMatch cMatch = marker().match(strValue);
    if (cMatch.hasMatch())
        add(tr("the value of '%1' holds the marker '%2'").arg(strBegin, cMatch.captured()));
    return strValue;
}

void Checker::checkNumber(const char *szName, const QString &strValue)
{
    bool bNumber = false;
    strValue.toInt(&bNumber);
    if (!bNumber && !strValue.isEmpty())
        add(tr("'<-%1->' holds %2, which is no number and read as 0").arg(szName, quoted(strValue)));
}

template <typename Function>
void Checker::takeBlocks(QString &strText, char chFrame, const char *szName, Function fnBlock)
{
    const QString strBegin = QString("<%1%2%1>").arg(chFrame).arg(szName);
    const QString strEnd = QString("</%1%2%1>").arg(chFrame).arg(szName);
    // Only the part up to the next end is handed on: taking a block out of all the rest moves all of it.
    QString strKept;
    int nFrom = 0;
    for (int nEnd = 0; (nEnd = strText.indexOf(strEnd, nFrom, Qt::CaseInsensitive)) >= 0;) {
        strKept += strText.midRef(nFrom, nEnd + strEnd.size() - nFrom);
        nFrom = nEnd + strEnd.size();
        const int nBefore = strKept.size();
        const QString strBlock = GlobalFunction::getAndRemoveBody(strKept, strBegin, strEnd);
        if (!strBlock.isEmpty()) {
            fnBlock(strBlock);
            continue;
        }
        if (strKept.size() != nBefore)
            add(tr("an empty '%1' block ends the reading").arg(strBegin));
        break;
    }
    strText = strKept + strText.midRef(nFrom);
}

void Checker::checkRest(const QString &strRest)
{
    QSet<QString> setTold;
    for (auto iMarker = marker().globalMatch(strRest); iMarker.hasNext();) {
        const QString strMarker = iMarker.next().captured();
        if (!setTold.contains(strMarker))
            add(tr("stray marker '%1'").arg(strMarker));
        setTold += strMarker;
    }
    QString strText = strRest;
    strText.remove(marker());
    if (!strText.trimmed().isEmpty())
        add(tr("text outside any block: %1").arg(quoted(strText)));
}

Step Checker::checkStep(QString strStep)
{
    Step cStep;
    const int nPlace = m_lstFinding.size();
    const QString strLimit = field(strStep, "MaxExeTimes");
    checkNumber("MaxExeTimes", strLimit);
    cStep.m_nMaxExeTimes = strLimit.toInt();
    cStep.m_strArithmID = field(strStep, "ArithmID");
    cStep.m_strOptionStr = field(strStep, "OptionStr");
    field(strStep, "ClassName");
    const QString strName = field(strStep, "ArithmName");
    field(strStep, "Describe");
    m_cPlace.m_strArithm = strName.isEmpty() ? cStep.m_strArithmID : strName;
    for (int nFinding = nPlace; nFinding < m_lstFinding.size(); ++nFinding)
        m_lstFinding[nFinding].m_strArithm = m_cPlace.m_strArithm;

    if (strLimit.isEmpty())
        add(tr("never runs: its limit '<-MaxExeTimes->' is missing"));
    else if (cStep.m_nMaxExeTimes == 0)
        add(tr("never runs: its limit is 0"));
    if (!ArithmFactory::getInstance()->getArithm(cStep.m_strArithmID))
        add(tr("unknown algorithm '%1'").arg(cStep.m_strArithmID));
    checkRest(strStep);
    return cStep;
}

void Checker::checkSource(const QString &strConfig, Written &mapWritten)
{
    const QString strKind = rawConfigValue(strConfig, "DSName");
    if (strConfig.isEmpty())
        return add(tr("no data source"));
    if (!DataSource::getInstance()->m_mapDataSourceInfo.contains(strKind))
        return add(tr("unknown data source '%1'").arg(strKind));

    const QString strType = rawConfigValue(strConfig, "OutputType");
    const int nID = rawConfigValue(strConfig, "OutputID").toInt();
    if (nID < 1)
        add(tr("the data source delivers nothing: its output ID is not at least 1"));
    else if (strType != "RGB" && strType != "Gray8")
        add(tr("the data source delivers nothing: its output type is '%1', not 'RGB' or 'Gray8'")
                .arg(strType));
    else
        mapWritten[strType == "RGB" ? ParamKind::DIB : ParamKind::Gray8][nID] = -1;
}

void Checker::checkAccess(const StoreAccess &cAccess, const Written &mapBefore, const Written &mapEver)
{
    const QString strKind = paramKindName(cAccess.m_eKind);
    if (!cAccess.m_bNumber)
        return add(tr("<%1> holds no number").arg(cAccess.m_strTag));
    if (cAccess.m_nID < 0 && cAccess.m_eNegative != Negative::Allowed)
        return add((cAccess.m_eNegative == Negative::Refused ? tr("<%1> is below 0: the step fails")
                                                             : tr("<%1> is below 0: the step does nothing"))
                       .arg(cAccess.m_strTag));
    if (cAccess.m_nID == -1)
        return add(tr("<%1> is -1: every run adds another %2 to the store").arg(cAccess.m_strTag, strKind));
    if (cAccess.m_bWrite || mapBefore.value(cAccess.m_eKind).contains(cAccess.m_nID))
        return;

    QString strHint;
    if (mapEver.value(cAccess.m_eKind).contains(cAccess.m_nID))
        strHint = tr("; step %1 writes it").arg(mapEver[cAccess.m_eKind][cAccess.m_nID] + 1);
    for (auto iKind = mapBefore.begin(); iKind != mapBefore.end(); ++iKind)
        if (strHint.isEmpty() && iKind->contains(cAccess.m_nID)) {
            const int nStep = iKind->value(cAccess.m_nID);
            const QString strOther = paramKindName(iKind.key());
            strHint = nStep < 0 ? tr("; the data source writes the %1 of that ID").arg(strOther)
                                : tr("; step %1 writes the %2 of that ID").arg(nStep + 1).arg(strOther);
        }
    add(tr("reads %1 %2 (<%3>), which nothing before it writes%4")
            .arg(strKind)
            .arg(cAccess.m_nID)
            .arg(cAccess.m_strTag, strHint));
}

void Checker::checkFlow(const QList<Step> &lstStep, const QStringList &lstArithm, Written mapWritten)
{
    Written mapEver;
    for (int nStep = 0; nStep < lstStep.size(); ++nStep)
        for (const StoreAccess &cAccess :
             storeAccess(lstStep[nStep].m_strArithmID, lstStep[nStep].m_strOptionStr))
            if (cAccess.m_bWrite && lstStep[nStep].m_nMaxExeTimes != 0 &&
                !mapEver[cAccess.m_eKind].contains(cAccess.m_nID))
                mapEver[cAccess.m_eKind][cAccess.m_nID] = nStep;

    bool bAnyWritten = false; // by an algorithm that may write anything
    for (const bool bCleanUp : {false, true}) {
        for (int nStep = 0; nStep < lstStep.size(); ++nStep) {
            const Step &cStep = lstStep[nStep];
            if (cStep.m_nMaxExeTimes == 0 || (cStep.m_nMaxExeTimes == TaskItem::CLEAN_UP_TIMES) != bCleanUp)
                continue;
            m_cPlace.m_nStep = nStep;
            m_cPlace.m_strArithm = lstArithm[nStep];
            const QList<StoreAccess> lstAccess = storeAccess(cStep.m_strArithmID, cStep.m_strOptionStr);
            for (const StoreAccess &cAccess : lstAccess)
                if (cAccess.m_bWrite || cAccess.m_nID < 0 || !bAnyWritten)
                    checkAccess(cAccess, mapWritten, mapEver);
            for (const StoreAccess &cAccess : lstAccess)
                if (cAccess.m_bWrite && !mapWritten[cAccess.m_eKind].contains(cAccess.m_nID))
                    mapWritten[cAccess.m_eKind][cAccess.m_nID] = nStep;
            bAnyWritten = bAnyWritten || !isStoreAccessKnown(cStep.m_strArithmID);
        }
    }
}

void Checker::checkTask(QString strTask)
{
    m_cPlace = {};
    m_cPlace.m_nTask = m_nTasks++;
    const int nPlace = m_lstFinding.size();
    m_cPlace.m_strTask = field(strTask, "TaskName").trimmed();
    for (int nFinding = nPlace; nFinding < m_lstFinding.size(); ++nFinding)
        m_lstFinding[nFinding].m_strTask = m_cPlace.m_strTask;
    for (const char *szNumber : {"Kernel", "View"})
        checkNumber(szNumber, field(strTask, szNumber));
    Written mapWritten;
    checkSource(field(strTask, "DataSource"), mapWritten);

    QList<Step> lstStep;
    QStringList lstArithm;
    takeBlocks(strTask, '-', "TaskItem", [&](const QString &strStep) {
        m_cPlace.m_nStep = lstStep.size();
        lstStep += checkStep(strStep);
        lstArithm += m_cPlace.m_strArithm;
    });
    checkFlow(lstStep, lstArithm, mapWritten);
    m_cPlace.m_nStep = -1;
    checkRest(strTask);
}

QList<Finding> Checker::check(const QString &strTasks)
{
    QString strRest = strTasks;
    takeBlocks(strRest, '=', "TaskInfo", [this](const QString &strTask) { checkTask(strTask); });
    m_cPlace = {};
    checkRest(strRest);
    return m_lstFinding;
}
} // namespace

QList<Finding> checkTasks(const QString &strTasks, int &nTasks)
{
    Checker cChecker;
    const QList<Finding> lstFinding = cChecker.check(strTasks);
    nTasks = cChecker.m_nTasks;
    return lstFinding;
}

QString findingText(const Finding &cFinding)
{
    QString strWhere;
    if (cFinding.m_nTask >= 0)
        strWhere = cFinding.m_strTask.isEmpty() ? Checker::tr("task %1").arg(cFinding.m_nTask + 1)
                                                : Checker::tr("task '%1'").arg(cFinding.m_strTask);
    if (cFinding.m_nStep >= 0)
        strWhere += Checker::tr(" step %1 (%2)").arg(cFinding.m_nStep + 1).arg(cFinding.m_strArithm);
    return strWhere.isEmpty() ? cFinding.m_strText : strWhere + ": " + cFinding.m_strText;
}
