#include "ChosenOperation_p.h"

#include "CodedError_p.h"
#include "CoordSysTexts_p.h"
#include "GeographicExtent_p.h"
#include "JoinedOperation_p.h"
#include "TransformOperations_p.h"

#include <QMutexLocker>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace nivora::cs {
namespace {

[[noreturn]] void refuse(const QString &why, Error::Code code = Error::Code::NoOperation)
{
    throwCoded<std::logic_error>(code, why);
}

PjArea areaOf(const OperationChoice &choice)
{
    if (!choice.area())
        return nullptr;
    PjArea area(proj_area_create());
    const QRectF rect = eastward(*choice.area());
    const double east = rect.right() > 180.0 ? rect.right() - 360.0 : rect.right();
    proj_area_set_bbox(area.get(), rect.left(), rect.top(), east, rect.bottom());
    return area;
}

bool isAllowed(const OperationChoice &choice, const TransformOperation &operation)
{
    const bool isExact = !choice.mostErrorM() || (!operation.isBallpark && operation.accuracyM >= 0.0 &&
                                                  operation.accuracyM <= *choice.mostErrorM());
    return isExact && (choice.allowsBallpark() || !operation.isBallpark);
}

/// PROJ's own choice among what is allowed; null when there is nothing.
PjHandle amongAllowed(const PJ *source, const PJ *target, const OperationChoice &choice)
{
    std::vector<QByteArray> texts;
    if (!choice.allowsBallpark() || choice.mostErrorM())
        texts.emplace_back("ALLOW_BALLPARK=NO");
    if (choice.mostErrorM())
        texts.push_back("ACCURACY=" + QByteArray::number(*choice.mostErrorM(), 'g', 17));
    std::vector<const char *> options;
    options.reserve(texts.size() + 1);
    for (const QByteArray &text : texts)
        options.push_back(text.constData());
    options.push_back(nullptr);
    const PjArea area = areaOf(choice);
    return ownPj(
        proj_create_crs_to_crs_from_pj(globalProjContext(), source, target, area.get(), options.data()));
}

/// What is wanted, in the words in which operations are described.
struct Wanted
{
    QString code; ///< "EPSG:1623"; empty for a name
    QString name;

    bool isMetBy(const TransformOperation &operation) const;
};

QString bareName(const QString &name)
{
    return QString(name).remove(QLatin1String("Inverse of "), Qt::CaseInsensitive);
}

bool Wanted::isMetBy(const TransformOperation &operation) const
{
    if (!code.isEmpty())
        return operation.codes.contains(code, Qt::CaseInsensitive);
    const QStringList names{operation.name, operation.shortName};
    return std::any_of(names.begin(), names.end(), [this](const QString &own) {
        return bareName(own).compare(bareName(name), Qt::CaseInsensitive) == 0;
    });
}

/// The first of the pair's working operations that is wanted; null when there is none.
PjHandle amongWorking(const PJ *source, const PJ *target, const Wanted &wanted)
{
    PJ_CONTEXT *context = globalProjContext();
    const PjList list = operationList(context, source, target, OperationSet::Working);
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i) {
        PjHandle operation = ownPj(proj_list_get(context, list.get(), i));
        if (operation && wanted.isMetBy(describedOperation(context, operation.get())))
            return operation;
    }
    return nullptr;
}

