#include "storeaccess.h"

#include <algorithm>
#include <iterator>

#include <QRegularExpression>

#include "globalfunction.h"

namespace
{
enum class Access { Read, Write };

/// One tag that holds an ID. It counts when every one of its conditions holds, which are set apart
/// by blanks: "Tag=value" or "Tag!=value" (as numbers where the value is one), "Tag~word" or
/// "Tag!~word" (in any letter case), "Tag>=number"; a tag that is missing is 0 or empty.
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
    {"KQ_MemoryDisk", "InputID", READ, K::Dib, N::Allowed, "InputType=RGB"},
    {"KQ_MemoryDisk", "InputID", READ, K::Gray8, N::Allowed, "InputType=Gray8"},
    {"KQ_Drawing", "DataID", READ, K::Dib, N::Allowed, "DataType=0"},
    {"KQ_Drawing", "DataID", READ, K::Gray8, N::Allowed, "DataType=1"},
    {"KQ_Drawing", "DataID", READ, K::Gray16, N::Allowed, "DataType=2"},
    {"KQ_Drawing", "DataID", READ, K::Points, N::Allowed, "DataType=3"},
    {"KQ_Drawing", "DataID", READ, K::Lines, N::Allowed, "DataType=4"},
    {"KQ_Drawing", "DataID", READ, K::Polys, N::Allowed, "DataType=5"},
    {"KQ_Drawing", "DataID", READ, K::Areas, N::Allowed, "DataType=6"},
    {"KQ_Drawing", "DataID", READ, K::Strings, N::Allowed, "DataType=7"},
    {"KQ_Saving", "StringID", READ, K::Strings, N::Allowed, "IsStringID>=1"},
    {"KQ_Saving", "PicID", READ, K::Dib, N::Ignored, "Wnd=4 PicType=RGB"},
    {"KQ_Saving", "PicID", READ, K::Gray8, N::Ignored, "Wnd=4 PicType=Gray"},
    {"KQ_Loading", "PicID", WRITE, K::Dib, N::Allowed, "BeGray!=1"},
    {"KQ_Loading", "PicID", WRITE, K::Gray8, N::Allowed, "BeGray=1"},
    {"OCX_ToGray", "InputID", READ, K::Dib, N::Refused, ""},
    {"OCX_ToGray", "OutputID", WRITE, K::Gray8, N::Refused, ""},
    {"OCX_Blur", "InputID", READ, K::Gray8, N::Refused, "InputType!~RGB"},
    {"OCX_Blur", "InputID", READ, K::Dib, N::Refused, "InputType~RGB"},
    {"OCX_Blur", "OutputID", WRITE, K::Gray8, N::Refused, "InputType!~RGB"},
    {"OCX_Blur", "OutputID", WRITE, K::Dib, N::Refused, "InputType~RGB"},
    {"OCX_Threshold", "InputID", READ, K::Gray8, N::Refused, ""},
    {"OCX_Threshold", "OutputID", WRITE, K::Gray8, N::Refused, ""},
    {"OCX_Blobs", "InputID", READ, K::Gray8, N::Refused, ""},
    {"OCX_Blobs", "AreasID", WRITE, K::Areas, N::Refused, ""},
    {"OCX_Blobs", "StringsID", WRITE, K::Strings, N::Refused, ""},
};

QString value(const QString &strConfig, const QString &strTag)
{
    return GlobalFunction::getBody(strConfig, '<' + strTag + '>', "</" + strTag + '>');
}

bool holds(const QString &strCondition, const QString &strConfig)
{
    static const QRegularExpression s_cParts("^(\\w+)(=|!=|~|!~|>=)(.*)$");
    const QRegularExpressionMatch cMatch = s_cParts.match(strCondition);
    const QString strOperator = cMatch.captured(2);
    const QString strWanted = cMatch.captured(3);
    const QString strIs = value(strConfig, cMatch.captured(1));
    bool bNumber = false;
    const int nWanted = strWanted.toInt(&bNumber);
    if (strOperator == ">=")
        return strIs.toInt() >= nWanted;
    bool bEqual = bNumber ? strIs.toInt() == nWanted : strIs == strWanted;
    if (strOperator.endsWith('~'))
        bEqual = strIs.trimmed().compare(strWanted, Qt::CaseInsensitive) == 0;
    return bEqual != strOperator.startsWith('!');
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
        cAccess.m_eNegative = cRow.m_eNegative;
        cAccess.m_eKind = cRow.m_eKind;
        cAccess.m_strTag = cRow.m_szTag;
        cAccess.m_nID = value(strConfig, cRow.m_szTag).toInt(&cAccess.m_bNumber);
        lstAccess += cAccess;
    }
    return lstAccess;
}
