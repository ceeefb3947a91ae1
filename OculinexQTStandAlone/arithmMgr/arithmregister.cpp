#include "arithmMgr/arithmregister.h"

#include <initializer_list>
#include <memory>
#include <mutex>

#include <QMessageBox>
#include <QStringList>

#include "Drawing/drawing.h"
#include "LoadFile/loading.h"
#include "MemoryDisk/memorydisk.h"
#include "SaveFile/saving.h"
#include "guithread.h"
#include "logging.h"
#include "pluginloader.h"
#include "singleton.h"

ArithmFactory *ArithmFactory::s_pcAF = nullptr;
QMutex ArithmFactory::s_cMtxForAF;

namespace
{
struct BuiltIn {
    QString (*m_fnGetClass)();
    QString (*m_fnGetName)();
    fnGetID m_fnGetID;
    fnShowConfigWindow m_fnShowConfigWindow;
    fnExecute m_fnExecute;
};

template <typename T>
constexpr BuiltIn builtIn()
{
    return {T::getClass, T::getName, T::getID, T::showConfigWindow, T::execute};
}

/// The built-in algorithms in the order of the registry: write memory disk, drawing, saving, loading.
const std::initializer_list<BuiltIn> BUILT_INS = {
    builtIn<MemoryDisk>(),
    builtIn<Drawing>(),
    builtIn<Saving>(),
    builtIn<Loading>(),
};

std::mutex s_cMtxForCache; // guards m_mapArithm; no function of a plug-in is called under it

/// What could not be loaded while the registry was made; s_cMtxForAF guards it.
QStringList &loadErrors()
{
    static auto *s_plstErrors = new QStringList;
    return *s_plstErrors;
}

void warn(const QString &strError)
{
    if (isGuiThread())
        QMessageBox::about(nullptr, QStringLiteral("Warning"), strError);
    else
        qCWarning(lcPlugin).noquote() << strError;
}

/// The text of each entry of a class (of every entry when pstrClass is null), each once.
QList<QString> distinct(const QList<ArithmFactory::ArithmInfo> &lstInfo,
                        QString ArithmFactory::ArithmInfo::*pText, const QString *pstrClass)
{
    QList<QString> lstTexts;
    for (const ArithmFactory::ArithmInfo &cInfo : lstInfo)
        if ((!pstrClass || cInfo.m_strClass == *pstrClass) && !lstTexts.contains(cInfo.*pText))
            lstTexts.append(cInfo.*pText);
    return lstTexts;
}
} // namespace

ArithmFactory *ArithmFactory::getInstance()
{
    bool bMade = false;
    ArithmFactory *pcFactory = singleton(s_pcAF, s_cMtxForAF, &bMade);
    if (bMade) {
        QStringList lstErrors;
        {
            QGuard cGuard(s_cMtxForAF);
            lstErrors.swap(loadErrors());
        }
        // Without the lock: while a box is open, the host's timers may come here again.
        for (const QString &strError : qAsConst(lstErrors))
            warn(strError);
    }
    return pcFactory;
}

ArithmFactory::ArithmFactory()
{
    const auto fnAdd = [this](const QString &strClass, const QString &strName, bool bExtLib, fnGetID fnID,
                              fnShowConfigWindow fnWindow, fnExecute fnExec) {
        auto pcArithm = std::make_unique<Arithm>(bExtLib, fnID, fnWindow, fnExec);
        m_lstArithmInfo.append({strClass, strName, pcArithm.get()});
        static_cast<void>(pcArithm.release());
    };
    loadErrors().clear(); // of an attempt that lacked memory
    try {
        for (const BuiltIn &cBuiltIn : BUILT_INS)
            fnAdd(cBuiltIn.m_fnGetClass(), cBuiltIn.m_fnGetName(), false, cBuiltIn.m_fnGetID,
                  cBuiltIn.m_fnShowConfigWindow, cBuiltIn.m_fnExecute);

        for (const bool bExtLib : {false, true}) {
            PluginLoader::loadAll(
                bExtLib ? QStringLiteral("extArithm/") : QStringLiteral("baseArithm/"),
                {"getID", "showConfigWindow", "execute", "getArithmClass", "getArithmName"},
                [&](std::unique_ptr<QLibrary> pcLibrary, const std::vector<QFunctionPointer> &vSymbols) {
                    fnAdd(PluginLoader::selfDescription(*pcLibrary, "getArithmClass", vSymbols[3]),
                          PluginLoader::selfDescription(*pcLibrary, "getArithmName", vSymbols[4]), bExtLib,
                          reinterpret_cast<fnGetID>(vSymbols[0]),
                          reinterpret_cast<fnShowConfigWindow>(vSymbols[1]),
                          reinterpret_cast<fnExecute>(vSymbols[2]));
                    m_lstArithmLib.append(pcLibrary.get());
                    static_cast<void>(pcLibrary.release());
                },
                [](const QString &strError) { loadErrors().append(strError); });
        }

        for (const ArithmInfo &cInfo : qAsConst(m_lstArithmInfo)) {
            const QString strID = cInfo.m_pcArithm->getID();
            if (!m_mapArithm.contains(strID))
                m_mapArithm.insert(strID, cInfo.m_pcArithm);
        }
    } catch (...) {
        for (const ArithmInfo &cInfo : qAsConst(m_lstArithmInfo))
            delete cInfo.m_pcArithm;
        qDeleteAll(m_lstArithmLib);
        throw;
    }
}

ArithmFactory::~ArithmFactory()
{
    for (QLibrary *pcLibrary : qAsConst(m_lstArithmLib)) {
        pcLibrary->unload();
        delete pcLibrary;
    }
}

QList<ArithmFactory::ArithmInfo> *ArithmFactory::getArithms()
{
    return &m_lstArithmInfo;
}

QList<QString> ArithmFactory::getArithmClassNames()
{
    return distinct(m_lstArithmInfo, &ArithmInfo::m_strClass, nullptr);
}

QList<QString> ArithmFactory::getArithmNames(QString strClass)
{
    return distinct(m_lstArithmInfo, &ArithmInfo::m_strName, &strClass);
}

QString ArithmFactory::getArithm(QString strClass, QString strName)
{
    for (const ArithmInfo &cInfo : qAsConst(m_lstArithmInfo))
        if (cInfo.m_strClass == strClass && cInfo.m_strName == strName)
            return cInfo.m_pcArithm->getID();
    return {};
}

Arithm *ArithmFactory::getArithm(QString strID)
{
    {
        const std::lock_guard<std::mutex> cGuard(s_cMtxForCache);
        if (Arithm *pcArithm = m_mapArithm.value(strID))
            return pcArithm;
    }
    for (const ArithmInfo &cInfo : qAsConst(m_lstArithmInfo)) {
        if (cInfo.m_pcArithm->getID() == strID) {
            const std::lock_guard<std::mutex> cGuard(s_cMtxForCache);
            m_mapArithm.insert(strID, cInfo.m_pcArithm);
            return cInfo.m_pcArithm;
        }
    }
    return nullptr;
}
