#pragma once

// The library's readers of what people write, under their bare names.

#include <coordsys/AngleText.h>
#include <coordsys/NumberText.h>
#include <coordsys/TextCoding.h>

using nivora::cs::Angle;
using nivora::cs::AngleColumns;
using nivora::cs::Axis;
using nivora::cs::DecimalCommas;
using nivora::cs::hasHemisphereColumn;
using nivora::cs::isBlank;
using nivora::cs::isDigit;
using nivora::cs::isHemisphere;
using nivora::cs::isSeparator;
using nivora::cs::isUtf8;
using nivora::cs::Letters;
using nivora::cs::longestAngle;
using nivora::cs::longestNumber;
using nivora::cs::looksLikeUtf16;
using nivora::cs::mostDecimals;
using nivora::cs::mostSecondDecimals;
using nivora::cs::noNumber;
using nivora::cs::numberText;
using nivora::cs::parseAngle;
using nivora::cs::parseAngleColumns;
using nivora::cs::parseCommaNumber;
using nivora::cs::parseGroupedNumber;
using nivora::cs::parseNumber;
using nivora::cs::putAngle;
using nivora::cs::putNumber;
using nivora::cs::readAngle;
using nivora::cs::readNumber;
using nivora::cs::skipBlanks;
using nivora::cs::TextCoding;
