#ifndef FIGURES_H
#define FIGURES_H

#include <QElapsedTimer>
#include <QIcon>
#include <QString>

/// Texts and pictures for figures of running tasks.

/// Milliseconds with three digits that count.
QString milliseconds(qint64 nNs);
/// A time that a person waits for: "0.8 s", "2 min 5 s".
QString duration(qint64 nNs);
QIcon dotIcon(const QColor &cColour);

/// Runs a second, from counts that are read now and then.
class Rate
{
public:
    /// Takes the present count; a lower one than before starts anew.
    void update(qint64 nCount);
    double perSecond() const { return m_fPerSecond; }

private:
    QElapsedTimer m_cSince;
    qint64 m_nCount = -1;
    double m_fPerSecond = 0;
};

#endif
