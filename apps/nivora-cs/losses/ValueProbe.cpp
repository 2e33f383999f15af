#include "ValueProbe.h"

#include "Losses.h"
#include "Output.h"

#include <QObject>
#include <QTemporaryDir>

#include <cmath>
#include <cstring>

namespace {

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

/// A value in a message, not longer than a line has room for.
QString shown(const char *value)
{
    constexpr int longest = 30;
    const QString line = text(value).simplified();
    return line.size() <= longest ? line : line.left(longest) + QStringLiteral("…");
}

bool isNumber(OGRFieldType type) { return type == OFTInteger || type == OFTInteger64 || type == OFTReal; }
bool isTime(OGRFieldType type) { return type == OFTDate || type == OFTTime || type == OFTDateTime; }

/// Fifteen digits are what texts of numbers have.
bool sameNumber(double a, double b)
{
    constexpr double relative = 1e-14;
    return a == b || std::fabs(a - b) <= relative * std::fabs(a) || (std::isnan(a) && std::isnan(b));
}

bool isSet(OGRFeatureH feature, int column) { return OGR_F_IsFieldSetAndNotNull(feature, column) != 0; }

bool sameValue(OGRFeatureH given, int i, OGRFeatureH read, int j)
{
    const OGRFieldType type = OGR_Fld_GetType(OGR_F_GetFieldDefnRef(given, i));
    const OGRFieldType readType = OGR_Fld_GetType(OGR_F_GetFieldDefnRef(read, j));
    if (isNumber(type) && isNumber(readType)) {
        if (type != OFTReal && readType != OFTReal)
            return OGR_F_GetFieldAsInteger64(given, i) == OGR_F_GetFieldAsInteger64(read, j);
        return sameNumber(OGR_F_GetFieldAsDouble(given, i), OGR_F_GetFieldAsDouble(read, j));
    }
    const QByteArray a = OGR_F_GetFieldAsString(given, i);
    const QByteArray b = OGR_F_GetFieldAsString(read, j);
    if (a == b)
        return true;
    if (type == OFTReal)
        return sameNumber(a.toDouble(), b.toDouble());
    return false;
}

void noteMissing(OGRFeatureH given, int i, Losses &losses)
{
    const char *const value = isSet(given, i) ? OGR_F_GetFieldAsString(given, i) : "";
    if (*value != '\0')
        losses.add(Loss::Types,
                   QObject::tr("\"%2\" in the column \"%1\" is left out")
                       .arg(text(OGR_Fld_GetNameRef(OGR_F_GetFieldDefnRef(given, i))), shown(value)),
                   text(OGR_Fld_GetNameRef(OGR_F_GetFieldDefnRef(given, i))));
}

/// A format of texts cannot tell an empty one from none.
bool sameEmptiness(OGRFeatureH given, int i, OGRFeatureH read, int j)
{
    return isSet(given, i) == isSet(read, j) || *OGR_F_GetFieldAsString(read, j) == '\0';
}

void noteValue(OGRFeatureH given, int i, OGRFeatureH read, int j, Losses &losses)
{
    if (j < 0 || (isSet(given, i) && !isSet(read, j)))
        return noteMissing(given, i, losses);
    OGRFieldDefnH field = OGR_F_GetFieldDefnRef(given, i);
    const QString name = text(OGR_Fld_GetNameRef(field));
    const OGRFieldType type = OGR_Fld_GetType(field);
    if (!sameEmptiness(given, i, read, j))
        return losses.add(Loss::Types, QObject::tr("what is empty in the column \"%1\" becomes \"%2\"")
                                           .arg(name, shown(OGR_F_GetFieldAsString(read, j))));
    if (!isSet(given, i) || sameValue(given, i, read, j))
        return;
    const QString was = text(OGR_F_GetFieldAsString(given, i));
    const QString is = text(OGR_F_GetFieldAsString(read, j));
    if (!isNumber(type) && !isTime(type) && was.startsWith(is))
        return losses.add(Loss::Texts,
                          QObject::tr("texts of the column \"%1\" are cut to %2 letters, one has %3")
                              .arg(name, QString::number(is.size()), QString::number(was.size())));
    losses.add(isNumber(type) || isTime(type) ? Loss::Types : Loss::Texts,
               QObject::tr("\"%2\" in the column \"%1\" becomes \"%3\"")
                   .arg(name, shown(was.toUtf8().constData()), shown(is.toUtf8().constData())),
               name);
}

/// Places are counted in steps by some formats.
double farthestOff(OGRGeometryH a, OGRGeometryH b)
{
    OGREnvelope one = {};
    OGREnvelope other = {};
    OGR_G_GetEnvelope(a, &one);
    OGR_G_GetEnvelope(b, &other);
    return std::max({std::fabs(one.MinX - other.MinX), std::fabs(one.MaxX - other.MaxX),
                     std::fabs(one.MinY - other.MinY), std::fabs(one.MaxY - other.MaxY)});
}

double largest(OGRGeometryH geometry)
{
    OGREnvelope e = {};
    OGR_G_GetEnvelope(geometry, &e);
    return std::max({std::fabs(e.MinX), std::fabs(e.MaxX), std::fabs(e.MinY), std::fabs(e.MaxY)});
}

bool isCollection(OGRwkbGeometryType type) { return OGR_GT_IsSubClassOf(type, wkbGeometryCollection) != 0; }

/// What is left of the type when a part alone and a collection of one part are the same.
OGRwkbGeometryType plainType(OGRGeometryH geometry)
{
    OGRwkbGeometryType type = OGR_GT_Flatten(OGR_G_GetGeometryType(geometry));
    if (isCollection(type) && OGR_G_GetGeometryCount(geometry) == 1)
        type = OGR_GT_Flatten(OGR_G_GetGeometryType(OGR_G_GetGeometryRef(geometry, 0)));
    return OGR_GT_GetLinear(type);
}

void noteGeometry(OGRGeometryH given, OGRGeometryH read, const OutputLayer &layer, Losses &losses)
{
    const bool wasEmpty = !given || OGR_G_IsEmpty(given);
    const bool isEmpty = !read || OGR_G_IsEmpty(read);
    if (wasEmpty && isEmpty)
        return;
    const QString name = given ? text(OGR_G_GetGeometryName(given)) : QString();
    if (wasEmpty != isEmpty)
        return losses.add(Loss::Features,
                          QObject::tr("the geometry of a feature (%1) is left out").arg(name));
    if (plainType(given) != plainType(read))
        losses.add(
            Loss::Features,
            QObject::tr("a geometry (%1) becomes another (%2)").arg(name, text(OGR_G_GetGeometryName(read))));
    constexpr double relative = 4e-9;    // 5 cm of a zone's northing, a decimetre of a degree
    constexpr double stepsOfTable = 1e9; // half of those that it counts its bounds in
    const double step = std::max(layer.bounds.width(), layer.bounds.height()) / stepsOfTable;
    const double off = farthestOff(given, read);
    if (!layer.isElsewhere && !(off <= std::max(step, relative * std::max(1.0, largest(given)))))
        losses.add(Loss::Types, QObject::tr("places are off by %1").arg(QString::number(off, 'g', 3)));
}

void noteStyle(OGRFeatureH given, OGRFeatureH read, Losses &losses)
{
    const char *const was = OGR_F_GetStyleString(given);
    const char *const is = OGR_F_GetStyleString(read);
    if (isUsualStyle(was) || (is && std::strcmp(was, is) == 0))
        return;
    const bool isLabel = std::strstr(was, "LABEL(") != nullptr;
    losses.add(Loss::Styles,
               is        ? QObject::tr("the format holds other styles: colours, patterns or labels change")
               : isLabel ? QObject::tr("the format holds no labels and styles: they are left out")
                         : QObject::tr("the format holds no styles: they are left out"));
}

constexpr int notWritten = -1; ///< for a column: that has been told
constexpr int notRead = -2;

/// In its letter case, where columns differ by that alone.
int columnNamed(OGRFeatureDefnH definition, const QByteArray &name)
{
    if (name.isEmpty())
        return notWritten;
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i)
        if (name == OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i)))
            return i;
    const int found = OGR_FD_GetFieldIndex(definition, name.constData());
    return found < 0 ? notRead : found;
}

