#include "engines/Library.h"

#include "reading/Numbers.h"
#include "reading/Table.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/PrjText.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/system/ReleasedBy.h>

#include <proj.h>

#include <QFile>

#include <memory>
#include <set>

namespace catalogue {
namespace {

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
}

std::set<int> horizontalCodes()
{
    int count = 0;
    const std::unique_ptr<PROJ_CRS_INFO *, ReleasedBy<proj_crs_info_list_destroy>> list(
        proj_get_crs_info_list_from_database(nullptr, "EPSG", nullptr, &count));
    std::set<int> codes;
    for (int i = 0; i < count; ++i) {
        const PROJ_CRS_INFO &info = *list.get()[i];
        if (info.type == PJ_TYPE_PROJECTED_CRS || info.type == PJ_TYPE_GEOGRAPHIC_2D_CRS)
            codes.insert(QByteArray(info.code).toInt());
    }
    return codes;
}

} // namespace

// What a factory asks of its catalogues at start-up; the systems proper are not made yet.
Library::Library(const QByteArray &projectionXml)
    : Library(projectionXml,
              "\"---Start---\"\n\"Longitude / Latitude (WGS 84)\", 1, 104\n\"Longitude / Latitude\", 1, 0\n")
{}

Library::Library(const QByteArray &projectionXml, const QByteArray &projectionsPrj)
{
    write(m_directory.filePath(QStringLiteral("projection_en.xml")), projectionXml);
    write(m_directory.filePath(QStringLiteral("projections_en.prj")), projectionsPrj);
    m_factory = std::make_shared<nivora::cs::CoordSysFactory>(m_directory.path(), m_directory.path(),
                                                              QStringLiteral("en"));
    if (!m_factory->initCoordSystemEnvironment())
        throw Failure(QStringLiteral("the library does not start over the reference tables"));
}

Library::~Library() = default;

std::optional<Srs> Library::read(const QString &coordSys) const
{
    try {
        return Srs::fromHandle(m_factory->createWithoutDescription(coordSys)->copyOgrSpatialReference());
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

QByteArray Library::texts() const
{
    QByteArray table =
        "# EPSG code, greatest error and error without the affine clause (metres), CoordSys text;\n"
        "# or code, number of what is lacking, metres to the nearest, nothing\n";
    for (const int code : horizontalCodes()) {
        if (!m_factory->mapinfoCoordSystem()->seekByEPSG(code).isEmpty())
            continue;
        try {
            const nivora::cs::PrjText text = nivora::cs::prjTextOf(*m_factory->createFromEpsg(code));
            const double first = text.isRefused() ? static_cast<int>(text.lack) : text.planeErrorM;
            const double second = text.isRefused() ? text.lackM : text.withoutAffineM;
            table +=
                QStringList{QString::number(code), numberText(first, 4), numberText(second, 3), text.text}
                    .join(QLatin1Char('\t'))
                    .toUtf8() +
                '\n';
        } catch (const std::exception &) { // PROJ cannot compute in it: the library has no such system
            continue;
        }
    }
    return table;
}

QString Library::written(int code, const QString &datum) const
{
    constexpr double exactM = 0.001;
    constexpr int affine = 1000;
    try {
        const nivora::cs::PrjText text =
            nivora::cs::prjTextWithDatum(*m_factory->createFromEpsg(code), datum);
        if (text.isRefused() || text.planeErrorM > exactM)
            return {};
        // Earth Projection 29, 115, "m", 10, 52, 90 Affine Units "m", 1, 0, 4321000, 0, 1, 3210000
        QString values = text.text.mid(qstrlen("Earth Projection "));
        for (const auto &unit : m_factory->projectionParamsManager()->linearUnits())
            values.replace(QStringLiteral("\"%1\"").arg(unit->name()), QString::number(unit->id));
        const bool hasAffine = values.contains(QStringLiteral(" Affine Units "));
        values.replace(QStringLiteral(" Affine Units "), QStringLiteral(", "));
        const int projection = values.section(QLatin1Char(','), 0, 0).toInt();
        return QString::number(projection + (hasAffine ? affine : 0)) + QLatin1Char(',') +
               values.section(QLatin1Char(','), 1);
    } catch (const std::exception &) {
        return {};
    }
}

} // namespace catalogue
