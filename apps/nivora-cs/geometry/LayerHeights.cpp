#include "LayerHeights.h"

#include "HeightsText.h"

#include <cpl_conv.h>

using nivora::cs::SpatialSystem;

namespace {

QString nameOfHeights(const std::optional<SpatialSystem> &system)
{
    return system ? system->verticalName() : QString();
}

} // namespace

LayerHeights layerHeights(const QString &from, const QString &to)
{
    const auto source = systemWithHeights(from);
    const auto target = to.isEmpty() ? source : systemWithHeights(to);
    LayerHeights heights;
    heights.above = nameOfHeights(source);
    heights.isUnclear = target && !source;
    if (!target || !source)
        return heights;
    if (!to.isEmpty()) {
        const nivora::cs::SpatialTransform transform(*source, *target);
        heights.missing = transform.missingHeights();
        if (!heights.missing.isEmpty())
            return heights;
        heights.transform = transform;
    }
    heights.above = nameOfHeights(target);
    heights.system = target;
    return heights;
}

QString textOfReference(OGRSpatialReferenceH reference)
{
    if (!reference)
        return {};
    char *raw = nullptr;
    const char *const options[] = {"FORMAT=WKT2_2019", nullptr};
    const OGRErr refused = OSRExportToWktEx(reference, &raw, options);
    const std::unique_ptr<char, void (*)(void *)> wkt(raw, VSIFree);
    return refused == OGRERR_NONE ? QString::fromUtf8(wkt.get()) : QString();
}

QString heightSystemOf(OGRSpatialReferenceH reference)
{
    return nameOfHeights(systemWithHeights(textOfReference(reference)));
}

SpatialReference referenceOf(const SpatialSystem &system)
{
    SpatialReference reference(OSRNewSpatialReference(nullptr), OSRDestroySpatialReference);
    OSRSetAxisMappingStrategy(reference.get(), OAMS_TRADITIONAL_GIS_ORDER);
    if (OSRSetFromUserInput(reference.get(), system.definition().toUtf8().constData()) != OGRERR_NONE)
        reference.reset();
    return reference;
}
