#include "common/storeaccess.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>

#include <QCoreApplication>
#include <QRegularExpression>

#include "arithmMgr/arithmregister.h"
#include "globalfunction.h"

namespace
{
enum class Access { Read, Write };

/// One tag of a built-in algorithm that holds an ID. It counts when every one of its conditions holds, which
/// are set apart by blanks: "Tag=value" or "Tag!=value" (as numbers where the value is one) or "Tag>=number";
/// a tag that is missing is 0 or empty.
struct Row {
    const char *m_szArithm;
    const char *m_szTag;
    Access m_eAccess;
    ParamKind m_eKind;
    Negative m_eNegative;
    const char *m_szConditions;
};

using K = ParamKind;
using N = Negative;
constexpr Access READ = Access::Read;
constexpr Access WRITE = Access::Write;

const Row TABLE[] = {
    {"KQ_MemoryDisk", "InputID", READ, K::DIB, N::Allowed, "InputType=RGB"},
    {"KQ_MemoryDisk", "InputID", READ, K::Gray8, N::Allowed, "InputType=Gray8"},
    {"KQ_Drawing", "DataID", READ, K::DIB, N::Allowed, "DataType=0"},
    {"KQ_Drawing", "DataID", READ, K::Gray8, N::Allowed, "DataType=1"},
    {"KQ_Drawing", "DataID", READ, K::Gray16, N::Allowed, "DataType=2"},
    {"KQ_Drawing", "DataID", READ, K::Points, N::Allowed, "DataType=3"},
    {"KQ_Drawing", "DataID", READ, K::Lines, N::Allowed, "DataType=4"},
    {"KQ_Drawing", "DataID", READ, K::Polys, N::Allowed, "DataType=5"},
    {"KQ_Drawing", "DataID", READ, K::Areas, N::Allowed, "DataType=6"},
    {"KQ_Drawing", "DataID", READ, K::Strings, N::Allowed, "DataType=7"},
    {"KQ_Saving", "StringID", READ, K::Strings, N::Allowed, "IsStringID>=1"},
    {"KQ_Saving", "PicID", READ, K::DIB, N::Ignored, "Wnd=4 PicType=RGB"},
    {"KQ_Saving", "PicID", READ, K::Gray8, N::Ignored, "Wnd=4 PicType=Gray"},
    {"KQ_Loading", "PicID", WRITE, K::DIB, N::Allowed, "BeGray!=1"},
    {"KQ_Loading", "PicID", WRITE, K::Gray8, N::Allowed, "BeGray=1"},
};

bool holds(const QString &strCondition, const QString &strConfig)
{
    static const QRegularExpression s_cParts("^(\\w+)(=|!=|>=)(.*)$");
    const QRegularExpressionMatch cMatch = s_cParts.match(strCondition);
    const QString strOperator = cMatch.captured(2);
    const QString strWanted = cMatch.captured(3);
    const QString strIs = rawConfigValue(strConfig, cMatch.captured(1));
    bool bNumber = false;
    const int nWanted = strWanted.toInt(&bNumber);
    if (strOperator == ">=")
        return strIs.toInt() >= nWanted;
    const bool bEqual = bNumber ? strIs.toInt() == nWanted : strIs == strWanted;
    return bEqual == (strOperator == "=");
}

bool applies(const Row &cRow, const QString &strConfig)
{
    const QStringList lstCondition = QString(cRow.m_szConditions).split(' ', Qt::SkipEmptyParts);
    return std::all_of(lstCondition.begin(), lstCondition.end(),
                       [&](const QString &strCondition) { return holds(strCondition, strConfig); });
}

StoreAccess accessTo(bool bWrite, Negative eNegative, ParamKind eKind, const QString &strTag,
                     const QString &strConfig)
{
    StoreAccess cAccess{bWrite, eNegative, eKind, strTag};
    cAccess.m_nID = rawConfigValue(strConfig, strTag).toInt(&cAccess.m_bNumber);
    return cAccess;
}
} // namespace

