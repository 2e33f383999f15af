#include <coordsys/ExportCoordSystemParamsToMitabInternal.h>

#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QRegularExpression>

#include <utility>

#ifndef NIVORA_NO_PATCHED_ENGINES
// Weak, so that the library links and loads with a GDAL that lacks them; they are null then.
extern "C" {
__attribute__((weak, visibility("default"))) void
OGR_MITABReplaceEllipsoidParameters(const std::vector<nivora::cs::MitabEllipsoid> *records);
__attribute__((weak, visibility("default"))) void
OGR_MITABReplaceDatumParameters(const std::vector<nivora::cs::MitabDatum> *records);
}
#endif

namespace nivora::cs {

#if defined(__x86_64__) && defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI
static_assert(sizeof(MitabEllipsoid) == 56, "the driver reads records of this size");
static_assert(sizeof(MitabDatum) == 112, "the driver reads records of this size");
#endif

namespace {

std::vector<MitabEllipsoid> &keptEllipsoids()
{
    static std::vector<MitabEllipsoid> records;
    return records;
}

std::vector<MitabDatum> &keptDatums()
{
    static std::vector<MitabDatum> records;
    return records;
}

// The driver compares names letter by letter with those in its files: "Пулково 1942 (СК-42)" must arrive as
// "Pulkovo_1942__SK-42_".
std::string driverName(const QString &name)
{
    static const QRegularExpression unwanted(QStringLiteral("[ .()\"]"));
    return nivora::utils::translitString(name).replace(unwanted, QStringLiteral("_")).toStdString();
}

MitabEllipsoid record(const MIEllipsoidParam &e)
{
    return {e.id, e.name_mitab.toStdString(), e.semi_major, e.inv_flatenning};
}

MitabDatum record(const MIDatumParam &d)
{
    return {d.epsg_mitab, d.id, driverName(d.name_mitab), d.ellipsoid, d.dx, d.dy, d.dz, d.rx, d.ry, d.rz,
            d.sa,         d.pm};
}

template <typename Record, typename Param>
void rebuild(std::vector<Record> &records, const std::vector<std::unique_ptr<Param>> &params)
{
    std::vector<Record> fresh;
    fresh.reserve(params.size());
    for (const auto &param : params)
        fresh.push_back(record(*param));
    records = std::move(fresh);
}

} // namespace

void ExportCoordSystemParamsToMitabInternal::replaceEllipsoidParameters(
    const std::vector<std::unique_ptr<MIEllipsoidParam>> &ellipsoids)
{
    if (ellipsoids.empty()) {
        LOG_ERROR(QStringLiteral("List of ellipsoids is empty"));
        return;
    }
    rebuild(keptEllipsoids(), ellipsoids);
#ifndef NIVORA_NO_PATCHED_ENGINES
    if (OGR_MITABReplaceEllipsoidParameters)
        OGR_MITABReplaceEllipsoidParameters(&keptEllipsoids());
#endif
}

void ExportCoordSystemParamsToMitabInternal::replaceDatumParameters(
    const std::vector<std::unique_ptr<MIDatumParam>> &datums)
{
    if (datums.empty()) {
        LOG_ERROR(QStringLiteral("List of datumss is empty")); // spelled as log readers know it
        return;
    }
    rebuild(keptDatums(), datums);
#ifndef NIVORA_NO_PATCHED_ENGINES
    if (OGR_MITABReplaceDatumParameters)
        OGR_MITABReplaceDatumParameters(&keptDatums());
#endif
}

const std::vector<MitabEllipsoid> &ExportCoordSystemParamsToMitabInternal::lastEllipsoids()
{
    return keptEllipsoids();
}

const std::vector<MitabDatum> &ExportCoordSystemParamsToMitabInternal::lastDatums() { return keptDatums(); }

} // namespace nivora::cs
