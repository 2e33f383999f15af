// What a picker's buttons, menu and map do, and what it remembers.

#include <widgets/CalibrationDialog.h>
#include <widgets/choosing/GuessDialog_p.h>
#include <widgets/choosing/PickerPrivate_p.h>
#include <widgets/choosing/SystemMenu_p.h>
#include <widgets/user/SaveSystem_p.h>

#include <coordsys/CoordSysFactory.h>

#include <QHeaderView>
#include <QMessageBox>
#include <QSettings>

#include <exception>

namespace nivora::cs {
namespace {

/// More outlines than this say nothing.
constexpr int mostNeighbours = 150;

// In the application's default settings.
constexpr char treeKey[] = "nivora-cs/picker/treeColumns";
constexpr char resultsKey[] = "nivora-cs/picker/resultColumns";
constexpr char openKey[] = "nivora-cs/picker/openSections";
constexpr char withdrawnKey[] = "nivora-cs/picker/withdrawn";

} // namespace

/// The systems of the same branch, category or country whose areas touch the surroundings of this one.
void CoordSystemPicker::Private::showNeighbours(const QModelIndex &row)
{
    QVector<WorldMap::Neighbour> shown;
    neighbours.clear();
    const bool isSystem = CoordSystemCatalogModel::isSystem(row);
    const QRectF near = ui.map->shownArea();
    const int count = isSystem ? model.rowCount(row.parent()) : 0;
    for (int i = 0; i < count && shown.size() < mostNeighbours; ++i) {
        const QModelIndex other = row.siblingAtRow(i);
        const QRectF area = other.data(CoordSystemCatalogModel::AreaRole).toRectF();
        if (other == row || area.isNull() || !WorldMap::touches(area, near))
            continue;
        shown.append({other.data(CoordSystemCatalogModel::NameRole).toString(), area,
                      static_cast<int>(neighbours.size())});
        neighbours << other;
    }
    ui.map->setNeighbours(shown);
}

void CoordSystemPicker::Private::save()
{
    if (system && saveAsOwnSystem(q, *model.factory()->userCoordSystem(), *system))
        model.reloadOwnSystems();
}

/// The system that is saved becomes the choice.
void CoordSystemPicker::Private::calibrate()
{
    CalibrationDialog dialog(model.factory(), q);
    dialog.setKnownSystem(system);
    dialog.exec();
    if (!dialog.savedSystem())
        return;
    model.reloadOwnSystems();
    q->setCoordSystem(dialog.savedSystem());
}

void CoordSystemPicker::Private::showMenu(QTreeView &list, const QPoint &at)
{
    const QModelIndex current = list.indexAt(at);
    if (!current.isValid())
        return;
    list.setCurrentIndex(current);
    const CoordSystemPtr chosen = q->coordSystem();
    runSystemMenu(q, model, currentRow(), chosen, list.viewport()->mapToGlobal(at));
}

/// The system that fits the user's coordinates becomes the choice.
void CoordSystemPicker::Private::guess()
{
    GuessDialog dialog(model.factory(), q);
    if (dialog.exec() != QDialog::Accepted)
        return;
    try {
        q->setCoordSystem(model.factory()->createFromUserInput(dialog.code()));
    } catch (const std::exception &e) {
        QMessageBox::warning(q, dialog.windowTitle(), QString::fromUtf8(e.what()));
    }
}

/// Widths and open sections of the last time.
void CoordSystemPicker::Private::restore()
{
    const QSettings settings;
    ui.tree->header()->restoreState(settings.value(QLatin1String(treeKey)).toByteArray());
    ui.results->header()->restoreState(settings.value(QLatin1String(resultsKey)).toByteArray());
    ui.withdrawn->setChecked(settings.value(QLatin1String(withdrawnKey), true).toBool());
    filter.setWithdrawnShown(ui.withdrawn->isChecked());
    for (const QVariant &section : settings.value(QLatin1String(openKey)).toList())
        ui.tree->expand(model.index(section.toInt(), 0));
}

void CoordSystemPicker::Private::remember() const
{
    QSettings settings;
    settings.setValue(QLatin1String(treeKey), ui.tree->header()->saveState());
    settings.setValue(QLatin1String(resultsKey), ui.results->header()->saveState());
    settings.setValue(QLatin1String(withdrawnKey), ui.withdrawn->isChecked());
    QVariantList open;
    for (int section = 0; section < CoordSystemCatalogModel::SectionCount; ++section)
        if (ui.tree->isExpanded(model.index(section, 0)))
            open << section;
    settings.setValue(QLatin1String(openKey), open);
}

} // namespace nivora::cs
