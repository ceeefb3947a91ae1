#ifndef PLAINBMP_H
#define PLAINBMP_H

#include <QImage>

#include "pixelbuffers.h"

class QFile;

/// BMP files of 24 bits a pixel without compression, rows from the bottom up, and a header of the
/// common length: what this library and most programs write; and, to be written only, those of 8 bits. They
/// are read and written in large pieces, several times as fast as by way of a picture of 32 bits a pixel.
namespace PlainBmp
{
/// Size of the picture; invalid when the file is none of these or lacks bytes. The file stays at its
/// beginning.
QSize size(QFile &cFile);
/// The picture of a file whose size() is cSize, as an RGB888 one of fnMake, which is called when nothing else
/// can fail; null when there is no memory. What the file lacks by now is 0.
QImage read(QFile &cFile, QSize cSize, const PixelBuffers::Maker &fnMake);

/// Whether a picture is RGB888 or Indexed8, of which the bytes of a row are as many as in the file.
bool canWrite(const QImage &cImage);
/// Writes such a picture, byte by byte what QImageWriter writes.
bool write(QFile &cFile, const QImage &cImage);
} // namespace PlainBmp

#endif
