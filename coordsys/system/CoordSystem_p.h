#pragma once

#include "CatalogueToken_p.h"
#include "CrsDefinition_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/PrjText.h>
#include <coordsys/TABProjInfo.h>

#include <QReadWriteLock>

#include <atomic>
#include <cstdint>

namespace nivora::cs {

class CatalogueName;
class LazyParts;
struct MIUnitConvParam;
struct ProjOperation;

/// What a CoordSystem consists of, and what this library may do with one that hosts may not.
class CoordSystemPrivate : public CoordSystemTypes
{
public:
    explicit CoordSystemPrivate(CoordSystem &system);
    ~CoordSystemPrivate();
    CoordSystemPrivate(const CoordSystemPrivate &) = delete;
    CoordSystemPrivate &operator=(const CoordSystemPrivate &) = delete;

    static CoordSystemPrivate &get(CoordSystem &cs) { return *cs.d; }
    static const CoordSystemPrivate &get(const CoordSystem &cs) { return *cs.d; }

    // State

    /// A copy of everything, which shares the engines' objects until one of the two gets others.
    CoordSystemPtr duplicate() const;
    /// The three members that come later are made when one of these is called first.
    void makeLater(std::shared_ptr<const LazyParts> parts);
    void ensureMade() const;
    /// The spatial reference for this library's own, reading use.
    void *srs() const;
    /// False on a fresh object.
    bool hasSrs() const { return m_isPending || m_srs; }
    PJ *pj() const;
    const std::shared_ptr<const ProjOperation> &plane() const;
    /// The conversion of forward() and inverse() instead of the one that setProj4() makes.
    void setPlane(std::shared_ptr<const ProjOperation> plane);
    /// Tells this state of this object from every other that there was in the process.
    std::uint64_t state() const { return m_state; }
    void noteChange();
    void forgetDerived();
    void forgetBounds();
    void forgetIdentity();

    // What it is

    bool isLatLong() const
    {
        const int known = m_isLatLong.load(std::memory_order_acquire);
        return known != NotAsked ? known != 0 : askLatLong();
    }
    bool isNonEarth() const
    {
        const int known = m_isNonEarth.load(std::memory_order_acquire);
        return known != NotAsked ? known != 0 : askNonEarth();
    }
    bool isRotated() const;
    bool hasShift() const;
    QString datumName() const;

    // Identity, code and name

    void setIdentity(CrsDefinitionPtr identity) const;
    /// Made on first call; null when the source is no text that PROJ knows a system by.
    CrsDefinitionPtr identity() const;
    CrsDefinitionPtr registeredIdentity() const;
    CrsDefinitionPtr namedIdentity() const;
    CrsDefinitionPtr writableIdentity() const;
    /// The database's system of a code that was set; null when there is none or its plane is not this one's.
    CrsDefinitionPtr codedIdentity() const;
    int statedEpsg() const;
    /// A catalogue's code for the system as it is now, affine transformation included. It counts when the
    /// database has no system of that code, or one with this plane, which is looked at when it is asked for.
    void setCataloguedEpsg(int epsg);
    /// The system is the catalogue's entry of its code and stands for that code's definition.
    void setEntryEpsg(int epsg);
    bool hasForeignCataloguedCode() const;
    bool isMoved() const;
    int unmovedEpsg(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress) const;
    int searchedEpsg(const std::shared_ptr<nivora::concurrent::ProgressHandler> &progress) const;
    /// The description is found when it is first asked for: first by \p catalogued, which may be null.
    void setNameless(std::shared_ptr<const CatalogueName> catalogued = nullptr);
    QString foundDescription() const;

    // Conversions

    bool convertPoints(int direction, QPointF *points, std::size_t count) const;
    bool convertRect(int direction, const QRectF &in, QRectF &out) const;

    // Bounds and unit

    void setProjectionDefaultBounds(const QRectF &rect);
    QRectF computeRect() const;
    QRectF rectWithoutArea() const;
    bool computeNeedCrop() const;
    double osrLinearUnits(QString *name) const;
    bool hasNumberedUnit() const;
    /// With m_lock held; calls nothing that takes it. An invalid unit when none fits.
    LinearUnit detectUnitLocked(const ProjectionParamsManager &manager, QString *osrName) const;

    // Texts

