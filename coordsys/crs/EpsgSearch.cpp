#include "EpsgSearch_p.h"

#include "CatalogueToken_p.h"
#include "CodeAcceptance_p.h"
#include "CrsDefinition_p.h"
#include "CrsJudge_p.h"
#include "CrsParts_p.h"
#include "EngineGate_p.h"
#include "ProjectionTable_p.h"
#include "SearchContext_p.h"
#include <coordsys/SpatialReferenceText.h>
#include <platform/Logger.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace nivora::cs {
namespace {

using nivora::concurrent::ProgressHandler;

constexpr int undefined = CoordSystemTypes::EPSG_UNDEFINDED;
constexpr int leastConfidence = 50; // GDAL gives 25 to systems that merely resemble; right ones begin at 50
constexpr int sureEnough = 70;      // PROJ's own measure, for texts that name their datum
constexpr int mostDatums = 16;      // a tie of more is a family of frames that figures cannot tell apart

/// A registered system that a search offers.
struct Candidate
{
    int code;
    QString datum;
};

bool isCanceled(const std::shared_ptr<ProgressHandler> &progress)
{
    return progress && progress->isCanceled();
}

/// The everyday system before its twins: those in force, then those with the axes as maps have them.
int rankOf(int code)
{
    const SearchContext context;
    const PjHandle crs = ownPj(proj_create_from_database(
        context.get(), "EPSG", QByteArray::number(code).constData(), PJ_CATEGORY_CRS, false, nullptr));
    if (!crs)
        return 2;
    const bool isTurned = kindOf(context.get(), crs.get()) == CrsKind::Projected &&
                          axisDirections(context.get(), crs.get()).value(0) != QLatin1String("east");
    return (proj_is_deprecated(crs.get()) ? 2 : 0) + (isTurned ? 1 : 0);
}

/// Of equally good ones the first of the best rank.
template <typename Candidates> void everydayFirst(Candidates &candidates)
{
    std::vector<std::pair<int, typename Candidates::value_type>> ranked;
    for (const auto &candidate : candidates)
        ranked.emplace_back(rankOf(candidate.code), candidate);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    std::transform(ranked.begin(), ranked.end(), candidates.begin(),
                   [](const auto &each) { return each.second; });
}

// ---- Candidates

bool isSameUnit(double a, double b) { return std::fabs(a - b) <= 1e-9 * b; }

/// The best ones of GDAL's search that have the same unit of length.
std::vector<Candidate> candidatesOfGdal(const CodeAcceptance &wanted,
                                        const std::shared_ptr<ProgressHandler> &progress)
{
    const std::shared_ptr<void> srs = wanted.srs();
    const MatchedSrs found = matchSrs(srs.get());
    const int *const confidences = found.confidences.get();
    std::vector<Candidate> candidates;
    if (found.count == 0 || confidences[0] < leastConfidence)
        return candidates;
    const double metresPerUnit = OSRGetLinearUnits(srs.get(), nullptr);
    const int best = *std::max_element(confidences, confidences + found.count);
    for (int i = 0; i < found.count && !isCanceled(progress); ++i) {
        OGRSpatialReferenceH match = found.list.get()[i];
        const QString authority = QString::fromLatin1(OSRGetAuthorityName(match, nullptr));
        const int code = QString::fromLatin1(OSRGetAuthorityCode(match, nullptr)).toInt();
        if (confidences[i] == best && authority.compare(QLatin1String("EPSG"), Qt::CaseInsensitive) == 0 &&
            code > 0 && isSameUnit(metresPerUnit, OSRGetLinearUnits(match, nullptr)))
            candidates.push_back({code, QString::fromUtf8(OSRGetAttrValue(match, "DATUM", 0))});
    }
    everydayFirst(candidates);
    return candidates;
}

std::vector<QString> datumsOf(const std::vector<Candidate> &candidates)
{
    std::vector<QString> datums;
    for (const Candidate &candidate : candidates)
        if (std::find(datums.begin(), datums.end(), candidate.datum) == datums.end())
            datums.push_back(candidate.datum);
    return datums;
}

// ---- Choice

std::optional<TABProjInfo_t> recordOf(const CodeAcceptance &wanted)
{
    const std::shared_ptr<void> srs = srsFromWkt(wanted.wkt());
    return srs ? recordFromSpatialReference(srs.get()) : std::nullopt;
}

/// The catalogue's entry with the same record names its code.
int cataloguedCode(const CodeAcceptance &wanted, const std::vector<Candidate> &candidates)
{
    const auto catalogues = activeCatalogues(std::nothrow);
    QVector<int> codes;
    for (const Candidate &candidate : candidates)
        codes << candidate.code;
    const std::optional<TABProjInfo_t> record = catalogues ? recordOf(wanted) : std::nullopt;
    const int code = record ? catalogues->codeOfRecord(*record, codes) : undefined;
    return code != undefined && wanted.takes(code, true) ? code : undefined;
}

/// Texts round figures, which the engines' searches take for others: the code of the catalogue's entry that
/// has them in full, as long as the plane is the code's.
int roundedCode(const CodeAcceptance &wanted, const QString &definition)
{
    const auto catalogues = activeCatalogues(std::nothrow);
    const std::optional<TABProjInfo_t> record = catalogues ? recordOf(wanted) : std::nullopt;
    const CrsDefinitionPtr mine = record ? CrsDefinition::from(definition) : nullptr;
    if (!mine || record->nProjId <= LongitudeLatitude)
        return undefined;
    const QVector<int> codes = catalogues->codesNearRecord(*record);
    const auto isTheirs = [&](int code) {
        const CrsDefinitionPtr registered = CrsDefinition::ofCode(code);
        return registered && hasPlaneOf(*mine, nullptr, *registered) && wanted.takes(code, true);
    };
    const auto found = std::find_if(codes.begin(), codes.end(), isTheirs);
    return found == codes.end() ? undefined : *found;
}

/// The one datum that the system may be on.
int codeByDatum(const CodeAcceptance &wanted, std::vector<Candidate> candidates)
{
    if (wanted.datum() == CodeAcceptance::Datum::ByShift && datumsOf(candidates).size() > mostDatums)
        return undefined;
    if (wanted.datum() == CodeAcceptance::Datum::ByShift && !wanted.hasOwnShift() &&
        datumsOf(candidates).size() != 1)
        return undefined; // zeros belong to many datums
    const auto refused = [&](const Candidate &candidate) { return !wanted.takes(candidate.code, false); };
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(), refused), candidates.end());
    return datumsOf(candidates).size() == 1 ? candidates.front().code : undefined;
}

