#include "Generator.h"

#include "engines/Engine.h"
#include "reading/Patterns.h"

#include <cmath>
#include <cstdio>

namespace catalogue {
namespace {

constexpr double worthATwin = 5.0;  // metres between a standard number's shift and the best one
constexpr double sameUnit = 1.0e-9; // relative difference of unit factors that is rounding
constexpr double samePlace = 0.001; // metres
constexpr int pulkovo1942 = 6284;   // EPSG datum; its accurate shift is the one of a state standard

} // namespace

Generator::Generator(const Database &database, const QString &tables, const Library &library)
    : m_library(library)
    , m_epsg(database)
    , m_shifts(database, m_epsg)
    , m_driver(m_epsg, m_shifts)
    , m_datums(m_epsg, m_driver, m_shifts, tables)
    , m_places(tables)
    , m_categories(tables, m_places)
    , m_names(tables, m_places)
    , m_precedence(tables)
{
    m_catalogue.categories = m_categories.list();
    for (const Table::Row &row : Table(tables + QStringLiteral("/left_out.tsv")))
        m_leftOut.emplace_back(pattern(row.text("pattern")), row.text("reason"));
    readExtras(tables);
}

void Generator::readExtras(const QString &tables)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/extras.tsv"))) {
        Extra extra;
        extra.entry = {m_categories.index(row.text("category")), row.integer("epsg"), row.text("params"),
                       row.text("name_en"), row.text("name_ru")};
        extra.planeOnly = row.text("check") == QLatin1String("plane");
        extra.wholeWorld = row.text("bounds") == QLatin1String("world");
        m_extras.push_back(extra);
    }
    for (const Extra &extra : m_extras)
        if (extra.entry.epsg > 0)
            m_extraByCode[extra.entry.epsg] = &extra;
}

void Generator::run()
{
    std::map<int, const EpsgSystem *> byCode;
    for (const EpsgSystem &system : m_epsg.systems())
        byCode[system.code] = &system;
    for (const Extra &extra : m_extras) {
        const auto known = byCode.find(extra.entry.epsg);
        if (extra.entry.epsg > 0 && known == byCode.end())
            throw Failure(QStringLiteral("extras.tsv: the database has no system %1").arg(extra.entry.epsg));
        if (extra.entry.params.isEmpty())
            addSystem(*known->second, &extra);
        else
            addExtra(extra);
    }
    std::size_t done = 0;
    for (const EpsgSystem &system : m_epsg.systems()) {
        if (!m_extraByCode.count(system.code))
            addSystem(system, nullptr);
        if (++done % 100 == 0 || done == m_epsg.systems().size())
            std::fprintf(stderr, "\r%zu of %zu systems, %zu entries", done, m_epsg.systems().size(),
                         m_catalogue.entries.size());
    }
    std::fputc('\n', stderr);
    m_precedence.sort(m_catalogue.entries);
}

void Generator::addExtra(const Extra &extra)
{
    const Entry &entry = extra.entry;
    const auto srs = m_library.read(entry.coordSys());
    if (!srs)
        throw Failure(QStringLiteral("extras.tsv: the library refuses %1").arg(entry.coordSys()));
    if (entry.epsg > 0) {
        for (const EpsgSystem &system : m_epsg.systems()) {
            if (system.code != entry.epsg)
                continue;
            const PlaneCheck check(system, *m_epsg.datum(system.datum), *Srs::fromEpsg(system.code));
            const QString fault =
                extra.planeOnly ? check.planeFault(*srs, samePlace) : check.fault(srs, samePlace);
            if (!fault.isEmpty())
                throw Failure(QStringLiteral("extras.tsv: %1: %2").arg(QString::number(entry.epsg), fault));
            if (!extra.wholeWorld)
                m_bounds.addArea(entry, system);
        }
    }
    if (extra.wholeWorld)
        m_bounds.addWorld(entry);
    m_catalogue.entries.push_back(entry);
}

