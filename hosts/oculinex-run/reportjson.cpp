#include "reportjson.h"

#include <cstdio>

#include <QJsonArray>
#include <QJsonDocument>

#include "common/storeaccess.h"

namespace
{
constexpr double NS_PER_MS = 1e6;

double milliseconds(qint64 nNs)
{
    return static_cast<double>(nNs) / NS_PER_MS;
}

/// Null where nothing was measured.
QJsonValue mean(qint64 nTotalNs, qint64 nCount)
{
    return nCount > 0 ? milliseconds(nTotalNs / nCount) : QJsonValue();
}
} // namespace

JsonReport::JsonReport(bool bQuiet) : m_bQuiet(bQuiet)
{
    m_cClock.start();
}

QJsonObject JsonReport::event(const char *szEvent, int nTask) const
{
    QJsonObject cObject{{"event", szEvent}};
    if (nTask >= 0) {
        cObject["position"] = nTask;
        cObject["task"] = m_lstTask[nTask].m_strName;
    }
    return cObject;
}

void JsonReport::line(const QJsonObject &cObject)
{
    const QByteArray achLine = QJsonDocument(cObject).toJson(QJsonDocument::Compact) + '\n';
    const std::lock_guard<std::mutex> cGuard(m_cOutput);
    fwrite(achLine.constData(), 1, static_cast<size_t>(achLine.size()), stdout);
    fflush(stdout);
}

void JsonReport::message(const char *szEvent, int nTask, const QString &strText)
{
    QJsonObject cObject = event(szEvent, nTask);
    cObject["seconds"] = static_cast<double>(m_cClock.elapsed()) / 1000;
    cObject["text"] = strText;
    line(cObject);
}

void JsonReport::printed(int nTask, const QString &strText)
{
    if (!m_bQuiet)
        message("print", nTask, strText);
}

void JsonReport::failed(int nTask, const QString &strText)
{
    message("error", nTask, strText);
}

void JsonReport::sourceFailed(int nTask, const QString &strText)
{
    message("source", nTask, strText);
}

void JsonReport::pictureWritten(int nView, qint64 nNumber, const QString &strFile)
{
    QJsonObject cObject = event("picture", -1);
    cObject["seconds"] = static_cast<double>(m_cClock.elapsed()) / 1000;
    cObject["view"] = nView;
    cObject["number"] = nNumber;
    cObject["file"] = strFile;
    line(cObject);
}

void JsonReport::logged(const QString &strText)
{
    message("log", -1, strText);
}

void JsonReport::stepHangs(int nTask, int nStep, double fSeconds)
{
    QJsonObject cObject = event("waiting", nTask);
    cObject["step"] = nStep + 1;
    cObject["name"] = m_lstTask[nTask].m_lstStep.value(nStep);
    cObject["seconds"] = fSeconds;
    line(cObject);
}

void JsonReport::summary(const QList<TaskSummary> &lstTask, const QList<ViewSummary> &lstView, int nExitCode)
{
    QJsonArray cTasks;
    for (int nTask = 0; nTask < lstTask.size(); ++nTask) {
        const TaskStatus &cStatus = lstTask[nTask].m_cStatus;
        const double fSeconds = lstTask[nTask].m_fSeconds;
        QJsonArray cSteps;
        for (int nStep = 0; nStep < cStatus.m_lstStep.size(); ++nStep) {
            const StepStatus &cStep = cStatus.m_lstStep[nStep];
            cSteps += QJsonObject{{"step", nStep + 1},
                                  {"name", m_lstTask[nTask].m_lstStep.value(nStep)},
                                  {"runs", cStep.m_nExecutions},
                                  {"meanMs", mean(cStep.m_nTotalNs, cStep.m_nExecutions)},
                                  {"worstMs", milliseconds(cStep.m_nWorstNs)},
                                  {"share", stepShare(cStatus, nStep)}};
        }
        cTasks += QJsonObject{{"position", nTask},
                              {"task", m_lstTask[nTask].m_strName},
                              {"runs", cStatus.m_nRuns},
                              {"pictures", cStatus.m_nPictures},
                              {"failures", cStatus.m_nFailures},
                              {"seconds", fSeconds},
                              {"meanMs", mean(cStatus.m_nTotalRunNs, cStatus.m_nRuns)},
                              {"worstMs", milliseconds(cStatus.m_nWorstRunNs)},
                              {"lastError", cStatus.m_strLastError},
                              {"steps", cSteps}};
    }
    QJsonArray cViews;
    for (const ViewSummary &cView : lstView)
        cViews += QJsonObject{{"view", cView.m_nView},       {"updates", cView.m_nUpdates},
                              {"written", cView.m_nWritten}, {"dropped", cView.m_nDropped},
                              {"failed", cView.m_nFailed},   {"first", cView.m_strFirst},
                              {"last", cView.m_strLast}};
    QJsonObject cObject = event("summary", -1);
    cObject["seconds"] = static_cast<double>(m_cClock.elapsed()) / 1000;
    cObject["exitCode"] = nExitCode;
    cObject["tasks"] = cTasks;
    cObject["views"] = cViews;
    line(cObject);
}

void JsonReport::findings(const QList<Finding> &lstFinding)
{
    for (const Finding &cFinding : lstFinding) {
        QJsonObject cObject = event("finding", -1);
        if (cFinding.m_nTask >= 0) {
            cObject["position"] = cFinding.m_nTask;
            cObject["task"] = cFinding.m_strTask;
        }
        if (cFinding.m_nStep >= 0) {
            cObject["step"] = cFinding.m_nStep + 1;
            cObject["name"] = cFinding.m_strArithm;
        }
        cObject["text"] = cFinding.m_strText;
        line(cObject);
    }
}

void JsonReport::tried(const TriedStep &cStep)
{
    QJsonArray cOutputs;
    for (const TriedOutput &cOutput : cStep.m_lstOutput) {
        QJsonObject cObject{{"tag", cOutput.m_strTag},
                            {"kind", Plugin::kindName(cOutput.m_eKind)},
                            {"id", cOutput.m_nID},
                            {"file", cOutput.m_strFile}};
        if (Plugin::isPicture(cOutput.m_eKind)) {
            cObject["width"] = cOutput.m_cSize.width();
            cObject["height"] = cOutput.m_cSize.height();
        } else {
            cObject["count"] = cOutput.m_nCount;
            cObject["first"] = QJsonArray::fromStringList(cOutput.m_lstText);
        }
        cOutputs += cObject;
    }
    QJsonObject cObject = event("tried", -1);
    cObject["picture"] = cStep.m_strPicture;
    cObject["step"] = cStep.m_nStep + 1;
    cObject["id"] = cStep.m_strID;
    cObject["config"] = cStep.m_strConfig;
    cObject["runs"] = cStep.m_nRuns;
    cObject["medianMs"] = milliseconds(cStep.m_nMedianNs);
    cObject["bestMs"] = milliseconds(cStep.m_nBestNs);
    cObject["commands"] = QJsonArray::fromStringList(cStep.m_lstCommand);
    cObject["outputs"] = cOutputs;
    cObject["allFile"] = cStep.m_strAllFile;
    line(cObject);
}

void JsonReport::known(const QList<KnownPart> &lstPart)
{
    for (const KnownPart &cPart : lstPart) {
        QJsonObject cObject = event(cPart.m_bSource ? "dataSource" : "algorithm", -1);
        cObject["name"] = cPart.m_strName;
        cObject["file"] = cPart.m_strFile;
        if (!cPart.m_bSource) {
            cObject["class"] = cPart.m_strClass;
            cObject["id"] = cPart.m_strID;
        }
        line(cObject);
    }
}
