#include <coordsys/Calibration.h>

#include "CalibrationFit_p.h"
#include "CalibrationGround_p.h"
#include "CoordSysTexts_p.h"
#include "FisherTest_p.h"

#include <algorithm>
#include <iterator>

namespace nivora::cs {
namespace {

struct ModelWords
{
    CalibrationModel model;
    const char *word;
    const char *text;
};
constexpr ModelWords words[] = {
    {CalibrationModel::Shift, "shift", QT_TRANSLATE_NOOP("CoordSysTexts", "Сдвиг")},
    {CalibrationModel::Similarity, "similarity", QT_TRANSLATE_NOOP("CoordSysTexts", "Подобие")},
    {CalibrationModel::TransverseMercator, "tmerc",
     QT_TRANSLATE_NOOP("CoordSysTexts", "Поперечная проекция Меркатора")},
    {CalibrationModel::Affine, "affine", QT_TRANSLATE_NOOP("CoordSysTexts", "Аффинное преобразование")},
    {CalibrationModel::DatumShift, "helmert",
     QT_TRANSLATE_NOOP("CoordSysTexts", "Сдвиг датума по семи параметрам")},
    {CalibrationModel::Polynomial, "polynomial",
     QT_TRANSLATE_NOOP("CoordSysTexts", "Многочлен второй степени")},
};

const ModelWords &wordsOf(CalibrationModel model)
{
    return *std::find_if(std::begin(words), std::end(words),
                         [model](const ModelWords &w) { return w.model == model; });
}

constexpr CalibrationModel nested[] = {CalibrationModel::Shift, CalibrationModel::Similarity,
                                       CalibrationModel::Affine, CalibrationModel::Polynomial};
constexpr double nestedLevel = 0.01;

int placeOf(CalibrationModel model)
{
    const auto place = std::find(std::begin(nested), std::end(nested), model);
    return place == std::end(nested) ? -1 : static_cast<int>(place - std::begin(nested));
}

/// The points without those that the richest fit suspects: one blunder would justify any model.
GroundPtr withoutBlunders(const GroundPtr &ground)
{
    constexpr CalibrationModel richestFirst[] = {CalibrationModel::Affine, CalibrationModel::Similarity,
                                                 CalibrationModel::Shift};
    for (const CalibrationModel model : richestFirst) {
        const auto fit = fitted(model, ground);
        if (!fit->refusal.isEmpty() || fit->redundancy < 3.0)
            continue;
        auto cleaned = std::make_shared<CalibrationGround>(*ground);
        for (int i = 0; i < cleaned->pairs.size(); ++i)
            if (fit->blunders.isSuspect[static_cast<std::size_t>(i)])
                cleaned->pairs[i].isUsed = false;
        return cleaned;
    }
    return ground;
}

std::optional<double> probability(const FittedModel &smaller, const FittedModel &greater)
{
    if (!smaller.refusal.isEmpty() || !greater.refusal.isEmpty() || greater.redundancy < 0.5)
        return std::nullopt;
    const double floorM = greater.ground->floorM;
    const double variance = std::max(greater.squares / greater.redundancy, floorM * floorM);
    const double gained = smaller.redundancy - greater.redundancy;
    return fisherProbability((smaller.squares - greater.squares) / gained / variance, gained,
                             greater.redundancy);
}

} // namespace

struct Calibration::Data
{
    GroundPtr ground;
    GroundPtr cleaned; ///< for comparing models
};

Calibration::Calibration(const CoordSystemPtr &known, const QVector<CalibrationPair> &pairs,
                         const Local &local)
{
    const GroundPtr ground = makeGround(known, pairs, local);
    m_data = std::make_shared<Data>(Data{ground, withoutBlunders(ground)});
}

QVector<CalibrationPair> Calibration::pairs() const { return m_data->ground->pairs; }

CoordSystemPtr Calibration::knownSystem() const { return m_data->ground->known; }

CoordSystemPtr Calibration::localSystem() const { return m_data->ground->localSystem; }

int Calibration::localUnitCode() const { return m_data->ground->localUnitCode; }

CalibrationFit Calibration::fit(CalibrationModel model) const
{
    return CalibrationFit(fitted(model, m_data->ground));
}

std::optional<double> Calibration::nestedProbability(CalibrationModel smaller, CalibrationModel greater) const
{
    if (placeOf(smaller) < 0 || placeOf(smaller) >= placeOf(greater))
        return std::nullopt;
    return probability(*fitted(smaller, m_data->cleaned), *fitted(greater, m_data->cleaned));
}

std::optional<CalibrationModel> Calibration::justifiedModel() const
{
    auto best = fitted(CalibrationModel::Shift, m_data->cleaned);
    if (!best->refusal.isEmpty())
        return std::nullopt;
    if (m_data->cleaned->countUsed() == 2 &&
        fitted(CalibrationModel::Similarity, m_data->cleaned)->refusal.isEmpty())
        return CalibrationModel::Similarity; // nothing is left to judge by
    for (const CalibrationModel model : {CalibrationModel::Similarity, CalibrationModel::Affine}) {
        auto next = fitted(model, m_data->cleaned);
        const std::optional<double> chance = probability(*best, *next);
        if (chance && *chance < nestedLevel)
            best = next;
    }
    return best->model;
}

QStringList Calibration::hints() const { return hintsOf(m_data->cleaned); }

QString calibrationWord(CalibrationModel model) { return QString::fromLatin1(wordsOf(model).word); }

std::optional<CalibrationModel> calibrationModel(const QString &word)
{
    for (const ModelWords &known : words)
        if (word == QLatin1String(known.word))
            return known.model;
    return std::nullopt;
}

QString calibrationText(CalibrationModel model) { return CoordSysTexts::tr(wordsOf(model).text); }

QVector<CalibrationModel> calibrationModels()
{
    QVector<CalibrationModel> models;
    for (const ModelWords &known : words)
        models << known.model;
    return models;
}

} // namespace nivora::cs
