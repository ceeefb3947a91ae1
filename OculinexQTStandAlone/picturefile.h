#ifndef PICTUREFILE_H
#define PICTUREFILE_H

#include <QImage>
#include <QString>

#include "pixelbuffers.h"

/// Picture files, as the steps and the dialogs read and write them. Only regular files count: a
/// pipe or a device could keep a task waiting for ever.
///
/// Threads: any number at once; those that write one file do so one after the other.
namespace PictureFile
{
/// The decoded picture, its first one where the file holds several; null, with the reason in
/// strError, when there is none or it is too large for memory or for a picture of the store, grey
/// (bGrey) or colour. The contents tell the format, whatever the file's name. What a broken file
/// leaves out is 0. SVG is refused: decoding it opens other files and, for texts, ends a process
/// that has no QGuiApplication. A picture whose decoding can't fail is one of fnMake.
QImage read(const QString &strPath, bool bGrey, QString &strError,
            const PixelBuffers::Maker &fnMake = PixelBuffers::image);

/// Writes the file in the format that its name ends with. False, with the reason in strError and
/// no file left where one was begun.
bool write(const QImage &cImage, const QString &strPath, QString &strError);
} // namespace PictureFile

#endif
