#pragma once

#include "entries/Places.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace catalogue {

/// One system of the catalogue.
struct Entry
{
    int category = 0; ///< index in the list of categories
    int epsg = 0;     ///< 0 = no code
    QString params;   ///< what follows "Earth Projection ", or `Units "m"` of a plan
    QString nameEn;
    QString nameRu;
    int rank = 0; ///< among entries of one text and category, the smallest first

    bool isPlan() const { return params.startsWith(QLatin1String("Units")); }
    QString coordSys() const
    {
        return (isPlan() ? QStringLiteral("NonEarth ") : QStringLiteral("Earth Projection ")) + params;
    }
};

struct Catalogue
{
    std::vector<Category> categories;
    std::vector<Entry> entries; ///< in file order
};

} // namespace catalogue
