#include "sdk/window/editor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>

#include "sdk/window/numberbox.h"

using Plugin::Editor;
using Plugin::SettingKind;

namespace
{
constexpr int MAX_SIDE = 999999; ///< of a region, pixels
/// A slider over a wider range than that could not be set with a mouse.
constexpr double MAX_SLIDER_RANGE = 10000;

/// A slider beside the box of a number, in steps of dStep from the minimum.
template <typename Box>
QSlider *sliderFor(Box *pcBox, double dStep)
{
    auto *pcSlider = new QSlider(Qt::Horizontal);
    const double dMin = pcBox->minimum();
    const int nSteps = qRound((pcBox->maximum() - dMin) / dStep);
    pcSlider->setRange(0, nSteps);
    pcSlider->setPageStep(std::max(1, nSteps / 10));
    pcSlider->setMinimumWidth(120);
    QObject::connect(pcSlider, &QSlider::valueChanged, pcBox, [=](int nStep) {
        // Not when the slider only follows the box, whose value may lie between two steps.
        if (qRound((pcBox->value() - dMin) / dStep) != nStep)
            pcBox->setValue(static_cast<decltype(pcBox->value())>(dMin + nStep * dStep));
    });
    const auto fnFollow = [=] { pcSlider->setValue(qRound((pcBox->value() - dMin) / dStep)); };
    QObject::connect(pcBox, qOverload<decltype(pcBox->value())>(&Box::valueChanged), pcSlider, fnFollow);
    fnFollow();
    return pcSlider;
}

QString suffixOf(const Plugin::Setting &cSetting)
{
    const QString strUnit = Plugin::bothBeside(cSetting.m_cUnit);
    return strUnit.isEmpty() ? strUnit : ' ' + strUnit;
}

class IntegerEditor : public Editor
{
public:
    IntegerEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcBox = new Plugin::IntegerBox;
        const int nMin = static_cast<int>(cSetting.m_dMin);
        const int nMax = static_cast<int>(cSetting.m_dMax);
        const bool bOdd = cSetting.m_bOdd;
        m_pcBox->setRange(bOdd && nMin % 2 == 0 ? nMin + 1 : nMin, bOdd && nMax % 2 == 0 ? nMax - 1 : nMax);
        if (bOdd)
            m_pcBox->setOdd();
        m_pcBox->setValue(static_cast<int>(cSetting.m_dInitial));
        m_pcBox->setUnit(suffixOf(cSetting));
        if (cSetting.m_dMax - cSetting.m_dMin <= MAX_SLIDER_RANGE)
            add(sliderFor(m_pcBox, bOdd ? 2 : 1), "Slider", 1);
        add(m_pcBox);
        connect(m_pcBox, qOverload<int>(&QSpinBox::valueChanged), this, &Editor::changed);
    }
    QString value() const override { return QString::number(m_pcBox->value()); }
    void setValue(const QString &strValue) override
    {
        bool bNumber = false;
        const int nValue = strValue.toInt(&bNumber);
        if (bNumber)
            m_pcBox->setValue(m_pcBox->allowed(nValue));
    }

private:
    Plugin::IntegerBox *m_pcBox;
};

class RealEditor : public Editor
{
public:
    RealEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcBox = new Plugin::RealBox;
        // A round step, of which the range holds 100 to 1000.
        const double dStep = std::pow(10, std::floor(std::log10(cSetting.m_dMax - cSetting.m_dMin)) - 2);
        m_pcBox->makeRoomFor({cSetting.m_dMin, cSetting.m_dMax, cSetting.m_dInitial, dStep});
        m_pcBox->setRange(cSetting.m_dMin, cSetting.m_dMax);
        m_pcBox->setSingleStep(std::min(dStep, 1.0));
        m_pcBox->setSuffix(suffixOf(cSetting));
        m_pcBox->setValue(cSetting.m_dInitial);
        if (cSetting.m_dMax - cSetting.m_dMin <= MAX_SLIDER_RANGE)
            add(sliderFor(m_pcBox, dStep), "Slider", 1);
        add(m_pcBox);
        connect(m_pcBox, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &Editor::changed);
    }
    QString value() const override { return m_pcBox->textFromValue(m_pcBox->value()); }
    void setValue(const QString &strValue) override
    {
        bool bNumber = false;
        const double dValue = strValue.toDouble(&bNumber);
        if (!bNumber || !std::isfinite(dValue))
            return;
        m_pcBox->makeRoomFor({dValue});
        m_pcBox->setValue(dValue);
    }

