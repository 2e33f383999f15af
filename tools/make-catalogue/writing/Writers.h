#pragma once

#include "entries/Entry.h"
#include "planes/Bounds.h"
#include "reading/Table.h"

#include <QByteArray>

namespace catalogue {

enum class Language { English, Russian };

/// The engines whose numbers and figures the files follow.
struct Versions
{
    QString gdal;
    QString epsg;

    bool operator==(const Versions &other) const { return gdal == other.gdal && epsg == other.epsg; }
};
/// What an XML file of ours says it was made with; empty when there is none.
Versions recordedVersions(const QString &path);

struct Refusal;

/// The reference tables: projections, ellipsoids, datums, units.
struct ReferenceTables
{
    explicit ReferenceTables(const QString &directory);

    Table projections;
    Table ellipsoids;
    Table datums;
    Table units;
};

QByteArray projectionXml(const ReferenceTables &tables, Language language, const Versions &versions);
/// Throws Failure for a name that the catalogue's reader would not give back.
QByteArray projectionsPrj(const Catalogue &catalogue, Language language);
QByteArray boundsXml(const std::vector<BoundsTable::Record> &records, const Versions &versions);
/// The legacy numbers, then every entry with an EPSG code: the first entry of a code wins.
QByteArray oracleXml(const Table &legacy, const Catalogue &catalogue, const Versions &versions);
/// Countries and the systems in force there, for searches.
QByteArray countriesTsv(const Table &countries);
/// What people say for systems, and the Russian names of countries for those that stand in areas of use.
QByteArray aliasesTsv(const Table &aliases, const Table &places);
/// The systems that are not in the catalogue, one a line, with the reason.
QByteArray refusedTsv(const std::vector<Refusal> &refusals);

} // namespace catalogue
