#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QString>
#include <QStringList>

namespace nivora::cs {

/// What CoordSysFactory::readUserInput() made of a text that a person wrote. A plain value.
struct UserInput
{
    CoordSystemPtr system; ///< never null
    /// Whole sentences for people: what was assumed or left aside ("only the horizontal part", "no unit
    /// stated, taken as metres", "understood as …"). Empty when the text was taken as it stands.
    QStringList notes;
    QString notation; ///< for people, what the text was read as: "код", "строка PROJ", "WKT" …
};

/// True for a text that readUserInput() takes for a definition, whole or not: PROJ text, WKT, PROJJSON,
/// CoordSys text, a line of a catalogue, a tagged string, a URN or URL, "@" and a file. False for names and
/// for codes as people type them, "EPSG:4326", which a search finds. Thread-safe.
NIVORA_CS_EXPORT bool isSystemDefinition(const QString &text);

} // namespace nivora::cs
