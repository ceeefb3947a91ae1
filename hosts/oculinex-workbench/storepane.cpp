#include "storepane.h"

#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "sdk/window/pictureview.h"
#include "sdk/window/storecopy.h"
#include "taskMgr/taskMgr.h"

namespace
{
constexpr QSize THUMBNAIL(72, 54);
/// A longer list shows its beginning.
constexpr int MAX_ROWS = 5000;
enum Column { Name, ID, What, Describe };
enum Role { KindRole = Qt::UserRole, IDRole };

using Kind = ArithmParamMgr::Kind;
using Row = QStringList;
using Rows = QList<Row>;

template <typename... Number>
Row row(Number... nNumber)
{
    return {QString::number(nNumber)...};
}
} // namespace

StorePane::StorePane(QWidget *pcParent)
    : QWidget(pcParent),
      m_pcSplitter(new QSplitter(this)),
      m_pcList(new QTreeWidget(m_pcSplitter)),
      m_pcTitle(new QLabel(this)),
      m_pcPicture(new Plugin::PictureView(this)),
      m_pcTable(new QTableWidget(this)),
      m_pcPixel(new QLabel(this))
{
    m_pcList->setObjectName(QStringLiteral("list"));
    m_pcList->setHeaderLabels({tr("Name"), tr("ID"), tr("Contents"), tr("Description")});
    m_pcList->setRootIsDecorated(false);
    m_pcList->setIconSize(THUMBNAIL);
    m_pcList->setUniformRowHeights(false);
    m_pcPicture->setMinimumSize(120, 90);
    m_pcPicture->setObjectName(QStringLiteral("picture"));
    m_pcTable->setObjectName(QStringLiteral("table"));
    m_pcTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_pcTable->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_pcTitle->setWordWrap(true);

    auto *const pcShown = new QWidget(m_pcSplitter);
    auto *const pcShownLayout = new QVBoxLayout(pcShown);
    pcShownLayout->setContentsMargins(0, 0, 0, 0);
    pcShownLayout->setSpacing(2);
    auto *const pcContents = new QSplitter(Qt::Horizontal, pcShown);
    pcContents->addWidget(m_pcTable);
    pcContents->addWidget(m_pcPicture);
    pcShownLayout->addWidget(m_pcTitle);
    pcShownLayout->addWidget(pcContents, 1);
    pcShownLayout->addWidget(m_pcPixel);

    m_pcSplitter->setChildrenCollapsible(false);
    m_pcSplitter->setSizes({3000, 2000}); // only their proportion counts
    auto *const pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    pcLayout->addWidget(m_pcSplitter);

    connect(m_pcList, &QTreeWidget::currentItemChanged, this, &StorePane::showChosen);
    connect(m_pcPicture, &Plugin::PictureView::hovered, this, [this](const QPoint &cPixel) {
        const QImage &cPicture = m_pcPicture->picture();
        m_pcPixel->clear();
        if (!cPicture.valid(cPixel))
            return;
        const QColor cColour = cPicture.pixelColor(cPixel);
        m_pcPixel->setText(QStringLiteral("%1, %2: %3 %4 %5")
                               .arg(cPixel.x())
                               .arg(cPixel.y())
                               .arg(cColour.red())
                               .arg(cColour.green())
                               .arg(cColour.blue()));
    });
    clear();
}

void StorePane::showStore(TaskInfo *pcTask)
{
    if (!pcTask || pcTask->IsRunning()) {
        clear();
        return;
    }
    m_pcStore.reset(ArithmParamMgr::newInstance());
    Plugin::copyAll(*pcTask->m_pcAPM, *m_pcStore);
    fillList();
}

void StorePane::clear()
{
    m_pcStore.reset();
    m_pcList->clear();
    showChosen();
}

void StorePane::resizeEvent(QResizeEvent *)
{
    m_pcSplitter->setOrientation(width() > height() ? Qt::Horizontal : Qt::Vertical);
}

void StorePane::fillList()
{
    const QTreeWidgetItem *const pcChosen = m_pcList->currentItem();
    const QVariant cKind = pcChosen ? pcChosen->data(0, KindRole) : QVariant();
    const QVariant cID = pcChosen ? pcChosen->data(0, IDRole) : QVariant();
    const QSignalBlocker cBlocker(m_pcList);
    m_pcList->clear();
    for (const ArithmParamMgr::Entry &cEntry : m_pcStore->snapshot()) {
        static const char *const KINDS[] = {QT_TR_NOOP("colour picture, %1"), QT_TR_NOOP("grey picture, %1"),
                                            QT_TR_NOOP("16-bit picture, %1"), QT_TR_N_NOOP("%n point(s)"),
                                            QT_TR_N_NOOP("%n line(s)"),       QT_TR_N_NOOP("%n polygon(s)"),
                                            QT_TR_N_NOOP("%n area(s)"),       QT_TR_N_NOOP("%n text(s)"),
                                            QT_TR_N_NOOP("%n integer(s)"),    QT_TR_N_NOOP("%n number(s)"),
                                            QT_TR_N_NOOP("%n truth value(s)")};
        QString strWhat = tr(KINDS[static_cast<size_t>(cEntry.m_eKind)], nullptr, cEntry.m_nCount);
        if (cEntry.m_eKind <= Kind::Gray16)
            strWhat = strWhat.arg(QStringLiteral("%1 × %2").arg(cEntry.m_nWidth).arg(cEntry.m_nHeight));
        auto *const pcItem = new QTreeWidgetItem(
            m_pcList, {cEntry.m_strName, QString::number(cEntry.m_nID), strWhat, cEntry.m_strDescribe});
        pcItem->setData(0, KindRole, static_cast<int>(cEntry.m_eKind));
        pcItem->setData(0, IDRole, cEntry.m_nID);
        const QImage cPicture = Plugin::pictureOf(*m_pcStore, cEntry.m_eKind, cEntry.m_nID);
        if (!cPicture.isNull())
            pcItem->setIcon(Name, QPixmap::fromImage(cPicture.scaled(THUMBNAIL, Qt::KeepAspectRatio,
                                                                     Qt::SmoothTransformation)));
        if (pcItem->data(0, KindRole) == cKind && pcItem->data(0, IDRole) == cID)
            m_pcList->setCurrentItem(pcItem);
    }
    for (int nColumn = Name; nColumn < Describe; ++nColumn)
        m_pcList->resizeColumnToContents(nColumn);
    if (!m_pcList->currentItem())
        m_pcList->setCurrentItem(m_pcList->topLevelItem(0));
    showChosen();
}

