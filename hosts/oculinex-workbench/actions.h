#ifndef ACTIONS_H
#define ACTIONS_H

#include <functional>

class QAction;
class QKeySequence;
class QObject;
class QString;

/// Takes over what is being typed into a cell of a table, as leaving the cell does.
void commitCell();

/// An action whose tool tip names its keys, and before which what is being typed into a cell is taken over.
/// @param pcParent Owns it, and goes before what fnDo needs.
QAction *makeAction(QObject *pcParent, const QString &strText, const QString &strTip,
                    const QKeySequence &cKeys, const std::function<void()> &fnDo);

#endif
