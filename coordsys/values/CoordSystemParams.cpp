#include <coordsys/CoordSystemParams.h>

#include <utility>

namespace nivora::cs {

CoordSystemParams::CoordSystemParams(QString name, int epsg)
    : m_name(std::move(name))
    , m_epsg(epsg)
{}

QString CoordSystemParams::asPrjString() const { return prjFromParams(params, QStringLiteral(",")); }

QString prjFromParams(const QStringList &params, const QString &separator)
{
    const bool earth = params.value(0).toInt() != 0;
    const QString prefix = earth ? QStringLiteral("Earth Projection ") : QStringLiteral("NonEarth ");
    return prefix + params.join(separator);
}

} // namespace nivora::cs
