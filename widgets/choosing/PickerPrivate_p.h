#pragma once

// What a picker is made of; its sources alone include it.

#include <widgets/CoordSystemPicker.h>
#include <widgets/choosing/PickerLayout_p.h>

#include <coordsys/CoordSystemCatalogModel.h>
#include <coordsys/CoordSystemFilterModel.h>

#include <QTimer>

#include <optional>

namespace nivora::cs {

class NIVORA_CS_WIDGETS_NO_EXPORT CoordSystemPicker::Private
{
public:
    /// What is current, and what became of it.
    struct Choice
    {
        CoordSystemPtr system;
        ShownFacts facts;
        QString refusal; ///< of a text that found nothing, either
    };

    Private(CoordSystemPicker *owner, std::shared_ptr<CoordSysFactory> factory);

    void connectLists();
    void connectRest();
    void search(const QString &now);
    void showFound();
    void showPage();
    QString countText() const;
    void changed();
    void settle();
    void settleQuietly();
    void searchAt(const std::optional<QRectF> &pasted);
    void showMenu(QTreeView &list, const QPoint &at);
    void guess();
    void restore();
    void remember() const;
    bool isGivenShown() const;
    Choice limited(Choice choice) const;
    Choice choice() const;
    Choice choiceOf(const QModelIndex &row) const;
    Choice choiceOf(const CoordSystemPtr &cs) const;
    Choice choiceOfText() const;
    void explainText(const Choice &choice);
    QString emptinessText(const QString &refusal) const;
    void followLink(const QString &link);
    void showNeighbours(const QModelIndex &row);
    void choose(const QModelIndex &row);
    void activate();
    void applyPlace();
    void setPlace(PickerLayout::PlaceKind kind);
    void save();
    void calibrate();
    QModelIndex currentRow() const;
    bool isReadingText() const;

    CoordSystemPicker *q;
    CoordSystemCatalogModel model;
    CoordSystemFilterModel filter;
    PickerLayout ui;
    QTimer settling;                           ///< runs from a change until the user pauses
    bool isDefinition = false;                 ///< the search text is no search
    bool isPlaceText = false;                  ///< the search text is coordinates
    Kinds kinds = AnyKind;                     ///< that the host takes
    CoordSystemPtr given;                      ///< by setCoordSystem(), until another is chosen
    CoordSystemPtr target;                     ///< that the host transforms into, null for none
    CoordSystemPtr system;                     ///< the choice; null while settling and when it cannot be made
    QVector<QPersistentModelIndex> neighbours; ///< rows by the id on the map
};

} // namespace nivora::cs
