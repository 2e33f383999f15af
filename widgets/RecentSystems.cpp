#include <widgets/RecentSystems_p.h>

#include <QSettings>

#include <algorithm>

namespace nivora::cs {
namespace {

using Recent = QVector<CoordSystemCatalogModel::RecentSystem>;

constexpr int mostKept = 12;
const char listKey[] = "nivora-cs/recentSystems";
const char nameKey[] = "name";
const char taggedKey[] = "tagged";
const char epsgKey[] = "epsg";

void save(const Recent &systems)
{
    QSettings settings;
    settings.beginWriteArray(QLatin1String(listKey), systems.size());
    for (int i = 0; i < systems.size(); ++i) {
        settings.setArrayIndex(i);
        settings.setValue(QLatin1String(nameKey), systems.at(i).name);
        settings.setValue(QLatin1String(taggedKey), systems.at(i).tagged);
        settings.setValue(QLatin1String(epsgKey), systems.at(i).epsg);
    }
    settings.endArray();
}

} // namespace

Recent loadRecentSystems()
{
    Recent systems;
    QSettings settings;
    const int count = std::min(settings.beginReadArray(QLatin1String(listKey)), mostKept);
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        CoordSystemCatalogModel::RecentSystem system;
        system.name = settings.value(QLatin1String(nameKey)).toString();
        system.tagged = settings.value(QLatin1String(taggedKey)).toString();
        system.epsg = settings.value(QLatin1String(epsgKey), system.epsg).toInt();
        if (!system.tagged.isEmpty())
            systems << system;
    }
    settings.endArray();
    return systems;
}

Recent addRecentSystem(const CoordSystemCatalogModel::RecentSystem &system)
{
    Recent systems = loadRecentSystems();
    const auto same = [&](const auto &other) { return other.tagged == system.tagged; };
    systems.erase(std::remove_if(systems.begin(), systems.end(), same), systems.end());
    systems.prepend(system);
    systems.resize(std::min(systems.size(), mostKept));
    save(systems);
    return systems;
}

} // namespace nivora::cs
