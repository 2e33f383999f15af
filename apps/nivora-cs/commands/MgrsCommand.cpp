#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "CsvOptions.h"
#include "Output.h"
#include "Session.h"
#include "SharedOptions.h"
#include "StreamFilter.h"

#include <coordsys/CoordTransform.h>
#include <coordsys/Mgrs.h>
#include <coordsys/mgrs/mgrs.h>

#include <QByteArray>
#include <QObject>

#include <algorithm>
#include <memory>

using namespace nivora::cs;

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

/// A reference as longitude and latitude in degrees on WGS 84.
bool readReference(const Mgrs &messages, const std::string &reference, QPointF &point, Reason &why)
{
    double latitudeRad = 0.0;
    double longitudeRad = 0.0;
    if (const int code = mgrs::Convert_MGRS_To_Geodetic(reference.c_str(), &latitudeRad, &longitudeRad)) {
        why = Reason(messages.errorMsg(code));
        return false;
    }
    point = QPointF(longitudeRad, latitudeRad) * CoordSystem::RADIANS_TO_DEGREES;
    return true;
}

/// Reads a line that begins with a reference.
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
        why = QT_TRANSLATE_NOOP("QObject", "no grid reference");
        if (behind == begin || (behind != end && !isSeparator(*behind)))
            return false;
        columns.second.before = " ";
        columns.rest = {behind, static_cast<std::size_t>(end - behind)};
        columns.located = true;
        return readReference(m_messages, std::string(begin, behind), point, why);
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
    bool isSingle() const override { return true; }

    bool write(const QPointF &point, const Columns &columns, TextBuffer &out, Reason &why) const override
    {
        const QString reference = m_grid.getMGRSString(point);
        if (reference.isEmpty()) {
            why = QT_TRANSLATE_NOOP("QObject", "the point has no grid reference");
            return false;
        }
        const Slot &slot = columns.first;
        const QByteArray bytes = slot.quoted ? '"' + reference.toLatin1() + '"' : reference.toLatin1();
        if (columns.csv)
            out.write(slot.before);
        if (slot.delimited)
            out.write({&columns.delimiter, 1});
        out.write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        out.write(columns.rest);
        return true;
    }

private:
    const Mgrs &m_grid;
};

CsvOptions referenceTable(const CommandLine &line, const CoordinateNotation &notation)
{
    CsvOptions options = csvOptions(line, notation);
    options.outX = line.isSet("ref") ? line.value("ref") : QStringLiteral("mgrs");
    options.newOutX = !line.isSet("ref");
    options.oneResult = true;
    return options;
}

CsvOptions pointTable(const CommandLine &line, const Mgrs &grid)
{
    CsvOptions options = csvOptions(line, {});
    options.x = line.isSet("ref") ? line.value("ref") : QStringLiteral("1");
    options.outX = line.isSet("out-x") ? line.value("out-x") : QStringLiteral("x");
    options.outY = line.isSet("out-y") ? line.value("out-y") : QStringLiteral("y");
    options.newOutX = !line.isSet("out-x");
    options.newOutY = !line.isSet("out-y");
    options.readBoth = [&grid](std::string_view text, QPointF &point, Reason &why) {
        const char *const end = text.data() + text.size();
        const char *const begin = skip(text.data(), end, isBlank);
        why = QT_TRANSLATE_NOOP("QObject", "no grid reference");
        const char *const behind = referenceEnd(begin, end);
        return skip(behind, end, isBlank) == end &&
               readReference(grid, std::string(begin, behind), point, why);
    };
    return options;
}

