#ifndef PLUGIN_PICTURE_H
#define PLUGIN_PICTURE_H

#include <cstddef>

#include "sdk/table.h"

namespace Plugin
{
/// Bytes from one row to the next, as the store and the data sources lay pictures out.
constexpr size_t rowLength(Kind eKind, int nWidth)
{
    const size_t nPixels = static_cast<size_t>(nWidth);
    return eKind == Kind::DIB      ? ((nPixels + 1) * 3) & ~size_t(3)
           : eKind == Kind::Gray16 ? nPixels * 2
                                   : nPixels;
}

/// Somebody else's pixels: those of the store, or those that a data source hands over.
struct Picture {
    unsigned char *m_puchPixels = nullptr; ///< null: there is no picture
    int m_nWidth = 0;
    int m_nHeight = 0;
    size_t m_nRowLength = 0;    ///< bytes
    Kind m_eKind = Kind::Gray8; ///< DIB: blue, green, red; Gray8: a byte; Gray16: two bytes a pixel
};

/// A parameter's own pixels.
inline Picture picture(const ParamDIB &cColour)
{
    return {cColour.getDIB(), cColour.getWidth(), cColour.getHeight(),
            rowLength(Kind::DIB, cColour.getWidth()), Kind::DIB};
}
inline Picture picture(const ParamGray8 &cGrey)
{
    return {cGrey.getGray8(), cGrey.getWidth(), cGrey.getHeight(), rowLength(Kind::Gray8, cGrey.getWidth()),
            Kind::Gray8};
}
inline Picture picture(const ParamGray16 &cGrey)
{
    return {reinterpret_cast<unsigned char *>(cGrey.getGray16()), cGrey.getWidth(), cGrey.getHeight(),
            rowLength(Kind::Gray16, cGrey.getWidth()), Kind::Gray16};
}

/// Calls fnBody with the store's picture of that kind, which is made, empty, if there is none.
template <typename Body>
auto withPicture(ArithmParamMgr &cStore, Kind eKind, int nID, Body fnBody)
{
    switch (eKind) {
    case Kind::DIB:
        return fnBody(*cStore.getParamDIB(nID));
    case Kind::Gray16:
        return fnBody(*cStore.getParamGray16(nID));
    default:
        return fnBody(*cStore.getParamGray8(nID));
    }
}
} // namespace Plugin

#endif
