#pragma once

#include <coordsys/CoordTransform.h>
#include <coordsys/OperationTally.h>
#include <coordsys/SpatialTransform.h>

#include <QPointF>

#include <optional>

/// How a transformation goes: what is used here, what PROJ would take elsewhere, which files are missing.
struct Explanation
{
    QVector<nivora::cs::CoordSystemPtr> systems; ///< both ends, where they have no heights
    bool isCopy = false;                         ///< the systems are equal
    bool hasEpoch = false;
    QString heights; ///< why heights are not transformed; empty when they are, or there are none
    QString here;    ///< what "here" is, in words; empty when nobody knows a place
    QVector<nivora::cs::OperationTally::Use> used;
    QVector<nivora::cs::TransformOperation> elsewhere;
    QVector<nivora::cs::GridOffer> offers;
};

/// Here is where the points of \p tally were, else \p at, a point of the source, else the middle of the area
/// that both systems are made for.
Explanation explained(const nivora::cs::CoordTransform &transform, const std::optional<QPointF> &at,
                      const nivora::cs::OperationTally *tally);

/// The same of a way with heights.
Explanation explained(const nivora::cs::SpatialTransform &transform,
                      const std::optional<nivora::cs::SpatialPoint> &at,
                      const nivora::cs::OperationTally *tally, bool hasEpoch);
