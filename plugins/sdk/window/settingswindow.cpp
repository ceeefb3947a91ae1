#include "sdk/window/settingswindow.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>

#include "sdk/settings.h"
#include "sdk/window/editor.h"
#include "sdk/window/storecopy.h"

using Plugin::Kind;
using Plugin::SettingsWindow;

namespace
{
constexpr int KIND_ROLE = Qt::UserRole;
constexpr int ID_ROLE = Qt::UserRole + 1;
constexpr const char *HELP_PROPERTY = "help";

/// The Chinese caption, and the English one in a quieter colour.
QString labelText(const Plugin::Setting &cSetting, bool bEnabled)
{
    // A flag's caption stands beside its box.
    if (cSetting.m_eKind == Plugin::SettingKind::Flag)
        return {};
    const QString strEnglish = Plugin::english(cSetting.m_cCaption).toHtmlEscaped();
    const QString strFrame =
        bEnabled ? QStringLiteral(" <font color='#707070'>%1</font>") : QStringLiteral(" <span>%1</span>");
    return Plugin::chinese(cSetting.m_cCaption).toHtmlEscaped() + strFrame.arg(strEnglish);
}

QString utf8(const char *szText)
{
    return QString::fromUtf8(szText);
}

QString nameTag(const Plugin::Setting &cOutput)
{
    return utf8(cOutput.m_szPrefix) + "Name";
}

QString describeTag(const Plugin::Setting &cOutput)
{
    return utf8(cOutput.m_szPrefix) + "Describe";
}

void append(std::string &strConfig, const QString &strTag, const QString &strValue)
{
    Plugin::appendValue(strConfig, strTag.toStdString(), strValue.toStdString());
}

QGroupBox *group(const QString &strTitle, QFormLayout *&pcForm)
{
    auto *pcGroup = new QGroupBox(strTitle);
    pcForm = new QFormLayout(pcGroup);
    pcForm->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    pcForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    return pcGroup;
}

/// Makes the boxes beside sliders equally wide, so that the sliders are so too.
void alignSliders(const QWidget &cForm)
{
    QList<QAbstractSpinBox *> lstBox;
    int nWidth = 140;
    for (const QSlider *pcSlider : cForm.findChildren<QSlider *>()) {
        lstBox << pcSlider->parentWidget()->findChild<QAbstractSpinBox *>();
        nWidth = std::max(nWidth, lstBox.last()->sizeHint().width());
    }
    for (QAbstractSpinBox *pcBox : qAsConst(lstBox))
        pcBox->setMinimumWidth(nWidth);
}

QPushButton *button(const QString &strText, const QString &strName)
{
    auto *pcButton = new QPushButton(strText);
    pcButton->setObjectName(strName);
    return pcButton;
}
} // namespace

SettingsWindow::SettingsWindow(const PluginDescription &cPlugin, const QString &strConfig,
                               ArithmParamMgr *pcStore)
    : m_cPlugin(cPlugin), m_pcStore(pcStore), m_achGiven(strConfig.toUtf8())
{
    setWindowTitle(utf8(cPlugin.m_cAbout.m_szName) + QStringLiteral(" 配置 Settings"));
    for (const Setting &cSetting : cPlugin) {
        Row cRow{};
        cRow.m_pcSetting = &cSetting;
        m_lstRow.push_back(cRow);
    }

    auto *pcSides = new QHBoxLayout;
    pcSides->addWidget(makeForm());
    if (m_pcStore && m_cPlugin.m_fnExecute)
        pcSides->addWidget(makePreviewSide(), 1);

    auto *pcButtons = new QHBoxLayout;
    auto *pcOK = button(QStringLiteral("确定 OK"), QStringLiteral("btnOK"));
    auto *pcCancel = button(QStringLiteral("取消 Cancel"), QStringLiteral("btnCancel"));
    pcOK->setDefault(true);
    pcButtons->addStretch();
    pcButtons->addWidget(pcOK);
    pcButtons->addWidget(pcCancel);
    connect(pcOK, &QPushButton::clicked, this, &SettingsWindow::pressOK);
    connect(pcCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *pcLayout = new QVBoxLayout(this);
    pcLayout->addLayout(pcSides, 1);
    pcLayout->addLayout(pcButtons);

    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *pcNow) { showHelp(pcNow); });
    showHelp(nullptr);
    settingChanged();
}

