#include "taskstate.h"

#include <algorithm>

#include <QStringList>

namespace
{
const QString LIMIT_END = QStringLiteral("</-MaxExeTimes->");

/// The texts of the steps; the limit stands first in each.
QStringList stepTexts(const QString &strTaskText)
{
    QStringList lstStep = strTaskText.split(QStringLiteral("<-TaskItem->"));
    lstStep.removeFirst();
    return lstStep;
}

QString withoutLimit(const QString &strStep)
{
    return strStep.mid(std::max(0, strStep.indexOf(LIMIT_END)));
}

bool isSwitchedOff(const QString &strStep)
{
    return strStep.contains(QStringLiteral("<-MaxExeTimes->0</"));
}
} // namespace

QVector<QJsonObject> carryStepSide(const TaskState &cBefore, const QString &strTextAfter)
{
    const QStringList lstOld = stepTexts(cBefore.m_strText);
    const QStringList lstNew = stepTexts(strTextAfter);
    const auto fnSame = [&](int nOld, int nNew) {
        return withoutLimit(lstOld[nOld]) == withoutLimit(lstNew[nNew]);
    };
    const int nCommon = std::min(lstOld.size(), lstNew.size());
    int nHead = 0;
    while (nHead < nCommon && fnSame(nHead, nHead))
        ++nHead;
    int nTail = 0;
    while (nTail < nCommon - nHead && fnSame(lstOld.size() - 1 - nTail, lstNew.size() - 1 - nTail))
        ++nTail;

    QVector<QJsonObject> lstSide(lstNew.size());
    for (int nStep = 0; nStep < lstNew.size(); ++nStep) {
        if (nStep < nHead || lstOld.size() == lstNew.size())
            lstSide[nStep] = cBefore.m_lstStepSide.value(nStep);
        else if (nStep >= lstNew.size() - nTail)
            lstSide[nStep] = cBefore.m_lstStepSide.value(nStep + lstOld.size() - lstNew.size());
        if (!isSwitchedOff(lstNew[nStep]))
            lstSide[nStep].remove(TaskState::KEY_LIMIT);
    }
    return lstSide;
}

int stepCount(const QString &strTaskText)
{
    return strTaskText.count(QStringLiteral("<-TaskItem->"));
}
