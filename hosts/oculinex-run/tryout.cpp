#include "tryout.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QRegularExpression>
#include <QSet>

#include "arithmMgr/arithmmgr.h"
#include "globalfunction.h"
#include "picturewriter.h"
#include "registrylist.h"
#include "storecontents.h"
#include "texttable.h"

namespace
{
QString whatThereIs(const QList<KnownPart> &lstPart)
{
    QList<QStringList> lstRow;
    for (const KnownPart &cPart : lstPart)
        if (!cPart.m_bSource)
            lstRow += {cPart.m_strID, QFileInfo(cPart.m_strFile).fileName(),
                       cPart.m_strClass + '/' + cPart.m_strName};
    return table(lstRow, 3).chopped(1);
}

/// Takes the commands out of a result; what is left is the error text.
QStringList takeCommands(QString &strResult)
{
    QStringList lstCommand;
    for (;;) {
        const QString strCommand = GlobalFunction::getAndRemoveBody(strResult, "<CMD>", "</CMD>");
        if (strCommand.isEmpty())
            return lstCommand;
        lstCommand += strCommand;
    }
}

QList<QPair<ParamKind, int>> keys(const ArithmParamMgr &cStore)
{
    QList<QPair<ParamKind, int>> lstKey;
    for (const ArithmParamMgr::Entry &cEntry : cStore.snapshot())
        lstKey += {cEntry.m_eKind, cEntry.m_nID};
    return lstKey;
}

/// The same for all names of one file.
QString whole(const QString &strFile)
{
    const QFileInfo cInfo(strFile);
    const QString strFolder = QFileInfo(cInfo.path()).canonicalFilePath();
    return cInfo.exists() ? cInfo.canonicalFilePath() : strFolder + '/' + cInfo.fileName();
}

/// What a configuration holds that no setting of the table reads; empty for nothing.
QString strayParts(QString strConfig, const PluginTable &cTable)
{
    QSet<QString> setTag{"settings"}; // what the window writes where there is nothing to set
    for (const PluginSetting &cSetting : cTable.m_lstSetting) {
        setTag << cSetting.m_strTag.toLower() << cSetting.m_strTypeTag.toLower();
        if (cSetting.isOutput())
            setTag << cSetting.m_strPrefix.toLower() + "name" << cSetting.m_strPrefix.toLower() + "describe";
    }
    static const QRegularExpression s_cPair("<(\\w+)>(.*?)</\\1>",
                                            QRegularExpression::CaseInsensitiveOption |
                                                QRegularExpression::DotMatchesEverythingOption);
    QStringList lstStray;
    for (auto iPair = s_cPair.globalMatch(strConfig); iPair.hasNext();)
        if (const QString strTag = iPair.next().captured(1); !setTag.contains(strTag.toLower()))
            lstStray += '<' + strTag + '>';
    const QString strRest = strConfig.remove(s_cPair).simplified();
    if (!strRest.isEmpty())
        lstStray += '\'' + (strRest.size() > 60 ? strRest.left(60) + "…" : strRest) + '\'';
    return lstStray.join(", ");
}
} // namespace

QString Tryout::prepare()
{
    const QList<KnownPart> lstPart = knownParts();
    for (const TryOption &cOption : m_cOptions.m_lstTry) {
        const KnownPart *pcPart = findPart(lstPart, cOption.m_strAlgorithm);
        if (!pcPart)
            return QString("There is no algorithm '%1'. There are:\n%2")
                .arg(cOption.m_strAlgorithm, whatThereIs(lstPart));
        if (pcPart->m_bSource)
            return QString("'%1' is a data source, and --try runs algorithms.").arg(cOption.m_strAlgorithm);
        Step cStep;
        cStep.m_pcArithm = ArithmMgr::getInstance()->getArithm(pcPart->m_strID);
        cStep.m_strID = pcPart->m_strID;
        cStep.m_strConfig = cOption.m_strConfig;
        cStep.m_bKnown = isStoreAccessKnown(cStep.m_strID);
        for (const StoreAccess &cAccess : storeAccess(cStep.m_strID, cStep.m_strConfig))
            m_nLastID = std::max(m_nLastID, cAccess.m_nID);
        m_lstStep.push_back(cStep);
    }
    for (Step &cStep : m_lstStep)
        if (QString strError = prepare(cStep); !strError.isEmpty())
            return strError;
    const QString strReason = PictureWriter::whyUnwritable(m_cOptions.m_strOut);
    if (!strReason.isEmpty())
        return m_cOptions.m_strOut + ": " + strReason;
    choosePrefixes();
    return {};
}

