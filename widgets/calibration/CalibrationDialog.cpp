#include <widgets/CalibrationDialog.h>

#include <widgets/CoordSystemDialog.h>
#include <widgets/calibration/PairsTable_p.h>
#include <widgets/calibration/ResidualMap_p.h>
#include <widgets/texts/WidgetTexts_p.h>
#include <widgets/user/SaveSystem_p.h>

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/ProjectionParamsManager.h>
#include <coordsys/UserCoordSystem.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

enum ModelColumn { Word, Rms, Greatest, Spare, Note, ModelColumnCount };

QTableWidgetItem *cell(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    return item;
}

QString metres(double value) { return std::isfinite(value) ? QString::number(value, 'f', 3) : QString(); }

} // namespace

class NIVORA_CS_WIDGETS_NO_EXPORT CalibrationDialog::Private
{
public:
    Private(CalibrationDialog *dialog, std::shared_ptr<CoordSysFactory> catalogues);

    void refit();
    void showFits(const Calibration &points);
    void showCurrent();
    void clear(const QString &reason);
    void chooseKnown();
    void save();
    void fillSaved();
    void open(const CalibrationRecord &record);
    void setKnown(const CoordSystemPtr &cs);
    void setLocal(const CoordSystemPtr &cs);
    void setUnit(int code);
    void chooseLocal();
    Calibration::Local localSide() const;
    CalibrationStore store() const { return CalibrationStore(factory->userCoordSystem()->fileInfo()); }

    CalibrationDialog *q;
    std::shared_ptr<CoordSysFactory> factory;
    CoordSystemPtr known;
    CoordSystemPtr local; ///< null without one
    LinearUnit unit;      ///< of the local coordinates
    CoordSystemPtr saved;
    std::optional<Calibration> calibration;
    QVector<CalibrationFit> fits;
    std::optional<CalibrationModel> chosen; ///< by the user; else the justified one

    QPushButton *knownButton, *localButton, *openButton, *saveButton;
    QMenu *savedMenu;
    QComboBox *units; ///< of the local coordinates; data: MapInfo's numbers
    PairsTable *table;
    QTableWidget *models;
    ResidualMap *map;
    QLabel *notes;

private:
    void makeModels();
    void fillUnits();
    QLayout *top();
    QWidget *left();
    QWidget *right();
    QLayout *bottom();
    int shownRow() const;
};

CalibrationDialog::Private::Private(CalibrationDialog *dialog, std::shared_ptr<CoordSysFactory> catalogues)
    : q(dialog)
    , factory(std::move(catalogues))
    , knownButton(new QPushButton)
    , localButton(new QPushButton)
    , openButton(new QPushButton(WidgetTexts::tr("&Открыть")))
    , saveButton(new QPushButton(WidgetTexts::tr("&Сохранить…")))
    , savedMenu(new QMenu(dialog))
    , units(new QComboBox)
    , table(new PairsTable)
    , models(new QTableWidget(0, ModelColumnCount))
    , map(new ResidualMap)
    , notes(new QLabel)
{
    makeModels();
    fillUnits();
    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(left());
    splitter->addWidget(right());
    splitter->setChildrenCollapsible(false);
    splitter->setSizes({575, 560});
    auto *layout = new QVBoxLayout(q);
    layout->addLayout(top());
    layout->addWidget(splitter, 1);
    layout->addWidget(notes);
    layout->addLayout(bottom());
    notes->setWordWrap(true);
    notes->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    connect(table, &PairsTable::pairsChanged, q, [this] { refit(); });
    connect(models, &QTableWidget::itemSelectionChanged, q, [this] {
        if (models->currentRow() >= 0)
            chosen = calibrationModels().at(models->currentRow());
        showCurrent();
    });
}

