#include "taskMgr/flowrun.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QTableWidget>

#include "Drawing/drawing.h"
#include "arithmMgr/arithmmgr.h"
#include "arithmMgr/arithms.h"
#include "logging.h"
#include "sharedfield.h"
#include "taskMgr/blockreader.h"
#include "taskMgr/taskMgr.h"
#include "taskMgr/taskrecord.h"
#include "taskMgr/taskwidgets.h"

namespace
{
constexpr qint64 NS_PER_MS = 1000000;
constexpr int MAX_VIEW = 3;

QString unknownArithmText(const QString &strName)
{
    return QStringLiteral("Arithm\"") + strName + QStringLiteral("\"is not existed.");
}

/// A cell that was being edited when the task was started may change it.
int maxExeTimes(const TaskItem &cItem)
{
    return SharedField::load(cItem.m_nMaxExeTimes);
}

bool isDue(const TaskItem &cItem)
{
    const int nMaxExeTimes = maxExeTimes(cItem);
    return nMaxExeTimes != TaskItem::CLEAN_UP_TIMES && (nMaxExeTimes < 0 || cItem.m_nExeTimes < nMaxExeTimes);
}

/// Whether a text is still the one that was copied: the very same data, not only equal characters.
bool isSame(const QString &strCopy, const QString &strNow)
{
    return strCopy.constData() == strNow.constData() && strCopy.size() == strNow.size();
}

/// The task's view, brought into the range that exists.
int clampView(std::atomic<int> &nWhichView)
{
    int nView = nWhichView;
    // The user may choose another view at the same moment; that choice must not be lost.
    while (nView < 0 || nView > MAX_VIEW) {
        const int nClamped = std::clamp(nView, 0, MAX_VIEW);
        if (nWhichView.compare_exchange_weak(nView, nClamped))
            return nClamped;
    }
    return nView;
}
} // namespace

QString FlowRun::runErrorText(const QString &strName, const QString &strError)
{
    return QStringLiteral("算法\"") + strName + QStringLiteral("\"出错, 错误信息:") + strError;
}

FlowRun::FlowRun(TaskInfo &cTask)
    : m_cTask(cTask),
      m_pcRecord(TaskRecord::of(&cTask)),
      m_pcOwnFigures(m_pcRecord->renewFigures(cTask.m_lstArithm.size())),
      m_lstPrepared(static_cast<size_t>(cTask.m_lstArithm.size()))
{
}

TaskItem &FlowRun::item(int nStep)
{
    // Never through QList's own operator: it would copy the list under the eyes of a second thread
    // that has taken a shared copy.
    return const_cast<TaskItem &>(std::as_const(m_cTask.m_lstArithm).at(nStep));
}

void FlowRun::resetCounts()
{
    for (int nStep = 0; nStep < m_cTask.m_lstArithm.size(); ++nStep)
        item(nStep).m_nExeTimes = 0;
}

bool FlowRun::run(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs)
{
    const bool bStatus = TaskInfo::isStatusEnabled();
    if (bStatus && !m_pcOwnFigures)
        m_pcOwnFigures = m_pcRecord->renewFigures(m_cTask.m_lstArithm.size());
    m_pcFigures = bStatus ? m_pcOwnFigures.get() : nullptr;
    m_bTimeSteps = bSingle || m_pcFigures;
    const qint64 nBeganNs = nTimeoutMs < 0 ? 0 : steadyNs();

    bool bGood = true;
    if (!m_cTask.m_pcDS) {
        strMsg = QStringLiteral("No datasource assigned.");
        noteFailure(strMsg);
        return false;
    }
    const bool bPicture = m_cTask.m_pcDS->execute();
    haltLateThread();
    if (bPicture) {
        const qint64 nPictureNs = m_pcFigures ? steadyNs() : 0;
        if (m_pcFigures)
            m_pcFigures->setPicture(nPictureNs);
        bGood = runSteps(strMsg, bSingle, nLastStep, nTimeoutMs, nBeganNs);
        if (m_pcFigures)
            m_pcFigures->endRun(nPictureNs, steadyNs());
        if (!bGood && !strMsg.isEmpty())
            noteFailure(strMsg);
    } else if (m_pcFigures) {
        m_pcFigures->setDataSourceError(m_cTask.m_pcDS->getLastError());
    }
    if (bSingle)
        resetCounts();
    return bGood;
}

