#pragma once

#include <coordsys/CoordSystemParams.h>
#include <coordsys/UserCoordSystem.h>

#include <QAbstractItemModel>
#include <QVector>

#include <memory>

namespace nivora::cs {

class CoordSysFactory;
class CoordSystemCatalogModelPrivate;

/// Everything there is to choose from, as a tree for views: the user's own systems by branch, those used
/// recently, the named systems of the MapInfo catalogue by category, and the EPSG database by country with
/// the other authorities of PROJ behind.
///
/// Rows are answered from what the catalogues hold already: no row asks an engine, no system is made before
/// create(). The EPSG database and what the search needs are read on a thread of the model's own, some 0.2 s;
/// prepare() starts that, and so does opening the section. The model shows the catalogues as they were when
/// it was made; the user's systems are read anew by reloadOwnSystems().
///
/// Threads: one, that of the views. Ownership: it keeps a share of its factory.
class NIVORA_CS_EXPORT CoordSystemCatalogModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// The rows of the tree's first level.
    enum Section { OwnSystems, RecentSystems, MapinfoCatalogue, EpsgDatabase, SectionCount };
    /// The columns of a row.
    enum Column { NameColumn, CodeColumn, ColumnCount };
    /// What Qt::DisplayRole does not say. Rows that are no system answer nothing but NameRole.
    enum Role {
        NameRole = Qt::UserRole,
        CodeRole,   ///< EPSG code, CoordSystemTypes::EPSG_UNDEFINDED when the entry has none, or another
                    ///< authority
        PrjRole,    ///< CoordSys text of the catalogue or the user, null when none is stored
        AreaRole,   ///< QRectF, the area of use: longitude and latitude in degrees on WGS 84, width positive
                    ///< (it may end beyond 180); null when unknown or not read yet
        KindRole,   ///< int, a Kind
        TaggedRole, ///< text for CoordSysFactory::createFromTaggedString(); of Oracle's numbers "oracle:n",
                    ///< of others than EPSG "ESRI:54030"
        GroupRole,  ///< name of the branch, category or country
        WithdrawnRole, ///< bool: the authority has withdrawn the code; false until prepared
    };
    /// What the coordinates of a row's system are.
    enum class Kind : int { Unknown = 0, Geographic = 1, Projected = 2, NonEarth = 3 };
    Q_ENUM(Kind)

    /// A system that was chosen before.
    struct RecentSystem
    {
        QString name;                                 ///< for people
        QString tagged;                               ///< as TaggedRole has it
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED; ///< EPSG_UNDEFINDED when it has none
        bool isPinned = false;                        ///< stays until it is taken away
    };

    /// The factory must have been initialised. Throws std::invalid_argument "factory" for null.
    explicit CoordSystemCatalogModel(std::shared_ptr<CoordSysFactory> factory, QObject *parent = nullptr);
    /// Waits for the thread.
    ~CoordSystemCatalogModel() override;

    /// The factory it was made with.
    const std::shared_ptr<CoordSysFactory> &factory() const;

    /// Starts to read the EPSG database and the search's words unless that was done; returns at once.
    void prepare();
    /// Waits until that is done. For programs without an event loop, and tests.
    void waitUntilPrepared();
    /// Whether the database and the words are there.
    bool isPrepared() const;

    /// Replaces the recent systems, the last chosen first.
    void setRecentSystems(const QVector<RecentSystem> &systems);
    /// Takes what the factory's store holds now.
    void reloadOwnSystems();

    /// The row of a section.
    QModelIndex sectionIndex(Section section) const { return index(section, NameColumn); }
    /// Row of a catalogue's category.
    QModelIndex catalogueIndex(int category, int entry) const;
    /// The row that stands for a code: the catalogue's first entry with it, else the database's. Invalid when
    /// there is none.
    QModelIndex indexOfCode(int epsg) const;
    /// The row that stands for a system: of its code, of the user's own systems or of the catalogue, of the
    /// system that an affine transformation was put upon. Invalid when there is none. Up to some
    /// milliseconds.
    QModelIndex indexOfSystem(const CoordSystem &cs) const;
    /// Whether a row stands for a system; false for branches and headings.
    static bool isSystem(const QModelIndex &index);

    /// The system of a row, named as the row is. Throws what the factory's creators throw, and
    /// std::invalid_argument for a row that is no system. Costs some milliseconds.
    CoordSystemPtr create(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex &parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    /// The EPSG database is there, areas are known, searches find. Not sent when reading it failed (logged);
    /// opening the section or prepare() tries again then.
    void prepared();
    /// reloadOwnSystems() took another store.
    void ownSystemsChanged();

private:
    friend class CoordSystemCatalogModelPrivate;
    const std::unique_ptr<CoordSystemCatalogModelPrivate> d;
};

} // namespace nivora::cs
