#include "GuessPoints.h"

#include "CommandLine.h"
#include "CoordinateColumns.h"
#include "CsvOptions.h"
#include "FileNames.h"
#include "GdalFiles.h"
#include "LayerSystem.h"
#include "NetworkBorder.h"
#include "Output.h"
#include "PeopleText.h"
#include "Session.h"
#include "TableText.h"

#include <coordsys/SystemInfo.h>

#include <QFileInfo>
#include <QObject>

#include <algorithm>
#include <memory>

namespace {

constexpr int mostPoints = 5000;

/// Every second one goes when there are too many, and from then on every second one is taken.
class EvenChoice
{
public:
    void take(const QPointF &point)
    {
        if (m_count++ % m_step != 0)
            return;
        m_points << point;
        if (m_points.size() < mostPoints)
            return;
        for (int i = 0; i < m_points.size() / 2; ++i)
            m_points[i] = m_points.at(2 * i);
        m_points.resize(m_points.size() / 2);
        m_step *= 2;
    }
    QVector<QPointF> points() const { return m_points; }

private:
    QVector<QPointF> m_points;
    qint64 m_count = 0;
    qint64 m_step = 1;
};

bool isTable(const CommandLine &line, const QString &name)
{
    static const QStringList suffixes{QStringLiteral("csv"), QStringLiteral("tsv"), QStringLiteral("psv"),
                                      QStringLiteral("txt"), QStringLiteral("xyz"), QStringLiteral("dat")};
    return name == QLatin1String("-") || line.isSet("x") || line.isSet("y") ||
           suffixes.contains(QFileInfo(name).suffix().toLower());
}

/// The names of the columns of coordinates in a header; the first two columns where there are none.
void findColumns(std::string_view header, CsvOptions &options)
{
    CsvOptions probe = options;
    probe.x = QStringLiteral("1");
    probe.y = QStringLiteral("2");
    const std::string delimiters = CsvFormat(probe).head(header).delimiters;
    const QStringList names = csvValues(header, delimiters.empty() ? ',' : delimiters.front());
    const CoordinateColumns found = coordinateColumns(names);
    options.x = found.byHeader ? found.x : QStringLiteral("1");
    options.y = found.byHeader ? found.y : QStringLiteral("2");
}

/// True for a line that is no point: a header, a spreadsheet's first line.
bool readHead(const CommandLine &line, std::string_view row, CsvOptions &options,
              std::shared_ptr<const PointReader> &reader)
{
    if (isSeparatorLine(row))
        return true;
    const bool isNamed = line.isSet("x") || line.isSet("y") || line.isSet("delimiter");
    if (!isNamed && row.find_first_of("\t;|,") == std::string_view::npos) {
        if (looksLikeHeader(row))
            return true;
        reader = std::make_shared<XyReader>(options.notation);
        return false;
    }
    if (!isNamed)
        findColumns(row, options);
    const FileHead head = CsvFormat(options).head(row);
    reader = head.reader;
    return head.isHeader;
}

QVector<QPointF> pointsOfText(const CommandLine &line, std::string_view text, bool angles)
{
    EvenChoice choice;
    CsvOptions options = csvOptions(line, {angles, line.isSet("decimal-comma")});
    std::shared_ptr<const PointReader> reader;
    forEachTableLine(line, text, [&](std::string_view row) {
        if (!reader && readHead(line, row, options, reader))
            return;
        QPointF point;
        Columns columns;
        Reason why;
        if (reader->read(row, point, columns, why)) // a line without coordinates says nothing
            choice.take(point);
    });
    return choice.points();
}

/// "7 041 000" is an angle or a number whose thousands are set apart: what reads more lines is meant.
GuessPoints pointsOfTable(const CommandLine &line)
{
    const std::string text = tableText(line);
    const QVector<QPointF> numbers = pointsOfText(line, text, false);
    const QVector<QPointF> angles = pointsOfText(line, text, true);
    return {angles.size() > numbers.size() ? angles : numbers, {}, {}};
}

void takeVertices(OGRGeometryH geometry, EvenChoice &choice)
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        takeVertices(OGR_G_GetGeometryRef(geometry, i), choice);
    for (int i = 0; parts == 0 && i < OGR_G_GetPointCount(geometry); ++i)
        choice.take({OGR_G_GetX(geometry, i), OGR_G_GetY(geometry, i)});
}

GuessPoints pointsOfFile(const CommandLine &line, const Session &session)
{
    GuessPoints result;
    const GdalMessages messages;
    GDALAllRegister();
    keepBorder(line.arguments().first());
    const Dataset dataset = openForReading(localPath(line.arguments().first()), messages);
    EvenChoice choice;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset.get()); ++i) {
        OGRLayerH layer = GDALDatasetGetLayer(dataset.get(), i);
        try {
            const nivora::cs::CoordSystemPtr system = systemOfLayer(session, dataset.get(), layer);
            if (system && result.stated.isEmpty())
                result.stated = systemInfo(*system).identifier;
        } catch (const Failure &e) {
            result.problem = QString::fromUtf8(e.what());
        }
        OGR_L_ResetReading(layer);
        while (const Feature feature{OGR_L_GetNextFeature(layer)})
            if (OGRGeometryH geometry = OGR_F_GetGeometryRef(feature.get()))
                takeVertices(geometry, choice);
    }
    result.points = choice.points();
    return result;
}

} // namespace

GuessPoints readGuessPoints(const CommandLine &line, const Session &session)
{
    const QString name = line.arguments().value(0);
    const GuessPoints result = isTable(line, name) ? pointsOfTable(line) : pointsOfFile(line, session);
    if (result.points.isEmpty())
        throw Failure(QObject::tr("%1 holds no coordinates").arg(name));
    return result;
}
