#include "dlgoperator.h"

#include <algorithm>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>

#include "taskMgr/taskMgr.h"

namespace
{
enum Column { Setting, Name, Min, Max, Value, ColumnNum };
enum Role { PickRole = Qt::UserRole, TaskRole, StepRole, LimitsRole, ValueRole };

/// As the author left it: ticked, with a name and a range of his own.
OperatorPick pickOf(const QTreeWidgetItem &cItem)
{
    OperatorPick cPick = OperatorPick::fromJson(cItem.data(Setting, PickRole).toJsonObject());
    cPick.m_strName = cItem.text(Name);
    bool bNumber = false;
    cPick.m_dMin = pickNumber(cItem.text(Min), bNumber);
    cPick.m_dMax = pickNumber(cItem.text(Max), bNumber);
    cPick.roundRange();
    return cPick;
}

/// Why the author can't leave it so; empty if he can.
QString faultOf(const QTreeWidgetItem &cItem)
{
    bool bMin = false;
    bool bMax = false;
    const QString strTag = cItem.text(Setting);
    const bool bOrdered = pickNumber(cItem.text(Min), bMin) <= pickNumber(cItem.text(Max), bMax);
    if (!bMin || !bMax || !bOrdered || cItem.text(Name).trimmed().isEmpty())
        return DlgOperator::tr("%1 needs a name and a range of two numbers.").arg(strTag);
    const OperatorPick cPick = pickOf(cItem);
    const QVariantList lstLimit = cItem.data(Setting, LimitsRole).toList();
    if (!lstLimit.isEmpty() &&
        (cPick.m_dMin < lstLimit[0].toDouble() || cPick.m_dMax > lstLimit[1].toDouble()))
        return DlgOperator::tr("%1: the step takes numbers from %2 to %3 only.")
            .arg(strTag, pickText(lstLimit[0].toDouble()), pickText(lstLimit[1].toDouble()));
    if (!cPick.holds(cItem.data(Setting, ValueRole).toDouble()))
        return DlgOperator::tr("%1: the range has to hold the present number, %2.")
            .arg(strTag, cItem.text(Value));
    return {};
}
} // namespace

