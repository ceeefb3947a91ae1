#ifndef OPERATORSETUP_H
#define OPERATORSETUP_H

#include <limits>

#include <QJsonObject>
#include <QList>
#include <QString>

/// A number in a step's config string that the operator may change within a range.
struct OperatorPick {
    static constexpr int MAX_DECIMALS = 9;
    static constexpr double NO_LIMIT = std::numeric_limits<int>::max();

    QString m_strTag;
    QString m_strName; ///< for the operator
    double m_dMin = 0; ///< both ends belong to the range
    double m_dMax = 100;
    int m_nDecimals = 0;
    bool m_bOdd = false;   ///< only odd numbers
    double m_dInitial = 0; ///< counts while the tag is missing
    bool m_bSure = false;  ///< the step takes no number beyond the range; not kept

    QJsonObject toJson() const;
    static OperatorPick fromJson(const QJsonObject &cJson);

    /// Moves the ends of the range inwards to numbers that the decimals can show.
    void roundRange();
    bool holds(double dValue) const { return dValue >= m_dMin && dValue <= m_dMax; }
    double value(const QString &strConfig) const;
    /// Brings the value into the range; an even one becomes the next odd one where only such count.
    void setValue(QString &strConfig, double dValue) const;
};

/// A number for people, and back. The largest integer of all is "no limit", as in the windows of the
/// plug-ins.
QString pickText(double dNumber);
double pickNumber(const QString &strText, bool &bNumber);

/// What the operator sees, as the flow's author chose it.
///
/// The verdict is that of the last printed text that begins with one of the prefixes, if the author
/// named any; otherwise each run is good. A task that fails, or that a step has stopped, is bad in
/// either case.
struct OperatorSetup {
    /// The picks of one step.
    struct Step {
        int m_nTask;
        int m_nStep;
        QList<OperatorPick> m_lstPick;
    };

    int m_nTask = 0; ///< the one that is counted
    int m_nView = 0;
    QString m_strGood; ///< prefixes; empty: none
    QString m_strBad;
    QList<Step> m_lstStep;

    bool hasPrefixes() const { return !m_strGood.isEmpty() || !m_strBad.isEmpty(); }

    /// All but the picks, which belong to their steps.
    QJsonObject toJson() const;
    static OperatorSetup fromJson(const QJsonObject &cJson);
};

/// The numbers of a step that may be picked: what its plug-in tells of its settings, else what stands
/// in its config string, for whose range the author must answer.
QList<OperatorPick> pickableNumbers(const QString &strArithmID, const QString &strConfig);

#endif
