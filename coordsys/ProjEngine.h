#pragma once

#include <coordsys/Error.h>

#include <QMutex>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>

struct PJconsts;
typedef struct PJconsts PJ; ///< PROJ's object: a system or an operation
struct pj_ctx;
typedef struct pj_ctx PJ_CONTEXT; ///< what PROJ keeps for one thread at a time
union PJ_COORD;
typedef union PJ_COORD PJ_COORD; ///< PROJ's point

namespace nivora::cs {

/// Owns one PROJ object. The deleter is a function object, so an owner can hold objects that die another way.
using PjHandle = std::unique_ptr<PJ, std::function<PJ *(PJ *)>>;

/// Adopts a PROJ object, which dies under globalProj4Mutex(); null is allowed.
NIVORA_CS_EXPORT PjHandle ownPj(PJ *pj);

/// The one PROJ context of the process, made on first use with its messages routed to the log at trace level
/// ("PROJ ERROR: …"). Creation is thread-safe; the context itself is not: hold globalProj4Mutex() around
/// every PROJ call. A context remembers PROJ_DATA and PROJ_LIB as they were at its first look for a file.
/// Like the lock it is never destroyed: systems and transformations may lie in a host's statics and die after
/// the library's. Made things still convert then; nothing new can be made while the process ends.
NIVORA_CS_EXPORT PJ_CONTEXT *globalProjContext();

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
/// A mutex that the thread which holds it may take again.
using ProjMutex = QRecursiveMutex;
#else
/// A mutex that the thread which holds it may take again.
using ProjMutex = QMutex;
#endif

/// The recursive lock around all PROJ work and around GDAL's handles of shared objects. Taken after an
/// object's own lock, never before it. Thread-safe.
NIVORA_CS_EXPORT ProjMutex *globalProj4Mutex();

/// PROJ's text for the last error of the context, empty when there is none. Takes no lock: read it in the
/// statement after the failing call, while that call's lock is still held.
NIVORA_CS_EXPORT QString projLastError();

/// A failure of PROJ. The text is "message:PROJ's text", or PROJ's text alone for an empty message, in UTF-8.
/// Construct it before any other PROJ call, since it reads the context's last error.
class NIVORA_CS_EXPORT ProjException : public std::logic_error, public Error
{
public:
    /// See the class for the text. The code is Error::Code::Engine.
    explicit ProjException(const QString &message);
    /// With another code.
    ProjException(const QString &message, Code code);
    /// The text that what() carries, made from the context's error of this moment.
    QString makeString(const QString &message) const;
};

/// A system cannot be written as a MapInfo CoordSys string; the text ends in the reason, by default GDAL's
/// last message.
class NIVORA_CS_EXPORT ExportToPrjException : public std::logic_error, public Error
{
public:
    ExportToPrjException();
    explicit ExportToPrjException(const QString &reason);
};

/// PROJ text as this library hands it to PROJ. Geographic text with "+ellps=WGS84" and a zero shift gets
/// "+datum=WGS84"; text without a datum gets a zero shift (before "+no_defs" when it is there), for systems
/// that are not geographic only when \p onlyGeographicDatumFix is false; "+R_A" is removed. A datum is stated
/// by
/// "+towgs84", "+nadgrids" and any "+datum" but WGS84, and an equatorial radius more than 0.5 % off the
/// earth's is another body's: such text keeps what it says. Thread-safe.
NIVORA_CS_EXPORT QString fixedProjString(const QString &proj, bool onlyGeographicDatumFix);

/// \p proj without its towgs84, nadgrids and geoidgrids terms (the blanks around them stay).
/// \p removed tells whether there were any. Thread-safe.
NIVORA_CS_EXPORT QString removeHelmertFromProjString(const QString &proj, bool &removed);

/// A PROJ object that converts, made from PROJ text (fixedProjString with the geographic fix is applied).
/// Text that ends in "+type=crs" would make an object that cannot convert; it is read without that term.
/// Throws ProjException "Ошибка инициализации проекции: …". Thread-safe.
NIVORA_CS_EXPORT PjHandle proj4FromString(const QString &proj);

/// True when x or y is not a number or infinite (PROJ's mark of a failed point); z and t do not matter.
NIVORA_CS_EXPORT bool isIncorrect(const PJ_COORD &c);

/// |a - b| < 1e-6, strictly.
NIVORA_CS_EXPORT bool isNearlyEquals(double a, double b);

/// Degrees to radians, both components.
NIVORA_CS_EXPORT QPointF pointToRad(const QPointF &degrees);
/// Radians to degrees.
NIVORA_CS_EXPORT QPointF pointToDeg(const QPointF &radians);

/// Hook for messages about points that could not be transformed. Empty on purpose: such points are ordinary
/// in map data and would flood a log.
NIVORA_CS_EXPORT void logTransformError(const QString &message);

/// The unbounded rectangle, a little inside the largest double so that right() stays finite. Compare to the
/// bit.
NIVORA_CS_EXPORT QRectF infinityRect();

/// Bounding rectangle of the points (xs[i], ys[i]), normalised.
NIVORA_CS_EXPORT QRectF coordsArrayToRect(const std::array<double, 4> &xs, const std::array<double, 4> &ys);

} // namespace nivora::cs
