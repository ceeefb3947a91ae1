#include "operatorwindow.h"

#include <algorithm>
#include <cmath>

#include <QCloseEvent>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>

#include "OculinexQTStandAloneInQt.h"
#include "sdk/window/numberbox.h"
#include "sdk/window/pictureview.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr int LOOK_INTERVAL = 100; // ms
constexpr int LINES = 32;          // of text that fit below each other, without the settings
constexpr int SIDE_PERCENT = 27;   // of the width, for the column beside the picture

/// Shows the largest integer of all as "no limit".
class PickBox : public QDoubleSpinBox
{
public:
    using QDoubleSpinBox::QDoubleSpinBox;

    QString textFromValue(double dValue) const override
    {
        return dValue == OperatorPick::NO_LIMIT ? pickText(dValue) : QDoubleSpinBox::textFromValue(dValue);
    }
    double valueFromText(const QString &strText) const override
    {
        return isNoLimit(strText) ? OperatorPick::NO_LIMIT : QDoubleSpinBox::valueFromText(strText);
    }
    QValidator::State validate(QString &strText, int &nPos) const override
    {
        return isNoLimit(strText) ? QValidator::Acceptable : QDoubleSpinBox::validate(strText, nPos);
    }

private:
    static bool isNoLimit(const QString &strText) { return strText == pickText(OperatorPick::NO_LIMIT); }
};

bool anyTaskRuns()
{
    bool bRunning = false;
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum() && !bRunning; ++nTask)
        IsTaskRunning(bRunning, nTask);
    return bRunning;
}

/// A "stop:" ends the task, so that one in the figures of a start is the end of it.
bool wasStoppedByStep(const TaskStatus &cStatus)
{
    return std::any_of(cStatus.m_lstStep.begin(), cStatus.m_lstStep.end(), [](const StepStatus &cStep) {
        return cStep.m_strLastResult.contains(QLatin1String("<CMD>stop:"), Qt::CaseInsensitive);
    });
}
} // namespace

