#include "LayerWriter.h"

#include "Losses.h"
#include "Output.h"

#include <QObject>

#include <algorithm>

namespace {

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

using FieldDefinition = std::unique_ptr<void, void (*)(OGRFieldDefnH)>;

/// A column like another, under a name and with a type of its own.
FieldDefinition columnLike(OGRFieldDefnH field, const QByteArray &name, OGRFieldType type)
{
    FieldDefinition column(OGR_Fld_Create(name.constData(), type), OGR_Fld_Destroy);
    if (type == OGR_Fld_GetType(field)) {
        OGR_Fld_SetSubType(column.get(), OGR_Fld_GetSubType(field));
        OGR_Fld_SetWidth(column.get(), OGR_Fld_GetWidth(field));
        OGR_Fld_SetPrecision(column.get(), OGR_Fld_GetPrecision(field));
    }
    return column;
}

/// Wider types for those that a format does not have, in the order in which they are tried.
OGRFieldType widerType(OGRFieldType type) { return type == OFTInteger64 ? OFTReal : OFTString; }

bool hasName(OGRFeatureDefnH definition, const QByteArray &name)
{
    const QString wanted = QString::fromUtf8(name);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i)
        if (text(OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i)))
                .compare(wanted, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

/// Bytes that are no letters in any encoding, from headers that lie about theirs, would make a file of text
/// that nothing reads.
QByteArray readableName(const QByteArray &name)
{
    return QString::fromUtf8(name).replace(QChar(QChar::ReplacementCharacter), QLatin1Char('_')).toUtf8();
}

} // namespace

Geometry heldGeometry(Geometry geometry, const LostProperties &lost)
{
    if (!geometry)
        return geometry;
    if (lost.heights)
        OGR_G_Set3D(geometry.get(), FALSE);
    if (lost.measures)
        OGR_G_SetMeasured(geometry.get(), FALSE);
    if (lost.curves && OGR_G_HasCurveGeometry(geometry.get(), TRUE))
        geometry.reset(OGR_G_GetLinearGeometry(geometry.get(), 0, nullptr));
    if (lost.surfaces && isSurface(geometry.get()))
        geometry.reset(OGR_G_ForceTo(geometry.release(), wkbMultiPolygon, nullptr));
    return geometry;
}

LayerWriter::LayerWriter(GDALDatasetH dataset, const Plan &plan, Losses *losses)
    : m_plan(plan)
    , m_losses(losses)
{
    if (plan.existing && !plan.layer.isProbe) {
        m_layer = plan.existing;
        findFields();
        return;
    }
    GdalMessages messages;
    m_layer = plan.format->createLayer(dataset, plan.layer);
    if (!m_layer)
        throw Failure(
            QObject::tr("the layer \"%1\" cannot be written: %2").arg(plan.layer.name, messages.reason()));
    createFields(OGR_L_GetLayerDefn(plan.existing ? plan.existing : plan.source));
    addColumnIfNeeded();
    if (plan.existing)
        findFields();
}

void LayerWriter::findFields()
{
    m_columns.clear();
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_plan.source);
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
        const char *const name = OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i));
        m_columns.push_back(OGR_FD_GetFieldIndex(OGR_L_GetLayerDefn(m_layer), name));
        if (m_columns.back() < 0)
            // NOLINTNEXTLINE(modernize-raw-string-literal): the extraction of texts reads this form
            throw Failure(QObject::tr("the layer \"%1\" has no column \"%2\"")
                              .arg(text(OGR_L_GetName(m_plan.existing)), text(name)));
    }
}

/// Its index in the layer, -1 when the driver makes none.
int LayerWriter::createUnder(OGRFieldDefnH field, const QByteArray &name)
{
    OGRFeatureDefnH made = OGR_L_GetLayerDefn(m_layer);
    const int index = OGR_FD_GetFieldCount(made);
    const OGRFieldType type = OGR_Fld_GetType(field);
    for (const OGRFieldType tried : {type, widerType(type)}) {
        const FieldDefinition column = columnLike(field, name, tried);
        if (m_plan.format->holdsType(tried) &&
            OGR_L_CreateField(m_layer, column.get(), TRUE) == OGRERR_NONE &&
            OGR_FD_GetFieldCount(made) > index)
            return index;
    }
    return -1;
}

