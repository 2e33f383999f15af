#pragma once

#include "Engine.h"

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
    ~Library();
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    /// The spatial reference that the library makes of CoordSys text; none when it refuses the text.
    std::optional<Srs> read(const QString &coordSys) const;

private:
    QTemporaryDir m_directory;
    std::shared_ptr<nivora::cs::CoordSysFactory> m_factory;
};

} // namespace catalogue