private:
    Plugin::RealBox *m_pcBox;
};

class ChoiceEditor : public Editor
{
public:
    ChoiceEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcCombo = add(new QComboBox, "", 1);
        for (int nOption = 0; nOption < cSetting.m_nOptions; ++nOption) {
            const Plugin::Option &cOption = cSetting.m_pcOptions[nOption];
            const QString strCaption = Plugin::bothBeside(cOption.m_cCaption);
            const QString strValue = QString::fromUtf8(cOption.m_szValue);
            m_pcCombo->addItem(strCaption.isEmpty() ? strValue : strCaption, strValue);
        }
        m_pcCombo->setCurrentIndex(static_cast<int>(cSetting.m_dInitial));
        connect(m_pcCombo, qOverload<int>(&QComboBox::currentIndexChanged), this, &Editor::changed);
    }
    QString value() const override { return m_pcCombo->currentData().toString(); }
    void setValue(const QString &strValue) override
    {
        const int nIndex = m_pcCombo->findData(strValue, Qt::UserRole, Qt::MatchFixedString);
        if (nIndex >= 0)
            m_pcCombo->setCurrentIndex(nIndex);
    }

private:
    QComboBox *m_pcCombo;
};

class FlagEditor : public Editor
{
public:
    FlagEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcBox = add(
            new QCheckBox(Plugin::bothBeside(cSetting.m_cCaption).replace('&', QLatin1String("&&"))), "", 1);
        m_pcBox->setChecked(cSetting.m_dInitial != 0);
        connect(m_pcBox, &QCheckBox::toggled, this, &Editor::changed);
    }
    QString value() const override
    {
        return m_pcBox->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    }
    void setValue(const QString &strValue) override
    {
        bool bNumber = false;
        const int nValue = strValue.toInt(&bNumber);
        if (bNumber)
            m_pcBox->setChecked(nValue == 1);
    }

private:
    QCheckBox *m_pcBox;
};

/// Texts, files and folders.
class TextEditor : public Editor
{
public:
    TextEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcEdit = add(new QLineEdit(QString::fromUtf8(cSetting.m_szInitial)), "", 1);
        m_pcEdit->setMinimumWidth(200);
        connect(m_pcEdit, &QLineEdit::textChanged, this, &Editor::changed);
        if (cSetting.m_eKind == SettingKind::Text)
            return;
        auto *pcBrowse = add(new QPushButton(QStringLiteral("浏览 Browse")), "Browse");
        pcBrowse->setAutoDefault(false);
        connect(pcBrowse, &QPushButton::clicked, this, &TextEditor::browse);
    }
    QString value() const override { return m_pcEdit->text().trimmed(); }
    void setValue(const QString &strValue) override { m_pcEdit->setText(strValue); }

private:
    void browse()
    {
        const QString strFilter = QString::fromUtf8(setting().m_szFilter);
        const QString strChosen =
            setting().m_eKind == SettingKind::Directory
                ? QFileDialog::getExistingDirectory(this, QStringLiteral("选取目录 Choose a folder"), value())
                : QFileDialog::getOpenFileName(this, QStringLiteral("选取文件 Choose a file"), value(),
                                               strFilter.isEmpty() ? strFilter : '(' + strFilter + ')');
        if (!strChosen.isEmpty())
            m_pcEdit->setText(strChosen);
    }

    QLineEdit *m_pcEdit;
};

/// What the flow does: a verb and its number or text.
class CommandEditor : public Editor
{
public:
    CommandEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcVerb = add(new QComboBox);
        m_pcVerb->addItem(QStringLiteral("继续 Go on"), QString());
        m_pcVerb->addItem(QStringLiteral("跳步 Skip"), QStringLiteral("skip"));
        m_pcVerb->addItem(QStringLiteral("停止 Stop"), QStringLiteral("stop"));
        m_pcVerb->addItem(QStringLiteral("打印 Print"), QStringLiteral("print"));
        m_pcEdit = add(new QLineEdit, "Argument", 1);
        CommandEditor::setValue(QString::fromUtf8(cSetting.m_szInitial));
        showVerb();
        connect(m_pcVerb, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
            showVerb();
            emit changed();
        });
        connect(m_pcEdit, &QLineEdit::textChanged, this, &Editor::changed);
    }
    QString value() const override
    {
        const QString strVerb = m_pcVerb->currentData().toString();
        return strVerb.isEmpty() ? strVerb : strVerb + ':' + m_pcEdit->text().trimmed();
    }
    void setValue(const QString &strValue) override
    {
        const int nColon = strValue.indexOf(':');
        const int nVerb =
            m_pcVerb->findData(strValue.left(std::max(0, nColon)), Qt::UserRole, Qt::MatchFixedString);
        if (nVerb < 0 || (nColon < 0 && !strValue.isEmpty()))
            return;
        m_pcEdit->setText(strValue.mid(nColon + 1));
        m_pcVerb->setCurrentIndex(nVerb);
    }