/// "EPSG:1623" of that, of a URN and of a bare number; empty for other texts.
QString codeIn(const QString &text)
{
    // urn:ogc:def:coordinateOperation:EPSG::1623, EPSG:1623, 1623
    static const QRegularExpression form(QStringLiteral(
        "^(?:urn:ogc:def:coordinateOperation:)?(?:([A-Za-z_]+):[^:]*:|([A-Za-z_]+):)?(\\d+)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return {};
    const QString authority = match.captured(1) + match.captured(2);
    return (authority.isEmpty() ? QStringLiteral("EPSG") : authority.toUpper()) + QLatin1Char(':') +
           match.captured(3);
}

PjHandle fromDatabase(const QString &code)
{
    return ownPj(proj_create_from_database(globalProjContext(), code.section(QLatin1Char(':'), 0, 0).toUtf8(),
                                           code.section(QLatin1Char(':'), 1).toUtf8(),
                                           PJ_CATEGORY_COORDINATE_OPERATION, 0, nullptr));
}

PjHandle byName(const QString &name)
{
    constexpr PJ_TYPE operations[] = {PJ_TYPE_CONCATENATED_OPERATION, PJ_TYPE_TRANSFORMATION};
    PJ_CONTEXT *context = globalProjContext();
    const PjList found(proj_create_from_name(context, nullptr, bareName(name).toUtf8().constData(),
                                             operations, std::size(operations), 0, 1, nullptr));
    return found && proj_list_get_count(found.get()) > 0 ? ownPj(proj_list_get(context, found.get(), 0))
                                                         : nullptr;
}

bool isWkt(const QString &text)
{
    return text.contains(QLatin1Char('[')) || text.startsWith(QLatin1Char('{'));
}

/// The operation itself, whatever it joins. Throws std::logic_error when it is none.
PjHandle operationOf(const QString &text)
{
    const QString code = codeIn(text);
    PjHandle operation = !code.isEmpty() ? fromDatabase(code)
                         : isWkt(text)   ? ownPj(proj_create(globalProjContext(), text.toUtf8().constData()))
                                         : byName(text);
    if (!operation || proj_is_crs(operation.get()))
        refuse(CoordSysTexts::tr("Нет такой операции: %1").arg(text.left(200)));
    return operation;
}

QString missingGridsOf(const PJ *operation)
{
    QStringList missing;
    for (const TransformGrid &grid : describedOperation(globalProjContext(), operation).grids)
        if (!grid.isAvailable)
            missing << grid.name;
    return missing.join(QLatin1String(", "));
}

/// An engine's object and what it is; null for one that chooses by place.
struct Found
{
    PjHandle object;
    std::shared_ptr<const TransformOperation> single;
};

/// What becomes of an operation that the pair does not have: its ends may be joined by projections, which
/// know nothing of heights.
enum class Strangers { Joined, Refused };

Found namedOperation(const PJ *source, const PJ *target, const QString &text, Strangers strangers)
{
    PJ_CONTEXT *context = globalProjContext();
    if (PjHandle working = isWkt(text) ? nullptr : amongWorking(source, target, {codeIn(text), text})) {
        auto single = singleOperation(context, working.get());
        return {std::move(working), single};
    }
    const PjHandle operation = operationOf(text);
    if (strangers == Strangers::Refused) { // variants with heights have names, but no codes of their own
        const QString name = QString::fromUtf8(proj_get_name(operation.get()));
        PjHandle working = amongWorking(source, target, {QString(), name});
        auto single = working ? singleOperation(context, working.get()) : nullptr;
        return {std::move(working), single};
    }
    const QString missing = missingGridsOf(operation.get());
    if (!missing.isEmpty() && !proj_context_is_network_enabled(context))
        refuse(CoordSysTexts::tr("Для операции «%1» нет файла %2").arg(text.left(200), missing),
               Error::Code::MissingGrid);
    return {joinedWithEnds(source, operation.get(), target), singleOperation(context, operation.get())};
}

Found chosenOperation(const PJ *source, const PJ *target, const OperationChoice &choice, Strangers strangers)
{
    if (!choice.operation().isEmpty())
        return namedOperation(source, target, choice.operation(), strangers);
    PjHandle operation = amongAllowed(source, target, choice);
    auto single = operation ? singleOperation(globalProjContext(), operation.get()) : nullptr;
    return {std::move(operation), single};
}

/// What the pair has, for those who were refused.
QString alternatives(const PJ *source, const PJ *target)
{
    QStringList names;
    for (const TransformOperation &operation :
         operationsBetween(globalProjContext(), source, target, OperationSet::Working))
        if (names.size() < 3 && !operation.isBallpark)
            names << (operation.accuracyM < 0.0
                          ? QStringLiteral("«%1»").arg(operation.shortName)
                          : CoordSysTexts::tr("«%1», %2 м")
                                .arg(operation.shortName, QString::number(operation.accuracyM)));
    return names.isEmpty() ? CoordSysTexts::tr("у этих КС есть только пересчёт без сдвига датума")
                           : CoordSysTexts::tr("у этих КС есть %1").arg(names.join(QLatin1String("; ")));
}

/// A step whose ends are those of systems, x first.
ProjOperation stepBetween(const PJ *source, const PJ *target, const OperationChoice &choice,
                          Strangers strangers)
{
    const Found found = chosenOperation(source, target, choice, strangers);
    if (!found.object)
        refuse(
            CoordSysTexts::tr("Нет операции, которая подходит выбору: %1").arg(alternatives(source, target)));
    if (found.single && !isAllowed(choice, *found.single))
        refuse(CoordSysTexts::tr("Операция «%1» грубее, чем разрешено").arg(found.single->shortName));
    PJ *normalized = proj_normalize_for_visualization(globalProjContext(), found.object.get());
    ProjOperation step(std::shared_ptr<PJ>(
        ownPj(normalized ? normalized : proj_clone(globalProjContext(), found.object.get()))));
    step.single = found.single;
    if (step.in[0].isPlain() && step.out[0].isPlain())
        step.setEnds(endOf(source), endOf(target));
    return step;
}

ProjOperation chosenStep(const CoordSystemPtr &from, const CoordSystemPtr &to, const OperationChoice &choice)
{
    const QMutexLocker lock(globalProj4Mutex());
    if (isProjText(choice.operation()))
        return stepOfProjText(choice.operation(), from, to);
    ProjOperation step;
    const bool found = askWithEnds(globalProjContext(), from, to, [&](const PJ *source, const PJ *target) {
        if (proj_list_get_count(
                operationList(globalProjContext(), source, target, OperationSet::Working).get()) == 0)
            return false;
        step = stepBetween(source, target, choice, Strangers::Joined);
        return true;
    });
    if (!found)
        refuse(CoordSysTexts::tr("Не могу создать объект трансформации. %1").arg(projLastError()));
    return step;
}

} // namespace

ProjOperation chosenStepBetween(const PJ *source, const PJ *target, const OperationChoice &choice)
{
    if (isProjText(choice.operation()))
        refuse(CoordSysTexts::tr(
            "Текст PROJ ничего не говорит о системах высот: задайте операцию кодом или именем"));
    return stepBetween(source, target, choice, Strangers::Refused);
}

TransformQueuePtr chosenQueue(const CoordSystemPtr &from, const CoordSystemPtr &to,
                              const OperationChoice &choice)
{
    const auto steps = CoordTransformCache::stepsBetween(from, to);
    if (steps.size() > 1 && !choice.operation().isEmpty())
        refuse(CoordSysTexts::tr("Между планом и землёй операцию выбрать нельзя"));
    auto queue = std::make_shared<TransformQueue>();
    queue->first = chosenStep(steps.front().first, steps.front().second, choice);
    if (steps.size() > 1)
        queue->second = chosenStep(steps.back().first, steps.back().second, choice);
    return queue;
}

} // namespace nivora::cs
