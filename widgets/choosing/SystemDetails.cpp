#include <widgets/choosing/SystemDetails_p.h>

#include <widgets/map/WorldMap_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CalibrationStore.h>
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/LinearUnit.h>
#include <coordsys/PrjText.h>
#include <coordsys/ShiftQuality.h>
#include <coordsys/SystemInfo.h>
#include <coordsys/UserCoordSystem.h>

#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPolygonF>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <functional>
#include <optional>

namespace nivora::cs {
namespace {

/// The text of a fact, or why there is none.
QString textOr(const std::function<QString()> &fact)
{
    try {
        return fact();
    } catch (const std::exception &e) {
        return WidgetTexts::tr("нет (%1)").arg(QString::fromUtf8(e.what()));
    }
}

/// "Прямоугольная, м, Transverse Mercator"
QString kindOf(const CoordSystem &cs, const SystemInfo &info)
{
    QStringList parts{kindText(info.kind), cs.unit().localizedName(), info.method};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

QString datumOf(const SystemInfo &info)
{
    if (info.datum.isEmpty() || info.ellipsoid.isEmpty())
        return info.datum + info.ellipsoid;
    return WidgetTexts::tr("%1 (эллипсоид %2)").arg(info.datum, info.ellipsoid);
}

QString metres(double value)
{
    return WidgetTexts::tr("%1 м", "metres").arg(QLocale().toString(value, 'g', 2));
}

/// Of what PROJ has here, the first is the one it takes where several fit.
QString accuracyOf(const QVector<TransformOperation> &operations)
{
    const auto usable = std::find_if(operations.begin(), operations.end(),
                                     [](const TransformOperation &way) { return way.isUsable(); });
    if (operations.isEmpty())
        return WidgetTexts::tr("не нужен");
    if (usable == operations.end())
        return WidgetTexts::tr("нет файлов сдвига датума");
    if (usable->isBallpark)
        return WidgetTexts::tr("сдвиг датума неизвестен: ошибка до сотен метров");
    if (usable->accuracyM < 0.0)
        return WidgetTexts::tr("неизвестна");
    return usable->accuracyM == 0.0
               ? WidgetTexts::tr("без потери точности")
               : WidgetTexts::tr("до %1, «%2»").arg(metres(usable->accuracyM), usable->shortName);
}

/// What a file that is missing here would give; empty when none would.
QString offerText(const QVector<GridOffer> &offers)
{
    for (const GridOffer &offer : offers)
        if (offer.withM() && !offer.missing().isEmpty())
            return WidgetTexts::tr("с файлом %1 было бы %2")
                .arg(offer.missing().first().name, metres(*offer.withM()));
    return {};
}

QString accuracyOf(const CoordSysFactory &factory, const CoordSystemPtr &cs)
{
    if (cs->isNonEarth())
        return {};
    const CoordTransform way(cs, factory.latLongWgs84CoordSystem());
    const QString used = WidgetTexts::tr("пересчёт в WGS 84: %1").arg(accuracyOf(way.operations()));
    const QString offer = offerText(way.gridOffers());
    return offer.isEmpty() ? used : used + QLatin1Char('\n') + offer;
}

void setIfEmpty(QString &fact, const QString &value)
{
    if (fact.isEmpty())
        fact = value;
}

QLabel *valueLabel(QGridLayout *form, const QString &title)
{
    auto *label = new QLabel;
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setAccessibleName(title);
    label->setAlignment(Qt::AlignTop);
    const int row = form->rowCount();
    form->addWidget(new QLabel(WidgetTexts::tr("%1:", "title of a field").arg(title)), row, 0, Qt::AlignTop);
    form->addWidget(label, row, 1);
    return label;
}

/// Some areas are a list of fifty countries.
QString shortened(const QString &text)
{
    constexpr int most = 110;
    return text.size() <= most ? text
                               : text.left(most).section(QLatin1Char(' '), 0, -2) + QStringLiteral(" …");
}

QString areaOf(const ShownFacts &facts)
{
    QStringList lines{facts.area.isNull() ? QString() : areaText(facts.area), shortened(facts.areaName)};
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

QRectF around(const QVector<QPointF> &points)
{
    const QPolygonF all(points);
    return all.boundingRect();
}

/// Of a system that no authority tells the area of: around the points that it was made from, else its own
/// bounds; both in its own coordinates.
void addStatedArea(const CoordSysFactory &factory, const CoordSystem &cs, ShownFacts &facts)
{
    QVector<QPointF> points;
    const auto record = CalibrationStore(factory.userCoordSystem()->fileInfo()).find(cs);
    for (const CalibrationPair &pair : record ? record->pairs : QVector<CalibrationPair>())
        points << pair.local;
    if (points.isEmpty() && !cs.isRectSet())
        return;
    const QRectF box = points.isEmpty() ? cs.rectWithoutSearch() : around(points);
    const QRectF earth(-180.0, -90.0, 360.0, 180.0);
    const std::optional<QRectF> area = cs.isLatLong() ? box & earth : cs.toGeographic(box);
    if (!area || area->isNull())
        return;
    facts.area = *area;
    facts.areaName = points.isEmpty() ? WidgetTexts::tr("по границам, которые указаны в системе")
                                      : WidgetTexts::tr("вокруг контрольных точек");
}

QString orDash(const QString &text) { return text.isEmpty() ? QStringLiteral("—") : text; }

/// The text, and on a line of its own what a reader should know.
QString prjOf(const CoordSystem &cs)
{
    const PrjText text = prjTextOf(cs);
    if (text.isRefused())
        return WidgetTexts::tr("нет (%1)").arg(text.reason());
    const QString remark = prjRemark(cs);
    return remark.isEmpty() ? text.text : QStringLiteral("%1\n(%2)").arg(text.text, remark);
}

} // namespace

void addFacts(const CoordSysFactory &factory, const CoordSystemPtr &cs, ShownFacts &facts)
{
    const SystemInfo info = systemInfo(*cs);
    setIfEmpty(facts.name, info.name);
    setIfEmpty(facts.code, info.identifier);
    if (cs->affineTransform() && info.baseCode > 0)
        facts.code = WidgetTexts::tr("на основе EPSG:%1, с аффинным преобразованием").arg(info.baseCode);
    else if (info.isDeprecated)
        facts.code = WidgetTexts::tr("%1, отозвана").arg(facts.code);
    facts.kind = textOr([&] { return kindOf(*cs, info); });
    facts.datum = datumOf(info);
    facts.areaName = info.areaName;
    if (facts.area.isNull())
        facts.area = info.area;
    facts.prj = textOr([&] { return prjOf(*cs); });
    facts.accuracy = textOr([&] { return accuracyOf(factory, cs); });
    if (facts.area.isNull() && !cs->isNonEarth())
        addStatedArea(factory, *cs, facts);
}

SystemDetails::SystemDetails(QWidget *parent)
    : QWidget(parent)
    , m_prj(new QPlainTextEdit)
    , m_problem(new QLabel)
{
    auto *form = new QGridLayout;
    form->setColumnStretch(1, 1);
    form->setHorizontalSpacing(12);
    m_name = valueLabel(form, WidgetTexts::tr("Название"));
    m_code = valueLabel(form, WidgetTexts::tr("Код"));
    m_kind = valueLabel(form, WidgetTexts::tr("Вид"));
    m_datum = valueLabel(form, WidgetTexts::tr("Датум"));
    m_area = valueLabel(form, WidgetTexts::tr("Область"));
    m_accuracy = valueLabel(form, WidgetTexts::tr("Точность"));
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);

    m_prj->setReadOnly(true);
    m_prj->setTabChangesFocus(true);
    m_prj->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_prj->setAccessibleName(WidgetTexts::tr("Строка CoordSys"));
    m_prj->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored); // takes what the others leave
    m_prj->setMinimumHeight(m_prj->fontMetrics().lineSpacing() * 4);
    auto *title = new QLabel(WidgetTexts::tr("&Строка CoordSys:"));
    title->setBuddy(m_prj);

