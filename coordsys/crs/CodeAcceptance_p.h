#pragma once

#include "RegisteredShift_p.h"
#include <coordsys/ProjEngine.h>

#include <QString>

#include <proj.h>

#include <memory>
#include <optional>

namespace nivora::cs {

class CrsDefinition;

/// A system without a code, as every search takes it, apart from everybody else's objects, and which codes it
/// may be given. Whatever notation it came in, the same holds: a bare ellipsoid other than WGS 84's states no
/// datum and has no code; a shift to WGS 84 must be that of the code's datum; the unit of the plane and the
/// name of the datum must be the code's. Works in the search's context.
class CodeAcceptance
{
public:
    /// \p definition is WKT with the shift that the system has. Not read again where it has been, in \p
    /// known.
    explicit CodeAcceptance(const QString &definition, const CrsDefinition *known = nullptr);

    enum class Datum {
        None,       ///< an ellipsoid and nothing else: no code
        PlainWgs84, ///< that of WGS 84, which stands for WGS 84
        ByShift,    ///< no name that the database knows, but a shift
        Named,      ///< a name that the database knows
    };
    Datum datum() const { return m_datum; }
    bool isSearchable() const { return m_plain && m_datum != Datum::None; }

    /// The system without shift and code, as the text spells its names. Borrowed, for the search's context.
    const PJ *crs() const { return m_plain.get(); }
    /// The same as a spatial reference; null when GDAL refuses it.
    std::shared_ptr<void> srs() const;
    const std::optional<Shift> &shift() const { return m_shift; }
    bool hasOwnShift() const;
    /// WKT 2 with the shift.
    const QString &wkt() const { return m_wkt; }

    /// True when the system may have the code of a registered one. \p isByRecord: the catalogue's entry of
    /// the code has its record, so that plane and shift are the entry's, to the digits of its tables.
    bool takes(int epsg, bool isByRecord) const;

private:
    bool takesDatum(const PJ *registered) const;
    bool takesShift(int epsg) const;

    QString m_wkt;
    PjHandle m_plain;
    std::optional<Shift> m_shift; ///< as TOWGS84 has it
    Datum m_datum = Datum::None;
};

} // namespace nivora::cs
