#include "arithmMgr/arithms.h"

#include <QVarLengthArray>

#include "guardedcall.h"
#include "logging.h"

namespace
{
void logFailure(const char *szFunction, Arithm *pcArithm, const QString &strWhat)
{
    callIfMemoryAllows([&] {
        qCWarning(lcPlugin).noquote() << szFunction << "of the algorithm"
                                      << (pcArithm ? pcArithm->getID() : QString()) << "failed:" << strWhat;
    });
}
} // namespace

Arithm::Arithm(bool bExtLib, fnGetID fnID, fnShowConfigWindow fnWindow, fnExecute fnExec)
    : m_fnGetID(fnID), m_fnShowConfigWindow(fnWindow), m_fnExecute(fnExec), m_bExtLib(bExtLib)
{
}

QString Arithm::getID()
{
    if (!m_fnGetID)
        return {};
    return textFromPlugin(guardedCall([this] { return m_fnGetID(); },
                                      [](const QString &strWhat) -> const char * {
                                          logFailure("getID", nullptr, strWhat);
                                          return nullptr;
                                      }));
}

QString Arithm::showConfigWindow(QString strConfig, ArithmParamMgr *pcAPM)
{
    if (!m_fnShowConfigWindow)
        return {};
    return guardedCall(
        [&] {
            QByteArray achConfig = strConfig.toUtf8();
            return textFromPlugin(m_fnShowConfigWindow(achConfig.data(), pcAPM, true));
        },
        [this](const QString &strWhat) {
            logFailure("showConfigWindow", this, strWhat);
            return QString();
        });
}

QString Arithm::execute(QString &strConfig, ArithmParamMgr *pcAPM)
{
    return executeUtf8(strConfig.toUtf8(), pcAPM);
}

QString Arithm::executeUtf8(const QByteArray &achConfig, ArithmParamMgr *pcAPM)
{
    if (!m_fnExecute)
        return {};
    return guardedCall(
        [&] {
            // A copy, because the algorithm may write into the text that it is given.
            QVarLengthArray<char, 1024> achCopy;
            achCopy.append(achConfig.constData(), achConfig.size());
            achCopy.append('\0');
            return textFromPlugin(m_fnExecute(achCopy.data(), pcAPM));
        },
        [this](const QString &strWhat) {
            logFailure("execute", this, strWhat);
            return strWhat;
        });
}

bool Arithm::IsExtLib()
{
    return m_bExtLib;
}
