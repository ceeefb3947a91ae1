#include "reporttext.h"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/storeaccess.h"
#include "texttable.h"

namespace
{
constexpr double NS_PER_MS = 1e6;
constexpr int NAME_COLUMNS = 32;
const QString CLEAR_LINE = QStringLiteral("\r\033[K");

QString decimals(double fValue, int nDigits)
{
    return QString::number(fValue, 'f', nDigits);
}

/// A time that was measured nCount times.
QString milliseconds(qint64 nNs, qint64 nCount)
{
    return nCount > 0 ? decimals(static_cast<double>(nNs) / NS_PER_MS, 2) : "-";
}

QString meanMs(qint64 nTotalNs, qint64 nCount)
{
    return milliseconds(nCount > 0 ? nTotalNs / nCount : 0, nCount);
}

/// A step's name as the table has room for it.
QString shortened(const QString &strName)
{
    return displayWidth(strName) <= NAME_COLUMNS ? strName
                                                 : fitted(strName, NAME_COLUMNS - 1) + QChar(0x2026);
}

QList<QStringList> viewRows(const QList<ViewSummary> &lstView)
{
    QList<QStringList> lstRow = {{"view", "pictures", "written", "dropped", "failed"}};
    for (const ViewSummary &cView : lstView) {
        QString strFiles = cView.m_strFirst.isEmpty() ? "-" : cView.m_strFirst;
        if (cView.m_strLast != cView.m_strFirst)
            strFiles += QString(cView.m_nWritten > 2 ? " … " : ", ") + cView.m_strLast;
        lstRow += {QString::number(cView.m_nView), strFiles, QString::number(cView.m_nWritten),
                   QString::number(cView.m_nDropped), QString::number(cView.m_nFailed)};
    }
    return lstRow;
}

QString sizeText(const QSize &cSize)
{
    return QString("%1 x %2").arg(cSize.width()).arg(cSize.height());
}

int terminalColumns()
{
    winsize cSize = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &cSize) == 0 && cSize.ws_col > 0 ? cSize.ws_col : 80;
}

void write(FILE *pcStream, const QString &strText)
{
    const QByteArray achText = strText.toUtf8();
    // A reader that went away is told by SIGPIPE.
    fwrite(achText.constData(), 1, static_cast<size_t>(achText.size()), pcStream);
    fflush(pcStream);
}
} // namespace

TextReport::TextReport(bool bQuiet) : m_bQuiet(bQuiet), m_bTerminal(isatty(STDERR_FILENO) != 0) {}

QString TextReport::prefix(int nTask) const
{
    return m_lstTask.size() > 1 && nTask >= 0 ? m_lstTask[nTask].m_strName + ": " : QString();
}

void TextReport::line(FILE *pcStream, const QString &strLine)
{
    const std::lock_guard<std::mutex> cGuard(m_cOutput);
    if (!m_strLive.isEmpty())
        write(stderr, CLEAR_LINE);
    write(pcStream, strLine + '\n');
    if (!m_strLive.isEmpty())
        write(stderr, m_strLive);
}

void TextReport::printed(int nTask, const QString &strText)
{
    if (!m_bQuiet)
        line(stdout, prefix(nTask) + strText);
}

void TextReport::failed(int nTask, const QString &strText)
{
    line(stderr, "error: " + prefix(nTask) + strText);
}

void TextReport::sourceFailed(int nTask, const QString &strText)
{
    line(stderr, "data source: " + prefix(nTask) + strText);
}

void TextReport::logged(const QString &strText)
{
    line(stderr, strText);
}

void TextReport::stepHangs(int nTask, int nStep, double fSeconds)
{
    if (!m_bTerminal || m_bQuiet) // else the status line shows it
        line(stderr, QString("waiting: %1step %2 (%3) has been running for %4 s")
                         .arg(prefix(nTask))
                         .arg(nStep + 1)
                         .arg(m_lstTask[nTask].m_lstStep.value(nStep), decimals(fSeconds, 1)));
}

void TextReport::live(const QString &strLine)
{
    if (!m_bTerminal || m_bQuiet)
        return;
    const std::lock_guard<std::mutex> cGuard(m_cOutput);
    m_strLive = fitted(strLine, terminalColumns() - 1);
    write(stderr, CLEAR_LINE + m_strLive);
}

