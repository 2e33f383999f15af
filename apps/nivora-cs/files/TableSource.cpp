#include "TableSource.h"

#include "CommandLine.h"
#include "CsvFormat.h"
#include "GdalFiles.h"
#include "Losses.h"
#include "Output.h"

#include <cpl_vsi.h>

#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QTextCodec>

#include <cmath>

namespace {

constexpr qint64 headSize = 4096;

bool isTextTable(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("csv") || suffix == QLatin1String("tsv") || suffix == QLatin1String("psv");
}

QByteArray utf8Of(const QByteArray &utf16)
{
    const bool hasMark = utf16.startsWith("\xFF\xFE") || utf16.startsWith("\xFE\xFF");
    const char *const name = hasMark ? "UTF-16" : utf16.at(0) == '\0' ? "UTF-16BE" : "UTF-16LE";
    return QTextCodec::codecForName(name)->toUnicode(utf16).toUtf8();
}

/// Behind the line "sep=;", at the beginning when there is none.
int behindSeparatorLine(const QByteArray &text)
{
    const int end = text.indexOf('\n') + 1;
    return end > 0 && isSeparatorLine({text.constData(), static_cast<std::size_t>(end)}) ? end : 0;
}

QString inMemory(const QString &name, const QByteArray &content)
{
    const QString path = QStringLiteral("/vsimem/nivora-cs/") + name;
    auto *const copy =
        static_cast<GByte *>(VSIMalloc(static_cast<std::size_t>(content.size()) + 1)); // GDAL's
    std::copy(content.begin(), content.end(), copy);
    VSIFCloseL(VSIFileFromMemBuffer(path.toUtf8().constData(), copy,
                                    static_cast<vsi_l_offset>(content.size()), TRUE));
    return path;
}

/// Throws Failure.
int columnOf(OGRFeatureDefnH definition, const QString &wanted, const TextCoding &coding)
{
    std::vector<int> found;
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        for (int i = 0;
             i < OGR_FD_GetFieldCount(definition) && (found.empty() || sensitivity == Qt::CaseSensitive);
             ++i) {
            const std::string name = OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i));
            const QString text =
                QString::fromStdString(coding.isNeeded() ? coding.decoded(name) : name).trimmed();
            if (text.compare(wanted.trimmed(), sensitivity) == 0)
                found.push_back(i);
        }
    }
    if (found.size() > 1)
        throw Failure(QObject::tr("the column \"%1\" stands twice in the table").arg(wanted));
    bool isNumber = false;
    const int number = wanted.toInt(&isNumber);
    if (found.empty() && isNumber && number >= 1 && number <= OGR_FD_GetFieldCount(definition))
        return number - 1;
    if (found.empty())
        throw Failure(QObject::tr("the table has no column \"%1\"").arg(wanted));
    return found.front();
}

/// A value as the reader of points reads it; a spreadsheet's is a number already.
bool readColumn(OGRFeatureH feature, int column, const PointColumns &columns,
                const CoordinateNotation &notation, Angle &value)
{
    if (!OGR_F_IsFieldSetAndNotNull(feature, column))
        return false;
    if (OGR_Fld_GetType(OGR_F_GetFieldDefnRef(feature, column)) == OFTReal) {
        value.degrees = OGR_F_GetFieldAsDouble(feature, column);
        return std::isfinite(value.degrees);
    }
    const std::string raw = OGR_F_GetFieldAsString(feature, column);
    const std::string text = columns.coding->isNeeded() && !isUtf8(raw) ? columns.coding->decoded(raw) : raw;
    const auto first = text.find_first_not_of(" \t");
    const auto last = text.find_last_not_of(" \t");
    Reason why;
    return first != std::string::npos &&
           readCoordinate(std::string_view(text).substr(first, last - first + 1), notation, value, why);
}

/// The columns that the driver takes for geometries, which it hides unless they are asked for.
std::vector<int> geometryTexts(OGRFeatureDefnH hiding, OGRFeatureDefnH keeping)
{
    std::vector<int> columns;
    for (int i = 0; i < OGR_FD_GetFieldCount(keeping); ++i)
        if (OGR_FD_GetFieldIndex(hiding, OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(keeping, i))) < 0)
            columns.push_back(i);
    return columns;
}

/// Nothing when every text became a geometry.
QString textWithoutGeometry(OGRFeatureH feature, const std::vector<int> &columns)
{
    int geometry = 0;
    for (const int column : columns) {
        const QString text = QString::fromUtf8(OGR_F_GetFieldAsString(feature, column)).trimmed();
        OGRGeometryH read = OGR_F_GetGeomFieldRef(feature, geometry++);
        if (!text.isEmpty() && !read)
            return text;
    }
    return {};
}

} // namespace

