#include "AnswerJson.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "OperationOptions.h"
#include "Output.h"
#include "PointText.h"
#include "SeamCutter.h"
#include "Session.h"
#include "SharedOptions.h"

#include <coordsys/CoordTransform.h>
#include <coordsys/GeographicBounds.h>

#include <QByteArray>
#include <QPolygonF>
#include <QRectF>

#include <algorithm>
#include <array>
#include <cmath>

using namespace nivora::cs;

namespace {

QRectF rectOf(const QStringList &arguments, const CoordinateNotation &notation)
{
    std::array<Angle, 4> values;
    Reason why;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const QByteArray utf8 = arguments.at(static_cast<int>(i)).toUtf8();
        if (!readCoordinate({utf8.constData(), static_cast<std::size_t>(utf8.size())}, notation, values[i],
                            why))
            throw Failure(QStringLiteral("\"%1\" %2").arg(QString::fromUtf8(utf8), why.text()));
    }
    QPointF corner;
    if (!placeCoordinates(values[0], values[1], corner, why))
        throw Failure(why.text());
    const QSizeF size(values[2].degrees, values[3].degrees);
    if (!(size.width() > 0.0) || !(size.height() > 0.0))
        throw Failure(QObject::tr("width and height must be greater than 0"));
    return {corner, size};
}

bool transformed(const CommandLine &line, const CoordTransform &transform, const QRectF &in, QRectF &out)
{
    const bool inverse = line.isSet("inverse");
    if (!line.isSet("mesh"))
        return inverse ? transform.inverse(in, out) : transform.forward(in, out);
    constexpr int mostIntervals = 1 << 26; // of the library; the height may allow fewer
    const int intervals = line.number("mesh", 1, mostIntervals, CoordTransform::DefaultAddPointsMesh);
    try {
        return inverse ? transform.inverseMesh(in, out, intervals)
                       : transform.forwardMesh(in, out, intervals);
    } catch (const std::bad_array_new_length &) {
        throw Failure(QObject::tr("a mesh of %1 intervals has too many points for this rectangle")
                          .arg(QString::number(intervals)));
    }
}

/// A plane may go on over the meridian where it ends on the earth, as Mercator's does: along the rectangle's
/// edges the longitudes run on.
bool boundsAlongEdges(const CoordTransform &transform, const QRectF &in, QRectF &out)
{
    constexpr int steps = 64; // of an edge
    constexpr double halfTurn = 180.0;
    constexpr double fullTurn = 360.0;
    const QPointF corners[] = {in.topLeft(), in.topRight(), in.bottomRight(), in.bottomLeft(), in.topLeft()};
    double last = NAN;
    double turns = 0.0;
    QPolygonF edges;
    bool isCrossed = false;
    for (int i = 0; i <= 4 * steps; ++i) {
        const QPointF &from = corners[std::min(i / steps, 3)];
        const QPointF &to = corners[std::min(i / steps, 3) + 1];
        QPointF place;
        if (!transform.forward(from + (to - from) * (i - std::min(i / steps, 3) * steps) / steps, place))
            return false;
        if (std::fabs(place.x() - last) > halfTurn) {
            turns += place.x() > last ? -fullTurn : fullTurn;
            isCrossed = true;
        }
        last = place.x();
        edges << place + QPointF(turns, 0.0);
    }
    out = edges.boundingRect();
    out.translate(-fullTurn * std::round((out.left() - 1e-12) / fullTurn), 0.0);
    return isCrossed && turns == 0.0; // else a pole is inside
}

/// Over the 180th meridian and around a pole the smallest and largest longitudes would be those of the
/// complement: the bounds run on over 180 there.
bool boundsOnEarth(const CoordTransform &transform, const QRectF &in, QRectF &out)
{
    GeographicBounds bounds;
    if (transform.sourceCoordSystem()->isLatLong() || !transform.destinationCoordSystem()->isLatLong() ||
        !transform.geographicBounds(in, bounds))
        return false;
    if (!bounds.crossesAntimeridian() && !bounds.hasNorthPole && !bounds.hasSouthPole)
        return boundsAlongEdges(transform, in,
                                out); // else that of the corners, or of the mesh, as it always was
    out = QRectF(bounds.west, bounds.south, bounds.width(), bounds.north - bounds.south);
    return true;
}