    /// Of a CoordSys source, as it was read when the system was made.
    std::shared_ptr<const TABProjInfo_t> record() const;
    QString registeredWkt() const;
    QString projText(const std::function<LinearUnit()> &unitOf) const;
    QString sourcePrj() const;
    PrjText writtenText() const;
    void nameAffineUnit() const;
    QString withOwnClauses(const QString &written) const;
    QString taggedWithClauses() const;

    // Equality

    bool isEqualByText(const CoordSystemPrivate &other, bool ignoreRect) const;
    CrsDefinitionPtr judgedIdentity() const;

    CoordSystem *const q;
    mutable std::shared_ptr<void> m_srs;      ///< comes later
    bool m_isSrsShared = false;               ///< with other systems, so that hosts get one of their own:
    mutable std::shared_ptr<void> m_givenSrs; ///< under m_lock
    mutable std::atomic<void *> m_given{nullptr};
    mutable std::shared_ptr<PJ> m_pj; ///< comes later
    /// What converts; the main object unless that shifts the datum; comes later.
    mutable std::shared_ptr<const ProjOperation> m_plane;
    std::shared_ptr<const LazyParts> m_lazy;
    mutable std::atomic<bool> m_isPending{false};
    mutable CrsDefinitionPtr m_identity; ///< under m_lock
    mutable bool m_hasIdentity = false;  ///< under m_lock; a failure is remembered too
    mutable QString m_description;       ///< under m_lock
    mutable bool m_isNameless = false;   ///< under m_lock
    mutable CrsDefinitionPtr m_coded;    ///< under m_lock
    mutable int m_codedFor = 0;          ///< the code that m_coded was found for, 0 for none; under m_lock
    std::shared_ptr<const CatalogueName> m_catalogueName;
    CatalogueTokenPtr m_catalogues; ///< those that it was made with
    std::atomic<std::uint64_t> m_state;
    QRectF m_rect;
    mutable std::optional<QRectF> m_computedRect;      ///< under m_lock
    mutable std::optional<QRectF> m_rectWithoutSearch; ///< under m_lock
    QRectF m_projectionBounds;
    mutable QReadWriteLock m_lock;     ///< guards the lazily found members; taken before the PROJ lock
    mutable LinearUnit m_detectedUnit; ///< under m_lock
    LinearUnit m_affineUnit;
    std::atomic<int> m_epsg{EPSG_UNDEFINDED};
    bool m_isEpsgCatalogued = false; ///< m_epsg is a catalogue's
    bool m_isEpsgOfMoved = false;    ///< and that of the system with its affine transformation
    bool m_isEntry = false;
    std::unique_ptr<QTransform> m_affine;
    mutable std::optional<bool> m_needCrop; ///< under m_lock
    SourceData m_source;
    /// Of a CoordSys source; null when the host has set the text.
    std::shared_ptr<const TABProjInfo_t> m_record;
    QStringList m_assumptions;

    // What costs a question to the engines, kept per object. Dropped when the definition changes.
    enum : int { NotAsked = -1 };
    mutable std::atomic<int> m_isLatLong{NotAsked};
    mutable std::atomic<int> m_isNonEarth{NotAsked};
    mutable std::atomic<int> m_matchedEpsg{NotAsked};
    mutable std::atomic<int> m_statedEpsg{NotAsked};
    mutable std::atomic<int> m_searchedEpsg{NotAsked}; ///< a search that found nothing is remembered too

private:
    bool askLatLong() const;
    bool askNonEarth() const;
    bool isPlaneOf(const CrsDefinition &registered) const;
    bool isPlaneOf(int code, const CrsDefinition &registered) const;
    int nearEntryCode() const;
    QRectF moved(const QRectF &rect) const;
    const MIUnitConvParam *plainUnit(const ProjectionParamsManager &manager) const;
    QString taggedStringImpl() const;
    QString barePrj() const;
    QString withClauses(const QString &prj, const QTransform *affine) const;
    QString affineUnitName() const;
    bool samePj(const CoordSystemPrivate &other) const;
    bool sameUnit(const CoordSystemPrivate &other) const;
    bool sameRect(const CoordSystemPrivate &other) const;
    bool sameAffine(const CoordSystemPrivate &other) const;
    bool sameSpecialDatum(const CoordSystemPrivate &other) const;
};

inline CoordSystemPrivate &privateOf(CoordSystem &cs) { return CoordSystemPrivate::get(cs); }
inline const CoordSystemPrivate &privateOf(const CoordSystem &cs) { return CoordSystemPrivate::get(cs); }

} // namespace nivora::cs
