#pragma once

#include "CatalogIndex_p.h"
#include "CatalogRows_p.h"
#include <coordsys/CoordSystemParams.h>
#include <coordsys/UserCoordSystem.h>

#include <QFutureWatcher>
#include <QThreadPool>

namespace nivora::cs {

/// What a CoordSystemCatalogModel consists of.
class CoordSystemCatalogModelPrivate
{
public:
    using Model = CoordSystemCatalogModel;
    using Section = Model::Section;

    struct Record
    {
        QString name;
        int epsg = CoordSystemTypes::EPSG_UNDEFINDED;
        Model::Kind kind = Model::Kind::Unknown;
        QString id; ///< of another authority, "ESRI:54030"

        /// "EPSG:4326"
        QString code() const { return epsg > 0 ? epsgTag(epsg) : id; }
    };
    struct Worker
    {
        Worker() { pool.setMaxThreadCount(1); }

        QFutureWatcher<std::shared_ptr<const CatalogIndex>> watcher;
        QThreadPool pool; ///< the global one may be full of the catalogue's background fill; waits as it goes
        bool isRunning = false;
    };

    CoordSystemCatalogModelPrivate(Model &model, std::shared_ptr<CoordSysFactory> factory)
        : q(&model)
        , m_factory(std::move(factory))
    {}
    static const CoordSystemCatalogModelPrivate &get(const Model &model) { return *model.d; }

    QString nameOf(const QModelIndex &index) const;
    QModelIndex ownIndexOf(const CoordSystem &cs) const;
    QVariant systemData(const QModelIndex &index, int role) const;
    Record record(const QModelIndex &index) const;
    const CoordSystemParams &catalogueEntry(const QModelIndex &index) const;
    const UserCoordSystem::CoordSystemParam &ownEntry(const QModelIndex &index) const;
    QString prjText(const QModelIndex &index) const;
    QString taggedText(const QModelIndex &index) const;
    QModelIndex systemIndex(Section section, int group, int row, int column = Model::NameColumn) const;
    QString groupName(Section section, int group) const;
    int groupCount(Section section) const;
    int systemCount(Section section, int group) const;
    QRectF area(int epsg) const;
    void takeIndex();
    template <typename Change> void replaceRows(Section section, int newCount, Change &&change);

    Model *const q;
    std::shared_ptr<CoordSysFactory> m_factory;
    QList<CoordSystemParamsList> m_categories;
    QList<UserCoordSystem::CsDataType> m_branches;
    QVector<Model::RecentSystem> m_recent;
    std::shared_ptr<const CatalogIndex> m_index;
    Worker m_worker; ///< last: it ends first
};

} // namespace nivora::cs
