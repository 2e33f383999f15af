#pragma once

#include "TextRefs_p.h"

#include <coordsys/CoordSystemParams.h>

#include <QList>
#include <QString>

namespace nivora::cs {

/// A line of a MapInfo catalogue of coordinate systems. Refers to the text of the line.
struct CatalogueLine
{
    enum Kind {
        Ignored,  ///< empty, or a comment
        Rejected, ///< neither a heading nor an entry
        Heading,  ///< "---Russia---", the quotes included
        Entry,    ///< "Longitude / Latitude (WGS 84)\p4326", 1, 104
    };
    Kind kind = Ignored;
    TextRef taken;  ///< what of the line is heading or entry, else all of it
    TextRef name;   ///< trimmed; not null for a heading, even if empty
    TextRef code;   ///< digits, empty without a code
    TextRef values; ///< behind the comma that follows the name

    CoordSystemParams entry() const;
};

/// \p line must be trimmed.
CatalogueLine readCatalogueLine(const TextRef &line);

/// Appends the categories of a MapInfo catalogue's text, those without entries left out. Returns the number
/// of entries.
int scanCategories(const QString &text, QList<CoordSystemParamsList> &categories);

} // namespace nivora::cs
