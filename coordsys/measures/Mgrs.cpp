#include <coordsys/Mgrs.h>

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include "CrsDefinition_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/mgrs/mgrs.h>
#include <platform/Logger.h>

#include <proj.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <stdexcept>

namespace nivora::cs {
namespace {

bool isLonLat(const QPointF &p)
{
    return p.x() >= -180.0 && p.x() <= 360.0 && p.y() >= -90.0 && p.y() <= 90.0;
}

/// Degrees from Greenwich to where the system's longitudes begin.
double meridianOf(const CoordSystem &cs)
{
    const auto definition = CrsDefinition::of(cs.sourceParameters(), cs.copyOgrSpatialReference().get());
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle base = definition && definition->crs() ? baseOf(context, definition->crs()) : nullptr;
    return base ? meridianDeg(context, base.get()) : 0.0;
}

struct Message
{
    int code;
    const char *text;
};

// clang-format off
constexpr Message messages[] = {
    {mgrs::LatitudeError, QT_TRANSLATE_NOOP("CoordSysTexts", "Широта не попадает в допустимые пределы (от -90 до 90 градусов)")},
    {mgrs::LongitudeError, QT_TRANSLATE_NOOP("CoordSysTexts", "Долгота не попадает в допустимые пределы (от -180 до 360 градусов)")},
    {mgrs::StringError, QT_TRANSLATE_NOOP("CoordSysTexts", "Ошибка строки MGRS: строка слишком длинная, слишком короткая или содержит ошибки")},
    {mgrs::PrecisionError, QT_TRANSLATE_NOOP("CoordSysTexts", "Точность должна быть между 0 и 5 включительно")},
    {mgrs::SemiMajorError, QT_TRANSLATE_NOOP("CoordSysTexts", "Величина большой полуоси отрицательная или равна нулю")},
    {mgrs::InverseFlatteningError, QT_TRANSLATE_NOOP("CoordSysTexts", "Обратный коэффициент сжатия не попадает в допустимые пределы (от 250 до 350)")},
    {mgrs::EastingError, QT_TRANSLATE_NOOP("CoordSysTexts", "Координата восточного положения не попадает в допустимые пределы (от 100,000 до 900,000 метров для UTM) (от 0 до 4,000,000 метров для UPS)")},
    {mgrs::NorthingError, QT_TRANSLATE_NOOP("CoordSysTexts", "Координата северного положения не попадает в допустимые пределы (от 0 до 10,000,000 метров для UTM) (от 0 до 4,000,000 метров для UPS)")},
    {mgrs::ZoneError, QT_TRANSLATE_NOOP("CoordSysTexts", "Номер зоны не попадает в допустимые пределы (от 1 до 60)")},
    {mgrs::HemisphereError, QT_TRANSLATE_NOOP("CoordSysTexts", "Не задано полушарие (должно быть 'N' или 'S')")},
};
// clang-format on

} // namespace

struct NIVORA_CS_NO_EXPORT Mgrs::Data : QSharedData
{
    std::shared_ptr<const CoordTransform> transform; ///< empty for geographic systems
    double meridianDeg = 0.0;                        ///< that the longitudes count from
    int precision = 4;
};

Mgrs::Mgrs(const CoordSystemPtr &cs)
    : m_data(new Data)
{
    setCoordSystem(cs);
}

Mgrs::Mgrs(const Mgrs &other) = default;

Mgrs &Mgrs::operator=(const Mgrs &other) = default;

Mgrs::~Mgrs() = default;

void Mgrs::setPrecision(int precision) { m_data->precision = precision; }

void Mgrs::setCoordSystem(const CoordSystemPtr &cs)
{
    if (!cs)
        throw std::invalid_argument(
            "cs_from"); // as CoordTransform says it, also when there are no catalogues
    if (cs->isLatLong())
        m_data->transform.reset();
    else
        m_data->transform =
            std::make_shared<const CoordTransform>(cs, activeCatalogues()->LatLongCoordSystem());
    // a CoordSys string's own longitudes come out where its datum is not left
    m_data->meridianDeg = cs->isLatLong() || cs->sourceType() == CoordSystem::Prj ? meridianOf(*cs) : 0.0;
}

CoordSystemPtr Mgrs::coordSystem() const
{
    return m_data->transform ? m_data->transform->sourceCoordSystem()
                             : activeCatalogues()->LatLongCoordSystem();
}

QString Mgrs::getMGRSString(double x, double y) const
{
    if (std::isnan(x) || std::isnan(y)) // rectangles contain it
        return QString();
    QPointF lonLat(x, y);
    if (m_data->transform) {
        if (!m_data->transform->sourceCoordSystem()->rectNumericCoordSys().contains(lonLat) ||
            !m_data->transform->forward(QPointF(x, y), lonLat))
            return QString();
    }
    lonLat.rx() += m_data->meridianDeg;
    if (m_data->meridianDeg != 0.0 && (lonLat.x() > 360.0 || lonLat.x() < -180.0))
        lonLat.setX(std::remainder(lonLat.x(), 360.0));
    if (!isLonLat(lonLat))
        return QString();

    char buffer[64] = {};
    static_assert(sizeof buffer >= mgrs::MGRS_BUFFER_SIZE);
    const int code = mgrs::Convert_Geodetic_To_MGRS(proj_torad(lonLat.y()), proj_torad(lonLat.x()),
                                                    m_data->precision, buffer);
    if (code == 0)
        return QString::fromLatin1(buffer);
    LOG_ERROR(QStringLiteral("mgrs: %1").arg(errorMsg(code)));
    return QString();
}

QString Mgrs::errorMsg(int code) const
{
    const auto message = std::find_if(std::begin(messages), std::end(messages),
                                      [code](const Message &known) { return known.code == code; });
    if (message == std::end(messages))
        return CoordSysTexts::tr("Неизвестный код ошибки %1").arg(code);
    return CoordSysTexts::tr(message->text);
}

} // namespace nivora::cs
