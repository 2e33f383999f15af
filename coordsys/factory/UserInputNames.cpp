#include "UserInputNames_p.h"

#include "ProjLists_p.h"
#include "SearchContext_p.h"
#include "SearchWords_p.h"
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/ProjEngine.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QRegularExpression>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int mostNearest = 5;
constexpr int longestName = 100; ///< longer texts are no names
constexpr int deprecatedRank = 4;
constexpr int planelessRank = 32;
constexpr int leastPart = 3; ///< letters that a part of a name must have to be near it

// ---- Names

bool isSameName(const QString &a, const QString &b)
{
    return a.simplified().compare(b.simplified(), Qt::CaseInsensitive) == 0;
}

/// Letters and digits in lower case, accents taken off; the plus of "CH1903+" tells systems apart.
QString folded(const QString &name)
{
    const bool isAscii = std::all_of(name.begin(), name.end(), [](QChar c) { return c.unicode() < 0x80; });
    const QString plain = isAscii ? name : name.normalized(QString::NormalizationForm_KD);
    QString result;
    result.reserve(plain.size());
    for (const QChar c : plain)
        if (c.isLetterOrNumber() || c == QLatin1Char('+'))
            result += c.toLower();
    return result;
}

/// People leave the word out: "WGS84 UTM 37N".
QString withoutZone(QString foldedName)
{
    return foldedName.remove(QLatin1String("zone")).remove(QString::fromUtf8("зона"));
}

/// Spellings under which the database may have a name that is written in another way: "WGS 1984 UTM Zone 37N"
/// as Esri's programs show it, "NAD 83".
QStringList spellings(const QString &name)
{
    static const QRegularExpression gap(QStringLiteral("(?<=[a-z]) (?=\\d)"),
                                        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression slash(QStringLiteral("\\s*/\\s*"));
    const QString underlined = QString(name).replace(QLatin1Char(' '), QLatin1Char('_'));
    QStringList result{underlined, QStringLiteral("GCS_") + underlined, QString(name).remove(gap),
                       QString(name).replace(slash, QStringLiteral(" / "))};
    result.removeDuplicates();
    result.removeAll(name);
    return result;
}

/// Letters and digits apart, as words of a folded name.
QStringList partsOf(const QString &text)
{
    static const QRegularExpression part(QStringLiteral("\\d+|[^\\W\\d_]+"),
                                         QRegularExpression::UseUnicodePropertiesOption);
    QStringList parts;
    for (auto match = part.globalMatch(text); match.hasNext();)
        parts << folded(match.next().captured());
    return parts;
}

/// A number has to stand whole.
bool holdsPart(const QString &foldedName, const QString &part)
{
    const auto isDigit = [&](int at) {
        return at >= 0 && at < foldedName.size() && foldedName.at(at).isDigit();
    };
    for (int at = foldedName.indexOf(part); at >= 0; at = foldedName.indexOf(part, at + 1))
        if (!part.at(0).isDigit() || (!isDigit(at - 1) && !isDigit(at + part.size())))
            return true;
    return false;
}

int rankOfType(PJ_TYPE type)
{
    switch (type) {
    case PJ_TYPE_GEOGRAPHIC_2D_CRS:
    case PJ_TYPE_PROJECTED_CRS:
        return 0;
    case PJ_TYPE_COMPOUND_CRS:
        return 8;
    case PJ_TYPE_GEOGRAPHIC_3D_CRS:
        return 16;
    default:
        return planelessRank;
    }
}

bool isEpsg(const char *authority) { return qstricmp(authority, "EPSG") == 0; }

QString codeText(const char *authority, const char *code)
{
    return QString::fromUtf8(authority) + QLatin1Char(':') + QString::fromUtf8(code);
}

NamedSystem systemOf(const PJ *crs, const QString &text)
{
    const QString name = QString::fromUtf8(proj_get_name(crs));
    const char *authority = proj_get_id_auth_name(crs, 0);
    const int rank = rankOfType(proj_get_type(crs)) + (proj_is_deprecated(crs) ? deprecatedRank : 0) +
                     (isSameName(name, text) ? 0 : 2) + (isEpsg(authority) ? 0 : 1);
    return {name, codeText(authority, proj_get_id_code(crs, 0)), QString(), rank};
}

/// The likeliest, each once.
QVector<NamedSystem> best(const QVector<NamedSystem> &systems)
{
    int least = std::numeric_limits<int>::max();
    for (const NamedSystem &system : systems)
        least = std::min(least, system.rank);
    QVector<NamedSystem> result;
    for (const NamedSystem &system : systems) {
        const auto isSame = [&](const NamedSystem &other) {
            return system.code.isEmpty() ? system.prj == other.prj : system.code == other.code;
        };
        if (system.rank == least && std::none_of(result.begin(), result.end(), isSame))
            result << system;
    }
    return result;
}

QVector<NamedSystem> namedInDatabase(const QString &text)
{
    const SearchContext context;
    const PJ_TYPE anyCrs = PJ_TYPE_CRS;
    const PjList list(
        proj_create_from_name(context.get(), nullptr, text.toUtf8().constData(), &anyCrs, 1, 0, 0, nullptr));
    QVector<NamedSystem> found;
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i) {
        const PjHandle crs = ownPj(proj_list_get(context.get(), list.get(), i));
        if (crs && proj_get_id_code(crs.get(), 0))
            found << systemOf(crs.get(), text);
    }
    return best(found);
}