void CalibrationDialog::Private::makeModels()
{
    models->setHorizontalHeaderLabels({WidgetTexts::tr("Модель"), WidgetTexts::tr("СКО, м"),
                                       WidgetTexts::tr("Наибольшая, м"), WidgetTexts::tr("Избыток"),
                                       QString()});
    models->setSelectionBehavior(QAbstractItemView::SelectRows);
    models->setSelectionMode(QAbstractItemView::SingleSelection);
    models->verticalHeader()->hide();
    models->verticalHeader()->setDefaultSectionSize(models->fontMetrics().height() + 8);
    models->horizontalHeader()->setHighlightSections(false);
    models->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    models->horizontalHeader()->setSectionResizeMode(Note, QHeaderView::Stretch); // cut; whole in its tip
    models->setAccessibleName(WidgetTexts::tr("Модели и их невязки"));
    models->setRowCount(calibrationModels().size());
    for (int row = 0; row < models->rowCount(); ++row)
        for (int column = 0; column < ModelColumnCount; ++column)
            models->setItem(row, column,
                            cell(column == Word ? calibrationText(calibrationModels().at(row)) : QString()));
    models->setFixedHeight(models->horizontalHeader()->sizeHint().height() +
                           models->rowCount() * models->verticalHeader()->defaultSectionSize() +
                           2 * models->frameWidth());
}

void CalibrationDialog::Private::fillUnits()
{
    using Unit = LinearUnit;
    for (const int code : {Unit::Meter, Unit::Kilometer, Unit::Centimeter, Unit::Millimeter, Unit::Foot,
                           Unit::SurveyFoot, Unit::Yard, Unit::Link, Unit::Chain, Unit::Rod})
        if (const auto *named = factory->projectionParamsManager()->unitByID(code, std::nothrow))
            units->addItem(QStringLiteral("%1 (%2)").arg(named->description(), named->localizedName()), code);
}

/// Also of one that the list lacks, in which points were kept.
void CalibrationDialog::Private::setUnit(int code)
{
    const auto *named = factory->projectionParamsManager()->unitByID(code, std::nothrow);
    unit = named ? LinearUnit(*named) : LinearUnit();
    if (named && units->findData(code) < 0)
        units->addItem(named->description(), code);
    units->setCurrentIndex(units->findData(code));
}

QLayout *CalibrationDialog::Private::top()
{
    auto *knownLabel = new QLabel(WidgetTexts::tr("Система &известных координат:"));
    knownLabel->setBuddy(knownButton);
    auto *localLabel = new QLabel(WidgetTexts::tr("&Проекция и эллипсоид местных:"));
    localLabel->setBuddy(localButton);
    localButton->setToolTip(WidgetTexts::tr("Нужны только для сдвига датума семью параметрами"));
    auto *unitLabel = new QLabel(WidgetTexts::tr("&Единица местных координат:"));
    unitLabel->setBuddy(units);
    auto *grid = new QGridLayout;
    grid->addWidget(knownLabel, 0, 0);
    grid->addWidget(knownButton, 0, 1);
    grid->addWidget(openButton, 0, 2);
    grid->addWidget(localLabel, 1, 0);
    grid->addWidget(localButton, 1, 1);
    grid->addWidget(unitLabel, 2, 0);
    grid->addWidget(units, 2, 1, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    openButton->setMenu(savedMenu);
    connect(knownButton, &QPushButton::clicked, q, [this] { chooseKnown(); });
    connect(localButton, &QPushButton::clicked, q, [this] { chooseLocal(); });
    connect(savedMenu, &QMenu::aboutToShow, q, [this] { fillSaved(); });
    connect(units, QOverload<int>::of(&QComboBox::activated), q, [this] {
        setUnit(units->currentData().toInt());
        refit();
    });
    return grid;
}

QWidget *CalibrationDialog::Private::left()
{
    auto *paste = new QPushButton(WidgetTexts::tr("&Вставить"));
    paste->setToolTip(
        WidgetTexts::tr("Строки из электронной таблицы: название, x, y, известные x, y, а также вес и "
                        "высоты, если они есть"));
    auto *add = new QPushButton(WidgetTexts::tr("&Добавить"));
    auto *remove = new QPushButton(WidgetTexts::tr("&Удалить"));
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {paste, add, remove})
        buttons->addWidget(button);
    buttons->addStretch(1);
    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table, 1);
    layout->addLayout(buttons);
    connect(paste, &QPushButton::clicked, q, [this] { table->paste(QApplication::clipboard()->text()); });
    connect(remove, &QPushButton::clicked, q, [this] { table->removeSelected(); });
    connect(add, &QPushButton::clicked, q, [this] {
        CalibrationPair pair;
        pair.name = QString::number(table->rowCount() + 1);
        table->append(pair);
        table->editItem(table->item(table->rowCount() - 1, 1));
        refit();
    });
    return side;
}