void Tryout::choosePrefixes()
{
    QStringList lstPicture;
    QSet<QString> setName; // kept for the first picture of that name
    for (const QString &strFile : m_cOptions.m_lstPicture) {
        lstPicture += whole(strFile);
        setName += QFileInfo(strFile).completeBaseName();
    }
    const auto fnMayOverwrite = [&](const QString &strPrefix) {
        const QString strBegin = whole(QDir(m_cOptions.m_strOut).filePath(strPrefix + '-'));
        return std::any_of(lstPicture.cbegin(), lstPicture.cend(),
                           [&](const QString &strPicture) { return strPicture.startsWith(strBegin); });
    };
    for (const QString &strFile : m_cOptions.m_lstPicture) {
        const QString strName = QFileInfo(strFile).completeBaseName();
        QString strPrefix = strName;
        for (int nTry = 2; m_lstPrefix.contains(strPrefix) || (nTry > 2 && setName.contains(strPrefix)) ||
                           fnMayOverwrite(strPrefix);
             ++nTry)
            strPrefix = QString("%1_%2").arg(strName).arg(nTry);
        m_lstPrefix += strPrefix;
    }
}

QString Tryout::prepare(Step &cStep)
{
    const auto fnLoad = [this](const Key &cKey) {
        if (!m_lstWritten.contains(cKey) && !m_lstLoad.contains(cKey))
            m_lstLoad += cKey;
    };
    if (!cStep.m_bKnown) {
        m_bAnyWritten = true;
        for (const ParamKind eKind : {ParamKind::DIB, ParamKind::Gray8})
            fnLoad({eKind, 1});
        m_nLastID = std::max(m_nLastID, 1);
        return {};
    }
    const PluginTable &cTable = settingsTable(cStep.m_strID);
    if (const QString strStray = strayParts(cStep.m_strConfig, cTable);
        !cTable.isNull() && !strStray.isEmpty())
        fprintf(stderr, "oculinex-run: %s has no setting for %s in its --config.\n",
                qUtf8Printable(cStep.m_strID), qUtf8Printable(strStray));
    for (const PluginSetting &cSetting : cTable.m_lstSetting)
        if (!cSetting.m_lstKind.isEmpty() && isInForce(cSetting, cTable, cStep.m_strConfig))
            if (QString strError = fillIn(cSetting, cStep); !strError.isEmpty())
                return strError;

    // A configuration that is wrong is left for the algorithm to complain of.
    for (const StoreAccess &cAccess : storeAccess(cStep.m_strID, cStep.m_strConfig)) {
        const Key cKey(cAccess.m_eKind, cAccess.m_nID);
        if (cAccess.m_bWrite) {
            cStep.m_lstWrite += cAccess;
        } else if (Plugin::isPicture(cAccess.m_eKind)) {
            cStep.m_lstRead += cKey;
            if (cAccess.m_nID >= 0)
                fnLoad(cKey);
        } else if (cAccess.m_bNumber && !m_lstWritten.contains(cKey) && !m_bAnyWritten) {
            return QString("%1 reads %2 %3 (<%4>), which no --try before it writes.")
                .arg(cStep.m_strID, paramKindName(cAccess.m_eKind))
                .arg(cAccess.m_nID)
                .arg(cAccess.m_strTag);
        }
    }
    for (const StoreAccess &cAccess : qAsConst(cStep.m_lstWrite)) {
        m_lstWritten.removeAll({cAccess.m_eKind, cAccess.m_nID});
        m_lstWritten += {cAccess.m_eKind, cAccess.m_nID};
    }
    return {};
}