    m_problem->setWordWrap(true);
    m_problem->setTextFormat(Qt::PlainText);
    m_problem->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_problem->setAccessibleName(WidgetTexts::tr("Почему систему нельзя выбрать"));
    m_problem->setStyleSheet(QStringLiteral("QLabel { background: #fdecea; color: #7b241c; padding: 6px; }"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_problem);
    layout->addLayout(form);
    layout->addWidget(title);
    layout->addWidget(m_prj, 1);
    show({});
}

/// As high as the wrapped lines need: a scroll area asks for no height that goes with a width.
void SystemDetails::fitHeight()
{
    if (QLayout *const all = layout())
        setMinimumHeight(all->minimumHeightForWidth(width()));
}

void SystemDetails::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitHeight();
}

void SystemDetails::show(const ShownFacts &facts)
{
    const bool isNothing = facts.name.isEmpty() && facts.problem.isEmpty();
    m_name->setText(isNothing
                        ? WidgetTexts::tr("Выберите систему в списке или начните вводить название, код, "
                                          "город или координаты места")
                        : orDash(facts.name));
    m_code->setText(orDash(facts.code));
    m_kind->setText(orDash(facts.kind));
    m_datum->setText(orDash(facts.datum));
    m_area->setText(orDash(areaOf(facts)));
    m_area->setToolTip(facts.areaName);
    m_area->setAccessibleDescription(facts.areaName);
    m_accuracy->setText(orDash(facts.accuracy));
    m_prj->setPlainText(facts.prj);
    m_problem->setVisible(!facts.problem.isEmpty());
    m_problem->setText(WidgetTexts::tr("Систему нельзя создать: %1").arg(facts.problem));
    fitHeight();
}

} // namespace nivora::cs