DlgOperator::DlgOperator(const OperatorSetup &cSetup, QWidget *pcParent)
    : QDialog(pcParent),
      m_pcTask(new QComboBox(this)),
      m_pcView(new QComboBox(this)),
      m_pcGood(new QLineEdit(cSetup.m_strGood, this)),
      m_pcBad(new QLineEdit(cSetup.m_strBad, this)),
      m_pcSteps(new QTreeWidget(this))
{
    setWindowTitle(tr("What the operator sees"));
    m_pcTask->setObjectName(QStringLiteral("cmbTask"));
    m_pcView->setObjectName(QStringLiteral("cmbView"));
    m_pcGood->setObjectName(QStringLiteral("edtGood"));
    m_pcBad->setObjectName(QStringLiteral("edtBad"));
    m_pcSteps->setObjectName(QStringLiteral("steps"));
    for (int nView = 0; nView < 3; ++nView)
        m_pcView->addItem(tr("View %1").arg(nView));
    m_pcView->setCurrentIndex(cSetup.m_nView);
    fillSteps(cSetup);
    m_pcTask->setCurrentIndex(std::min(cSetup.m_nTask, m_pcTask->count() - 1));

    auto *const pcLayout = new QVBoxLayout(this);
    auto *const pcForm = new QFormLayout;
    pcForm->addRow(tr("Task that is counted"), m_pcTask);
    pcForm->addRow(tr("View"), m_pcView);
    pcForm->addRow(tr("OK is a printed text that begins with"), m_pcGood);
    pcForm->addRow(tr("NOK is a printed text that begins with"), m_pcBad);
    pcLayout->addLayout(pcForm);
    auto *const pcRule = new QLabel(tr("While both are empty, each run is OK. A task that fails, or that a "
                                       "step has stopped, is NOK in any case."),
                                    this);
    pcRule->setWordWrap(true);
    pcLayout->addWidget(pcRule);
    pcLayout->addWidget(new QLabel(tr("Settings that the operator may change, with their range:"), this));
    pcLayout->addWidget(m_pcSteps, 1);
    auto *const pcButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    pcLayout->addWidget(pcButtons);
    connect(pcButtons, &QDialogButtonBox::accepted, this, &DlgOperator::check);
    connect(pcButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(760, 560);
}

void DlgOperator::fillSteps(const OperatorSetup &cSetup)
{
    m_pcSteps->setHeaderLabels({tr("Setting"), tr("Name"), tr("From"), tr("To"), tr("Now")});
    for (int nTask = 0; nTask < TaskMgr::getInstance()->getTaskNum(); ++nTask) {
        TaskInfo *const pcTask = TaskMgr::getInstance()->getTask(nTask);
        if (!pcTask)
            continue;
        m_pcTask->addItem(pcTask->getName(), nTask);
        auto *const pcTaskRow = new QTreeWidgetItem(m_pcSteps, {pcTask->getName()});
        pcTaskRow->setFirstColumnSpanned(true);
        const QList<TaskItem> &lstStep = pcTask->getTaskItem();
        for (int nStep = 0; nStep < lstStep.size(); ++nStep) {
            const TaskItem &cStep = lstStep[nStep];
            QList<OperatorPick> lstChosen;
            for (const OperatorSetup::Step &cPicked : cSetup.m_lstStep)
                if (cPicked.m_nTask == nTask && cPicked.m_nStep == nStep)
                    lstChosen = cPicked.m_lstPick;
            QTreeWidgetItem *pcStepRow = nullptr;
            for (const OperatorPick &cOffered : pickableNumbers(cStep.m_strArithmID, cStep.m_strOptionStr)) {
                if (!pcStepRow) {
                    const QString &strStep =
                        cStep.m_strDescribe.isEmpty() ? cStep.m_strArithmName : cStep.m_strDescribe;
                    pcStepRow = new QTreeWidgetItem(pcTaskRow,
                                                    {QStringLiteral("%1  %2").arg(nStep + 1).arg(strStep)});
                    pcStepRow->setFirstColumnSpanned(true);
                }
                const auto itChosen =
                    std::find_if(lstChosen.begin(), lstChosen.end(), [&](const OperatorPick &cPick) {
                        return cPick.m_strTag.compare(cOffered.m_strTag, Qt::CaseInsensitive) == 0;
                    });
                const bool bChosen = itChosen != lstChosen.end();
                OperatorPick cPick = bChosen ? *itChosen : cOffered;
                cPick.m_nDecimals = std::max(cPick.m_nDecimals, cOffered.m_nDecimals);
                const double dValue = cPick.value(cStep.m_strOptionStr);
                auto *const pcRow =
                    new QTreeWidgetItem(pcStepRow, {cPick.m_strTag, cPick.m_strName, pickText(cPick.m_dMin),
                                                    pickText(cPick.m_dMax), pickText(dValue)});
                pcRow->setData(Setting, PickRole, cPick.toJson());
                pcRow->setData(Setting, ValueRole, dValue);
                if (cOffered.m_bSure)
                    pcRow->setData(Setting, LimitsRole, QVariantList{cOffered.m_dMin, cOffered.m_dMax});
                pcRow->setData(Setting, TaskRole, nTask);
                pcRow->setData(Setting, StepRole, nStep);
                pcRow->setCheckState(Setting, bChosen ? Qt::Checked : Qt::Unchecked);
                pcRow->setFlags(pcRow->flags() | Qt::ItemIsEditable | Qt::ItemIsUserCheckable);
            }
        }
    }
    m_pcSteps->expandAll();
    m_pcSteps->setColumnWidth(Setting, fontMetrics().averageCharWidth() * 30);
    for (int nColumn = Name; nColumn < ColumnNum; ++nColumn) {
        m_pcSteps->resizeColumnToContents(nColumn);
        m_pcSteps->setColumnWidth(nColumn,
                                  m_pcSteps->columnWidth(nColumn) + 2 * fontMetrics().averageCharWidth());
    }
    // The tag and the value are only shown.
    m_pcSteps->setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(m_pcSteps, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *pcItem, int nColumn) {
        if (nColumn >= Name && nColumn <= Max && pcItem->data(Setting, PickRole).isValid())
            m_pcSteps->editItem(pcItem, nColumn);
    });
}

OperatorSetup DlgOperator::setup() const
{
    OperatorSetup cSetup;
    cSetup.m_nTask = m_pcTask->currentData().toInt();
    cSetup.m_nView = m_pcView->currentIndex();
    cSetup.m_strGood = m_pcGood->text().trimmed();
    cSetup.m_strBad = m_pcBad->text().trimmed();
    for (QTreeWidgetItemIterator iItem(m_pcSteps, QTreeWidgetItemIterator::Checked); *iItem; ++iItem) {
        const int nTask = (*iItem)->data(Setting, TaskRole).toInt();
        const int nStep = (*iItem)->data(Setting, StepRole).toInt();
        if (cSetup.m_lstStep.isEmpty() || cSetup.m_lstStep.last().m_nTask != nTask ||
            cSetup.m_lstStep.last().m_nStep != nStep)
            cSetup.m_lstStep.append({nTask, nStep, {}});
        cSetup.m_lstStep.last().m_lstPick.append(pickOf(**iItem));
    }
    return cSetup;
}

void DlgOperator::check()
{
    for (QTreeWidgetItemIterator iItem(m_pcSteps, QTreeWidgetItemIterator::Checked); *iItem; ++iItem) {
        const QString strFault = faultOf(**iItem);
        if (strFault.isEmpty())
            continue;
        m_pcSteps->setCurrentItem(*iItem);
        QMessageBox::warning(this, windowTitle(), strFault);
        return;
    }
    accept();
}
