#include <widgets/PairsTable_p.h>

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
#include <set>

namespace nivora::cs {
namespace {

enum Column { Name, X, Y, KnownX, KnownY, Length, Note, ColumnCount };

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
    setHorizontalHeaderLabels({QObject::tr("Точка"), QObject::tr("x местный"), QObject::tr("y местный"),
                               QObject::tr("x известный"), QObject::tr("y известный"),
                               QObject::tr("Невязка, м"), QString()});
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    horizontalHeader()->setHighlightSections(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAccessibleName(QObject::tr("Опорные точки"));
    connect(this, &QTableWidget::itemChanged, this, &PairsTable::pairsChanged);
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
    const std::array<double, 4> values{pair.local.x(), pair.local.y(), pair.known.x(), pair.known.y()};
    for (int i = 0; i < 4; ++i) {
        auto *item = new QTableWidgetItem(
            QString::number(values[static_cast<std::size_t>(i)], 'g', QLocale::FloatingPointShortest));
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        item->setData(Qt::UserRole, pair.weight);
        setItem(row, X + i, item);
    }
    setItem(row, Length, fixedItem());
    setItem(row, Note, fixedItem());
}

bool PairsTable::readRow(int row, CalibrationPair &pair) const
{
    std::array<double, 4> values{};
    for (int i = 0; i < 4; ++i) {
        const QTableWidgetItem *cell = item(row, X + i);
        if (!cell ||
            !readValue(cell->text(), m_knownAreAngles && i >= 2, values[static_cast<std::size_t>(i)]))
            return false;
    }
    pair.name = item(row, Name) ? item(row, Name)->text() : QString();
    pair.isUsed = !item(row, Name) || item(row, Name)->checkState() != Qt::Unchecked;
    pair.local = {values[0], values[1]};
    pair.known = {values[2], values[3]};
    const double weight = item(row, X)->data(Qt::UserRole).toDouble();
    pair.weight = weight > 0.0 ? weight : 1.0;
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
        std::array<double, 4> v{};
        bool isGood = fields.size() >= 4;
        for (int i = 0; isGood && i < 4; ++i)
            isGood =
                readValue(fields.at(first + i), m_knownAreAngles && i >= 2, v[static_cast<std::size_t>(i)]);
        if (!isGood)
            continue; // a heading
        CalibrationPair pair;
        pair.name = first == 1 ? fields.first().trimmed() : QString::number(rowCount() + 1);
        pair.local = {v[0], v[1]};
        pair.known = {v[2], v[3]};
        append(pair);
        ++taken;
    }
    if (taken > 0)
        Q_EMIT pairsChanged();
    return taken;
}

void PairsTable::removeSelected()
{
    std::set<int, std::greater<int>> rows;
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
        item(row, Note)->setText(place < 0   ? QObject::tr("не число")
                                 : isSuspect ? QObject::tr("ошибка?")
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
