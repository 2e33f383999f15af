#pragma once

#include <coordsys/CoordSystemCatalogModel.h>

#include <QAbstractTableModel>
#include <QRectF>
#include <QVector>

#include <memory>
#include <optional>

namespace nivora::cs {

class CoordSystemFilterModelPrivate;

/// Those systems of a CoordSystemCatalogModel that people look for, best first, as a flat list: by words,
/// code or town (as MapinfoSearch finds them), by place, or both. The user's own systems come first, then the
/// catalogue's, then those of the EPSG database that the catalogue lacks; recent ones are not repeated.
///
/// Made for every keystroke: setText() and setPlace() return at once, a thread of the model's own looks (a
/// millisecond or two mostly, some 50 when slips of the hand are forgiven), and found() tells. Until then
/// isPending(), and the rows are those found before. Texts that are overtaken by the next one are not looked
/// for. Rows come in portions (fetchMore()). Threads: one, that of the views.
class NIVORA_CS_EXPORT CoordSystemFilterModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    /// The columns of a row.
    enum Column { NameColumn, CodeColumn, GroupColumn, ColumnCount };

    /// What would be found with one word of the text, or the place, left out.
    struct Relaxation
    {
        QString text;    ///< the words that are left
        QString without; ///< the word left out, null when it is the place
        int count = 0;   ///< systems that would be found, above 0
    };

    /// \p source must live as long as this.
    explicit CoordSystemFilterModel(CoordSystemCatalogModel &source, QObject *parent = nullptr);
    /// Waits for the thread.
    ~CoordSystemFilterModel() override;

    /// The words that are looked for.
    QString text() const;
    /// Looks for other words, as MapinfoSearch::find() reads them.
    void setText(const QString &text);
    /// Only systems in use at a place: longitude and latitude in degrees, x first; a point is a rectangle
    /// without extent, width may run on across the 180th meridian. The systems whose area of use holds the
    /// middle; without words those that hold all of it first, then by size of area, the smallest first.
    /// Systems without a known area are left out. Nothing, or a place that is not finite: everywhere.
    void setPlace(const std::optional<QRectF> &lonLat);
    /// Whether systems that their authority has withdrawn are listed; they are, behind the others, unless
    /// set.
    void setWithdrawnShown(bool isShown);
    /// What setPlace() was given.
    const std::optional<QRectF> &place() const;

    /// There are words or a place; without either the list is empty.
    bool isFiltering() const;
    /// Something is looked for, and the answer is not there yet.
    bool isPending() const;
    /// Waits for the answer, and for the source to be prepared. found() is sent meanwhile.
    void waitUntilFound();
    /// All that was found, fetched or not.
    int foundCount() const;
    /// When nothing was found: ways to find something, those with the fewest results first. Otherwise the
    /// words that the search left aside, in one entry, or nothing.
    const QVector<Relaxation> &relaxations() const;
    /// What there is to say on the words apart from systems, as MapinfoSearch::remark() has it, in the
    /// language of the factory; empty mostly, and until the source is prepared.
    QString remark() const;

    /// The row of the source that a row shows.
    QModelIndex mapToSource(const QModelIndex &index) const;
    /// Invalid for what was not found; fetches the rows up to what was.
    QModelIndex mapFromSource(const QModelIndex &source);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    /// The roles of the source, too.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// The rows are those of text() and place().
    void found();

private:
    friend class CoordSystemFilterModelPrivate;
    const std::unique_ptr<CoordSystemFilterModelPrivate> d;
};

} // namespace nivora::cs
