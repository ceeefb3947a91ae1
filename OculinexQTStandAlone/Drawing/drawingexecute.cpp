#include "Drawing/drawing.h"

#include <memory>

#include <QStringList>

#include "arithmparammgr.h"
#include "globalfunction.h"

namespace
{
QString body(const QString &strConfig, const char *szTag)
{
    const QLatin1String strTag(szTag);
    return GlobalFunction::getBody(strConfig, QLatin1Char('<') + strTag + QLatin1Char('>'),
                                   QLatin1String("</") + strTag + QLatin1Char('>'));
}

/// Hands the number of a tag to a setter; a missing or malformed one leaves the default.
template <typename Opt, typename Setter>
void apply(const QString &strConfig, const char *szTag, Opt &cOpt, Setter fnSet)
{
    bool bNumber = false;
    const int nValue = body(strConfig, szTag).toInt(&bNumber);
    if (!bNumber)
        return;
    if constexpr (std::is_same_v<Setter, void (Opt::*)(bool)>)
        (cOpt.*fnSet)(nValue == 1);
    else
        (cOpt.*fnSet)(nValue);
}

void applySettings(const QString &strConfig, Drawing::DIBDrawingOpt &cOpt)
{
    using Opt = Drawing::DIBDrawingOpt;
    apply(strConfig, "Scale", cOpt, &Opt::setScaleType);
    apply(strConfig, "Pos", cOpt, &Opt::setAlignType);
}

void applySettings(const QString &strConfig, Drawing::GrayDrawingOpt &cOpt)
{
    using Opt = Drawing::GrayDrawingOpt;
    apply(strConfig, "Scale", cOpt, &Opt::setScaleType);
    apply(strConfig, "Pos", cOpt, &Opt::setAlignType);
    const QString strMode = body(strConfig, "DrawMode");
    apply(strMode, "Val", cOpt, &Opt::setDrawMode);
    apply(strMode, "Lapped", cOpt, &Opt::setLapped);
    const QStringList lstMask = body(strMode, "Mask").split(QLatin1Char(','));
    bool bNumber = false;
    if (const int nValue = lstMask.value(0).toInt(&bNumber); bNumber)
        cOpt.setMaskVal(nValue);
    if (const int nColor = lstMask.value(1).toInt(&bNumber); bNumber)
        cOpt.setMaskColor(nColor);
}

void applySettings(const QString &strConfig, Drawing::PointsDrawingOpt &cOpt)
{
    using Opt = Drawing::PointsDrawingOpt;
    apply(strConfig, "Size", cOpt, &Opt::setSize);
    apply(strConfig, "Color", cOpt, &Opt::setColor);
}

void applySettings(const QString &strConfig, Drawing::LinesDrawingOpt &cOpt)
{
    using Opt = Drawing::LinesDrawingOpt;
    apply(strConfig, "Size", cOpt, &Opt::setSize);
    apply(strConfig, "DspLen", cOpt, &Opt::setDisplayLength);
    apply(strConfig, "Color", cOpt, &Opt::setColor);
}

void applySettings(const QString &strConfig, Drawing::PolysDrawingOpt &cOpt)
{
    using Opt = Drawing::PolysDrawingOpt;
    apply(strConfig, "BorderSize", cOpt, &Opt::setBorderSize);
    apply(strConfig, "BorderColor", cOpt, &Opt::setBorderColor);
    apply(strConfig, "DspArea", cOpt, &Opt::setDisplayArea);
}

void applySettings(const QString &strConfig, Drawing::AreasDrawingOpt &cOpt)
{
    using Opt = Drawing::AreasDrawingOpt;
    apply(strConfig, "DspArea", cOpt, &Opt::setDisplayArea);
    apply(strConfig, "Color", cOpt, &Opt::setColor);
}

void applySettings(const QString &strConfig, Drawing::StringsDrawingOpt &cOpt)
{
    apply(strConfig, "Color", cOpt, &Drawing::StringsDrawingOpt::setColor);
    const QStringList lstPos = body(strConfig, "Pos").split(QLatin1Char(','));
    if (lstPos.size() >= 2)
        cOpt.setPos(lstPos[0].toInt(), lstPos[1].toInt());
    // Unlike every other setting, a missing size is 0 (which drawing raises) and not the default.
    cOpt.setFontSize(body(strConfig, "FontSize").toInt());
}

/// Makes an object and applies the settings, which are empty where there are none.
template <typename Opt, typename... Args>
std::unique_ptr<Drawing::DrawingOpt> make(const QString &strSettings, Args... args)
{
    auto pcOpt = std::make_unique<Opt>(args...);
    if (!strSettings.isEmpty())
        applySettings(strSettings, *pcOpt);
    return pcOpt;
}

std::unique_ptr<Drawing::DrawingOpt> makeObject(int nType, int nID, const QString &strSettings,
                                                ArithmParamMgr *pcAPM)
{
    switch (nType) {
    case 0: {
        const ParamDIB *pcDIB = pcAPM->getParamDIB(nID);
        return make<Drawing::DIBDrawingOpt>(strSettings, nID, pcDIB->getDIB(), pcDIB->getWidth(),
                                            pcDIB->getHeight());
    }
    case 1: {
        const ParamGray8 *pcGrey = pcAPM->getParamGray8(nID);
        return make<Drawing::Gray8DrawingOpt>(strSettings, nID, pcGrey->getGray8(), pcGrey->getWidth(),
                                              pcGrey->getHeight());
    }
    case 2: {
        const ParamGray16 *pcGrey = pcAPM->getParamGray16(nID);
        return make<Drawing::Gray16DrawingOpt>(strSettings, nID,
                                               reinterpret_cast<unsigned char *>(pcGrey->getGray16()),
                                               pcGrey->getWidth(), pcGrey->getHeight());
    }
    case 3:
        return make<Drawing::PointsDrawingOpt>(strSettings, nID);
    case 4:
        return make<Drawing::LinesDrawingOpt>(strSettings, nID);
    case 5:
        return make<Drawing::PolysDrawingOpt>(strSettings, nID);
    case 6:
        return make<Drawing::AreasDrawingOpt>(strSettings, nID);
    case 7:
        return make<Drawing::StringsDrawingOpt>(strSettings, nID);
    default:
        return nullptr;
    }
}
} // namespace