QWidget *CalibrationDialog::Private::right()
{
    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(models);
    layout->addWidget(map, 1);
    return side;
}

QLayout *CalibrationDialog::Private::bottom()
{
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(saveButton, QDialogButtonBox::ActionRole);
    buttons->addButton(WidgetTexts::tr("Закрыть"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, q, &QDialog::reject);
    connect(saveButton, &QPushButton::clicked, q, [this] { save(); });
    auto *row = new QHBoxLayout;
    row->addWidget(buttons);
    return row;
}

void CalibrationDialog::Private::setKnown(const CoordSystemPtr &cs)
{
    known = cs;
    table->setAngles(known->isLatLong());
    knownButton->setText(known->description());
    refit();
}

void CalibrationDialog::Private::chooseKnown()
{
    CoordSystemDialog dialog(factory, q);
    dialog.picker()->setCoordSystem(known);
    if (dialog.exec() == QDialog::Accepted && dialog.coordSystem())
        setKnown(dialog.coordSystem());
}

void CalibrationDialog::Private::setLocal(const CoordSystemPtr &cs)
{
    local = cs;
    localButton->setText(local ? local->description() : WidgetTexts::tr("не заданы"));
    table->showHeights(local != nullptr);
    refit();
}

void CalibrationDialog::Private::chooseLocal()
{
    CoordSystemDialog dialog(factory, q);
    dialog.picker()->setCoordSystem(local ? local : known);
    if (dialog.exec() == QDialog::Accepted && dialog.coordSystem())
        setLocal(dialog.coordSystem());
}

Calibration::Local CalibrationDialog::Private::localSide() const
{
    Calibration::Local side;
    side.unit = unit;
    side.system = local;
    return side;
}

void CalibrationDialog::Private::clear(const QString &reason)
{
    calibration.reset();
    fits.clear();
    for (int row = 0; row < models->rowCount(); ++row)
        for (int column = Rms; column < ModelColumnCount; ++column)
            models->item(row, column)->setText(QString());
    table->showResiduals({});
    map->show({}, {}, 1.0);
    notes->setText(reason);
    saveButton->setEnabled(false);
}

void CalibrationDialog::Private::refit()
{
    const QVector<CalibrationPair> pairs = table->pairs();
    if (!known)
        return;
    if (pairs.isEmpty())
        return clear(WidgetTexts::tr("Вставьте строки из таблицы: название, x, y, известные x, y."));
    const CatalogueScope scope(*factory);
    try {
        calibration.emplace(known, pairs, localSide());
        showFits(*calibration);
    } catch (const std::exception &e) {
        clear(QString::fromUtf8(e.what()));
    }
}

void CalibrationDialog::Private::showFits(const Calibration &points)
{
    fits.clear();
    const auto justified = points.justifiedModel();
    for (const CalibrationModel model : calibrationModels()) {
        const int row = fits.size();
        fits << points.fit(model);
        const CalibrationFit &fit = fits.last();
        models->item(row, Rms)->setText(metres(fit.rmsM()));
        models->item(row, Greatest)->setText(metres(fit.greatestM()));
        models->item(row, Spare)->setText(fit.isUsable() ? QString::number(fit.redundancy()) : QString());
        models->item(row, Note)->setText(model == justified ? WidgetTexts::tr("обоснована") : fit.refusal());
        models->item(row, Note)->setToolTip(fit.refusal());
    }
    const QSignalBlocker quiet(models);
    const int row =
        calibrationModels().indexOf(chosen.value_or(justified.value_or(CalibrationModel::Similarity)));
    models->setCurrentCell(row, Word);
    showCurrent();
}

int CalibrationDialog::Private::shownRow() const
{
    const int row = models->currentRow();
    return row >= 0 && row < fits.size() ? row : -1;
}

void CalibrationDialog::Private::showCurrent()
{
    const int row = shownRow();
    if (row < 0 || !calibration)
        return;
    const CalibrationFit &fit = fits.at(row);
    const auto pairs = calibration->pairs();
    const double middleDeg = pairs.first().known.y();
    const double aspect = known->isLatLong() ? std::cos(middleDeg / CoordSystem::RADIANS_TO_DEGREES) : 1.0;
    table->showResiduals(fit.residuals());
    map->show(pairs, fit.residuals(), aspect);
    QStringList lines{fit.refusal()};
    if (!fit.suspects().isEmpty())
        lines << WidgetTexts::tr(
            "Вероятны грубые ошибки: снимите отметку с точки, чтобы увидеть ответ без неё.");
    notes->setText((lines + calibration->hints()).join(QLatin1Char('\n')).trimmed());
    saveButton->setEnabled(fit.isUsable() && fit.model() != CalibrationModel::Polynomial);
}

void CalibrationDialog::Private::save()
{
    const int row = shownRow();
    if (row < 0)
        return;
    const CatalogueScope scope(*factory);
    try {
        const CoordSystemPtr system = fits.at(row).system();
        UserCoordSystem &own = *factory->userCoordSystem();
        if (!saveAsOwnSystem(q, own, *system))
            return;
        CalibrationRecord record = CalibrationRecord::of(*calibration, fits.at(row), QString());
        record.system = {CoordSystemTypes::Prj, system->prjStr()};
        record.name = own.description(record.system);
        store().save(record);
        system->setDescription(record.name);
        saved = system;
    } catch (const std::exception &e) {
        QMessageBox::warning(q, q->windowTitle(), QString::fromUtf8(e.what()));
    }
}

void CalibrationDialog::Private::fillSaved()
{
    savedMenu->clear();
    try {
        for (const CalibrationRecord &record : store().records())
            connect(savedMenu->addAction(record.name), &QAction::triggered, q,
                    [this, record] { open(record); });
    } catch (const std::exception &e) {
        savedMenu->addAction(QString::fromUtf8(e.what()))->setEnabled(false);
    }
    if (savedMenu->isEmpty())
        savedMenu->addAction(WidgetTexts::tr("Сохранённых нет"))->setEnabled(false);
}

void CalibrationDialog::Private::open(const CalibrationRecord &record)
{
    const CatalogueScope scope(*factory);
    try {
        const Calibration kept = record.calibration();
        chosen = record.model;
        known.reset(); // the old table would be fitted to it
        table->setPairs(record.pairs);
        setUnit(record.unitCode);
        setLocal(kept.localSystem());
        setKnown(kept.knownSystem());
    } catch (const std::exception &e) {
        QMessageBox::warning(q, q->windowTitle(), QString::fromUtf8(e.what()));
    }
}

CalibrationDialog::CalibrationDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QDialog(parent)
{
    if (!factory)
        throw std::invalid_argument("factory");
    d = std::make_unique<Private>(this, std::move(factory));
    setWindowTitle(WidgetTexts::tr("Система по опорным точкам"));
    resize(1170, 640);
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setAutoDefault(false); // Enter belongs to the table
    d->setLocal(nullptr);
    d->setUnit(LinearUnit::Meter);
    d->setKnown(d->factory->latLongWgs84CoordSystem());
}

CalibrationDialog::~CalibrationDialog() = default;

void CalibrationDialog::setKnownSystem(const CoordSystemPtr &cs)
{
    if (cs)
        d->setKnown(cs);
}

void CalibrationDialog::setLocalSystem(const CoordSystemPtr &cs) { d->setLocal(cs); }

void CalibrationDialog::setPairs(const QVector<CalibrationPair> &pairs) { d->table->setPairs(pairs); }

QVector<CalibrationPair> CalibrationDialog::pairs() const { return d->table->pairs(); }

int CalibrationDialog::paste(const QString &text) { return d->table->paste(text); }

CalibrationModel CalibrationDialog::model() const
{
    const int row = d->models->currentRow();
    return row >= 0 ? calibrationModels().at(row) : CalibrationModel::Similarity;
}

void CalibrationDialog::setModel(CalibrationModel model)
{
    const int row = calibrationModels().indexOf(model);
    if (row >= 0)
        d->models->setCurrentCell(row, Word);
}

CoordSystemPtr CalibrationDialog::savedSystem() const { return d->saved; }

} // namespace nivora::cs
