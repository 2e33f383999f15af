#include <widgets/choosing/GuessDialog_p.h>
#include <widgets/map/WorldMap_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CoordSysFactory.h>
#include <coordsys/SystemSearch.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace nivora::cs {
namespace {

constexpr int mostEntries = 8;
constexpr qint64 mostBytes = 4 * 1024 * 1024;
enum Column { NameColumn, CodeColumn, DistanceColumn, ShareColumn, AssumedColumn, ColumnCount };

QString assumedText(const SystemGuess::Entry &entry)
{
    QStringList parts;
    for (const GuessAssumption assumption : entry.assumptions)
        parts << assumptionText(assumption);
    return parts.join(QStringLiteral(", "));
}

QString distanceText(const SystemGuess::Entry &entry)
{
    return entry.distanceM
               ? WidgetTexts::tr("%1 км").arg(QLocale().toString(*entry.distanceM / 1000.0, 'f', 0))
               : QString();
}

/// What would tell the members of an entry apart.
QString decidingText(const SystemGuess::Entry &entry)
{
    if (!entry.isDecidable())
        return WidgetTexts::tr("По данным не решить: больше 30 систем");
    return WidgetTexts::tr("Расходятся до %1 м: решит точка %2; %3")
        .arg(QLocale().toString(entry.spreadM, 'f', 1), QString::number(entry.deciding.x(), 'g', 12),
             QString::number(entry.deciding.y(), 'g', 12));
}

QTreeWidgetItem *itemOf(const SystemGuess::Entry &entry)
{
    const SystemGuess::Member &first = entry.members.first();
    auto *item =
        new QTreeWidgetItem({first.name, first.code, distanceText(entry),
                             WidgetTexts::tr("%1 %").arg(qRound(100.0 * entry.share)), assumedText(entry)});
    for (int i = 1; i < entry.members.size(); ++i) {
        const SystemGuess::Member &member = entry.members.at(i);
        item->addChild(new QTreeWidgetItem(
            {member.name, member.code,
             WidgetTexts::tr("%1 м", "metres").arg(QLocale().toString(member.metres, 'f', 1))}));
    }
    if (entry.members.size() > 1)
        item->setToolTip(NameColumn, decidingText(entry));
    return item;
}

} // namespace

QVector<QPointF> pointsFromText(const QString &text)
{
    // 7415000 6181000 | 37,62; 55,75 | "a";1.5;2.5
    static const QRegularExpression number(QStringLiteral(R"([-+]?\d+(?:\.\d+)?(?:[eE][-+]?\d+)?)"));
    static const QRegularExpression decimalComma(QStringLiteral(R"((?<=\d),(?=\d))"));
    static const QRegularExpression otherSeparator(QStringLiteral(R"(\d\s*[;\t]|\d\s+[-+]?\d)"));
    QVector<QPointF> points;
    for (QString line : text.split(QLatin1Char('\n'))) {
        if (otherSeparator.match(line).hasMatch())
            line.replace(decimalComma, QStringLiteral("."));
        QVector<double> values;
        auto found = number.globalMatch(line);
        while (found.hasNext() && values.size() < 2)
            values << found.next().captured().toDouble();
        if (values.size() == 2)
            points << QPointF(values.at(0), values.at(1));
    }
    return points;
}

