#include "sdk/step.h"

namespace
{
using Plugin::Kind;
using Plugin::Picture;

unsigned char *pixels(const ParamDIB &cPicture)
{
    return cPicture.getDIB();
}

unsigned char *pixels(const ParamGray8 &cPicture)
{
    return cPicture.getGray8();
}

unsigned char *pixels(const ParamGray16 &cPicture)
{
    return reinterpret_cast<unsigned char *>(cPicture.getGray16());
}

/// Calls fnBody with the store's picture of that kind.
template <typename Body>
Picture withPicture(ArithmParamMgr &cStore, Kind eKind, int nID, Body fnBody)
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

template <typename Parameter>
Picture picture(const Parameter &cParameter, Kind eKind, const char *szThing, const char *szTrouble)
{
    const int nWidth = cParameter.getWidth();
    const Picture cPicture{pixels(cParameter), nWidth, cParameter.getHeight(),
                           Plugin::rowLength(eKind, nWidth), eKind};
    if (!cPicture.m_puchPixels)
        throw Plugin::Error(szThing + std::to_string(cParameter.getID()) + szTrouble);
    return cPicture;
}

QString titlePart(const Plugin::Settings &cSettings, const char *szPrefix, const char *szTag,
                  const char *szUsual)
{
    const std::string_view strText = cSettings.value(std::string(szPrefix) + szTag);
    return Plugin::toQString(strText.empty() ? szUsual : strText);
}
} // namespace

Plugin::Picture Plugin::Step::operator[](const PictureInput &cSetting) const
{
    const Kind eKind = kind(cSetting);
    return withPicture(m_cStore, eKind, id(cSetting), [=](const auto &cParameter) {
        return picture(cParameter, eKind, "Input picture ", " is empty.");
    });
}

Plugin::Picture Plugin::Step::resized(const PictureOutput &cSetting, int nWidth, int nHeight) const
{
    const Kind eKind = kind(cSetting);
    return withPicture(m_cStore, eKind, id(cSetting), [&](auto &cParameter) {
        setTitle(cParameter, cSetting);
        // A picture of that size is left alone, since it may be the input.
        if (cParameter.getWidth() != nWidth || cParameter.getHeight() != nHeight)
            cParameter.resize(nWidth, nHeight);
        return picture(cParameter, eKind, "There is no memory for output picture ", ".");
    });
}

void Plugin::Step::setTitle(ArithmParam &cParameter, const Setting &cSetting) const
{
    cParameter.setName(titlePart(*this, cSetting.m_szPrefix, "Name", cSetting.m_szName));
    cParameter.setDescribe(titlePart(*this, cSetting.m_szPrefix, "Describe", cSetting.m_szDescribe));
}
