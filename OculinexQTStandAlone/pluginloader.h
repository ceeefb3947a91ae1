#ifndef PLUGINLOADER_H
#define PLUGINLOADER_H

#include <functional>
#include <memory>
#include <vector>

#include <QLibrary>
#include <QString>

/// What both registries share: finding, loading and resolving plug-ins (private header).
namespace PluginLoader
{
/// The directory of the host's executable; works without an application object.
QString applicationDir();

/// A plug-in that has every symbol it needs: the library and the symbols in the order asked for.
using FoundCallback =
    std::function<void(std::unique_ptr<QLibrary> pcLibrary, const std::vector<QFunctionPointer> &vSymbols)>;
/// A file that cannot be loaded, and why.
using FailedCallback = std::function<void(const QString &strError)>;

/// Loads each file ending in ".so" (in any letter case) of a folder beside the executable, by name
/// ignoring case. A library that lacks a symbol stays loaded and is passed to nobody. Whatever was
/// loaded stays mapped until the process ends, even after QLibrary::unload(): a thread may still
/// be inside it.
void loadAll(const QString &strFolder, const std::vector<const char *> &vSymbolNames,
             const FoundCallback &fnFound, const FailedCallback &fnFailed);

/// What one of a plug-in's functions says of the plug-in; empty when an exception leaves it.
QString selfDescription(const QLibrary &cLibrary, const char *szFunction, QFunctionPointer fnText);
} // namespace PluginLoader

#endif
