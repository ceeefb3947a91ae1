#ifndef TIDY_H
#define TIDY_H

#include <algorithm>

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QRawFont>
#include <QSplitterHandle>
#include <QTabBar>
#include <QTest>
#include <QTextDocumentFragment>
#include <QWidget>

/// What a person would call untidy in a window that is shown; empty when nothing is.
namespace Tidy
{
/// The texts of a widget that a person reads.
inline QString captions(const QWidget *pcWidget)
{
    QString strText = QTextDocumentFragment::fromHtml(pcWidget->property("text").toString()).toPlainText() +
                      pcWidget->property("title").toString();
    if (const auto *pcCombo = qobject_cast<const QComboBox *>(pcWidget))
        for (int nItem = 0; nItem < pcCombo->count(); ++nItem)
            strText += pcCombo->itemText(nItem);
    else if (const auto *pcTabs = qobject_cast<const QTabBar *>(pcWidget))
        for (int nTab = 0; nTab < pcTabs->count(); ++nTab)
            strText += pcTabs->tabText(nTab);
    else if (const auto *pcHeader = qobject_cast<const QHeaderView *>(pcWidget))
        for (int nSection = 0; nSection < pcHeader->count(); ++nSection)
            strText += pcHeader->model()->headerData(nSection, pcHeader->orientation()).toString();
    return strText;
}

inline bool hasGlyphs(const QFont &cFont, const QString &strText)
{
    const QRawFont cLatin = QRawFont::fromFont(cFont);
    const QRawFont cHan = QRawFont::fromFont(cFont, QFontDatabase::SimplifiedChinese);
    const QVector<uint> lstCharacter = strText.toUcs4();
    return std::all_of(lstCharacter.begin(), lstCharacter.end(), [&](uint nCharacter) {
        return QChar::isSpace(nCharacter) || cLatin.supportsCharacter(nCharacter) ||
               cHan.supportsCharacter(nCharacter);
    });
}

inline bool isCut(const QWidget *pcWidget)
{
    const auto *pcLabel = qobject_cast<const QLabel *>(pcWidget);
    if (pcLabel && pcLabel->wordWrap())
        return pcLabel->height() < pcLabel->heightForWidth(pcLabel->width());
    const bool bCaption = pcLabel || qobject_cast<const QAbstractButton *>(pcWidget) ||
                          qobject_cast<const QComboBox *>(pcWidget);
    return bCaption && (pcWidget->width() < pcWidget->sizeHint().width() ||
                        pcWidget->height() < pcWidget->minimumSizeHint().height());
}

inline QString name(const QWidget *pcWidget)
{
    return QString::fromLatin1(pcWidget->metaObject()->className()) + ' ' + pcWidget->objectName() + " \"" +
           captions(pcWidget) + '"';
}

/// Where Tab takes a person, from the window's first stop until one comes again; it is the last.
inline QList<QWidget *> walk(QWidget *pcWindow)
{
    if (QWidget *pcBefore = pcWindow->focusWidget())
        pcBefore->clearFocus();
    QList<QWidget *> lstStop;
    do {
        QTest::keyClick(lstStop.isEmpty() ? pcWindow : lstStop.last(), Qt::Key_Tab);
        if (!pcWindow->focusWidget())
            return lstStop;
        lstStop.append(pcWindow->focusWidget());
    } while (lstStop.count(lstStop.last()) == 1);
    return lstStop;
}

/// Where a widget stands in its window.
inline QRect place(const QWidget *pcWidget)
{
    return {pcWidget->mapTo(pcWidget->window(), QPoint()), pcWidget->size()};
}

/// What is wrong with the way that Tab goes: it reaches every stop once, downwards in each column and to
/// the right in each row.
inline QString tabFault(QWidget *pcWindow)
{
    QList<QWidget *> lstStop = walk(pcWindow);
    if (lstStop.size() > 1 && lstStop.first() != lstStop.last())
        return "Tab does not get on from " + name(lstStop.last());
    for (QWidget *pcWidget : pcWindow->findChildren<QWidget *>())
        if ((pcWidget->focusPolicy() & Qt::TabFocus) && !pcWidget->focusProxy() && pcWidget->isEnabled() &&
            pcWidget->window() == pcWindow && pcWidget->isVisibleTo(pcWindow) && !lstStop.contains(pcWidget))
            return "Tab does not reach " + name(pcWidget);
    for (int nStop = 1; nStop + 1 < lstStop.size(); ++nStop)
        for (int nBefore = 0; nBefore < nStop; ++nBefore) {
            const QRect cStop = place(lstStop[nStop]);
            const QRect cBefore = place(lstStop[nBefore]);
            const bool bColumn = cStop.left() <= cBefore.right() && cBefore.left() <= cStop.right();
            const bool bRow = cStop.top() <= cBefore.bottom() && cBefore.top() <= cStop.bottom();
            if ((bColumn && cStop.bottom() < cBefore.top()) || (bRow && cStop.right() < cBefore.left()))
                return "Tab reaches " + name(lstStop[nStop]) + " after " + name(lstStop[nBefore]);
        }
    return {};
}

inline QString fault(QWidget *pcWindow)
{
    QList<const QWidget *> lstShown;
    for (const QWidget *pcWidget : pcWindow->findChildren<QWidget *>()) {
        if (pcWidget->visibleRegion().isEmpty() || pcWidget->window() != pcWindow)
            continue;
        if (!hasGlyphs(pcWidget->font(), captions(pcWidget)))
            return "glyphs are missing: " + name(pcWidget);
        // What the style puts there itself, such as the arrows of a bar of tools.
        const bool bInner =
            pcWidget->objectName().startsWith("qt_") || qobject_cast<const QSplitterHandle *>(pcWidget);
        if (!bInner && isCut(pcWidget))
            return "cut off: " + name(pcWidget);
        if (!bInner && (pcWidget->focusPolicy() != Qt::NoFocus || qobject_cast<const QLabel *>(pcWidget)))
            lstShown.append(pcWidget);
    }
    if (lstShown.isEmpty())
        return "nothing is shown";
    const auto fnVisible = [](const QWidget *pcWidget) {
        return pcWidget->visibleRegion().translated(place(pcWidget).topLeft());
    };
    for (const QWidget *pcWidget : lstShown)
        for (const QWidget *pcOther : lstShown)
            if (pcOther != pcWidget && !pcOther->isAncestorOf(pcWidget) && !pcWidget->isAncestorOf(pcOther) &&
                fnVisible(pcWidget).intersects(fnVisible(pcOther)))
                return "overlap: " + name(pcWidget) + " and " + name(pcOther);
    // A main window's docks stand where a person puts them, and the operator's begins with its button.
    return qobject_cast<QDialog *>(pcWindow) ? tabFault(pcWindow) : QString();
}
} // namespace Tidy

#endif