QString paramKindName(ParamKind eKind)
{
    static const char *const NAMES[] = {
        QT_TRANSLATE_NOOP("ParamKind", "colour picture"), QT_TRANSLATE_NOOP("ParamKind", "grey picture"),
        QT_TRANSLATE_NOOP("ParamKind", "16-bit picture"), QT_TRANSLATE_NOOP("ParamKind", "point list"),
        QT_TRANSLATE_NOOP("ParamKind", "line list"),      QT_TRANSLATE_NOOP("ParamKind", "polygon list"),
        QT_TRANSLATE_NOOP("ParamKind", "area list"),      QT_TRANSLATE_NOOP("ParamKind", "string list"),
        QT_TRANSLATE_NOOP("ParamKind", "integer list"),   QT_TRANSLATE_NOOP("ParamKind", "number list"),
        QT_TRANSLATE_NOOP("ParamKind", "truth list")};
    return QCoreApplication::translate("ParamKind", NAMES[static_cast<size_t>(eKind)]);
}

QString rawConfigValue(const QString &strConfig, const QString &strTag)
{
    return GlobalFunction::getBody(strConfig, '<' + strTag + '>', "</" + strTag + '>');
}

QString configValue(const QString &strConfig, const QString &strTag)
{
    return rawConfigValue(strConfig, strTag).trimmed();
}

const PluginTable &settingsTable(const QString &strArithmID)
{
    static std::mutex s_cMutex;
    static std::map<QString, PluginTable> s_mapTable;
    const std::lock_guard cLock(s_cMutex);
    const auto [itTable, bNew] = s_mapTable.try_emplace(strArithmID);
    if (const Arithm *pcArithm = bNew ? ArithmFactory::getInstance()->getArithm(strArithmID) : nullptr)
        itTable->second = algorithmTable(fileOfFunction(pcArithm->m_fnExecute));
    return itTable->second;
}

ParamKind kindOf(const PluginSetting &cSetting, const QString &strConfig)
{
    if (!cSetting.m_strTypeTag.isEmpty()) {
        const QString strType = configValue(strConfig, cSetting.m_strTypeTag);
        for (const ParamKind eKind : cSetting.m_lstKind)
            if (strType.compare(Plugin::kindName(eKind), Qt::CaseInsensitive) == 0)
                return eKind;
    }
    return cSetting.m_lstKind.value(0);
}

bool isInForce(const PluginSetting &cSetting, const PluginTable &cTable, const QString &strConfig)
{
    if (cSetting.m_strWhenTag.isEmpty())
        return true;
    QString strChosen = configValue(strConfig, cSetting.m_strWhenTag);
    for (const PluginSetting &cOther : cTable.m_lstSetting)
        if (strChosen.isEmpty() && cOther.m_strTag == cSetting.m_strWhenTag)
            strChosen = cOther.m_strInitial;
    return cSetting.m_lstWhenValue.contains(strChosen, Qt::CaseInsensitive);
}

bool isStoreAccessKnown(const QString &strArithmID)
{
    return !settingsTable(strArithmID).isNull() ||
           std::any_of(std::begin(TABLE), std::end(TABLE),
                       [&](const Row &cRow) { return strArithmID == cRow.m_szArithm; });
}

QList<StoreAccess> storeAccess(const QString &strArithmID, const QString &strConfig)
{
    QList<StoreAccess> lstAccess;
    for (const Row &cRow : TABLE)
        if (strArithmID == cRow.m_szArithm && applies(cRow, strConfig))
            lstAccess +=
                accessTo(cRow.m_eAccess == WRITE, cRow.m_eNegative, cRow.m_eKind, cRow.m_szTag, strConfig);
    const PluginTable &cTable = settingsTable(strArithmID);
    for (const bool bWrite : {false, true})
        for (const PluginSetting &cSetting : cTable.m_lstSetting)
            if ((bWrite ? cSetting.isOutput() : cSetting.isInput()) && isInForce(cSetting, cTable, strConfig))
                lstAccess += accessTo(bWrite, Negative::Refused, kindOf(cSetting, strConfig),
                                      cSetting.m_strTag, strConfig);
    return lstAccess;
}
