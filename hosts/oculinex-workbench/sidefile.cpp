#include "sidefile.h"

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace
{
constexpr auto KEY_TASKS = "tasks";
constexpr auto KEY_STEPS = "steps";
constexpr auto KEY_PANES = "panes";

void syncOne(const QString &strPath)
{
    const int nFile = open(QFile::encodeName(strPath).constData(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
        return;
    fsync(nFile);
    close(nFile);
}
} // namespace

QString SideFile::pathFor(const QString &strTasksFile)
{
    return strTasksFile + QStringLiteral(".workbench.json");
}

QString SideFile::read(const QString &strTasksFile)
{
    *this = {};
    QFile cFile(pathFor(strTasksFile));
    if (!cFile.exists())
        return {};
    if (!cFile.open(QFile::ReadOnly))
        return QStringLiteral("%1: %2").arg(cFile.fileName(), cFile.errorString());
    QJsonParseError cError{};
    const QJsonDocument cDocument = QJsonDocument::fromJson(cFile.readAll(), &cError);
    if (!cDocument.isObject())
        return QStringLiteral("%1: %2").arg(
            cFile.fileName(), cError.error == QJsonParseError::NoError
                                  ? QCoreApplication::translate("SideFile", "it holds no object")
                                  : cError.errorString());
    const QJsonObject cRoot = cDocument.object();
    for (const QJsonValue cTask : cRoot[KEY_TASKS].toArray()) {
        QVector<QJsonObject> lstStep;
        for (const QJsonValue cStep : cTask[KEY_STEPS].toArray())
            lstStep.append(cStep.toObject());
        m_lstTask.append(lstStep);
    }
    m_cPanes = cRoot[KEY_PANES].toObject();
    return {};
}

bool SideFile::isEmpty() const
{
    return m_cPanes.isEmpty() && std::all_of(m_lstTask.begin(), m_lstTask.end(), [](const auto &lstStep) {
               return std::all_of(lstStep.begin(), lstStep.end(),
                                  [](const QJsonObject &cStep) { return cStep.isEmpty(); });
           });
}

QString SideFile::write(const QString &strTasksFile) const
{
    QSaveFile cFile(pathFor(strTasksFile));
    if (isEmpty() && !QFileInfo::exists(cFile.fileName()))
        return {};
    QJsonArray cTasks;
    for (const QVector<QJsonObject> &lstStep : m_lstTask) {
        QJsonArray cSteps;
        for (const QJsonObject &cStep : lstStep)
            cSteps.append(cStep);
        cTasks.append(QJsonObject{{KEY_STEPS, cSteps}});
    }
    const QByteArray achText =
        QJsonDocument(QJsonObject{{KEY_TASKS, cTasks}, {KEY_PANES, m_cPanes}}).toJson();
    if (!cFile.open(QFile::WriteOnly) || cFile.write(achText) != achText.size() || !cFile.commit())
        return QStringLiteral("%1: %2").arg(cFile.fileName(), cFile.errorString());
    syncToDisk(cFile.fileName());
    return {};
}

void syncToDisk(const QString &strPath)
{
    syncOne(strPath);
    syncOne(QFileInfo(strPath).absolutePath());
}