SettingsWindow::~SettingsWindow()
{
    // The widgets, which die after the members, move the focus and leave their values once more.
    qApp->disconnect(this);
    for (QObject *pcChild : findChildren<QObject *>())
        pcChild->disconnect(this);
}

/// The value in the configuration that was given.
QString SettingsWindow::given(const QString &strTag) const
{
    return toQString(Settings(m_achGiven.constData()).value(strTag.toStdString()));
}

Kind SettingsWindow::givenKind(const Setting &cSetting) const
{
    const QString strType = *cSetting.m_szTypeTag ? given(utf8(cSetting.m_szTypeTag)) : QString();
    for (int nKind = 0; nKind <= static_cast<int>(Kind::Bools); ++nKind) {
        const Kind eKind = static_cast<Kind>(nKind);
        if ((cSetting.m_nKinds & kindBit(eKind)) &&
            strType.compare(QLatin1String(kindName(eKind)), Qt::CaseInsensitive) == 0)
            return eKind;
    }
    return cSetting.m_eUsual;
}

QWidget *SettingsWindow::makeForm()
{
    auto *pcContent = new QWidget;
    auto *pcLayout = new QVBoxLayout(pcContent);
    pcLayout->setContentsMargins(0, 0, 6, 0);

    QFormLayout *pcInputs = nullptr;
    QFormLayout *pcSettings = nullptr;
    QFormLayout *pcOutputs = nullptr;
    for (QGroupBox *pcGroup : {group(QStringLiteral("输入变量 Inputs"), pcInputs),
                               group(QStringLiteral("参数 Settings"), pcSettings),
                               group(QStringLiteral("输出变量 Outputs"), pcOutputs)})
        pcLayout->addWidget(pcGroup);
    pcLayout->addStretch();
    // Group by group: Tab goes the way in which the widgets are made.
    for (Row &cRow : m_lstRow)
        if (cRow.m_pcSetting->m_eKind == SettingKind::Input)
            makeInput(pcInputs, cRow);
    for (Row &cRow : m_lstRow)
        if (cRow.m_pcSetting->m_eKind != SettingKind::Input &&
            cRow.m_pcSetting->m_eKind != SettingKind::Output)
            makeEditor(pcSettings, cRow);
    for (Row &cRow : m_lstRow)
        if (cRow.m_pcSetting->m_eKind == SettingKind::Output)
            makeOutput(pcOutputs, cRow);
    int nLabelWidth = 0;
    for (const Row &cRow : m_lstRow)
        nLabelWidth = std::max(nLabelWidth, cRow.m_pcLabel->sizeHint().width());
    for (const Row &cRow : m_lstRow)
        cRow.m_pcLabel->setMinimumWidth(nLabelWidth);
    alignSliders(*pcContent);
    for (QFormLayout *pcForm : {pcInputs, pcSettings, pcOutputs})
        pcForm->parentWidget()->setVisible(pcForm->rowCount() > 0);

    m_pcHelp = new QLabel;
    m_pcHelp->setObjectName(QStringLiteral("lblHelp"));
    m_pcHelp->setTextFormat(Qt::PlainText);
    m_pcHelp->setWordWrap(true);
    m_pcHelp->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_pcHelp->setMinimumHeight(4 * fontMetrics().lineSpacing());

    // A table that is higher than the screen is scrolled.
    auto *pcScroll = new QScrollArea;
    pcScroll->setWidget(pcContent);
    pcScroll->setWidgetResizable(true);
    pcScroll->setFrameShape(QFrame::NoFrame);
    pcScroll->setFocusPolicy(Qt::NoFocus); // nothing would show it
    pcScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QSize cContent = pcContent->sizeHint();
    const int nHighest = QApplication::primaryScreen()->availableGeometry().height() * 3 / 4;
    pcScroll->setMinimumWidth(cContent.width() + (cContent.height() > nHighest
                                                      ? pcScroll->verticalScrollBar()->sizeHint().width()
                                                      : 0));
    pcScroll->setMinimumHeight(std::min(cContent.height(), nHighest));
    pcScroll->setMaximumHeight(cContent.height());

    auto *pcSide = new QWidget;
    auto *pcSideLayout = new QVBoxLayout(pcSide);
    pcSideLayout->setContentsMargins(0, 0, 0, 0);
    pcSideLayout->addWidget(pcScroll, 1);
    pcSideLayout->addWidget(m_pcHelp);
    pcSideLayout->addStretch();
    return pcSide;
}

