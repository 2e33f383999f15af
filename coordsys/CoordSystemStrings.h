#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/LinearUnit.h>

#include <QStringList>

#include <cstdint>

namespace nivora::cs {

/// The notation a text is written in, Unknown when none is recognised. Loose: two numbers joined by a comma
/// anywhere make a CoordSys string of it, PROJ strings with several shift values included. The time grows
/// with the length alone. Thread-safe.
NIVORA_CS_EXPORT CoordSystemTypes::SourceType tryDetectTypeCoordSystem(const QString &text);

/// A system from text and the tag of its notation ("prj", "proj", "epsg", "wkt", "oracle", any case). An
/// unknown tag is logged and gives null; the creators' exceptions pass through. Thread-safe.
NIVORA_CS_EXPORT CoordSystemPtr csStringToInternal(const QString &type, const QString &text);
NIVORA_CS_EXPORT CoordSystemPtr csStringToInternal(const CoordSystemTypes::SourceData &source);

/// Which clauses a CoordSys string carries. A number of four digits at its start, or behind white space and
/// one of the letters of "Projection" or "NonEarth", is taken for the projection's.
struct PrjClauses
{
    std::int32_t affine; ///< 1 when an affine clause is announced
    std::int32_t bounds; ///< 0 none, 1 by the projection's thousands (last four numbers), 2 a Bounds clause
};
/// See PrjClauses. Thread-safe.
NIVORA_CS_EXPORT PrjClauses hasAffineOrBoundsInString(const QString &prj);

/// The clauses themselves: seven tokens (the unit in its quotes, then A to F) or none, and the bounds, empty
/// when there are none. Text that is no number counts as 0. A clause announced by words must be complete, and
/// only the bounds (or a plan's unit and its bounds) may stand behind it: else it gives no tokens. One
/// announced by the thousands is counted from the end, whatever stands there. Thread-safe.
struct AffineAndBounds
{
    QStringList affine; ///< seven tokens or none
    QRectF bounds;      ///< normalised, in the unit of the text
};
/// See AffineAndBounds.
NIVORA_CS_EXPORT AffineAndBounds affineParamsAndBoundsFromPrj(const QString &prj);

/// The CoordSys clause in the header of a MIF or TAB file.
struct CoordSysClause
{
    int position =
        -1;         ///< of its first character, or where one would stand; -1 in a text that is no such header
    int length = 0; ///< with the line end behind it; 0 without a clause
    QString text;   ///< on one line, beginning with the word CoordSys
};

/// Looks at the lines up to the columns or the data, so that one named CoordSys is none; a clause may go on
/// over several lines. Positions count characters: decode as Latin 1 to have bytes. Thread-safe.
NIVORA_CS_EXPORT CoordSysClause coordSysClauseIn(const QString &header);

/// " Bounds (x1, y1) (x2, y2)", with the leading blank.
NIVORA_CS_EXPORT QString boundConditionAsString(const QRectF &rect);

/// PROJ's term for a MapInfo unit code, "+units=m". Codes that PROJ has no term for give the bare letter "m":
/// callers compare and store it.
NIVORA_CS_EXPORT QString projUnitStringForLinearUnit(const LinearUnit::MIUnitCode &code);

/// PROJ text of a non-earth plan: an equidistant cylinder on the sphere, in the unit.
NIVORA_CS_EXPORT QString projNonEarthString(const LinearUnit::MIUnitCode &code);

} // namespace nivora::cs
