// What is current in a picker, and why it is none.

#include <widgets/choosing/PickerPrivate_p.h>
#include <widgets/choosing/TypedSystem_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>

#include <QLocale>

#include <exception>

namespace nivora::cs {
namespace {

CoordSystemPicker::Kind kindOf(const CoordSystem &cs)
{
    return cs.isNonEarth()  ? CoordSystemPicker::LocalKind
           : cs.isLatLong() ? CoordSystemPicker::GeographicKind
                            : CoordSystemPicker::ProjectedKind;
}

void setCode(int epsg, ShownFacts &facts)
{
    if (epsg != CoordSystemTypes::EPSG_UNDEFINDED)
        facts.code = QStringLiteral("EPSG:%1").arg(epsg);
}

} // namespace

CoordSystemPicker::Private::Choice CoordSystemPicker::Private::choice() const
{
    if (isGivenShown())
        return limited(choiceOf(given));
    return limited(isReadingText() ? choiceOfText() : choiceOf(currentRow()));
}

/// The given object stands behind the tree, until another row is chosen there or the search finds one.
bool CoordSystemPicker::Private::isGivenShown() const { return given && ui.currentList() == ui.tree; }

/// Without a system whose kind the host does not take.
CoordSystemPicker::Private::Choice CoordSystemPicker::Private::limited(Choice choice) const
{
    if (!choice.system || kinds.testFlag(kindOf(*choice.system)))
        return choice;
    choice.facts.problem = WidgetTexts::tr("здесь нужна система другого вида");
    choice.system.reset();
    return choice;
}

CoordSystemPicker::Private::Choice CoordSystemPicker::Private::choiceOf(const QModelIndex &row) const
{
    Choice result;
    if (!CoordSystemCatalogModel::isSystem(row))
        return result;
    result.facts.name = row.data(CoordSystemCatalogModel::NameRole).toString();
    result.facts.prj = row.data(CoordSystemCatalogModel::PrjRole).toString();
    result.facts.area = row.data(CoordSystemCatalogModel::AreaRole).toRectF();
    setCode(row.data(CoordSystemCatalogModel::CodeRole).toInt(), result.facts);
    try {
        result.system = model.create(row);
        addFacts(*model.factory(), result.system, result.facts);
    } catch (const std::exception &e) {
        result.facts.problem = QString::fromUtf8(e.what());
    }
    return result;
}

CoordSystemPicker::Private::Choice CoordSystemPicker::Private::choiceOf(const CoordSystemPtr &cs) const
{
    Choice result;
    result.system = cs;
    addFacts(*model.factory(), cs, result.facts);
    return result;
}

CoordSystemPicker::Private::Choice CoordSystemPicker::Private::choiceOfText() const
{
    try {
        return choiceOf(systemFromText(*model.factory(), ui.search->text()));
    } catch (const std::exception &e) {
        Choice result;
        // A search that finds nothing is no failed system.
        (isDefinition ? result.facts.problem : result.refusal) = QString::fromUtf8(e.what());
        return result;
    }
}

void CoordSystemPicker::Private::explainText(const Choice &choice)
{
    if (choice.system)
        ui.showMessage(WidgetTexts::tr("Введённый текст – описание системы<br><b>%1</b>")
                           .arg(choice.facts.name.toHtmlEscaped()));
    else if (isDefinition)
        ui.showMessage(WidgetTexts::tr("По введённому тексту систему создать нельзя."));
    else
        ui.showMessage(emptinessText(choice.refusal));
}

/// Links are the texts to search for, and "everywhere".
QString CoordSystemPicker::Private::emptinessText(const QString &refusal) const
{
    QStringList lines{WidgetTexts::tr("Ничего не найдено.")};
    const QString remark = filter.remark();
    if (!remark.isEmpty())
        lines << remark.toHtmlEscaped();
    const QVector<CoordSystemFilterModel::Relaxation> ways = filter.relaxations();
    for (const CoordSystemFilterModel::Relaxation &way : ways) {
        const QString count = QLocale().toString(way.count);
        lines << (way.without.isNull()
                      ? WidgetTexts::tr("<a href=\"everywhere\">Во всём мире</a>: %1").arg(count)
                      : WidgetTexts::tr("<a href=\"text:%1\">Без слова «%2»</a>: %3")
                            .arg(way.text.toHtmlEscaped(), way.without.toHtmlEscaped(), count));
    }
    if (ways.isEmpty() && remark.isEmpty())
        lines << refusal.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>"));
    return lines.join(QStringLiteral("<br>"));
}

} // namespace nivora::cs
