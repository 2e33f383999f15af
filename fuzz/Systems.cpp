#include "Fuzz.h"

#include "Workshop.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/TABProjInfo.h>

#include <QRectF>

#include <cmath>
#include <iterator>

using namespace nivora::cs;

namespace {

/// What every caller does with a system that was made: nothing of it may fail in another way than the headers
/// say.
void use(const CoordSystemPtr &cs)
{
    require(cs != nullptr, "a creator gives a system or throws");
    QPointF planar;
    if (cs->forward(QPointF(37.5, 55.75), planar)) {
        require(std::isfinite(planar.x()) && std::isfinite(planar.y()), "a point that succeeds is finite");
        QPointF back;
        cs->inverse(planar, back);
    }
    cs->rectWithoutSearch();
    require(cs->isEqual(*cs, false), "a system equals itself");
    cs->exportToWkt();
    cs->projStr();
}

} // namespace

void fuzzCoordSys(const QByteArray &input)
{
    const QString text = QString::fromUtf8(input);
    const MapHeaderCoordsysConverter converter;
    const TABProjInfo_t record = converter.prjStrToTABProjInfo(text);
    converter.prjStrToXml(text);
    const TABProjInfo_t again = converter.prjStrToTABProjInfo(converter.tabProjInfoToString(record));
    require(again.nProjId == record.nProjId && again.nAffineFlag == record.nAffineFlag,
            "a written record keeps its projection and its clauses");
    use(Workshop::factory().createWithoutDescription(text));
}

void fuzzProj(const QByteArray &input) { use(Workshop::factory().createFromProj(QString::fromUtf8(input))); }

void fuzzWkt(const QByteArray &input) { use(Workshop::factory().createFromWkt(QString::fromUtf8(input))); }

void fuzzTagged(const QByteArray &input)
{
    const CoordSystemPtr cs = Workshop::factory().createFromTaggedString(QString::fromUtf8(input));
    use(cs);
    require(Workshop::factory().createFromTaggedString(cs->taggedString()) != nullptr,
            "a tagged text that was written can be read");
}

void fuzzClauses(const QByteArray &input)
{
    const QString text = QString::fromUtf8(input);
    tryDetectTypeCoordSystem(text);
    const PrjClauses found = hasAffineOrBoundsInString(text);
    require(found.bounds >= 0 && found.bounds <= 2, "there are three kinds of bounds");
    const int tokens = affineParamsAndBoundsFromPrj(text).affine.size();
    require(tokens == 0 || tokens == 7, "an affine clause has seven tokens or none");
}

void fuzzUserInput(const QByteArray &input)
{
    if (!input.startsWith('@')) // fuzzSystemFile reads files
        use(Workshop::factory().createFromUserInput(QString::fromUtf8(input)));
}

/// The first byte chooses the kind of file.
void fuzzSystemFile(const QByteArray &input)
{
    const char *const names[] = {"layer.prj", "layer.wkt", "layer.qpj",
                                 "layer.mif", "layer.tab", "layer.map"};
    if (input.isEmpty())
        return;
    const char *name = names[static_cast<unsigned char>(input.at(0)) % std::size(names)];
    Workshop::put("layer.tab", "!table\n!version 300\nDefinition Table\n  Type NATIVE Charset \"Neutral\"\n");
    Workshop::put(name, input.mid(1));
    const QString file = qstrcmp(name, "layer.map") == 0 ? QStringLiteral("layer.tab") : QLatin1String(name);
    use(Workshop::factory().createFromUserInput(QLatin1Char('@') + Workshop::dir().filePath(file)));
}
