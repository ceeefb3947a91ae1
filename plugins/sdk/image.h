#ifndef PLUGIN_IMAGE_H
#define PLUGIN_IMAGE_H

#include <QImage>

#include "sdk/picture.h"

/// The store's pictures as Qt sees them.
namespace Plugin
{
constexpr QImage::Format imageFormat(Kind eKind)
{
    return eKind == Kind::DIB      ? QImage::Format_BGR888
           : eKind == Kind::Gray16 ? QImage::Format_Grayscale16
                                   : QImage::Format_Grayscale8;
}

/// On the picture's own pixels; a null one when there is no picture.
inline QImage image(const Picture &cPicture)
{
    return cPicture.m_puchPixels
               ? QImage(cPicture.m_puchPixels, cPicture.m_nWidth, cPicture.m_nHeight,
                        static_cast<int>(cPicture.m_nRowLength), imageFormat(cPicture.m_eKind))
               : QImage();
}
} // namespace Plugin

#endif
