#include "sdk/window/settingswindow.h"

#include <algorithm>
#include <limits>

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include "sdk/window/editor.h"
#include "sdk/window/pictureview.h"
#include "sdk/window/storecopy.h"

using Plugin::Kind;
using Plugin::SettingsWindow;

// The side of the window that shows what the settings lead to, and in which values are picked.

QWidget *SettingsWindow::makePreviewSide()
{
    auto *pcSide = new QGroupBox(QStringLiteral("预览 Preview"));
    auto *pcLayout = new QVBoxLayout(pcSide);
    m_pcShown = new QComboBox;
    m_pcShown->setObjectName(QStringLiteral("cmbShown"));
    m_pcView = new PictureView;
    m_pcView->setObjectName(QStringLiteral("view"));
    m_pcView->setToolTip(QStringLiteral("滚轮缩放, 拖动平移, 双击适应窗口\n"
                                        "The wheel zooms, dragging moves, a double click fits in"));
    m_pcResult = new QLabel;
    m_pcResult->setObjectName(QStringLiteral("lblResult"));
    m_pcResult->setTextFormat(Qt::PlainText);
    m_pcResult->setWordWrap(true);
    m_pcResult->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_pcResult->setTextInteractionFlags(Qt::TextSelectableByMouse);
    constexpr int RESULT_WIDTH = 200;
    m_pcResult->setMinimumSize(RESULT_WIDTH, 3 * fontMetrics().lineSpacing());
    pcLayout->addWidget(m_pcShown);
    pcLayout->addWidget(m_pcView, 1);
    pcLayout->addWidget(m_pcResult);

    fillShown();
    constexpr int PATIENCE_MS = 300;
    m_cPatience.setSingleShot(true);
    m_cPatience.setInterval(PATIENCE_MS);
    connect(&m_cPatience, &QTimer::timeout, this,
            [this] { showState(QStringLiteral("计算中… Computing…"), false); });
    connect(m_pcShown, qOverload<int>(&QComboBox::currentIndexChanged), this, &SettingsWindow::askPreview);
    connect(&m_cPreview, &Preview::computed, this, &SettingsWindow::showResult);
    connect(m_pcView, &PictureView::picked, this, &SettingsWindow::takePick);
    return pcSide;
}

/// The pictures to look at: what the step writes, then what it reads.
void SettingsWindow::fillShown()
{
    for (const bool bOutput : {true, false})
        for (size_t nRow = 0; nRow < m_lstRow.size(); ++nRow) {
            const Setting &cSetting = *m_lstRow[nRow].m_pcSetting;
            if (cSetting.m_eKind == (bOutput ? SettingKind::Output : SettingKind::Input) &&
                isPicture(cSetting.m_eUsual))
                m_pcShown->addItem(bothBeside(cSetting.m_cCaption), static_cast<int>(nRow));
        }
    m_pcShown->setVisible(m_pcShown->count() > 1);
    m_pcView->setVisible(m_pcShown->count() > 0);
}

const SettingsWindow::Row *SettingsWindow::firstPictureInput() const
{
    const auto it = std::find_if(m_lstRow.begin(), m_lstRow.end(), [](const Row &cRow) {
        return cRow.m_pcInput && isPicture(cRow.m_pcSetting->m_eUsual);
    });
    return it == m_lstRow.end() ? nullptr : &*it;
}

void SettingsWindow::startPicking(Editor *pcEditor, bool bOn)
{
    if (bOn && m_pcPicking && m_pcPicking != pcEditor)
        m_pcPicking->pickButton()->setChecked(false);
    m_pcPicking = bOn ? pcEditor : nullptr;
    m_pcView->setPicking(bOn);
    if (bOn) {
        m_pcView->setPicture(m_cInputPicture);
        m_pcView->setMarked(pcEditor->marked());
    } else {
        askPreview();
    }
}

