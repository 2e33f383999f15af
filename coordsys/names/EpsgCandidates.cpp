#include <coordsys/EpsgCandidates.h>

#include "CrsDefinition_p.h"
#include "EngineGate_p.h"
#include "SearchContext_p.h"
#include "TransformOperations_p.h"
#include <coordsys/CoordSystem.h>

#include <algorithm>

namespace nivora::cs {
namespace {

QList<EpsgCandidate> identified(PJ_CONTEXT *context, const PJ *crs)
{
    const IdentifiedCrs found = identifyCrs(context, crs, "EPSG");
    QList<EpsgCandidate> candidates;
    for (int i = 0; i < found.count(); ++i) {
        const PjHandle match = ownPj(proj_list_get(context, found.list.get(), i));
        const auto code = match ? codeOf(match.get(), QLatin1String("EPSG")) : std::nullopt;
        if (code)
            candidates << EpsgCandidate{*code, QString::fromUtf8(proj_get_name(match.get())),
                                        found.confidences.get()[i]};
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const EpsgCandidate &a, const EpsgCandidate &b) { return a.confidence > b.confidence; });
    return candidates;
}

} // namespace

QList<EpsgCandidate> epsgCandidates(const CoordSystem &cs,
                                    const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress)
{
    const auto isCanceled = [&progress] { return progress && progress->isCanceled(); };
    const auto identity =
        isCanceled() ? nullptr : CrsDefinition::of(cs.sourceParameters(), cs.copyOgrSpatialReference().get());
    if (!identity || !identity->isHorizontal())
        return {};
    const QString definition = identity->wkt();
    const SearchContext context;
    const PjHandle crs = crsOf(context.get(), definition);
    const PjHandle plain = crs ? sourceOfBoundCrs(context.get(), crs.get()) : nullptr;
    if (!plain || isCanceled())
        return {};
    const QList<EpsgCandidate> candidates = identified(context.get(), plain.get());
    return isCanceled() ? QList<EpsgCandidate>() : candidates;
}

} // namespace nivora::cs