OperatorWindow::OperatorWindow(const OperatorSetup &cSetup, QWidget *pcParent)
    : QWidget(pcParent, Qt::Window),
      m_cSetup(cSetup),
      m_pcPicture(new Plugin::PictureView(this)),
      m_pcVerdict(new QLabel(this)),
      m_pcWhy(new QLabel(this)),
      m_pcStart(new QPushButton(tr("Start"), this)),
      m_pcStop(new QPushButton(tr("Stop"), this)),
      m_pcSide(new QWidget(this))
{
    setWindowTitle(tr("Operator view"));
    m_pcPicture->setObjectName(QStringLiteral("picture"));
    m_pcVerdict->setObjectName(QStringLiteral("lblVerdict"));
    m_pcVerdict->setAlignment(Qt::AlignCenter);
    m_pcVerdict->setAutoFillBackground(true);
    m_pcWhy->setObjectName(QStringLiteral("lblWhy"));
    m_pcWhy->setTextFormat(Qt::PlainText);
    m_pcWhy->setWordWrap(true);
    m_pcWhy->setAlignment(Qt::AlignCenter);
    m_pcStart->setObjectName(QStringLiteral("btnStart"));
    m_pcStop->setObjectName(QStringLiteral("btnStop"));

    auto *const pcSide = new QVBoxLayout;
    pcSide->addWidget(m_pcVerdict);
    pcSide->addWidget(m_pcWhy);

    auto *const pcCounterBox = new QWidget(this);
    pcCounterBox->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto *const pcCounters = new QFormLayout(pcCounterBox);
    pcCounters->setContentsMargins(0, 0, 0, 0);
    const auto fnCounter = [&](const QString &strName, const QString &strCaption) {
        auto *const pcValue = new QLabel(QStringLiteral("0"), this);
        pcValue->setObjectName(strName);
        pcValue->setAlignment(Qt::AlignRight);
        pcCounters->addRow(strCaption, pcValue);
        return pcValue;
    };
    m_pcRuns = fnCounter(QStringLiteral("lblRuns"), tr("Runs"));
    m_pcGood = fnCounter(QStringLiteral("lblGood"), tr("Good"));
    m_pcBad = fnCounter(QStringLiteral("lblBad"), tr("Bad"));
    m_pcPictures = fnCounter(QStringLiteral("lblPictures"), tr("Pictures"));
    m_pcFailures = fnCounter(QStringLiteral("lblFailures"), tr("Failures"));
    pcSide->addWidget(pcCounterBox);

    // Many settings, or a small screen, leave the rest its place.
    auto *const pcScroll = new QScrollArea(this);
    pcScroll->setFrameShape(QFrame::NoFrame);
    pcScroll->setWidgetResizable(true);
    pcScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    pcScroll->setFocusPolicy(Qt::NoFocus);
    auto *const pcFieldBox = new QWidget;
    auto *const pcFields = new QFormLayout(pcFieldBox);
    pcFields->setContentsMargins(0, 0, 0, 0);
    pcFields->setRowWrapPolicy(QFormLayout::WrapLongRows);
    for (const OperatorSetup::Step &cStep : m_cSetup.m_lstStep) {
        for (const OperatorPick &cPick : cStep.m_lstPick) {
            auto *const pcBox = new PickBox(pcFieldBox);
            pcBox->setObjectName(cPick.m_strTag);
            pcBox->setSingleStep(cPick.m_bOdd ? 2 : std::pow(10, -cPick.m_nDecimals));
            pcBox->setKeyboardTracking(false);
            pcBox->setToolTip(tr("%1 to %2; can be changed while the task stands still")
                                  .arg(pickText(cPick.m_dMin), pickText(cPick.m_dMax)));
            auto *const pcName = new QLabel(cPick.m_strName);
            pcName->setTextFormat(Qt::PlainText);
            pcFields->addRow(pcName, pcBox);
            const Field cField{cStep.m_nTask, cStep.m_nStep, cPick, pcBox};
            m_lstField.append(cField);
            connect(pcBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                    [this, cField](double dValue) { applyField(cField, dValue); });
        }
    }
    pcScroll->setWidget(pcFieldBox);
    pcSide->addWidget(pcScroll, 1);

    auto *const pcButtons = new QHBoxLayout;
    pcButtons->addWidget(m_pcStart);
    pcButtons->addWidget(m_pcStop);
    pcSide->addLayout(pcButtons);
    auto *const pcLeave = new QPushButton(tr("Leave (Esc)"), this);
    pcLeave->setObjectName(QStringLiteral("btnLeave"));
    pcSide->addWidget(pcLeave);

    m_pcSide->setLayout(pcSide);
    auto *const pcLayout = new QHBoxLayout(this);
    pcLayout->addWidget(m_pcPicture, 1);
    pcLayout->addWidget(m_pcSide);

    connect(m_pcStart, &QPushButton::clicked, this, [this] {
        judge(Verdict::None, QString());
        emit startRequested();
    });
    connect(m_pcStop, &QPushButton::clicked, this, &OperatorWindow::stopRequested);
    connect(pcLeave, &QPushButton::clicked, this, &QWidget::close);
    connect(&m_cTimer, &QTimer::timeout, this, &OperatorWindow::look);
    m_cTimer.start(LOOK_INTERVAL);
    judge(Verdict::None, QString());
    look();
}

void OperatorWindow::printed(const QString &strText)
{
    const auto fnBegins = [&](const QString &strPrefix) {
        return !strPrefix.isEmpty() && strText.startsWith(strPrefix, Qt::CaseInsensitive);
    };
    const bool bBad = fnBegins(m_cSetup.m_strBad);
    if (!bBad && !fnBegins(m_cSetup.m_strGood))
        return;
    ++(bBad ? m_nBad : m_nGood);
    judge(bBad ? Verdict::Bad : Verdict::Good, strText);
}

void OperatorWindow::setBusy(bool bBusy)
{
    m_bBusy = bBusy;
    look();
}