int searchByGdal(const CodeAcceptance &wanted, const std::shared_ptr<ProgressHandler> &progress)
{
    const std::vector<Candidate> candidates = candidatesOfGdal(wanted, progress);
    if (candidates.empty())
        return undefined;
    const bool mayBeCatalogued = wanted.datum() != CodeAcceptance::Datum::PlainWgs84;
    const int catalogued = mayBeCatalogued ? cataloguedCode(wanted, candidates) : undefined;
    return catalogued != undefined ? catalogued : codeByDatum(wanted, candidates);
}

/// PROJ's search goes by names too, so it is asked where a datum has one.
int searchByProj(const CodeAcceptance &wanted, const std::shared_ptr<ProgressHandler> &progress)
{
    const SearchContext context;
    const IdentifiedCrs found = identifyCrs(context.get(), wanted.crs(), "EPSG");
    std::vector<Candidate> accepted;
    int confidence = sureEnough;
    for (int i = 0; i < found.count() && found.confidences.get()[i] >= confidence;
         ++i) { // the best come first
        const PjHandle match = ownPj(proj_list_get(context.get(), found.list.get(), i));
        const auto code = match ? codeOf(match.get(), QLatin1String("EPSG")) : std::nullopt;
        if (isCanceled(progress))
            return undefined;
        if (!code || !wanted.takes(*code, false))
            continue;
        accepted.push_back({*code, {}});
        confidence = found.confidences.get()[i];
    }
    everydayFirst(accepted);
    return accepted.empty() ? undefined : accepted.front().code;
}

int searchedCode(const QString &definition, const CrsDefinition *known,
                 const std::shared_ptr<ProgressHandler> &progress)
{
    const CodeAcceptance wanted(definition, known);
    if (!wanted.isSearchable() || isCanceled(progress))
        return undefined;
    const int identified =
        wanted.datum() == CodeAcceptance::Datum::Named ? searchByProj(wanted, progress) : undefined;
    const int matched = identified != undefined ? identified : searchByGdal(wanted, progress);
    return matched != undefined || isCanceled(progress) ? matched : roundedCode(wanted, definition);
}

/// That which keeps what searches gave; null where there is none.
CatalogueTokenPtr activeToken()
{
    const auto catalogues = activeCatalogues(std::nothrow);
    return catalogues ? catalogues->token() : nullptr;
}

/// A copy for the search: others' objects are locked only while they are copied.
std::shared_ptr<void> copyOf(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return ownSrs(OSRClone(srs));
}

} // namespace

int epsgOfDefinition(const std::shared_ptr<ProgressHandler> &progress, const QString &definition,
                     const CrsDefinition *known)
{
    const CatalogueTokenPtr token = activeToken();
    const unsigned since = catalogueRevision();
    if (isCanceled(progress))
        return undefined;
    if (const std::optional<int> found = token ? token->codes().find(definition) : std::nullopt)
        return *found;
    int code = undefined;
    const CplErrorScope quiet;
    try {
        code = searchedCode(definition, known, progress);
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
    }
    if (isCanceled(progress))
        return undefined;
    if (token)
        token->codes().replace(definition, code, since);
    return code;
}

int getEpsgFromCrs(const std::shared_ptr<ProgressHandler> &progress, void *srs)
{
    if (!srs)
        return undefined;
    const CplErrorScope quiet;
    return epsgOfDefinition(progress, osrToWkt2(copyOf(srs).get()));
}

int getEpsgFromCrs(void *srs)
{
    static const auto neverCancelled = std::make_shared<ProgressHandler>();
    return getEpsgFromCrs(neverCancelled, srs);
}

} // namespace nivora::cs
