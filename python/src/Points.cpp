#include "Points.h"

#include "Session.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace nivora::python {
namespace {

using Coordinates = py::array_t<double, py::array::c_style | py::array::forcecast>;

static_assert(sizeof(QPointF) == 2 * sizeof(double), "an array of shape (n, 2) is a list of points");

std::size_t pointsIn(const Coordinates &array) { return static_cast<std::size_t>(array.size()) / 2; }

/// What is masked has no value, whatever stands behind the mask.
py::object unmasked(const py::object &value)
{
    if (!py::hasattr(value, "mask") || !py::hasattr(value, "filled"))
        return value;
    return value.attr("astype")("f8").attr("filled")(std::numeric_limits<double>::quiet_NaN());
}

/// NumPy would make numbers of dates, texts and the real parts of complex ones.
Coordinates numbers(const py::object &value)
{
    const auto any = py::array::ensure(unmasked(value));
    const bool isNumeric =
        any && std::string_view("biufO").find(any.dtype().kind()) != std::string_view::npos;
    const py::object array = isNumeric ? py::object(Coordinates::ensure(any)) : py::object();
    PyErr_Clear();
    if (!array)
        throw py::type_error("coordinates must be numbers");
    return py::reinterpret_borrow<Coordinates>(array);
}

/// An empty list says nothing of its shape.
Coordinates pointsOf(const py::object &value)
{
    Coordinates array = numbers(value);
    if (array.ndim() == 1 && array.size() == 0)
        return Coordinates(std::vector<py::ssize_t>{0, 2});
    if (array.ndim() < 1 || array.shape(array.ndim() - 1) != 2)
        throw py::value_error(
            "points must have the shape (n, 2): longitude or easting, latitude or northing; "
            "of more columns give points[:, :2]");
    return array;
}

std::vector<py::ssize_t> shapeOf(const py::array &array)
{
    return {array.shape(), array.shape() + array.ndim()};
}

/// Where the result goes; the array that the caller gave or a new one.
Coordinates target(const py::object &out, const Coordinates &in)
{
    if (out.is_none())
        return Coordinates(shapeOf(in));
    const bool fits = py::isinstance<py::array_t<double>>(out) && Coordinates::check_(out) &&
                      shapeOf(out.cast<py::array>()) == shapeOf(in);
    if (!fits || !out.cast<py::array>().writeable())
        throw py::value_error("out must be a writable contiguous float64 array of the shape of the points");
    return py::reinterpret_borrow<Coordinates>(out);
}

/// What overlaps, but is not the same place, would be read behind what was written.
bool overlaps(const Coordinates &a, const Coordinates &b)
{
    const double *const first = a.data();
    const double *const second = b.data();
    return first != second && first < second + b.size() && second < first + a.size();
}

[[noreturn]] void raiseFailed(const std::vector<std::size_t> &failed)
{
    const py::object type = py::module_::import("nivora_cs._core").attr("Error");
    py::array_t<py::ssize_t> places(static_cast<py::ssize_t>(failed.size()));
    std::copy(failed.begin(), failed.end(), places.mutable_data());
    const py::object error = type(py::str("{} points cannot be transformed, the first of them at {}")
                                      .format(failed.size(), failed.front()));
    error.attr("code") = "point-failed";
    error.attr("failed") = places;
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

void convert(const cs::BulkTransform &transform, bool forward, const double *in, double *out,
             std::size_t count, const ListWishes &wishes)
{
    cs::BulkOptions options;
    options.threads = wishes.threads;
    options.pool = &Session::pool();
    options.epoch = wishes.epoch;
    const auto *from = reinterpret_cast<const QPointF *>(in);
    auto *to = reinterpret_cast<QPointF *>(out);
    const cs::BulkResult result = aside([&] {
        return forward ? transform.forward(from, to, count, options)
                       : transform.inverse(from, to, count, options);
    });
    if (wishes.raises && !result.failed.empty())
        raiseFailed(result.failed);
}

/// Two lists of coordinates as one of points, and back.
void join(const double *x, const double *y, std::size_t count, double *points)
{
    for (std::size_t i = 0; i < count; ++i) {
        points[2 * i] = x[i];
        points[2 * i + 1] = y[i];
    }
}

void part(const double *points, std::size_t count, double *x, double *y)
{
    for (std::size_t i = 0; i < count; ++i) {
        x[i] = points[2 * i];
        y[i] = points[2 * i + 1];
    }
}

} // namespace

bool raisesOn(const std::string &errors)
{
    if (errors != "nan" && errors != "raise")
        throw py::value_error("errors is \"nan\" or \"raise\"");
    return errors == "raise";
}

py::object convertPoints(const cs::BulkTransform &transform, bool forward, const py::object &points,
                         const py::object &out, const ListWishes &wishes)
{
    Coordinates in = pointsOf(points);
    Coordinates result = target(out, in);
    if (overlaps(in, result))
        in = Coordinates(shapeOf(in), in.data()); // a copy
    convert(transform, forward, in.data(), result.mutable_data(), pointsIn(in), wishes);
    return std::move(result);
}

py::object convertPair(const cs::BulkTransform &transform, bool forward, const py::object &x,
                       const py::object &y, const ListWishes &wishes)
{
    const py::object spreading = py::module_::import("numpy").attr("broadcast_arrays");
    const py::tuple spread = py::tuple(spreading(unmasked(x), unmasked(y)));
    const Coordinates first = numbers(spread[0]);
    const Coordinates second = numbers(spread[1]);
    const auto count = static_cast<std::size_t>(first.size());
    Coordinates outX(shapeOf(first));
    Coordinates outY(shapeOf(first));
    std::vector<double> points(2 * count);
    const double *const xs = first.data();
    const double *const ys = second.data();
    double *const toX = outX.mutable_data();
    double *const toY = outY.mutable_data();
    aside([&] { join(xs, ys, count, points.data()); });
    convert(transform, forward, points.data(), points.data(), count, wishes);
    aside([&] { part(points.data(), count, toX, toY); });
    if (first.ndim() == 0)
        return py::make_tuple(*toX, *toY);
    return py::make_tuple(outX, outY);
}

} // namespace nivora::python
