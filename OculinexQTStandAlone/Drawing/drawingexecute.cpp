#include "Drawing/drawing.h"

#include <memory>
#include <type_traits>

#include <QStringList>

#include "Drawing/dlgdrawingconfig.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"
#include "logging.h"
#include "viewhold.h"

namespace
{
/// Hands the number of a tag to a setter; a missing or malformed one leaves the default.
template <typename Opt, typename Setter>
void apply(const ConfigText &cSettings, const char *szTag, Opt &cOpt, Setter fnSet)
{
    bool bNumber = false;
    const int nValue = cSettings.number(szTag, &bNumber);
    if (!bNumber)
        return;
    if constexpr (std::is_same_v<Setter, void (Opt::*)(bool)>)
        (cOpt.*fnSet)(nValue == 1);
    else
        (cOpt.*fnSet)(nValue);
}

void applySettings(const ConfigText &cSettings, Drawing::DIBDrawingOpt &cOpt)
{
    using Opt = Drawing::DIBDrawingOpt;
    apply(cSettings, "Scale", cOpt, &Opt::setScaleType);
    apply(cSettings, "Pos", cOpt, &Opt::setAlignType);
}

void applySettings(const ConfigText &cSettings, Drawing::GrayDrawingOpt &cOpt)
{
    using Opt = Drawing::GrayDrawingOpt;
    apply(cSettings, "Scale", cOpt, &Opt::setScaleType);
    apply(cSettings, "Pos", cOpt, &Opt::setAlignType);
    const ConfigText cMode(cSettings.text("DrawMode"));
    apply(cMode, "Val", cOpt, &Opt::setDrawMode);
    apply(cMode, "Lapped", cOpt, &Opt::setLapped);
    const QStringList lstMask = cMode.text("Mask").split(QLatin1Char(','));
    bool bNumber = false;
    if (const int nValue = lstMask.value(0).toInt(&bNumber); bNumber)
        cOpt.setMaskVal(nValue);
    if (const int nColor = lstMask.value(1).toInt(&bNumber); bNumber)
        cOpt.setMaskColor(nColor);
}

void applySettings(const ConfigText &cSettings, Drawing::PointsDrawingOpt &cOpt)
{
    using Opt = Drawing::PointsDrawingOpt;
    apply(cSettings, "Size", cOpt, &Opt::setSize);
    apply(cSettings, "Color", cOpt, &Opt::setColor);
}

void applySettings(const ConfigText &cSettings, Drawing::LinesDrawingOpt &cOpt)
{
    using Opt = Drawing::LinesDrawingOpt;
    apply(cSettings, "Size", cOpt, &Opt::setSize);
    apply(cSettings, "DspLen", cOpt, &Opt::setDisplayLength);
    apply(cSettings, "Color", cOpt, &Opt::setColor);
}

void applySettings(const ConfigText &cSettings, Drawing::PolysDrawingOpt &cOpt)
{
    using Opt = Drawing::PolysDrawingOpt;
    apply(cSettings, "BorderSize", cOpt, &Opt::setBorderSize);
    apply(cSettings, "BorderColor", cOpt, &Opt::setBorderColor);
    apply(cSettings, "DspArea", cOpt, &Opt::setDisplayArea);
}

void applySettings(const ConfigText &cSettings, Drawing::AreasDrawingOpt &cOpt)
{
    using Opt = Drawing::AreasDrawingOpt;
    apply(cSettings, "DspArea", cOpt, &Opt::setDisplayArea);
    apply(cSettings, "Color", cOpt, &Opt::setColor);
}

void applySettings(const ConfigText &cSettings, Drawing::StringsDrawingOpt &cOpt)
{
    apply(cSettings, "Color", cOpt, &Drawing::StringsDrawingOpt::setColor);
    const QStringList lstPos = cSettings.text("Pos").split(QLatin1Char(','));
    if (lstPos.size() >= 2)
        cOpt.setPos(lstPos[0].toInt(), lstPos[1].toInt());
    // Unlike every other setting, a missing size is 0 (which drawing raises) and not the default.
    cOpt.setFontSize(cSettings.number("FontSize"));
}

/// Makes an object and applies the settings, which are empty where there are none.
template <typename Opt, typename... Args>
std::unique_ptr<Drawing::DrawingOpt> make(const QString &strSettings, Args... args)
{
    auto pcOpt = std::make_unique<Opt>(args...);
    if (!strSettings.isEmpty())
        applySettings(ConfigText(strSettings), *pcOpt);
    return pcOpt;
}

std::unique_ptr<Drawing::DrawingOpt> makeObject(int nType, int nID, const QString &strSettings,
                                                ArithmParamMgr *pcAPM)
{
    if (nType <= 2 && !pcAPM) // only pictures are copied from the store now
        return nullptr;
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
    const ConfigText cConfig(strConfig);
    bool bType = false;
    bool bID = false;
    const int nType = cConfig.number("DataType", &bType);
    const int nID = cConfig.number("DataID", &bID);
    if (!bType || !bID)
        return nullptr;
    std::unique_ptr<DrawingOpt> pcOpt = makeObject(nType, nID, cConfig.text("Config"), pcAPM);
    if (pcOpt)
        pcOpt->setViewID(cConfig.number("View"));
    return pcOpt.release();
}

char *Drawing::execute(char *pchConfig, ArithmParamMgr *pcAPM)
{
    std::unique_ptr<DrawingOpt> pcOpt(parseConfigString(QString::fromUtf8(pchConfig), pcAPM));
    if (!pcOpt) {
        qCInfo(lcTask) << "a drawing step names nothing that can be drawn:" << pchConfig;
    } else if (const ViewHold cView(pcOpt->getViewID()); cView) {
        pcOpt->m_pcAPM = pcAPM;
        cView->pushDrawingOpt(pcOpt.release());
    } else {
        qCInfo(lcTask) << "there is no view" << pcOpt->getViewID() << "to draw into";
    }
    QString strResult;
    return transConfigStr(strResult);
}

char *Drawing::showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool)
{
    QString strResult = configFromDialog<DlgDrawingConfig>(pchConfig, pcAPM);
    return transConfigStr(strResult);
}
