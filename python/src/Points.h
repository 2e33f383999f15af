#pragma once

#include <coordsys/BulkTransform.h>

#include <pybind11/numpy.h>

#include <optional>
#include <string>
#include <vector>

namespace nivora::python {

namespace py = pybind11;

/// How a call of forward() or inverse() wants its points converted.
struct ListWishes
{
    bool raises = false; ///< instead of NaN
    int threads = 0;     ///< 0: all cores
    std::optional<double> epoch;
};

/// "nan" or "raise".
bool raisesOn(const std::string &errors);

/// Either way of a transformation over an array of shape (..., 2): in place of no copies where it is
/// contiguous float64. \p out is None or where the result goes.
py::object convertPoints(const cs::BulkTransform &transform, bool forward, const py::object &points,
                         const py::object &out, const ListWishes &wishes);
/// The same of two arrays of one shape, or two that broadcast to one; gives two.
py::object convertPair(const cs::BulkTransform &transform, bool forward, const py::object &x,
                       const py::object &y, const ListWishes &wishes);

} // namespace nivora::python
