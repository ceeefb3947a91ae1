#include "actions.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>

void commitCell()
{
    // A cell's editor is a child of the viewport.
    const QWidget *pcFocus = QApplication::focusWidget();
    const QWidget *pcViewport = pcFocus ? pcFocus->parentWidget() : nullptr;
    if (auto *pcView = pcViewport ? qobject_cast<QAbstractItemView *>(pcViewport->parentWidget()) : nullptr)
        pcView->setFocus();
}

QAction *makeAction(QObject *pcParent, const QString &strText, const QString &strTip,
                    const QKeySequence &cKeys, const std::function<void()> &fnDo)
{
    auto *pcAction = new QAction(strText, pcParent);
    pcAction->setStatusTip(strTip);
    pcAction->setToolTip(
        cKeys.isEmpty() ? strTip
                        : QStringLiteral("%1 (%2)").arg(strTip, cKeys.toString(QKeySequence::NativeText)));
    pcAction->setShortcut(cKeys);
    QObject::connect(pcAction, &QAction::triggered, pcParent, [fnDo] {
        commitCell();
        fnDo();
    });
    return pcAction;
}