void checkGeometryTexts(GDALDatasetH source, Losses &losses)
{
    constexpr int mostShown = 60;
    OGRLayerH hiding = GDALDatasetGetLayer(source, 0);
    if (driverName(GDALGetDatasetDriver(source)) != QLatin1String("CSV") || !hiding ||
        OGR_FD_GetGeomFieldCount(OGR_L_GetLayerDefn(hiding)) == 0)
        return;
    const char *const options[] = {"KEEP_GEOM_COLUMNS=YES", nullptr};
    const Dataset keeping(
        GDALOpenEx(GDALGetDescription(source), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, options, nullptr));
    OGRLayerH layer = keeping ? GDALDatasetGetLayer(keeping.get(), 0) : nullptr;
    if (!layer)
        return;
    const std::vector<int> columns = geometryTexts(OGR_L_GetLayerDefn(hiding), OGR_L_GetLayerDefn(layer));
    int count = 0;
    QString first;
    while (const Feature feature{OGR_L_GetNextFeature(layer)}) {
        const QString text = textWithoutGeometry(feature.get(), columns);
        if (!text.isEmpty() && count++ == 0)
            first = QStringLiteral("%1: %2").arg(OGR_F_GetFID(feature.get())).arg(text.left(mostShown));
    }
    if (count > 0)
        losses.add(Loss::Features, QObject::tr("geometries that cannot be read: %1, the first in feature %2")
                                       .arg(QString::number(count), first));
}

QString tableToOpen(const QString &path, bool asTable)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !(asTable || isTextTable(path)) || !file.open(QIODevice::ReadOnly))
        return path;
    const QByteArray head = file.read(headSize);
    const bool isUtf16 = looksLikeUtf16({head.constData(), static_cast<std::size_t>(head.size())});
    const bool isForeign =
        asTable && QFileInfo(path).suffix().compare(QLatin1String("txt"), Qt::CaseInsensitive) == 0;
    const QString name = QFileInfo(path).completeBaseName() + QStringLiteral(".csv");
    if (!isUtf16 && !isForeign && behindSeparatorLine(head) == 0)
        return path;
    const QByteArray all = head + file.readAll();
    const QByteArray text = isUtf16 ? utf8Of(all) : all;
    return inMemory(name, text.mid(behindSeparatorLine(text)));
}

std::optional<PointColumns> pointColumns(const CommandLine &line, OGRLayerH layer, bool hasDegrees,
                                         const TextCoding &coding)
{
    if (!line.isSet("x") && !line.isSet("y") && !line.isSet("z"))
        return std::nullopt;
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(layer);
    PointColumns columns;
    columns.x = columnOf(definition, line.required("x"), coding);
    columns.y = columnOf(definition, line.required("y"), coding);
    columns.z = line.isSet("z") ? columnOf(definition, line.value("z"), coding) : -1;
    columns.notation = {hasDegrees, line.isSet("decimal-comma")};
    columns.coding = &coding;
    if (columns.x == columns.y)
        throw Failure(QObject::tr("x and y cannot be one column"));
    return columns;
}

Geometry pointOf(OGRFeatureH feature, const PointColumns &columns)
{
    Angle x;
    Angle y;
    Angle z;
    QPointF point;
    Reason why;
    CoordinateNotation plain = columns.notation;
    plain.angles = false;
    if (!readColumn(feature, columns.x, columns, columns.notation, x) ||
        !readColumn(feature, columns.y, columns, columns.notation, y) || !placeCoordinates(x, y, point, why))
        return nullptr;
    if (columns.z >= 0 && !readColumn(feature, columns.z, columns, plain, z))
        return nullptr;
    Geometry geometry(OGR_G_CreateGeometry(columns.z >= 0 ? wkbPoint25D : wkbPoint));
    if (columns.z >= 0)
        OGR_G_SetPoint(geometry.get(), 0, point.x(), point.y(), z.degrees);
    else
        OGR_G_SetPoint_2D(geometry.get(), 0, point.x(), point.y());
    return geometry;
}

QRectF extentOfPoints(OGRLayerH layer, const PointColumns &columns)
{
    double left = NAN;
    double right = NAN;
    double low = NAN;
    double high = NAN;
    OGR_L_ResetReading(layer);
    while (const Feature feature{OGR_L_GetNextFeature(layer)}) {
        const Geometry point = pointOf(feature.get(), columns);
        if (!point)
            continue;
        left = std::fmin(left, OGR_G_GetX(point.get(), 0));
        right = std::fmax(right, OGR_G_GetX(point.get(), 0));
        low = std::fmin(low, OGR_G_GetY(point.get(), 0));
        high = std::fmax(high, OGR_G_GetY(point.get(), 0));
    }
    return {QPointF(left, low), QPointF(right, high)};
}