QString Tryout::fillIn(const PluginSetting &cSetting, Step &cStep)
{
    if (!configValue(cStep.m_strConfig, cSetting.m_strTag).isEmpty())
        return {};
    const ParamKind eKind = kindOf(cSetting, cStep.m_strConfig);
    const auto fnIsKind = [eKind](const Key &cKey) { return cKey.first == eKind; };
    int nID = -1;
    if (cSetting.isInput()) {
        const auto itNewest = std::find_if(m_lstWritten.crbegin(), m_lstWritten.crend(), fnIsKind);
        const auto itLoaded = std::find_if(m_lstLoad.cbegin(), m_lstLoad.cend(), fnIsKind);
        if (itNewest != m_lstWritten.crend())
            nID = itNewest->second;
        else if (itLoaded != m_lstLoad.cend())
            nID = itLoaded->second;
        else if (const QString strKind = paramKindName(eKind); !Plugin::isPicture(eKind))
            return QString("%1 needs %2 %3 (<%4>): put a --try before it that writes one, and name its ID.")
                .arg(cStep.m_strID, QString("aeiou").contains(strKind[0]) ? "an" : "a", strKind,
                     cSetting.m_strTag);
    }
    if (nID < 0)
        nID = ++m_nLastID;
    // A tag that is there and empty would be found first.
    const QString strBegin = '<' + cSetting.m_strTag + '>';
    const QString strEnd = "</" + cSetting.m_strTag + '>';
    GlobalFunction::getAndRemoveBody(cStep.m_strConfig, strBegin, strEnd);
    cStep.m_strConfig += strBegin + QString::number(nID) + strEnd;
    return {};
}

int Tryout::run()
{
    int nExitCode = 0;
    for (int nPicture = 0; nPicture < m_cOptions.m_lstPicture.size(); ++nPicture)
        if (!tryPicture(m_cOptions.m_lstPicture[nPicture], m_lstPrefix[nPicture]))
            nExitCode = 1;
    return nExitCode;
}

bool Tryout::tryPicture(const QString &strFile, const QString &strPrefix)
{
    if (strFile.isEmpty() || QFileInfo(strFile).isDir()) {
        m_cReport.failed(-1, strFile.isEmpty() ? QString("the name of a picture is empty")
                                               : strFile + ": it is a folder, and --try reads pictures");
        return false;
    }
    QImageReader cReader(strFile);
    cReader.setAutoTransform(true); // photographs may be stored on their side
    cReader.setDecideFormatFromContent(true);
    const QImage cPicture = cReader.read();
    if (cPicture.isNull()) {
        m_cReport.failed(-1, strFile + ": " + cReader.errorString());
        return false;
    }
    m_strPrefix = strPrefix;

    const std::unique_ptr<ArithmParamMgr, decltype(&ArithmParamMgr::deleteInstance)> pcStore(
        ArithmParamMgr::newInstance(), ArithmParamMgr::deleteInstance);
    m_pcStore = pcStore.get();
    for (Step &cStep : m_lstStep)
        cStep.m_lstNs.clear();
    for (int nRun = 0; nRun < m_cOptions.m_nRepeat; ++nRun)
        if (!runOnce(strFile, cPicture, nRun == 0, nRun + 1 == m_cOptions.m_nRepeat))
            return false;
    return true;
}

bool Tryout::runOnce(const QString &strFile, const QImage &cPicture, bool bFirst, bool bLast)
{
    // Each time anew: an algorithm may work in place.
    for (const Key &cKey : qAsConst(m_lstLoad))
        if (!putPicture(*m_pcStore, cKey.first, cKey.second, cPicture)) {
            m_cReport.failed(-1, strFile + ": there is no memory for the picture");
            return false;
        }
    for (size_t nStep = 0; nStep < m_lstStep.size(); ++nStep) {
        Step &cStep = m_lstStep[nStep];
        const QByteArray achConfig = cStep.m_strConfig.toUtf8();
        const QList<Key> lstBefore = bFirst && !cStep.m_bKnown ? keys(*m_pcStore) : QList<Key>();
        QElapsedTimer cClock;
        cClock.start();
        QString strResult = cStep.m_pcArithm->executeUtf8(achConfig, m_pcStore);
        cStep.m_lstNs.push_back(cClock.nsecsElapsed());

        const QStringList lstCommand = takeCommands(strResult);
        if (!strResult.isEmpty()) {
            m_cReport.failed(-1, QString("%1: %2: %3").arg(strFile, cStep.m_strID, strResult));
            return false;
        }
        if (bFirst && !cStep.m_bKnown) {
            cStep.m_lstWrite.clear();
            for (const Key &cKey : keys(*m_pcStore))
                if (!lstBefore.contains(cKey))
                    cStep.m_lstWrite +=
                        {true, Negative::Allowed, cKey.first,
                         QString("%1-%2").arg(Plugin::kindName(cKey.first)).arg(cKey.second), cKey.second};
        }
        if (bLast && !report(strFile, cPicture, static_cast<int>(nStep), lstCommand))
            return false;
    }
    return true;
}