private:
    void showVerb()
    {
        const QString strVerb = m_pcVerb->currentData().toString();
        m_pcEdit->setEnabled(!strVerb.isEmpty());
        m_pcEdit->setPlaceholderText(strVerb.isEmpty()                  ? QString()
                                     : strVerb == QLatin1String("skip") ? QStringLiteral("步数 steps")
                                                                        : QStringLiteral("文字 text"));
    }

    QComboBox *m_pcVerb;
    QLineEdit *m_pcEdit;
};

class ColourEditor : public Editor
{
public:
    ColourEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : Editor(cSetting, pcParent)
    {
        m_pcEdit = add(new QLineEdit(QString::fromUtf8(cSetting.m_szInitial)), "", 1);
        m_pcSwatch = add(new QToolButton, "Swatch");
        m_pcSwatch->setIconSize({32, 16});
        m_pcSwatch->setToolTip(QStringLiteral("选取颜色\nChoose a colour"));
        addPickButton();
        showSwatch();
        connect(m_pcEdit, &QLineEdit::textChanged, this, [this] {
            showSwatch();
            emit changed();
        });
        connect(m_pcSwatch, &QToolButton::clicked, this, [this] {
            const QColor cColour = QColorDialog::getColor(QColor(value()), this);
            if (cColour.isValid())
                m_pcEdit->setText(cColour.name());
        });
    }
    QString value() const override { return m_pcEdit->text().trimmed(); }
    void setValue(const QString &strValue) override { m_pcEdit->setText(strValue); }
    /// The mean of the pixels.
    void pick(const QImage &cPicture, const QRect &cRect) override
    {
        std::array<qint64, 3> anSum{};
        for (int nY = cRect.top(); nY <= cRect.bottom(); ++nY)
            for (int nX = cRect.left(); nX <= cRect.right(); ++nX) {
                const QRgb nPixel = cPicture.pixel(nX, nY);
                anSum[0] += qRed(nPixel);
                anSum[1] += qGreen(nPixel);
                anSum[2] += qBlue(nPixel);
            }
        const qint64 nPixels = qint64(cRect.width()) * cRect.height();
        const auto fnMean = [&](qint64 nSum) { return static_cast<int>((nSum + nPixels / 2) / nPixels); };
        m_pcEdit->setText(QColor(fnMean(anSum[0]), fnMean(anSum[1]), fnMean(anSum[2])).name());
    }

private:
    void showSwatch()
    {
        QPixmap cPixmap(m_pcSwatch->iconSize());
        const QString strColour = m_pcEdit->text().trimmed();
        cPixmap.fill(QColor::isValidColor(strColour) ? QColor(strColour) : QColor(Qt::transparent));
        m_pcSwatch->setIcon(cPixmap);
    }

    QLineEdit *m_pcEdit;
    QToolButton *m_pcSwatch;
};

/// Numbers with commas between them, each in a box with a letter before it.
class ListEditor : public Editor
{
public:
    QString value() const override
    {
        QStringList lstText;
        for (const QSpinBox *pcBox : m_lstBox)
            lstText << QString::number(pcBox->value());
        return lstText.join(',');
    }
    void setValue(const QString &strValue) override
    {
        const QStringList lstText = strValue.split(',');
        std::vector<int> lstNumber;
        for (const QString &strText : lstText) {
            bool bNumber = false;
            lstNumber.push_back(strText.toInt(&bNumber));
            if (!bNumber)
                return;
        }
        if (lstNumber.size() == m_lstBox.size())
            setNumbers(lstNumber);
    }

protected:
    using Editor::Editor;

