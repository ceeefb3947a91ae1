// An algorithm in plain functions, without the SDK: it measures how bright a grey picture is.

#include <numeric>

#include <QInputDialog>
#include <QString>

#include <arithmparammgr.h>

#define PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace
{
/// The number between <Tag> and </Tag>, -1 when there is none.
int number(const QString &strConfig, const QString &strTag)
{
    const QString strBegin = '<' + strTag + '>';
    const int nBegin = strConfig.indexOf(strBegin, 0, Qt::CaseInsensitive);
    const int nEnd = strConfig.indexOf("</" + strTag + '>', 0, Qt::CaseInsensitive);
    const int nBody = nBegin + strBegin.size();
    bool bNumber = false;
    const int nValue = nBegin < 0 ? 0 : strConfig.mid(nBody, nEnd - nBody).toInt(&bNumber);
    return bNumber && nEnd > nBody ? nValue : -1;
}

/// A text that the caller copies before it calls again. Several tasks may run the plug-in at the same
/// time, so each thread has a buffer of its own.
char *toCaller(const QString &strText)
{
    thread_local QByteArray s_achText;
    s_achText = strText.toUtf8();
    return s_achText.data();
}
} // namespace

/// Never changed: tasks files name the algorithm by it.
PLUGIN_EXPORT const char *getID()
{
    return "MY_Mean";
}

PLUGIN_EXPORT const char *getArithmClass()
{
    return "检测";
}

PLUGIN_EXPORT const char *getArithmName()
{
    return "平均亮度";
}

/// On the GUI thread. Returns the new configuration, the empty text when the user cancels.
PLUGIN_EXPORT char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcStore, bool)
{
    const QString strConfig = QString::fromUtf8(pchConfig);
    bool bAccepted = false;
    const int nInput =
        QInputDialog::getInt(nullptr, "平均亮度", "输入图像 (Gray8):", qMax(0, number(strConfig, "InputID")),
                             0, 999999, 1, &bAccepted);
    if (!bAccepted)
        return toCaller({});
    // The output keeps its ID when the step is edited again; -1 makes a fresh one.
    ParamDoubles *pcOutput = pcStore->getParamDoubles(number(strConfig, "OutputID"));
    pcOutput->setName("平均亮度");
    return toCaller(
        QString("<InputID>%1</InputID><OutputID>%2</OutputID>").arg(nInput).arg(pcOutput->getID()));
}

/// On the task's thread. Returns commands for the flow or nothing; any other text is an error.
PLUGIN_EXPORT char *execute(char *pchConfig, ArithmParamMgr *pcStore)
{
    const QString strConfig = QString::fromUtf8(pchConfig);
    const int nInput = number(strConfig, "InputID");
    const int nOutput = number(strConfig, "OutputID");
    if (nInput < 0 || nOutput < 0)
        return toCaller("InputID and OutputID need the number of a picture and of a list.");
    const ParamGray8 *pcInput = pcStore->getParamGray8(nInput); // the store's, as all parameters
    const unsigned char *puchPixels = pcInput->getGray8();
    if (!puchPixels)
        return toCaller(QString("Input picture %1 is empty.").arg(nInput));

    const qint64 nPixels = qint64(pcInput->getWidth()) * pcInput->getHeight();
    const qint64 nSum = std::accumulate(puchPixels, puchPixels + nPixels, qint64(0));
    const double dMean = double(nSum) / double(nPixels);
    ParamDoubles *pcOutput = pcStore->getParamDoubles(nOutput);
    pcOutput->setName("平均亮度");
    pcOutput->setDescribe("Mean brightness, 0 to 255");
    pcOutput->setDoubles({dMean});
    return toCaller(QString("<CMD>print:mean brightness %1</CMD>").arg(dMean, 0, 'f', 1));
}
