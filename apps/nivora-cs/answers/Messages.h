#pragma once

#include <QString>

/// The language of messages and, unless --language says otherwise, of names: "ru" when the locale of the
/// process (LC_ALL, LC_MESSAGES, LANG; the first that is set counts) is Russian, else "en".
QString localeLanguage();

/// Texts of the program and of the library in a language, "ru" Russian, any other English. Call it once,
/// behind the making of the application.
void setMessageLanguage(const QString &language);

/// A text of a table (QT_TRANSLATE_NOOP in the context "QObject", or the library's "CoordSysTexts") in the
/// language of messages.
QString translated(const char *text);