Geometry clone(OGRGeometryH geometry) { return Geometry(geometry ? OGR_G_Clone(geometry) : nullptr); }

} // namespace

ValueProbe::Verdict ValueProbe::verdict(OGRGeometryH geometry) const
{
    if (m_verdicts.empty())
        return Held;
    const auto found = m_verdicts.find(kindOfGeometry(geometry));
    return found == m_verdicts.end() ? Held : found->second;
}

/// The names that the columns got.
std::vector<QByteArray> ValueProbe::write(const QString &path, const LayerWriter::Plan &plan,
                                          const std::vector<FeatureBatch::Item *> &samples)
{
    const GdalMessages messages;
    const Dataset dataset = plan.format->create(path, plan.layer);
    if (!dataset)
        throw Failure(QObject::tr("cannot write %1: %2").arg(path, messages.reason()));
    const LayerWriter writer(dataset.get(), plan, nullptr);
    for (FeatureBatch::Item *sample : samples)
        writer.write(sample->feature.get(),
                     clone(sample->geometry.get())); // what is refused is not read again
    std::vector<QByteArray> names;
    OGRFeatureDefnH made = OGR_L_GetLayerDefn(writer.layer());
    for (const int column : writer.columns())
        names.emplace_back(column < 0 ? "" : OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(made, column)));
    return names;
}

