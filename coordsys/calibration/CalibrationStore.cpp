#include <coordsys/CalibrationStore.h>

#include "CatalogueSource_p.h"
#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "InputFile_p.h"
#include "UserStoreFile_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/SourceTags.h>
#include <platform/Logger.h>
#include <platform/Utils.h>

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

QString rootName() { return QStringLiteral("calibrations"); }
QString recordName() { return QStringLiteral("calibration"); }
QString pairName() { return QStringLiteral("pair"); }

/// The numbers of a pair and the attributes that hold them. Those that are no numbers are left out.
struct NumberAttribute
{
    const char *name;
    double (*get)(const CalibrationPair &);
    void (*set)(CalibrationPair &, double);
};
constexpr NumberAttribute numbers[] = {
    {"x", [](const CalibrationPair &p) { return p.local.x(); },
     [](CalibrationPair &p, double v) { p.local.setX(v); }},
    {"y", [](const CalibrationPair &p) { return p.local.y(); },
     [](CalibrationPair &p, double v) { p.local.setY(v); }},
    {"knownX", [](const CalibrationPair &p) { return p.known.x(); },
     [](CalibrationPair &p, double v) { p.known.setX(v); }},
    {"knownY", [](const CalibrationPair &p) { return p.known.y(); },
     [](CalibrationPair &p, double v) { p.known.setY(v); }},
    {"height", [](const CalibrationPair &p) { return p.localHeightM; },
     [](CalibrationPair &p, double v) { p.localHeightM = v; }},
    {"knownHeight", [](const CalibrationPair &p) { return p.knownHeightM; },
     [](CalibrationPair &p, double v) { p.knownHeightM = v; }},
    {"weight", [](const CalibrationPair &p) { return p.weight; },
     [](CalibrationPair &p, double v) { p.weight = v; }},
};

/// "prj:Earth Projection 1, 104"; the text may hold colons.
QString tagged(const CoordSystemTypes::SourceData &source)
{
    return source.type == CoordSystemTypes::Unknown
               ? QString()
               : sourceTypeToString(source.type) + QLatin1Char(':') + source.string;
}

CoordSystemTypes::SourceData fromTagged(const QString &text)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    return colon < 0
               ? CoordSystemTypes::SourceData()
               : CoordSystemTypes::SourceData{stringToSourceType(text.left(colon)), text.mid(colon + 1)};
}

/// A system's source; of one with an affine transformation its CoordSys string, which alone tells that.
CoordSystemTypes::SourceData sourceOf(const CoordSystem &cs)
{
    const CoordSystemTypes::SourceData source = cs.sourceParameters();
    const bool isWhole =
        !source.string.isEmpty() && source.type != CoordSystemTypes::Unknown && !cs.affineTransform();
    return isWhole ? source : CoordSystemTypes::SourceData{CoordSystemTypes::Prj, cs.prjStr()};
}

CalibrationPair pairFrom(const XmlElement &element)
{
    CalibrationPair pair;
    pair.name = element.attribute(QLatin1String("name"));
    pair.isUsed = element.attribute(QLatin1String("used")) != QLatin1String("no");
    for (const NumberAttribute &number : numbers) {
        bool ok = false;
        const double value = element.attribute(QLatin1String(number.name)).toDouble(&ok);
        if (ok)
            number.set(pair, value);
    }
    return pair;
}

CalibrationRecord recordFrom(const XmlElement &element)
{
    CalibrationRecord record;
    record.system = fromTagged(element.attribute(QLatin1String("system")));
    record.name = element.attribute(QLatin1String("name"));
    record.known = fromTagged(element.attribute(QLatin1String("known")));
    record.local = fromTagged(element.attribute(QLatin1String("local")));
    record.unitCode = element.attribute(QLatin1String("unit"), QString::number(LinearUnit::Meter)).toInt();
    record.model =
        calibrationModel(element.attribute(QLatin1String("model"))).value_or(CalibrationModel::Similarity);
    record.date = QDate::fromString(element.attribute(QLatin1String("date")), Qt::ISODate);
    for (const XmlElement &e : element.children)
        if (e.name == pairName())
            record.pairs << pairFrom(e);
    return record;
}

void writePair(QXmlStreamWriter &writer, const CalibrationPair &pair)
{
    writer.writeEmptyElement(pairName());
    if (!pair.name.isEmpty())
        writer.writeAttribute(QStringLiteral("name"), xmlWritable(pair.name));
    for (const NumberAttribute &number : numbers)
        if (std::isfinite(number.get(pair)))
            writer.writeAttribute(QLatin1String(number.name), utils::toString(number.get(pair)));
    if (!pair.isUsed)
        writer.writeAttribute(QStringLiteral("used"), QStringLiteral("no"));
}

void writeRecord(QXmlStreamWriter &writer, const CalibrationRecord &record)
{
    writer.writeStartElement(recordName());
    writer.writeAttribute(QStringLiteral("system"), xmlWritable(tagged(record.system)));
    writer.writeAttribute(QStringLiteral("name"), xmlWritable(record.name));
    writer.writeAttribute(QStringLiteral("model"), calibrationWord(record.model));
    writer.writeAttribute(QStringLiteral("known"), xmlWritable(tagged(record.known)));
    if (record.local.type != CoordSystemTypes::Unknown)
        writer.writeAttribute(QStringLiteral("local"), xmlWritable(tagged(record.local)));
    writer.writeAttribute(QStringLiteral("unit"), QString::number(record.unitCode));
    writer.writeAttribute(QStringLiteral("date"), record.date.toString(Qt::ISODate));
    for (const CalibrationPair &pair : record.pairs)
        writePair(writer, pair);
    writer.writeEndElement();
}

