#include <widgets/user/RecentSystems_p.h>

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
const char pinnedKey[] = "pinned";

void save(const Recent &systems)
{
    QSettings settings;
    settings.beginWriteArray(QLatin1String(listKey), systems.size());
    for (int i = 0; i < systems.size(); ++i) {
        settings.setArrayIndex(i);
        settings.setValue(QLatin1String(nameKey), systems.at(i).name);
        settings.setValue(QLatin1String(taggedKey), systems.at(i).tagged);
        settings.setValue(QLatin1String(epsgKey), systems.at(i).epsg);
        settings.setValue(QLatin1String(pinnedKey), systems.at(i).isPinned);
    }
    settings.endArray();
}

/// Pinned ones first; of the others the last that fit.
Recent saved(Recent systems)
{
    std::stable_partition(systems.begin(), systems.end(), [](const auto &one) { return one.isPinned; });
    const auto pinned =
        std::count_if(systems.begin(), systems.end(), [](const auto &one) { return one.isPinned; });
    systems.resize(std::min(static_cast<int>(systems.size()), std::max(mostKept, static_cast<int>(pinned))));
    save(systems);
    return systems;
}

} // namespace

Recent loadRecentSystems()
{
    Recent systems;
    QSettings settings;
    const int count = settings.beginReadArray(QLatin1String(listKey));
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        CoordSystemCatalogModel::RecentSystem system;
        system.name = settings.value(QLatin1String(nameKey)).toString();
        system.tagged = settings.value(QLatin1String(taggedKey)).toString();
        system.epsg = settings.value(QLatin1String(epsgKey), system.epsg).toInt();
        system.isPinned = settings.value(QLatin1String(pinnedKey)).toBool();
        if (!system.tagged.isEmpty())
            systems << system;
    }
    settings.endArray();
    return systems;
}

Recent addRecentSystem(const CoordSystemCatalogModel::RecentSystem &system)
{
    Recent systems = loadRecentSystems();
    CoordSystemCatalogModel::RecentSystem first = system;
    for (int i = systems.size(); i-- > 0;)
        if (systems.at(i).tagged == system.tagged) {
            first.isPinned = first.isPinned || systems.at(i).isPinned;
            systems.remove(i);
        }
    systems.prepend(first);
    return saved(systems);
}

Recent removeRecentSystem(const QString &tagged)
{
    Recent systems = loadRecentSystems();
    const auto same = [&](const auto &other) { return other.tagged == tagged; };
    systems.erase(std::remove_if(systems.begin(), systems.end(), same), systems.end());
    return saved(systems);
}

Recent pinSystem(const CoordSystemCatalogModel::RecentSystem &system, bool isPinned)
{
    Recent systems = addRecentSystem(system);
    for (auto &one : systems)
        if (one.tagged == system.tagged)
            one.isPinned = isPinned;
    return saved(systems);
}

bool isPinnedSystem(const QString &tagged)
{
    const Recent systems = loadRecentSystems();
    return std::any_of(systems.begin(), systems.end(),
                       [&](const auto &one) { return one.isPinned && one.tagged == tagged; });
}

} // namespace nivora::cs
