#include <widgets/RowDelegate_p.h>

#include <QPainter>
#include <QStyle>
#include <QWidget>

namespace nivora::cs {

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QStyle *style = option.widget->style();
    QStyleOptionViewItem item = option;
    item.backgroundBrush = Qt::NoBrush;
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &item, painter, item.widget);
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, item.widget) + 1;
    const QRect place = item.rect.adjusted(margin, 0, -margin, 0);
    const QFontMetrics &metrics = item.fontMetrics;
    QString text = index.data().toString();
    const bool isLong =
        text.size() * metrics.maxWidth() > place.width() && metrics.horizontalAdvance(text) > place.width();
    if (isLong)
        text = metrics.elidedText(text, Qt::ElideRight, place.width());
    const bool isSelected = item.state & QStyle::State_Selected;
    const auto group = item.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    painter->setFont(item.font);
    painter->setPen(item.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text));
    const int left =
        item.direction == Qt::RightToLeft ? place.right() - metrics.horizontalAdvance(text) : place.left();
    painter->drawText(left, place.top() + (place.height() - metrics.height()) / 2 + metrics.ascent(), text);
}

} // namespace nivora::cs
