#ifndef PLUGIN_NUMBERBOX_H
#define PLUGIN_NUMBERBOX_H

#include <algorithm>
#include <initializer_list>
#include <limits>

#include <QDoubleSpinBox>
#include <QSpinBox>

namespace Plugin
{
/// Takes whole numbers, perhaps only odd ones. The largest number of all is shown as "no limit".
class IntegerBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit IntegerBox(QWidget *pcParent = nullptr) : QSpinBox(pcParent) {}

    void setOdd()
    {
        m_bOdd = true;
        setSingleStep(2);
    }
    /// Shown behind each number, but not behind "no limit".
    void setUnit(const QString &strUnit)
    {
        const auto fnShow = [this, strUnit] { setSuffix(value() == NO_LIMIT ? QString() : strUnit); };
        connect(this, qOverload<int>(&QSpinBox::valueChanged), this, fnShow);
        fnShow();
    }
    /// What setValue() is to be given for a number near nValue.
    int allowed(int nValue) const
    {
        if (!m_bOdd || nValue % 2 != 0)
            return nValue;
        return nValue < maximum() ? nValue + 1 : nValue - 1;
    }

protected:
    QString textFromValue(int nValue) const override
    {
        return nValue == NO_LIMIT ? noLimit() : QString::number(nValue);
    }
    int valueFromText(const QString &strText) const override
    {
        return strText.contains(noLimit()) ? NO_LIMIT : QSpinBox::valueFromText(strText);
    }
    QValidator::State validate(QString &strText, int &nPos) const override
    {
        if (strText.contains(noLimit()))
            return QValidator::Acceptable;
        const QValidator::State eState = QSpinBox::validate(strText, nPos);
        return eState == QValidator::Acceptable && m_bOdd && QSpinBox::valueFromText(strText) % 2 == 0
                   ? QValidator::Intermediate
                   : eState;
    }
    void fixup(QString &strText) const override
    {
        const int nValue = QSpinBox::valueFromText(strText);
        strText = prefix() + QString::number(allowed(qBound(minimum(), nValue, maximum()))) + suffix();
    }

private:
    static constexpr int NO_LIMIT = std::numeric_limits<int>::max();
    static QString noLimit() { return QStringLiteral("不限 no limit"); }

    bool m_bOdd = false;
};

/// Takes numbers with as many digits as the user wants, and shows no zeros behind them.
class RealBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit RealBox(QWidget *pcParent = nullptr) : QDoubleSpinBox(pcParent)
    {
        setDecimals(MIN_DECIMALS);
        setLocale(QLocale::c());
    }

    /// As few as show each of the numbers, within these limits.
    static int decimalsFor(std::initializer_list<double> lstValue, int nMin, int nMax)
    {
        const auto fnShown = [&](double dValue) {
            return QString::number(dValue, 'f', nMin).toDouble() == dValue;
        };
        while (nMin < nMax && !std::all_of(lstValue.begin(), lstValue.end(), fnShown))
            ++nMin;
        return nMin;
    }
    /// Takes at least so small numbers, too.
    void makeRoomFor(std::initializer_list<double> lstValue)
    {
        setDecimals(decimalsFor(lstValue, decimals(), MAX_DECIMALS));
    }

    QString textFromValue(double dValue) const override
    {
        const QString strText = QString::number(dValue, 'f', decimalsFor({dValue}, 0, decimals()));
        return strText == QLatin1String("-0") ? QStringLiteral("0") : strText;
    }

private:
    static constexpr int MIN_DECIMALS = 6;
    static constexpr int MAX_DECIMALS = 20;
};
} // namespace Plugin

#endif
