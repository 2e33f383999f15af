#include "FeatureKind.h"

#include "GdalFiles.h"

#include <QFileInfo>

namespace {

// By FeatureKind.
constexpr const char *names[] = {"", "points", "multipoints", "lines", "polygons", "collections"};

bool isOrHasType(OGRwkbGeometryType type, OGRwkbGeometryType wanted)
{
    return OGR_GT_IsSubClassOf(type, wanted) != 0;
}

} // namespace

FeatureKind kindOfFeature(OGRGeometryH geometry)
{
    if (!geometry || OGR_G_IsEmpty(geometry))
        return FeatureKind::Nothing;
    const OGRwkbGeometryType type = OGR_GT_Flatten(OGR_G_GetGeometryType(geometry));
    if (type == wkbPoint)
        return FeatureKind::Points;
    if (type == wkbMultiPoint)
        return FeatureKind::Multipoints;
    if (isOrHasType(type, wkbCurve) || isOrHasType(type, wkbMultiCurve))
        return FeatureKind::Lines;
    return isOrHasType(type, wkbSurface) || isOrHasType(type, wkbMultiSurface) ? FeatureKind::Polygons
                                                                               : FeatureKind::Collections;
}

const char *kindName(FeatureKind kind) { return names[static_cast<int>(kind)]; }

QString nameForKind(const QString &out, FeatureKind kind)
{
    const QFileInfo info(out);
    const QString base =
        kind == FeatureKind::Nothing
            ? info.completeBaseName()
            : QStringLiteral("%1_%2").arg(info.completeBaseName(), QLatin1String(kindName(kind)));
    return info.suffix().isEmpty() ? base : base + QLatin1Char('.') + info.suffix();
}

std::set<FeatureKind> kindsIn(OGRLayerH layer)
{
    std::set<FeatureKind> kinds;
    OGR_L_ResetReading(layer);
    while (const Feature feature{OGR_L_GetNextFeature(layer)})
        kinds.insert(kindOfFeature(OGR_F_GetGeometryRef(feature.get())));
    return kinds;
}
