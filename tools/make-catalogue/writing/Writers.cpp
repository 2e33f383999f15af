#include "writing/Writers.h"

#include "Generator.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace catalogue {
namespace {

using Attributes = std::vector<std::pair<const char *, QString>>;

/// An XML file of sections of elements without content. Attributes keep the given order.
class XmlFile
{
public:
    XmlFile(const char *root, const Attributes &attributes)
        : m_xml(&m_bytes)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(1);
        m_xml.writeStartDocument();
        open(root, attributes);
    }
    void open(const char *name, const Attributes &attributes = {})
    {
        m_xml.writeStartElement(QLatin1String(name));
        write(attributes);
    }
    void close() { m_xml.writeEndElement(); }
    void entry(const char *name, const Attributes &attributes)
    {
        m_xml.writeEmptyElement(QLatin1String(name));
        write(attributes);
    }
    QByteArray finish()
    {
        m_xml.writeEndDocument();
        return m_bytes;
    }

private:
    void write(const Attributes &attributes)
    {
        for (const auto &[name, value] : attributes)
            m_xml.writeAttribute(QLatin1String(name), value);
    }
    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
};

/// Rows of a table as entries of one section; the pairs are attribute and column.
void section(XmlFile &file, const char *name, const char *entry, const Table &table,
             const std::vector<std::pair<const char *, const char *>> &columns,
             const QString &kind = QString())
{
    file.open(name);
    for (const Table::Row &row : table) {
        if (!kind.isNull() && row.text("kind") != kind)
            continue;
        Attributes attributes;
        for (const auto &[attribute, column] : columns)
            attributes.emplace_back(attribute, row.text(column));
        file.entry(entry, attributes);
    }
    file.close();
}

QByteArray headingLine(const QString &name) { return "\"---" + name.toUtf8() + "---\"\n"; }

QByteArray prjLine(const Entry &entry, const QString &name)
{
    // A name that ends like "\p4326" would lose its end to the code, and `",` ends a name.
    static const QRegularExpression unreadable(QStringLiteral("\"|\\\\p\\d+$|^---"));
    if (name.isEmpty() || name.contains(unreadable))
        throw Failure(QStringLiteral("unusable name: %1").arg(name));
    const QByteArray code = entry.epsg > 0 ? "\\p" + QByteArray::number(entry.epsg) : QByteArray();
    return '"' + name.toUtf8() + code + "\", " + entry.params.toUtf8() + '\n';
}

QString figure(double value) { return QString::number(value, 'f', 0); }

} // namespace

Versions recordedVersions(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&file);
    xml.readNextStartElement();
    return {xml.attributes().value(QLatin1String("gdal")).toString(),
            xml.attributes().value(QLatin1String("epsg")).toString()};
}

ReferenceTables::ReferenceTables(const QString &directory)
    : projections(directory + QStringLiteral("/projections.tsv"))
    , ellipsoids(directory + QStringLiteral("/ellipsoids.tsv"))
    , datums(directory + QStringLiteral("/datums.tsv"))
    , units(directory + QStringLiteral("/units.tsv"))
{}

QByteArray projectionXml(const ReferenceTables &tables, Language language, const Versions &versions)
{
    const bool russian = language == Language::Russian;
    const char *name = russian ? "name_ru" : "name_en";
    const char *descr = russian ? "descr_ru" : "descr_en";
    const char *local = russian ? "l10n_ru" : "l10n_en";
    XmlFile file("catalogue", {{"language", russian ? QStringLiteral("ru") : QStringLiteral("en")},
                               {"gdal", versions.gdal},
                               {"epsg", versions.epsg}});
    section(file, "projections", "projection", tables.projections, {{"id", "id"}, {"name", name}});
    section(file, "ellipsoids", "ellipsoid", tables.ellipsoids,
            {{"id", "id"},
             {"name", name},
             {"name_mitab", "name_mitab"},
             {"semi_major", "semi_major"},
             {"inv_flatenning", "inv_flattening"}});
    section(file, "datums", "datum", tables.datums,
            {{"id", "id"},
             {"name", name},
             {"name_mitab", "name_mitab"},
             {"epsg_mitab", "epsg"},
             {"ellipsoid", "ellipsoid"},
             {"dx", "dx"},
             {"dy", "dy"},
             {"dz", "dz"},
             {"rx", "rx"},
             {"ry", "ry"},
             {"rz", "rz"},
             {"sa", "sa"},
             {"pm", "pm"}});
    section(file, "units", "unit", tables.units,
            {{"id", "id"},
             {"name_mi", "name_mi"},
             {"name_l10n", local},
             {"descr", descr},
             {"conv", "conv"},
             {"name_proj4", "name_proj4"}},
            QStringLiteral("linear"));
    section(file, "areas", "area", tables.units,
            {{"id", "id"}, {"name_mi", "name_mi"}, {"name_l10n", local}, {"descr", descr}, {"conv", "conv"}},
            QStringLiteral("area"));
    return file.finish();
}

