#pragma once

#include <coordsys/Error.h>
#include <coordsys/TABProjInfo.h>

#include <QString>

#include <stdexcept>

namespace nivora::cs {

/// "Недостаточно параметров в строке prj"
class NIVORA_CS_EXPORT NotEnoughtParamsException : public std::logic_error, public Error
{
public:
    NotEnoughtParamsException();
};

/// Translates between CoordSys strings and the projection block of a MapInfo map header. Datums and units
/// come from the active catalogue. Stateless; thread-safe.
class NIVORA_CS_EXPORT MapHeaderCoordsysConverter
{
public:
    /// Parses a CoordSys string. Throws NotEnoughtParamsException, std::logic_error for malformed text or an
    /// unknown datum, std::invalid_argument "unitCode" for an unknown affine unit. An unknown coordinate unit
    /// becomes metres; parameters left out at the end are 0.
    ///
    /// The thousands of the projection number announce clauses: 1000 affine (seven tokens), 2000 bounds
    /// (four), 3000 both. Then the unit, all parameters (seven for 35) and exactly the announced tokens must
    /// follow the datum, as numbers or in words, else NotEnoughtParamsException; only longitude/latitude may
    /// lack its unit. Other thousands announce nothing: 4008 is 8, and nothing may follow the parameters. A
    /// plan's affine clause may stand before or behind its unit.
    TABProjInfo_t prjStrToTABProjInfo(const QString &prj) const;
    /// Writes a record as a CoordSys string, without the word CoordSys and without thousands, the affine
    /// clause before the bounds. Throws std::logic_error "Не проинициализированы КС" for a record without a
    /// projection. A parsed record reads back to the bit, but for three cases: an unset unit becomes metres
    /// where the projection has parameters; a plan (projection 0) loses datum and ellipsoid; a filled-in
    /// record comes back with what the text can say, so bounds normalised and without extent not at all, and
    /// for a datum other than 999 and 9999 the catalogue's ellipsoid and figures. The seventh parameter of
    /// projection 35 is not in the record.
    QString tabProjInfoToString(const TABProjInfo_t &info) const;

    /// Diagnostic forms.
    QString tabProjInfoToInnerString(const TABProjInfo_t &info) const;
    /// Fills %1 to %22 of a pattern: projection, ellipsoid, unit, six parameters, datum, shifts, five datum
    /// parameters, bounds.
    QString tabProjInfoToTemplateString(const TABProjInfo_t &info, const QString &pattern) const;
    /// One XML element. The unit's name stands with its own quotes inside the attribute's; readers of the old
    /// files expect it.
    QString prjStrToXml(const QString &prj) const;

    /// True when two records describe the same system; symmetric, not transitive. Numbers agree within 1e-9
    /// of the larger one, at least of 1. Compared are
    /// - the projection and the six parameters;
    /// - the unit: equal, or unset (255) in one record while the other has metres or both have the same false
    ///   easting or northing, not 0, which tells the systems apart where the unit does not;
    /// - ellipsoid and datum: equal or unset (255, -1) in one; shifts and the five figures only when both
    ///   datums are set;
    /// - the affine clause (presence, unit, A to F) and the bounds (presence, four numbers), each only when
    ///   asked for.
    static bool compareTabProjInfo(const TABProjInfo_t &a, const TABProjInfo_t &b, bool compareAffine,
                                   bool compareBounds);
    /// The bounds as a normalised rectangle, whatever the bounds flag says.
    static QRectF boundForTabProj(const TABProjInfo_t &info);
    /// See nivora::cs::isUserDatum.
    static bool isUserDatum(int datum);
};

} // namespace nivora::cs
