#include "Drawing/dlgdrawingconfig.h"

#include <algorithm>
#include <functional>
#include <vector>

#include <QColorDialog>

#include "Drawing/ui_dlgdrawingconfig.h"
#include "configtext.h"
#include "dialogs.h"
#include "parametertable.h"

namespace
{
constexpr int KIND_NUM = 8; ///< data types, one tab each
constexpr int MIN_FONT_SIZE = 5;

/// One value of the settings text and the widgets that hold it: both ways in one place.
struct Setting {
    const char *m_szTag;
    std::function<QString()> m_fnWrite;
    std::function<void(const QString &)> m_fnRead; ///< leaves the widgets alone when it is no such value
};
using Settings = std::vector<Setting>;

QString write(const Settings &vSetting)
{
    QString strText;
    for (const Setting &cSetting : vSetting)
        strText += tagged(cSetting.m_szTag, cSetting.m_fnWrite());
    return strText;
}

void read(const Settings &vSetting, const QString &strText)
{
    const ConfigText cText(strText);
    for (const Setting &cSetting : vSetting)
        cSetting.m_fnRead(cText.text(cSetting.m_szTag));
}

Setting number(const char *szTag, const std::function<int()> &fnGet, const std::function<void(int)> &fnSet)
{
    return {szTag, [=] { return QString::number(fnGet()); },
            [=](const QString &strNumber) {
                bool bNumber = false;
                const int nValue = strNumber.toInt(&bNumber);
                if (bNumber)
                    fnSet(nValue);
            }};
}

Setting index(const char *szTag, QComboBox *pcBox)
{
    return number(
        szTag, [=] { return pcBox->currentIndex(); }, [=](int nIndex) { pcBox->setCurrentIndex(nIndex); });
}

Setting typed(const char *szTag, QLineEdit *pcEdit)
{
    return number(
        szTag, [=] { return pcEdit->text().toInt(); },
        [=](int nValue) { pcEdit->setText(QString::number(nValue)); });
}

Setting fontSize(QLineEdit *pcEdit)
{
    Setting cSetting = typed("FontSize", pcEdit);
    cSetting.m_fnWrite = [=] {
        pcEdit->setText(QString::number(std::max(pcEdit->text().toInt(), MIN_FONT_SIZE)));
        return pcEdit->text();
    };
    return cSetting;
}

/// Two values, apart by a comma.
Setting pair(const char *szTag, const Setting &cFirst, const Setting &cSecond)
{
    return {szTag, [=] { return cFirst.m_fnWrite() + QLatin1Char(',') + cSecond.m_fnWrite(); },
            [=](const QString &strPair) {
                cFirst.m_fnRead(strPair.section(QLatin1Char(','), 0, 0));
                cSecond.m_fnRead(strPair.section(QLatin1Char(','), 1, 1));
            }};
}

void setColour(QPushButton *pcButton, QRgb nColour)
{
    QPalette cPalette = pcButton->palette();
    cPalette.setColor(QPalette::Button, QColor(nColour));
    pcButton->setPalette(cPalette);
}

/// A cancelled colour dialog hands out a colour too: black.
void chooseColour(QPushButton *pcButton, QWidget *pcParent)
{
    runChild(new QColorDialog(Qt::white, pcParent),
             [pcButton](const QColorDialog &cDialog) { setColour(pcButton, cDialog.selectedColor().rgb()); });
}

Setting colour(const char *szTag, QPushButton *pcButton)
{
    return number(
        szTag, [=] { return static_cast<int>(pcButton->palette().color(QPalette::Button).rgb()); },
        [=](int nColour) { setColour(pcButton, static_cast<QRgb>(nColour)); });
}

/// How a picture lies in the view.
Settings placing(QComboBox *pcScale, QComboBox *pcPos)
{
    return {index("Scale", pcScale), index("Pos", pcPos)};
}

/// The radio buttons stand in the order of the modes: normal, overlay, mask.
Setting drawMode(const std::vector<QRadioButton *> &vMode, QComboBox *pcLapped, QComboBox *pcMaskVal,
                 QComboBox *pcMaskColour)
{
    constexpr int OVERLAY = 1;
    constexpr int MASK = 2;
    const auto fnMode = [=] {
        return vMode[0]->isChecked() ? 0 : vMode[OVERLAY]->isChecked() ? OVERLAY : MASK;
    };
    const auto fnSetMode = [=](int nMode) {
        if (nMode >= 0 && nMode <= MASK)
            vMode[static_cast<size_t>(nMode)]->setChecked(true);
    };
    const Setting cMode = number("Val", fnMode, fnSetMode);
    const Setting cLapped = index("Lapped", pcLapped);
    const Setting cMask = pair("Mask", index(nullptr, pcMaskVal), index(nullptr, pcMaskColour));
    // A mode's own setting stands before it, and those of the other modes are left out.
    const auto fnWrite = [=] {
        const int nMode = fnMode();
        return (nMode == OVERLAY ? write({cLapped})
                : nMode == MASK  ? write({cMask})
                                 : QString()) +
               write({cMode});
    };
    return {"DrawMode", fnWrite, [=](const QString &strText) { read({cMode, cLapped, cMask}, strText); }};
}
} // namespace

