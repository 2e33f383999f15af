#pragma once

#include <QString>
#include <QStringList>

/// Names of files are bytes, and Qt's are texts in the locale's encoding. From here on, in every locale, they
/// are UTF-8 in which a byte that does not fit stands as a lone surrogate (U+DC80 to U+DCFF), and becomes
/// that byte again wherever Qt opens a file. Call it once, before anything takes a name. Qt 6 has no place
/// for it: names are UTF-8 there.
void keepFileNames();

/// An argument of main().
QString argumentText(const char *argument);

/// Throws Failure for one that names no file that Qt can open: with Qt 6, what is neither UTF-8 nor text in
/// the locale's encoding.
void checkArguments(const QStringList &arguments);

/// An argument that is no name of a file: what is not UTF-8 is read in the locale's encoding.
QString typedText(const QString &argument);

/// The name as Qt opens it: one that begins with a colon would be looked for among Qt's resources.
QString localPath(const QString &name);