void SettingsWindow::addRow(QFormLayout *pcForm, Row &cRow, QWidget *pcField)
{
    const Setting &cSetting = *cRow.m_pcSetting;
    const QString strHelp = bothLines(cSetting.m_cHelp);
    cRow.m_pcLabel = new QLabel(labelText(cSetting, true));
    cRow.m_pcLabel->setTextFormat(Qt::RichText);
    cRow.m_pcField = pcField; // no buddy of the label, which would take '&' for a shortcut
    for (QWidget *pcWidget : {static_cast<QWidget *>(cRow.m_pcLabel), pcField}) {
        pcWidget->setToolTip(strHelp);
        pcWidget->setProperty(HELP_PROPERTY, strHelp);
    }
    pcForm->addRow(cRow.m_pcLabel, pcField);
}

void SettingsWindow::makeInput(QFormLayout *pcForm, Row &cRow)
{
    const Setting &cSetting = *cRow.m_pcSetting;
    cRow.m_pcInput = new QComboBox;
    cRow.m_pcInput->setObjectName(utf8(cSetting.m_szTag));
    cRow.m_pcInput->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    constexpr int CHARACTERS = 28;
    cRow.m_pcInput->setMinimumContentsLength(CHARACTERS);
    const auto fnAdd = [&](const QString &strText, Kind eKind, int nID) {
        cRow.m_pcInput->addItem(strText);
        const int nItem = cRow.m_pcInput->count() - 1;
        cRow.m_pcInput->setItemData(nItem, static_cast<int>(eKind), KIND_ROLE);
        cRow.m_pcInput->setItemData(nItem, nID, ID_ROLE);
        cRow.m_pcInput->setItemData(nItem, strText, Qt::ToolTipRole);
    };

    cRow.m_eKind = givenKind(cSetting);
    bool bNumber = false;
    const int nGiven = given(utf8(cSetting.m_szTag)).toInt(&bNumber);
    const bool bGiven = bNumber && nGiven >= 0;
    int nChosen = -1;
    int nUsual = -1;
    for (const ArithmParamMgr::Entry &cEntry :
         m_pcStore ? m_pcStore->snapshot() : QList<ArithmParamMgr::Entry>()) {
        if (!(cSetting.m_nKinds & kindBit(cEntry.m_eKind)))
            continue;
        QStringList lstText{QString::number(cEntry.m_nID), cEntry.m_strName, cEntry.m_strDescribe};
        if (*cSetting.m_szTypeTag)
            lstText.insert(1, utf8(kindName(cEntry.m_eKind)));
        if (bGiven && cEntry.m_nID == nGiven && cEntry.m_eKind == cRow.m_eKind)
            nChosen = cRow.m_pcInput->count();
        if (cEntry.m_eKind == cSetting.m_eUsual) // the newest: what the step before left
            nUsual = cRow.m_pcInput->count();
        lstText.removeAll(QString());
        fnAdd(lstText.join(QStringLiteral("  ")), cEntry.m_eKind, cEntry.m_nID);
    }
    if (bGiven && nChosen < 0) {
        nChosen = cRow.m_pcInput->count();
        fnAdd(QStringLiteral("%1  (不存在 missing)").arg(nGiven), cRow.m_eKind, nGiven);
    }
    cRow.m_pcInput->setCurrentIndex(nChosen >= 0  ? nChosen
                                    : nUsual >= 0 ? nUsual
                                                  : cRow.m_pcInput->count() - 1);
    cRow.m_pcInput->view()->setMinimumWidth(cRow.m_pcInput->view()->sizeHintForColumn(0) +
                                            cRow.m_pcInput->view()->verticalScrollBar()->sizeHint().width());
    connect(cRow.m_pcInput, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &SettingsWindow::inputChanged);
    addRow(pcForm, cRow, cRow.m_pcInput);
}

