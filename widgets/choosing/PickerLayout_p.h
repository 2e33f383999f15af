#pragma once

#include <widgets/OperationPicker.h>
#include <widgets/choosing/SystemDetails_p.h>
#include <widgets/map/WorldMap_p.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>

class QAbstractItemModel;
class QStackedWidget;

namespace nivora::cs {

/// The widgets of a picker, in their places: search above, lists on the left, map and details on the right.
class PickerLayout
{
public:
    enum PlaceKind { Everywhere, InView, AtPoint };

    PickerLayout(QWidget *owner, QAbstractItemModel &treeModel, QAbstractItemModel &resultModel);

    /// Takes the place of the lists.
    void showMessage(const QString &html);
    void showList(QTreeView *list);
    /// Null while a message is shown.
    QTreeView *currentList() const;
    void offerView(bool isKnown);

    QLineEdit *search;
    QComboBox *placeKind; ///< items' data: PlaceKind
    QLineEdit *point;
    QTreeView *tree;
    QTreeView *results;
    QLabel *message;
    QLabel *count;
    WorldMap *map;
    SystemDetails *details;
    OperationPicker *operations; ///< hidden until there is a system to go to
    QPushButton *save;
    QPushButton *calibrate;
    QPushButton *guess;
    QCheckBox *withdrawn; ///< whether withdrawn systems are listed

private:
    void setUpSearch();
    void setUpLists();
    QLayout *searchRow();
    QWidget *leftSide();
    QWidget *rightSide();

    QWidget *m_owner;
    QStackedWidget *m_pages;
};

} // namespace nivora::cs
