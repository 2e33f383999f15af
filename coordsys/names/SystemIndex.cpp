#include "SystemIndex_p.h"

#include "GeographicExtent_p.h"
#include "ProjLists_p.h"
#include "SearchContext_p.h"
#include "SearchWords_p.h"
#include <coordsys/MapinfoCoordSystem.h>

#include <proj.h>

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace nivora::cs {
namespace {

constexpr std::string_view zoneWords[] = {"zone", "зона", "зоны", "zona", "fuseau",
                                          "faja", "huso", "fuso", "belt"};
constexpr std::string_view familyWords[] = {"utm",  "kruger", "mga", "amg", "mtm",       "lo",   "tm",
                                            "dktm", "ntm",    "ctm", "cs",  "argentina", "блок", "gk"};

template <std::size_t Size> bool isAmong(const std::string_view (&list)[Size], const std::string &word)
{
    return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

bool isNumber(const std::string &word)
{
    return !word.empty() &&
           std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The Polish zones are named by their meridians: "CS2000/21" is zone 7.
std::optional<int> polishZone(const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("CS2000/(\\d+)")); // "ETRF2000-PL / CS2000/21"
    const auto match = pattern.match(name);
    return match.hasMatch() ? std::optional<int>(match.captured(1).toInt() / 3) : std::nullopt;
}

ZoneInName zoneIn(const QString &name)
{
    const std::vector<std::string> words = wordsOf(name);
    ZoneInName zone;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == "cm" && isNumber(words[i + 1])) {
            zone.meridian = zoneNumber(words[i + 1]);
            return zone;
        }
        if (!precedesZone(words[i]) || !zoneNumber(words[i + 1]))
            continue;
        zone.number = zoneNumber(words[i + 1]);
        const std::string behind = i + 2 < words.size() ? words[i + 2] : std::string();
        zone.hemisphere = behind == "n" || behind == "s" ? behind.front() : '\0';
    }
    if (const auto polish = polishZone(name))
        zone.number = polish;
    return zone;
}

const QRegularExpression &realization()
{
    static const QRegularExpression pattern(
        QStringLiteral("\\((HARN|NSRS2007|2011|CSRS\\w*|FBN|CORS96|MA11|PA11|ED\\d+)\\)"));
    return pattern;
}

/// What the name of a system tells of how often it is meant. The first column is part of the name.
double standingOfName(const QString &name)
{
    struct Mark
    {
        QRegularExpression pattern;
        double standing;
    };
    // Twins with other axes, realizations beside the everyday one, spheres instead of the earth.
    static const Mark marks[] = {
        {QRegularExpression(QStringLiteral("\\((N-E|E-N|N,E)\\)|zE-N|\\(zN-E\\)")), -1.2},
        {realization(), -0.8},
        {QRegularExpression(QStringLiteral("v[2-9]\\w?\\b|truncated|deprecated")), -1.0},
        {QRegularExpression(QStringLiteral("3-degree|3GK")), -1.0},
        {QRegularExpression(QStringLiteral("grid system \\(")),
         -4.0}, // all zones at once: nothing computes them
        {QRegularExpression(QStringLiteral("\\(lon-lat\\)|^Sphere_|\\((sphere|сфера)\\)")), -1.2},
        {QRegularExpression(QStringLiteral("^Pulkovo 1942 /")), 0.3},
        {QRegularExpression(QStringLiteral("^NAD83 /")), 0.4},
        {QRegularExpression(QStringLiteral("^WGS 84$")), 0.8},
    };
    double standing = 0.0;
    for (const Mark &mark : marks)
        if (mark.pattern.match(name).hasMatch())
            standing += mark.standing;
    return standing;
}

double standingOf(const QString &authority)
{
    static const std::pair<const char *, double> authorities[] = {
        {"EPSG", 0.0}, {"OGC", -2.5}, {"ESRI", -2.0}, {"IGNF", -2.0}, {"IAU_2015", -2.0}};
    for (const auto &[name, standing] : authorities)
        if (authority == QLatin1String(name))
            return standing;
    return -2.0;
}

bool isInFeet(const QString &name)
{
    return name.contains(QLatin1String("(ft"), Qt::CaseInsensitive) ||
           name.contains(QLatin1String("feet"), Qt::CaseInsensitive);
}

QRectF extentOf(const PROJ_CRS_INFO &info)
{
    if (!info.bbox_valid)
        return {};
    return eastward(QRectF(QPointF(info.west_lon_degree, info.south_lat_degree),
                           QPointF(info.east_lon_degree, info.north_lat_degree)));
}

bool isIndexed(const PROJ_CRS_INFO &info)
{
    return info.type == PJ_TYPE_GEOGRAPHIC_2D_CRS || info.type == PJ_TYPE_GEOGRAPHIC_3D_CRS ||
           info.type == PJ_TYPE_PROJECTED_CRS;
}

} // namespace