void SettingsWindow::makeOutput(QFormLayout *pcForm, Row &cRow)
{
    const Setting &cSetting = *cRow.m_pcSetting;
    bool bNumber = false;
    const int nGiven = given(utf8(cSetting.m_szTag)).toInt(&bNumber);
    cRow.m_nID = bNumber && nGiven >= 0 ? nGiven : -1;
    cRow.m_eKind = givenKind(cSetting);

    auto *pcField = new QWidget;
    auto *pcLayout = new QHBoxLayout(pcField);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    const auto fnEdit = [&](const QString &strTag, const char *szUsual, const QString &strTip) {
        auto *pcEdit = new QLineEdit(given(strTag));
        pcEdit->setObjectName(strTag);
        pcEdit->setPlaceholderText(utf8(szUsual));
        pcEdit->setToolTip(strTip);
        pcLayout->addWidget(pcEdit);
        connect(pcEdit, &QLineEdit::textChanged, this, &SettingsWindow::settingChanged);
        return pcEdit;
    };
    cRow.m_pcName = fnEdit(nameTag(cSetting), cSetting.m_szName, QStringLiteral("名称 Name"));
    cRow.m_pcDescribe =
        fnEdit(describeTag(cSetting), cSetting.m_szDescribe, QStringLiteral("描述 Description"));
    pcLayout->setStretchFactor(cRow.m_pcName, 2);
    pcLayout->setStretchFactor(cRow.m_pcDescribe, 3);
    auto *pcID =
        new QLabel(cRow.m_nID < 0 ? QStringLiteral("新 new") : QStringLiteral("ID %1").arg(cRow.m_nID));
    pcID->setObjectName(utf8(cSetting.m_szTag));
    pcLayout->addWidget(pcID);
    pcField->setFocusProxy(cRow.m_pcName);
    addRow(pcForm, cRow, pcField);
}

void SettingsWindow::makeEditor(QFormLayout *pcForm, Row &cRow)
{
    cRow.m_pcEditor = Editor::make(*cRow.m_pcSetting, this);
    const QString strGiven = given(utf8(cRow.m_pcSetting->m_szTag));
    if (!strGiven.isEmpty())
        cRow.m_pcEditor->setValue(strGiven);
    addRow(pcForm, cRow, cRow.m_pcEditor);
    connect(cRow.m_pcEditor, &Editor::changed, this, &SettingsWindow::settingChanged);
    QToolButton *const pcPick = cRow.m_pcEditor->pickButton();
    if (!pcPick)
        return;
    pcPick->setVisible(m_pcStore != nullptr);
    connect(pcPick, &QToolButton::toggled, this,
            [this, pcEditor = cRow.m_pcEditor](bool bOn) { startPicking(pcEditor, bOn); });
}

