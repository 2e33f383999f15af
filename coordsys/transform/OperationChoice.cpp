#include <coordsys/OperationChoice.h>

#include "CoordSysTexts_p.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSharedData>

#include <cmath>
#include <stdexcept>

namespace nivora::cs {

struct NIVORA_CS_NO_EXPORT OperationChoice::Data : QSharedData
{
    QString operation;
    std::optional<QRectF> area;
    bool allowsBallpark = true;
    std::optional<double> mostErrorM;
};

namespace {

const QLatin1String operationKey("operation");
const QLatin1String areaKey("area");
const QLatin1String ballparkKey("ballpark");
const QLatin1String errorKey("maxError");

bool isOnEarth(const QRectF &area)
{
    const bool latitudes = area.top() >= -90.0 && area.bottom() <= 90.0 && area.height() > 0.0;
    const bool longitudes = area.left() >= -180.0 && area.left() <= 180.0 && area.width() != 0.0 &&
                            std::fabs(area.width()) <= 360.0;
    return latitudes && longitudes; // false for NaN
}

QJsonArray numbersOf(const QRectF &area) { return {area.left(), area.top(), area.width(), area.height()}; }

[[noreturn]] void throwUnreadable(const QString &text)
{
    throw std::invalid_argument(
        CoordSysTexts::tr("Выбор операции не читается: %1").arg(text.left(200)).toStdString());
}

QRectF rectOf(const QJsonValue &value)
{
    const QJsonArray numbers = value.toArray();
    const auto number = [&numbers](int i) { return numbers.at(i).toDouble(std::nan("")); };
    return numbers.size() == 4 ? QRectF(number(0), number(1), number(2), number(3)) : QRectF();
}

/// False for a key that is none, or a value of another kind.
bool readMember(const QString &key, const QJsonValue &value, OperationChoice &choice)
{
    if (key == operationKey && value.isString())
        choice = choice.withOperation(value.toString());
    else if (key == areaKey)
        choice = choice.withArea(rectOf(value));
    else if (key == ballparkKey && value.isBool())
        choice = value.toBool() ? choice : choice.withoutBallpark();
    else if (key == errorKey)
        choice = choice.withMostError(value.toDouble());
    else
        return false;
    return true;
}

} // namespace

OperationChoice::OperationChoice()
    : m_data(new Data)
{}
OperationChoice::OperationChoice(const OperationChoice &other) = default;
OperationChoice &OperationChoice::operator=(const OperationChoice &other) = default;
OperationChoice::~OperationChoice() = default;

OperationChoice OperationChoice::withOperation(const QString &text) const
{
    OperationChoice choice(*this);
    choice.m_data->operation = text.trimmed();
    return choice;
}

OperationChoice OperationChoice::withArea(const QRectF &area) const
{
    if (!isOnEarth(area))
        throw std::invalid_argument(CoordSysTexts::tr("Область не лежит на земле").toStdString());
    OperationChoice choice(*this);
    choice.m_data->area = area;
    return choice;
}

OperationChoice OperationChoice::withoutBallpark() const
{
    OperationChoice choice(*this);
    choice.m_data->allowsBallpark = false;
    return choice;
}

OperationChoice OperationChoice::withMostError(double metres) const
{
    if (!(metres > 0.0) || !std::isfinite(metres))
        throw std::invalid_argument(CoordSysTexts::tr("Погрешность должна быть больше нуля").toStdString());
    OperationChoice choice(*this);
    choice.m_data->mostErrorM = metres;
    return choice;
}

QString OperationChoice::operation() const { return m_data->operation; }

std::optional<QRectF> OperationChoice::area() const { return m_data->area; }

bool OperationChoice::allowsBallpark() const { return m_data->allowsBallpark; }

std::optional<double> OperationChoice::mostErrorM() const { return m_data->mostErrorM; }

bool OperationChoice::isDefault() const { return *this == OperationChoice(); }

bool OperationChoice::operator==(const OperationChoice &other) const
{
    const Data &a = *m_data;
    const Data &b = *other.m_data;
    return a.operation == b.operation && a.area == b.area && a.allowsBallpark == b.allowsBallpark &&
           a.mostErrorM == b.mostErrorM;
}

QString OperationChoice::toText() const
{
    QJsonObject json;
    if (!operation().isEmpty())
        json[operationKey] = operation();
    if (area())
        json[areaKey] = numbersOf(*area());
    if (!allowsBallpark())
        json[ballparkKey] = false;
    if (mostErrorM())
        json[errorKey] = *mostErrorM();
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

OperationChoice OperationChoice::fromText(const QString &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isObject())
        throwUnreadable(text);
    OperationChoice choice;
    const QJsonObject json = document.object();
    for (auto member = json.begin(); member != json.end(); ++member)
        if (!readMember(member.key(), member.value(), choice))
            throwUnreadable(text);
    return choice;
}

} // namespace nivora::cs