    void addBox(const QString &strPrefix, int nMax, const char *szSuffix)
    {
        auto *pcBox = add(new QSpinBox, szSuffix, 1);
        pcBox->setPrefix(strPrefix);
        pcBox->setMaximum(nMax);
        m_lstBox.push_back(pcBox);
        connect(pcBox, qOverload<int>(&QSpinBox::valueChanged), this, [this] {
            if (!m_bSetting)
                emit changed();
        });
    }
    void setNumbers(const std::vector<int> &lstNumber)
    {
        m_bSetting = true;
        for (size_t nBox = 0; nBox < m_lstBox.size(); ++nBox)
            m_lstBox[nBox]->setValue(lstNumber[nBox]);
        m_bSetting = false;
        emit changed();
    }
    int number(size_t nBox) const { return m_lstBox[nBox]->value(); }

    std::vector<QSpinBox *> m_lstBox;

private:
    bool m_bSetting = false; ///< several boxes change at once
};

class RegionEditor : public ListEditor
{
public:
    RegionEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : ListEditor(cSetting, pcParent)
    {
        addBox(QStringLiteral("X "), MAX_SIDE, "");
        addBox(QStringLiteral("Y "), MAX_SIDE, "Y");
        addBox(QStringLiteral("宽 W "), MAX_SIDE, "Width");
        addBox(QStringLiteral("高 H "), MAX_SIDE, "Height");
        // A region without pixels is written as none: the whole picture.
        for (size_t nBox : {size_t(2), size_t(3)})
            m_lstBox[nBox]->setSpecialValueText(QStringLiteral("全部 all"));
        addPickButton();
        RegionEditor::setValue(QString::fromUtf8(cSetting.m_szInitial));
    }
    QString value() const override { return marked().isEmpty() ? QString() : ListEditor::value(); }
    void setValue(const QString &strValue) override
    {
        if (strValue.isEmpty())
            setNumbers({0, 0, 0, 0});
        else
            ListEditor::setValue(strValue);
    }
    void pick(const QImage &, const QRect &cRect) override
    {
        setNumbers({cRect.x(), cRect.y(), cRect.width(), cRect.height()});
    }
    QRect marked() const override { return {number(0), number(1), number(2), number(3)}; }
};

/// Lowest and highest hue (0 to 179, the colour circle), saturation and value.
class ColourRangeEditor : public ListEditor
{
public:
    ColourRangeEditor(const Plugin::Setting &cSetting, QWidget *pcParent) : ListEditor(cSetting, pcParent)
    {
        addBox(QStringLiteral("H "), MAX_HUE, "");
        addBox(QStringLiteral("S "), 255, "LowS");
        addBox(QStringLiteral("V "), 255, "LowV");
        add(new QLabel(QStringLiteral("–")), "To");
        addBox(QStringLiteral("H "), MAX_HUE, "HighH");
        addBox(QStringLiteral("S "), 255, "HighS");
        addBox(QStringLiteral("V "), 255, "HighV");
        addPickButton();
        setNumbers({0, 0, 0, MAX_HUE, 255, 255});
        ListEditor::setValue(QString::fromUtf8(cSetting.m_szInitial));
    }
    /// The range that holds all the pixels, and a little more.
    void pick(const QImage &cPicture, const QRect &cRect) override
    {
        constexpr int HUE_MARGIN = 5;
        constexpr int MARGIN = 20;
        std::array<bool, MAX_HUE + 1> abHue{};
        int nLowS = 255;
        int nLowV = 255;
        int nHighS = 0;
        int nHighV = 0;
        for (int nY = cRect.top(); nY <= cRect.bottom(); ++nY)
            for (int nX = cRect.left(); nX <= cRect.right(); ++nX) {
                const QColor cColour(cPicture.pixel(nX, nY));
                if (cColour.hsvHue() >= 0) // greys have none
                    abHue[static_cast<size_t>(cColour.hsvHue() / 2)] = true;
                nLowS = std::min(nLowS, cColour.hsvSaturation());
                nHighS = std::max(nHighS, cColour.hsvSaturation());
                nLowV = std::min(nLowV, cColour.value());
                nHighV = std::max(nHighV, cColour.value());
            }
        auto [nLowH, nHighH] = shortestArc(abHue);
        if (nHighH - nLowH + 2 * HUE_MARGIN >= MAX_HUE) {
            nLowH = 0;
            nHighH = MAX_HUE;
        } else {
            nLowH = (nLowH - HUE_MARGIN + MAX_HUE + 1) % (MAX_HUE + 1);
            nHighH = (nHighH + HUE_MARGIN) % (MAX_HUE + 1);
        }
        setNumbers({nLowH, std::max(0, nLowS - MARGIN), std::max(0, nLowV - MARGIN), nHighH,
                    std::min(255, nHighS + MARGIN), std::min(255, nHighV + MARGIN)});
    }

private:
    static constexpr int MAX_HUE = 179;