void OperatorWindow::look()
{
    TaskStatus cStatus;
    getTaskStatus(m_cSetup.m_nTask, cStatus);
    const bool bRuns = anyTaskRuns();
    const bool bStoppedByStep = wasStoppedByStep(cStatus);
    const bool bIdle = cStatus.m_eState == TaskStatus::State::Idle;
    if (cStatus.m_nRuns < m_nRuns || (m_bEnded && !bIdle)) { // started anew
        m_nGood = m_nBad = 0;
        m_bEnded = false;
    }
    if (!m_cSetup.hasPrefixes() && cStatus.m_nRuns > 0 && cStatus.m_nRuns != m_nRuns)
        judge(Verdict::Good, QString());
    m_nRuns = cStatus.m_nRuns;
    if (bIdle && !m_bEnded && (cStatus.m_nFailures > 0 || bStoppedByStep)) {
        m_bEnded = true;
        judge(Verdict::Bad,
              cStatus.m_nFailures > 0 ? cStatus.m_strLastError : tr("A step has stopped the task."));
    }
    const qint64 nEnds = cStatus.m_nFailures + (bStoppedByStep ? 1 : 0);
    const qint64 nGood = m_cSetup.hasPrefixes() ? m_nGood : std::max<qint64>(0, m_nRuns - nEnds);
    m_pcRuns->setText(QString::number(m_nRuns));
    m_pcGood->setText(QString::number(nGood));
    m_pcBad->setText(QString::number(m_nBad + nEnds));
    m_pcPictures->setText(QString::number(cStatus.m_nPictures));
    m_pcFailures->setText(QString::number(cStatus.m_nFailures));
    m_pcStart->setEnabled(!bRuns && !m_bBusy);
    m_pcStop->setEnabled(bRuns);

    for (const Field &cField : m_lstField) {
        TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(cField.m_nTask);
        const bool bThere = pcTask && cField.m_nStep < pcTask->getTaskItem().size();
        cField.m_pcBox->setEnabled(bThere && !bRuns && !m_bBusy);
        if (!bThere || cField.m_pcBox->hasFocus())
            continue;
        showField(cField);
    }
}

/// As the flow has it, also what nobody could set here.
void OperatorWindow::showField(const Field &cField)
{
    TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(cField.m_nTask);
    const OperatorPick &cPick = cField.m_cPick;
    const double dValue = cPick.value(qAsConst(*pcTask).m_lstArithm[cField.m_nStep].m_strOptionStr);
    const QSignalBlocker cBlocker(cField.m_pcBox);
    cField.m_pcBox->setDecimals(
        Plugin::RealBox::decimalsFor({dValue}, cPick.m_nDecimals, OperatorPick::MAX_DECIMALS));
    cField.m_pcBox->setRange(std::min(cPick.m_dMin, dValue), std::max(cPick.m_dMax, dValue));
    cField.m_pcBox->setValue(dValue);
}

void OperatorWindow::judge(Verdict eVerdict, const QString &strWhy)
{
    m_eVerdict = eVerdict;
    const bool bGood = eVerdict == Verdict::Good;
    m_pcVerdict->setText(bGood ? tr("OK") : eVerdict == Verdict::Bad ? tr("NOK") : QStringLiteral("–"));
    QPalette cPalette = palette();
    if (eVerdict != Verdict::None) {
        cPalette.setColor(QPalette::Window, bGood ? QColor(0x1b, 0x7f, 0x3b) : QColor(0xb7, 0x1c, 0x1c));
        cPalette.setColor(QPalette::WindowText, Qt::white);
    } else {
        cPalette.setColor(QPalette::Window, palette().color(QPalette::Mid));
    }
    m_pcVerdict->setPalette(cPalette);
    m_pcWhy->setText(strWhy);
}

void OperatorWindow::applyField(const Field &cField, double dValue)
{
    TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(cField.m_nTask);
    if (!pcTask || m_bBusy || pcTask->IsRunning() || cField.m_nStep >= pcTask->getTaskItem().size())
        return;
    cField.m_cPick.setValue(pcTask->getTaskItem()[cField.m_nStep].m_strOptionStr, dValue);
    showField(cField); // brought into the range, perhaps
    emit edited(cField.m_nTask, tr("Set %1").arg(cField.m_cPick.m_strName));
}

void OperatorWindow::closeEvent(QCloseEvent *pcEvent)
{
    pcEvent->ignore();
    emit leaving();
}

void OperatorWindow::keyPressEvent(QKeyEvent *pcEvent)
{
    if (pcEvent->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(pcEvent);
}

void OperatorWindow::resizeEvent(QResizeEvent *)
{
    fit();
}

/// All is as large as the screen allows: it is read from a distance.
void OperatorWindow::fit()
{
    const int nLine = std::max(14, height() / (LINES + 2 * m_lstField.size()));
    QFont cFont = font();
    cFont.setPixelSize(nLine * 4 / 5);
    setFont(cFont);
    m_pcSide->setMinimumWidth(width() * SIDE_PERCENT / 100);
    m_pcSide->layout()->setSpacing(nLine / 2);
    m_pcWhy->setMinimumHeight(nLine * 2);
    for (QPushButton *const pcButton : {m_pcStart, m_pcStop})
        pcButton->setMinimumHeight(nLine * 3);
    cFont.setBold(true);
    cFont.setPixelSize(nLine * 4);
    m_pcVerdict->setFont(cFont);
    m_pcVerdict->setMinimumHeight(nLine * 7);
}
