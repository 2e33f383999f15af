#include "Fuzz.h"

#include "Workshop.h"

#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapHeaderRecord.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoSearch.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/TABProjInfo.h>
#include <coordsys/UserCoordSystem.h>

#include <MapInfoFiles.h>

#include <QBuffer>
#include <QFileInfo>

#include <cstring>
#include <type_traits>

using namespace nivora::cs;

namespace {

constexpr int fewEntries = 3; // building systems costs a thousand times as much as reading their file

CoordSystemPtr madeFrom(const QString &prj) { return Workshop::factory().createWithoutDescription(prj); }

void buildEntry(const MapinfoCoordSystem &catalogue, int category, int index)
{
    try {
        catalogue.getProj(category, index);
    } catch (const std::exception &) { // an entry nobody can use is no fault of the reader
    }
}

void buildSome(const MapinfoCoordSystem &catalogue)
{
    const QList<CoordSystemParamsList> categories = catalogue.projectionList();
    for (int category = 0; category < qMin(categories.size(), fewEntries); ++category) {
        for (int index = 0; index < qMin(categories[category].entries.size(), fewEntries); ++index)
            buildEntry(catalogue, category, index);
    }
}

QList<UserCoordSystem::CsDataType> loaded()
{
    UserCoordSystem store(Workshop::dir());
    store.loadFromFile(false);
    return store.data();
}

QStringList sourcesOf(const QList<UserCoordSystem::CsDataType> &branches)
{
    QStringList texts;
    for (const UserCoordSystem::CsDataType &branch : branches) {
        for (const UserCoordSystem::CoordSystemParam &entry : branch.entries)
            texts << entry.source().string.simplified();
    }
    return texts;
}

} // namespace

void fuzzCatalogue(const QByteArray &input)
{
    Workshop::put("projections_en.prj", input);
    MapinfoCoordSystem catalogue(madeFrom);
    catalogue.loadFromPRJ(Workshop::dir(), QStringLiteral("en"));
    catalogue.seekByEPSG(4326);
    catalogue.seekProj(Workshop::factory().latLongWgs84CoordSystem(), true);
    buildSome(catalogue);
    MapinfoSearch(catalogue).find(QString::fromUtf8(input.left(40)), 5);
}

void fuzzParameters(const QByteArray &input)
{
    Workshop::put("projection_en.xml", input);
    ProjectionParamsManager parameters;
    parameters.initFromXML(Workshop::dir(), QStringLiteral("en"));
    parameters.coordinateUnits();
    parameters.unitByName(QStringLiteral("m"), std::nothrow);
    parameters.findDatumByParams(3, {23.57, -140.95, -79.8}, {0, -0.35, -0.79}, -0.22, 0);
}

void fuzzBounds(const QByteArray &input)
{
    Workshop::put("cs_mbr.xml", input);
    CoordSysRect bounds;
    bounds.initFromXML(Workshop::dir());
    bounds.rect(QStringLiteral("CoordSys Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0"), nullptr);
}

void fuzzOracle(const QByteArray &input)
{
    Workshop::put("OracleSRID.xml", input);
    Workshop::factory().createFromOracleSRID(4326);
}

void fuzzUser(const QByteArray &input)
{
    Workshop::put("UserCoordSystem.xml", input);
    const QList<UserCoordSystem::CsDataType> branches = loaded();
    UserCoordSystem::saveToFile(QFileInfo(Workshop::dir(), QStringLiteral("UserCoordSystem.xml")), branches,
                                true);
    require(sourcesOf(loaded()) == sourcesOf(branches), "a saved store reads back");
}

void fuzzPlaces(const QByteArray &input)
{
    static const auto catalogue = Workshop::factory().mapinfoCoordSystem();
    static MapinfoSearch search(*catalogue);
    Workshop::put("places.tsv", input);
    require(search.loadPlaces(QFileInfo(Workshop::dir(), QStringLiteral("places.tsv"))) >= 0,
            "a file that can be opened is read");
    search.find(QString::fromUtf8(input.mid(input.indexOf('\t') + 1, 20)), 3);
}

void fuzzRecord(const QByteArray &input)
{
    static_assert(std::is_trivially_copyable_v<TABProjInfo_t>);
    TABProjInfo_t record;
    std::memcpy(static_cast<void *>(&record), input.constData(),
                qMin(sizeof record, static_cast<std::size_t>(input.size())));
    const MapHeaderCoordsysConverter converter;
    converter.tabProjInfoToInnerString(record);
    MapHeaderCoordsysConverter::boundForTabProj(record);
    MapHeaderCoordsysConverter::compareTabProjInfo(record, TABProjInfo_t(), true, true);
    const TABProjInfo_t again = converter.prjStrToTABProjInfo(converter.tabProjInfoToString(record));
    require(again.nProjId == record.nProjId, "a written record keeps its projection");
}

void fuzzMapHeader(const QByteArray &input)
{
    QBuffer device;
    device.setData(input);
    device.open(QIODevice::ReadOnly);
    const MapHeaderRecord record = readMapHeader(device);
    const MapHeaderCoordsysConverter converter;
    converter.tabProjInfoToInnerString(record.projection);
    converter.prjStrToTABProjInfo(coordSysText(record));
}

/// What convert reads of a MIF itself, and puts into one that a driver wrote.
void fuzzMif(const QByteArray &input)
{
    Workshop::put("layer.mif", input);
    const QString path = Workshop::dir().filePath(QStringLiteral("layer.mif"));
    require(!encodingLike(path).isEmpty(), "a MIF has an encoding");
    coordSysOfMif(path);
    const QString clause = QStringLiteral("CoordSys Earth Projection 8, 104, \"m\", 39, 0, 1, 500000, 0");
    replaceCoordSysOfMif(path, clause);
    require(coordSysOfMif(path) == clause, "the clause that was put in is the one that is read");
}

/// What convert does to the header of a table that a driver wrote.
void fuzzMapFile(const QByteArray &input)
{
    Workshop::put("layer.map", input);
    const QString path = Workshop::dir().filePath(QStringLiteral("layer.map"));
    const MapHeaderRecord before = readMapHeader(path);
    replaceMapHeader(path, before);
    const MapHeaderRecord after = readMapHeader(path);
    const QString text = coordSysText(before);
    require(coordSysText(after) == text, "a record that was put in is the one that is read");
}
