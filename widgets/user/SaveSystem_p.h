#pragma once

class QWidget;

namespace nivora::cs {

class CoordSystem;
class UserCoordSystem;

/// Asks for name and branch and adds the system to the user's own, file included. False when that was
/// cancelled or failed (then the user was told).
bool saveAsOwnSystem(QWidget *parent, UserCoordSystem &store, const CoordSystem &cs);

} // namespace nivora::cs