std::optional<int> romanValue(const std::string &word)
{
    for (int value = 1; value < 40; ++value)
        if (romanNumeral(std::to_string(value)) == word)
            return value;
    return std::nullopt;
}

std::optional<int> zoneNumber(const std::string &word)
{
    if (isNumber(word))
        return word.size() <= 3 ? std::optional<int>(std::stoi(word)) : std::nullopt;
    const bool isRoman = !word.empty() && word.find_first_not_of("ivx") == std::string::npos;
    return isRoman ? romanValue(word) : std::nullopt;
}

bool precedesZone(const std::string &word) { return isAmong(zoneWords, word) || isAmong(familyWords, word); }

SystemIndex::SystemIndex(const MapinfoCoordSystem &catalogue)
    : m_categories(catalogue.projectionList())
{
    for (int category = 0; category < m_categories.size(); ++category) {
        const CoordSystemParamsList &list = m_categories.at(category);
        const std::vector<int> group = numbers(list.name);
        for (int index = 0; index < list.entries.size(); ++index) {
            const CoordSystemParams &params = list.entries.at(index);
            IndexedSystem system;
            system.hit = {{category, index}, list.name, params.name(), params.epsg(), {}};
            if (params.epsg() > 0)
                system.hit.code = QStringLiteral("EPSG:%1").arg(params.epsg());
            else
                system.standing -= 1.5; // beside the system of a code, a second form of it mostly
            system.group = group;
            describe(system, params.name());
            if (!system.hit.code.isEmpty() && !m_byCode.contains(system.hit.code))
                m_byCode.insert(system.hit.code, static_cast<int>(m_systems.size()));
            m_systems.push_back(std::move(system));
        }
    }
}

void SystemIndex::addNames(const MapinfoCoordSystem &otherLanguage)
{
    const QList<CoordSystemParamsList> theirs = otherLanguage.projectionList();
    for (IndexedSystem &system : m_systems) {
        const auto [category, index] = system.hit.position;
        if (category < 0 || category >= theirs.size() || index >= theirs.at(category).entries.size())
            continue;
        const CoordSystemParams &other = theirs.at(category).entries.at(index);
        if (other.params != m_categories.at(category).entries.at(index).params)
            continue;
        system.others.push_back(numbers(other.name()));
        const std::vector<int> group = numbers(theirs.at(category).name);
        system.group.insert(system.group.end(), group.begin(), group.end());
    }
}

void SystemIndex::addDatabase()
{
    const SearchContext context;
    forEachSystem(context.get(), nullptr, nullptr, [this](const PROJ_CRS_INFO &info) {
        if (!isIndexed(info))
            return;
        const QString authority = QString::fromUtf8(info.auth_name);
        const QString code = authority + QLatin1Char(':') + QString::fromUtf8(info.code);
        const QString name = QString::fromUtf8(info.name);
        int at = withCode(code);
        if (at < 0) {
            at = static_cast<int>(m_systems.size());
            m_byCode.insert(code, at);
            IndexedSystem system;
            const int epsg = authority == QLatin1String("EPSG") ? QByteArray(info.code).toInt()
                                                                : CoordSystemTypes::EPSG_UNDEFINDED;
            system.hit = {{-1, -1}, {}, name, epsg, code};
            system.standing = standingOf(authority) - 0.3;
            m_systems.push_back(std::move(system));
        }
        IndexedSystem &system = m_systems[static_cast<std::size_t>(at)];
        if (system.hit.isInCatalogue()) {
            system.others.push_back(system.name);
            system.standing = 0.0;
        }
        describe(system, name);
        system.hit.isWithdrawn = info.deprecated != 0;
        system.standing -= info.deprecated ? 3.0 : 0.0;
        system.standing -=
            info.type == PJ_TYPE_GEOGRAPHIC_3D_CRS ? 8.0 : 0.0; // acts as the plain one, and has its name
        system.isGeographic = info.type != PJ_TYPE_PROJECTED_CRS;
        system.extent = extentOf(info);
        system.share = system.extent.isNull() ? 1.0 : shareOfEarth(system.extent);
        system.area = areaNamed(QString::fromUtf8(info.area_name));
        const std::vector<int> method = numbers(QString::fromUtf8(info.projection_method_name));
        system.group.insert(system.group.end(), method.begin(), method.end());
    });
}

