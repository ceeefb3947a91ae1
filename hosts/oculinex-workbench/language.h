#ifndef LANGUAGE_H
#define LANGUAGE_H

#include <QString>

/// Gives the captions of the workbench in "zh" or "en"; an empty language follows the locale. Once,
/// before the first window.
void chooseLanguage(const QString &strLanguage);

#endif
