#include "CommandLine.h"
#include "Commands.h"
#include "Conversion.h"
#include "OperationOptions.h"
#include "SharedOptions.h"

namespace {

constexpr const char *help = QT_TRANSLATE_NOOP(
    "QObject", R"(Reads and writes every vector format that GDAL knows (nivora-cs list-formats), all
layers and attributes included. The format of OUT follows from its extension.
Without --to only the format changes. The CoordSys clause of a MIF and the
projection of a TAB are read as they stand, affine transformation and bounds
included, and a MIF or TAB gets exactly its system.
OUT appears whole or not at all. What its format cannot hold is found by writing
samples and reading them again, and refused by its name, unless --allow has the
name or --lossy is given; then it is told on stderr:
  heights   heights, measures, what heights are above
  types     numbers, times and kinds of values; curves
  names     of columns
  texts     their length and letters
  styles    colours, patterns, labels
  datum     the system or its shift
  affine    an affine transformation
  features  kinds of geometry, features that are split or left out
  layers    further layers
A format of one kind of geometry, such as ESRI Shapefile, takes a mixed IN with
--split: points, lines and polygons go into files of their own, roads_lines.shp
and so on. --append adds to a layer of the same name, columns and system.
Heights are transformed where both systems know theirs (EPSG:25832+7837, 4979);
otherwise they stay as they are.
With --x and --y IN is a table, such as CSV or a spreadsheet, whose columns hold
coordinates as transform reads them; rows without are listed, too.
Features that cannot be transformed are left out and listed in OUT's name with
.rejected.csv; the exit status is 1 then.

Examples:
  nivora-cs convert parcels.tab parcels.gpkg --to 4326 --allow styles
  nivora-cs convert --from 28407 --to 'CoordSys Earth Projection 1, 104' roads.shp roads.mif
  nivora-cs convert --from 4326 --x lon --y lat points.csv points.tab
  nivora-cs convert --segmentize 1 --to 3857 borders.mif borders.geojson
)");

std::vector<Option> options()
{
    return withOperationOptions({
        {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of OUT; that of IN when not given.")},
        {"from", "CS", QT_TRANSLATE_NOOP("QObject", "The system of IN, whatever the file says.")},
        {"format", "NAME", QT_TRANSLATE_NOOP("QObject", "The format of OUT, whatever its extension.")},
        {"encoding", "NAME",
         QT_TRANSLATE_NOOP("QObject", "Characters of IN's texts that are not UTF-8, such as windows-1251.")},
        {"layer", "NAME", QT_TRANSLATE_NOOP("QObject", "Only this layer; it may stand several times."),
         nullptr, true},
        {"out-encoding", "NAME",
         QT_TRANSLATE_NOOP("QObject", "Characters of OUT's texts, for formats that are not UTF-8.")},
        {"x", "NAME|N", QT_TRANSLATE_NOOP("QObject", "IN is a table of points: its column of x.")},
        {"y", "NAME|N", QT_TRANSLATE_NOOP("QObject", "Its column of y.")},
        {"z", "NAME|N", QT_TRANSLATE_NOOP("QObject", "Its column of heights.")},
        {"decimal-comma", nullptr,
         QT_TRANSLATE_NOOP("QObject", "Commas inside numbers of these columns are decimal marks.")},
        {"allow", "NAMES",
         QT_TRANSLATE_NOOP("QObject", "Go on without these: heights, types and so on, with commas between.")},
        {"lossy", nullptr, QT_TRANSLATE_NOOP("QObject", "Go on without what the format cannot hold.")},
        {"overwrite", nullptr, QT_TRANSLATE_NOOP("QObject", "Replace OUT.")},
        {"append", nullptr, QT_TRANSLATE_NOOP("QObject", "Add the features to what OUT holds.")},
        {"split", nullptr,
         QT_TRANSLATE_NOOP("QObject", "One OUT for each kind of geometry: OUT_points, OUT_lines and so on.")},
        {"segmentize", "M",
         QT_TRANSLATE_NOOP("QObject",
                           "Add vertices where a straight edge bends by more than M metres in OUT.")},
        shared::strict,
        shared::epoch,
        shared::toEpoch,
    });
}

} // namespace

const Command &convertCommand()
{
    static const Command command = {
        "convert",
        "[--to CS] [options] IN OUT",
        QT_TRANSLATE_NOOP("QObject", "A file of features into another system, another format, or both."),
        help,
        2,
        options(),
        [](const CommandLine &line) { return Conversion(line).run(); },
    };
    return command;
}
