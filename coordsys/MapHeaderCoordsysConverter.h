#pragma once

#include <coordsys/TABProjInfo.h>

#include <QString>

#include <stdexcept>

namespace nivora::cs {

/// "Недостаточно параметров в строке prj"
class NIVORA_CS_EXPORT NotEnoughtParamsException : public std::logic_error
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
    /// becomes metres.
    TABProjInfo_t prjStrToTABProjInfo(const QString &prj) const;
    /// Writes a record as a CoordSys string (without the word CoordSys) that parses back to the same record.
    /// Throws std::logic_error "Не проинициализированы КС" for a record without a projection.
    QString tabProjInfoToString(const TABProjInfo_t &info) const;

    /// Diagnostic forms.
    QString tabProjInfoToInnerString(const TABProjInfo_t &info) const;
    /// Fills %1 to %22 of a pattern: projection, ellipsoid, unit, six parameters, datum, shifts, five datum
    /// parameters, bounds.
    QString tabProjInfoToTemplateString(const TABProjInfo_t &info, const QString &pattern) const;
    /// One XML element. The unit's name stands with its own quotes inside the attribute's; readers of the old
    /// files expect it.
    QString prjStrToXml(const QString &prj) const;

    /// True when two records describe the same system. Unset ellipsoids, datums and units match any (see the
    /// source for the one exception); numbers agree within 1e-9 of their size. Affine clause and bounds count
    /// only when asked for.
    static bool compareTabProjInfo(const TABProjInfo_t &a, const TABProjInfo_t &b, bool compareAffine,
                                   bool compareBounds);
    /// The bounds as a normalised rectangle, whatever the bounds flag says.
    static QRectF boundForTabProj(const TABProjInfo_t &info);
    static bool isUserDatum(int datum);
};

} // namespace nivora::cs