void StorePane::showChosen()
{
    const QTreeWidgetItem *const pcChosen = m_pcStore ? m_pcList->currentItem() : nullptr;
    m_pcTable->hide();
    m_pcPixel->clear();
    if (!pcChosen) {
        m_pcPicture->setPicture({});
        m_pcTitle->setText(tr("Run the flow to a step to see here what its store holds then."));
        return;
    }
    const Kind eKind = static_cast<Kind>(pcChosen->data(0, KindRole).toInt());
    const int nID = pcChosen->data(0, IDRole).toInt();
    m_pcTitle->setText(pcChosen->text(Name) + QStringLiteral(" (") + pcChosen->text(What) + ')');
    if (eKind <= Kind::Gray16) {
        m_eUnderKind = eKind;
        m_nUnderID = nID;
    } else {
        fillTable(eKind, nID);
    }
    QImage cPicture = Plugin::pictureOf(*m_pcStore, m_eUnderKind, m_nUnderID);
    if (cPicture.isNull()) // the one from before is gone
        cPicture = Plugin::pictureOf(
            *m_pcStore, Kind::DIB,
            m_pcStore->requestParamDIBMap()->isEmpty() ? -1 : m_pcStore->requestParamDIBMap()->firstKey());
    const bool bDrawn = eKind >= Kind::Points && eKind <= Kind::Areas;
    if (bDrawn)
        Plugin::drawList(cPicture, *m_pcStore, eKind, nID);
    m_pcPicture->setPicture(cPicture);
    m_pcPicture->setVisible(eKind <= Kind::Gray16 || (bDrawn && !cPicture.isNull()));
}

void StorePane::fillTable(Kind eKind, int nID)
{
    Row lstHeader{tr("Value")};
    Rows lstRow;
    const auto fnFill = [&](const auto &lstValue, const auto &fnRow) {
        for (int nIndex = 0; nIndex < lstValue.size() && nIndex < MAX_ROWS; ++nIndex)
            lstRow.append(fnRow(lstValue[nIndex]));
    };
    switch (eKind) {
    case Kind::Points:
        lstHeader = Row{QStringLiteral("x"), QStringLiteral("y")};
        fnFill(m_pcStore->snapshotPoints(nID), [](const ParamPoints::Point &c) { return row(c.x, c.y); });
        break;
    case Kind::Lines:
        lstHeader = Row{tr("from x"), tr("from y"), tr("to x"), tr("to y")};
        fnFill(m_pcStore->snapshotLines(nID),
               [](const ParamLines::Line &c) { return row(c.sx, c.sy, c.ex, c.ey); });
        break;
    case Kind::Polys:
        lstHeader = Row{tr("Corners")};
        fnFill(m_pcStore->snapshotPolys(nID), [](const ParamPolys::Poly &cPoly) {
            Row lstCorner;
            for (const ParamPolys::Point &c : cPoly.verts)
                lstCorner.append(QStringLiteral("%1,%2").arg(c.x).arg(c.y));
            return Row{lstCorner.join(' ')};
        });
        break;
    case Kind::Areas:
        lstHeader = Row{tr("Pixels"), tr("Left"), tr("Top"), tr("Width"), tr("Height")};
        fnFill(m_pcStore->snapshotAreas(nID), [](const ParamAreas::Area &c) {
            return row(c.size, c.bounds[2], c.bounds[0], c.bounds[3] - c.bounds[2] + 1,
                       c.bounds[1] - c.bounds[0] + 1);
        });
        break;
    case Kind::Strings:
        fnFill(m_pcStore->snapshotStrings(nID), [](const QString &strText) { return Row{strText}; });
        break;
    case Kind::Longs:
        fnFill(m_pcStore->getParamLongs(nID)->getLongs(), [](long nValue) { return row(nValue); });
        break;
    case Kind::Doubles:
        fnFill(m_pcStore->getParamDoubles(nID)->getDoubles(), [](double dValue) { return row(dValue); });
        break;
    case Kind::Bools:
        fnFill(m_pcStore->getParamBools(nID)->getBools(),
               [](bool bValue) { return Row{bValue ? tr("yes") : tr("no")}; });
        break;
    default:
        break;
    }
    m_pcTable->setColumnCount(lstHeader.size());
    m_pcTable->setRowCount(lstRow.size());
    m_pcTable->setHorizontalHeaderLabels(lstHeader);
    for (int nRow = 0; nRow < lstRow.size(); ++nRow)
        for (int nColumn = 0; nColumn < lstHeader.size(); ++nColumn)
            m_pcTable->setItem(nRow, nColumn, new QTableWidgetItem(lstRow[nRow][nColumn]));
    m_pcTable->resizeColumnsToContents();
    m_pcTable->show();
}