void SystemIndex::addOwn(const CodelessSystem &own)
{
    constexpr double sought = 2.0; // who keeps a system of a name means it by that name
    IndexedSystem system;
    system.hit = {own.position, own.branch, own.name, CoordSystemTypes::EPSG_UNDEFINDED, {}};
    system.standing = sought;
    system.group = numbers(own.branch);
    describe(system, own.name);
    m_systems.push_back(std::move(system));
}

std::vector<std::pair<int, LocatedSystem>> SystemIndex::locate(const std::vector<CodelessSystem> &codeless,
                                                               const CodelessAreas &areas)
{
    std::map<std::pair<int, int>, int> numbers;
    for (std::size_t i = 0; i < m_systems.size(); ++i)
        if (m_systems[i].hit.code.isEmpty())
            numbers.emplace(m_systems[i].hit.position, static_cast<int>(i));
    std::vector<std::pair<int, LocatedSystem>> all;
    for (const CodelessSystem &one : codeless) {
        const auto number = numbers.find(one.position);
        const std::optional<LocatedSystem> there = number == numbers.end() ? std::nullopt : areas.of(one);
        if (!there)
            continue;
        IndexedSystem &system = m_systems[static_cast<std::size_t>(number->second)];
        system.extent = there->extent;
        system.share = shareOfEarth(there->extent);
        system.isGeographic = there->metresPerUnit == 0.0;
        all.emplace_back(number->second, *there);
    }
    return all;
}

/// What the name tells. Of a catalogued system with a code the database's name is taken instead of the
/// catalogue's: zones and marks are spelled there in one way.
void SystemIndex::describe(IndexedSystem &system, const QString &englishName)
{
    static const QRegularExpression digits(QStringLiteral("(?<!\\d)\\d{1,3}(?!\\d)")); // no years
    system.name = numbers(englishName);
    system.zone = zoneIn(englishName);
    system.isInFeet = isInFeet(englishName);
    system.isRealization = realization().match(englishName).hasMatch();
    system.standing += standingOfName(englishName) - (system.isInFeet ? 0.6 : 0.0);
    const int abbreviated = number("gk");
    if (std::find(system.name.begin(), system.name.end(), abbreviated) != system.name.end()) {
        const std::vector<int> full = numbers(QStringLiteral("gauss kruger"));
        system.group.insert(system.group.end(), full.begin(), full.end());
    }
    QString pattern = englishName.section(QLatin1Char('/'), -1);
    if (pattern.contains(digits)) {
        pattern = QString(englishName).replace(digits, QStringLiteral("#"));
        system.family = m_families.value(pattern, m_families.size());
        m_families.insert(pattern, system.family);
    }
}

int SystemIndex::numberOf(const std::string &word) const
{
    const auto known = m_numbers.find(word);
    return known == m_numbers.end() ? -1 : known->second;
}

bool SystemIndex::hasInName(const std::string &word, const std::string &next) const
{
    const std::array<int, 2> pair{numberOf(word), numberOf(next)};
    if (pair[0] < 0 || pair[1] < 0)
        return false;
    return std::any_of(m_systems.begin(), m_systems.end(), [&pair](const IndexedSystem &system) {
        return std::search(system.name.begin(), system.name.end(), pair.begin(), pair.end()) !=
               system.name.end();
    });
}

int SystemIndex::number(const std::string &word)
{
    const auto [at, isNew] = m_numbers.emplace(word, static_cast<int>(m_words.size()));
    if (isNew)
        m_words.push_back(word);
    return at->second;
}

std::vector<int> SystemIndex::numbers(const QString &text)
{
    std::vector<int> result;
    for (const std::string &word : wordsOf(text))
        result.push_back(number(word));
    return result;
}

int SystemIndex::areaNamed(const QString &area)
{
    const auto known = m_areas.constFind(area);
    if (known != m_areas.constEnd())
        return *known;
    m_areas.insert(area, static_cast<int>(m_areaWords.size()));
    static const QRegularExpression degrees(
        QStringLiteral("\\d+")); // "85.06°S" is not what a number asks for
    m_areaWords.push_back(numbers(QString(area).remove(degrees)));
    return static_cast<int>(m_areaWords.size()) - 1;
}

} // namespace nivora::cs
