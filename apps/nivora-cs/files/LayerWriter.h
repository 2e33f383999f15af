#pragma once

#include "OutputProbe.h"

#include <vector>

class Losses;

/// The geometry as a format holds it. Null stays null.
Geometry heldGeometry(Geometry geometry, const LostProperties &lost);

/// A layer of the output: made after one of the source, and given features.
class LayerWriter
{
public:
    struct Plan
    {
        OGRLayerH source = nullptr;
        const OutputFormat *format = nullptr;
        OutputLayer layer;
        LostProperties lost;
        OGRLayerH existing = nullptr; ///< to add to; a probe makes one like it. Null: a new one
    };

    /// Makes the layer and its columns, or finds them. \p losses null: they have been told. Throws Failure,
    /// also for a layer that is there and lacks a column.
    LayerWriter(GDALDatasetH dataset, const Plan &plan, Losses *losses);

    OGRLayerH layer() const { return m_layer; }
    /// The column of the output for each of the source; -1 for none.
    const std::vector<int> &columns() const { return m_columns; }
    /// False, with GDAL's reason in the messages, when the driver does not take it.
    bool write(OGRFeatureH source, Geometry geometry) const;

private:
    void createFields(OGRFeatureDefnH definition);
    void findFields();
    int createField(OGRFieldDefnH field);
    int createUnder(OGRFieldDefnH field, const QByteArray &name);
    void noteFieldLoss(OGRFieldDefnH wanted, int index);
    void addColumnIfNeeded();

    Plan m_plan;
    Losses *m_losses;
    OGRLayerH m_layer = nullptr;
    std::vector<int> m_columns;
    bool m_hasOwnColumn = false; ///< the first, made for a format that cannot do without
};