QVector<NamedSystem> withPlane(const QVector<NamedSystem> &systems)
{
    return !systems.isEmpty() && systems.first().isHorizontal() ? systems : QVector<NamedSystem>();
}

template <typename Fits> QVector<NamedSystem> bestOf(const QVector<NamedSystem> &systems, Fits &&fits)
{
    QVector<NamedSystem> found;
    std::copy_if(systems.begin(), systems.end(), std::back_inserter(found), fits);
    return best(found);
}

void appendEntries(const MapinfoCoordSystem &catalogue, bool isForeign, QVector<NamedSystem> &systems)
{
    const QList<CoordSystemParamsList> categories = catalogue.projectionList();
    for (const CoordSystemParamsList &category : categories)
        for (const CoordSystemParams &entry : category.entries)
            systems << NamedSystem{entry.name(),
                                   entry.epsg() > 0 ? QStringLiteral("EPSG:%1").arg(entry.epsg()) : QString(),
                                   entry.asPrjString(), 0, isForeign};
}

// ---- Similarity

/// What is looked for among names.
struct Wanted
{
    QString text;      ///< folded
    QStringList parts; ///< its words
    int limit;         ///< of unlikeness
};

/// How far a folded name is from the text: letters to change, or a little for a name that holds the text or
/// all of its words.
int unlikeness(const Wanted &wanted, const QString &name)
{
    const int limit = wanted.limit;
    const int distance = editDistance(wanted.text, name, limit);
    const bool holdsAll = wanted.text.size() >= leastPart &&
                          std::all_of(wanted.parts.begin(), wanted.parts.end(),
                                      [&name](const QString &part) { return holdsPart(name, part); });
    if (!holdsAll)
        return distance;
    return std::min({distance, 1 + std::max(0, int(name.size() - wanted.text.size())) / 8, limit});
}

struct Scored
{
    int score;
    QString shown;
};

/// The texts of the best ones, each once.
QStringList bestScored(std::vector<Scored> &scored)
{
    std::stable_sort(scored.begin(), scored.end(),
                     [](const Scored &a, const Scored &b) { return a.score < b.score; });
    QStringList shown;
    for (const Scored &one : scored)
        if (shown.size() < mostNearest && !shown.contains(one.shown))
            shown << one.shown;
    return shown;
}

/// "British National Grid" of "OSGB36 / British National Grid", "WGS 84" of "Longitude / Latitude (WGS 84)"
QString tailOf(const QString &name)
{
    return name.endsWith(QLatin1Char(')')) ? name.section(QLatin1Char('('), -1)
                                           : name.section(QLatin1String(" / "), -1);
}

