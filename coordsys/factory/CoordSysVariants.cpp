#include "CoordSysFactory_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "CoordSystem_p.h"
#include "InputFile_p.h"
#include <coordsys/CoordSysRect.h>
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>
#include <coordsys/CoordSystemStrings.h>
#include <coordsys/ProjectionParamsManager.h>
#include <platform/Logger.h>

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <memory>
#include <optional>

namespace nivora::cs {
namespace {

/// "8307" or "0x2073"; nothing for a list, a sign, blanks, or a number beyond an int.
std::optional<int> cleanNumber(const QString &text)
{
    static const QRegularExpression clean(QStringLiteral("\\A(?:0x[0-9a-fA-F]+|[0-9]+)\\z")); // "0x2073"
    const bool hex = text.startsWith(QLatin1String("0x"));
    bool isNumber = false;
    const int number = text.toInt(&isNumber, hex ? 16 : 10);
    return isNumber && clean.match(text).hasMatch() ? std::optional<int>(number) : std::nullopt;
}

} // namespace

CoordSystemPtr CoordSysFactoryPrivate::createNonEarth(int unitCode, QRectF bounds) const
{
    const SourceScope scope(*this);
    const QString units =
        QStringLiteral("CoordSys NonEarth Units \"%1\"").arg(m_params->unitByID(unitCode)->name());
    return createFromPrj(units + boundConditionAsString(bounds));
}

CoordSystemPtr CoordSysFactoryPrivate::createFromOracleSRID(int srid) const
{
    const SourceScope scope(*this);
    LOG_INFO(QStringLiteral("SRID=%1").arg(srid));
    const QString path = m_resourceDir.absoluteFilePath(QStringLiteral("OracleSRID.xml"));
    QFile file(path);
    if (!openInput(file).isEmpty())
        throwCoded<std::runtime_error>(Error::Code::FileFailed,
                                       CoordSysTexts::tr("Не могу открыть файл %0").arg(path));

    QString prj;
    QXmlStreamReader xml(&file);
    readRoot(xml); // whatever its name
    while (prj.isEmpty() && xml.readNextStartElement()) {
        const QString text = xml.attributes().value(QLatin1String("mbproj")).trimmed().toString();
        if (!text.isEmpty() && cleanNumber(xml.attributes().value(QLatin1String("srid")).toString()) == srid)
            prj = QStringLiteral("CoordSys Earth Projection, ") + text;
        xml.skipCurrentElement();
    }
    if (xml.hasError())
        LOG_ERROR(
            QStringLiteral("%1:%2: %3").arg(path, QString::number(xml.lineNumber()), xml.errorString()));
    if (prj.isEmpty())
        throwCoded<std::runtime_error>(
            Error::Code::UnknownCode,
            CoordSysTexts::tr("Данные для SRID=%1 в файле %0 отсутствуют").arg(path, QString::number(srid)));
    CoordSystemPtr cs = createFromPrj(prj);
    cs->setSourceParameters({CoordSystem::Oracle, QString::number(srid)});
    return cs;
}

CoordSystemPtr CoordSysFactoryPrivate::resetRectCsToDefault(const CoordSystemPtr &cs) const
{
    const SourceScope scope(*this);
    CoordSystemPtr copy = cs->clone();
    const QRectF bounds = m_coordSysRect->rect(copy);
    copy->setRectCoordSystem(hasAffine(cs) ? cs->affineTransform()->mapRect(bounds) : bounds);
    if (hasAffine(cs))
        copy->setAffineTransform(std::make_unique<QTransform>(*cs->affineTransform()), cs->affineUnit());
    const CoordSystemPrivate &given = privateOf(*cs);
    given.m_isEpsgCatalogued ? privateOf(*copy).setCataloguedEpsg(given.m_epsg) : copy->setEpsg(given.m_epsg);
    return copy;
}

QVector<CoordSystemPtr> CoordSysFactory::cropCoordSystems()
{
    static const QStringList cropCsList = {QStringLiteral("CoordSys Earth Projection,4,104,7,90,90,90"),
                                           QStringLiteral("CoordSys Earth Projection,4,104,7,0,90,90")};
    // Never destroyed: statics may still convert while the process ends.
    static const QVector<CoordSystemPtr> &systems = *[] {
        const auto catalogues = activeCatalogues();
        auto made = std::make_unique<QVector<CoordSystemPtr>>();
        for (const QString &prj : cropCsList)
            *made << catalogues->createWithoutDescription(prj);
        return made.release();
    }();
    return systems;
}

} // namespace nivora::cs
