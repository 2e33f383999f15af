#include "Fuzz.h"
#include "Workshop.h"

#include <coordsys/mgrs/mgrs.h>

#include <CsvFormat.h>
#include <HeightLine.h>
#include <LineReader.h>
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
    const std::string line = input.toStdString();
    for (const CoordinateNotation notation :
         {CoordinateNotation{false, false}, CoordinateNotation{true, false},
          CoordinateNotation{true, true}}) {
        QPointF point;
        Columns columns;
        Reason why;
        if (!XyReader(notation).read(line, point, columns, why)) {
            require(!why.isEmpty(), "a refusal has a reason");
            continue;
        }
        require(std::isfinite(point.x()) && std::isfinite(point.y()), "a coordinate is a number");
        require(columns.rest.empty() ||
                    columns.rest.data() + columns.rest.size() == line.data() + line.size(),
                "the rest of a line goes to its end");
    }
}

namespace {

void readTable(const CsvOptions &options, const std::string &text)
{
    std::string_view left = text;
    const std::string_view first = left.substr(0, left.find('\n'));
    const FileHead head = CsvFormat(options).head(first);
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

void readHeights(const HeightColumns &columns, const std::string &text)
{
    const HeightTable table(columns, text.substr(0, text.find('\n')));
    HeightLine line;
    if (!table.read(text.substr(0, text.find('\n')), line))
        return;
    require(std::isfinite(line.point.x) && std::isfinite(line.point.z), "a coordinate is a number");
    require(line.located, "what was read has its place");
}

} // namespace

/// The lines of a table behind its head, as the program takes them from a file.
void fuzzCsv(const QByteArray &input) { readTable(CsvOptions(), input.toStdString()); }

/// The same with options, each on a line of its own before the table: delimiter, x, y, out-x, out-y, z.
void fuzzCsvOptions(const QByteArray &input)
{
    constexpr int optionCount = 6;
    const QList<QByteArray> lines = input.split('\n');
    if (lines.size() <= optionCount)
        return;
    const auto option = [&lines](int i) { return QString::fromUtf8(lines.at(i)); };
    CsvOptions options;
    options.delimiter = lines.front().left(1).toStdString();
    options.x = option(1);
    options.y = option(2);
    options.outX = option(3);
    options.outY = option(4);
    options.notation = {lines.front().contains('d'), lines.front().contains('c')};
    const std::string text = lines.mid(optionCount).join('\n').toStdString();
    HeightColumns heights;
    heights.x = option(1);
    heights.y = option(2);
    heights.z = option(optionCount - 1);
    heights.notation = options.notation;
    readTable(options, text);
    readHeights(heights, text);
}

/// Whole lines of a file: the first byte says how they are asked for.
void fuzzLines(const QByteArray &input)
{
    if (input.isEmpty())
        return;
    Workshop::put("lines", input.mid(1));
    const Interrupt interrupt;
    LineReader reader(Workshop::dir().filePath(QStringLiteral("lines")), interrupt);
    if ((input.at(0) & 1) != 0)
        reader.setQuotes(",;");
    Chunk chunk;
    std::size_t taken = 0;
    while (reader.next(chunk, (input.at(0) & 2) != 0 ? LineReader::OneLine : LineReader::WhatThereIs)) {
        require(!chunk.text.empty(), "a chunk holds something");
        taken += chunk.text.size();
    }
    constexpr std::size_t ofUtf16 = 3; // bytes at most of UTF-8 for two
    require(taken <= ofUtf16 * static_cast<std::size_t>(input.size()), "no line comes twice");
}