void score(const QVector<NamedSystem> &systems, const QString &text, std::vector<Scored> &scored)
{
    const QString wanted = folded(text);
    const Wanted like{wanted, partsOf(text), std::max(2, int(wanted.size() / 3))};
    for (const NamedSystem &system : systems) {
        const int unlike =
            std::min(unlikeness(like, folded(system.name)), unlikeness(like, folded(tailOf(system.name))));
        if (unlike <= like.limit)
            scored.push_back({unlike, system.shown()});
    }
}

} // namespace

bool NamedSystem::isHorizontal() const { return rank < planelessRank; }

QString NamedSystem::shown() const
{
    return code.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, code);
}

SystemNames::SystemNames(const MapinfoCoordSystem &catalogue, const QDir &resources, const QString &language)
    : m_resources(resources)
    , m_language(language)
    , m_ownFile(QStringLiteral("projections_%1.prj").arg(language))
{
    appendEntries(catalogue, false, m_own);
}

const QVector<NamedSystem> &SystemNames::foreignSystems() const
{
    if (!m_foreign.isEmpty())
        return m_foreign;
    const QFileInfoList files = m_resources.entryInfoList({QStringLiteral("projections_*.prj")}, QDir::Files);
    for (const QFileInfo &file : files) {
        if (file.fileName() == m_ownFile)
            continue;
        try {
            MapinfoCoordSystem other{MapinfoCoordSystem::Creator()};
            other.loadFromPRJ(file);
            appendEntries(other, true, m_foreign);
        } catch (const std::runtime_error &e) {
            LOG_ERROR(QString::fromUtf8(e.what()));
        }
    }
    return m_foreign;
}

const QVector<NamedSystem> &SystemNames::databaseSystems() const
{
    if (!m_database.isEmpty())
        return m_database;
    const SearchContext context;
    forEachSystem(context.get(), nullptr, nullptr, [this](const PROJ_CRS_INFO &info) {
        const int rank =
            rankOfType(info.type) + (info.deprecated ? deprecatedRank : 0) + (isEpsg(info.auth_name) ? 0 : 1);
        m_database << NamedSystem{QString::fromUtf8(info.name), codeText(info.auth_name, info.code),
                                  QString(), rank};
    });
    return m_database;
}

QVector<NamedSystem> SystemNames::named(const QString &text) const
{
    if (text.size() > longestName)
        return {};
    const QVector<NamedSystem> registered = namedInDatabase(text.simplified());
    if (!registered.isEmpty())
        return registered;
    return fromCatalogues([&](const NamedSystem &system) { return isSameName(system.name, text); });
}

QVector<NamedSystem> SystemNames::namedLoosely(const QString &text) const
{
    const QString wanted = folded(text);
    if (wanted.isEmpty() || text.size() > longestName)
        return {};
    const auto isSame = [&](const NamedSystem &system) { return folded(system.name) == wanted; };
    const auto isSameButZone = [bare = withoutZone(wanted)](const NamedSystem &system) {
        return withoutZone(folded(system.name)) == bare;
    };
    QVector<NamedSystem> found = fromCatalogues(isSame);
    for (const QString &spelling : spellings(text.simplified()))
        if (found.isEmpty())
            found = withPlane(namedInDatabase(spelling));
    if (found.isEmpty())
        found = aliased(text);
    if (found.isEmpty())
        found = fromCatalogues(isSameButZone);
    return found.isEmpty() && nearest(text).isEmpty() && isOfNames(text) ? bestOf(databaseSystems(), isSame)
                                                                         : found;
}

/// Whether some name has a word of the text: the database's thousands of names, which take a tenth of a
/// second, are not read for a text that means nothing.
bool SystemNames::isOfNames(const QString &text) const
{
    const QStringList parts = partsOf(text);
    const auto hasPart = [&parts](const NamedSystem &system) {
        const QString name = folded(system.name);
        return std::any_of(parts.begin(), parts.end(), [&name](const QString &part) {
            return part.size() >= leastPart && holdsPart(name, part);
        });
    };
    return std::any_of(m_own.begin(), m_own.end(), hasPart) ||
           std::any_of(foreignSystems().begin(), foreignSystems().end(), hasPart);
}

