#include "storeaccess.h"

#include <algorithm>
#include <iterator>

#include "globalfunction.h"

namespace
{
enum class Access { Read, Write };

/// One tag that holds an ID. It counts when every one of its conditions holds, which are set apart
/// by blanks: "Tag=value", "Tag!=value" (a number where the value is one) or "Tag>=number", a tag
/// that is missing being 0.
struct Row {
    const char *m_szArithm;
    const char *m_szTag;
    Access m_eAccess;
    ParamKind m_eKind;
    const char *m_szConditions = "";
};

using K = ParamKind;
constexpr Access READ = Access::Read;
constexpr Access WRITE = Access::Write;

const Row TABLE[] = {
    {"KQ_MemoryDisk", "InputID", READ, K::Dib, "InputType=RGB"},
    {"KQ_MemoryDisk", "InputID", READ, K::Gray8, "InputType=Gray8"},
    {"KQ_Drawing", "DataID", READ, K::Dib, "DataType=0"},
    {"KQ_Drawing", "DataID", READ, K::Gray8, "DataType=1"},
    {"KQ_Drawing", "DataID", READ, K::Gray16, "DataType=2"},
    {"KQ_Drawing", "DataID", READ, K::Points, "DataType=3"},
    {"KQ_Drawing", "DataID", READ, K::Lines, "DataType=4"},
    {"KQ_Drawing", "DataID", READ, K::Polys, "DataType=5"},
    {"KQ_Drawing", "DataID", READ, K::Areas, "DataType=6"},
    {"KQ_Drawing", "DataID", READ, K::Strings, "DataType=7"},
    {"KQ_Saving", "StringID", READ, K::Strings, "IsStringID>=1"},
    {"KQ_Saving", "PicID", READ, K::Dib, "Wnd=4 PicType=RGB PicID>=0"},
    {"KQ_Saving", "PicID", READ, K::Gray8, "Wnd=4 PicType=Gray PicID>=0"},
    {"KQ_Loading", "PicID", WRITE, K::Dib, "BeGray!=1"},
    {"KQ_Loading", "PicID", WRITE, K::Gray8, "BeGray=1"},
};

QString value(const QString &strConfig, const QString &strTag)
{
    return GlobalFunction::getBody(strConfig, '<' + strTag + '>', "</" + strTag + '>');
}

bool holds(const QString &strCondition, const QString &strConfig)
{
    const int nOperator = static_cast<int>(std::distance(
        strCondition.begin(), std::find_if(strCondition.begin(), strCondition.end(),
                                           [](QChar c) { return QString("!=>").contains(c); })));
    const int nEnd = strCondition.indexOf('=') + 1;
    const QString strOperator = strCondition.mid(nOperator, nEnd - nOperator);
    const QString strWanted = strCondition.mid(nEnd);
    const QString strIs = value(strConfig, strCondition.left(nOperator));
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
} // namespace

QString paramKindName(ParamKind eKind)
{
    static const char *const NAMES[] = {"colour picture", "grey picture", "16-bit picture", "point list",
                                        "line list",      "polygon list", "area list",      "string list",
                                        "integer list",   "number list",  "truth list"};
    return NAMES[static_cast<size_t>(eKind)];
}

bool isStoreAccessKnown(const QString &strArithmID)
{
    return std::any_of(std::begin(TABLE), std::end(TABLE),
                       [&](const Row &cRow) { return strArithmID == cRow.m_szArithm; });
}

QList<StoreAccess> storeAccess(const QString &strArithmID, const QString &strConfig)
{
    QList<StoreAccess> lstAccess;
    for (const Row &cRow : TABLE) {
        if (strArithmID != cRow.m_szArithm || !applies(cRow, strConfig))
            continue;
        StoreAccess cAccess;
        cAccess.m_bWrite = cRow.m_eAccess == WRITE;
        cAccess.m_eKind = cRow.m_eKind;
        cAccess.m_strTag = cRow.m_szTag;
        cAccess.m_nID = value(strConfig, cRow.m_szTag).toInt(&cAccess.m_bNumber);
        lstAccess += cAccess;
    }
    return lstAccess;
}
