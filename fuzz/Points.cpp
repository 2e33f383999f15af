#include "Fuzz.h"

#include <coordsys/mgrs/mgrs.h>

#include <CsvFormat.h>
#include <PointText.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace {

constexpr double degreesPerRadian = 57.29577951308232;

/// The terminating zero, which the buffer's user counts on, at the end of what was allocated.
std::string gridReference(double latRad, double lonRad, int precision)
{
    char buffer[mgrs::MGRS_BUFFER_SIZE] = {};
    if (mgrs::Convert_Geodetic_To_MGRS(latRad, lonRad, precision, buffer) != 0)
        return {};
    require(std::memchr(buffer, 0, sizeof buffer) != nullptr, "a reference ends within its buffer");
    return buffer;
}

void fuzzPair(const QByteArray &input)
{
    double pair[2];
    if (static_cast<std::size_t>(input.size()) < sizeof pair + 1)
        return;
    std::memcpy(pair, input.constData() + 1, sizeof pair);
    gridReference(pair[0], pair[1], input.at(0));
}

} // namespace

void fuzzMgrs(const QByteArray &input)
{
    fuzzPair(input);
    double latRad = 0.0;
    double lonRad = 0.0;
    if (mgrs::Convert_MGRS_To_Geodetic(input.constData(), &latRad, &lonRad) != 0)
        return;
    require(std::abs(latRad) * degreesPerRadian <= 90.0 + 1e-9, "a latitude is at most 90 degrees");
    require(std::abs(lonRad) * degreesPerRadian <= 180.0 + 1e-9, "a longitude is at most 180 degrees");
    require(!gridReference(latRad, lonRad, 5).empty(), "what a reference names has a reference");
}

void fuzzPointLine(const QByteArray &input)
{
    QPointF point;
    Columns columns;
    Reason why;
    const std::string line = input.toStdString();
    if (!XyReader().read(line, point, columns, why)) {
        require(!why.isEmpty(), "a refusal has a reason");
        return;
    }
    require(std::isfinite(point.x()) && std::isfinite(point.y()), "a coordinate is a number");
    require(columns.rest.empty() || columns.rest.data() + columns.rest.size() == line.data() + line.size(),
            "the rest of a line goes to its end");
}

/// The lines of a table behind its head, as the program takes them from a file.
void fuzzCsv(const QByteArray &input)
{
    const std::string text = input.toStdString();
    std::string_view left = text;
    const std::string_view first = left.substr(0, left.find('\n'));
    const FileHead head = CsvFormat(CsvOptions()).head(first);
    while (!left.empty()) {
        const std::size_t length = head.reader->lineLength(left);
        require(length <= left.size(), "a line ends within the text");
        QPointF point;
        Columns columns;
        Reason why;
        require(head.reader->read(left.substr(0, length), point, columns, why) || !why.isEmpty(),
                "a refusal has a reason");
        left.remove_prefix(std::min(left.size(), length + 1));
    }
}