const std::vector<SearchAlias> &SystemNames::aliases() const
{
    if (!m_aliases)
        m_aliases = aliasesIn(QFileInfo(m_resources, QStringLiteral("aliases.tsv")))
                        .value_or(std::vector<SearchAlias>());
    return *m_aliases;
}

/// What people say for it, where that is all they say.
QVector<NamedSystem> SystemNames::aliased(const QString &text) const
{
    const std::vector<std::string> words = wordsOf(text);
    for (const SearchAlias &alias : aliases()) {
        if (std::find(alias.names.begin(), alias.names.end(), words) == alias.names.end())
            continue;
        QVector<NamedSystem> systems;
        for (const QString &code : alias.codes)
            systems << NamedSystem{
                databaseName(code.section(QLatin1Char(':'), 0, 0), code.section(QLatin1Char(':'), 1)), code,
                QString()};
        QStringList instead;
        for (const std::string &word : alias.words)
            instead << QString::fromStdString(word);
        return !systems.isEmpty() || instead.isEmpty() ? systems : named(instead.join(QLatin1Char(' ')));
    }
    return {};
}

QString SystemNames::remark(const QString &text) const
{
    const std::vector<std::string> words = wordsOf(text);
    const auto isIn = [&words](const std::string &word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    for (const SearchAlias &alias : aliases())
        for (const std::vector<std::string> &name : alias.names)
            if (std::all_of(name.begin(), name.end(), isIn) && !alias.remark(m_language).isEmpty())
                return alias.remark(m_language);
    return {};
}

QVector<NamedSystem> SystemNames::fromCatalogues(const std::function<bool(const NamedSystem &)> &fits) const
{
    const QVector<NamedSystem> own = bestOf(m_own, fits);
    return own.isEmpty() ? bestOf(foreignSystems(), fits) : own;
}

QStringList SystemNames::nearest(const QString &text) const
{
    std::vector<Scored> scored;
    if (text.size() > longestName)
        return {};
    score(m_own, text, scored);
    score(foreignSystems(), text, scored);
    return bestScored(scored);
}

QStringList databaseAuthorities()
{
    // PROJ walks through the whole database for them.
    static const QStringList &known = *new QStringList([] {
        const SearchContext context;
        return textsOf(PjStringList(proj_get_authorities_from_database(context.get())));
    }());
    return known;
}

QString databaseName(const QString &authority, const QString &code)
{
    const SearchContext context;
    const PjHandle crs =
        ownPj(proj_create_from_database(context.get(), authority.toUtf8().constData(),
                                        code.toUtf8().constData(), PJ_CATEGORY_CRS, 0, nullptr));
    return crs ? QString::fromUtf8(proj_get_name(crs.get())) : QString();
}

QStringList nearestCodes(const QString &authority, const QString &code)
{
    constexpr int limit = 1;
    const SearchContext context;
    const QStringList codes = textsOf(PjStringList(
        proj_get_codes_from_database(context.get(), authority.toUtf8().constData(), PJ_TYPE_CRS, 0)));
    std::vector<Scored> scored;
    for (const QString &known : codes) {
        const int distance = editDistance(code.toUpper(), known.toUpper(), limit);
        if (distance <= limit && code.size() > limit)
            scored.push_back({std::abs(known.toInt() - code.toInt()), known});
    }
    QStringList shown = bestScored(scored);
    for (QString &known : shown)
        known = QStringLiteral("%1:%2 (%3)").arg(authority, known, databaseName(authority, known));
    return shown;
}

QString nearestWord(const QString &word, const QStringList &words)
{
    constexpr int limit = 2;
    std::vector<Scored> scored;
    for (const QString &known : words) {
        const int distance = editDistance(word.toUpper(), known.toUpper(), limit);
        if (distance <= limit && distance < known.size())
            scored.push_back({distance, known});
    }
    return bestScored(scored).value(0);
}

} // namespace nivora::cs
