#ifndef BLOCKREADER_H
#define BLOCKREADER_H

#include <QString>
#include <QStringView>

/// Takes the blocks of one kind out of a text, one after the other, in time linear in the text.
///
/// It yields exactly what GlobalFunction::getAndRemoveBody yields when it is called again and again
/// on a copy of the text until it returns the empty text. There, what stands before a removed block
/// joins what stands behind it, so a marker can form across the join; that counts here too.
class BlockReader
{
public:
    /// Markers start with '<' and hold no other. The three texts must outlive the reader and what
    /// it returns.
    BlockReader(QStringView strText, QStringView strBegin, QStringView strEnd);

    /// The next body; empty when there is no further one.
    QStringView next();
    /// What is left of the text without the blocks that were taken out.
    QString rest() const { return m_strKept + m_strText.mid(m_nRest).toString(); }

private:
    int lengthBeforeJoin(QStringView strMarker) const;

    const QStringView m_strText;
    const QStringView m_strBegin;
    const QStringView m_strEnd;
    qsizetype m_nRest = 0; ///< where the part starts that has not been looked at
    QString m_strKept;     ///< what is left of the part before it
};

#endif
