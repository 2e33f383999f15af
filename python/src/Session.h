#pragma once

#include <coordsys/CoordSysFactory.h>

#include <pybind11/pybind11.h>

#include <QString>

#include <memory>

class QThreadPool;

namespace nivora::python {

namespace py = pybind11;

/// The catalogues of this process: started by the first call that needs them.
class Session
{
public:
    /// Throws std::logic_error when they cannot be read.
    static const std::shared_ptr<cs::CoordSysFactory> &factory();
    /// With other catalogues or another language than the first call would take; only before that call.
    static void start(const QString &resources, const QString &language, const QString &userDir);
    /// Where lists are converted. Its threads are gone in a forked child, which has new ones.
    static QThreadPool &pool();
    /// Counts the forks that led to this process: PROJ's objects with open grid files share their places in
    /// the files with the parent's and are made anew.
    static unsigned generation();
};

/// While one lives, other Python threads run, and os.fork() waits. For calls that take long: nothing of
/// Python may be touched.
class WithoutInterpreter
{
public:
    WithoutInterpreter();
    ~WithoutInterpreter();
    WithoutInterpreter(const WithoutInterpreter &) = delete;
    WithoutInterpreter &operator=(const WithoutInterpreter &) = delete;

private:
    PyThreadState *m_state;
};

/// Runs what takes long.
template <typename Work> auto aside(Work &&work)
{
    const WithoutInterpreter released;
    return work();
}

void defineSession(py::module_ &module);
void defineErrors(py::module_ &module);
void defineSystems(py::module_ &module);
void defineTransforms(py::module_ &module);
void defineLookup(py::module_ &module);
void defineCalibration(py::module_ &module);

} // namespace nivora::python
