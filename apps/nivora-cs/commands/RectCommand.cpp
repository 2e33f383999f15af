#include "AnswerJson.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "OperationOptions.h"
#include "Output.h"
#include "PointText.h"
#include "Session.h"

#include <coordsys/CoordTransform.h>

#include <QByteArray>
#include <QRectF>

#include <array>
#include <new>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;

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

    QRectF out;
    if (!transformed(line, CoordTransform(from, to, operationChoice(line)), in, out)) {
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

} // namespace

const Command &rectCommand()
{
    static const Command command = {
        "rect",
        "--from CS --to CS [options] X Y W H",
        QT_TRANSLATE_NOOP("QObject", "The rectangle that encloses a rectangle's image in another system."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(X and Y are the smallest coordinates, W and H width and height; the answer is
written in the same order. Only the four corners are transformed, unless --mesh
is given: then a mesh of points with N intervals along the width, so that edges
that bulge and poles inside count too, and points that fail are left out. Degrees
may be written as transform reads them (36°30'E); "--" goes before -36°30'.
The exit status is 1 when the rectangle cannot be transformed.

Examples:
  nivora-cs rect --from 4326 --to 32637 36 55 3 1
  nivora-cs rect --from 4326 --to 3575 --mesh 50 -180 60 360 30
)"),
        4,
        withOperationOptions({
            {"from", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the rectangle.")},
            {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the answer.")},
            {"inverse", nullptr,
             QT_TRANSLATE_NOOP("QObject", "The other way: the rectangle is in the --to system.")},
            {"mesh", "N",
             QT_TRANSLATE_NOOP("QObject", "Transform a mesh of points; 100 intervals when N is left out."),
             "100"},
            {"precision", "N",
             QT_TRANSLATE_NOOP("QObject", "Decimals; when not given, enough for a tenth of a millimetre.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "A JSON object with the unrounded numbers.")},
        }),
        run,
    };
    return command;
}
