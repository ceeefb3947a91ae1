#ifndef CONFIGTEXT_H
#define CONFIGTEXT_H

#include <QString>
#include <QVarLengthArray>

#include "framedbody.h"

/// A value between its tags: how config strings are written.
inline QString tagged(const char *szTag, const QString &strValue)
{
    const QLatin1String strTag(szTag);
    return QLatin1Char('<') + strTag + QLatin1Char('>') + strValue + QLatin1String("</") + strTag +
           QLatin1Char('>');
}

/// Reads the values of a config string, text of <Tag>value</Tag> pairs, by their tags.
class ConfigText
{
public:
    explicit ConfigText(const char *pchUtf8) : m_strConfig(QString::fromUtf8(pchUtf8)) {}
    explicit ConfigText(const QString &strConfig) : m_strConfig(strConfig) {}

    /// The value, empty when the tag is missing.
    QString text(const char *szTag) const
    {
        QVarLengthArray<QChar, 64> chMarkers; // "<Tag></Tag>", on the stack: steps read tags in every run
        for (const char *szPart : {"<", szTag, "></", szTag, ">"})
            for (; *szPart; ++szPart)
                chMarkers.append(QLatin1Char(*szPart));
        const QStringView strMarkers(chMarkers.data(), chMarkers.size());
        const qsizetype nBegin = (strMarkers.size() - 1) / 2;
        return FramedBody::find(m_strConfig, strMarkers.left(nBegin), strMarkers.mid(nBegin))
            .m_strBody.toString();
    }

    /// The value as a decimal integer, 0 when it is none; *pbNumber tells.
    int number(const char *szTag, bool *pbNumber = nullptr) const { return text(szTag).toInt(pbNumber); }

private:
    QString m_strConfig;
};

#endif
