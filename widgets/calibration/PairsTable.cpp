#include <widgets/calibration/PairsTable_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/AngleText.h>
#include <coordsys/NumberText.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QRegularExpression>
#include <QSignalBlocker>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace nivora::cs {
namespace {

enum Column { Name, X, Y, KnownX, KnownY, Weight, Height, KnownHeight, Length, Note, ColumnCount };
constexpr int coordinates = 4; ///< behind the name; they must be there
constexpr int values = 7;      ///< with weight and heights, which may be empty

using Values = std::array<double, values>;

/// In the order of the columns.
Values valuesOf(const CalibrationPair &pair)
{
    return {pair.local.x(), pair.local.y(),    pair.known.x(),   pair.known.y(),
            pair.weight,    pair.localHeightM, pair.knownHeightM};
}

CalibrationPair pairOf(const Values &v)
{
    CalibrationPair pair;
    pair.local = {v[0], v[1]};
    pair.known = {v[2], v[3]};
    pair.weight = v[4];
    pair.localHeightM = v[5];
    pair.knownHeightM = v[6];
    return pair;
}

/// A number with a point or a comma; degrees in any notation where they may stand.
bool readValue(const QString &text, bool angles, double &value)
{
    const std::string plain =
        QString(text).trimmed().replace(QLatin1Char(','), QLatin1Char('.')).toStdString();
    if (readNumber(plain, value))
        return true;
    Angle angle;
    const char *why = nullptr;
    if (!angles || !readAngle(plain, angle, why))
        return false;
    value = angle.degrees;
    return true;
}

/// The values of a row, those at its end left out or empty where nothing is known. False when one is no
/// number.
bool readValues(const QStringList &texts, bool knownAreAngles, Values &result)
{
    result = valuesOf({});
    for (int i = 0; i < values; ++i) {
        const QString text = texts.value(i).trimmed();
        if (i >= coordinates && text.isEmpty())
            continue;
        const bool isAngle = knownAreAngles && (i == KnownX - X || i == KnownY - X);
        if (!readValue(text, isAngle, result[static_cast<std::size_t>(i)]))
            return false;
    }
    return result[Weight - X] > 0.0;
}

/// Nothing for what is not known.
QString valueText(double value)
{
    return std::isfinite(value) ? QString::number(value, 'g', QLocale::FloatingPointShortest) : QString();
}

QTableWidgetItem *fixedItem()
{
    auto *item = new QTableWidgetItem;
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

/// "P1;1,5;2;3;4": a comma is a decimal mark here.
QStringList fieldsOf(const QString &line)
{
    static const QRegularExpression separator(QStringLiteral("[\\t;]"));
    return line.split(separator);
}

} // namespace

PairsTable::PairsTable(QWidget *parent)
    : QTableWidget(0, ColumnCount, parent)
{
    setHorizontalHeaderLabels({WidgetTexts::tr("Точка"), WidgetTexts::tr("x местный"),
                               WidgetTexts::tr("y местный"), WidgetTexts::tr("x известный"),
                               WidgetTexts::tr("y известный"), WidgetTexts::tr("Вес"),
                               WidgetTexts::tr("h местная, м"), WidgetTexts::tr("h известная, м"),
                               WidgetTexts::tr("Невязка, м"), QString()});
    showHeights(false);
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    horizontalHeader()->setHighlightSections(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAccessibleName(WidgetTexts::tr("Опорные точки"));
    connect(this, &QTableWidget::itemChanged, this, &PairsTable::pairsChanged);
}

void PairsTable::showHeights(bool shown)
{
    setColumnHidden(Height, !shown);
    setColumnHidden(KnownHeight, !shown);
}

void PairsTable::setPairs(const QVector<CalibrationPair> &pairs)
{
    {
        const QSignalBlocker quiet(this);
        setRowCount(0);
        for (const CalibrationPair &pair : pairs)
            append(pair);
    }
    Q_EMIT pairsChanged();
}

void PairsTable::append(const CalibrationPair &pair)
{
    const QSignalBlocker quiet(this);
    const int row = rowCount();
    insertRow(row);
    auto *name = new QTableWidgetItem(pair.name);
    name->setCheckState(pair.isUsed ? Qt::Checked : Qt::Unchecked);
    setItem(row, Name, name);
    const Values numbers = valuesOf(pair);
    for (int i = 0; i < values; ++i) {
        auto *item = new QTableWidgetItem(valueText(numbers[static_cast<std::size_t>(i)]));
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        setItem(row, X + i, item);
    }
    setItem(row, Length, fixedItem());
    setItem(row, Note, fixedItem());
}

bool PairsTable::readRow(int row, CalibrationPair &pair) const
{
    QStringList texts;
    for (int i = 0; i < values; ++i)
        texts << (item(row, X + i) ? item(row, X + i)->text() : QString());
    Values numbers{};
    if (!readValues(texts, m_knownAreAngles, numbers))
        return false;
    pair = pairOf(numbers);
    pair.name = item(row, Name) ? item(row, Name)->text() : QString();
    pair.isUsed = !item(row, Name) || item(row, Name)->checkState() != Qt::Unchecked;
    return true;
}

QVector<CalibrationPair> PairsTable::pairs(QVector<int> *rows) const
{
    QVector<CalibrationPair> result;
    for (int row = 0; row < rowCount(); ++row) {
        CalibrationPair pair;
        if (!readRow(row, pair))
            continue;
        result << pair;
        if (rows)
            *rows << row;
    }
    return result;
}

int PairsTable::paste(const QString &text)
{
    constexpr int withName = 5;
    int taken = 0;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QStringList fields = fieldsOf(QString(line).remove(QLatin1Char('\r')));
        const int first = fields.size() >= withName ? 1 : 0;
        Values numbers{};
        if (!readValues(fields.mid(first), m_knownAreAngles, numbers))
            continue; // a heading
        CalibrationPair pair = pairOf(numbers);
        pair.name = first == 1 ? fields.first().trimmed() : QString::number(rowCount() + 1);
        append(pair);
        ++taken;
    }
    if (taken > 0)
        Q_EMIT pairsChanged();
    return taken;
}

void PairsTable::removeSelected()
{
    std::set<int, std::greater<>> rows;
    for (const QModelIndex &index : selectedIndexes())
        rows.insert(index.row());
    for (const int row : rows)
        removeRow(row);
    if (!rows.empty())
        Q_EMIT pairsChanged();
}

void PairsTable::showResiduals(const QVector<CalibrationResidual> &residuals)
{
    const QSignalBlocker quiet(this);
    QVector<int> rows;
    pairs(&rows);
    for (int row = 0; row < rowCount(); ++row) {
        const int place = rows.indexOf(row);
        const bool known = place >= 0 && place < residuals.size();
        const bool isSuspect = known && residuals.at(place).isSuspect;
        item(row, Length)->setText(known ? QString::number(residuals.at(place).lengthM, 'f', 3) : QString());
        item(row, Note)->setText(place < 0   ? WidgetTexts::tr("не число")
                                 : isSuspect ? WidgetTexts::tr("ошибка?")
                                             : QString());
        for (int column = 0; column < ColumnCount; ++column)
            item(row, column)->setForeground(isSuspect ? QBrush(QColor(0xc0, 0, 0)) : QBrush());
    }
    viewport()->update();
}

void PairsTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste))
        paste(QApplication::clipboard()->text());
    else if (event->matches(QKeySequence::Delete))
        removeSelected();
    else
        QTableWidget::keyPressEvent(event);
}

} // namespace nivora::cs