GuessDialog::GuessDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QDialog(parent)
    , m_factory(std::move(factory))
    , m_data(new QPlainTextEdit)
    , m_place(new QLineEdit)
    , m_swapped(new QCheckBox(WidgetTexts::tr("&первой стоит координата на север")))
    , m_list(new QTreeWidget)
    , m_map(new WorldMap)
    , m_remark(new QLabel)
{
    describeFields();
    auto *file = new QPushButton(WidgetTexts::tr("&Из файла…"));
    auto *search = new QPushButton(WidgetTexts::tr("&Найти"));
    auto *row = new QHBoxLayout;
    row->addWidget(file);
    row->addWidget(m_swapped);
    row->addStretch(1);
    row->addWidget(search);
    auto *form = new QFormLayout;
    form->addRow(WidgetTexts::tr("&Рядом с:"), m_place);
    auto *buttons = new QDialogButtonBox;
    m_choose = buttons->addButton(WidgetTexts::tr("Выбрать"), QDialogButtonBox::AcceptRole);
    buttons->addButton(WidgetTexts::tr("Отмена"), QDialogButtonBox::RejectRole);
    m_choose->setEnabled(false);
    search->setDefault(true);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(makeTop(), 1);
    layout->addLayout(form);
    layout->addLayout(row);
    layout->addWidget(m_list, 2);
    layout->addWidget(m_remark);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 142, fontMetrics().lineSpacing() * 34);
    connect(search, &QPushButton::clicked, this, [this] { find(); });
    connect(file, &QPushButton::clicked, this, [this] { openFile(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(m_list, &QTreeWidget::currentItemChanged, this, [this] {
        m_choose->setEnabled(!code().isEmpty());
        showPlace();
    });
}

void GuessDialog::describeFields()
{
    setWindowTitle(WidgetTexts::tr("Система по данным"));
    m_data->setPlaceholderText(WidgetTexts::tr("Вставьте координаты, по точке в строке: x y"));
    m_data->setTabChangesFocus(true);
    m_data->setAccessibleName(WidgetTexts::tr("Координаты"));
    m_place->setPlaceholderText(WidgetTexts::tr("город, страна или долгота, широта; можно не указывать"));
    m_list->setHeaderLabels({WidgetTexts::tr("Название"), WidgetTexts::tr("Код"), WidgetTexts::tr("От места"),
                             WidgetTexts::tr("Внутри области"), WidgetTexts::tr("Принято")});
    m_list->setAccessibleName(WidgetTexts::tr("Подходящие системы"));
    m_list->header()->resizeSection(NameColumn, fontMetrics().averageCharWidth() * 44);
    m_remark->setWordWrap(true);
}

QLayout *GuessDialog::makeTop()
{
    auto *row = new QHBoxLayout;
    row->addWidget(m_data, 2);
    row->addWidget(m_map, 1, Qt::AlignTop);
    return row;
}

/// The area of the entry's first system, and where the data would lie.
void GuessDialog::showPlace()
{
    const QTreeWidgetItem *item = m_list->currentItem();
    const QTreeWidgetItem *top = item && item->parent() ? item->parent() : item;
    const int row = m_list->indexOfTopLevelItem(const_cast<QTreeWidgetItem *>(top));
    const bool isEntry = row >= 0 && row < m_entries.size();
    m_map->setArea(isEntry ? m_entries.at(row).area : QRectF());
    m_map->setPlace(isEntry ? std::make_optional(m_entries.at(row).box) : std::nullopt);
}

QString GuessDialog::code() const
{
    const QTreeWidgetItem *item = m_list->currentItem();
    const QString code = item ? item->text(CodeColumn) : QString();
    return item && code.isEmpty() ? item->text(NameColumn) : code;
}

void GuessDialog::openFile()
{
    const QString name = QFileDialog::getOpenFileName(this, windowTitle());
    QFile file(name);
    if (!name.isEmpty() && file.open(QIODevice::ReadOnly))
        m_data->setPlainText(QString::fromUtf8(file.read(mostBytes)));
}

void GuessDialog::find()
{
    const auto guess = systemGuess(*m_factory);
    SystemGuess::Question question;
    question.points = pointsFromText(m_data->toPlainText());
    question.isSwapped = m_swapped->isChecked();
    const QString place = m_place->text().trimmed();
    const auto near = place.isEmpty() ? std::nullopt : guess->guessNear(place, question, mostEntries);
    if (!place.isEmpty() && !near)
        m_remark->setText(WidgetTexts::tr("Место «%1» неизвестно: укажите долготу и широту").arg(place));
    else
        m_remark->clear();
    show(near ? *near : guess->guess(question, mostEntries));
    if (question.points.isEmpty())
        m_remark->setText(WidgetTexts::tr("В тексте нет координат: нужны два числа в строке"));
}

void GuessDialog::show(const SystemGuess::Answer &answer)
{
    m_entries.clear(); // the list tells of its changes
    m_list->clear();
    m_entries = answer.entries;
    for (const SystemGuess::Entry &entry : answer.entries)
        m_list->addTopLevelItem(itemOf(entry));
    m_list->setCurrentItem(m_list->topLevelItem(0));
    for (int column = CodeColumn; column < ColumnCount; ++column)
        m_list->resizeColumnToContents(column);
    if (answer.entries.isEmpty() && m_remark->text().isEmpty())
        m_remark->setText(
            WidgetTexts::tr("Ни в одной системе эти координаты не лежат в её области применения"));
}

} // namespace nivora::cs