Drawing::DrawingOpt *Drawing::parseConfigString(QString strConfig, ArithmParamMgr *pcAPM)
{
    bool bType = false;
    bool bID = false;
    const int nType = body(strConfig, "DataType").toInt(&bType);
    const int nID = body(strConfig, "DataID").toInt(&bID);
    if (!bType || !bID || !pcAPM)
        return nullptr;
    std::unique_ptr<DrawingOpt> pcOpt = makeObject(nType, nID, body(strConfig, "Config"), pcAPM);
    if (pcOpt)
        pcOpt->setViewID(body(strConfig, "View").toInt());
    return pcOpt.release();
}

char *Drawing::execute(char *pchConfig, ArithmParamMgr *pcAPM)
{
    std::unique_ptr<DrawingOpt> pcOpt(parseConfigString(QString::fromUtf8(pchConfig), pcAPM));
    if (pcOpt) {
        GlobalFunction *pcViews = GlobalFunction::getInstance();
        const int nView = pcOpt->getViewID();
        if (GlobalFunction::ViewDrawOption *pcCanvas = pcViews->requestViewDrawOption(nView)) {
            pcOpt->m_pcAPM = pcAPM;
            pcCanvas->pushDrawingOpt(pcOpt.release());
            pcViews->releaseViewDrawOption(nView, pcCanvas);
        }
    }
    QString strResult;
    return transConfigStr(strResult);
}

char *Drawing::showConfigWindow(char *, ArithmParamMgr *, bool)
{
    QString strResult;
    return transConfigStr(strResult);
}