bool Tryout::report(const QString &strFile, const QImage &cPicture, int nStep, const QStringList &lstCommand)
{
    Step &cStep = m_lstStep[static_cast<size_t>(nStep)];
    TriedStep cTried;
    cTried.m_strPicture = strFile;
    cTried.m_cPictureSize = cPicture.size();
    cTried.m_nStep = nStep;
    cTried.m_strID = cStep.m_strID;
    cTried.m_strConfig = cStep.m_strConfig;
    cTried.m_lstCommand = lstCommand;
    std::sort(cStep.m_lstNs.begin(), cStep.m_lstNs.end());
    cTried.m_nRuns = static_cast<int>(cStep.m_lstNs.size());
    cTried.m_nMedianNs = cStep.m_lstNs[cStep.m_lstNs.size() / 2];
    cTried.m_nBestNs = cStep.m_lstNs.front();

    QStringList lstError;
    const auto fnSave = [&](const QImage &cImage, const QString &strTag) {
        QString strWritten;
        if (const QString strError = save(cImage, nStep, strTag, strWritten); !strError.isEmpty())
            lstError += strError;
        return strWritten;
    };
    QList<Key> lstDrawn;
    for (const StoreAccess &cAccess : qAsConst(cStep.m_lstWrite)) {
        TriedOutput cOutput;
        cOutput.m_strTag = cAccess.m_strTag;
        cOutput.m_eKind = cAccess.m_eKind;
        cOutput.m_nID = cAccess.m_nID;
        if (Plugin::isPicture(cOutput.m_eKind)) {
            QImage cImage = pictureOf(*m_pcStore, cOutput.m_eKind, cOutput.m_nID);
            cOutput.m_cSize = cImage.size();
            if (widthOf(cImage) < cImage.width())
                cImage = cImage.scaledToWidth(widthOf(cImage), Qt::SmoothTransformation);
            cOutput.m_strFile = cImage.isNull() ? QString() : fnSave(cImage, cOutput.m_strTag);
        } else {
            cOutput.m_nCount = describeList(*m_pcStore, cOutput.m_eKind, cOutput.m_nID, cOutput.m_lstText);
            if (isDrawn(cOutput.m_eKind)) {
                const Key cKey(cOutput.m_eKind, cOutput.m_nID);
                lstDrawn += cKey;
                cOutput.m_strFile = fnSave(draw({cKey}, cPicture, cStep), cOutput.m_strTag);
            }
        }
        cTried.m_lstOutput += cOutput;
    }
    if (lstDrawn.size() > 1)
        cTried.m_strAllFile = fnSave(draw(lstDrawn, cPicture, cStep), "all");
    m_cReport.tried(cTried);
    for (const QString &strError : qAsConst(lstError))
        m_cReport.failed(-1, strError);
    return lstError.isEmpty();
}

int Tryout::widthOf(const QImage &cImage) const
{
    return m_cOptions.m_nMaxWidth > 0 ? std::min(m_cOptions.m_nMaxWidth, cImage.width()) : cImage.width();
}

QImage Tryout::draw(const QList<Key> &lstKey, const QImage &cPicture, const Step &cStep) const
{
    // What was found is best seen in the photograph, unless the step saw a picture of another size.
    QImage cBelow = cPicture;
    if (!cStep.m_lstRead.isEmpty()) {
        const auto &[eKind, nID] = cStep.m_lstRead.first();
        const QImage cInput = pictureOf(*m_pcStore, eKind, nID);
        if (!cInput.isNull() && cInput.size() != cPicture.size())
            cBelow = cInput;
    }
    return drawLists(*m_pcStore, lstKey, cBelow, widthOf(cBelow));
}

QString Tryout::save(const QImage &cImage, int nStep, const QString &strTag, QString &strFile) const
{
    const QString strStep = m_lstStep.size() > 1 ? QString("-%1").arg(nStep + 1) : QString();
    strFile = QDir(m_cOptions.m_strOut).filePath(m_strPrefix + strStep + '-' + strTag + ".png");
    QImageWriter cWriter(strFile, "png");
    if (cWriter.write(cImage))
        return {};
    QString strError = strFile + ": " + cWriter.errorString();
    strFile.clear();
    return strError;
}
