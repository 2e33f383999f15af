#pragma once

#include "FeatureBatch.h"

#include <bitset>
#include <set>
#include <vector>

/// Picks the features that tell what a format does to a layer: of every kind of value, geometry and style the
/// first one that comes. A value is of another kind when it is longer, larger, finer, or written with other
/// characters than all before.
class SampleTaker
{
public:
    /// \p made: the columns of the output, for how much they hold. \p map: the one for each of the source's.
    SampleTaker(OGRFeatureDefnH source, OGRFeatureDefnH made, const std::vector<int> &map);

    /// Of a batch, in its order; those that are not transformed are passed over.
    std::vector<FeatureBatch::Item *> take(std::vector<FeatureBatch::Item> &items);

private:
    struct Column
    {
        int index;
        OGRFieldType type;
        int width;     ///< of the output; 0 for any
        int precision; ///< likewise
        std::set<quint64> kinds{};
        quint64 last = 0; ///< 0: none yet
    };

    bool isNew(const FeatureBatch::Item &item);
    bool isNewValue(OGRFeatureH feature, Column &column);
    quint64 kindOfText(const char *text, const Column &column, bool &hasNewCharacter);

    std::vector<Column> m_columns;
    std::bitset<0x10000> m_characters; ///< that came in texts; those beyond the first plane count as one
    std::set<std::vector<int>> m_geometries;
    std::set<QByteArray> m_styles;
};

/// What a geometry is made of, as far as formats mind: type, curves, and the least vertices of a part, 4 for
/// more.
std::vector<int> kindOfGeometry(OGRGeometryH geometry);
/// Whether the driver gives such a style to what has none.
bool isUsualStyle(const char *style);
