#include <opencv2/core/hal/intrin.hpp>
#include <opencv2/imgproc.hpp>

#include "sdk/algorithm.h"
#include "sdk/opencv.h"

namespace
{
/// A range of bytes as one subtraction, one comparison and, if it goes round, one negation.
struct ByteRange {
    ByteRange(int nLow, int nHigh)
        : m_uchNot(nLow > nHigh ? 255 : 0),
          m_uchFirst(static_cast<unsigned char>(m_uchNot ? nHigh + 1 : nLow)),
          m_uchLength(static_cast<unsigned char>(m_uchNot ? nLow - nHigh - 2 : nHigh - nLow))
    {
        // Going round with nothing left out is every value.
        if (nLow == nHigh + 1)
            *this = ByteRange(0, 255);
    }

    unsigned char operator()(unsigned char uch) const
    {
        const bool bIn = static_cast<unsigned char>(uch - m_uchFirst) <= m_uchLength;
        return static_cast<unsigned char>((bIn ? 255 : 0) ^ m_uchNot);
    }
#if CV_SIMD128
    cv::v_uint8x16 operator()(const cv::v_uint8x16 &cBytes) const
    {
        return (cv::v_sub_wrap(cBytes, cv::v_setall_u8(m_uchFirst)) <= cv::v_setall_u8(m_uchLength)) ^
               cv::v_setall_u8(m_uchNot);
    }
#endif

    unsigned char m_uchNot; ///< 255: what is counted lies outside
    unsigned char m_uchFirst;
    unsigned char m_uchLength;
};

class HsvRange
{
public:
    enum Objects { INSIDE, OUTSIDE };

    static constexpr Plugin::About ABOUT{"OCX_HsvRange",
                                         "图像处理",
                                         "颜色分割",
                                         {"颜色在范围内的像素写 255，其余写 0。",
                                          "Writes 255 where the colour is in a range and 0 elsewhere."}};

    static constexpr Plugin::Option OBJECT_SIDES[] = {{"Inside", {"范围内", "Inside"}},
                                                      {"Outside", {"范围外", "Outside"}}};
    static constexpr Plugin::PictureInput INPUT{"InputID", {"输入图像", "Input picture"}, Plugin::Kind::DIB};
    static constexpr Plugin::PictureOutput OUTPUT{"OutputID",
                                                  {"输出图像", "Output picture"},
                                                  Plugin::Kind::Gray8,
                                                  "颜色掩膜",
                                                  "Colour mask: 255 where objects are, else 0"};
    static constexpr auto RANGE =
        Plugin::ColourRange("Range", {"颜色范围", "Colours"}, "0,80,80,20,255,255")
            .help({"色调 0 到 179，饱和度和亮度 0 到 255；最低色调大于最高色调时经过 0（红色）。",
                   "Hue 0 to 179, saturation and value 0 to 255. A lowest hue above the highest goes round "
                   "through 0 (reds)."});
    static constexpr auto OBJECTS = Plugin::Choice<Objects>("Objects", {"物体", "Objects"}, OBJECT_SIDES)
                                        .help({"物体的颜色在范围内，或在范围外（范围是背景）。",
                                               "Objects have the colours of the range, or all others (the "
                                               "range is the background)."});
    static constexpr Plugin::Setting SETTINGS[] = {INPUT, OUTPUT, RANGE, OBJECTS};

    std::string execute(const Plugin::Step &cStep)
    {
        const Plugin::HsvRange cRange = cStep[RANGE];
        const char *const aszChannel[] = {"hue", "saturation", "value"};
        for (int n = 1; n < 3; ++n)
            if (cRange.m_anLow[n] > cRange.m_anHigh[n])
                throw Plugin::Error(std::string("Setting Range has a lowest ") + aszChannel[n] +
                                    " above the highest, so that no colour is in it.");
        const bool bOutside = cStep[OBJECTS] == OUTSIDE;
        const cv::Mat cInput = Plugin::input(cStep, INPUT);
        cv::Mat cOutput = Plugin::output(cStep, OUTPUT, cInput.size());

        // A few rows at a time: their HSV values stay in the processor's cache.
        constexpr int BAND_BYTES = 1 << 16;
        const int nBand = std::clamp(BAND_BYTES / (3 * cInput.cols), 1, cInput.rows);
        if (m_cHsv.cols != cInput.cols || m_cHsv.rows < nBand)
            m_cHsv.create(nBand, cInput.cols, CV_8UC3);
        for (int nRow = 0; nRow < cInput.rows; nRow += nBand) {
            const int nRows = std::min(nBand, cInput.rows - nRow);
            cv::Mat cHsv = m_cHsv.rowRange(0, nRows);
            cv::cvtColor(cInput.rowRange(nRow, nRow + nRows), cHsv, cv::COLOR_BGR2HSV);
            select(cHsv.ptr(), cOutput.ptr(nRow), nRows * cInput.cols, cRange, bOutside);
        }
        return {};
    }

private:
    static void select(const unsigned char *puchHsv, unsigned char *puchMask, int nPixels,
                       const Plugin::HsvRange &cRange, bool bOutside)
    {
        const ByteRange cHue(cRange.m_anLow[0], cRange.m_anHigh[0]);
        const ByteRange cSaturation(cRange.m_anLow[1], cRange.m_anHigh[1]);
        const ByteRange cValue(cRange.m_anLow[2], cRange.m_anHigh[2]);
        const unsigned char uchNot = bOutside ? 255 : 0;
        int n = 0;
#if CV_SIMD128
        for (; n <= nPixels - 16; n += 16) {
            cv::v_uint8x16 cH;
            cv::v_uint8x16 cS;
            cv::v_uint8x16 cV;
            cv::v_load_deinterleave(puchHsv + 3L * n, cH, cS, cV);
            cv::v_store(puchMask + n, (cHue(cH) & cSaturation(cS) & cValue(cV)) ^ cv::v_setall_u8(uchNot));
        }
#endif
        for (; n < nPixels; ++n) {
            const unsigned char *puch = puchHsv + 3L * n;
            puchMask[n] =
                static_cast<unsigned char>((cHue(puch[0]) & cSaturation(puch[1]) & cValue(puch[2])) ^ uchNot);
        }
    }

    cv::Mat m_cHsv; ///< of the rows at hand
};
} // namespace

OCULINEX_ALGORITHM(HsvRange)
