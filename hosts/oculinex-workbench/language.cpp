#include "language.h"

#include <memory>

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace
{
void install(const QLocale &cLocale, const QString &strName, const QString &strFolder)
{
    auto pcTranslator = std::make_unique<QTranslator>(QCoreApplication::instance());
    if (pcTranslator->load(cLocale, strName, QStringLiteral("_"), strFolder))
        QCoreApplication::installTranslator(pcTranslator.release());
}
} // namespace

void chooseLanguage(const QString &strLanguage)
{
    Q_INIT_RESOURCE(translations);
    // Qt has texts of more languages and regions; a window speaks one language only.
    const QLocale cWanted(strLanguage.isEmpty() ? QLocale::system().uiLanguages().value(0) : strLanguage);
    const QLocale cLocale = cWanted.language() == QLocale::Chinese
                                ? QLocale(QLocale::Chinese, QLocale::China)
                                : QLocale(QLocale::English, QLocale::UnitedStates);
    QLocale::setDefault(cLocale);
    qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>()); // of an earlier choice
    install(cLocale, QStringLiteral("qtbase"), QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    install(cLocale, QStringLiteral("oculinex-workbench"), QStringLiteral(":/translations"));
}
