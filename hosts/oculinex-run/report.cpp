#include "report.h"

#include "reportjson.h"
#include "reporttext.h"

std::unique_ptr<Report> Report::make(bool bJson, bool bQuiet)
{
    if (bJson)
        return std::make_unique<JsonReport>(bQuiet);
    return std::make_unique<TextReport>(bQuiet);
}

double Report::stepShare(const TaskStatus &cStatus, int nStep)
{
    qint64 nTotalNs = 0;
    for (const StepStatus &cStep : cStatus.m_lstStep)
        nTotalNs += cStep.m_nTotalNs;
    return nTotalNs > 0
               ? static_cast<double>(cStatus.m_lstStep[nStep].m_nTotalNs) / static_cast<double>(nTotalNs)
               : 0;
}
