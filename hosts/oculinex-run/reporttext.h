#ifndef REPORTTEXT_H
#define REPORTTEXT_H

#include "report.h"

/// Lines and tables: printed texts and tables on the standard output, errors on the standard error,
/// where a terminal also gets the status line.
class TextReport : public Report
{
public:
    explicit TextReport(bool bQuiet);

    void printed(int nTask, const QString &strText) override;
    void failed(int nTask, const QString &strText) override;
    void sourceFailed(int nTask, const QString &strText) override;
    void pictureWritten(int, qint64, const QString &) override {} // the summary names them
    void logged(const QString &strText) override;
    void stepHangs(int nTask, int nStep, double fSeconds) override;
    void live(const QString &strLine) override;
    void summary(const QList<TaskSummary> &lstTask, const QList<ViewSummary> &lstView,
                 int nExitCode) override;
    void findings(const QList<Finding> &lstFinding) override;
    void tried(const TriedStep &cStep) override;
    void known(const QList<KnownPart> &lstPart) override;

private:
    QString prefix(int nTask) const;
    void line(FILE *pcStream, const QString &strLine);

    bool m_bQuiet;
    bool m_bTerminal;  ///< the standard error is one
    QString m_strLive; ///< the status line that stands on the terminal
};

#endif
