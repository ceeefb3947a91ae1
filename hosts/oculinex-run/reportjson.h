#ifndef REPORTJSON_H
#define REPORTJSON_H

#include <QElapsedTimer>
#include <QJsonObject>

#include "report.h"

/// One JSON object a line on the standard output; its "event" tells what it is.
class JsonReport : public Report
{
public:
    explicit JsonReport(bool bQuiet);

    void printed(int nTask, const QString &strText) override;
    void failed(int nTask, const QString &strText) override;
    void sourceFailed(int nTask, const QString &strText) override;
    void pictureWritten(int nView, qint64 nNumber, const QString &strFile) override;
    void logged(const QString &strText) override;
    void stepHangs(int nTask, int nStep, double fSeconds) override;
    void live(const QString &) override {}
    void summary(const QList<TaskSummary> &lstTask, const QList<ViewSummary> &lstView,
                 int nExitCode) override;
    void findings(const QList<Finding> &lstFinding) override;
    void tried(const TriedStep &cStep) override;
    void known(const QList<KnownPart> &lstPart) override;

private:
    void message(const char *szEvent, int nTask, const QString &strText);
    QJsonObject event(const char *szEvent, int nTask) const;
    void line(const QJsonObject &cObject);

    bool m_bQuiet;
    QElapsedTimer m_cClock; ///< since the report was made
};

#endif
