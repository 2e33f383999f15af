#pragma once

#include <coordsys/coordsys_export.h>

#include <QString>

namespace nivora::cs {

/// Messages of the library in a language: "ru", the language of the sources, or "en"; a locale's name
/// ("en_GB.UTF-8") counts by its language, any language but Russian as English. The translator that an
/// earlier call installed goes. Call it from the thread of the application, behind its making; texts made
/// before stay as they are. Without an application the library's own texts are in that language until there
/// is one. They stand in contexts of their own ("CoordSysTexts", "ModelTexts"), so that no text of a host is
/// translated by them.
NIVORA_CS_EXPORT bool installTranslations(const QString &language);

} // namespace nivora::cs
