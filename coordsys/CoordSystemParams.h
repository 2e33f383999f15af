#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QList>
#include <QSharedDataPointer>
#include <QStringList>

namespace nivora::cs {

/// One entry of a MapInfo catalogue of coordinate systems. A plain value.
class NIVORA_CS_EXPORT CoordSystemParams
{
public:
    /// Without a name.
    CoordSystemParams();
    /// An entry without values.
    explicit CoordSystemParams(QString name, int epsg = CoordSystemTypes::EPSG_UNDEFINDED);
    /// Copies.
    CoordSystemParams(const CoordSystemParams &other);
    /// Copies.
    CoordSystemParams &operator=(const CoordSystemParams &other);
    ~CoordSystemParams();

    /// The name as the file has it.
    const QString &name() const;
    /// CoordSystem::EPSG_UNDEFINDED when the entry has none.
    int epsg() const;

    /// The CoordSys string of the entry, values joined by a bare comma: "Earth Projection 1,104".
    /// MapinfoCoordSystem::getStrMB joins by comma and blank; both forms are stored by callers.
    QString asPrjString() const;

    /// The values of the entry's line, trimmed, in file order; the first is the projection number.
    QStringList params;

private:
    struct Data;
    QSharedDataPointer<Data> m_data;
};

/// One category of a catalogue; the name is null for entries before the first heading.
struct CoordSystemParamsList
{
    QList<CoordSystemParams> entries; ///< in file order
    QString name;                     ///< null before the first heading
};

/// The CoordSys string of an entry's values: "Earth Projection " or, when the first value is zero or no
/// number, "NonEarth ", then the values joined by \p separator.
NIVORA_CS_EXPORT QString prjFromParams(const QStringList &params, const QString &separator);

} // namespace nivora::cs
