#include <widgets/choosing/RowDelegate_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CoordSystemCatalogModel.h>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace nivora::cs {
namespace {

QRect textPlace(const QRect &cell, const QWidget *view)
{
    const int margin = view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1;
    return cell.adjusted(margin, 0, -margin, 0);
}

bool isTooLong(const QString &text, const QStyleOptionViewItem &item, int width)
{
    return text.size() * item.fontMetrics.maxWidth() > width &&
           item.fontMetrics.horizontalAdvance(text) > width;
}

} // namespace

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QStyle *style = option.widget->style();
    QStyleOptionViewItem item = option;
    item.backgroundBrush = Qt::NoBrush;
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &item, painter, item.widget);
    const QRect place = textPlace(item.rect, item.widget);
    const QFontMetrics &metrics = item.fontMetrics;
    QString text = index.data().toString();
    if (isTooLong(text, item, place.width()))
        text = metrics.elidedText(text, Qt::ElideMiddle, place.width());
    const bool isSelected = item.state & QStyle::State_Selected;
    const auto group = item.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    QFont font = item.font;
    font.setStrikeOut(
        index.data(CoordSystemCatalogModel::WithdrawnRole).toBool()); // withdrawn by its authority
    painter->setFont(font);
    painter->setPen(item.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text));
    const int left =
        item.direction == Qt::RightToLeft ? place.right() - metrics.horizontalAdvance(text) : place.left();
    painter->drawText(left, place.top() + (place.height() - metrics.height()) / 2 + metrics.ascent(), text);
}

bool RowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                            const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QString text = index.data().toString();
    const bool isCut = isTooLong(text, option, textPlace(option.rect, view).width());
    const bool isWithdrawn = index.data(CoordSystemCatalogModel::WithdrawnRole).toBool();
    const QString tip = isWithdrawn ? WidgetTexts::tr("%1 (отозвана)").arg(text) : isCut ? text : QString();
    QToolTip::showText(event->globalPos(), tip, view);
    return !tip.isEmpty();
}

} // namespace nivora::cs
