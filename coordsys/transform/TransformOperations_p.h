#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/GridOffer.h>
#include <coordsys/ProjEngine.h>
#include <coordsys/TransformOperation.h>

#include "ProjLists_p.h"

#include <proj.h>

#include <QString>

#include <functional>
#include <memory>

namespace nivora::cs {

/// A text that PROJ reads as a CRS; PROJ text also without "+type=crs". Null when it is none.
PjHandle crsOf(PJ_CONTEXT *context, const QString &definition);

/// Which operations are asked for.
enum class OperationSet {
    Working, ///< by the criterion that transformations are made with
    Known,   ///< those whose grids are missing too, behind the others
};

/// PROJ's list for going from one CRS to another; null when it knows no way. Needs the lock of the context.
PjList operationList(PJ_CONTEXT *context, const PJ *from, const PJ *to, OperationSet set);

/// The same as values, in PROJ's order of preference.
QVector<TransformOperation> operationsBetween(PJ_CONTEXT *context, const PJ *from, const PJ *to,
                                              OperationSet set);

/// What PROJ says of an operation; that axes are swapped to have x first is left out. Needs the lock of the
/// context.
TransformOperation describedOperation(PJ_CONTEXT *context, const PJ *operation);

/// Null for an object that chooses among operations by place. Needs the lock of the context.
std::shared_ptr<const TransformOperation> singleOperation(PJ_CONTEXT *context, const PJ *operation);

/// The operation that an object took for the last point, whether or not it has a choice. Needs the lock of
/// the context.
TransformOperation lastUsedOperation(PJ_CONTEXT *context, PJ *object);

/// What files that are missing would give, beside what works.
QVector<GridOffer> offersBetween(const QVector<TransformOperation> &working,
                                 const QVector<TransformOperation> &all);

/// Two steps of a way as one.
TransformOperation joined(const TransformOperation &first, const TransformOperation &second);

/// Asks with the ends of a step, by one pair of texts after another, until the answer is true. False when it
/// never is.
using AskEnds = std::function<bool(const PJ *source, const PJ *target)>;
bool askWithEnds(PJ_CONTEXT *context, const CoordSystemPtr &from, const CoordSystemPtr &to,
                 const AskEnds &ask);

} // namespace nivora::cs
