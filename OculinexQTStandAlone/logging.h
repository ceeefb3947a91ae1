#ifndef LOGGING_H
#define LOGGING_H

#include <QLoggingCategory>

/// The library's logging categories. Warnings are shown, everything below only on request
/// (QT_LOGGING_RULES="oculinex.*=true").
Q_DECLARE_LOGGING_CATEGORY(lcTask)   ///< "oculinex.task"
Q_DECLARE_LOGGING_CATEGORY(lcPlugin) ///< "oculinex.plugin"
Q_DECLARE_LOGGING_CATEGORY(lcSource) ///< "oculinex.source"
Q_DECLARE_LOGGING_CATEGORY(lcFile)   ///< "oculinex.file"

#endif
