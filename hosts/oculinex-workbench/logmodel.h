#ifndef LOGMODEL_H
#define LOGMODEL_H

#include <deque>

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>

#include "messagefeed.h"

/// The lines of the log, oldest first; beyond a bound the oldest go.
class LogModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int MAX_LINES = 10000;
    enum Column { Time, Kind, Text, ColumnNum };

    using QAbstractTableModel::QAbstractTableModel;

    void append(const MessageFeed::Messages &lstMessage);
    void clear();
    MessageFeed::Kind kind(int nRow) const { return m_lstLine[static_cast<size_t>(nRow)].m_eKind; }
    const QString &text(int nRow) const { return m_lstLine[static_cast<size_t>(nRow)].m_strText; }

    int rowCount(const QModelIndex &cParent = QModelIndex()) const override;
    int columnCount(const QModelIndex &cParent = QModelIndex()) const override;
    QVariant data(const QModelIndex &cIndex, int nRole = Qt::DisplayRole) const override;
    QVariant headerData(int nSection, Qt::Orientation eOrientation,
                        int nRole = Qt::DisplayRole) const override;

private:
    std::deque<MessageFeed::Message> m_lstLine;
};

/// The lines of some kinds that hold a text.
class LogFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setShown(MessageFeed::Kind eKind, bool bShown);
    void setText(const QString &strText);

protected:
    bool filterAcceptsRow(int nRow, const QModelIndex &cParent) const override;

private:
    bool m_abShown[3] = {true, true, true};
    QString m_strText;
};

#endif
