#include <coordsys/CoordSystemParams.h>

#include <utility>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT CoordSystemParams::Data : QSharedData
{
    QString name;
    int epsg = CoordSystemTypes::EPSG_UNDEFINDED;
};

CoordSystemParams::CoordSystemParams()
    : m_data(new Data)
{}

CoordSystemParams::CoordSystemParams(QString name, int epsg)
    : m_data(new Data)
{
    m_data->name = std::move(name);
    m_data->epsg = epsg;
}

CoordSystemParams::CoordSystemParams(const CoordSystemParams &other) = default;

CoordSystemParams &CoordSystemParams::operator=(const CoordSystemParams &other) = default;

CoordSystemParams::~CoordSystemParams() = default;

const QString &CoordSystemParams::name() const { return m_data->name; }

int CoordSystemParams::epsg() const { return m_data->epsg; }

QString CoordSystemParams::asPrjString() const { return prjFromParams(params, QStringLiteral(",")); }

QString prjFromParams(const QStringList &params, const QString &separator)
{
    const bool earth = params.value(0).toInt() != 0;
    const QString prefix = earth ? QStringLiteral("Earth Projection ") : QStringLiteral("NonEarth ");
    return prefix + params.join(separator);
}

} // namespace nivora::cs
