#pragma once

#include "Session.h"

#include <coordsys/CoordSystem.h>

#include <QStringList>

namespace nivora::python {

/// A system and what was said of the text that it was made from.
struct System
{
    cs::CoordSystemPtr system;
    QStringList notes;
    QString name; ///< given by the caller; empty for the system's own
};

/// A System, or a text for one.
System systemOf(const py::handle &value);

} // namespace nivora::python
