#include <widgets/choosing/PickerLayout_p.h>

#include <widgets/choosing/RowDelegate_p.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <QAction>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollArea>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace nivora::cs {
namespace {

QTreeView *listView(QAbstractItemModel &model)
{
    auto *view = new QTreeView;
    view->setModel(&model);
    view->setUniformRowHeights(true);
    view->setItemDelegate(new RowDelegate(view));
    view->setAllColumnsShowFocus(true);
    view->setAlternatingRowColors(false);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->header()->setStretchLastSection(false);
    view->header()->setSectionsMovable(false);
    view->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    return view;
}

void setWidth(QTreeView *view, int column, int characters)
{
    view->header()->setSectionResizeMode(column, QHeaderView::Interactive);
    view->header()->resizeSection(column, view->fontMetrics().averageCharWidth() * characters);
}

} // namespace

PickerLayout::PickerLayout(QWidget *owner, QAbstractItemModel &treeModel, QAbstractItemModel &resultModel)
    : search(new QLineEdit)
    , placeKind(new QComboBox)
    , point(new QLineEdit)
    , tree(listView(treeModel))
    , results(listView(resultModel))
    , message(new QLabel)
    , count(new QLabel)
    , map(new WorldMap)
    , details(new SystemDetails)
    , operations(new OperationPicker)
    , save(new QPushButton(WidgetTexts::tr("Сохранить как &мою систему…")))
    , calibrate(new QPushButton(WidgetTexts::tr("По &точкам…")))
    , guess(new QPushButton(WidgetTexts::tr("По моим &данным…")))
    , withdrawn(new QCheckBox(WidgetTexts::tr("&отозванные")))
    , m_owner(owner)
    , m_pages(new QStackedWidget)
{
    save->setEnabled(false); // until there is a system
    setUpSearch();
    setUpLists();
    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(leftSide());
    splitter->addWidget(rightSide());
    splitter->setSizes({620, 400});
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(owner);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(searchRow());
    layout->addWidget(splitter, 1);
    owner->setFocusProxy(search);
    QWidget *const order[] = {search,  placeKind, point,      withdrawn, tree,      results,
                              message, details,   operations, save,      calibrate, guess};
    for (std::size_t i = 1; i < std::size(order); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void PickerLayout::setUpSearch()
{
    search->setClearButtonEnabled(true);
    search->setPlaceholderText(WidgetTexts::tr("Название, код, город или описание в любой нотации"));
    search->setAccessibleName(WidgetTexts::tr("Поиск системы координат"));
    search->setAccessibleDescription(
        WidgetTexts::tr("Стрелки вверх и вниз выбирают найденную систему, Enter подтверждает выбор."));
    placeKind->addItem(WidgetTexts::tr("Весь мир"), Everywhere);
    placeKind->addItem(WidgetTexts::tr("Место…"), AtPoint);
    placeKind->setAccessibleName(WidgetTexts::tr("Где применяется система"));
    placeKind->setToolTip(WidgetTexts::tr("Место можно указать и правой кнопкой мыши на карте"));
    point->setPlaceholderText(WidgetTexts::tr("долгота, широта"));
    point->setAccessibleName(WidgetTexts::tr("Долгота и широта места в градусах"));
    point->setFixedWidth(point->fontMetrics().averageCharWidth() * 20);
    point->setClearButtonEnabled(true);
    point->hide();
    auto *find = new QShortcut(QKeySequence::Find, m_owner);
    find->setContext(Qt::WidgetWithChildrenShortcut);
    QObject::connect(find, &QShortcut::activated, search, [this] {
        search->setFocus(Qt::ShortcutFocusReason);
        search->selectAll();
    });
}

void PickerLayout::setUpLists()
{
    setWidth(tree, 1, 12);
    setWidth(results, 1, 14);
    setWidth(results, 2, 26);
    tree->setAccessibleName(WidgetTexts::tr("Системы координат по разделам"));
    results->setAccessibleName(WidgetTexts::tr("Найденные системы координат"));
    results->setRootIsDecorated(false);
    message->setAlignment(Qt::AlignCenter);
    message->setWordWrap(true);
    message->setMargin(24);
    message->setFrameShape(QFrame::StyledPanel);
    message->setFrameShadow(QFrame::Sunken);
    message->setBackgroundRole(QPalette::Base);
    message->setAutoFillBackground(true);
    message->setTextInteractionFlags(Qt::TextBrowserInteraction);
    message->setFocusPolicy(Qt::TabFocus); // its links
    for (QWidget *page :
         {static_cast<QWidget *>(tree), static_cast<QWidget *>(results), static_cast<QWidget *>(message)})
        m_pages->addWidget(page);
}

QLayout *PickerLayout::searchRow()
{
    auto *searchLabel = new QLabel(WidgetTexts::tr("&Поиск:"));
    searchLabel->setBuddy(search);
    auto *placeLabel = new QLabel(WidgetTexts::tr("&Где:"));
    placeLabel->setBuddy(placeKind);
    auto *row = new QHBoxLayout;
    row->addWidget(searchLabel);
    row->addWidget(search, 1);
    row->addSpacing(8);
    row->addWidget(placeLabel);
    row->addWidget(placeKind);
    row->addWidget(point);
    withdrawn->setToolTip(WidgetTexts::tr("Показывать системы, которые организация отозвала"));
    row->addWidget(withdrawn);
    return row;
}

QWidget *PickerLayout::leftSide()
{
    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages, 1);
    layout->addWidget(count);
    return side;
}

QWidget *PickerLayout::rightSide()
{
    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(map);
    auto *scroll = new QScrollArea; // long texts, large fonts, small windows
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameStyle(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(details);
    layout->addWidget(scroll, 1);
    layout->addWidget(operations);
    operations->hide();
    auto *own = new QGridLayout; // two rows: the list needs the width on small screens
    own->addWidget(save, 0, 0, 1, 2);
    own->addWidget(calibrate, 1, 0);
    own->addWidget(guess, 1, 1);
    guess->setToolTip(WidgetTexts::tr("Системы, в которых могут быть координаты без системы"));
    layout->addLayout(own);
    calibrate->setToolTip(
        WidgetTexts::tr("Система по опорным точкам, координаты которых известны в двух системах"));
    return side;
}

void PickerLayout::showMessage(const QString &html)
{
    message->setText(html);
    m_pages->setCurrentWidget(message);
}

void PickerLayout::showList(QTreeView *list) { m_pages->setCurrentWidget(list); }

QTreeView *PickerLayout::currentList() const { return qobject_cast<QTreeView *>(m_pages->currentWidget()); }

void PickerLayout::offerView(bool isKnown)
{
    const int item = placeKind->findData(InView);
    if (isKnown && item < 0)
        placeKind->insertItem(1, WidgetTexts::tr("Вид карты"), InView);
    if (!isKnown && item >= 0)
        placeKind->removeItem(item);
}

} // namespace nivora::cs
