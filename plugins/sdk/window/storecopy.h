#ifndef PLUGIN_STORECOPY_H
#define PLUGIN_STORECOPY_H

#include <QImage>
#include <QString>

#include "arithmparammgr.h"

/// The parameters of a store by kind and ID, where the kind is known only at run time.
namespace Plugin
{
/// Copies the contents, the name and the description of one parameter; none is made in cFrom.
void copyParameter(const ArithmParamMgr &cFrom, ArithmParamMgr &cTo, ArithmParamMgr::Kind eKind, int nID);
void copyAll(const ArithmParamMgr &cFrom, ArithmParamMgr &cTo);
/// Gives the parameter its name and description, making it when there is none; -1 makes a new one.
/// Returns its ID.
int nameParameter(ArithmParamMgr &cStore, ArithmParamMgr::Kind eKind, int nID, const QString &strName,
                  const QString &strDescribe);
void removeParameter(ArithmParamMgr &cStore, ArithmParamMgr::Kind eKind, int nID);
/// A picture's own copy of the pixels; null when the parameter is no picture, missing or empty.
QImage pictureOf(const ArithmParamMgr &cStore, ArithmParamMgr::Kind eKind, int nID);
/// Draws the elements of a list over a picture; a list of texts is not drawn.
void drawList(QImage &cPicture, const ArithmParamMgr &cStore, ArithmParamMgr::Kind eKind, int nID);
} // namespace Plugin

#endif
