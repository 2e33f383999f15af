#pragma once

#include <coordsys/CoordTransform.h>

#include <memory>

struct PJconsts;

namespace comparison {

/// BulkTransform beside proj_trans_array, and beside itself on one thread.
void addParallel(const nivora::cs::CoordTransform &transform, const std::shared_ptr<PJconsts> &pj,
                 const QVector<QPointF> &points);

} // namespace comparison
