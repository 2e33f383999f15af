#pragma once

#include <coordsys/CoordSysFactory.h>

#include <QByteArray>
#include <QDir>

#include <memory>

/// What all targets share: a started factory over links to the shipped catalogues, and a directory of its own
/// to put damaged ones into. One per process, never closed, so that the end of a run tests the library's
/// exit.
class Workshop
{
public:
    /// Start-up only. Ends the process when the factory does not start.
    static void open();
    static nivora::cs::CoordSysFactory &factory();
    /// A directory with nothing in it but what put() wrote.
    static QDir dir();
    /// Replaces a file of dir(); \p name is also taken by the factory for its Oracle table.
    static void put(const char *name, const QByteArray &content);
};
