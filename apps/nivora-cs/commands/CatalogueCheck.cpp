#include "CatalogueCheck.h"

#include "FileNames.h"
#include "Output.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/MapinfoCoordSystem.h>
#include <coordsys/MapinfoPrjReader.h>
#include <coordsys/TABProjInfo.h>

#include <QFile>
#include <QHash>
#include <QTextCodec>
#include <QTextStream>

using namespace nivora::cs;

namespace {

bool isUtf8(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

bool isAscii(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

/// How many values an entry needs: projection, datum, a user datum's figures, unit, parameters. 0 when that
/// cannot be told.
int valuesNeeded(const QStringList &values)
{
    constexpr int longitudeLatitude = 1;
    constexpr int shortUserDatum =
        999; // ellipsoid and shift follow; rotations, scale, meridian with the other
    const int projection = values.value(0).toInt();
    const int datum = values.value(1).toInt();
    const int parameters = paramForPrj(projection);
    if (projection != longitudeLatitude && parameters == 0)
        return 0;
    const int figures = !isUserDatum(datum) ? 0 : datum == shortUserDatum ? 4 : 9;
    return 2 + figures + (projection == longitudeLatitude ? 0 : 1 + parameters);
}

/// On one line, and nothing in it that a terminal would obey.
QString shown(const QString &text)
{
    QString result = oneLine(text);
    for (QChar &c : result)
        if (!c.isPrint())
            c = QLatin1Char('?');
    return result;
}

class Check
{
public:
    Check(const CoordSysFactory &factory, const QString &path)
        : m_factory(factory)
        , m_codec(codecNameForTextFile(path))
        , m_catalogue([&factory](const QString &prj) { return factory.createWithoutDescription(prj); })
    {
        QFile file(localPath(path));
        if (!file.open(QIODevice::ReadOnly))
            throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
        m_bytes = file.readAll();
        m_catalogue.loadFromPRJ(QFileInfo(localPath(path)));
    }

    /// Number of findings.
    int run()
    {
        const QList<QByteArray> lines = m_bytes.split('\n');
        QTextCodec *const written = QTextCodec::codecForName(m_codec);
        QString text = QTextCodec::codecForUtfText(m_bytes, written)->toUnicode(m_bytes);
        QTextStream stream(&text, QIODevice::ReadOnly);
        MapinfoPrjReader reader(&stream);
        QObject::connect(&reader, &MapinfoPrjReader::captured, &reader, [&] {
            m_line = reader.currentLineNumber();
            encoding(lines.value(m_line - 1));
        });
        QObject::connect(&reader, &MapinfoPrjReader::rejected, &reader, [&] {
            m_line = reader.currentLineNumber();
            found(QObject::tr("not an entry: %1").arg(reader.currentLineTextRef().toString()));
        });
        while (reader.readNext())
            if (reader.capturedCategoryName().isNull())
                entry(reader.prj());
        if (!m_bytes.isEmpty() && !m_bytes.endsWith('\n'))
            found(QObject::tr("no line break at the end of the file, which may be cut off"));
        return m_findings;
    }

private:
    void found(const QString &what)
    {
        ++m_findings;
        print(QObject::tr("line %1: %2\n").arg(QString::number(m_line), shown(what)));
    }

    void encoding(const QByteArray &bytes)
    {
        const bool readAsUtf8 = m_codec == "UTF-8";
        if (bytes.contains('\0'))
            found(QObject::tr("a zero byte: not a text of one byte a sign"));
        else if (isAscii(bytes))
            return;
        else if (readAsUtf8 && !isUtf8(bytes))
            found(QObject::tr("not UTF-8, which the first line lets expect"));
        else if (!readAsUtf8 && isUtf8(bytes))
            found(QObject::tr("UTF-8, where the first line is in %1").arg(QString::fromLatin1(m_codec)));
    }

    void entry(const CoordSystemParams &entry)
    {
        const QString prj = entry.asPrjString();
        const QString same = entry.name() + QLatin1Char('\t') + prj;
        const int needed = valuesNeeded(entry.params);
        if (m_texts.contains(same))
            found(QObject::tr("duplicate of line %1: %2")
                      .arg(QString::number(m_texts.value(same)), entry.name()));
        else if (entry.epsg() > 0 && m_codes.contains(entry.epsg()))
            found(QObject::tr("duplicate of the code %1 on line %2: %3")
                      .arg(QString::number(entry.epsg()), QString::number(m_codes.value(entry.epsg())),
                           entry.name()));
        else if (entry.params.size() < needed)
            found(QObject::tr("%1 values where %2 are needed: %3")
                      .arg(QString::number(entry.params.size()), QString::number(needed), entry.name()));
        else if (build(entry.name(), prj) && entry.epsg() > 0 && !m_catalogue.systemOfCode(entry.epsg()))
            found(QObject::tr("%1 is the code of another plane: %2")
                      .arg(QString::number(entry.epsg()), entry.name()));
        if (!m_texts.contains(same))
            m_texts.insert(same, m_line);
        if (!m_codes.contains(entry.epsg()))
            m_codes.insert(entry.epsg(), m_line);
    }

    bool build(const QString &name, const QString &prj)
    {
        try {
            m_factory.createWithoutDescription(prj);
            return true;
        } catch (const std::exception &e) {
            found(QObject::tr("cannot be built: %1: %2").arg(name, QString::fromUtf8(e.what())));
            return false;
        }
    }

    const CoordSysFactory &m_factory;
    QByteArray m_codec;
    MapinfoCoordSystem m_catalogue; ///< of the file alone
    QByteArray m_bytes;
    QHash<QString, int> m_texts; ///< name and CoordSys string to line
    QHash<int, int> m_codes;     ///< EPSG code to line
    int m_line = 0;
    int m_findings = 0;
};

} // namespace

int checkCatalogue(const CoordSysFactory &factory, const QString &path)
{
    return Check(factory, path).run() == 0 ? Success : SomeFailed;
}
