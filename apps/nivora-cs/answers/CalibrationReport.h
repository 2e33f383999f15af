#pragma once

#include "CalibrationText.h"

/// The answer as a page with a drawing of the residuals: HTML, or Markdown with the drawing in it.
QString calibrationHtml(const CalibrationAnswer &answer);
QString calibrationMarkdown(const CalibrationAnswer &answer);
