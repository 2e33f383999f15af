#pragma once

#include "CoordTransformCache_p.h"
#include <coordsys/TransformOperation.h>

#include <QHash>

#include <array>
#include <memory>

namespace nivora::cs {

using OperationPtr = std::shared_ptr<const TransformOperation>;

/// Notices by which operation an object that chooses by place took a point. PROJ logs when the choice
/// changes, and only then is it asked, since asking costs more than a point. Belongs to an engine with a
/// context of its own, whose messages go here from then on; needs what the engine needs.
class OperationWatch
{
public:
    /// \p context may be null: PROJ is asked after each point then.
    explicit OperationWatch(PJ_CONTEXT *context);
    OperationWatch(const OperationWatch &) = delete;
    OperationWatch &operator=(const OperationWatch &) = delete;

    /// The operations of the steps for the point that was transformed last, in the steps' forward order; the
    /// second is null for one step.
    using Pair = std::array<OperationPtr, 2>;
    const Pair &lastUsed(const TransformQueue &queue);

private:
    OperationPtr find(const ProjOperation &step);

    PJ_CONTEXT *m_context;
    bool m_mayHaveChanged = true;
    Pair m_last;
    QHash<QByteArray, OperationPtr> m_known; ///< by what PROJ says in short
};

} // namespace nivora::cs
