#ifndef LOGPANE_H
#define LOGPANE_H

#include <QWidget>

#include "messagefeed.h"

class LogFilter;
class LogModel;
class QTreeView;

/// The log: errors, printed texts and Qt's messages, each with its time; filtered by kind and text.
class LogPane : public QWidget
{
    Q_OBJECT

public:
    explicit LogPane(QWidget *pcParent = nullptr);

signals:
    void failed(const QString &strText);  ///< an error of the library
    void printed(const QString &strText); ///< a text that a step has printed

public slots:
    /// The selected lines, all that are shown when none is.
    void copy();
    void clear();

private:
    void append(const MessageFeed::Messages &lstMessage);

    LogModel *m_pcLog;
    LogFilter *m_pcFilter;
    QTreeView *m_pcLines;
    MessageFeed m_cFeed;
};

#endif
