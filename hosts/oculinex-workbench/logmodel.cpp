#include "logmodel.h"

#include <algorithm>

#include <QColor>

void LogModel::append(const MessageFeed::Messages &lstMessage)
{
    const int nNew = std::min(static_cast<int>(lstMessage.size()), MAX_LINES);
    const int nOld = std::max(0, rowCount() + nNew - MAX_LINES);
    if (nOld > 0) {
        beginRemoveRows({}, 0, nOld - 1);
        m_lstLine.erase(m_lstLine.begin(), m_lstLine.begin() + nOld);
        endRemoveRows();
    }
    if (nNew == 0)
        return;
    beginInsertRows({}, rowCount(), rowCount() + nNew - 1);
    m_lstLine.insert(m_lstLine.end(), lstMessage.end() - nNew, lstMessage.end());
    endInsertRows();
}

void LogModel::clear()
{
    beginResetModel();
    m_lstLine.clear();
    endResetModel();
}

int LogModel::rowCount(const QModelIndex &cParent) const
{
    return cParent.isValid() ? 0 : static_cast<int>(m_lstLine.size());
}

int LogModel::columnCount(const QModelIndex &cParent) const
{
    return cParent.isValid() ? 0 : ColumnNum;
}

QVariant LogModel::data(const QModelIndex &cIndex, int nRole) const
{
    if (!checkIndex(cIndex, CheckIndexOption::IndexIsValid))
        return {};
    const MessageFeed::Message &cLine = m_lstLine[static_cast<size_t>(cIndex.row())];
    const bool bError = cLine.m_eKind == MessageFeed::Kind::Error;
    if (nRole == Qt::ForegroundRole && bError)
        return QColor(0xb0, 0x10, 0x10);
    if (nRole == Qt::ToolTipRole && cIndex.column() == Text)
        return cLine.m_strText;
    if (nRole != Qt::DisplayRole)
        return {};
    switch (cIndex.column()) {
    case Time:
        return cLine.m_cTime.toString(QStringLiteral("HH:mm:ss.zzz"));
    case Kind:
        return bError ? tr("error") : cLine.m_eKind == MessageFeed::Kind::Print ? tr("print") : tr("log");
    default:
        return cLine.m_strText;
    }
}

QVariant LogModel::headerData(int nSection, Qt::Orientation eOrientation, int nRole) const
{
    if (eOrientation != Qt::Horizontal || nRole != Qt::DisplayRole)
        return {};
    return nSection == Time ? tr("Time") : nSection == Kind ? tr("Kind") : tr("Text");
}

void LogFilter::setShown(MessageFeed::Kind eKind, bool bShown)
{
    m_abShown[static_cast<size_t>(eKind)] = bShown;
    invalidateFilter();
}

void LogFilter::setText(const QString &strText)
{
    m_strText = strText;
    invalidateFilter();
}

bool LogFilter::filterAcceptsRow(int nRow, const QModelIndex &) const
{
    const auto *const pcLog = static_cast<const LogModel *>(sourceModel());
    return m_abShown[static_cast<size_t>(pcLog->kind(nRow))] &&
           pcLog->text(nRow).contains(m_strText, Qt::CaseInsensitive);
}
