#include <coordsys/ProjEngine.h>

#include "CoordSysTexts_p.h"
#include "ProjEngine_p.h"
#include "ProjMutex_p.h"
#include "ProjText_p.h"
#include "TextRefs_p.h"
#include <platform/Logger.h>

#include <cpl_error.h>
#include <proj.h>

#include <QMutexLocker>
#include <QRegularExpression>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <vector>

static_assert(PROJ_VERSION_MAJOR > 9 || (PROJ_VERSION_MAJOR == 9 && PROJ_VERSION_MINOR >= 1),
              "PROJ before 9.1 is not supported");

namespace nivora::cs {
namespace {

const char *levelName(int level)
{
    switch (level) {
    case 1:
        return "ERROR";
    case 2:
        return "DEBUG";
    case 3:
        return "TRACE";
    case 4:
        return "TELL";
    default:
        return "NONE";
    }
}

void projLogOnNivora(void *, int level, const char *message)
{
    LOG_TRACE(QStringLiteral("PROJ %1: %2").arg(QLatin1String(levelName(level)), QString::fromUtf8(message)));
}

PJ *destroyUnderLock(PJ *pj)
{
    const QMutexLocker lock(globalProj4Mutex()); // the object works on its context as it goes
    return isKeptAtProcessEnd(pj) ? nullptr : proj_destroy(pj);
}

/// The object of a text that is fit for PROJ; \p asked names it in the exception.
PjHandle projObject(QString text, const QString &asked)
{
    const QString crsTerm = QStringLiteral("+type=crs");
    const QMutexLocker lock(globalProj4Mutex());
    PjHandle result = ownPj(proj_create(globalProjContext(), text.toUtf8().constData()));
    if (result && text.contains(crsTerm) && proj_is_crs(result.get())) {
        text.remove(crsTerm); // a CRS object describes; only an operation converts
        result = ownPj(proj_create(globalProjContext(), text.toUtf8().constData()));
    }
    if (!result)
        throw ProjException(CoordSysTexts::tr("Ошибка инициализации проекции: %1").arg(asked));
    return result;
}

/// Equatorial radius of PROJ's ellipsoid of a name, metres; 0 for an unknown one.
double radiusOfEllipsoidM(const QByteArray &name)
{
    for (const PJ_ELLPS *known = proj_list_ellps(); known && known->id; ++known)
        if (name == known->id)
            return QByteArray(known->major).mid(int(std::strlen("a="))).toDouble();
    return 0.0;
}

/// Equatorial radius that PROJ text states, metres; 0 when it states none.
double statedRadiusM(const QString &proj)
{
    static const QRegularExpression sphere(QStringLiteral("\\+R=(\\S+)"));        // "+R=1737400", wins
    static const QRegularExpression axis(QStringLiteral("\\+a=(\\S+)"));          // "+a=3396190"
    static const QRegularExpression ellipsoid(QStringLiteral("\\+ellps=(\\S+)")); // "+ellps=krass"
    for (const QRegularExpression *figure : {&sphere, &axis}) {
        const QRegularExpressionMatch match = figure->match(proj);
        if (match.hasMatch())
            return match.captured(1).toDouble();
    }
    return radiusOfEllipsoidM(ellipsoid.match(proj).captured(1).toLatin1());
}

/// A text with a datum of its own, or of another body, knows better than a zero shift to WGS 84.
bool takesZeroShift(const QString &proj)
{
    static const QRegularExpression ownShift( // "+datum=NAD27", "+nadgrids=conus"
        QStringLiteral("\\+(towgs84|nadgrids)=|\\+datum=(?!WGS84(\\s|$))"));
    constexpr double earthRadiusM = 6378137.0;
    constexpr double sameBody = 0.005; // PROJ's own measure of a celestial body
    if (ownShift.match(proj).hasMatch())
        return false;
    const double radiusM = statedRadiusM(proj);
    return radiusM == 0.0 || std::fabs(radiusM - earthRadiusM) <= sameBody * earthRadiusM;
}

QString withZeroShift(const QString &proj, bool onlyGeographicDatumFix)
{
    // "+proj=longlat +ellps=WGS84 +no_defs"
    static const QRegularExpression geographicTerm(QStringLiteral("\\+proj=(longlat|latlong|latlon|lonlat)"));
    const QString zeroShift = QStringLiteral("+towgs84=0,0,0,0,0,0,0");
    const QString ellipsoid = QStringLiteral("+ellps=WGS84");

    QString result = proj;
    const bool geographic = geographicTerm.match(proj).hasMatch();
    if (geographic && result.contains(ellipsoid) && result.contains(zeroShift))
        result.replace(ellipsoid, QStringLiteral("+datum=WGS84")); // of the same length
    if ((geographic || !onlyGeographicDatumFix) && takesZeroShift(proj)) {
        const int end = proj.indexOf(QLatin1String("+no_defs"));
        if (end < 0)
            result += QLatin1Char(' ') + zeroShift;
        else
            result.insert(end, zeroShift + QLatin1Char(' '));
    }
    return result;
}

/// "+title=My zone"
const QRegularExpression &titleTerm()
{
    static const QRegularExpression term(QStringLiteral("\\s*\\+title=((?:(?!\\s\\+).)*)"));
    return term;
}

std::atomic<bool> processEnds{false};

/// Made after PROJ's default context, so destroyed before it: GDAL's destructors may ask PROJ for a new
/// context, which copies that one.
struct EndMark
{
    ~EndMark() { processEnds = true; }
};

} // namespace

bool isKeptAtProcessEnd(void *object)
{
    if (!processEnds)
        return false;
    static std::vector<void *> &kept = *new std::vector<void *>;
    const QMutexLocker lock(globalProj4Mutex());
    kept.push_back(object);
    return true;
}

PjHandle ownPj(PJ *pj)
{
    return PjHandle(pj, destroyUnderLock); // an empty deleter would terminate
}

// Neither is ever destroyed: objects in a host's statics die after any static of this library, and other
// threads may convert while the process ends.
PJ_CONTEXT *globalProjContext()
{
    static PJ_CONTEXT *const context = [] {
        PJ_CONTEXT *made = proj_context_create();
        static const EndMark mark;
        proj_log_func(made, nullptr, projLogOnNivora);
        return made;
    }();
    return context;
}

ProjMutex *globalProj4Mutex()
{
    static ProjMutex *const mutex = newProjMutex();
    return mutex;
}

QString projLastError()
{
    return QString::fromUtf8(proj_errno_string(proj_context_errno(globalProjContext())));
}

ProjException::ProjException(const QString &message)
    : ProjException(message, Code::Engine)
{}

ProjException::ProjException(const QString &message, Code code)
    : std::logic_error(makeString(message).toStdString())
    , Error(code)
{}

QString ProjException::makeString(const QString &message) const
{
    const QString error = projLastError();
    return message.isEmpty() ? error : QStringLiteral("%1:%2").arg(message, error);
}

ExportToPrjException::ExportToPrjException()
    : ExportToPrjException(QString::fromUtf8(CPLGetLastErrorMsg()))
{}

ExportToPrjException::ExportToPrjException(const QString &reason)
    : std::logic_error(CoordSysTexts::tr("Ошибка экспорта КС в формат MI Prj: %1").arg(reason).toStdString())
    , Error(Code::NotWritable)
{}

QString fixedProjString(const QString &proj, bool onlyGeographicDatumFix)
{
    return withZeroShift(proj, onlyGeographicDatumFix).remove(QStringLiteral("+R_A"));
}

QString removeHelmertFromProjString(const QString &proj, bool &removed)
{
    static const QRegularExpression shift(QStringLiteral("towgs84|nadgrids|geoidgrids"));
    // "+towgs84=1,2,3", "+nadgrids=conus"
    static const QRegularExpression term(QStringLiteral("\\+(towgs84|nadgrids|geoidgrids)=\\S+"));
    removed = shift.match(proj).hasMatch();
    return removed ? QString(proj).remove(term) : proj;
}

PjHandle proj4FromString(const QString &proj) { return projObject(fixedProjString(proj, true), proj); }

PjHandle proj4FromExport(const QString &proj) { return projObject(withZeroShift(proj, true), proj); }

bool lacksDatum(const QString &proj)
{
    static const QRegularExpression known(QStringLiteral("\\+init=|\\+(ellps|datum)=WGS84\\b"));
    return takesZeroShift(proj) && !proj.contains(known);
}

bool statesZeroShift(const QString &proj)
{
    // "+towgs84=0,0,0", "+towgs84=0.0,0,0,0,0,0,0"
    static const QRegularExpression zero(QStringLiteral("\\+towgs84=[-+0.,]+(\\s|$)"));
    static const QRegularExpression datum(QStringLiteral("\\+datum=(?!WGS84(\\s|$))"));
    return proj.contains(datum) && proj.contains(zero);
}

void forEachTerm(const QString &proj,
                 const std::function<void(const QString &name, const QString &value)> &take)
{
    const auto parts = splitRef(proj, QLatin1Char(' '));
    for (const TextRef &part : parts) {
        const TextRef term = part.startsWith(QLatin1Char('+')) ? part.mid(1) : part;
        const int equals = term.indexOf(QLatin1Char('='));
        take((equals < 0 ? term : term.left(equals)).toString(),
             equals < 0 ? QString() : term.mid(equals + 1).toString());
    }
}

QString titleIn(const QString &proj) { return titleTerm().match(proj).captured(1).trimmed(); }

QString withoutTitle(const QString &proj) { return QString(proj).remove(titleTerm()); }

QString systemTerms(const QString &proj)
{
    // "+vunits=m", "+geoidgrids=egm96.gtx"
    static const QRegularExpression term(
        QStringLiteral("\\s*\\+(vunits|vto_meter|geoidgrids|geoid_crs)=\\S+"));
    return withoutTitle(proj).remove(term);
}

bool isIncorrect(const PJ_COORD &c) { return !std::isfinite(c.v[0]) || !std::isfinite(c.v[1]); }

bool isNearlyEquals(double a, double b) { return std::fabs(a - b) < 1e-6; }

QPointF pointToRad(const QPointF &degrees) { return {proj_torad(degrees.x()), proj_torad(degrees.y())}; }

QPointF pointToDeg(const QPointF &radians) { return {proj_todeg(radians.x()), proj_todeg(radians.y())}; }

void logTransformError(const QString &) {}

QRectF infinityRect()
{
    constexpr double corner = -8.988465674311575e307; // bits 0xFFDFFFFFFFFFFFFB
    constexpr double extent = 1.797693134862315e308;  // bits 0x7FEFFFFFFFFFFFFB
    return {corner, corner, extent, extent};
}

QRectF coordsArrayToRect(const std::array<double, 4> &xs, const std::array<double, 4> &ys)
{
    const auto x = std::minmax_element(xs.begin(), xs.end());
    const auto y = std::minmax_element(ys.begin(), ys.end());
    return QRectF(*x.first, *y.first, *x.second - *x.first, *y.second - *y.first).normalized();
}

} // namespace nivora::cs
