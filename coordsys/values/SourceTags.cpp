#include <coordsys/SourceTags.h>

namespace nivora::cs {
namespace {

struct SourceTag
{
    CoordSystemTypes::SourceType type;
    const char *tag;
};
constexpr SourceTag sourceTags[] = {
    {CoordSystemTypes::Prj, "prj"}, {CoordSystemTypes::Proj4, "proj"},    {CoordSystemTypes::Epsg, "epsg"},
    {CoordSystemTypes::Wkt, "wkt"}, {CoordSystemTypes::Oracle, "oracle"},
};

} // namespace

QString sourceTypeToString(CoordSystemTypes::SourceType type)
{
    for (const SourceTag &row : sourceTags)
        if (row.type == type)
            return QLatin1String(row.tag);
    return QStringLiteral("unknown");
}

CoordSystemTypes::SourceType stringToSourceType(const QString &tag)
{
    const QString lower = tag.toLower();
    for (const SourceTag &row : sourceTags)
        if (lower == QLatin1String(row.tag))
            return row.type;
    return CoordSystemTypes::Unknown;
}

} // namespace nivora::cs