void FlowRun::noteFailure(const QString &strError)
{
    if (m_pcFigures)
        m_pcFigures->setError(strError);
}

bool FlowRun::runSteps(QString &strMsg, bool bSingle, int nLastStep, int nTimeoutMs, qint64 nBeganNs)
{
    const int nCount = m_cTask.m_lstArithm.size();
    const qint64 nLast = nLastStep < 0 ? nCount - 1 : nLastStep;
    // 64 bits, so that no jump overflows.
    for (qint64 nNext = 0; nNext <= nLast; ++nNext) {
        if (nTimeoutMs >= 0 && (steadyNs() - nBeganNs) / NS_PER_MS > nTimeoutMs) {
            strMsg = QStringLiteral("Execute time out, there is a infinite loop or have a long waiting "
                                    "event, continue to wait?.");
            return false;
        }
        nNext = std::max<qint64>(nNext, 0);
        if (nNext >= nCount || m_cTask.m_bExit)
            break;
        const int nStep = static_cast<int>(nNext);
        TaskItem &cItem = item(nStep);
        if (!isDue(cItem))
            continue;

        const PreparedStep *pcStep = prepare(nStep, true);
        if (!pcStep) {
            strMsg = unknownArithmText(cItem.m_strArithmName);
            return false;
        }
        QString strResult = execute(*pcStep, nStep);
        if (!strResult.isEmpty()) {
            strMsg.clear();
            if (!obeyCommands(strResult, &nNext))
                return false;
        }
        if (!strResult.isEmpty()) {
            strMsg = runErrorText(cItem.m_strArithmName, strResult);
            qCDebug(lcTask).noquote() << strMsg;
            return false;
        }
        if (bSingle)
            showStepTime(nNext, m_nStepNs / NS_PER_MS);
        if (cItem.m_nExeTimes < std::numeric_limits<int>::max())
            ++cItem.m_nExeTimes;
    }
    return true;
}

void FlowRun::cleanUp(QString &strMsg, QString (*fnErrorText)(const QString &, const QString &))
{
    for (int nStep = 0; nStep < m_cTask.m_lstArithm.size(); ++nStep) {
        const TaskItem &cItem = item(nStep);
        if (maxExeTimes(cItem) != TaskItem::CLEAN_UP_TIMES)
            continue;
        QString strError;
        if (const PreparedStep *pcStep = prepare(nStep, false)) {
            QString strResult = execute(*pcStep, nStep);
            obeyCommands(strResult, nullptr);
            if (!strResult.isEmpty())
                strError = fnErrorText(cItem.m_strArithmName, strResult);
        } else {
            strError = unknownArithmText(cItem.m_strArithmName);
        }
        if (strError.isEmpty())
            continue;
        noteFailure(strError);
        strMsg = strError;
        return;
    }
}

