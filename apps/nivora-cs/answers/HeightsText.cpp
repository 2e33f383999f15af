#include "HeightsText.h"

#include "AnswerJson.h"
#include "FileNames.h"

#include <QFile>
#include <QObject>

#include <stdexcept>

using nivora::cs::SpatialSystem;
using Height = nivora::cs::SpatialSystem::Height;

namespace {

constexpr qint64 longestText = 1024 * 1024;

/// By Height.
constexpr const char *kinds[] = {"", "ellipsoidal", "own", "geocentric"};

QString contentOf(const QString &text)
{
    if (!text.trimmed().startsWith(QLatin1Char('@')))
        return text;
    QFile file(localPath(text.trimmed().mid(1)));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(longestText)) : QString();
}

QJsonValue figuresOf(const SpatialSystem &system)
{
    return QJsonObject{
        {QStringLiteral("kind"), QLatin1String(kinds[static_cast<int>(system.height())])},
        {QStringLiteral("name"), textOrNull(system.verticalName())},
        {QStringLiteral("datum"), textOrNull(system.verticalDatum())},
        {QStringLiteral("unit"), system.verticalUnit()},
        {QStringLiteral("metres"), system.verticalUnitM()},
    };
}

std::optional<SpatialSystem> geocentricSystem(const QString &text)
{
    auto system = systemWithHeights(text);
    return system && system->height() == Height::Geocentric ? system : std::nullopt;
}

} // namespace

std::optional<SpatialSystem> spatialSystemIn(const QString &text)
{
    const QString content = contentOf(text);
    if (content.isEmpty())
        return std::nullopt;
    try {
        return SpatialSystem(content);
    } catch (const std::logic_error &) {
        return std::nullopt;
    }
}

std::optional<SpatialSystem> systemWithHeights(const QString &text)
{
    auto system = spatialSystemIn(text);
    return system && system->height() != Height::None ? system : std::nullopt;
}

QString heightsText(const QString &text)
{
    const auto system = systemWithHeights(text);
    if (!system || system->height() == Height::Geocentric)
        return {};
    return system->height() == Height::Own
               ? QObject::tr("Heights: %1 (%2), %3\n")
                     .arg(system->verticalName(), system->verticalDatum(), system->verticalUnit())
               : QObject::tr("Heights: above the ellipsoid, %1\n").arg(system->verticalUnit());
}

QJsonValue heightsJson(const QString &text)
{
    const auto system = systemWithHeights(text);
    return system ? figuresOf(*system) : QJsonValue();
}

QString geocentricPage(const QString &text)
{
    const auto system = geocentricSystem(text);
    return system ? QObject::tr("Name: %1\nKind: geocentric: x, y and z from the middle of the earth, %2; "
                                "only transform --z takes it\n")
                        .arg(system->name(), system->verticalUnit())
                  : QString();
}

QJsonValue geocentricJson(const QString &text)
{
    const auto system = geocentricSystem(text);
    if (!system)
        return {};
    return QJsonObject{
        {QStringLiteral("notation"), system->definition()},
        {QStringLiteral("description"), system->name()},
        {QStringLiteral("kind"), QStringLiteral("geocentric")},
        {QStringLiteral("heights"), figuresOf(*system)},
        {QStringLiteral("unknown"), QJsonObject()},
    };
}