/// Whether the setting matters for the choice that is made now.
bool SettingsWindow::counts(const Row &cRow) const
{
    const Setting &cSetting = *cRow.m_pcSetting;
    if (!*cSetting.m_szWhenTag)
        return true;
    for (const Row &cOther : m_lstRow)
        if (cOther.m_pcEditor && utf8(cOther.m_pcSetting->m_szTag) == utf8(cSetting.m_szWhenTag))
            for (int n = 0; n < cOther.m_pcSetting->m_nOptions; ++n)
                if (cSetting.m_nWhenOptions >> n & 1 &&
                    cOther.m_pcEditor->value() == utf8(cOther.m_pcSetting->m_pcOptions[n].m_szValue))
                    return true;
    return false;
}

/// The kind of a parameter as it is chosen now: an output follows the input that shares its type.
Kind SettingsWindow::kindOf(const Row &cRow) const
{
    if (cRow.m_pcInput)
        return cRow.m_pcInput->currentIndex() < 0
                   ? cRow.m_eKind
                   : static_cast<Kind>(cRow.m_pcInput->currentData(KIND_ROLE).toInt());
    if (*cRow.m_pcSetting->m_szTypeTag)
        for (const Row &cInput : m_lstRow)
            if (cInput.m_pcInput &&
                utf8(cInput.m_pcSetting->m_szTypeTag) == utf8(cRow.m_pcSetting->m_szTypeTag))
                return kindOf(cInput);
    return cRow.m_eKind;
}

/// -1 when none is chosen.
int SettingsWindow::inputID(const Row &cRow) const
{
    return cRow.m_pcInput->currentIndex() < 0 ? -1 : cRow.m_pcInput->currentData(ID_ROLE).toInt();
}

QString SettingsWindow::problemOf(const Row &cRow) const
{
    if (!counts(cRow))
        return {};
    const QString strCaption = bothBeside(cRow.m_pcSetting->m_cCaption) + QStringLiteral(": ");
    if (cRow.m_pcInput && inputID(cRow) < 0)
        return strCaption + QStringLiteral("未选择输入变量. No input is chosen.");
    if (cRow.m_pcInput && *cRow.m_pcSetting->m_szTypeTag)
        for (const Row &cOther : m_lstRow)
            if (cOther.m_pcInput && kindOf(cOther) != kindOf(cRow) &&
                utf8(cOther.m_pcSetting->m_szTypeTag) == utf8(cRow.m_pcSetting->m_szTypeTag))
                return strCaption + QStringLiteral("输入变量的类型不一致. The inputs differ in type.");
    std::string strReason;
    if (cRow.m_pcEditor)
        strReason = whyRefused(*cRow.m_pcSetting, cRow.m_pcEditor->value().toStdString());
    for (const QLineEdit *pcEdit : {cRow.m_pcName, cRow.m_pcDescribe})
        if (pcEdit && strReason.empty())
            strReason = whyRefused(pcEdit->objectName().toStdString(), pcEdit->text().toStdString());
    return strReason.empty()
               ? QString()
               : strCaption + QStringLiteral("不能使用的值. ") + QString::fromStdString(strReason);
}

QString SettingsWindow::configText(const std::function<int(const Row &)> &fnOutputID) const
{
    std::string strConfig;
    QStringList lstTyped; // a type that several parameters share is written once
    for (const Row &cRow : m_lstRow) {
        const Setting &cSetting = *cRow.m_pcSetting;
        const QString strTypeTag = utf8(cSetting.m_szTypeTag);
        if (cRow.m_pcEditor) {
            // What does not count may be wrong, and nobody was asked to mend it.
            const QString strValue = cRow.m_pcEditor->value();
            const bool bGood = whyRefused(cSetting, strValue.toStdString()).empty();
            append(strConfig, utf8(cSetting.m_szTag), bGood ? strValue : QString());
            continue;
        }
        const int nID = cRow.m_pcInput ? inputID(cRow) : fnOutputID(cRow);
        if (nID >= 0)
            append(strConfig, utf8(cSetting.m_szTag), QString::number(nID));
        if (!strTypeTag.isEmpty() && !lstTyped.contains(strTypeTag)) {
            lstTyped << strTypeTag;
            append(strConfig, strTypeTag, utf8(kindName(kindOf(cRow))));
        }
        for (const QLineEdit *pcEdit : {cRow.m_pcName, cRow.m_pcDescribe})
            if (pcEdit && !pcEdit->text().trimmed().isEmpty())
                append(strConfig, pcEdit->objectName(), pcEdit->text().trimmed());
    }
    // The empty text would mean that nothing was changed.
    if (strConfig.empty())
        append(strConfig, QStringLiteral("Settings"), QString());
    return QString::fromStdString(strConfig);
}

