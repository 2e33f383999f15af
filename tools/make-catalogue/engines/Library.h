#pragma once

#include "engines/Engine.h"

#include <QByteArray>
#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace nivora::cs {
class CoordSysFactory;
}

namespace catalogue {

/// The library itself, over the reference tables that are about to be written: it parses CoordSys text,
/// writes it anew and hands it to the driver, and what the driver makes of that is what users get.
class Library
{
public:
    /// \p projectionXml is the content of "projection_en.xml". Throws Failure when the library cannot start.
    explicit Library(const QByteArray &projectionXml);
    /// Over finished files, the catalogue included.
    Library(const QByteArray &projectionXml, const QByteArray &projectionsPrj);
    ~Library();
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    /// The spatial reference that the library makes of CoordSys text; none when it refuses the text.
    std::optional<Srs> read(const QString &coordSys) const;
    /// The values of the library's own text of an EPSG system with a datum's text, an affine clause announced
    /// by a thousand; empty when its plane is off by more than a millimetre.
    QString written(int code, const QString &datum) const;
    /// The content of "coordsys-texts.tsv": what the library writes for the EPSG systems, withdrawn ones
    /// included, that its catalogue lacks, or why it refuses.
    QByteArray texts() const;

private:
    QTemporaryDir m_directory;
    std::shared_ptr<nivora::cs::CoordSysFactory> m_factory;
};

} // namespace catalogue
