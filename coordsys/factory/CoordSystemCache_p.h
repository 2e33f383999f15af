#pragma once

#include "CatalogueCache_p.h"
#include <coordsys/CoordSystemTypes.h>

#include <QString>

#include <functional>
#include <utility>

namespace nivora::cs {

/// The systems that a factory made last, by the text or code that they were made from: who asks for one again
/// gets a new system that shares the engines' objects, at a hundredth of the cost. With what the engines
/// remember, 10,000 different ones made and dropped leave less than 16 MB, some 20 KB each. Thread-safe.
class CoordSystemCache
{
public:
    enum class By { Proj, Prj, Record, Epsg, Wkt };

    /// A system of its own for every caller. What \p make throws is passed on, and nothing kept.
    CoordSystemPtr system(By by, const QString &text, const std::function<CoordSystemPtr()> &make);

private:
    CatalogueCache<std::pair<int, QString>, CoordSystemPtr> m_systems{256};
};

} // namespace nivora::cs
