#ifndef PLUGIN_SETTINGSWINDOW_H
#define PLUGIN_SETTINGSWINDOW_H

#include <functional>
#include <memory>
#include <vector>

#include <QByteArray>
#include <QDialog>
#include <QTimer>

#include "sdk/description.h"
#include "sdk/window/preview.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace Plugin
{
class Editor;
class PictureView;

/// The configuration window of a plug-in, made from its table of settings. At the left stand inputs,
/// settings and outputs, at the right what they lead to on the pictures that the store holds now.
///
/// The store is only read until the window is accepted; then the outputs are made in it and named.
/// A widget is named by the tag that it sets ("Level", "Name"), with a suffix where one setting has
/// several; besides these there are btnOK, btnCancel, cmbShown, lblResult and view.
class SettingsWindow : public QDialog
{
    Q_OBJECT

public:
    /// pcStore is null for a data source, which has no preview.
    SettingsWindow(const PluginDescription &cPlugin, const QString &strConfig, ArithmParamMgr *pcStore);
    ~SettingsWindow() override;

    /// The configuration that was accepted.
    QString config() const { return m_strConfig; }

private:
    /// One line of the table with its widgets; those that it does not need are null.
    struct Row {
        const Setting *m_pcSetting;
        QLabel *m_pcLabel = nullptr;
        QWidget *m_pcField = nullptr; ///< what the label stands before
        Editor *m_pcEditor = nullptr;
        QComboBox *m_pcInput = nullptr; ///< its items hold a Kind and an ID
        QLineEdit *m_pcName = nullptr;
        QLineEdit *m_pcDescribe = nullptr;
        Kind m_eKind = Kind::DIB; ///< of a parameter in the configuration that was given
        int m_nID = -1;           ///< of an output; -1 when none is reserved yet
    };
    using Rows = std::vector<Row>;

    QString given(const QString &strTag) const;
    Kind givenKind(const Setting &cSetting) const;

    QWidget *makeForm();
    QWidget *makePreviewSide();
    void addRow(QFormLayout *pcForm, Row &cRow, QWidget *pcField);
    void makeInput(QFormLayout *pcForm, Row &cRow);
    void makeOutput(QFormLayout *pcForm, Row &cRow);
    void makeEditor(QFormLayout *pcForm, Row &cRow);
    void fillShown();

    bool counts(const Row &cRow) const;
    Kind kindOf(const Row &cRow) const;
    int inputID(const Row &cRow) const;
    const Row *firstPictureInput() const;
    QString problemOf(const Row &cRow) const;
    QString configText(const std::function<int(const Row &)> &fnOutputID) const;
    int reserve(const Row &cRow);

    void settingChanged();
    void inputChanged();
    void startPicking(Editor *pcEditor, bool bOn);
    void takePick(const QRect &cRect);
    void askPreview();
    void showResult(const Preview::Result &cResult);
    void showState(const QString &strText, bool bError);
    void showHelp(QWidget *pcFocused);
    void pressOK();

    const PluginDescription &m_cPlugin;
    ArithmParamMgr *const m_pcStore;
    QString m_strConfig;
    QByteArray m_achGiven; ///< the configuration at the start
    Rows m_lstRow;         ///< in the order of the table

    QLabel *m_pcHelp = nullptr;
    QComboBox *m_pcShown = nullptr; ///< its items hold the row of a picture
    PictureView *m_pcView = nullptr;
    QLabel *m_pcResult = nullptr;
    Editor *m_pcPicking = nullptr;                    ///< whose value is picked in the view
    std::shared_ptr<const ArithmParamMgr> m_pcInputs; ///< copies of the chosen inputs; null when outdated
    QImage m_cInputPicture;                           ///< the first picture input, in which is picked
    Preview m_cPreview;
    QTimer m_cPatience; ///< until a preview that takes long is called so
};
} // namespace Plugin

#endif