ValueProbe::Read ValueProbe::writtenAndRead(const LayerWriter::Plan &plan,
                                            const std::vector<FeatureBatch::Item *> &samples) const
{
    const QTemporaryDir directory(m_place.filePath(QStringLiteral("probe-XXXXXX")));
    const QString path = directory.filePath(m_fileName);
    const std::vector<QByteArray> names = write(path, plan, samples);
    const GdalMessages messages;
    if (plan.layer.mapInfo)
        giveSystem(path, *plan.layer.mapInfo);
    Dataset dataset;
    try {
        dataset = openForReading(writtenFile(path), messages);
    } catch (const Failure &) { // of features without geometry some drivers write nothing that has the name
        return {};
    }
    OGRLayerH layer = GDALDatasetGetLayer(dataset.get(), 0);
    Read read;
    if (!layer)
        return read;
    for (const QByteArray &name : names)
        read.columns.push_back(columnNamed(OGR_L_GetLayerDefn(layer), name));
    while (Feature feature{OGR_L_GetNextFeature(layer)})
        read.features.push_back(std::move(feature));
    return read;
}

void ValueProbe::compare(const LayerWriter::Plan &plan, const FeatureBatch::Item &sample, OGRFeatureH again,
                         const std::vector<int> &columns, Losses &losses)
{
    OGRFeatureH given = sample.feature.get();
    for (std::size_t i = 0; i < columns.size(); ++i)
        if (columns[i] != notWritten)
            noteValue(given, static_cast<int>(i), again, columns[i], losses);
    const Geometry geometry = heldGeometry(clone(sample.geometry.get()), plan.lost);
    noteGeometry(geometry.get(), OGR_F_GetGeometryRef(again), plan.layer, losses);
    noteStyle(given, again, losses);
}

/// One that does not come back as one feature.
void ValueProbe::checkAlone(const LayerWriter::Plan &plan, FeatureBatch::Item &sample, Losses &losses)
{
    const Read read = writtenAndRead(plan, {&sample});
    if (read.features.size() == 1)
        return compare(plan, sample, read.features.front().get(), read.columns, losses);
    if (!sample.geometry || OGR_G_IsEmpty(sample.geometry.get()))
        return losses.add(Loss::Features, QObject::tr("the format holds no features without geometry"));
    const QString name = text(OGR_G_GetGeometryName(sample.geometry.get()));
    const bool isSplit = read.features.size() > 1;
    m_verdicts[kindOfGeometry(sample.geometry.get())] = isSplit ? Split : Refused;
    losses.add(
        Loss::Features,
        isSplit
            ? QObject::tr("a feature of several parts (%1) becomes several features").arg(name)
            : QObject::tr("the format holds no such geometries (%1): their features are left out").arg(name));
}

void ValueProbe::check(const LayerWriter::Plan &plan, const std::vector<FeatureBatch::Item *> &samples,
                       Losses &losses)
{
    if (samples.empty() || !plan.format->canBeRead())
        return;
    LayerWriter::Plan probe = plan;
    probe.layer.isProbe = true;
    const Read read = writtenAndRead(probe, samples);
    if (read.features.size() == samples.size())
        for (std::size_t i = 0; i < samples.size(); ++i)
            compare(probe, *samples[i], read.features[i].get(), read.columns, losses);
    else
        for (FeatureBatch::Item *sample : samples)
            checkAlone(probe, *sample, losses);
}
