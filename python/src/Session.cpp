#include "Session.h"

#include <coordsys/Translations.h>

#include <QDir>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QThreadPool>

#include <condition_variable>
#include <mutex>
#include <new>
#include <stdexcept>

namespace nivora::python {
namespace {

/// What the first call will take.
struct Wishes
{
    QString resources;
    QString language = QStringLiteral("en");
    QString userDir;
};

Wishes &wishes()
{
    static auto &instance = *new Wishes; // outlives everything that Python takes down
    return instance;
}

std::shared_ptr<cs::CoordSysFactory> &started()
{
    static auto &instance = *new std::shared_ptr<cs::CoordSysFactory>;
    return instance;
}

/// Calls that run without the interpreter's lock, and a fork that waits for them.
class Gate
{
public:
    void enter()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_isForking; });
        ++m_inside;
    }
    void leave()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_inside;
        m_changed.notify_all();
    }
    void closeAndWait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_isForking = true;
        m_changed.wait(lock, [this] { return m_inside == 0; });
    }
    void open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isForking = false;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex; ///< guards the rest
    std::condition_variable m_changed;
    int m_inside = 0;
    bool m_isForking = false;
};

Gate &gate()
{
    static Gate &instance = *new Gate;
    return instance;
}

unsigned forks = 0;

QThreadPool *&ownPool()
{
    static QThreadPool *pool = new QThreadPool; // never destroyed: its threads would be waited for at the end
    return pool;
}

/// No thread may hold a lock of the library, and none of its pools may have threads, when the process is
/// copied.
void beforeFork()
{
    const py::gil_scoped_release released;
    gate().closeAndWait();
    constexpr int longestMs = 5000; // a host's own tasks in the global pool are not waited for longer
    ownPool()->waitForDone(longestMs);
    QThreadPool::globalInstance()->waitForDone(longestMs);
}

void afterForkInParent() { gate().open(); }

void afterForkInChild()
{
    new (&gate()) Gate; // threads of the parent may have waited at it
    ownPool() = new QThreadPool;
    ++forks;
}

/// PROJ_LIB is the process's, and other libraries read it: the engines were told by calls as well.
class KeptVariable
{
public:
    explicit KeptVariable(const char *name)
        : m_name(name)
        , m_isSet(qEnvironmentVariableIsSet(name))
        , m_value(qgetenv(name))
    {}
    ~KeptVariable() { m_isSet ? qputenv(m_name, m_value) : qunsetenv(m_name); }
    KeptVariable(const KeptVariable &) = delete;
    KeptVariable &operator=(const KeptVariable &) = delete;

private:
    const char *m_name;
    bool m_isSet;
    QByteArray m_value;
};

QString ownDirectory()
{
    const QString chosen = wishes().userDir;
    return !chosen.isEmpty() ? chosen
                             : QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                   QStringLiteral("/nivora-cs");
}

void startNow()
{
    const KeptVariable kept("PROJ_LIB");
    QLoggingCategory::setFilterRules(QStringLiteral("nivora.cs*=false")); // failures are exceptions here
    cs::installTranslations(wishes().language);
    auto factory =
        std::make_shared<cs::CoordSysFactory>(wishes().resources, ownDirectory(), wishes().language);
    if (!factory->initCoordSystemEnvironment())
        throw std::runtime_error("the catalogues in " + wishes().resources.toStdString() +
                                 " cannot be read; nivora_cs.start(resources=...) takes another directory");
    cs::CoordSysFactory::setDefaultCoordSysFactory(factory);
    started() = std::move(factory);
}

} // namespace

const std::shared_ptr<cs::CoordSysFactory> &Session::factory()
{
    if (!started()) // under the interpreter's lock
        startNow();
    return started();
}

void Session::start(const QString &resources, const QString &language, const QString &userDir)
{
    if (started())
        throw std::logic_error("nivora_cs has started already: call start() before anything else");
    if (!resources.isEmpty())
        wishes().resources = resources;
    wishes().language = language;
    wishes().userDir = userDir;
    factory();
}

QThreadPool &Session::pool() { return *ownPool(); }

unsigned Session::generation() { return forks; }

WithoutInterpreter::WithoutInterpreter()
    : m_state(PyEval_SaveThread())
{
    gate().enter();
}

WithoutInterpreter::~WithoutInterpreter()
{
    gate().leave();
    PyEval_RestoreThread(m_state);
}

void defineSession(py::module_ &module)
{
    module.def(
        "start",
        [](const std::string &resources, const std::string &language, const std::string &userDir) {
            Session::start(QString::fromStdString(resources), QString::fromStdString(language),
                           QString::fromStdString(userDir));
        },
        py::kw_only(), py::arg("resources") = "", py::arg("language") = "en", py::arg("user_dir") = "",
        R"(Starts with other catalogues, another language of messages ("en", "ru") or another directory of
the user's own systems than the first call would take by itself. Only before anything else.)");
    module.def("_set_resources",
               [](const std::string &directory) { wishes().resources = QString::fromStdString(directory); });
    const py::object registerAtFork = py::module_::import("os").attr("register_at_fork");
    registerAtFork(py::arg("before") = py::cpp_function(beforeFork),
                   py::arg("after_in_parent") = py::cpp_function(afterForkInParent),
                   py::arg("after_in_child") = py::cpp_function(afterForkInChild));
}

} // namespace nivora::python
