#include <coordsys/LinearUnit.h>

#include "CoordSysTexts_p.h"

#include <utility>

namespace nivora::cs {
namespace {

std::string unknownUnit(const QString &unit)
{
    return CoordSysTexts::tr("Неизвестная единица измерения: %1").arg(unit).toStdString();
}

} // namespace

struct NIVORA_CS_NO_EXPORT LinearUnit::Data : QSharedData
{
    QString name;
    QString localizedName;
    QString description;
    double conversion = 0.0;
    int unitCode = -1;

    /// Never destroyed: statics may still make units while the process ends.
    static const QSharedDataPointer<Data> &none()
    {
        static const auto &made = *new const QSharedDataPointer<Data>(new Data);
        return made;
    }
};

LinearUnit::LinearUnit()
    : m_data(Data::none())
{}

LinearUnit::LinearUnit(QString name, QString description, double conversion)
    : m_data(new Data)
{
    m_data->description = std::move(description);
    setName(std::move(name));
    setConversion(conversion);
}

LinearUnit::LinearUnit(const LinearUnit &other) = default;

LinearUnit &LinearUnit::operator=(const LinearUnit &other) = default;

LinearUnit::~LinearUnit() = default;

const QString &LinearUnit::name() const { return m_data->name; }

const QString &LinearUnit::localizedName() const { return m_data->localizedName; }

const QString &LinearUnit::description() const { return m_data->description; }

double LinearUnit::conversion() const { return m_data->conversion; }

int LinearUnit::unitCode() const { return m_data->unitCode; }

void LinearUnit::setLocalizedName(const QString &name) { m_data->localizedName = name; }

void LinearUnit::setDescription(const QString &description) { m_data->description = description; }

void LinearUnit::setUnitCode(int code) { m_data->unitCode = code; }

void LinearUnit::setName(QString name)
{
    if (name.isEmpty())
        throw std::invalid_argument("name");
    m_data->name = std::move(name);
}

void LinearUnit::setConversion(double conversion)
{
    if (!(conversion >= 0.0))
        throw std::invalid_argument("conversion");
    m_data->conversion = conversion;
}

bool LinearUnit::isDegree() const { return m_data->localizedName == QString(QChar(0x00B0)); }

UnknownUnitException::UnknownUnitException(const QString &name)
    : std::logic_error(unknownUnit(name))
    , Error(Code::UnknownUnit)
{}

UnknownUnitException::UnknownUnitException(int code)
    : std::logic_error(unknownUnit(QLatin1Char('#') + QString::number(code)))
    , Error(Code::UnknownUnit)
{}

} // namespace nivora::cs
