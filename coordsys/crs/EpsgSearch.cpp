#include "EpsgSearch_p.h"

#include "CrsComparison_p.h"
#include "EngineGate_p.h"
#include "EpsgSearchCache_p.h"
#include "RegisteredShift_p.h"
#include "SearchContext_p.h"
#include <coordsys/CatalogueSource.h>
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

/// A registered system that the search offers.
struct Candidate
{
    int code;
    QString datum;
};

bool isCanceled(const std::shared_ptr<ProgressHandler> &progress)
{
    return progress && progress->isCanceled();
}

// ---- What is searched for

/// A spatial reference as the searches take it, apart from everybody else's objects.
struct Wanted
{
    QString wkt;                ///< WKT 2, with its shift
    std::shared_ptr<void> srs;  ///< without a shift to WGS 84: with one a search takes seconds
    double metresPerUnit = 1.0; ///< of the plane
    QString datum;
    std::optional<Shift> shift; ///< as TOWGS84 has it
    bool isBare = false;        ///< an ellipsoid other than WGS 84 and nothing else is known of the datum
    bool isPlainWgs84 = false;  ///< the ellipsoid of WGS 84 without a datum's name stands for WGS 84
};

/// WKT 2 without a shift and without a code: one that a text states is not what a search may lean on.
QString bareWkt(const QString &wkt)
{
    const SearchContext context;
    const PjHandle crs = ownPj(proj_create(context.get(), wkt.toUtf8().constData()));
    const PjHandle plain = crs ? sourceOfBoundCrs(context.get(), crs.get()) : nullptr;
    const PjHandle bare = plain ? withoutCode(context.get(), plain.get()) : nullptr;
    return bare ? wkt2Of(context.get(), bare.get()) : wkt;
}

std::optional<Shift> shiftOf(void *srs)
{
    Shift shift{};
    if (OSRGetTOWGS84(srs, shift.data(), static_cast<int>(shift.size())) != OGRERR_NONE)
        return std::nullopt;
    return shift;
}

bool isZero(const Shift &shift)
{
    return std::all_of(shift.begin(), shift.end(), [](double figure) { return figure == 0.0; });
}

/// "Unknown based on GRS 1980 ellipsoid"
bool isUnknownDatum(const QString &name)
{
    return name.startsWith(QLatin1String("Unknown"), Qt::CaseInsensitive);
}

Wanted wantedFrom(void *srs)
{
    Wanted wanted;
    wanted.wkt = osrToWkt2(srs);
    wanted.shift = shiftOf(srs);
    const bool isBareText = !wanted.shift && !OSRGetAuthorityCode(srs, nullptr);
    wanted.srs = isBareText ? ownSrs(OSRClone(srs)) : srsFromWkt(bareWkt(wanted.wkt));
    if (!wanted.srs)
        return wanted;
    wanted.metresPerUnit = OSRGetLinearUnits(wanted.srs.get(), nullptr);
    wanted.datum = QString::fromUtf8(OSRGetAttrValue(wanted.srs.get(), "DATUM", 0));
    const bool isWgs84 = std::fabs(OSRGetSemiMajor(wanted.srs.get(), nullptr) - 6378137.0) < 1e-3 &&
                         std::fabs(OSRGetInvFlattening(wanted.srs.get(), nullptr) - 298.257223563) < 1e-6;
    const bool isUnknown = isUnknownDatum(wanted.datum);
    wanted.isBare = !wanted.shift && isUnknown && !isWgs84;
    wanted.isPlainWgs84 = isUnknown && isWgs84 && (!wanted.shift || isZero(*wanted.shift));
    return wanted;
}

// ---- Candidates