/// Whether an edge runs over the cut of the target's map.
bool isTorn(const CoordTransform &transform, const QRectF &in)
{
    constexpr double fullTurn = 360.0;
    const BulkTransform bulk(transform);
    if (transform.destinationCoordSystem()->isLatLong() ||
        (transform.sourceCoordSystem()->isLatLong() && in.width() >= fullTurn)) // the whole map
        return false;
    const SeamCutter seams(bulk);
    const QPointF corners[] = {in.topLeft(), in.topRight(), in.bottomRight(), in.bottomLeft(), in.topLeft()};
    for (std::size_t i = 1; i < std::size(corners); ++i) {
        QPointF a;
        QPointF b;
        if (bulk.forward(corners[i - 1], a) && bulk.forward(corners[i], b) &&
            seams.isTorn(corners[i - 1], corners[i], a, b))
            return true;
    }
    return false;
}

int run(const CommandLine &line)
{
    rectOf(line.arguments(), {true, false}); // nonsense is told before the systems are made
    const Session session(line);
    const CoordSystemPtr from = systemOfOption(session, line, "from");
    const CoordSystemPtr to = systemOfOption(session, line, "to");
    const CoordSystem &target = line.isSet("inverse") ? *from : *to;
    const CoordSystem &source = line.isSet("inverse") ? *to : *from;
    const QRectF in = rectOf(line.arguments(), {source.isLatLong(), false});
    const int decimals = line.number("precision", 0, mostDecimals, fittingDecimals(target));

    const CoordTransform way = line.isSet("inverse") ? CoordTransform(to, from) : CoordTransform(from, to);
    if (isTorn(way, in)) {
        complain(
            QObject::tr("the rectangle crosses the cut of the output's map: its image has several parts"));
        return SomeFailed;
    }
    QRectF out;
    if (!boundsOnEarth(way, in, out) &&
        !transformed(line, CoordTransform(from, to, operationChoice(line)), in, out)) {
        complain(line.isSet("mesh") ? QObject::tr("no part of the rectangle can be transformed")
                                    : QObject::tr("a corner of the rectangle cannot be transformed"));
        return SomeFailed;
    }
    if (line.isSet("json")) {
        printJson({{QStringLiteral("rect"), QJsonArray{out.x(), out.y(), out.width(), out.height()}}});
        return Success;
    }
    QStringList numbers;
    for (const double number : {out.x(), out.y(), out.width(), out.height()})
        numbers << numberText(number, decimals);
    print(numbers.join(QLatin1Char(' ')) + QLatin1Char('\n'));
    return Success;
}

constexpr const char *help =
    QT_TRANSLATE_NOOP("QObject",
                      R"(X and Y are the smallest coordinates, W and H width and height; the answer is
written in the same order. Only the four corners are transformed, unless --mesh
is given: then a mesh of points with N intervals along the width, so that edges
that bulge and poles inside count too, and points that fail are left out. Longitudes
of a plane's rectangle over the 180th meridian run on: X 170 and W 20 end at -170.
A rectangle over the cut of the output's map has no one image. Degrees
may be written as transform reads them (36°30'E); "--" goes before -36°30'.
The exit status is 1 when the rectangle cannot be transformed.

Examples:
  nivora-cs rect --from 4326 --to 32637 36 55 3 1
  nivora-cs rect --from 4326 --to 3575 --mesh 50 -180 60 360 30
)");

std::vector<Option> options()
{
    return withOperationOptions({
        {"from", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the rectangle.")},
        {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the answer.")},
        {"inverse", nullptr,
         QT_TRANSLATE_NOOP("QObject", "The other way: the rectangle is in the --to system.")},
        {"mesh", "N",
         QT_TRANSLATE_NOOP("QObject", "Transform a mesh of points; 100 intervals when N is left out."),
         "100"},
        shared::precision,
        {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object with the unrounded numbers.")},
    });
}

} // namespace

const Command &rectCommand()
{
    static const Command command = {
        "rect",
        "--from CS --to CS [options] X Y W H",
        QT_TRANSLATE_NOOP("QObject", "The rectangle that encloses a rectangle's image in another system."),
        help,
        4,
        options(),
        run,
    };
    return command;
}
