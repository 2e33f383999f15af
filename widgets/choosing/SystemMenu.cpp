#include <widgets/choosing/SystemMenu_p.h>

#include <widgets/texts/WidgetTexts_p.h>
#include <widgets/user/RecentSystems_p.h>

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemCatalogModel.h>
#include <coordsys/SystemInfo.h>

#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>

#include <algorithm>
#include <exception>
#include <functional>

namespace nivora::cs {
namespace {

using Model = CoordSystemCatalogModel;
using Source = CoordSystemTypes::SourceData;

struct Notation
{
    const char *title;
    SystemFormat format;
};
constexpr Notation notations[] = {
    {"CoordSys", SystemFormat::Mapinfo}, {"WKT 1", SystemFormat::Wkt1}, {"WKT 2", SystemFormat::Wkt2},
    {"ESRI WKT", SystemFormat::Esri},    {"PROJ", SystemFormat::Proj},  {"PROJJSON", SystemFormat::ProjJson},
};

/// Tells the user what went wrong.
void attempt(QWidget *parent, const std::function<void()> &work)
{
    try {
        work();
    } catch (const std::exception &e) {
        QMessageBox::warning(parent, WidgetTexts::tr("Система координат"), QString::fromUtf8(e.what()));
    }
}

void addCopies(QMenu &menu, QWidget *parent, const CoordSystemPtr &system)
{
    QMenu *copies = menu.addMenu(WidgetTexts::tr("&Копировать как"));
    for (const Notation &notation : notations)
        copies->addAction(QLatin1String(notation.title), parent, [parent, system, format = notation.format] {
            attempt(parent, [&] { QApplication::clipboard()->setText(exportSystem(*system, format)); });
        });
    const QString code = systemInfo(*system).identifier;
    if (!code.isEmpty())
        copies->addAction(code, parent, [code] { QApplication::clipboard()->setText(code); });
}

Source sourceOf(const QModelIndex &row)
{
    const QString tagged = row.data(Model::TaggedRole).toString();
    return {UserCoordSystem::stringToSourceType(tagged.section(QLatin1Char(':'), 0, 0)),
            tagged.section(QLatin1Char(':'), 1)};
}

/// Changes the store's file, and shows what it holds then.
void change(QWidget *parent, Model &model, const std::function<bool(UserCoordSystem &)> &edit)
{
    attempt(parent, [&] { model.factory()->userCoordSystem()->update(edit); });
    model.reloadOwnSystems();
}

bool holds(const UserCoordSystem &systems, const Source &source)
{
    const QList<UserCoordSystem::CsDataType> &branches = systems.data();
    return std::any_of(branches.begin(), branches.end(), [&](const UserCoordSystem::CsDataType &branch) {
        return std::any_of(branch.entries.begin(), branch.entries.end(),
                           [&](const auto &entry) { return entry.source() == source; });
    });
}

void rename(QWidget *parent, Model &model, const QString &branch, const Source &source, const QString &name)
{
    bool isOk = false;
    const QString now = QInputDialog::getText(parent, WidgetTexts::tr("Переименовать"),
                                              WidgetTexts::tr("Название:"), QLineEdit::Normal, name, &isOk)
                            .trimmed();
    if (isOk && !now.isEmpty())
        change(parent, model, [&](UserCoordSystem &fresh) {
            fresh.setCoordSystem(branch, source, now);
            return true;
        });
}

/// Another text in place of the old one; refused when no system can be made of it.
void editText(QWidget *parent, Model &model, const QString &branch, const Source &source, const QString &name)
{
    bool isOk = false;
    const QString text = QInputDialog::getMultiLineText(parent, WidgetTexts::tr("Изменить описание"), name,
                                                        source.string, &isOk)
                             .trimmed();
    if (!isOk || text == source.string)
        return;
    attempt(parent, [&] {
        const Source now{source.type, text};
        model.factory()->createFromTaggedString(UserCoordSystem::sourceTypeToString(now.type) +
                                                QLatin1Char(':') + text);
        change(parent, model, [&](UserCoordSystem &fresh) {
            fresh.removeCoordSystem(branch, source);
            fresh.setCoordSystem(branch, now, name);
            return true;
        });
    });
}

/// The control points go with the system, unless another branch has it, too.
void remove(QWidget *parent, Model &model, const QString &branch, const Source &source)
{
    bool isGone = false;
    change(parent, model, [&](UserCoordSystem &fresh) {
        const bool isRemoved = fresh.removeCoordSystem(branch, source);
        isGone = isRemoved && !holds(fresh, source);
        return isRemoved;
    });
    if (isGone)
        attempt(parent,
                [&] { CalibrationStore(model.factory()->userCoordSystem()->fileInfo()).remove(source); });
}

void addOwnActions(QMenu &menu, QWidget *parent, Model &model, const QModelIndex &row)
{
    const QString branch = row.data(Model::GroupRole).toString();
    const QString name = row.data(Model::NameRole).toString();
    const Source source = sourceOf(row);
    menu.addAction(WidgetTexts::tr("&Переименовать…"), parent,
                   [=, &model] { rename(parent, model, branch, source, name); });
    menu.addAction(WidgetTexts::tr("&Изменить описание…"), parent,
                   [=, &model] { editText(parent, model, branch, source, name); });
    menu.addAction(WidgetTexts::tr("&Удалить"), parent, [=, &model] {
        const auto answer = QMessageBox::question(parent, WidgetTexts::tr("Удалить"),
                                                  WidgetTexts::tr("Удалить вашу систему «%1»?").arg(name));
        if (answer == QMessageBox::Yes)
            remove(parent, model, branch, source);
    });
}

void addRecentActions(QMenu &menu, QWidget *parent, Model &model, const QModelIndex &row, bool isRecent)
{
    Model::RecentSystem system;
    system.name = row.data(Model::NameRole).toString();
    system.tagged = row.data(Model::TaggedRole).toString();
    system.epsg = row.data(Model::CodeRole).toInt();
    const bool isPinned = isPinnedSystem(system.tagged);
    menu.addAction(isPinned ? WidgetTexts::tr("&Открепить") : WidgetTexts::tr("&Закрепить в недавних"),
                   parent, [=, &model] { model.setRecentSystems(pinSystem(system, !isPinned)); });
    if (isRecent)
        menu.addAction(WidgetTexts::tr("У&брать из недавних"), parent,
                       [=, &model] { model.setRecentSystems(removeRecentSystem(system.tagged)); });
}

} // namespace

void runSystemMenu(QWidget *parent, Model &model, const QModelIndex &row, const CoordSystemPtr &system,
                   const QPoint &at)
{
    if (!Model::isSystem(row))
        return;
    QMenu menu;
    if (system)
        addCopies(menu, parent, system);
    const int section = row.parent().parent().isValid() ? row.parent().parent().row() : row.parent().row();
    addRecentActions(menu, parent, model, row, section == Model::RecentSystems);
    if (section == Model::OwnSystems)
        addOwnActions(menu, parent, model, row);
    menu.exec(at);
}

} // namespace nivora::cs
