#include "datums/DatumChoice.h"

#include "reading/Numbers.h"
#include "reading/Patterns.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace catalogue {
namespace {

constexpr int xian1980 = 6610;          // EPSG datum
constexpr double xianTolerance = 0.02;  // metres: EPSG says 1/298.257, MapInfo's IAG 75 1/298.257222
constexpr double sameAxis = 0.001;      // metres
constexpr double sameMeridian = 1.0e-8; // degrees
constexpr double tooFar = 100.0;        // metres: beyond it a standard number misleads
constexpr int grs80 = 0;                // ellipsoid number
constexpr int grs80Datum = 33;

} // namespace

QString userDatumText(int ellipsoid, const Figures &figures, double meridian)
{
    const bool turned = std::any_of(figures.begin() + 3, figures.end(), [](double f) { return f != 0.0; });
    const bool full = turned || meridian != 0.0;
    QStringList parts{full ? QStringLiteral("9999") : QStringLiteral("999"), QString::number(ellipsoid)};
    for (std::size_t i = 0; i < (full ? figures.size() : 3); ++i)
        parts << numberText(figures[i], 10);
    if (full)
        parts << numberText(meridian, 12);
    return parts.join(QStringLiteral(", "));
}

DatumChooser::DatumChooser(const Epsg &epsg, const Driver &driver, const Shifts &shifts,
                           const QString &tables)
    : m_epsg(epsg)
    , m_driver(driver)
    , m_shifts(shifts)
{
    for (const Table::Row &row : Table(tables + QStringLiteral("/datums_uncoded.tsv")))
        m_uncoded.insert(row.integer("id"));
    for (const Table::Row &row : Table(tables + QStringLiteral("/zero_shift.tsv")))
        m_zeroShift.push_back(pattern(row.text("datum")));
    for (const Table::Row &row : Table(tables + QStringLiteral("/datum_overrides.tsv")))
        m_overrides.push_back({pattern(row.text("datum")), pattern(row.text("area")),
                               row.integer("number", -1), row.text("shift"), row.integer("ellipsoid", -1)});
}

const DatumChooser::Override *DatumChooser::overrideFor(const EpsgDatum &datum, const Area &area) const
{
    for (const Override &rule : m_overrides)
        if (rule.datum.match(datum.name).hasMatch() && rule.area.match(area.name).hasMatch())
            return &rule;
    return nullptr;
}

std::optional<Figures> DatumChooser::bestFigures(const EpsgDatum &datum, const Area &area,
                                                 const Override *rule) const
{
    if (rule && rule->shift == QLatin1String("zero"))
        return Figures{};
    if (rule && !rule->shift.isEmpty()) {
        const auto shift = m_shifts.byOperation(rule->shift.toInt());
        if (!shift)
            throw Failure(QStringLiteral("the database has no operation %1").arg(rule->shift));
        return shift->figures;
    }
    if (const auto shift = m_shifts.best(datum.code, area))
        return shift->figures;
    // Without a transformation only frames that are known to follow WGS 84 may be taken for it: "modern by
    // its date" is not enough, the Israeli IG05/12 is 78 m off.
    for (const QRegularExpression &known : m_zeroShift)
        if (known.match(datum.name).hasMatch())
            return Figures{};
    return std::nullopt;
}

std::vector<std::pair<int, DatumText::Source>> DatumChooser::numbers(const EpsgSystem &system,
                                                                     const EpsgDatum &datum,
                                                                     const Override *rule,
                                                                     const std::optional<Figures> &best) const
{
    using Source = DatumText::Source;
    std::vector<std::pair<int, Source>> result;
    const auto add = [&](int number, Source source) {
        const DriverDatum *known = m_driver.datum(number);
        const bool fits = known && known->ellipsoid >= 0 && known->axes.isNear(datum.ellipsoid, sameAxis) &&
                          std::fabs(known->meridian - datum.meridian) <= sameMeridian &&
                          !m_uncoded.count(number);
        if (fits &&
            std::none_of(result.begin(), result.end(), [=](const auto &r) { return r.first == number; }))
            result.emplace_back(number, source);
    };
    if (rule && rule->number >= 0)
        add(rule->number, Source::Standard);
    add(m_driver.numberFor(datum.code), Source::Standard);

    using Rank = std::tuple<double, double, int>; // covered share, distance, number
    std::vector<Rank> ranks;
    for (const auto &[number, known] : m_driver.datums())
        for (const EqualShift &equal : known.equals) {
            const double share = equal.datum == datum.code ? system.area.shareCoveredBy(equal.area) : 0.0;
            if (share > 0.5)
                ranks.emplace_back(
                    -std::round(share * 10.0),
                    best ? distance(known.figures, *best, system.area.centre(), datum.ellipsoid) : 0.0,
                    number);
        }
    std::sort(ranks.begin(), ranks.end());
    for (const Rank &rank : ranks)
        add(std::get<int>(rank), Source::EqualShift);
    if (best && *best == Figures{})
        add(grs80Datum, Source::Grs80);
    return result;
}

DatumChoice DatumChooser::choose(const EpsgSystem &system) const
{
    DatumChoice choice;
    const EpsgDatum *datum = m_epsg.datum(system.datum);
    if (!datum) {
        choice.reason = QStringLiteral("no datum");
        return choice;
    }
    if (datum->code == xian1980)
        choice.ellipsoidTolerance = xianTolerance;
    const Override *rule = overrideFor(*datum, system.area);
    const auto ellipsoids = m_driver.ellipsoidsNear(datum->ellipsoid, choice.ellipsoidTolerance);
    const auto best = bestFigures(*datum, system.area, rule);
    for (const auto &[number, source] : numbers(system, *datum, rule, best)) {
        const Figures &figures = m_driver.datum(number)->figures;
        const double off = best ? distance(figures, *best, system.area.centre(), datum->ellipsoid) : 0.0;
        if (off <= tooFar)
            choice.candidates.push_back({source, QString::number(number), off});
    }
    if (best && !ellipsoids.empty()) {
        const int ellipsoid = rule && rule->ellipsoid >= 0 ? rule->ellipsoid : ellipsoids.front();
        choice.accurate = userDatumText(ellipsoid, *best, datum->meridian);
        choice.candidates.push_back({DatumText::Source::User, choice.accurate, 0.0});
    }
    if (choice.candidates.empty())
        choice.reason = ellipsoids.empty() ? QStringLiteral("ellipsoid unknown to the driver")
                                           : QStringLiteral("no shift known");
    return choice;
}

} // namespace catalogue
