// A data source that needs no camera and no OpenCV: grey pictures of a gradient that moves.

#include <vector>

#include <sdk/datasource.h>

class Gradient : public Plugin::Source
{
public:
    static constexpr Plugin::About ABOUT{
        "Gradient", "", "Gradient", {"移动的灰度渐变。", "A grey gradient that moves."}};

    static constexpr auto SIZE =
        Plugin::Integer("Size", {"边长", "Size"}, 256).range(1, 4096).unit({"像素", "pixels"});
    static constexpr Plugin::Setting SETTINGS[] = {SIZE};

protected:
    void configure(const Plugin::Settings &cSettings) override
    {
        m_nSize = cSettings[SIZE];
        m_achPixels.resize(static_cast<size_t>(m_nSize) * static_cast<size_t>(m_nSize));
    }

    Plugin::Picture request(Plugin::Kind eKind) override
    {
        if (eKind != Plugin::Kind::Gray8)
            throw Plugin::Error("The gradient is grey: choose Gray8.");
        ++m_nPicture;
        for (size_t n = 0; n < m_achPixels.size(); ++n)
            m_achPixels[n] = static_cast<unsigned char>(n + m_nPicture);
        return {m_achPixels.data(), m_nSize, m_nSize, static_cast<size_t>(m_nSize), eKind};
    }

private:
    int m_nSize = 0;
    size_t m_nPicture = 0;
    std::vector<unsigned char> m_achPixels;
};

OCULINEX_DATA_SOURCE(Gradient)
