#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QString>

namespace nivora::cs {

/// A system as CoordSys text, which was read back before it was believed. A plain value.
struct NIVORA_CS_EXPORT PrjText
{
    /// What the notation has no form for.
    enum class Lack {
        Nothing,
        Projection,    ///< the method, or the kind of system
        Ellipsoid,     ///< none within five centimetres in an axis
        PrimeMeridian, ///< the datum's is another
        Plane,         ///< the nearest text has another plane
        Places,        ///< not one place of the area of use can be computed
    };

    QString text; ///< empty when something is lacking
    /// Why there is none.
    Lack lack = Lack::Nothing;
    double lackM = 0.0; ///< metres by which the nearest ellipsoid or plane is off
    /// Greatest distance in metres, at nine places of the area of use, between the system's plane and that of
    /// the text: up to 0.05, more is refused.
    double planeErrorM = 0.0;
    /// Greatest distance in metres from the text's plane to what is left of it without its affine clause,
    /// where that clause stands for parameters that the projection lacks: programs on GDAL pass over it
    /// without a word. 0 when the text needs no such clause.
    double withoutAffineM = 0.0;
    /// Metres of the system's unit where the notation has none of that length: the plane is the system's, and
    /// the text calls its unit the metre. 0 when the text names the unit.
    double unnamedUnitM = 0.0;

    /// There is no text.
    bool isRefused() const { return text.isEmpty(); }
    /// Why there is none, for people, in the language of the installed translation; empty when there is one.
    QString reason() const;
    /// What a reader of the text should know, for people: how far its plane is off when that is more than a
    /// millimetre, what programs lose that pass over the affine clause, and that the unit has another name;
    /// empty when there is nothing.
    QString remark() const;
};

/// CoordSystem::prjStr() with its figures, or with the reason why there is none. Texts of the database's
/// systems come from the catalogue or from a table, others cost some milliseconds and are remembered.
/// Thread-safe. Throws std::logic_error on a fresh object only.
NIVORA_CS_EXPORT PrjText prjTextOf(const CoordSystem &cs);

/// The same for a system without an affine transformation and bounds of its own, whose datum is given as
/// CoordSys text has it: "104", "999, 3, 24, -123, -94". Nothing is looked up or remembered: for those who
/// make a catalogue. Throws std::logic_error for a datum that cannot be read.
NIVORA_CS_EXPORT PrjText prjTextWithDatum(const CoordSystem &cs, const QString &datum);

} // namespace nivora::cs