CoordSystemPtr systemFrom(const CoordSystemTypes::SourceData &source)
{
    const CoordSystemPtr system = csStringToInternal(source);
    if (!system)
        throw std::runtime_error(
            CoordSysTexts::tr("Система не создаётся: %1").arg(tagged(source)).toStdString());
    return system;
}

CodedError<std::logic_error> cannotWrite(const QString &path)
{
    return {Error::Code::FileFailed, CoordSysTexts::tr("Не могу создать файл %1").arg(path)};
}

void checkFree(const StoreLock &lock, const QString &path)
{
    if (lock.isBusy())
        throw std::logic_error(
            CoordSysTexts::tr("Файл %1 изменяет другая программа").arg(path).toStdString());
}

void write(const QString &path, const QVector<CalibrationRecord> &records)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw cannotWrite(path);
    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(rootName());
    for (const CalibrationRecord &record : records)
        writeRecord(writer, record);
    writer.writeEndElement();
    writer.writeEndDocument();
    if (!file.commit())
        throw cannotWrite(path);
}

} // namespace

Calibration CalibrationRecord::calibration() const
{
    Calibration::Local start;
    const auto manager = activeCatalogues()->projectionParamsManager();
    if (const MIUnitConvParam *unit = manager->unitByID(unitCode, std::nothrow))
        start.unit = *unit;
    if (local.type != CoordSystemTypes::Unknown)
        start.system = systemFrom(local);
    return Calibration(systemFrom(known), pairs, start);
}

CalibrationRecord CalibrationRecord::of(const Calibration &calibration, const CalibrationFit &fit,
                                        const QString &name)
{
    CalibrationRecord record;
    record.system = {CoordSystemTypes::Prj, fit.coordSysText()};
    record.name = name;
    record.known = sourceOf(*calibration.knownSystem());
    if (const CoordSystemPtr local = calibration.localSystem())
        record.local = sourceOf(*local);
    record.unitCode = calibration.localUnitCode();
    record.model = fit.model();
    record.date = QDate::currentDate();
    record.pairs = calibration.pairs();
    return record;
}

struct NIVORA_CS_NO_EXPORT CalibrationStore::Data : QSharedData
{
    QString path;
};

CalibrationStore::CalibrationStore(const QFileInfo &userStore)
    : m_data(new Data)
{
    const QString name = userStore.completeBaseName() + QStringLiteral(".calibration.xml");
    m_data->path = QDir(userStore.absolutePath()).filePath(name);
}

CalibrationStore::CalibrationStore(const CalibrationStore &other) = default;

CalibrationStore &CalibrationStore::operator=(const CalibrationStore &other) = default;

CalibrationStore::~CalibrationStore() = default;

QString CalibrationStore::filePath() const { return m_data->path; }

QVector<CalibrationRecord> CalibrationStore::records() const
{
    if (!QFileInfo::exists(m_data->path))
        return {};
    QFile file(m_data->path);
    XmlElement root;
    const QString closed = openInput(file);
    QString damage = closed.isEmpty() ? readXml(file, root) : closed;
    if (damage.isEmpty() && root.name != rootName())
        damage = CoordSysTexts::tr("Корневой элемент <%1> не из файла систем координат").arg(root.name);
    if (!damage.isEmpty())
        throw std::logic_error(QStringLiteral("%1: %2").arg(m_data->path, damage).toStdString());
    QVector<CalibrationRecord> records;
    for (const XmlElement &e : root.children)
        if (e.name == recordName())
            records << recordFrom(e);
    return records;
}

std::optional<CalibrationRecord> CalibrationStore::find(const CoordSystem &cs) const
{
    try {
        const QVector<CalibrationRecord> all = records();
        if (all.isEmpty())
            return std::nullopt;
        const CoordSystemTypes::SourceData source = cs.sourceParameters();
        const CoordSystemTypes::SourceData written{CoordSystemTypes::Prj, cs.prjStr()};
        for (const CalibrationRecord &record : all)
            if (record.system == source || record.system == written)
                return record;
    } catch (const std::exception &e) {
        LOG_ERROR(QString::fromUtf8(e.what()));
    }
    return std::nullopt;
}

void CalibrationStore::save(const CalibrationRecord &record) const
{
    const StoreLock lock{QFileInfo(m_data->path)};
    checkFree(lock, m_data->path);
    QVector<CalibrationRecord> all;
    try {
        all = records();
    } catch (const std::logic_error &e) {
        LOG_ERROR(QString::fromUtf8(e.what()));
        const QString copy = m_data->path + QStringLiteral(".bak");
        if (!QFileInfo::exists(copy) && !QFile::copy(m_data->path, copy))
            throw cannotWrite(copy);
    }
    const auto same = std::find_if(all.begin(), all.end(),
                                   [&](const CalibrationRecord &r) { return r.system == record.system; });
    if (same == all.end())
        all << record;
    else
        *same = record;
    write(m_data->path, all);
}

bool CalibrationStore::remove(const CoordSystemTypes::SourceData &system) const
{
    if (!QFileInfo::exists(m_data->path))
        return false;
    const StoreLock lock{QFileInfo(m_data->path)};
    checkFree(lock, m_data->path);
    QVector<CalibrationRecord> all = records();
    const auto kept = std::remove_if(all.begin(), all.end(),
                                     [&](const CalibrationRecord &r) { return r.system == system; });
    if (kept == all.end())
        return false;
    all.erase(kept, all.end());
    write(m_data->path, all);
    return true;
}

} // namespace nivora::cs
