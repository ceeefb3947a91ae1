#include "logpane.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>

#include "logmodel.h"

LogPane::LogPane(QWidget *pcParent)
    : QWidget(pcParent),
      m_pcLog(new LogModel(this)),
      m_pcFilter(new LogFilter(this)),
      m_pcLines(new QTreeView(this))
{
    m_pcFilter->setSourceModel(m_pcLog);
    m_pcLines->setModel(m_pcFilter);
    m_pcLines->setObjectName(QStringLiteral("lines"));
    m_pcLines->setRootIsDecorated(false);
    m_pcLines->setUniformRowHeights(true);
    m_pcLines->setTextElideMode(Qt::ElideMiddle); // the reason stands at the end
    m_pcLines->setSelectionMode(QAbstractItemView::ExtendedSelection);
    const int nDigit = fontMetrics().averageCharWidth();
    setMinimumWidth(nDigit * 30); // something of the texts is to be read, whatever the other panes take
    m_pcLines->header()->resizeSection(LogModel::Time, nDigit * 16);
    m_pcLines->header()->resizeSection(LogModel::Kind, nDigit * 9);
    auto *const pcCopy = new QAction(tr("Copy"), m_pcLines);
    pcCopy->setShortcut(QKeySequence::Copy);
    pcCopy->setShortcutContext(Qt::WidgetShortcut);
    connect(pcCopy, &QAction::triggered, this, &LogPane::copy);
    m_pcLines->addAction(pcCopy);
    m_pcLines->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto *const pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    pcLayout->setSpacing(2);
    auto *const pcTools = new QToolBar; // a narrow pane has the rest in the bar's own menu
    const auto fnButton = [&](const QString &strName, const QString &strText, const QString &strTip) {
        QAction *const pcAction = pcTools->addAction(strText);
        pcAction->setToolTip(strTip);
        pcTools->widgetForAction(pcAction)->setObjectName(strName);
        return pcAction;
    };
    const auto fnKind = [&](const QString &strName, const QString &strText, MessageFeed::Kind eKind) {
        QAction *const pcAction = fnButton(strName, strText, tr("Show lines of this kind"));
        pcAction->setCheckable(true);
        pcAction->setChecked(true);
        connect(pcAction, &QAction::toggled, this,
                [this, eKind](bool bShown) { m_pcFilter->setShown(eKind, bShown); });
    };
    fnKind(QStringLiteral("btnErrors"), tr("Errors"), MessageFeed::Kind::Error);
    fnKind(QStringLiteral("btnPrints"), tr("Prints"), MessageFeed::Kind::Print);
    fnKind(QStringLiteral("btnLog"), tr("Log"), MessageFeed::Kind::Log);
    auto *const pcText = new QLineEdit(this);
    pcText->setObjectName(QStringLiteral("edtFilter"));
    pcText->setPlaceholderText(tr("Only lines that hold this text"));
    pcText->setClearButtonEnabled(true);
    connect(pcText, &QLineEdit::textChanged, this,
            [this](const QString &strText) { m_pcFilter->setText(strText); });
    pcTools->addWidget(pcText);
    connect(
        fnButton(QStringLiteral("btnCopy"), tr("Copy"), tr("Copy the selected lines, or all that are shown")),
        &QAction::triggered, this, &LogPane::copy);
    connect(fnButton(QStringLiteral("btnClear"), tr("Clear"), tr("Remove all lines")), &QAction::triggered,
            this, &LogPane::clear);
    pcLayout->addWidget(pcTools);
    pcLayout->addWidget(m_pcLines, 1);

    connect(&m_cFeed, &MessageFeed::received, this, &LogPane::append);
}

void LogPane::append(const MessageFeed::Messages &lstMessage)
{
    const QScrollBar *const pcBar = m_pcLines->verticalScrollBar();
    const bool bAtEnd = pcBar->value() == pcBar->maximum();
    m_pcLog->append(lstMessage);
    if (bAtEnd)
        m_pcLines->scrollToBottom();
    for (const MessageFeed::Message &cMessage : lstMessage) {
        if (cMessage.m_eKind == MessageFeed::Kind::Error)
            emit failed(cMessage.m_strText);
        else if (cMessage.m_eKind == MessageFeed::Kind::Print)
            emit printed(cMessage.m_strText);
    }
}

void LogPane::copy()
{
    QModelIndexList lstRow = m_pcLines->selectionModel()->selectedRows();
    std::sort(lstRow.begin(), lstRow.end());
    if (lstRow.isEmpty())
        for (int nRow = 0; nRow < m_pcFilter->rowCount(); ++nRow)
            lstRow.append(m_pcFilter->index(nRow, 0));
    QString strText;
    for (const QModelIndex &cRow : lstRow) {
        for (int nColumn = 0; nColumn < LogModel::ColumnNum; ++nColumn)
            strText += (nColumn > 0 ? QStringLiteral("\t") : QString()) +
                       cRow.sibling(cRow.row(), nColumn).data().toString();
        strText += '\n';
    }
    QApplication::clipboard()->setText(strText);
}

void LogPane::clear()
{
    m_pcLog->clear();
}
