#include "Session.h"

PYBIND11_MODULE(_core, module)
{
    using namespace nivora::python;
    module.doc() = "The compiled part of nivora_cs.";
    module.attr("data_from_package") = NIVORA_CS_DATA_FROM_PACKAGE;
    defineErrors(module);
    defineSession(module);
    defineSystems(module);
    defineTransforms(module);
    defineLookup(module);
    defineCalibration(module);
}
