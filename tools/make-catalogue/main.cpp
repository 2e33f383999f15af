// Writes the files of resources/. README.md beside this file tells how and why.

#include "Generator.h"
#include "engines/Engine.h"
#include "engines/Library.h"
#include "reading/Database.h"
#include "reading/Table.h"
#include "writing/Output.h"
#include "writing/Writers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStringList>

#include <gdal.h>

#include <clocale>
#include <cstdio>

using namespace catalogue;

namespace {

struct Options
{
    QString output = QStringLiteral(NIVORA_CATALOGUE_OUTPUT);
    QString tables = QStringLiteral(NIVORA_CATALOGUE_TABLES);
    bool check = false;
    bool usage = false;
};

Options optionsFrom(QStringList arguments)
{
    Options options;
    options.check = arguments.removeAll(QStringLiteral("--check")) > 0;
    options.usage = arguments.size() > 1 || arguments.join(QChar()).startsWith(QLatin1Char('-'));
    if (!arguments.isEmpty())
        options.output = arguments.first();
    return options;
}

void summarise(const Generator &generator)
{
    using Source = DatumText::Source;
    static const std::map<Source, const char *> sources = {
        {Source::Standard, "by a standard datum number"},
        {Source::EqualShift, "by a number of equal shift"},
        {Source::Grs80, "by datum 33 (GRS 80, zero shift)"},
        {Source::User, "by a user datum"}};
    std::size_t taken = 0;
    for (const Entry &entry : generator.catalogue().entries)
        taken += entry.epsg > 0 ? 1 : 0;
    std::printf("EPSG systems examined: %zu\ntaken: %zu\n", generator.examined(), taken);
    for (const auto &[source, count] : generator.sources())
        std::printf("  %s: %d\n", sources.at(source), count);
    std::map<QString, int> reasons;
    for (const Refusal &refusal : generator.refusals())
        ++reasons[refusal.reason];
    std::printf("refused: %zu\n", generator.refusals().size());
    for (const auto &[reason, count] : reasons)
        std::printf("  %s: %d\n", qPrintable(reason), count);
    std::printf("written by the library, most with an affine clause: %d\n", generator.writtenEntries());
    std::printf("entries: %zu, of them second entries with an accurate shift: %d\n",
                generator.catalogue().entries.size(), generator.accurateTwins());
    for (const QString &area : generator.unknownAreas())
        std::printf("places.tsv knows no prefix of: %s\n", qPrintable(area));
}

constexpr int otherEngines = 77; // CTest takes it for a skipped test

/// The exit code.
int generate(const Options &options)
{
    prepareEngines();
    const Database database;
    const Versions versions{QString::fromUtf8(GDALVersionInfo("RELEASE_NAME")),
                            database.metadata("EPSG.VERSION")};
    const QString anyXml = QDir(options.output).filePath(QStringLiteral("cs_mbr.xml"));
    if (options.check && !(recordedVersions(anyXml) == versions)) {
        std::puts("The files were made with another GDAL or EPSG version; nothing to compare.");
        return otherEngines;
    }
    const ReferenceTables reference(options.tables);
    const Table legacy(options.tables + QStringLiteral("/oracle_legacy.tsv"));
    const Library library(projectionXml(reference, Language::English, versions));
    Generator generator(database, options.tables, library);
    generator.run();
    summarise(generator);

    const Catalogue &catalogue = generator.catalogue();
    Output output(options.output, options.check);
    output.put(QStringLiteral("projection_ru.xml"), projectionXml(reference, Language::Russian, versions));
    output.put(QStringLiteral("projection_en.xml"), projectionXml(reference, Language::English, versions));
    output.put(QStringLiteral("projections_ru.prj"), projectionsPrj(catalogue, Language::Russian));
    output.put(QStringLiteral("projections_en.prj"), projectionsPrj(catalogue, Language::English));
    const Library whole(projectionXml(reference, Language::English, versions),
                        projectionsPrj(catalogue, Language::English));
    output.put(QStringLiteral("coordsys-texts.tsv"), whole.texts());
    output.put(QStringLiteral("cs_mbr.xml"), boundsXml(generator.bounds(), versions));
    output.put(QStringLiteral("OracleSRID.xml"), oracleXml(legacy, catalogue, versions));
    output.put(QStringLiteral("countries.tsv"),
               countriesTsv(Table(options.tables + QStringLiteral("/countries.tsv"))));
    output.put(QStringLiteral("aliases.tsv"),
               aliasesTsv(Table(options.tables + QStringLiteral("/aliases.tsv")),
                          Table(options.tables + QStringLiteral("/places.tsv"))));
    Output report(QFileInfo(options.tables).path(), options.check);
    report.put(QStringLiteral("refused.tsv"), refusedTsv(generator.refusals()));
    output.publish();
    report.publish();
    return options.check && output.changed() + report.changed() > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    // Refused texts are ordinary here, and counted.
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.cs*=false"));
    const Options options = optionsFrom(QCoreApplication::arguments().mid(1));
    if (options.usage) {
        std::puts("make-catalogue [--check] [directory]\n"
                  "Writes the files of resources/ (or of another directory) and tells what changed.\n"
                  "--check compares only; the exit code is 1 when a file differs, 77 when the installed\n"
                  "GDAL or EPSG data are not those that the files were made with.");
        return 2;
    }
    try {
        return generate(options);
    } catch (const Failure &failure) {
        std::fprintf(stderr, "make-catalogue: %s\n", failure.what());
        return 2;
    }
}
