#pragma once

#include <QCoreApplication>

namespace nivora::cs {

/// What people read in the models, in a context of its own: a host's texts are translated by the host alone.
class ModelTexts
{
    Q_DECLARE_TR_FUNCTIONS(ModelTexts) // as lupdate names the context
};

} // namespace nivora::cs
