#ifndef ICONS_H
#define ICONS_H

#include <QIcon>

/// The icons of tool bars and menus, drawn in the palette's text colour so that they fit each style.
enum class Icon {
    New,
    Open,
    Save,
    Undo,
    Redo,
    Add,
    Duplicate,
    Rename,
    Remove,
    Up,
    Down,
    Start,
    Stop,
    StartAll,
    StopAll,
    Once,
    Here,
    Configure,
    Source
};

QIcon icon(Icon eIcon);

#endif