QByteArray projectionsPrj(const Catalogue &catalogue, Language language)
{
    const bool russian = language == Language::Russian;
    QByteArray text;
    for (std::size_t i = 0; i < catalogue.categories.size(); ++i) {
        const Category &category = catalogue.categories[i];
        QByteArray lines;
        for (const Entry &entry : catalogue.entries)
            if (entry.category == static_cast<int>(i))
                lines += prjLine(entry, russian ? entry.nameRu : entry.nameEn);
        // The first line must be a heading: the reader tells the encoding by it.
        if (!lines.isEmpty())
            text += (text.isEmpty() ? "" : "\n") + headingLine(russian ? category.nameRu : category.nameEn) +
                    lines;
    }
    return text;
}

QByteArray boundsXml(const std::vector<BoundsTable::Record> &records, const Versions &versions)
{
    static const char *const names[] = {"pp0", "pp1", "pp2", "pp3", "pp4", "pp5"};
    const QString unset = QStringLiteral("-1"); // matches any ellipsoid, unit, datum
    XmlFile file("bounds", {{"gdal", versions.gdal}, {"epsg", versions.epsg}});
    for (const BoundsTable::Record &record : records) {
        Attributes attributes{{"prj", QString::number(record.projection)}, {"el", unset}, {"u", unset}};
        for (int i = 0; i < 6; ++i)
            attributes.emplace_back(names[i], record.params.value(i, QStringLiteral("0")));
        attributes.insert(attributes.end(), {{"datum", unset},
                                             {"xmin", figure(record.rect.left())},
                                             {"ymin", figure(record.rect.top())},
                                             {"xmax", figure(record.rect.right())},
                                             {"ymax", figure(record.rect.bottom())}});
        file.entry("cs", attributes);
    }
    return file.finish();
}

QByteArray oracleXml(const Table &legacy, const Catalogue &catalogue, const Versions &versions)
{
    XmlFile file("srids", {{"gdal", versions.gdal}, {"epsg", versions.epsg}});
    QSet<int> known;
    const auto put = [&](int srid, const QString &params) {
        if (!known.contains(srid))
            file.entry("cs", {{"srid", QString::number(srid)}, {"mbproj", params}});
        known.insert(srid);
    };
    for (const Table::Row &row : legacy)
        put(row.integer("srid"), row.text("mbproj"));
    for (const Entry &entry : catalogue.entries)
        if (entry.epsg > 0 && !entry.isPlan())
            put(entry.epsg, entry.params);
    return file.finish();
}

QByteArray countriesTsv(const Table &countries)
{
    QByteArray text = "# names, codes in force, the country's own first\n";
    for (const Table::Row &row : countries)
        text += (row.text("names") + QLatin1Char('\t') + row.text("codes")).toUtf8() + '\n';
    return text;
}

QByteArray aliasesTsv(const Table &aliases, const Table &places)
{
    QByteArray text = "# names, codes, words instead, remark in Russian, remark in English\n";
    const auto put = [&text](const QStringList &cells) {
        text += cells.join(QLatin1Char('\t')).toUtf8() + '\n';
    };
    for (const Table::Row &row : aliases)
        put({row.text("names"), row.text("codes"), row.text("words"), row.text("remark_ru"),
             row.text("remark_en")});
    for (const Table::Row &row : places)
        if (!row.text("name_ru").isEmpty())
            put({row.text("name_ru"), QString(), row.text("prefix"), QString(), QString()});
    return text;
}

QByteArray refusedTsv(const std::vector<Refusal> &refusals)
{
    QByteArray text = "epsg\tname\treason\tdetail\n";
    for (const Refusal &r : refusals)
        text += QStringList{QString::number(r.code), r.name, r.reason, r.detail}
                    .join(QLatin1Char('\t'))
                    .toUtf8() +
                '\n';
    return text;
}

} // namespace catalogue
