#include <coordsys/LinearUnit.h>

#include <QObject>

#include <utility>

namespace nivora::cs {
namespace {

std::string unknownUnit(const QString &unit)
{
    return QObject::tr("Неизвестная единица измерения: %1").arg(unit).toStdString();
}

} // namespace

LinearUnit::LinearUnit(QString name, QString description, double conversion)
    : m_description(std::move(description))
{
    setName(std::move(name));
    setConversion(conversion);
}

void LinearUnit::setName(QString name)
{
    if (name.isEmpty())
        throw std::invalid_argument("name");
    m_name = std::move(name);
}

void LinearUnit::setConversion(double conversion)
{
    if (!(conversion >= 0.0))
        throw std::invalid_argument("conversion");
    m_conversion = conversion;
}

bool LinearUnit::isDegree() const { return m_localizedName == QString(QChar(0x00B0)); }

UnknownUnitException::UnknownUnitException(const QString &name)
    : std::logic_error(unknownUnit(name))
    , Error(Code::UnknownUnit)
{}

UnknownUnitException::UnknownUnitException(int code)
    : std::logic_error(unknownUnit(QLatin1Char('#') + QString::number(code)))
    , Error(Code::UnknownUnit)
{}

} // namespace nivora::cs
