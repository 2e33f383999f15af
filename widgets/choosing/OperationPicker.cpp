#include <widgets/OperationPicker.h>

#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLocale>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>

namespace nivora::cs {
namespace {

QString metres(double value)
{
    return WidgetTexts::tr("%1 м", "metres").arg(QLocale().toString(value, 'g', 2));
}

QString worthOf(const TransformOperation &operation)
{
    if (operation.isBallpark)
        return WidgetTexts::tr("без сдвига датума, до сотен метров");
    const auto worth = operation.worthM();
    return !worth         ? WidgetTexts::tr("точность неизвестна")
           : *worth > 0.0 ? WidgetTexts::tr("до %1").arg(metres(*worth))
                          : WidgetTexts::tr("без потери точности");
}

/// What is known of an operation, a line each.
QString factsOf(const TransformOperation &operation)
{
    QStringList lines{operation.shortName, worthOf(operation), operation.areaName};
    for (const TransformGrid &grid : operation.grids)
        lines << WidgetTexts::tr("файл %1").arg(grid.name);
    lines << operation.codes.join(QStringLiteral(", "));
    if (operation.isTimeDependent)
        lines << WidgetTexts::tr("зависит от эпохи координат");
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

bool fits(const CoordSystemPtr &from, const CoordSystemPtr &to, const OperationChoice &choice)
{
    try {
        static_cast<void>(CoordTransform(from, to, choice));
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

/// What the pair has; empty for equal systems and those that nothing joins.
QVector<TransformOperation> operationsOf(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    try {
        return from && to ? CoordTransform(from, to).operations() : QVector<TransformOperation>();
    } catch (const std::exception &) {
        return {};
    }
}

/// A choice in words that is none of the list.
QString textOf(const OperationChoice &choice)
{
    return choice.operation().isEmpty() ? choice.toText() : choice.operation();
}

} // namespace

class NIVORA_CS_WIDGETS_NO_EXPORT OperationPicker::Private
{
public:
    explicit Private(OperationPicker *owner);

    void fill();
    void add(const TransformOperation &operation);
    int indexOf(const OperationChoice &wanted) const;
    void select(const OperationChoice &wanted);
    void showFacts();

    OperationPicker *q;
    QComboBox *list = new QComboBox;
    QLabel *facts = new QLabel;
    CoordSystemPtr from, to;
    OperationChoice choice;
    QVector<OperationChoice> choices; ///< by the list's entry
};

OperationPicker::Private::Private(OperationPicker *owner)
    : q(owner)
{
    auto *title = new QLabel(WidgetTexts::tr("Операция &пересчёта:"));
    title->setBuddy(list);
    for (QWidget *face : {static_cast<QWidget *>(list), static_cast<QWidget *>(list->view())})
        face->setAccessibleName(WidgetTexts::tr("Операция пересчёта"));
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon); // names are long
    list->setMinimumContentsLength(16);
    facts->setWordWrap(true);
    facts->setTextFormat(Qt::PlainText);
    facts->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    facts->setAccessibleName(WidgetTexts::tr("Об операции пересчёта"));
    auto *layout = new QVBoxLayout(q);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *widget :
         {static_cast<QWidget *>(title), static_cast<QWidget *>(list), static_cast<QWidget *>(facts)})
        layout->addWidget(widget);
    connect(list, QOverload<int>::of(&QComboBox::activated), q, [this](int index) {
        choice = choices.value(index);
        showFacts();
        Q_EMIT q->choiceChanged(choice);
    });
    fill();
}

void OperationPicker::Private::fill()
{
    list->clear();
    choices = {OperationChoice()};
    list->addItem(WidgetTexts::tr("PROJ выбирает по месту"));
    const QVector<TransformOperation> operations = operationsOf(from, to);
    const bool isOneStep = std::none_of(operations.begin(), operations.end(),
                                        [](const TransformOperation &one) { return one.step > 0; });
    for (const TransformOperation &operation : operations)
        if (isOneStep) // between a plan and the earth nothing can be chosen
            add(operation);
    list->setEnabled(choices.size() > 1);
    select(choice);
}

/// An operation of a name that another has cannot be told from it.
void OperationPicker::Private::add(const TransformOperation &operation)
{
    const OperationChoice one = OperationChoice().withOperation(operation.name);
    if (indexOf(one) >= 0)
        return;
    choices << one;
    list->addItem(
        WidgetTexts::tr("%1: %2", "operation: its accuracy").arg(operation.shortName, worthOf(operation)));
    list->setItemData(list->count() - 1, factsOf(operation), Qt::ToolTipRole);
}

int OperationPicker::Private::indexOf(const OperationChoice &wanted) const { return choices.indexOf(wanted); }

void OperationPicker::Private::select(const OperationChoice &wanted)
{
    const QSignalBlocker silence(list);
    if (indexOf(wanted) < 0) {
        choices << wanted;
        list->addItem(textOf(wanted));
        list->setEnabled(true);
    }
    choice = wanted;
    list->setCurrentIndex(indexOf(wanted));
    showFacts();
}

void OperationPicker::Private::showFacts()
{
    const QString tip = list->currentData(Qt::ToolTipRole).toString();
    facts->setText(tip.section(QLatin1Char('\n'), 1)); // the list shows the name
    facts->setVisible(!facts->text().isEmpty());
    list->setToolTip(tip);
    list->setAccessibleDescription(tip);
}

OperationPicker::OperationPicker(QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(this))
{}

OperationPicker::~OperationPicker() = default;

void OperationPicker::setSystems(const CoordSystemPtr &from, const CoordSystemPtr &to)
{
    if (d->from == from && d->to == to)
        return;
    d->from = from;
    d->to = to;
    const bool isKept = !from || !to || d->choice.isDefault() || fits(from, to, d->choice);
    if (!isKept)
        d->choice = OperationChoice();
    d->fill();
    if (!isKept)
        Q_EMIT choiceChanged(d->choice);
}

OperationChoice OperationPicker::choice() const { return d->choice; }

bool OperationPicker::setChoice(const OperationChoice &choice)
{
    if (d->from && d->to && !choice.isDefault() && !fits(d->from, d->to, choice))
        return false;
    d->select(choice);
    return true;
}

} // namespace nivora::cs
