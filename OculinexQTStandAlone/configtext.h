#ifndef CONFIGTEXT_H
#define CONFIGTEXT_H

#include <QString>

#include "globalfunction.h"

/// Reads the values of a config string, text of <Tag>value</Tag> pairs, by their tags.
class ConfigText
{
public:
    explicit ConfigText(const char *pchUtf8) : m_strConfig(QString::fromUtf8(pchUtf8)) {}
    explicit ConfigText(const QString &strConfig) : m_strConfig(strConfig) {}

    /// The value, empty when the tag is missing.
    QString text(const char *szTag) const
    {
        const QString strTag = QLatin1String(szTag);
        return GlobalFunction::getBody(m_strConfig, QLatin1Char('<') + strTag + QLatin1Char('>'),
                                       QLatin1String("</") + strTag + QLatin1Char('>'));
    }

    /// The value as a decimal integer, 0 when it is none; *pbNumber tells.
    int number(const char *szTag, bool *pbNumber = nullptr) const { return text(szTag).toInt(pbNumber); }

private:
    QString m_strConfig;
};

#endif