void Generator::addSystem(const EpsgSystem &system, const Extra *extra)
{
    for (const auto &[name, reason] : m_leftOut)
        if (!system.projected && name.match(system.name).hasMatch())
            return refuse(system, QStringLiteral("left out"), reason);
    const EpsgDatum *datum = m_epsg.datum(system.datum);
    const auto definition = Srs::fromEpsg(system.code);
    if (!datum || !definition || system.area.name.isEmpty())
        return refuse(system, QStringLiteral("not usable"),
                      QStringLiteral("no datum, area of use or definition"));

    if (!system.projected && system.unitFactor > 0.0 &&
        std::fabs(system.unitFactor / 0.017453292519943295 - 1.0) > sameUnit)
        return refuse(system, QStringLiteral("unit"), m_epsg.unit(system.unit).name);
    const DatumChoice choice = m_datums.choose(system);
    if (choice.candidates.empty())
        return refuse(system, choice.reason, datum->name);
    const PlaneCheck check(system, *datum, *definition);
    QString fault = QStringLiteral("no projection of MapInfo's");
    const auto found = search(choice, formsOf(system, *definition, choice), check, fault);
    Entry entry = extra ? extra->entry : Entry();
    if (!found) {
        DatumText::Source source = DatumText::Source::User;
        const QString written = searchWritten(system, choice, source);
        if (written.isEmpty())
            return refuse(system, QStringLiteral("method or plane"), fault);
        ++m_writtenEntries;
        return add(system, entry, written, source);
    }
    add(system, entry, found->form.withDatum(found->datum.text), found->datum.source);
    const Entry added = m_catalogue.entries.back();
    if (extra && extra->wholeWorld)
        m_bounds.addWorld(added);
    else
        m_bounds.addArea(added, system);
    addTwin(system, added, *found, choice, check);
}

/// The driver's own form (from its export of the code) first, then the library's.
std::vector<Form> Generator::formsOf(const EpsgSystem &system, const Srs &definition,
                                     const DatumChoice &choice) const
{
    if (!system.projected)
        return {Form{1, 0, {}}};
    const QString written = m_library.written(system.code, choice.candidates.front().text);
    std::vector<Form> forms;
    for (const QString &text : {definition.toCoordSys(), QStringLiteral("Earth Projection ") + written})
        if (const auto form = formOf(text, unitCode(system.unit)); form && form->unit >= 0)
            forms.push_back(*form);
    return forms;
}

/// The library's own text with the first datum that it can be proved with; empty without.
QString Generator::searchWritten(const EpsgSystem &system, const DatumChoice &choice,
                                 DatumText::Source &source) const
{
    for (const DatumText &datum : choice.candidates) {
        const QString written = system.projected ? m_library.written(system.code, datum.text) : QString();
        source = datum.source;
        if (!written.isEmpty())
            return written;
    }
    return {};
}

/// \p entry holds what a table says of the system, or nothing.
void Generator::add(const EpsgSystem &system, Entry entry, const QString &params, DatumText::Source source)
{
    const bool isExtra = m_extraByCode.count(system.code) > 0;
    if (!isExtra)
        entry.category = m_categories.of(system.name, system.area.name, system.projected);
    entry.epsg = system.code;
    entry.rank = isExtra ? 0 : m_precedence.of(system.name);
    entry.params = params;
    if (entry.nameEn.isEmpty())
        entry.nameEn = m_names.english(system);
    if (entry.nameRu.isEmpty())
        entry.nameRu = m_names.russian(system);
    m_catalogue.entries.push_back(entry);
    ++m_sources[source];
}

std::optional<Generator::Found> Generator::search(const DatumChoice &choice, const std::vector<Form> &forms,
                                                  const PlaneCheck &check, QString &fault) const
{
    for (const DatumText &datum : choice.candidates)
        for (const Form &form : forms) {
            const QString text = QStringLiteral("Earth Projection ") + form.withDatum(datum.text);
            fault = check.fault(m_library.read(text), choice.ellipsoidTolerance);
            if (fault.isEmpty())
                return Found{datum, form};
        }
    return std::nullopt;
}

/// A second entry, without a code, where the shift of the standard number is coarse.
void Generator::addTwin(const EpsgSystem &system, const Entry &entry, const Found &found,
                        const DatumChoice &choice, const PlaneCheck &check)
{
    if (!(found.datum.distance > worthATwin) || choice.accurate.isEmpty())
        return;
    Entry twin = entry;
    twin.epsg = 0;
    twin.params = found.form.withDatum(choice.accurate);
    if (!check.fault(m_library.read(twin.coordSys()), choice.ellipsoidTolerance).isEmpty())
        return;
    const bool standard = system.datum == pulkovo1942;
    const QString remark = standard ? QStringLiteral(" (GOST)") : QStringLiteral(" (accurate shift)");
    twin.nameEn += remark;
    twin.nameRu += m_names.remark(remark, entry.nameRu);
    m_catalogue.entries.push_back(twin);
    ++m_accurateTwins;
}

void Generator::refuse(const EpsgSystem &system, const QString &reason, const QString &detail)
{
    m_refusals.push_back({system.code, system.name, reason, detail});
}

} // namespace catalogue