std::unique_ptr<FileFormat> formatOf(const CommandLine &line, const CoordSystem &cs, const Mgrs &grid)
{
    const bool inverse = line.isSet("inverse");
    const CoordinateNotation notation{cs.isLatLong(), line.isSet("decimal-comma")};
    checkCsvOptions(line, {"delimiter", "x", "y", "ref", "out-x", "out-y"});
    for (const char *option : {"x", "y"})
        if (inverse && line.isSet(option))
            throw Failure(QObject::tr("--%1 is not for --inverse").arg(QLatin1String(option)));
    for (const char *option : {"out-x", "out-y"})
        if (!inverse && line.isSet(option))
            throw Failure(QObject::tr("--%1 is for --inverse").arg(QLatin1String(option)));
    if (line.isSet("csv"))
        return std::make_unique<CsvFormat>(inverse ? pointTable(line, grid) : referenceTable(line, notation));
    if (inverse)
        return std::make_unique<PlainFormat>(std::make_shared<ReferenceReader>(grid));
    return std::make_unique<PlainFormat>(std::make_shared<XyReader>(notation));
}

int run(const CommandLine &line)
{
    const bool inverse = line.isSet("inverse");
    const int digits = line.number("precision", 0, inverse ? mostDecimals : metrePrecision, metrePrecision);
    const Session session(line);
    const CoordSystemPtr cs = systemOfOption(session, line, "cs");
    // Grid references are on WGS 84: Mgrs itself shifts no datum from a CoordSys string.
    const CoordSystemPtr wgs84 = session.factory().latLongWgs84CoordSystem();
    const CoordTransform transform(cs, wgs84);
    const PointTransform step = pointTransform(transform, {inverse, std::nullopt, false, nullptr});
    const StreamOptions options = streamOptions(line);
    Mgrs grid(wgs84);
    const std::unique_ptr<FileFormat> format = formatOf(line, *cs, grid);
    if (inverse) {
        const int decimals = line.isSet("precision") ? digits : fittingDecimals(*cs);
        return StreamFilter(*format, XyWriter(decimals), step).run(line.arguments(), options);
    }
    grid.setPrecision(digits);
    return StreamFilter(*format, ReferenceWriter(grid), step).run(line.arguments(), options);
}

constexpr const char *help =
    QT_TRANSLATE_NOOP("QObject",
                      R"(Reads and writes as transform does: x and y become one reference,
further columns are passed on. The points are brought to WGS 84 first. Digits are cut off, not
rounded: a reference names the cell that the point lies in. With --inverse a line
begins with a reference ("37UDB1234567890" or "37U DB 12345 67890") and the answer
is the south-west corner of its cell.
With --csv, which transform --help explains, the reference goes into a column of its
own, and back; all other columns stay.

Examples:
  echo 37.6173 55.7558 | nivora-cs mgrs --cs 4326
  echo 37UDB1324979476 | nivora-cs mgrs --cs 28407 --inverse
)");

std::vector<Option> options()
{
    return {
        shared::pointSystem,
        {"inverse", nullptr, QT_TRANSLATE_NOOP("QObject", "Read references and write points.")},
        {"precision", "N",
         QT_TRANSLATE_NOOP("QObject",
                           "Digits of each coordinate, 0 to 5 (5: a metre); with --inverse decimals.")},
        shared::csv,
        shared::delimiter,
        shared::x,
        shared::y,
        {"ref", "NAME|N",
         QT_TRANSLATE_NOOP("QObject", "The table's column of references: a new one, \"mgrs\", when not "
                                      "given; 1 with --inverse.")},
        {"out-x", "NAME|N",
         QT_TRANSLATE_NOOP("QObject", "With --inverse: the column for x, a new one, \"x\", when not given.")},
        {"out-y", "NAME|N",
         QT_TRANSLATE_NOOP("QObject", "With --inverse: the column for y, a new one, \"y\", when not given.")},
        shared::encoding,
        shared::decimalComma,
        shared::skip,
        shared::jobs,
        shared::progress,
    };
}

} // namespace

const Command &mgrsCommand()
{
    static const Command command = {
        "mgrs",
        "--cs CS [options] [FILE...]",
        QT_TRANSLATE_NOOP("QObject", "Military grid references of points, and points of references."),
        help,
        Command::AnyCount,
        options(),
        run,
    };
    return command;
}
