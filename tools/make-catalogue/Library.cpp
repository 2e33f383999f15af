#include "Library.h"

#include "Table.h"

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>

#include <QFile>

namespace catalogue {
namespace {

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
}

} // namespace

Library::Library(const QByteArray &projectionXml)
{
    // What a factory asks of its catalogues at start-up; the systems proper are not made yet.
    write(m_directory.filePath(QStringLiteral("projection_en.xml")), projectionXml);
    write(m_directory.filePath(QStringLiteral("projections_en.prj")),
          "\"---Start---\"\n\"Longitude / Latitude (WGS 84)\", 1, 104\n\"Longitude / Latitude\", 1, 0\n");
    m_factory = std::make_shared<nivora::cs::CoordSysFactory>(m_directory.path(), m_directory.path(),
                                                              QStringLiteral("en"));
    if (!m_factory->initCoordSystemEnvironment())
        throw Failure(QStringLiteral("the library does not start over the reference tables"));
}

Library::~Library() = default;

std::optional<Srs> Library::read(const QString &coordSys) const
{
    try {
        return Srs::fromHandle(m_factory->createWithoutDescription(coordSys)->copyOgrSpatialReference());
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

} // namespace catalogue
