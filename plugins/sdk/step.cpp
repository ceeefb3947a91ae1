#include "sdk/step.h"

namespace
{
template <typename Parameter>
Plugin::Picture filled(const Parameter &cParameter, const char *szThing, const char *szTrouble)
{
    const Plugin::Picture cPicture = Plugin::picture(cParameter);
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
    return withPicture(m_cStore, kind(cSetting), id(cSetting), [](const auto &cParameter) {
        return filled(cParameter, "Input picture ", " is empty.");
    });
}

Plugin::Picture Plugin::Step::resized(const PictureOutput &cSetting, int nWidth, int nHeight) const
{
    return withPicture(m_cStore, kind(cSetting), id(cSetting), [&](auto &cParameter) {
        setTitle(cParameter, cSetting);
        // A picture of that size is left alone, since it may be the input.
        if (cParameter.getWidth() != nWidth || cParameter.getHeight() != nHeight)
            cParameter.resize(nWidth, nHeight);
        return filled(cParameter, "There is no memory for output picture ", ".");
    });
}

void Plugin::Step::setTitle(ArithmParam &cParameter, const Setting &cSetting) const
{
    cParameter.setName(titlePart(*this, cSetting.m_szPrefix, "Name", cSetting.m_szName));
    cParameter.setDescribe(titlePart(*this, cSetting.m_szPrefix, "Describe", cSetting.m_szDescribe));
}
