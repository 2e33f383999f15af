#pragma once

#include <coordsys/CoordSysFactory.h>

#include <memory>

class CommandLine;

/// Keeps Qt's, and so the library's, messages off stderr. The last error line is remembered.
void installMessageHandler();

/// The library, started up with what the command line says and installed as the process's default, which goes
/// with the process: taking the catalogues apart at the end would cost as much as naming a system.
class Session
{
public:
    /// Throws Failure with the library's reason.
    explicit Session(const CommandLine &line);
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    const nivora::cs::CoordSysFactory &factory() const { return *m_factory; }
    nivora::cs::UserCoordSystem &userSystems() const { return *m_factory->userCoordSystem(); }

private:
    std::shared_ptr<nivora::cs::CoordSysFactory> m_factory;
};
