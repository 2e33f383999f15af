#pragma once

#include <QCoreApplication>

namespace nivora::cs {

/// What people read in the widgets, in a context of its own: a host's texts are translated by the host alone.
class WidgetTexts
{
    Q_DECLARE_TR_FUNCTIONS(WidgetTexts) // as lupdate names the context
};

} // namespace nivora::cs