void TextReport::summary(const QList<TaskSummary> &lstTask, const QList<ViewSummary> &lstView, int)
{
    live({});
    QList<QStringList> lstRow = {
        {"task, step", "runs", "pictures", "failures", "runs/s", "mean ms", "worst ms", "share"}};
    for (int nTask = 0; nTask < lstTask.size(); ++nTask) {
        const TaskStatus &cStatus = lstTask[nTask].m_cStatus;
        const double fSeconds = lstTask[nTask].m_fSeconds;
        lstRow += {m_lstTask[nTask].m_strName,
                   QString::number(cStatus.m_nRuns),
                   QString::number(cStatus.m_nPictures),
                   QString::number(cStatus.m_nFailures),
                   fSeconds > 0 ? decimals(static_cast<double>(cStatus.m_nRuns) / fSeconds, 1) : "-",
                   meanMs(cStatus.m_nTotalRunNs, cStatus.m_nRuns),
                   milliseconds(cStatus.m_nWorstRunNs, cStatus.m_nRuns)};
        for (int nStep = 0; nStep < cStatus.m_lstStep.size(); ++nStep) {
            const StepStatus &cStep = cStatus.m_lstStep[nStep];
            lstRow += {QString("  %1 ").arg(nStep + 1) + shortened(m_lstTask[nTask].m_lstStep.value(nStep)),
                       QString::number(cStep.m_nExecutions),
                       "",
                       "",
                       "",
                       meanMs(cStep.m_nTotalNs, cStep.m_nExecutions),
                       milliseconds(cStep.m_nWorstNs, cStep.m_nExecutions),
                       decimals(100 * stepShare(cStatus, nStep), 1) + " %"};
        }
    }
    QString strTables = '\n' + table(lstRow, 1);
    if (!lstView.isEmpty())
        strTables += '\n' + table(viewRows(lstView), 2);
    line(stdout, strTables.chopped(1));
}

void TextReport::findings(const QList<Finding> &lstFinding)
{
    for (const Finding &cFinding : lstFinding)
        line(stdout, findingText(cFinding));
}

void TextReport::tried(const TriedStep &cStep)
{
    QString strText;
    if (cStep.m_nStep == 0)
        strText = QString("%1, %2\n").arg(cStep.m_strPicture, sizeText(cStep.m_cPictureSize));
    const auto fnMs = [](qint64 nNs) { return decimals(static_cast<double>(nNs) / NS_PER_MS, 3) + " ms"; };
    strText += QString("  %1 %2 %3\n      ")
                   .arg(cStep.m_nStep + 1)
                   .arg(cStep.m_strID, cStep.m_strConfig.simplified());
    strText += cStep.m_nRuns == 1 ? fnMs(cStep.m_nBestNs)
                                  : QString("median %1, best %2 of %3 runs")
                                        .arg(fnMs(cStep.m_nMedianNs), fnMs(cStep.m_nBestNs))
                                        .arg(cStep.m_nRuns);
    for (const QString &strCommand : cStep.m_lstCommand)
        strText += "\n      " + strCommand;
    for (const TriedOutput &cOutput : cStep.m_lstOutput) {
        strText += QString("\n      %1: %2 %3, ")
                       .arg(cOutput.m_strTag, paramKindName(cOutput.m_eKind))
                       .arg(cOutput.m_nID);
        if (Plugin::isPicture(cOutput.m_eKind))
            strText += sizeText(cOutput.m_cSize);
        else
            strText += QString("%1 element%2").arg(cOutput.m_nCount).arg(cOutput.m_nCount == 1 ? "" : "s");
        if (!cOutput.m_lstText.isEmpty())
            strText += ": " + cOutput.m_lstText.join("; ");
        if (cOutput.m_lstText.size() < cOutput.m_nCount)
            strText += "; …";
        if (!cOutput.m_strFile.isEmpty())
            strText += "\n        " + cOutput.m_strFile;
    }
    if (!cStep.m_strAllFile.isEmpty())
        strText += "\n      all lists\n        " + cStep.m_strAllFile;
    line(stdout, strText);
}

void TextReport::known(const QList<KnownPart> &lstPart)
{
    QList<QStringList> lstArithm = {{"algorithm", "class", "ID", "file"}};
    QList<QStringList> lstSource = {{"data source", "file"}};
    for (const KnownPart &cPart : lstPart) {
        if (cPart.m_bSource)
            lstSource += {cPart.m_strName, cPart.m_strFile};
        else
            lstArithm += {cPart.m_strName, cPart.m_strClass, cPart.m_strID, cPart.m_strFile};
    }
    line(stdout, table(lstArithm, 4) + '\n' + table(lstSource, 2).chopped(1));
}