/// What stands behind one tab.
struct DlgDrawingConfig::Tab {
    QTableWidget *m_pcTable = nullptr; ///< null: there is no such tab
    QMap<int, int> *m_pmapID = nullptr;
    QMap<int, int> *m_pmapRow = nullptr;
    Settings m_vSetting;
};

DlgDrawingConfig::Tab DlgDrawingConfig::tab(int nDataType)
{
    using Kind = ArithmParamMgr::Kind;
    switch (static_cast<Kind>(nDataType)) {
    case Kind::DIB:
        return {ui->tblRGB, &m_mapDIBParamID, &m_mapDIBParamIDR, placing(ui->cbScaleModeRGB, ui->cbPosRGB)};
    case Kind::Gray8: {
        Settings vSetting = placing(ui->cbScaleModeGray8, ui->cbPosGray8);
        vSetting.push_back(
            drawMode({ui->rbDrawModeNormalGray8, ui->rbDrawModeLappedGray8, ui->rbDrawModeMaskGray8},
                     ui->cbLappedTypeGray8, ui->cbMaskValGray8, ui->cbMaskColorGray8));
        return {ui->tblGray8, &m_mapGray8ParamID, &m_mapGray8ParamIDR, vSetting};
    }
    case Kind::Gray16: {
        Settings vSetting = placing(ui->cbScaleModeGray16, ui->cbPosGray16);
        vSetting.push_back(
            drawMode({ui->rbDrawModeNormalGray16, ui->rbDrawModeLappedGray16, ui->rbDrawModeMaskGray16},
                     ui->cbLappedTypeGray16, ui->cbMaskValGray16, ui->cbMaskColorGray16));
        return {ui->tblGray16, &m_mapGray16ParamID, &m_mapGray16ParamIDR, vSetting};
    }
    case Kind::Points:
        return {ui->tblPoints,
                &m_mapPointsParamID,
                &m_mapPointsParamIDR,
                {index("Size", ui->cbSizePoints), colour("Color", ui->btnColorPoints)}};
    case Kind::Lines:
        return {ui->tblLines,
                &m_mapLinesParamID,
                &m_mapLinesParamIDR,
                {index("Size", ui->cbSizeLines), index("DspLen", ui->cbDspLengthLines),
                 colour("Color", ui->btnColorLines)}};
    case Kind::Polys:
        return {ui->tblPolys,
                &m_mapPolysParamID,
                &m_mapPolysParamIDR,
                {index("BorderSize", ui->cbSizePolys), colour("BorderColor", ui->btnColorPolys),
                 index("DspArea", ui->cbDspAreaPolys)}};
    case Kind::Areas:
        return {ui->tblAreas,
                &m_mapAreasParamID,
                &m_mapAreasParamIDR,
                {index("DspArea", ui->cbDspAreaAreas), colour("Color", ui->btnColorAreas)}};
    case Kind::Strings:
        return {ui->tblStrings,
                &m_mapStringsParamID,
                &m_mapStringsParamIDR,
                {colour("Color", ui->btnColorStrings),
                 pair("Pos", typed(nullptr, ui->edtPosX), typed(nullptr, ui->edtPosY)),
                 fontSize(ui->edtFontSize)}};
    default:
        return {};
    }
}

