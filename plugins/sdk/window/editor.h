#ifndef PLUGIN_EDITOR_H
#define PLUGIN_EDITOR_H

#include <QImage>
#include <QString>
#include <QToolButton>
#include <QWidget>

#include "sdk/table.h"

namespace Plugin
{
QString chinese(const Caption &cCaption);
QString english(const Caption &cCaption);
QString bothLines(const Caption &cCaption); ///< for help: the Chinese line above the English one
QString bothBeside(const Caption &cCaption);

/// The widgets for one setting, side by side. Its value is text as it stands in the config string.
/// The widget that takes the keys is named by the tag, the others by the tag and what they are.
class Editor : public QWidget
{
    Q_OBJECT

public:
    /// Shows the initial value.
    static Editor *make(const Setting &cSetting, QWidget *pcParent);

    virtual QString value() const = 0;
    /// A value that cannot be read is passed over.
    virtual void setValue(const QString &strValue) = 0;

    /// Switched on while the user picks the value in a picture; null for settings that are not picked.
    QToolButton *pickButton() const { return m_pcPick; }
    virtual void pick(const QImage & /*cPicture*/, const QRect & /*cRect*/) {}
    /// What of the picture the value tells; empty when nothing.
    virtual QRect marked() const { return {}; }

    const Setting &setting() const { return m_cSetting; }

Q_SIGNALS:
    void changed();

protected:
    Editor(const Setting &cSetting, QWidget *pcParent);

    QString name(const char *szSuffix = "") const;
    /// Adds a widget at the right; the first with no suffix takes the keys.
    template <typename Widget>
    Widget *add(Widget *pcWidget, const char *szSuffix = "", int nStretch = 0)
    {
        place(pcWidget, szSuffix, nStretch);
        return pcWidget;
    }
    void addPickButton();

    const Setting &m_cSetting;

private:
    void place(QWidget *pcWidget, const char *szSuffix, int nStretch);

    QToolButton *m_pcPick = nullptr;
};
} // namespace Plugin

#endif
