#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "Session.h"
#include "StreamFilter.h"

#include <coordsys/CoordTransform.h>
#include <coordsys/Mgrs.h>
#include <coordsys/mgrs/mgrs.h>

#include <QByteArray>

#include <algorithm>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;
using nivora::cs::Mgrs;

namespace {

constexpr int metrePrecision = 5; // digits of each coordinate

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

template <typename Test> const char *skip(const char *p, const char *end, Test &&test)
{
    return std::find_if_not(p, end, test);
}

/// Behind the grid reference at the beginning of [p, end). Blanks may stand between its parts, and further
/// columns behind it: two groups of digits belong together when they are equally long and the first cannot be
/// the whole, because a blank stands before it or it has an odd count. So "37U DB 12 34" is one reference and
/// "37UDB12 34" has a column behind it.
const char *referenceEnd(const char *p, const char *end)
{
    p = skip(p, end, isDigit);
    for (int letters = 0; letters < 3;) {
        const char *const next = skip(p, end, isBlank);
        const char *const behind = skip(next, end, isLetter);
        if (behind == next)
            break; // the poles have no zone, what is malformed is for the reader of references
        letters += static_cast<int>(behind - next);
        p = behind;
    }
    const char *const first = skip(p, end, isBlank);
    const char *const firstEnd = skip(first, end, isDigit);
    if (firstEnd == first)
        return p;
    const char *const second = skip(firstEnd, end, isBlank);
    const char *const secondEnd = skip(second, end, isDigit);
    const bool halves = secondEnd - second == firstEnd - first && (first != p || (firstEnd - first) % 2 == 1);
    return halves ? secondEnd : firstEnd;
}

/// Reads a reference as longitude and latitude in degrees on WGS 84.
class ReferenceReader : public PointReader
{
public:
    explicit ReferenceReader(const Mgrs &messages)
        : m_messages(messages)
    {}

    bool read(std::string_view line, QPointF &point, Columns &columns, Reason &why) const override
    {
        const char *const end = line.data() + line.size();
        const char *const begin = skip(line.data(), end, isBlank);
        const char *const behind = referenceEnd(begin, end);
        const std::string reference(begin, behind);
        double latitudeRad = 0.0;
        double longitudeRad = 0.0;
        if (behind != end && !isSeparator(*behind)) {
            why = QT_TRANSLATE_NOOP("QObject", "no grid reference");
            return false;
        }
        if (const int code = mgrs::Convert_MGRS_To_Geodetic(reference.c_str(), &latitudeRad, &longitudeRad)) {
            why = Reason(m_messages.errorMsg(code));
            return false;
        }
        point = QPointF(longitudeRad, latitudeRad) * CoordSystem::RADIANS_TO_DEGREES;
        columns.second.before = " ";
        columns.rest = {behind, static_cast<std::size_t>(end - behind)};
        columns.located = true;
        return true;
    }

private:
    const Mgrs &m_messages;
};

/// Writes longitude and latitude on WGS 84 as a reference.
class ReferenceWriter : public PointWriter
{
public:
    explicit ReferenceWriter(const Mgrs &grid)
        : m_grid(grid)
    {}

    bool write(const QPointF &point, const Columns &columns, TextBuffer &out, Reason &why) const override
    {
        const QString reference = m_grid.getMGRSString(point);
        if (reference.isEmpty()) {
            why = QT_TRANSLATE_NOOP("QObject", "the point has no grid reference");
            return false;
        }
        const QByteArray bytes = reference.toLatin1();
        out.write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        out.write(columns.rest);
        return true;
    }

private:
    const Mgrs &m_grid;
};

int run(const CommandLine &line)
{
    const bool inverse = line.isSet("inverse");
    const int digits = line.number("precision", 0, inverse ? mostDecimals : metrePrecision, metrePrecision);
    const Session session(line);
    const CoordSystemPtr cs = systemOfOption(session, line, "cs");
    // Grid references are on WGS 84: Mgrs itself shifts no datum from a CoordSys string.
    const CoordSystemPtr wgs84 = session.factory().latLongWgs84CoordSystem();
    const CoordTransform transform(cs, wgs84);
    const PointTransform step = pointTransform(transform, inverse);
    const StreamOptions options = streamOptions(line);
    Mgrs grid(wgs84);
    if (inverse) {
        const int decimals = line.isSet("precision") ? digits : fittingDecimals(*cs);
        const PlainFormat format(std::make_shared<ReferenceReader>(grid));
        return StreamFilter(format, XyWriter(decimals), step).run(line.arguments(), options);
    }
    grid.setPrecision(digits);
    const CoordinateNotation notation{cs->isLatLong(), line.isSet("decimal-comma")};
    const PlainFormat format(std::make_shared<XyReader>(notation));
    return StreamFilter(format, ReferenceWriter(grid), step).run(line.arguments(), options);
}

} // namespace

const Command &mgrsCommand()
{
    static const Command command = {
        "mgrs",
        "--cs CS [options] [FILE...]",
        QT_TRANSLATE_NOOP("QObject", "Military grid references of points, and points of references."),
        QT_TRANSLATE_NOOP("QObject",
                          R"(Reads and writes as transform does, but for tables: x and y become one reference,
further columns are passed on. The points are brought to WGS 84 first. Digits are cut off, not
rounded: a reference names the cell that the point lies in. With --inverse a line
begins with a reference ("37UDB1234567890" or "37U DB 12345 67890") and the answer
is the south-west corner of its cell.

Examples:
  echo 37.6173 55.7558 | nivora-cs mgrs --cs 4326
  echo 37UDB1324979476 | nivora-cs mgrs --cs 28407 --inverse
)"),
        Command::AnyCount,
        {
            {"cs", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the points.")},
            {"inverse", nullptr, QT_TRANSLATE_NOOP("QObject", "Read references and write points.")},
            {"precision", "N",
             QT_TRANSLATE_NOOP("QObject",
                               "Digits of each coordinate, 0 to 5 (5: a metre); with --inverse decimals.")},
            {"decimal-comma", nullptr,
             QT_TRANSLATE_NOOP("QObject", "Commas inside numbers are decimal marks.")},
            {"skip", "N",
             QT_TRANSLATE_NOOP("QObject", "Pass the first N lines of each file on as they are.")},
            {"jobs", "N",
             QT_TRANSLATE_NOOP("QObject",
                               "Threads that work; all cores when not given. The output is the same.")},
            {"progress", nullptr,
             QT_TRANSLATE_NOOP("QObject", "Show a bar on stderr, when it is a terminal.")},
        },
        run,
    };
    return command;
}
