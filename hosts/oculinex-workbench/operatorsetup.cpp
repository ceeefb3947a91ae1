#include "operatorsetup.h"

#include <algorithm>
#include <cmath>

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>

#include "common/storeaccess.h"
#include "sdk/window/numberbox.h"

namespace
{

QString noLimit()
{
    return QCoreApplication::translate("OperatorPick", "no limit");
}

/// To so many decimals, but never out of the range that the end belongs to.
double rounded(double dEnd, int nDecimals, bool bUp)
{
    const double dNear = QString::number(dEnd, 'f', nDecimals).toDouble();
    if (bUp ? dNear >= dEnd : dNear <= dEnd)
        return dNear;
    return QString::number(dNear + (bUp ? 1 : -1) * std::pow(10, -nDecimals), 'f', nDecimals).toDouble();
}
} // namespace

QJsonObject OperatorPick::toJson() const
{
    return {{"tag", m_strTag},         {"name", m_strName}, {"min", m_dMin},        {"max", m_dMax},
            {"decimals", m_nDecimals}, {"odd", m_bOdd},     {"initial", m_dInitial}};
}

OperatorPick OperatorPick::fromJson(const QJsonObject &cJson)
{
    OperatorPick cPick;
    cPick.m_strTag = cJson["tag"].toString();
    cPick.m_strName = cJson["name"].toString();
    cPick.m_dMin = cJson["min"].toDouble();
    cPick.m_dMax = cJson["max"].toDouble();
    cPick.m_nDecimals = std::clamp(cJson["decimals"].toInt(), 0, OperatorPick::MAX_DECIMALS);
    cPick.m_bOdd = cJson["odd"].toBool();
    cPick.m_dInitial = cJson["initial"].toDouble();
    cPick.roundRange();
    return cPick;
}

void OperatorPick::roundRange()
{
    m_dMin = rounded(m_dMin, m_nDecimals, true);
    m_dMax = rounded(m_dMax, m_nDecimals, false);
}

double OperatorPick::value(const QString &strConfig) const
{
    bool bNumber = false;
    const double dValue = rawConfigValue(strConfig, m_strTag).toDouble(&bNumber);
    return bNumber && std::isfinite(dValue) ? dValue : m_dInitial;
}

void OperatorPick::setValue(QString &strConfig, double dValue) const
{
    dValue = std::max(m_dMin, std::min(QString::number(dValue, 'f', m_nDecimals).toDouble(), m_dMax));
    if (m_bOdd && std::fmod(dValue, 2) == 0)
        dValue += dValue + 1 <= m_dMax ? 1 : -1;
    const QString strValue = QString::number(dValue, 'f', m_nDecimals);
    const QString strBegin = '<' + m_strTag + '>';
    const QString strEnd = "</" + m_strTag + '>';
    const int nBegin = strConfig.indexOf(strBegin, 0, Qt::CaseInsensitive);
    const int nEnd = strConfig.indexOf(strEnd, 0, Qt::CaseInsensitive);
    const int nBody = nBegin + strBegin.size();
    if (nBegin >= 0 && nEnd >= nBody)
        strConfig.replace(nBody, nEnd - nBody, strValue);
    else if (nBegin < 0 && nEnd < 0)
        strConfig += strBegin + strValue + strEnd;
}

QString pickText(double dNumber)
{
    return dNumber == OperatorPick::NO_LIMIT ? noLimit()
                                             : QString::number(dNumber, 'g', QLocale::FloatingPointShortest);
}

double pickNumber(const QString &strText, bool &bNumber)
{
    if ((bNumber = strText.trimmed() == noLimit()))
        return OperatorPick::NO_LIMIT;
    const double dNumber = strText.toDouble(&bNumber);
    bNumber = bNumber && std::isfinite(dNumber);
    return dNumber;
}

QJsonObject OperatorSetup::toJson() const
{
    return {{"task", m_nTask}, {"view", m_nView}, {"good", m_strGood}, {"bad", m_strBad}};
}

OperatorSetup OperatorSetup::fromJson(const QJsonObject &cJson)
{
    OperatorSetup cSetup;
    cSetup.m_nTask = std::max(0, cJson["task"].toInt());
    cSetup.m_nView = std::clamp(cJson["view"].toInt(), 0, 2);
    cSetup.m_strGood = cJson["good"].toString();
    cSetup.m_strBad = cJson["bad"].toString();
    return cSetup;
}

QList<OperatorPick> pickableNumbers(const QString &strArithmID, const QString &strConfig)
{
    QList<OperatorPick> lstPick;
    const PluginTable &cTable = settingsTable(strArithmID);
    for (const PluginSetting &cSetting : cTable.m_lstSetting) {
        const bool bReal = cSetting.m_eKind == Plugin::SettingKind::Real;
        if (!bReal && cSetting.m_eKind != Plugin::SettingKind::Integer)
            continue;
        const PluginCaption &cCaption = cSetting.m_cCaption;
        const bool bChinese = QLocale().language() == QLocale::Chinese;
        OperatorPick cPick;
        cPick.m_strTag = cSetting.m_strTag;
        cPick.m_strName = bChinese ? cCaption.m_strChinese : cCaption.m_strEnglish;
        cPick.m_dMin = cSetting.m_dMin;
        cPick.m_dMax = cSetting.m_dMax;
        cPick.m_bOdd = cSetting.m_bOdd;
        cPick.m_bSure = true;
        cPick.m_dInitial = cSetting.m_strInitial.toDouble();
        if (bReal)
            cPick.m_nDecimals = Plugin::RealBox::decimalsFor(
                {cPick.m_dMin, cPick.m_dInitial, cPick.value(strConfig)}, 3, OperatorPick::MAX_DECIMALS);
        cPick.roundRange();
        lstPick.append(cPick);
    }
    if (!cTable.isNull())
        return lstPick;
    static const QRegularExpression s_cNumber(
        QStringLiteral("<(\\w+)>\\s*([-+]?\\d+(?:\\.(\\d+))?)\\s*</\\1>"));
    for (auto iMatch = s_cNumber.globalMatch(strConfig); iMatch.hasNext();) {
        const QRegularExpressionMatch cMatch = iMatch.next();
        OperatorPick cPick;
        cPick.m_strTag = cPick.m_strName = cMatch.captured(1);
        cPick.m_dInitial = cMatch.captured(2).toDouble();
        cPick.m_nDecimals = std::min(OperatorPick::MAX_DECIMALS, cMatch.capturedLength(3));
        cPick.m_dMin = std::min(0.0, cPick.m_dInitial);
        cPick.m_dMax = std::max(100.0, cPick.m_dInitial);
        lstPick.append(cPick);
    }
    return lstPick;
}
