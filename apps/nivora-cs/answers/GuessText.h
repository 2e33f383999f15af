#pragma once

#include <coordsys/SystemGuess.h>

#include <QJsonObject>

/// A guess for people, a paragraph an entry.
QString guessText(const nivora::cs::SystemGuess::Answer &answer);

/// The same under "guess".
QJsonObject guessJson(const nivora::cs::SystemGuess::Answer &answer);

/// What there is to say on a stated system; empty when there is none.
QString doubtText(const nivora::cs::SystemGuess::Answer &answer);
