#include <widgets/CoordSystemPicker.h>

#include <widgets/choosing/PickerPrivate_p.h>
#include <widgets/choosing/TypedSystem_p.h>
#include <widgets/texts/WidgetTexts_p.h>
#include <widgets/user/RecentSystems_p.h>

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/SystemInfo.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <exception>
#include <iterator>
#include <utility>

namespace nivora::cs {
namespace {

/// Milliseconds without another key before what costs more than a keystroke is done: the system is made, the
/// map moves, typed definitions are read.
constexpr int settleTime = 120;
constexpr Qt::Key listKeys[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown};

bool isEnter(int key) { return key == Qt::Key_Return || key == Qt::Key_Enter; }

} // namespace

CoordSystemPicker::Private::Private(CoordSystemPicker *owner, std::shared_ptr<CoordSysFactory> factory)
    : q(owner)
    , model(std::move(factory))
    , filter(model)
    , ui(owner, model, filter)
{
    model.setRecentSystems(loadRecentSystems());
    // The catalogue has sixty categories: open, it would push the database out of reach.
    for (const auto section : {CoordSystemCatalogModel::OwnSystems, CoordSystemCatalogModel::RecentSystems})
        ui.tree->expand(model.sectionIndex(section));
    restore();
    settling.setSingleShot(true);
    settling.setInterval(settleTime);
    connectLists();
    connectRest();
    showPage();
    model.prepare();
}

void CoordSystemPicker::Private::connectLists()
{
    for (QTreeView *list : {ui.tree, ui.results}) {
        connect(list->selectionModel(), &QItemSelectionModel::currentChanged, q,
                [this, list](const QModelIndex &now) {
                    if (list == ui.tree && now.isValid())
                        given.reset(); // the user has chosen another
                    changed();
                });
        list->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(list, &QWidget::customContextMenuRequested, q,
                [this, list](const QPoint &at) { showMenu(*list, at); });
        connect(list, &QTreeView::doubleClicked, q, [this] { activate(); });
        list->installEventFilter(q);
    }
    for (QWidget *widget : {static_cast<QWidget *>(ui.search), static_cast<QWidget *>(ui.point),
                            static_cast<QWidget *>(ui.placeKind)})
        widget->installEventFilter(q);
}

void CoordSystemPicker::Private::connectRest()
{
    connect(ui.search, &QLineEdit::textChanged, q, [this](const QString &now) { search(now); });
    connect(&settling, &QTimer::timeout, q, [this] { settle(); });
    connect(&filter, &CoordSystemFilterModel::found, q, [this] { showFound(); });
    connect(ui.message, &QLabel::linkActivated, q, [this](const QString &link) { followLink(link); });
    connect(ui.map, &WorldMap::neighbourClicked, q, [this](int id) { choose(neighbours.value(id)); });
    connect(ui.map, &WorldMap::placeClicked, q, &CoordSystemPicker::filterByPoint);
    connect(ui.placeKind, QOverload<int>::of(&QComboBox::activated), q, [this] { applyPlace(); });
    connect(ui.point, &QLineEdit::textEdited, q, [this] { applyPlace(); });
    connect(ui.operations, &OperationPicker::choiceChanged, q, &CoordSystemPicker::operationChanged);
    connect(ui.save, &QPushButton::clicked, q, [this] { save(); });
    connect(ui.calibrate, &QPushButton::clicked, q, [this] { calibrate(); });
    connect(ui.guess, &QPushButton::clicked, q, [this] { guess(); });
    connect(ui.withdrawn, &QCheckBox::toggled, q, [this](bool isOn) {
        filter.setWithdrawnShown(isOn);
        showFound();
    });
}

/// Systems of the place whose coordinates were pasted into the search, else of the one beside it.
void CoordSystemPicker::Private::searchAt(const std::optional<QRectF> &pasted)
{
    if (!pasted) {
        applyPlace();
        return;
    }
    filter.setPlace(pasted);
    ui.map->setPlace(pasted);
}

/// At every keystroke: nothing here may cost more than the search itself.
void CoordSystemPicker::Private::search(const QString &now)
{
    const std::optional<QRectF> pasted = placeFromText(now);
    const bool wasDefinition = std::exchange(isDefinition, !pasted && isSystemDefinition(now));
    const bool wasPlace = std::exchange(isPlaceText, pasted.has_value());
    if (pasted || wasPlace)
        searchAt(pasted);
    filter.setText(isDefinition || pasted ? QString() : now);
    if (isDefinition || wasDefinition)
        showFound();
    else
        changed(); // what is found is shown when it is there
    showPage();
}

void CoordSystemPicker::Private::showFound()
{
    showPage();
    if (ui.currentList() == ui.results)
        ui.results->setCurrentIndex(filter.index(0, 0));
    changed();
}

void CoordSystemPicker::Private::showPage()
{
    const bool isSearching = filter.isFiltering() && !isDefinition;
    if (isSearching && filter.isPending() && model.isPrepared())
        return; // in a moment: what is shown stays
    const bool hasFound = isSearching && filter.foundCount() > 0;
    if (hasFound)
        ui.showList(ui.results);
    else if (isSearching || isDefinition)
        ui.showMessage(filter.isPending() ? WidgetTexts::tr("Готовлю поиск…")
                                          : WidgetTexts::tr("Читаю текст…"));
    else
        ui.showList(ui.tree);
    ui.count->setText(hasFound ? countText() : QString());
}

/// With the words that the search left aside.
QString CoordSystemPicker::Private::countText() const
{
    const QString count = WidgetTexts::tr("Найдено: %1").arg(QLocale().toString(filter.foundCount()));
    const QVector<CoordSystemFilterModel::Relaxation> &without = filter.relaxations();
    return without.isEmpty()
               ? count
               : WidgetTexts::tr("%1 (без слова «%2»)").arg(count, without.first().without.toHtmlEscaped());
}

QModelIndex CoordSystemPicker::Private::currentRow() const
{
    const QTreeView *list = ui.currentList();
    if (!list)
        return {};
    const QModelIndex current = list->currentIndex();
    return list == ui.results ? filter.mapToSource(current)
                              : current.siblingAtColumn(CoordSystemCatalogModel::NameColumn);
}

bool CoordSystemPicker::Private::isReadingText() const { return !ui.currentList() && !filter.isPending(); }

void CoordSystemPicker::Private::changed()
{
    system.reset();
    settling.start();
    Q_EMIT q->choiceChanged();
}

/// The expensive part of a change: the engines make the system, the map moves.
void CoordSystemPicker::Private::settle()
{
    filter.waitUntilFound();
    settling.stop();
    const Choice current = choice();
    system = current.system;
    if (isReadingText())
        explainText(current);
    ui.details->show(current.facts);
    ui.map->setArea(current.facts.area);
    showNeighbours(currentRow());
    ui.save->setEnabled(system != nullptr);
    if (target)
        ui.operations->setSystems(system, target);
    Q_EMIT q->choiceChanged();
}

/// The system alone, for a getter: what is shown, and who is told, follows when the user has paused.
void CoordSystemPicker::Private::settleQuietly()
{
    const QSignalBlocker silence(q);
    filter.waitUntilFound();
    system = choice().system;
}

void CoordSystemPicker::Private::followLink(const QString &link)
{
    static const QString textLink = QStringLiteral("text:");
    ui.search->setFocus();
    if (link.startsWith(textLink))
        ui.search->setText(link.mid(textLink.size()));
    else
        q->clearPlaceFilter();
}

void CoordSystemPicker::Private::choose(const QModelIndex &row)
{
    if (!row.isValid())
        return;
    const QModelIndex found = ui.currentList() == ui.results ? filter.mapFromSource(row) : QModelIndex();
    if (found.isValid()) {
        ui.results->setCurrentIndex(found);
        return;
    }
    ui.search->clear();
    q->clearPlaceFilter();
    ui.tree->setCurrentIndex(row);
    ui.tree->scrollTo(row, QAbstractItemView::PositionAtCenter);
}

void CoordSystemPicker::Private::activate()
{
    if (q->coordSystem())
        Q_EMIT q->activated();
}

/// From the widgets to the filter.
void CoordSystemPicker::Private::applyPlace()
{
    const auto kind = static_cast<PickerLayout::PlaceKind>(ui.placeKind->currentData().toInt());
    ui.point->setVisible(kind == PickerLayout::AtPoint);
    std::optional<QRectF> place;
    if (kind == PickerLayout::InView)
        place = ui.map->view();
    if (kind == PickerLayout::AtPoint)
        place = placeFromText(ui.point->text());
    filter.setPlace(place);
    ui.map->setPlace(kind == PickerLayout::AtPoint ? place : std::nullopt);
    showFound();
}

void CoordSystemPicker::Private::setPlace(PickerLayout::PlaceKind kind)
{
    ui.placeKind->setCurrentIndex(ui.placeKind->findData(kind));
    applyPlace();
}

CoordSystemPicker::CoordSystemPicker(QWidget *parent)
    : CoordSystemPicker(CoordSysFactory::defaultCoordSysFactory(), parent)
{}

CoordSystemPicker::CoordSystemPicker(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(this, std::move(factory)))
{}

CoordSystemPicker::~CoordSystemPicker() { d->remember(); }

CoordSystemPtr CoordSystemPicker::coordSystem() const
{
    if (d->settling.isActive())
        d->settleQuietly();
    return d->system;
}

bool CoordSystemPicker::isWithdrawn() const
{
    const CoordSystemPtr cs = coordSystem();
    return cs && systemInfo(*cs).isDeprecated;
}

void CoordSystemPicker::setKinds(Kinds kinds)
{
    d->kinds = kinds;
    d->changed();
}

CoordSystemPicker::Kinds CoordSystemPicker::kinds() const { return d->kinds; }

bool CoordSystemPicker::canChoose() const
{
    if (!d->settling.isActive())
        return d->system != nullptr;
    return d->isGivenShown() || d->filter.isPending() || d->isReadingText() ||
           CoordSystemCatalogModel::isSystem(d->currentRow());
}

void CoordSystemPicker::setCoordSystem(const CoordSystemPtr &cs)
{
    d->ui.search->clear();
    clearPlaceFilter();
    const QModelIndex row = cs ? d->model.indexOfSystem(*cs) : QModelIndex();
    d->ui.tree->setCurrentIndex(row);
    d->ui.tree->scrollTo(row, QAbstractItemView::PositionAtCenter);
    d->given = cs; // itself: a row's system lacks its name, bounds and affine transformation
    d->changed();
}

void CoordSystemPicker::setTarget(const CoordSystemPtr &target)
{
    d->target = target;
    d->ui.operations->setVisible(target != nullptr);
    d->ui.operations->setSystems(target ? coordSystem() : nullptr, target);
}

OperationChoice CoordSystemPicker::operationChoice() const
{
    if (!d->target)
        return {};
    d->ui.operations->setSystems(coordSystem(), d->target);
    return d->ui.operations->choice();
}

void CoordSystemPicker::setOperationChoice(const OperationChoice &choice)
{
    d->ui.operations->setChoice(choice);
}

QString CoordSystemPicker::searchText() const { return d->ui.search->text(); }

void CoordSystemPicker::setSearchText(const QString &text) { d->ui.search->setText(text); }

void CoordSystemPicker::setView(const QRectF &lonLat)
{
    const bool wasInView = d->ui.placeKind->currentData().toInt() == PickerLayout::InView;
    d->ui.map->setView(lonLat);
    d->ui.offerView(!lonLat.isNull());
    if (wasInView)
        d->applyPlace();
}

void CoordSystemPicker::filterByPoint(const QPointF &lonLat)
{
    if (!std::isfinite(lonLat.x()) || !std::isfinite(lonLat.y()))
        return;
    d->ui.point->setText(placeText(lonLat));
    d->setPlace(PickerLayout::AtPoint);
}

void CoordSystemPicker::filterByView()
{
    if (!d->ui.map->view().isNull())
        d->setPlace(PickerLayout::InView);
}

void CoordSystemPicker::clearPlaceFilter()
{
    if (d->filter.place() || d->ui.placeKind->currentIndex() != 0)
        d->setPlace(PickerLayout::Everywhere);
}

void CoordSystemPicker::rememberChoice()
{
    const CoordSystemPtr cs = coordSystem();
    if (!cs)
        return;
    const QModelIndex row = d->currentRow();
    const bool isRow = !d->isGivenShown() && CoordSystemCatalogModel::isSystem(row);
    CoordSystemCatalogModel::RecentSystem recent;
    recent.name = cs->description();
    recent.tagged = isRow                   ? row.data(CoordSystemCatalogModel::TaggedRole).toString()
                    : cs->affineTransform() ? QStringLiteral("prj:") + cs->prjStr()
                                            : cs->taggedString();
    recent.epsg = isRow ? row.data(CoordSystemCatalogModel::CodeRole).toInt() : cs->epsg();
    d->model.setRecentSystems(addRecentSystem(recent));
}

/// The list follows the arrow keys while the focus stays in the search box; Enter chooses in both.
bool CoordSystemPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    QTreeView *list = d->ui.currentList();
    if (watched == d->ui.search && list &&
        std::find(std::begin(listKeys), std::end(listKeys), key->key()) != std::end(listKeys)) {
        d->filter.waitUntilFound();
        QCoreApplication::sendEvent(list, event);
        return true;
    }
    if (isEnter(key->key()) && (watched == d->ui.point || watched == d->ui.placeKind)) {
        d->applyPlace(); // and nothing else: the window is not closed by it
        return true;
    }
    if (isEnter(key->key()) && canChoose()) {
        d->activate();
        return true;
    }
    if (watched == d->ui.search && key->key() == Qt::Key_Escape && !d->ui.search->text().isEmpty()) {
        d->ui.search->clear();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace nivora::cs