FlowRun::PreparedStep *FlowRun::prepare(int nStep, bool bNameView)
{
    const TaskItem &cItem = item(nStep);
    // A print callback on the host's own thread may append steps.
    if (static_cast<size_t>(nStep) >= m_lstPrepared.size())
        m_lstPrepared.resize(static_cast<size_t>(nStep) + 1);
    PreparedStep &cStep = m_lstPrepared[static_cast<size_t>(nStep)];
    const bool bSame = cStep.m_pcArithm && isSame(cStep.m_strArithmID, cItem.m_strArithmID) &&
                       isSame(cStep.m_strOptionStr, cItem.m_strOptionStr);
    if (!bSame) {
        cStep.m_strArithmID = cItem.m_strArithmID;
        cStep.m_strOptionStr = cItem.m_strOptionStr;
        cStep.m_nView = PreparedStep::NO_CONFIG;
        cStep.m_pcArithm = ArithmMgr::getInstance()->getArithm(cItem.m_strArithmID);
        if (!cStep.m_pcArithm)
            return nullptr;
        cStep.m_bDrawing = cStep.m_pcArithm->getID() == QLatin1String(Drawing::getID());
    }
    const int nView = cStep.m_bDrawing && bNameView ? clampView(m_cTask.m_nWhichView) : PreparedStep::NO_VIEW;
    if (nView != cStep.m_nView) {
        cStep.m_achConfig = cItem.m_strOptionStr.toUtf8();
        if (nView >= 0)
            cStep.m_achConfig.prepend("<View>" + QByteArray::number(nView) + "</View>");
        cStep.m_nView = nView;
    }
    return &cStep;
}

QString FlowRun::execute(const PreparedStep &cStep, int nStep)
{
    const qint64 nBeganNs = m_bTimeSteps ? steadyNs() : 0;
    if (m_pcFigures)
        m_pcFigures->beginStep(nStep, nBeganNs);
    QString strResult = cStep.m_pcArithm->executeUtf8(cStep.m_achConfig, m_cTask.m_pcAPM);
    haltLateThread();
    if (m_bTimeSteps) {
        const qint64 nEndedNs = steadyNs();
        m_nStepNs = nEndedNs - nBeganNs;
        if (m_pcFigures)
            m_pcFigures->endStep(nStep, nEndedNs, strResult);
    }
    return strResult;
}

bool FlowRun::obeyCommands(QString &strResult, qint64 *pnStep)
{
    if (strResult.size() <= 4)
        return true;
    const auto fnPrint = [this](QStringView strText) {
        if (m_cTask.m_fnHavePrintMessage)
            m_cTask.m_fnHavePrintMessage(strText.toString());
    };
    const auto fnIs = [](QStringView strBody, QLatin1String strCommand) {
        return strBody.startsWith(strCommand, Qt::CaseInsensitive);
    };
    const QLatin1String strSkip("skip:");
    const QLatin1String strStop("stop:");
    const QLatin1String strPrint("print:");
    const QString strGiven = strResult;
    BlockReader cCommands(strGiven, u"<CMD>", u"</CMD>");
    for (;;) {
        const QStringView strBody = cCommands.next();
        if (fnIs(strBody, strPrint)) {
            fnPrint(strBody.mid(strPrint.size()));
        } else if (pnStep && fnIs(strBody, strSkip)) {
            bool bNumber = false;
            const int nSkip = strBody.mid(strSkip.size()).toString().toInt(&bNumber);
            if (bNumber)
                *pnStep += nSkip - qint64(1);
        } else if (pnStep && fnIs(strBody, strStop)) {
            fnPrint(strBody.mid(strStop.size()));
            return false;
        } else {
            strResult = cCommands.rest();
            return true;
        }
    }
}

void FlowRun::showStepTime(qint64 nRow, qint64 nMs)
{
    inWidgetThread<QTableWidget>(m_cTask.m_pcTaskFlow, [nRow, nMs](QTableWidget *pcTable) {
        if (nRow < 0 || nRow >= pcTable->rowCount() || pcTable->columnCount() <= 2)
            return;
        const int nCellRow = static_cast<int>(nRow);
        QTableWidgetItem *pcCell = pcTable->item(nCellRow, 2);
        if (!pcCell) {
            pcCell = new QTableWidgetItem;
            pcCell->setFlags(pcCell->flags() & ~Qt::ItemIsEditable);
            pcTable->setItem(nCellRow, 2, pcCell);
        }
        pcCell->setText(QString::number(nMs));
    });
}