/// Makes and names the output, so that later steps can choose it before the first run.
int SettingsWindow::reserve(const Row &cRow)
{
    const Setting &cSetting = *cRow.m_pcSetting;
    if (!m_pcStore || (cRow.m_nID < 0 && !counts(cRow)))
        return cRow.m_nID;
    const Kind eKind = kindOf(cRow);
    int nID = cRow.m_nID;
    if (nID >= 0 && eKind != cRow.m_eKind) {
        // The kind changed with the input's: the output of the old kind goes, unless another step made
        // it and this one only worked in place.
        const bool bInPlace = std::any_of(m_lstRow.begin(), m_lstRow.end(), [&](const Row &cInput) {
            return cInput.m_pcInput && cInput.m_eKind == cRow.m_eKind &&
                   given(utf8(cInput.m_pcSetting->m_szTag)).toInt() == cRow.m_nID;
        });
        if (!bInPlace)
            removeParameter(*m_pcStore, cRow.m_eKind, nID);
        nID = -1;
    }
    const QString strName = cRow.m_pcName->text().trimmed();
    const QString strDescribe = cRow.m_pcDescribe->text().trimmed();
    return nameParameter(*m_pcStore, eKind, nID, strName.isEmpty() ? utf8(cSetting.m_szName) : strName,
                         strDescribe.isEmpty() ? utf8(cSetting.m_szDescribe) : strDescribe);
}

void SettingsWindow::settingChanged()
{
    for (const Row &cRow : m_lstRow) {
        const bool bCounts = counts(cRow);
        cRow.m_pcLabel->setEnabled(bCounts);
        cRow.m_pcLabel->setText(labelText(*cRow.m_pcSetting, bCounts));
        cRow.m_pcField->setEnabled(bCounts);
    }
    askPreview();
}

void SettingsWindow::inputChanged()
{
    m_pcInputs.reset();
    settingChanged();
}

/// The help for the setting that has the focus, else what the plug-in does.
void SettingsWindow::showHelp(QWidget *pcFocused)
{
    QString strHelp;
    if (pcFocused && pcFocused->window() == this)
        for (const QWidget *pcWidget = pcFocused; pcWidget && strHelp.isEmpty();
             pcWidget = pcWidget->parentWidget())
            strHelp = pcWidget->property(HELP_PROPERTY).toString();
    m_pcHelp->setText(strHelp.isEmpty() ? bothLines(m_cPlugin.m_cAbout.m_cHelp) : strHelp);
}

void SettingsWindow::pressOK()
{
    // What is being typed counts.
    for (QAbstractSpinBox *pcBox : findChildren<QAbstractSpinBox *>())
        pcBox->interpretText();
    for (const Row &cRow : m_lstRow)
        if (const QString strProblem = problemOf(cRow); !strProblem.isEmpty()) {
            QMessageBox cBox(QMessageBox::Information, QStringLiteral("警告 Warning"), strProblem,
                             QMessageBox::Ok, this);
            cBox.setTextFormat(Qt::PlainText);
            cBox.exec();
            cRow.m_pcField->setFocus();
            return;
        }
    m_strConfig = configText([this](const Row &cRow) { return reserve(cRow); });
    accept();
}