/// The best ones of GDAL's search that have the same unit of length, in its order.
std::vector<Candidate> candidatesFor(const Wanted &wanted, const std::shared_ptr<ProgressHandler> &progress)
{
    const MatchedSrs found = matchSrs(wanted.srs.get());
    const int *const confidences = found.confidences.get();
    std::vector<Candidate> candidates;
    if (found.count == 0 || confidences[0] < leastConfidence)
        return candidates;
    const int best = *std::max_element(confidences, confidences + found.count);
    for (int i = 0; i < found.count && !isCanceled(progress); ++i) {
        OGRSpatialReferenceH match = found.list.get()[i];
        const QString authority = QString::fromLatin1(OSRGetAuthorityName(match, nullptr));
        const int code = QString::fromLatin1(OSRGetAuthorityCode(match, nullptr)).toInt();
        const double metres = OSRGetLinearUnits(match, nullptr);
        if (confidences[i] == best && authority.compare(QLatin1String("EPSG"), Qt::CaseInsensitive) == 0 &&
            code > 0 && std::fabs(metres - wanted.metresPerUnit) <= 1e-9 * metres)
            candidates.push_back({code, QString::fromUtf8(OSRGetAttrValue(match, "DATUM", 0))});
    }
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

int codeOnWgs84(const std::vector<Candidate> &candidates)
{
    const auto found = std::find_if(candidates.begin(), candidates.end(), [](const Candidate &candidate) {
        return candidate.datum == QLatin1String("WGS_1984");
    });
    return found == candidates.end() ? undefined : found->code;
}

const Candidate &firstWith(const QString &datum, const std::vector<Candidate> &candidates)
{
    return *std::find_if(candidates.begin(), candidates.end(),
                         [&](const Candidate &candidate) { return candidate.datum == datum; });
}

// ---- Choice

/// The catalogue's entry with the same record names its code.
int cataloguedCode(const Wanted &wanted, const std::vector<Candidate> &candidates)
{
    QVector<int> codes;
    for (const Candidate &candidate : candidates)
        codes << candidate.code;
    const std::shared_ptr<void> srs = srsFromWkt(wanted.wkt);
    const std::optional<TABProjInfo_t> record = srs ? recordFromSpatialReference(srs.get()) : std::nullopt;
    return record ? activeCatalogues()->codeOfRecord(*record, codes) : undefined;
}

/// The one datum with the system's own shift among its registered ones; without a shift the one datum there
/// is.
int codeByDatum(const Wanted &wanted, const std::vector<Candidate> &candidates)
{
    std::vector<QString> datums = datumsOf(candidates);
    if (datums.size() > mostDatums)
        return undefined;
    if (wanted.shift && !isZero(*wanted.shift)) {
        const auto isOther = [&](const QString &datum) {
            return !hasRegisteredShift(firstWith(datum, candidates).code, *wanted.shift);
        };
        datums.erase(std::remove_if(datums.begin(), datums.end(), isOther), datums.end());
    }
    return datums.size() == 1 ? firstWith(datums.front(), candidates).code : undefined;
}

int chosenCode(const Wanted &wanted, const std::vector<Candidate> &candidates)
{
    if (candidates.empty() || wanted.isPlainWgs84)
        return codeOnWgs84(candidates);
    for (const auto choose : {cataloguedCode, codeByDatum}) {
        const int code = choose(wanted, candidates);
        if (code != undefined)
            return !wanted.shift || isWithin100m(code, wanted.wkt) ? code : undefined;
    }
    return undefined;
}

int searchByGdal(const Wanted &wanted, const std::shared_ptr<ProgressHandler> &progress)
{
    return wanted.srs && !wanted.isBare ? chosenCode(wanted, candidatesFor(wanted, progress)) : undefined;
}

int searchByProj(const QString &wkt, const std::shared_ptr<ProgressHandler> &progress)
{
    const SearchContext context;
    const PjHandle crs = ownPj(proj_create(context.get(), wkt.toUtf8().constData()));
    PjHandle plain = crs ? sourceOfBoundCrs(context.get(), crs.get()) : nullptr;
    if (plain &&
        proj_get_id_code(plain.get(), 0)) // names as the text spells them are found better than PROJ's own
        plain = ownPj(proj_create(context.get(), bareWkt(wkt).toUtf8().constData()));
    if (!plain || isCanceled(progress))
        return undefined;
    const IdentifiedCrs found = identifyCrs(context.get(), plain.get(), "EPSG");
    for (int i = 0; i < found.count(); ++i) {
        if (found.confidences.get()[i] < sureEnough)
            break; // the best come first
        const PjHandle match = ownPj(proj_list_get(context.get(), found.list.get(), i));
        if (match && isSamePlane(context.get(), plain.get(), match.get()))
            return codeOf(match.get(), QLatin1String("EPSG")).value_or(undefined);
    }
    return undefined;
}

/// Runs a search once per text.
template <typename Search>
int searchedOnce(EpsgSearchCache &memory, const std::shared_ptr<ProgressHandler> &progress,
                 const QString &text, Search &&search)
{
    int code = undefined;
    if (isCanceled(progress) || memory.find(text, code))
        return code;
    try {
        code = search();
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
    }
    if (isCanceled(progress))
        return undefined;
    memory.insert(text, code);
    return code;
}

/// A copy for the search: others' objects are locked only while they are copied.
std::shared_ptr<void> copyOf(void *srs)
{
    const QMutexLocker lock(globalProj4Mutex());
    return ownSrs(OSRClone(srs));
}

} // namespace

int getEpsgFromCrs(const std::shared_ptr<ProgressHandler> &progress, void *srs)
{
    if (!srs)
        return undefined;
    static EpsgSearchCache &memory = *new EpsgSearchCache;
    const CplErrorScope quiet;
    const std::shared_ptr<void> copy = copyOf(srs);
    return searchedOnce(memory, progress, osrToWkt2(copy.get()),
                        [&] { return searchByGdal(wantedFrom(copy.get()), progress); });
}

int getEpsgFromCrs(void *srs)
{
    static const auto neverCancelled = std::make_shared<ProgressHandler>();
    return getEpsgFromCrs(neverCancelled, srs);
}

int identifiedEpsg(const std::shared_ptr<ProgressHandler> &progress, const QString &wkt)
{
    static EpsgSearchCache &memory = *new EpsgSearchCache;
    return searchedOnce(memory, progress, wkt, [&] { return searchByProj(wkt, progress); });
}

} // namespace nivora::cs