    /// The shortest stretch of the colour circle that holds all the hues; its end may lie beyond the
    /// circle's. The whole circle when there are none.
    static std::pair<int, int> shortestArc(const std::array<bool, MAX_HUE + 1> &abHue)
    {
        constexpr int CIRCLE = MAX_HUE + 1;
        std::vector<int> lstHue;
        for (int nHue = 0; nHue < CIRCLE; ++nHue)
            if (abHue[static_cast<size_t>(nHue)])
                lstHue.push_back(nHue);
        if (lstHue.empty())
            return {0, MAX_HUE};
        // The arc begins behind the widest gap.
        std::pair<int, int> cArc{lstHue.front(), lstHue.back()};
        for (size_t nNext = 1; nNext < lstHue.size(); ++nNext)
            if (lstHue[nNext - 1] + CIRCLE - lstHue[nNext] < cArc.second - cArc.first)
                cArc = {lstHue[nNext], lstHue[nNext - 1] + CIRCLE};
        return cArc;
    }
};
} // namespace

QString Plugin::chinese(const Caption &cCaption)
{
    return QString::fromUtf8(cCaption.m_szChinese);
}

QString Plugin::english(const Caption &cCaption)
{
    return QString::fromUtf8(cCaption.m_szEnglish);
}

QString Plugin::bothLines(const Caption &cCaption)
{
    return (chinese(cCaption) + '\n' + english(cCaption)).trimmed();
}

QString Plugin::bothBeside(const Caption &cCaption)
{
    // Units are often the same in both.
    const bool bSame = chinese(cCaption) == english(cCaption);
    return bSame ? chinese(cCaption) : (chinese(cCaption) + ' ' + english(cCaption)).trimmed();
}

Editor::Editor(const Setting &cSetting, QWidget *pcParent) : QWidget(pcParent), m_cSetting(cSetting)
{
    auto *pcLayout = new QHBoxLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
}

Editor *Editor::make(const Setting &cSetting, QWidget *pcParent)
{
    switch (cSetting.m_eKind) {
    case SettingKind::Integer:
        return new IntegerEditor(cSetting, pcParent);
    case SettingKind::Real:
        return new RealEditor(cSetting, pcParent);
    case SettingKind::Choice:
        return new ChoiceEditor(cSetting, pcParent);
    case SettingKind::Flag:
        return new FlagEditor(cSetting, pcParent);
    case SettingKind::Command:
        return new CommandEditor(cSetting, pcParent);
    case SettingKind::Colour:
        return new ColourEditor(cSetting, pcParent);
    case SettingKind::ColourRange:
        return new ColourRangeEditor(cSetting, pcParent);
    case SettingKind::Region:
        return new RegionEditor(cSetting, pcParent);
    case SettingKind::Text:
    case SettingKind::File:
    case SettingKind::Directory:
    case SettingKind::Input:
    case SettingKind::Output:
        break;
    }
    return new TextEditor(cSetting, pcParent);
}

QString Editor::name(const char *szSuffix) const
{
    return QString::fromUtf8(m_cSetting.m_szTag) + QString::fromUtf8(szSuffix);
}

void Editor::addPickButton()
{
    m_pcPick = add(new QToolButton, "Pick");
    m_pcPick->setText(QStringLiteral("选取 Pick"));
    m_pcPick->setToolTip(QStringLiteral("在右边的图像中拖动选取\nDrag in the picture at the right"));
    m_pcPick->setCheckable(true);
}

void Editor::place(QWidget *pcWidget, const char *szSuffix, int nStretch)
{
    pcWidget->setObjectName(name(szSuffix));
    layout()->addWidget(pcWidget);
    static_cast<QHBoxLayout *>(layout())->setStretchFactor(pcWidget, nStretch);
    // Tab passes over what stands before a proxy.
    if (layout()->count() == 1)
        setFocusProxy(pcWidget);
}
