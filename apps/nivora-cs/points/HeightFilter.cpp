#include "HeightFilter.h"

#include "CsvFormat.h"
#include "LineReader.h"

#include <coordsys/NumberText.h>

#include <QObject>

#include <array>
#include <cmath>
#include <stdexcept>

using nivora::cs::SpatialPoint;

namespace {

constexpr int heightDecimals = 4; // a tenth of a millimetre

QString numberOf(const HeightSlot &slot, const SpatialPoint &point, const HeightOptions &options)
{
    const double numbers[] = {point.x, point.y, point.z};
    const double number = numbers[slot.axis];
    if (slot.axis > 1 || !options.angles)
        return nivora::cs::numberText(number, slot.axis < 2 ? options.decimals : heightDecimals);
    std::array<char, longestAngle> text{};
    const char *const end = putAngle(text.data(), number, slot.axis == 1, options.decimals, options.letters);
    return QString::fromUtf8(text.data(), static_cast<int>(end - text.data()));
}

/// Seconds have a quotation mark, which tables double.
QString quoted(QString text)
{
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

void write(Output &out, const HeightLine &line, bool done, const HeightOptions &options)
{
    for (const HeightSlot &slot : line.slots) {
        const QString number = done ? numberOf(slot, line.point, options) : QStringLiteral("*");
        const bool hasMarks = options.columns && number.contains(QLatin1Char('"'));
        out.write(slot.before);
        out.write(slot.quoted || hasMarks ? quoted(number) : number);
    }
    out.write(line.rest);
}

std::string_view withoutEnd(std::string_view line)
{
    return line.substr(0, line.find_last_not_of("\r\n") + 1);
}

/// The way of a file through the transformation.
class HeightFilter
{
public:
    HeightFilter(const nivora::cs::SpatialTransform &transform, const HeightOptions &options,
                 nivora::cs::OperationTally &tally, int output)
        : m_transform(transform)
        , m_options(options)
        , m_tally(tally)
        , m_out(output)
    {}
    void run(const QString &fileName);
    bool allDone() const { return m_failures == 0; }

private:
    void take(std::string_view bytes, int number);
    bool passesOn(std::string_view text, LineReader &reader);
    bool read(std::string_view text, HeightLine &line) const;
    void writeUnread(std::string_view text, const HeightLine &line);
    bool convert(SpatialPoint &point) const;
    QString reason(const SpatialPoint &point) const;
    void complainAt(int number, const QString &why);

    const nivora::cs::SpatialTransform &m_transform;
    const HeightOptions &m_options;
    nivora::cs::OperationTally &m_tally;
    Output m_out;
    std::optional<HeightTable> m_table; ///< of the file that is read, from its first line on
    int m_failures = 0;
};

void HeightFilter::run(const QString &fileName)
{
    const Interrupt interrupt;
    LineReader reader(fileName, interrupt);
    if (m_options.columns)
        reader.setQuotes(HeightTable::delimiters(*m_options.columns));
    m_table.reset();
    Chunk chunk;
    for (int number = 1; reader.next(chunk, LineReader::OneLine); ++number) {
        if (number == 1 && m_options.columns && reader.hasByteOrderMark())
            m_out.write(std::string_view("\xEF\xBB\xBF"));
        const std::string text =
            m_options.coding.isNeeded() ? m_options.coding.decoded(chunk.text) : std::string(chunk.text);
        if (number <= m_options.skip || passesOn(withoutEnd(text), reader))
            m_out.write(text);
        else
            take(text, number);
    }
    m_out.flush();
}

/// Blank lines, remarks, and the first line of a table when it has names.
bool HeightFilter::passesOn(std::string_view text, LineReader &reader)
{
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return true;
    if (!m_options.columns)
        return text[first] == '#';
    if (isSeparatorLine(text))
        return true;
    if (m_table)
        return false;
    m_table.emplace(*m_options.columns, text);
    reader.setQuotes(std::string(1, m_table->delimiter()));
    return m_table->hasHeader();
}

bool HeightFilter::read(std::string_view text, HeightLine &line) const
{
    return m_table ? m_table->read(text, line)
                   : readPlainHeights(text, m_options.notation, m_options.hasTimes, line);
}

bool HeightFilter::convert(SpatialPoint &point) const
{
    point.t = point.t ? point.t : m_options.epoch;
    point.wantedT = m_options.wantedEpoch;
    const double time = point.t.value_or(NAN);
    const double wanted = point.wantedT.value_or(NAN);
    const auto failed = m_options.inverse
                            ? m_transform.inverse(&point.x, &point.y, &point.z, &time, &wanted, 1, &m_tally)
                            : m_transform.forward(&point.x, &point.y, &point.z, &time, &wanted, 1, &m_tally);
    return failed.empty();
}

/// Why a point could not be transformed.
QString HeightFilter::reason(const SpatialPoint &point) const
{
    try {
        const auto &source = m_options.inverse ? m_transform.destination() : m_transform.source();
        const auto &target = m_options.inverse ? m_transform.source() : m_transform.destination();
        operationEpoch(source, target, point.t, point.wantedT);
    } catch (const std::logic_error &e) {
        return QString::fromUtf8(e.what());
    }
    return m_transform.missingHeights().isEmpty() ? QObject::tr("the point cannot be transformed")
                                                  : m_transform.missingHeights();
}

void HeightFilter::complainAt(int number, const QString &why)
{
    constexpr int reported = 20;
    if (++m_failures <= reported)
        report(QObject::tr("line %1: %2").arg(QString::number(number), why));
}

/// A table keeps its columns.
void HeightFilter::writeUnread(std::string_view text, const HeightLine &line)
{
    if (m_table && line.located)
        return write(m_out, line, false, m_options);
    if (!m_table)
        m_out.write(std::string_view("* * * "));
    m_out.write(text);
}

void HeightFilter::take(std::string_view bytes, int number)
{
    const std::string_view text = withoutEnd(bytes);
    const std::string_view lineEnd = bytes.substr(text.size());
    HeightLine line;
    if (!read(text, line)) {
        writeUnread(text, line);
        complainAt(number, m_options.hasTimes
                               ? QObject::tr("x, y, z and a year are needed")
                               : QObject::tr("x, y and z are needed; --decimal-comma for commas in numbers"));
    } else {
        const bool done = convert(line.point);
        write(m_out, line, done, m_options);
        if (!done)
            complainAt(number, reason(line.point));
    }
    m_out.write(lineEnd.empty() ? std::string_view("\n") : lineEnd);
}

} // namespace

ExitStatus filterHeights(const nivora::cs::SpatialTransform &transform, const HeightOptions &options,
                         const QStringList &fileNames, nivora::cs::OperationTally &tally, int output)
{
    HeightFilter filter(transform, options, tally, output);
    for (const QString &name : fileNames.isEmpty() ? QStringList{QStringLiteral("-")} : fileNames)
        filter.run(name);
    return filter.allDone() ? Success : SomeFailed;
}