void SettingsWindow::takePick(const QRect &cRect)
{
    if (!m_pcPicking)
        return;
    m_pcPicking->pick(m_cInputPicture, cRect);
    m_pcPicking->pickButton()->setChecked(false);
}

void SettingsWindow::askPreview()
{
    if (!m_pcView)
        return;
    if (!m_pcInputs) {
        auto pcInputs = std::make_shared<ArithmParamMgr>();
        for (const Row &cRow : m_lstRow)
            if (cRow.m_pcInput && inputID(cRow) >= 0)
                copyParameter(*m_pcStore, *pcInputs, kindOf(cRow), inputID(cRow));
        m_pcInputs = pcInputs;
        const Row *const pcFirst = firstPictureInput();
        m_cInputPicture = pcFirst ? pictureOf(*m_pcInputs, kindOf(*pcFirst), inputID(*pcFirst)) : QImage();
        if (m_pcPicking)
            m_pcView->setPicture(m_cInputPicture);
    }
    for (const Row &cRow : m_lstRow)
        if (cRow.m_pcEditor && cRow.m_pcEditor->pickButton()) {
            cRow.m_pcEditor->pickButton()->setEnabled(!m_cInputPicture.isNull());
            if (cRow.m_pcSetting->m_eKind == SettingKind::Region)
                m_pcView->setMarked(cRow.m_pcEditor->marked());
        }
    for (const Row &cRow : m_lstRow)
        if (const QString strProblem = problemOf(cRow); !strProblem.isEmpty()) {
            m_cPreview.cancel();
            m_cPatience.stop();
            showState(strProblem, true);
            return;
        }

    // An output that is not reserved yet gets an ID that no input has.
    const auto fnID = [this](const Row &cRow) {
        return cRow.m_nID >= 0 ? cRow.m_nID
                               : std::numeric_limits<int>::max() - static_cast<int>(&cRow - m_lstRow.data());
    };
    Preview::Request cRequest;
    cRequest.m_fnRun = [fnExecute = m_cPlugin.m_fnExecute, strConfig = configText(fnID).toStdString()](
                           ArithmParamMgr &cStore) { return fnExecute(strConfig.c_str(), cStore); };
    cRequest.m_pcInputs = m_pcInputs;
    if (m_pcShown->currentIndex() >= 0) {
        const Row &cShown = m_lstRow[static_cast<size_t>(m_pcShown->currentData().toInt())];
        cRequest.m_cPicture = {kindOf(cShown), cShown.m_pcInput ? inputID(cShown) : fnID(cShown)};
    }
    for (const Row &cRow : m_lstRow)
        if (cRow.m_pcName && !isPicture(cRow.m_pcSetting->m_eUsual))
            cRequest.m_lstOverlay.push_back({kindOf(cRow), fnID(cRow)});
    m_cPreview.compute(std::move(cRequest));
    if (!m_cPatience.isActive())
        m_cPatience.start();
}

void SettingsWindow::showResult(const Preview::Result &cResult)
{
    if (!m_cPreview.isBusy())
        m_cPatience.stop();
    if (!m_pcPicking)
        m_pcView->setPicture(cResult.m_cPicture);
    const QString strTime = QStringLiteral("耗时 Time: %1 ms").arg(cResult.m_dMs, 0, 'f', 1);
    const bool bFailed = !cResult.m_strError.isEmpty();
    constexpr int LONGEST = 400;
    QString strText = bFailed ? cResult.m_strError : cResult.m_strText;
    if (strText.size() > LONGEST)
        strText = strText.left(LONGEST) + QStringLiteral("…");
    showState((strTime + '\n' + strText).trimmed(), bFailed);
}

void SettingsWindow::showState(const QString &strText, bool bError)
{
    m_pcResult->setText(strText);
    QPalette cPalette = palette();
    if (bError)
        cPalette.setColor(QPalette::WindowText, QColor(0xb0, 0x00, 0x20));
    m_pcResult->setPalette(cPalette);
}
