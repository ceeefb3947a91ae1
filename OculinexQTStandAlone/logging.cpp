#include "logging.h"

Q_LOGGING_CATEGORY(lcTask, "oculinex.task", QtWarningMsg)
Q_LOGGING_CATEGORY(lcPlugin, "oculinex.plugin", QtWarningMsg)
Q_LOGGING_CATEGORY(lcSource, "oculinex.source", QtWarningMsg)
Q_LOGGING_CATEGORY(lcFile, "oculinex.file", QtWarningMsg)
