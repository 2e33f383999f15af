#pragma once

#include <widgets/widgets_export.h>

#include <QString>

namespace nivora::cs {

/// The texts of the widgets and, as installTranslations() of the core library, its messages: "ru", the
/// language of the sources, or "en" for any other. Call it before the widgets are made, from the
/// application's thread; a second call replaces the first. False without an application.
NIVORA_CS_WIDGETS_EXPORT bool installWidgetTranslations(const QString &language);

} // namespace nivora::cs
