#include "HeightFilter.h"

#include "FileNames.h"
#include "LineReader.h"

#include <coordsys/NumberText.h>

#include <QByteArray>
#include <QFile>
#include <QObject>

#include <array>
#include <cmath>
#include <unistd.h>

using nivora::cs::isSeparator;
using nivora::cs::SpatialPoint;

namespace {

constexpr int heightDecimals = 4; // a tenth of a millimetre

/// A line's numbers and what stands between them.
struct HeightLine
{
    SpatialPoint point;
    std::array<std::string_view, 3> between; ///< before x, y and z
    std::string_view rest;
};

std::string_view takeWhile(std::string_view &text, bool separators)
{
    std::size_t end = 0;
    while (end < text.size() && isSeparator(text[end]) == separators)
        ++end;
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end);
    return taken;
}

/// False when there are not as many numbers as are needed.
bool parse(std::string_view text, bool hasTime, HeightLine &line)
{
    double *const targets[] = {&line.point.x, &line.point.y, &line.point.z};
    for (std::size_t i = 0; i < line.between.size(); ++i) {
        line.between[i] = takeWhile(text, true);
        if (!nivora::cs::readNumber(takeWhile(text, false), *targets[i]))
            return false;
    }
    line.rest = text;
    double year = 0.0;
    takeWhile(text, true);
    const bool hasYear = hasTime && nivora::cs::readNumber(takeWhile(text, false), year);
    if (hasYear)
        line.point.t = year;
    return hasYear || !hasTime;
}

void write(Output &out, const HeightLine &line, bool done, int decimals)
{
    const double numbers[] = {line.point.x, line.point.y, line.point.z};
    for (std::size_t i = 0; i < line.between.size(); ++i) {
        out.write(line.between[i]);
        out.write(done ? nivora::cs::numberText(numbers[i], i < 2 ? decimals : heightDecimals)
                       : QStringLiteral("*"));
    }
    out.write(line.rest);
}

/// The way of a file through the transformation.
class HeightFilter
{
public:
    HeightFilter(const nivora::cs::SpatialTransform &transform, const HeightOptions &options,
                 nivora::cs::OperationTally &tally)
        : m_transform(transform)
        , m_options(options)
        , m_tally(tally)
        , m_out(STDOUT_FILENO)
    {}
    void run(const QString &fileName);
    bool allDone() const { return m_failures == 0; }

private:
    void take(const QByteArray &bytes, int number);
    bool convert(SpatialPoint &point) const;
    void complainAt(int number, const QString &why);

    const nivora::cs::SpatialTransform &m_transform;
    const HeightOptions &m_options;
    nivora::cs::OperationTally &m_tally;
    Output m_out;
    int m_failures = 0;
};

void HeightFilter::run(const QString &fileName)
{
    QFile file(localPath(fileName));
    const bool isInput = fileName == QLatin1String("-");
    if (!(isInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        throw Failure(QObject::tr("cannot read %1: %2").arg(fileName, file.errorString()));
    int number = 0;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine())
        take(line, ++number);
    m_out.flush();
}

bool HeightFilter::convert(SpatialPoint &point) const
{
    const double time = point.t.value_or(m_options.epoch.value_or(NAN));
    const auto failed = m_options.inverse
                            ? m_transform.inverse(&point.x, &point.y, &point.z, &time, 1, &m_tally)
                            : m_transform.forward(&point.x, &point.y, &point.z, &time, 1, &m_tally);
    return failed.empty();
}

void HeightFilter::complainAt(int number, const QString &why)
{
    constexpr int reported = 20;
    if (++m_failures <= reported)
        report(QObject::tr("line %1: %2").arg(QString::number(number), why));
}

void HeightFilter::take(const QByteArray &bytes, int number)
{
    std::string_view text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    const std::size_t end = text.find_last_not_of("\r\n") + 1;
    const std::string_view lineEnd = text.substr(end);
    text = text.substr(0, end);
    HeightLine line;
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos || text[first] == '#') {
        m_out.write(text);
    } else if (!parse(text, m_options.hasTimes, line)) {
        m_out.write(std::string_view("* * * "));
        m_out.write(text);
        complainAt(number, m_options.hasTimes ? QObject::tr("x, y, z and a year are needed")
                                              : QObject::tr("x, y and z are needed"));
    } else {
        const bool done = convert(line.point);
        write(m_out, line, done, m_options.decimals);
        if (!done)
            complainAt(number, m_transform.missingHeights().isEmpty()
                                   ? QObject::tr("the point cannot be transformed")
                                   : m_transform.missingHeights());
    }
    m_out.write(lineEnd.empty() ? std::string_view("\n") : lineEnd);
}

} // namespace

ExitStatus filterHeights(const nivora::cs::SpatialTransform &transform, const HeightOptions &options,
                         const QStringList &fileNames, nivora::cs::OperationTally &tally)
{
    HeightFilter filter(transform, options, tally);
    for (const QString &name : fileNames.isEmpty() ? QStringList{QStringLiteral("-")} : fileNames)
        filter.run(name);
    return filter.allDone() ? Success : SomeFailed;
}
