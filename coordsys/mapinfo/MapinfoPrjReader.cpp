#include <coordsys/MapinfoPrjReader.h>

#include <QIODevice>
#include <QRegularExpression>
#include <QTextStream>

namespace nivora::cs {
namespace {

const QRegularExpression &reEverything()
{
    static const QRegularExpression re(QStringLiteral(".*"));
    return re;
}

// "--- Россия ---"
const QRegularExpression &reCategoryName()
{
    static const QRegularExpression re(QStringLiteral(R"re("---(.*)---")re"));
    return re;
}

// "Longitude / Latitude (WGS 84)\p4326", 1, 104
const QRegularExpression &reCoordSystemParams()
{
    static const QRegularExpression re(
        QStringLiteral(R"re("(?<name>.*?)(?:\\p(?<epsg>\d+))?",(?<params>.+))re"));
    return re;
}

// The last captured group tells which pattern the current match belongs to.
constexpr int categoryGroups = 1;
constexpr int leastEntryGroups = 2;

} // namespace

MapinfoPrjReader::MapinfoPrjReader(QTextStream *stream, QObject *parent)
    : QObject(parent)
    , m_stream(stream)
{}

bool MapinfoPrjReader::readNext()
{
    bool found = false;
    while (!found && !m_stream->atEnd()) {
        const QString line = m_stream->readLine().trimmed();
        ++m_line;
        m_match = reEverything().match(line);
        if (!isIgnoredLine(line)) {
            for (const QRegularExpression *pattern : {&reCategoryName(), &reCoordSystemParams()}) {
                const QRegularExpressionMatch match = pattern->match(line);
                found = match.hasMatch();
                if (found) {
                    m_match = match;
                    break;
                }
            }
            if (!found)
                Q_EMIT rejected();
        }
        Q_EMIT captured();
    }
    return found;
}

QStringRef MapinfoPrjReader::capturedCategoryName() const
{
    return m_match.lastCapturedIndex() == categoryGroups ? m_match.capturedRef(1).trimmed() : QStringRef();
}

CoordSystemParams MapinfoPrjReader::prj() const
{
    if (m_match.lastCapturedIndex() < leastEntryGroups)
        return CoordSystemParams();

    const QString name = m_match.captured(QStringLiteral("name")).trimmed();
    bool hasCode = false;
    const int epsg = m_match.capturedRef(QStringLiteral("epsg")).toInt(&hasCode);
    CoordSystemParams entry = hasCode ? CoordSystemParams(name, epsg) : CoordSystemParams(name);
    const auto values = m_match.capturedRef(QStringLiteral("params")).split(QLatin1Char(','));
    for (const QStringRef &value : values)
        entry.params.append(value.trimmed().toString());
    return entry;
}

QStringRef MapinfoPrjReader::currentLineTextRef() const { return m_match.capturedRef(0); }

double MapinfoPrjReader::progress() const
{
    const QIODevice *device = m_stream->device();
    if (!device)
        return m_line == 0 ? 0.0 : 100.0;
    const auto size = static_cast<double>(device->size());
    return size > 0.0 ? static_cast<double>(device->pos()) * 100.0 / size : 100.0;
}

bool MapinfoPrjReader::isIgnoredLine(const QString &line)
{
    return line.isEmpty() || line.startsWith(QLatin1Char('#'));
}

} // namespace nivora::cs
