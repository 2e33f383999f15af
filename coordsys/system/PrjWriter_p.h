#pragma once

#include "PlaneFigures_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/PrjText.h>
#include <coordsys/TABProjInfo.h>

#include <QVector>

#include <optional>

namespace nivora::cs {

/// Writes a system of the earth as CoordSys text: finds a projection, a datum and, where the parameters do
/// not hold the plane, an affine clause, and reads each attempt back before it is believed. The system's own
/// affine transformation and bounds are left aside. For one call.
class PrjWriter
{
public:
    explicit PrjWriter(const CoordSystem &cs);

    /// By the catalogue's entry of the system's code, else from the definition.
    PrjText written() const;
    /// From the definition, with the datum of a record.
    PrjText withDatum(const TABProjInfo_t &datum) const;

private:
    struct Trial;
    using Images = QVector<QPointF>;

    std::optional<TABProjInfo_t> catalogued() const;
    TABProjInfo_t ownDatum() const;
    bool hasOtherShift(const TABProjInfo_t &record) const;
    QVector<TABProjInfo_t> candidates(const TABProjInfo_t &datum) const;
    Images imagesIn(const CoordSystem &cs, const QVector<QPointF> &places) const;
    Trial trial(const TABProjInfo_t &record) const;
    std::optional<TABProjInfo_t> absorbed(const TABProjInfo_t &record, const Trial &tried) const;
    std::optional<TABProjInfo_t> withAffine(TABProjInfo_t record) const;
    PrjText proved(const TABProjInfo_t &record) const;
    double withoutAffineM(TABProjInfo_t record) const;
    PrjText best(const QVector<TABProjInfo_t> &records) const;
    PrjText::Lack kindLack(const CoordSystem &text, const TABProjInfo_t &record, double &lackM) const;

    const CoordSystem &m_cs;
    CoordSystemPtr m_plain; ///< without affine transformation
    std::shared_ptr<const CrsDefinition> m_registered;
    std::shared_ptr<const CrsDefinition> m_definition;
    std::optional<PlaneFigures> m_plane;
    Images m_images;
    Images m_wideImages;
};

} // namespace nivora::cs