DlgDrawingConfig::DlgDrawingConfig(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent)
    : QDialog(pcParent),
      ui(new Ui::DlgDrawingConfig),
      m_strConfigStr(strConfig),
      m_nCurrentRow(-1),
      m_nCurrentTable(0),
      m_pcAPM(pcAPM)
{
    ui->setupUi(this);
    for (QPushButton *pcButton :
         {ui->btnColorPoints, ui->btnColorLines, ui->btnColorPolys, ui->btnColorAreas, ui->btnColorStrings})
        setColour(pcButton, qRgb(0, 0, 0));
    for (int nType = 0; nType < KIND_NUM; ++nType) {
        const Tab cTab = tab(nType);
        *cTab.m_pmapID =
            fillParameterTable(cTab.m_pcTable, m_pcAPM, static_cast<ArithmParamMgr::Kind>(nType));
        *cTab.m_pmapRow = inverted(*cTab.m_pmapID);
    }
    if (strConfig.isEmpty())
        return;

    const ConfigText cConfig(strConfig);
    bool bNumber = false;
    const int nType = cConfig.number("DataType", &bNumber);
    if (bNumber) {
        ui->cbDataType->setCurrentIndex(nType);
        ui->tabDataType->setCurrentIndex(nType);
        m_nCurrentTable = nType;
    }
    const Tab cTab = tab(m_nCurrentTable);
    const int nID = cConfig.number("DataID", &bNumber);
    if (bNumber && cTab.m_pcTable && cTab.m_pmapRow->contains(nID)) {
        m_nCurrentRow = cTab.m_pmapRow->value(nID);
        cTab.m_pcTable->setCurrentCell(m_nCurrentRow, 0);
        showSelected(cTab);
    }
    m_strConfigStr = cConfig.text("Config");
    parseConfigString();
}

DlgDrawingConfig::~DlgDrawingConfig()
{
    delete ui;
}

QString DlgDrawingConfig::getConfigString()
{
    return m_strConfigStr;
}

void DlgDrawingConfig::parseConfigString()
{
    read(tab(m_nCurrentTable).m_vSetting, m_strConfigStr);
}

void DlgDrawingConfig::showSelected(const Tab &cTab)
{
    ui->edtName->setText(cTab.m_pcTable->item(m_nCurrentRow, 0)->text());
    ui->edtDescribe->setText(cTab.m_pcTable->item(m_nCurrentRow, 1)->text());
    ui->cbDataType->setCurrentIndex(m_nCurrentTable);
}

void DlgDrawingConfig::on_btnSelectElement_clicked()
{
    m_strConfigStr.clear();
    ui->edtName->clear();
    ui->edtDescribe->clear();
    ui->cbDataType->setCurrentIndex(-1);

    const int nType = ui->tabDataType->currentIndex();
    const Tab cTab = tab(nType);
    // Also without a selection: a font size that is too small is raised in any case.
    const QString strSettings = write(cTab.m_vSetting);
    m_nCurrentRow = cTab.m_pcTable ? selectedRow(cTab.m_pcTable) : -1;
    if (m_nCurrentRow < 0)
        return;
    m_strConfigStr = strSettings;
    m_nCurrentTable = nType;
    showSelected(cTab);
}

void DlgDrawingConfig::on_btnOK_clicked()
{
    const int nType = ui->cbDataType->currentIndex();
    if (nType < 0 || ui->edtName->text().isEmpty())
        return warnUser(this, QStringLiteral("未选中绘制对象."));
    const Tab cTab = tab(m_nCurrentTable);
    const int nID = cTab.m_pmapID ? cTab.m_pmapID->value(m_nCurrentRow) : 0;
    if (nID < 1) {
        m_strConfigStr.clear();
        const QPointer<DlgDrawingConfig> pcThis(this);
        warnUser(this, QStringLiteral("所选择的数据对象不存在!"));
        if (!pcThis)
            return;
    } else {
        m_strConfigStr = tagged("DataType", QString::number(nType)) + tagged("DataID", QString::number(nID)) +
                         tagged("Config", m_strConfigStr);
    }
    accept();
}

void DlgDrawingConfig::on_btnCancel_clicked()
{
    m_strConfigStr.clear();
    reject();
}

void DlgDrawingConfig::on_btnColorPoints_clicked()
{
    chooseColour(ui->btnColorPoints, this);
}

void DlgDrawingConfig::on_btnColorLines_clicked()
{
    chooseColour(ui->btnColorLines, this);
}

void DlgDrawingConfig::on_btnColorPolys_clicked()
{
    chooseColour(ui->btnColorPolys, this);
}

void DlgDrawingConfig::on_btnColorAreas_clicked()
{
    chooseColour(ui->btnColorAreas, this);
}

void DlgDrawingConfig::on_btnColorStrings_clicked()
{
    chooseColour(ui->btnColorStrings, this);
}
