#include <coordsys/MapinfoPrjReader.h>

#include "MapinfoScanner_p.h"

#include <QIODevice>
#include <QTextStream>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT MapinfoPrjReader::Data
{
    explicit Data(QTextStream *lines)
        : stream(lines)
    {}

    QTextStream *const stream;
    QString text; ///< the current line, trimmed
    int line = 0;
};

MapinfoPrjReader::MapinfoPrjReader(QTextStream *stream, QObject *parent)
    : QObject(parent)
    , m_data(std::make_unique<Data>(stream))
{}

MapinfoPrjReader::~MapinfoPrjReader() = default;

int MapinfoPrjReader::currentLineNumber() const { return m_data->line; }

bool MapinfoPrjReader::readNext()
{
    bool found = false;
    while (!found && !m_data->stream->atEnd()) {
        m_data->text = m_data->stream->readLine().trimmed();
        ++m_data->line;
        const CatalogueLine::Kind kind = readCatalogueLine(refOf(m_data->text)).kind;
        found = kind == CatalogueLine::Heading || kind == CatalogueLine::Entry;
        if (kind == CatalogueLine::Rejected)
            Q_EMIT rejected();
        Q_EMIT captured();
    }
    return found;
}

TextRef MapinfoPrjReader::capturedCategoryName() const
{
    const CatalogueLine line = readCatalogueLine(refOf(m_data->text));
    return line.kind == CatalogueLine::Heading ? line.name : TextRef();
}

CoordSystemParams MapinfoPrjReader::prj() const
{
    const CatalogueLine line = readCatalogueLine(refOf(m_data->text));
    return line.kind == CatalogueLine::Entry ? line.entry() : CoordSystemParams();
}

TextRef MapinfoPrjReader::currentLineTextRef() const { return readCatalogueLine(refOf(m_data->text)).taken; }

double MapinfoPrjReader::progress() const
{
    const QIODevice *device = m_data->stream->device();
    if (!device)
        return m_data->line == 0 ? 0.0 : 100.0;
    const auto size = static_cast<double>(device->size());
    return size > 0.0 ? static_cast<double>(device->pos()) * 100.0 / size : 100.0;
}

bool MapinfoPrjReader::isIgnoredLine(const QString &line)
{
    return line.isEmpty() || line.startsWith(QLatin1Char('#'));
}

} // namespace nivora::cs
