#include <widgets/SystemDetails_p.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/LinearUnit.h>

#include <QFontDatabase>
#include <QFormLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <exception>
#include <functional>

namespace nivora::cs {
namespace {

/// The text of a fact, or why there is none.
QString textOr(const std::function<QString()> &fact)
{
    try {
        return fact();
    } catch (const std::exception &e) {
        return SystemDetails::tr("нет (%1)").arg(QString::fromUtf8(e.what()));
    }
}

QString kindText(const CoordSystem &cs)
{
    const QString unit = cs.unit().localizedName();
    if (cs.isNonEarth())
        return SystemDetails::tr("План без привязки к Земле, единица – %1").arg(unit);
    return cs.isLatLong() ? SystemDetails::tr("Географическая, градусы")
                          : SystemDetails::tr("Прямоугольная, единица – %1").arg(unit);
}

QLabel *valueLabel(QFormLayout *form, const QString &title)
{
    auto *label = new QLabel;
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setAccessibleName(title);
    label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    form->addRow(SystemDetails::tr("%1:", "title of a field").arg(title), label);
    return label;
}

QString orDash(const QString &text) { return text.isEmpty() ? QStringLiteral("—") : text; }

} // namespace

void addFacts(const CoordSystem &cs, SystemFacts &facts)
{
    facts.kind = textOr([&] { return kindText(cs); });
    facts.prj = textOr([&] { return cs.prjStr(); });
    facts.accuracy = QString();
}

SystemDetails::SystemDetails(QWidget *parent)
    : QWidget(parent)
    , m_prj(new QPlainTextEdit)
    , m_problem(new QLabel)
{
    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignTop);
    form->setContentsMargins(0, 0, 0, 0);
    m_name = valueLabel(form, tr("Название"));
    m_code = valueLabel(form, tr("Код"));
    m_kind = valueLabel(form, tr("Вид"));
    m_area = valueLabel(form, tr("Область"));
    m_accuracy = valueLabel(form, tr("Точность"));
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);

    m_prj->setReadOnly(true);
    m_prj->setTabChangesFocus(true);
    m_prj->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_prj->setAccessibleName(tr("Строка CoordSys"));
    m_prj->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_prj->setMinimumHeight(m_prj->fontMetrics().lineSpacing() * 4);
    auto *title = new QLabel(tr("&Строка CoordSys:"));
    title->setBuddy(m_prj);

    m_problem->setWordWrap(true);
    m_problem->setTextFormat(Qt::PlainText);
    m_problem->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_problem->setAccessibleName(tr("Почему систему нельзя выбрать"));
    m_problem->setStyleSheet(QStringLiteral("QLabel { background: #fdecea; color: #7b241c; padding: 6px; }"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_problem);
    layout->addLayout(form);
    layout->addWidget(title);
    layout->addWidget(m_prj, 1);
    show({});
}

void SystemDetails::show(const SystemFacts &facts)
{
    m_name->setText(orDash(facts.name));
    m_code->setText(orDash(facts.code));
    m_kind->setText(orDash(facts.kind));
    m_area->setText(orDash(facts.area));
    m_accuracy->setText(orDash(facts.accuracy));
    m_prj->setPlainText(facts.prj);
    m_problem->setVisible(!facts.problem.isEmpty());
    m_problem->setText(tr("Систему нельзя создать: %1").arg(facts.problem));
}

} // namespace nivora::cs