/// Types that the format does not have become wider ones. Formats that do not tell letter cases apart would
/// make one column of several, or fail in the end: those get names of their own.
int LayerWriter::createField(OGRFieldDefnH field)
{
    const QByteArray stated = OGR_Fld_GetNameRef(field);
    const QByteArray name = m_plan.format->isXml() ? readableName(stated) : stated;
    const bool isTaken = !m_plan.format->tellsCases() && hasName(OGR_L_GetLayerDefn(m_layer), name);
    const int made = isTaken ? -1 : createUnder(field, name);
    if (made >= 0)
        return made;
    constexpr int most = 100;
    for (int i = 1; i < most && hasName(OGR_L_GetLayerDefn(m_layer), name); ++i) {
        const QByteArray other = name + '_' + QByteArray::number(i);
        if (!hasName(OGR_L_GetLayerDefn(m_layer), other))
            return createUnder(field, other);
    }
    return -1;
}

void LayerWriter::createFields(OGRFeatureDefnH definition)
{
    for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
        const GdalMessages messages;
        const int created = createField(field);
        // A driver has some columns from the beginning.
        const int there = created < 0
                              ? OGR_FD_GetFieldIndex(OGR_L_GetLayerDefn(m_layer), OGR_Fld_GetNameRef(field))
                              : created;
        const bool isFree = std::find(m_columns.begin(), m_columns.end(), there) == m_columns.end();
        m_columns.push_back(isFree ? there : -1);
        if (created >= 0)
            noteFieldLoss(field, created);
        else if (m_losses && m_columns.back() < 0)
            m_losses->add(Loss::Names, QObject::tr("the column \"%1\" cannot be written: %2")
                                           .arg(text(OGR_Fld_GetNameRef(field)), messages.reason()));
    }
}

void LayerWriter::noteFieldLoss(OGRFieldDefnH wanted, int index)
{
    if (!m_losses)
        return;
    OGRFieldDefnH made = OGR_FD_GetFieldDefn(OGR_L_GetLayerDefn(m_layer), index);
    const QString wantedName = text(OGR_Fld_GetNameRef(wanted));
    const QString madeName = text(OGR_Fld_GetNameRef(made));
    if (wantedName != madeName) {
        // NOLINTNEXTLINE(modernize-raw-string-literal): the extraction of texts reads this form
        const QString loss = QObject::tr("the column \"%1\" gets the name \"%2\"");
        m_losses->add(Loss::Names, loss.arg(wantedName, madeName));
    }
    if (OGR_Fld_GetType(wanted) != OGR_Fld_GetType(made))
        m_losses->add(Loss::Types, QObject::tr("the column \"%1\" is %2, not %3")
                                       .arg(wantedName, text(OGR_GetFieldTypeName(OGR_Fld_GetType(made))),
                                            text(OGR_GetFieldTypeName(OGR_Fld_GetType(wanted)))));
}

void LayerWriter::addColumnIfNeeded()
{
    if (!m_columns.empty() || !m_plan.format->needsColumns() ||
        OGR_FD_GetFieldCount(OGR_L_GetLayerDefn(m_layer)) > 0)
        return;
    const FieldDefinition narrow(OGR_Fld_Create("ID", OFTInteger), OGR_Fld_Destroy);
    m_hasOwnColumn = OGR_L_CreateField(m_layer, narrow.get(), TRUE) == OGRERR_NONE;
}

bool LayerWriter::write(OGRFeatureH source, Geometry geometry) const
{
    static const int none = -1; // GDAL wants a place, also of no columns
    const Feature copy(OGR_F_Create(OGR_L_GetLayerDefn(m_layer)));
    OGR_F_SetFromWithMap(copy.get(), source, TRUE, m_columns.empty() ? &none : m_columns.data());
    if (m_plan.layer.keepsNumbers)
        OGR_F_SetFID(copy.get(), OGR_F_GetFID(source));
    if (m_hasOwnColumn)
        OGR_F_SetFieldInteger64(copy.get(), 0, OGR_F_GetFID(source));
    if (geometry)
        OGR_F_SetGeometryDirectly(copy.get(), heldGeometry(std::move(geometry), m_plan.lost).release());
    return OGR_L_CreateFeature(m_layer, copy.get()) == OGRERR_NONE;
}
