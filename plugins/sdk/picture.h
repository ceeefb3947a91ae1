#ifndef PLUGIN_PICTURE_H
#define PLUGIN_PICTURE_H

#include <opencv2/core.hpp>

#include "sdk/parameter.h"
#include "sdk/settings.h"

class ArithmParamMgr;

/// The store's pictures as OpenCV sees them.
namespace Plugin
{
enum class PictureType { RGB, Gray8 }; ///< as in the setting InputType; RGB lies as blue, green, red

/// Bytes from one row of a picture to the next, as the store and the data sources lay it out.
size_t rowLength(PictureType eType, int nWidth);

/// The picture that InputID names, as a header on the store's own pixels: nothing is copied.
/// Throws when it is empty.
cv::Mat inputPicture(const Settings &cSettings, ArithmParamMgr &cStore, PictureType eType);

/// The picture that OutputID names, made cSize large and given its name, as a header on the store's
/// own pixels. They are undefined, unless it is the very input (compare the data pointers): then
/// the step works in place. Throws when there is no memory.
cv::Mat outputPicture(const Settings &cSettings, ArithmParamMgr &cStore, PictureType eType, cv::Size cSize,
                      const Title &cTitle);
} // namespace Plugin

#endif
