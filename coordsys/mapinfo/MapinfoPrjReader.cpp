#include <coordsys/MapinfoPrjReader.h>

#include "MapinfoScanner_p.h"

#include <QIODevice>
#include <QTextStream>

namespace nivora::cs {
MapinfoPrjReader::MapinfoPrjReader(QTextStream *stream, QObject *parent)
    : QObject(parent)
    , m_stream(stream)
{}

bool MapinfoPrjReader::readNext()
{
    bool found = false;
    while (!found && !m_stream->atEnd()) {
        m_text = m_stream->readLine().trimmed();
        ++m_line;
        const CatalogueLine::Kind kind = readCatalogueLine(refOf(m_text)).kind;
        found = kind == CatalogueLine::Heading || kind == CatalogueLine::Entry;
        if (kind == CatalogueLine::Rejected)
            Q_EMIT rejected();
        Q_EMIT captured();
    }
    return found;
}

TextRef MapinfoPrjReader::capturedCategoryName() const
{
    const CatalogueLine line = readCatalogueLine(refOf(m_text));
    return line.kind == CatalogueLine::Heading ? line.name : TextRef();
}

CoordSystemParams MapinfoPrjReader::prj() const
{
    const CatalogueLine line = readCatalogueLine(refOf(m_text));
    return line.kind == CatalogueLine::Entry ? line.entry() : CoordSystemParams();
}

TextRef MapinfoPrjReader::currentLineTextRef() const { return readCatalogueLine(refOf(m_text)).taken; }

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
