#ifndef DIALOGUSER_H
#define DIALOGUSER_H

#include <functional>
#include <list>
#include <utility>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

class ArithmParamMgr;

/// Someone who sits before the modal dialogs that a test is about to open: does one thing after the
/// other, each to the dialog or box that is on top by then. A dialog that is left when all is done is
/// closed, so that a test fails rather than hangs.
class DialogUser
{
public:
    using Act = std::function<void(QWidget &cTop)>;

    explicit DialogUser(std::list<Act> lstAct) : m_lstAct(std::move(lstAct))
    {
        s_pcPresent = this; // the one before has left
        wait();
    }
    /// The test fails unless everything was done and nothing had to be closed.
    ~DialogUser()
    {
        if (s_pcPresent == this)
            s_pcPresent = nullptr;
        if (!isContent())
            QTest::qFail("The user of the dialogs is not content.", __FILE__, __LINE__);
    }
    DialogUser(const DialogUser &) = delete;
    DialogUser &operator=(const DialogUser &) = delete;

    bool isContent() const { return m_lstAct.empty() && !m_bClosed; }

    static void click(QWidget &cTop, const char *szButton)
    {
        QTest::mouseClick(cTop.findChild<QAbstractButton *>(szButton), Qt::LeftButton);
    }
    static Act press(const char *szButton)
    {
        return [szButton](QWidget &cTop) { click(cTop, szButton); };
    }
    /// Reads a box, "title: text" and the number of its buttons, and answers it.
    static Act read(QString &strText, QMessageBox::StandardButton eAnswer = QMessageBox::Ok)
    {
        return [&strText, eAnswer](QWidget &cTop) {
            auto *pcBox = qobject_cast<QMessageBox *>(&cTop);
            strText += pcBox ? pcBox->windowTitle() + ": " + pcBox->text() + ' ' +
                                   QString::number(pcBox->buttons().size()) + '\n'
                             : "no box\n";
            pcBox ? pcBox->button(eAnswer)->click() : void();
        };
    }
    /// Sets widgets, "name=value name=value": line edits to the text, combo boxes to the index, buttons
    /// that can be checked to 1 or 0.
    static Act set(const QString &strValues)
    {
        return [strValues](QWidget &cTop) {
            for (const QString &strPair : strValues.split(' ', Qt::SkipEmptyParts)) {
                auto *pcWidget = cTop.findChild<QWidget *>(strPair.section('=', 0, 0));
                const QString strValue = strPair.section('=', 1);
                if (auto *pcEdit = qobject_cast<QLineEdit *>(pcWidget))
                    pcEdit->setText(strValue);
                else if (auto *pcBox = qobject_cast<QComboBox *>(pcWidget))
                    pcBox->setCurrentIndex(strValue.toInt());
                else if (qobject_cast<QAbstractButton *>(pcWidget)->isChecked() != (strValue == "1"))
                    qobject_cast<QAbstractButton *>(pcWidget)->click();
            }
        };
    }
    /// Reads what widgets show, "name name …": the texts of line edits, of the items that combo boxes and
    /// lists show as chosen, and of the tab in front; '|' after each.
    static Act look(QString &strShown, const char *szNames)
    {
        return [&strShown, szNames](QWidget &cTop) {
            for (const QString &strName : QString(szNames).split(' ')) {
                auto *pcWidget = cTop.findChild<QWidget *>(strName);
                if (auto *pcEdit = qobject_cast<QLineEdit *>(pcWidget))
                    strShown += pcEdit->text();
                else if (auto *pcBox = qobject_cast<QComboBox *>(pcWidget))
                    strShown += pcBox->currentText();
                else if (auto *pcTabs = qobject_cast<QTabWidget *>(pcWidget))
                    strShown += pcTabs->tabText(pcTabs->currentIndex());
                else
                    for (const auto *pcItem : qobject_cast<QListWidget *>(pcWidget)->selectedItems())
                        strShown += pcItem->text();
                strShown += '|';
            }
        };
    }
    /// Clicks a row of a table whose tab is shown for it.
    static Act choose(const QString &strTable, int nRow)
    {
        return [strTable, nRow](QWidget &cTop) {
            auto *pcTable = cTop.findChild<QTableWidget *>(strTable);
            cTop.findChild<QTabWidget *>()->setCurrentWidget(pcTable->parentWidget());
            QTest::mouseClick(pcTable->viewport(), Qt::LeftButton, Qt::NoModifier,
                              pcTable->visualItemRect(pcTable->item(nRow, 1)).center());
        };
    }
    /// Leaves a dialog by the button that is pressed when the user types Return, or by Escape.
    static Act type(Qt::Key eKey)
    {
        return [eKey](QWidget &cTop) { QTest::keyClick(&cTop, eKey); };
    }

private:
    /// A timer for each act, because acts open loops in which the next ones happen.
    void wait()
    {
        QTimer::singleShot(5, &m_cAlive, [this] {
            if (s_pcPresent != this)
                return;
            QWidget *pcTop = QApplication::activeModalWidget();
            if (!pcTop)
                return wait();
            if (m_lstAct.empty()) {
                m_bClosed = true;
                wait();
                pcTop->close();
                return;
            }
            const Act fnAct = m_lstAct.front();
            m_lstAct.pop_front();
            wait();
            fnAct(*pcTop);
        });
    }

    inline static DialogUser *s_pcPresent = nullptr;
    std::list<Act> m_lstAct;
    bool m_bClosed = false;
    QObject m_cAlive;
};

/// What the window of a built-in step makes of a config text in the hands of a user.
template <class Step>
QString configure(const QString &strConfig, ArithmParamMgr *pcAPM, std::list<DialogUser::Act> lstAct)
{
    const DialogUser cUser(std::move(lstAct));
    return QString::fromUtf8(Step::showConfigWindow(strConfig.toUtf8().data(), pcAPM, true));
}

/// A host's own dialog goes with its parent, also while a box or another dialog of it is open.
inline void goesMeanwhile(QDialog *pcDialog, const char *szButton)
{
    const QPointer<QWidget> pcParent = pcDialog->parentWidget();
    pcDialog->open();
    DialogUser cUser({DialogUser::press(szButton), [&](QWidget &) { delete pcParent; }});
    QTRY_VERIFY(!pcParent);
}

#endif
