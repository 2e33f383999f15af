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

} // namespace nivora::cs
